#include "maps/GooglePoint.h"

#include <charconv>

ITypeDescription* CGooglePoint::ms_piType = nullptr;

void CGooglePoint::__InitRAZ() {
    m_dLatitude = 0;
    m_dLongitude = 0;
    m_sTexte.Vide();
    m_bRenseigne = 0;
}

CGooglePoint* CGooglePoint::s_pclCreeObjet(CCtxInfo*, CXError*) {
    return new CGooglePoint;
}

void CGooglePoint::CopieObjet(CCtxInfo*, CXError*, CGooglePoint* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_dLatitude = pclSource->m_dLatitude;
    m_dLongitude = pclSource->m_dLongitude;
    m_bRenseigne = pclSource->m_bRenseigne;
}

void CGooglePoint::SetLatitude(CCtxInfo*, CXError*, double dLatitude) {
    m_dLatitude = dLatitude;
    m_bRenseigne = 1;
}

void CGooglePoint::SetLongitude(CCtxInfo*, CXError*, double dLongitude) {
    m_dLongitude = dLongitude;
    m_bRenseigne = 1;
}

CGooglePoint::operator const wchar_t*() {
    std::wstring s;
    s_AjouteReel(s, m_dLatitude);
    s += L',';
    s_AjouteReel(s, m_dLongitude);
    m_sTexte = s;
    return m_sTexte.pszGet();
}

void CGooglePoint::vAddRef() {
    if (m_piProprietaire)
        m_piProprietaire->vAddRef();
    else
        CObjetComposante::vAddRef();
}

void CGooglePoint::vRelease() {
    if (m_piProprietaire)
        m_piProprietaire->vRelease();
    else
        CObjetComposante::vRelease();
}

void CGooglePoint::s_AjouteReel(std::wstring& s, double d) {
    char sz[400]; // the largest double has 309 integer digits
    auto [pFin, ec] = std::to_chars(sz, sz + sizeof(sz), d, std::chars_format::fixed, 6);
    if (ec != std::errc()) pFin = sz;
    s.append(sz, pFin);
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "maps/GooglePoint.def"
