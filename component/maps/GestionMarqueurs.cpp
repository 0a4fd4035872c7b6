#include "maps/GestionMarqueurs.h"

#include <string>
#include <vector>
#include <wctype.h>

namespace {

bool bEgalSansCasse(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (towlower(static_cast<wint_t>(a[i])) != towlower(static_cast<wint_t>(b[i]))) return false;
    return true;
}

} // namespace

// Each style is sent once, with the coordinates of all its markers: a pass over the markers
// takes the first style not yet sent and gathers every marker of that style.
CGestionMarqueurs::operator const wchar_t*() {
    const size_t nNb = nGetNbElement();
    std::wstring sTexte;
    std::vector<std::wstring> tabStyleFait;
    size_t nFait = 0;
    const auto bFait = [&](std::wstring_view svStyle) {
        for (const std::wstring& s : tabStyleFait)
            if (bEgalSansCasse(s, svStyle)) return true;
        return false;
    };
    while (nFait < nNb) {
        std::wstring sStyle, sCoordonnees;
        bool bStyleChoisi = false;
        for (size_t i = 0; i < nNb; ++i) {
            CGoogleMarqueur* pcl = pclGetElement(i);
            std::wstring_view svStyle = pcl->pszGetStyle();
            if (bFait(svStyle)) continue;
            if (!bStyleChoisi) {
                sStyle = svStyle;
                bStyleChoisi = true;
            }
            if (!bEgalSansCasse(svStyle, sStyle)) continue;
            if (!sCoordonnees.empty()) sCoordonnees += L'|';
            sCoordonnees += pcl->pszGetCoordonnees();
            ++nFait;
        }
        if (!bStyleChoisi) break; // cannot happen while markers remain; no endless pass
        if (!sTexte.empty()) sTexte += L'&';
        sTexte += L"markers=";
        sTexte += sStyle;
        sTexte += L'|';
        sTexte += sCoordonnees;
        tabStyleFait.push_back(std::move(sStyle));
    }
    m_sTexte = sTexte;
    return m_sTexte.pszGet();
}
