#include "foundation/DureeBase.h"

#include <cwchar>
#include <string_view>

const wchar_t* const CDureeBase::ms_pcszFormatAffichageMillieme = L"%d%02d%02d%02d%03d";
const wchar_t* const CDureeBase::ms_cpszFormatAffichageCentieme = L"%d%02d%02d%02d%02d";

void CDureeBase::VersChaine(CTString& sSortie, bool bMillieme) const {
    uint64_t n = m_nMilli < 0 ? 0 - static_cast<uint64_t>(m_nMilli) : static_cast<uint64_t>(m_nMilli);
    int nFraction = static_cast<int>(n % 1000);
    if (!bMillieme)
        nFraction /= 10;
    n /= 1000;
    int nSecondes = static_cast<int>(n % 60), nMinutes = static_cast<int>(n / 60 % 60);
    int nHeures = static_cast<int>(n / 3600 % 24), nJours = static_cast<int>(n / 86400);
    wchar_t sz[48];
    int nDebut = m_nMilli < 0 ? 1 : 0;
    sz[0] = L'-';
    std::swprintf(sz + nDebut, 47, bMillieme ? ms_pcszFormatAffichageMillieme : ms_cpszFormatAffichageCentieme,
                  nJours, nHeures, nMinutes, nSecondes, nFraction);
    sSortie = sz;
}

bool CDureeBase::bDepuisChaine(const wchar_t* pszTexte, bool bMillieme) {
    if (!pszTexte)
        return false;
    std::wstring_view sv(pszTexte);
    bool bNegatif = !sv.empty() && sv.front() == L'-';
    if (bNegatif)
        sv.remove_prefix(1);
    const size_t nFraction = bMillieme ? 3 : 2;
    if (sv.size() < nFraction + 7 || sv.size() > nFraction + 6 + 9)
        return false;
    for (wchar_t c : sv)
        if (c < L'0' || c > L'9')
            return false;
    auto nLit = [&](size_t nDebut, size_t nLong) {
        int64_t v = 0;
        for (size_t i = 0; i < nLong; ++i)
            v = v * 10 + (sv[nDebut + i] - L'0');
        return v;
    };
    size_t nJours = sv.size() - nFraction - 6;
    int64_t nMilli = ((nLit(0, nJours) * 24 + nLit(nJours, 2)) * 60 + nLit(nJours + 2, 2)) * 60 +
                     nLit(nJours + 4, 2);
    nMilli = nMilli * 1000 + nLit(nJours + 6, nFraction) * (bMillieme ? 1 : 10);
    m_nMilli = bNegatif ? -nMilli : nMilli;
    return true;
}
