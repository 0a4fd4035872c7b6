#include "calendar/Where.h"

using namespace std::string_view_literals;

ITypeDescription* CWhere::ms_piType = nullptr;

void CWhere::CopieObjet(CCtxInfo*, CXError*, CWhere* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_eEtatObjet = pclSource->m_eEtatObjet;
    m_sLibelle = pclSource->m_sLibelle;
    m_sDescription = pclSource->m_sDescription;
}

void CWhere::_vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) {
    m_eEtatObjet = ETAT_SYNCHRONISE;
    if (svChemin == L"location"sv) s_CopieTexte(clValeur, m_sDescription);
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "calendar/Where.def"
