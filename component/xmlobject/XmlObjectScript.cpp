#include "xmlobject/XmlObjectScript.h"

#include "xmlobject/Feuilles.h"

namespace {

CXmlObjectSimple<int>* pclEntierDe(CVisiteur& cl) {
    if (cl.pGgl_CConstante)
        return cl.pGgl_CConstante;
    if (cl.pXmlObject_Booleen)
        return cl.pXmlObject_Booleen;
    return cl.pXmlObject_Entier;
}

CVisiteur clVisite(CXmlObject* pcl) {
    CVisiteur cl;
    if (pcl)
        pcl->vAccepte(&cl);
    return cl;
}

} // namespace

CXYString<wchar_t> CXmlProprietesScript::s_sGetTexte(CXmlObjectMulti* pclObjet, const char* pszMembre) {
    CVisiteur cl = clVisite(pclObjet->vpclGetXmlObject()->pclGetPropriete(pszMembre, 0));
    return cl.pXmlObject_Texte ? cl.pXmlObject_Texte->GetValeur() : CXYString<wchar_t>();
}

int CXmlProprietesScript::s_nGetEntier(CXmlObjectMulti* pclObjet, const char* pszMembre) {
    CVisiteur cl = clVisite(pclObjet->vpclGetXmlObject()->pclGetPropriete(pszMembre, 0));
    CXmlObjectSimple<int>* pcl = pclEntierDe(cl);
    return pcl ? pcl->GetValeur() : 0;
}

void CXmlProprietesScript::s_SetTexte(CXmlObjectMulti* pclObjet, const char* pszMembre,
                                      const CXYString<wchar_t>& s) {
    CVisiteur cl = clVisite(pclObjet->pclGetCreatePropriete(pszMembre, 0));
    if (!cl.pXmlObject_Texte)
        return;
    cl.pXmlObject_Texte->SetValeur(s);
    pclObjet->vNotifieModif();
}

void CXmlProprietesScript::s_SetEntier(CXmlObjectMulti* pclObjet, const char* pszMembre, int n) {
    CVisiteur cl = clVisite(pclObjet->pclGetCreatePropriete(pszMembre, 0));
    CXmlObjectSimple<int>* pcl = pclEntierDe(cl);
    if (!pcl)
        return;
    pcl->SetValeur(n);
    pclObjet->vNotifieModif();
}

void CXmlProprietesScript::s_SetTexteObjet(CXmlObjectMulti* pclObjet, XmlObject::Texte* pclTexte,
                                           const CXYString<wchar_t>& s) {
    pclTexte->SetValeur(s);
    pclObjet->vNotifieModif();
}
