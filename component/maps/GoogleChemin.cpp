#include "maps/GoogleChemin.h"

#include <cstdint>
#include <cwchar>
#include <iterator>
#include <string>

ITypeDescription* CGoogleChemin::ms_piType = nullptr;

void CGoogleChemin::__InitRAZ() {
    m_nCouleur = 0xFF;
    m_nOpacite = 50;
    m_nEpaisseur = 5;
    m_sTexte.Vide();
    Vide();
}

CGoogleChemin* CGoogleChemin::s_pclCreeObjet(CCtxInfo*, CXError*) {
    return new CGoogleChemin;
}

void CGoogleChemin::CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleChemin* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_nCouleur = pclSource->m_nCouleur;
    m_nOpacite = pclSource->m_nOpacite;
    m_nEpaisseur = pclSource->m_nEpaisseur;
    CopieElements(*pclSource, pclCtx, pclErreur);
}

CGoogleChemin::operator const wchar_t*() {
    if (m_nOpacite > 100) m_nOpacite = 100;
    int64_t nAlpha = int64_t{m_nOpacite} * 255 / 100;
    if (nAlpha > 255) nAlpha = 255; // only capped: a negative opacity goes out as written
    // The script gives red in the low byte; the query wants it first.
    const auto dw = static_cast<uint32_t>(m_nCouleur);
    const uint32_t dwRVB = ((dw & 0xFF) << 16) | (dw & 0xFF00) | ((dw >> 16) & 0xFF);
    wchar_t sz[64];
    std::swprintf(sz, std::size(sz), L"color:0x%06X%02X|weight:%d", dwRVB,
                  static_cast<unsigned>(nAlpha), static_cast<int>(m_nEpaisseur));
    std::wstring s = sz;
    for (size_t i = 0; i < nGetNbElement(); ++i) {
        s += L'|';
        s += static_cast<const wchar_t*>(*pclGetElement(i));
    }
    m_sTexte = s;
    return m_sTexte.pszGet();
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "maps/GoogleChemin.def"
