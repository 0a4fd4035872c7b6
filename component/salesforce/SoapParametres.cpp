#include "salesforce/SoapParametres.h"

#include "frame/ComposanteGGL.h"
#include "xmlobject/XmlObjectMulti.h"

#include "DateTime.h"
#include "Ref.h"
#include "Utf8.h"
#include "XMLService.h"

#include <cwchar>
#include <string>

void CSoapParametres::_Ajoute(const wchar_t* pszNom, const std::wstring& sValeur) {
    const std::wstring sNom = pszNom ? pszNom : L"";
    m_sCorps += L"<" + sNom + L">" + sValeur + L"</" + sNom + L">";
}

void CSoapParametres::Ajoute(const wchar_t* pszNom, const wchar_t* pszValeur) {
    _Ajoute(pszNom, pszValeur ? pszValeur : L"");
}
void CSoapParametres::Ajoute(const wchar_t* pszNom, int nValeur) {
    _Ajoute(pszNom, std::to_wstring(nValeur));
}
void CSoapParametres::Ajoute(const wchar_t* pszNom, long nValeur) {
    _Ajoute(pszNom, std::to_wstring(nValeur));
}
void CSoapParametres::Ajoute(const wchar_t* pszNom, const CDateTime& clDate) {
    wchar_t sz[32];
    std::swprintf(sz, 32, L"%d-%d-%d", clDate.nGetAnnee(), clDate.nGetMois(), clDate.nGetJour());
    _Ajoute(pszNom, sz);
}
void CSoapParametres::AjouteDateHeure(const wchar_t* pszNom, const CDateTime& clDate) {
    wchar_t sz[40];
    std::swprintf(sz, 40, L"%04d-%02d-%02dT%02d:%02d:%02d", clDate.nGetAnnee(), clDate.nGetMois(),
                  clDate.nGetJour(), clDate.nGetHeure(), clDate.nGetMinute(), clDate.nGetSeconde());
    _Ajoute(pszNom, sz);
}

void CSoapParametres::Ajoute(const wchar_t* pszNom, CXmlObjectMulti* pclObjet) {
    if (!pclObjet)
        return;
    auto clDoc = CComposanteGGL::s_piGetXMLDoc(nullptr);
    if (!clDoc)
        return;
    clDoc->SetEncodage(L"UTF-8");
    INoeudXML* piRacine = nullptr;
    if (!clDoc->bCreeRacine(KVUtf8::VersUtf8(pszNom ? pszNom : L"").c_str(), &piRacine))
        return;
    auto clRacine = CRef<INoeudXML>::Adopt(piRacine);
    CXError clErreur;
    if (!pclObjet->vbCreateXml(piRacine, 0, clErreur))
        return;
    CXYString<char> czTexte;
    CComposanteGGL::s_GetChaineXml(piRacine, czTexte, &clErreur);
    if (!clErreur.bEstPropre())
        return;
    m_sCorps += KVUtf8::VersWide(czTexte.sv());
}
