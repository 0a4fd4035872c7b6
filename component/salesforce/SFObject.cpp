#include "salesforce/SFObject.h"
#include "frame/ErrorCodes.h"

#include "frame/ModuleInfo.h"
#include "xmlobject/Feuilles.h"

#include "Any.h"
#include "KVResult.h"
#include "Ref.h"
#include "Utf8.h"
#include "XMLService.h"

#include <string>

namespace {
constexpr unsigned knErreurMembreAbsent = KVERR_UNKNOWN_MEMBER;

// A child that holds elements of its own is a nested record (a relationship); any other, a
// text field.
bool s_bContientElements(INoeudXML* piNoeud) {
    for (int i = 0;; ++i) {
        auto cl = CRef<INoeudXML>::Adopt(piNoeud->piGetEnfant(i));
        if (!cl)
            return false;
        if (cl->eGetGenre() == NOEUDXML_ELEMENT)
            return true;
    }
}
} // namespace

ITypeDescription* CSFObject::ms_piType = nullptr;

const stXmlPropriete CSFObject::s_m_stTabXmlDescription__[] = {
    XML_ROW("sf:type", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("sf:fieldsToNull", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("sf:Id", XmlObject::Texte, XML_ELEMENT)
};
XML_OBJET_DEFINE(CSFObject, CXmlObjectAutonomeRacineSalesforce)
XML_ACCEPTE_DEFINE(CSFObject, )

void CSFObject::vInit(CXError&) {
    // One walk does the table's rows and the record's own fields alike: the table has no
    // attribute, and every child becomes a member.
    INoeudXML* piNoeud = piGetNoeud();
    if (!piNoeud)
        return;
    for (int i = 0;; ++i) {
        auto clEnfant = CRef<INoeudXML>::Adopt(piNoeud->piGetEnfant(i));
        if (!clEnfant)
            break;
        if (clEnfant->eGetGenre() != NOEUDXML_ELEMENT)
            continue;
        auto clNamespace = CRef<INamespaceXML>::Adopt(clEnfant->piGetNamespace());
        const char* pszNom = clEnfant->pszGetNom();
        if (const stXmlPropriete* pst =
                _pclFindInDescription(clNamespace ? clNamespace->pszGetPrefixe() : nullptr, pszNom)) {
            _vAjoutePropriete(pst->pszNom, pst->pfnCreation(clEnfant.pGet(), pst->eType, this, pst->pszNom));
            continue;
        }
        CXmlObject* pcl = s_bContientElements(clEnfant.pGet())
                              ? CSFObject::s_pclCreate(clEnfant.pGet(), XML_ELEMENT, this, pszNom)
                              : XmlObject::Texte::s_pclCreate(clEnfant.pGet(), XML_ELEMENT, this, pszNom);
        _vAjoutePropriete(pszNom, pcl);
    }
    // The service writes the Id twice when the query selects it: one is kept.
    if (CXmlObjectListe* pclListe = pclGetListe("sf:Id")) {
        const int n = pclListe->nGetNbElement();
        for (int i = 1; i < n && i < pclListe->nGetNbElement(); ++i)
            pclListe->Supprime(i);
    }
}

CXmlObject* CSFObject::_vpclAjouteNouveau(const char* pszNom) {
    if (_pclFindInDescription(nullptr, pszNom))
        return CXmlObjectAutonomeRacineSalesforce::_vpclAjouteNouveau(pszNom);
    CXmlObject* pcl = XmlObject::Texte::s_pclCreate(nullptr, XML_ELEMENT, this, pszNom);
    if (pcl)
        _vAjoutePropriete(pszNom, pcl);
    return pcl;
}

eRESULTATOBJET CSFObject::veGetValeurAny(const CNomStandard& clNom, CAny* pclValeur, unsigned,
                                         CCtxInfo*, CXError* pclErreur) {
    const std::string sNom = KVUtf8::VersUtf8(clNom.sv());
    CXmlObject* pcl = pclGetPropriete(sNom.c_str(), 0);
    CVisiteur clVisiteur;
    if (pcl)
        pcl->vAccepte(&clVisiteur);
    if (clVisiteur.pXmlObject_Texte) {
        pclValeur->SetString(clVisiteur.pXmlObject_Texte->GetValeur());
        return RESULTAT_OBJET_OK;
    }
    if (clVisiteur.pCSFObject) {
        pclValeur->SetObjet(clVisiteur.pCSFObject->piGetObjetBase(), 111);
        return RESULTAT_OBJET_OK;
    }
    if (pclErreur)
        pclErreur->SetUserError(&gstMyModuleInfo60, knErreurMembreAbsent,
                                std::wstring(clNom.sv()).c_str());
    return gkeMembreInexistant;
}

eRESULTATOBJET CSFObject::veSetValeurAny(const CNomStandard& clNom, const CAny* pclValeur, unsigned,
                                         CCtxInfo*, CXError*) {
    if (!pclValeur || pclValeur->nGetType() == 0)
        return RESULTAT_OBJET_OK;
    // The server judges the names: any member may be written, and every value goes as text.
    CAny clCopie(*pclValeur);
    CXYString<wchar_t> sTexte;
    if (!KV_bSucces(clCopie.__nCastTo(16, nullptr, 1)) || !KV_bSucces(clCopie.__nFillString(sTexte)))
        sTexte = CXYString<wchar_t>();
    CXmlProprietesScript::s_SetTexte(this, KVUtf8::VersUtf8(clNom.sv()).c_str(), sTexte);
    return RESULTAT_OBJET_OK;
}

eRESULTATOBJET CSFObject::vePossedeValeur(int& bPossede, CCtxInfo*, CXError*) {
    bPossede = mapGetProprietes().nGetNbElement() > 0;
    return RESULTAT_OBJET_OK;
}

eRESULTATOBJET CSFObject::veParcourtValeur(IVisiteurValeur* piVisiteur, CCtxInfo*, CXError*) {
    const CMapProprietes& map = mapGetProprietes();
    for (size_t i = 0; i < map.nGetNbElement(); ++i) {
        CXmlObjectListe* pclListe = map.pclGetElement(i);
        const std::wstring sNom = KVUtf8::VersWide(pclListe->czGetNom().sv());
        for (int j = 0; j < pclListe->nGetNbElement(); ++j) {
            CXYString<wchar_t> s;
            CXError clErreur;
            if (!pclListe->pclGetElement(j)->vbGet(s, clErreur))
                continue;
            CAny clValeur;
            clValeur.SetString(s);
            piVisiteur->veVisiteValeur(CNomStandard(sNom.c_str(), sNom.size()), clValeur);
        }
    }
    return RESULTAT_OBJET_OK;
}

#include "frame/KllStubs.h"
#include "salesforce/SFObject.def"
