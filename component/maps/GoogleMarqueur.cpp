#include "maps/GoogleMarqueur.h"

#include "maps/GooglePoint.h"

#include "frame/ModuleInfo.h"

#include "XError.h"

#include <cwchar>
#include <string>

ITypeDescription* CGoogleMarqueur::ms_piType = nullptr;

namespace {

struct STNomCouleur {
    int32_t nCouleur;
    const wchar_t* pszNom;
};
constexpr STNomCouleur gtabCouleur[] = {
    {0x000000, L"black"}, {0x0000FF, L"red"},    {0x00FF00, L"green"},
    {0x00FFFF, L"yellow"}, {0xFFFFFF, L"white"}, {0x40C0FF, L"orange"},
    {0xC0C0C0, L"gray"},  {0xFF0000, L"blue"},   {0xFF40C0, L"purple"},
};

// The values of gglMini, gglPetit, gglMoyen and gglGrand.
constexpr const wchar_t* gtabTaille[] = {L"tiny", L"small", L"mid", L""};
constexpr const wchar_t* kpszGrand = L"";
constexpr const wchar_t* kpszMoyen = L"mid";

bool bLettreAffichable(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

} // namespace

void CGoogleMarqueur::__InitRAZ() {
    m_dLatitude = 0;
    m_dLongitude = 0;
    m_sTaille = kpszGrand;
    m_nCouleur = 0xFF;
    m_cLettre = 0;
    m_sNomCouleur.Vide();
    m_sStyle.Vide();
    m_sCoordonnees.Vide();
    m_sTexte.Vide();
}

CGoogleMarqueur* CGoogleMarqueur::s_pclCreeObjet(CCtxInfo*, CXError*) {
    return new CGoogleMarqueur;
}

void CGoogleMarqueur::CopieObjet(CCtxInfo*, CXError*, CGoogleMarqueur* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_dLatitude = pclSource->m_dLatitude;
    m_dLongitude = pclSource->m_dLongitude;
    m_sTaille = pclSource->m_sTaille;
    m_nCouleur = pclSource->m_nCouleur;
    m_cLettre = pclSource->m_cLettre;
    m_sNomCouleur = pclSource->m_sNomCouleur;
}

const wchar_t* CGoogleMarqueur::s_pszNomCouleur(int nCouleur) {
    for (const STNomCouleur& st : gtabCouleur)
        if (st.nCouleur == nCouleur) return st.pszNom;
    return nullptr;
}

void CGoogleMarqueur::SetTaille(CCtxInfo*, CXError* pclErreur, const wchar_t* pszTaille) {
    const wchar_t* psz = pszTaille ? pszTaille : L"";
    for (const wchar_t* pszConnue : gtabTaille) {
        if (std::wcscmp(psz, pszConnue) == 0) {
            m_sTaille = psz;
            return;
        }
    }
    if (pclErreur)
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_MARKER_SIZE);
}

void CGoogleMarqueur::SetCouleur(CCtxInfo*, CXError* pclErreur, int nCouleur) {
    // The colour is kept either way; one without a name leaves none, not the previous one.
    const wchar_t* pszNom = s_pszNomCouleur(nCouleur);
    m_nCouleur = nCouleur;
    m_sNomCouleur = pszNom;
    if (!pszNom && pclErreur)
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_MARKER_COLOUR);
}

const wchar_t* CGoogleMarqueur::pszGetCoordonnees() {
    std::wstring s;
    CGooglePoint::s_AjouteReel(s, m_dLatitude);
    s += L',';
    CGooglePoint::s_AjouteReel(s, m_dLongitude);
    m_sCoordonnees = s;
    return m_sCoordonnees.pszGet();
}

const wchar_t* CGoogleMarqueur::pszGetStyle() {
    std::wstring s = L"size:";
    s += m_sTaille.sv();
    s += L"|color:";
    s += m_sNomCouleur.sv();
    // A smaller marker has no room for a letter: it is dropped.
    const bool bAssezGrand = m_sTaille == kpszGrand || m_sTaille == kpszMoyen;
    if (m_cLettre != 0 && bAssezGrand && bLettreAffichable(m_cLettre)) {
        s += L"|label:";
        s += static_cast<wchar_t>(m_cLettre >= 'a' && m_cLettre <= 'z' ? m_cLettre - 'a' + 'A'
                                                                       : m_cLettre);
    }
    m_sStyle = s;
    return m_sStyle.pszGet();
}

CGoogleMarqueur::operator const wchar_t*() {
    std::wstring s = L"markers=";
    s += pszGetStyle();
    s += L'|';
    s += pszGetCoordonnees();
    m_sTexte = s;
    return m_sTexte.pszGet();
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "maps/GoogleMarqueur.def"
