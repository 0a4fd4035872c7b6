#include "calendar/Who.h"

#include "connection/GoogleConnexion.h"

#include <string>

using namespace std::string_view_literals;

ITypeDescription* CWho::ms_piType = nullptr;

void CWho::CopieObjet(CCtxInfo*, CXError*, CWho* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_eEtatObjet = pclSource->m_eEtatObjet;
    m_sIdentifiant = pclSource->m_sIdentifiant;
    m_sEmail = pclSource->m_sEmail;
    m_sLibelle = pclSource->m_sLibelle;
}

void CWho::_vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) {
    m_eEtatObjet = ETAT_SYNCHRONISE;
    const std::wstring_view sv = svChemin;
    if (sv == L"id"sv)
        s_CopieTexte(clValeur, m_sIdentifiant);
    else if (sv == L"email"sv)
        s_CopieTexte(clValeur, m_sEmail);
    else if (sv == L"displayName"sv)
        s_CopieTexte(clValeur, m_sLibelle);
}

CXYString<wchar_t> CWho::czToJSON() const {
    std::wstring s = L"{\"id\":\"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sIdentifiant).sv();
    s += L"\", \"email\":\"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sEmail).sv();
    s += L"\", \"displayName\":\"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sLibelle).sv();
    s += L"\"}";
    return CXYString<wchar_t>(std::wstring_view(s));
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "calendar/Who.def"
