#include "maps/GoogleParametre.h"

#include "frame/ModuleInfo.h"

#include "XError.h"

#include <cwchar>
#include <string>

ITypeDescription* CGoogleParametre::ms_piType = nullptr;

namespace {

// The values of gglGIF, gglJPG, gglJPGBaseline, gglPNG8 and gglPNG32.
constexpr const wchar_t* gtabFormat[] = {L"gif", L"jpg", L"jpg-baseline", L"png8", L"png32"};

} // namespace

CGoogleParametre::CGoogleParametre() {
    m_clZone.SetProprietaire(piGetObjetBase());
    __InitRAZ();
}

void CGoogleParametre::__InitRAZ() {
    m_sFormat.Vide();
    // New ones: a path or markers that a script still holds stay as they were, apart.
    m_clChemin = CRef<CGoogleChemin>::Retain(new CGoogleChemin);
    m_bCadre = 0;
    m_sLangue.Vide();
    m_clZone.RAZ();
    m_sTexte.Vide();
    m_bMobile = 0;
    m_clMarqueurs = CRef<CGestionMarqueurs>::Retain(new CGestionMarqueurs);
    m_nEchelle = 1;
}

CGoogleParametre* CGoogleParametre::s_pclCreeObjet(CCtxInfo*, CXError*) {
    return new CGoogleParametre;
}

void CGoogleParametre::CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur,
                                  CGoogleParametre* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_sFormat = pclSource->m_sFormat;
    m_clChemin->CopieObjet(pclCtx, pclErreur, pclSource->m_clChemin.pGet());
    m_bCadre = pclSource->m_bCadre;
    m_sLangue = pclSource->m_sLangue;
    m_clZone.CopieObjet(pclCtx, pclErreur, &pclSource->m_clZone);
    m_bMobile = pclSource->m_bMobile;
    m_clMarqueurs->CopieElements(*pclSource->m_clMarqueurs, pclCtx, pclErreur);
    m_nEchelle = pclSource->m_nEchelle;
}

void CGoogleParametre::SetFormat(CCtxInfo*, CXError* pclErreur, const wchar_t* pszFormat) {
    const wchar_t* psz = pszFormat ? pszFormat : L"";
    for (const wchar_t* pszConnu : gtabFormat) {
        if (std::wcscmp(psz, pszConnu) == 0) {
            m_sFormat = psz;
            return;
        }
    }
    if (pclErreur)
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_IMAGE_FORMAT);
}

CGoogleParametre::operator const wchar_t*() {
    std::wstring s;
    const auto Ajoute = [&s](const wchar_t* pszCle, std::wstring_view svValeur) {
        s += pszCle;
        s += svValeur;
        s += L'&';
    };
    if (!m_sFormat.bEstVide()) Ajoute(L"format=", m_sFormat.sv());
    if (!m_sLangue.bEstVide()) Ajoute(L"hl=", m_sLangue.sv());
    if (m_bMobile) s += L"mobile=true&";
    if (m_nEchelle > 1) Ajoute(L"scale=", std::to_wstring(m_nEchelle));
    if (m_clChemin->nGetNbElement() > 0)
        Ajoute(L"path=", static_cast<const wchar_t*>(*m_clChemin));
    if (m_clMarqueurs->nGetNbElement() > 0) s += static_cast<const wchar_t*>(*m_clMarqueurs);
    if (!s.empty() && s.back() == L'&') s.pop_back();
    m_sTexte = s;
    return m_sTexte.pszGet();
}

bool CGoogleParametre::bGetZoneVisible(double dLatitude, double dLongitude, CTString& sResultat) {
    const double dDemiLatitude = m_clZone.dGetLatitude();
    const double dDemiLongitude = m_clZone.dGetLongitude();
    if (!m_clZone.bEstRenseigne() || !(dDemiLatitude > 0) || !(dDemiLongitude > 0)) return false;
    std::wstring s;
    CGooglePoint::s_AjouteReel(s, dLatitude - dDemiLatitude);
    s += L',';
    CGooglePoint::s_AjouteReel(s, dLongitude - dDemiLongitude);
    s += L'|';
    CGooglePoint::s_AjouteReel(s, dLatitude + dDemiLatitude);
    s += L',';
    CGooglePoint::s_AjouteReel(s, dLongitude + dDemiLongitude);
    sResultat = s;
    return true;
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "maps/GoogleParametre.def"
