#include "contacts/GoogleContact.h"

#include "connection/GoogleEndpoints.h"
#include "connection/HTTPResponse.h"
#include "foundation/DateTimeRFC3339.h"
#include "frame/ComposanteGGL.h"
#include "xmlobject/Email.h"
#include "xmlobject/Feuilles.h"
#include "xmlobject/GglElements.h"
#include "xmlobject/IM.h"
#include "xmlobject/Organization.h"
#include "xmlobject/PhoneNumber.h"
#include "xmlobject/PostalAddress.h"
#include "xmlobject/XmlEnumerateur.h"

#include "Any.h"
#include "ObjectInterfaces.h"
#include "Ref.h"
#include "VM.h"

#include <string>

namespace {
constexpr char kszGroupes[] = "gContact:groupMembershipInfo";
} // namespace

// ---- What a contact and a group share ----------------------------------------------------

const wchar_t* CEntreeContacts::s_pszURLAjout(const wchar_t* pszChemin) {
    static const std::wstring sContacts = std::wstring(gszGoogleFeeds) + s_szContacts;
    static const std::wstring sGroupes = std::wstring(gszGoogleFeeds) + s_szGroupesContacts;
    return pszChemin == s_szContacts ? sContacts.c_str() : sGroupes.c_str();
}

CDateTime CEntreeContacts::_dtMiseAJour() {
    CVisiteur cl;
    if (CXmlObject* pcl = pclGetPropriete("updated", 0))
        pcl->vAccepte(&cl);
    return cl.pXmlObject_DateHeure ? CDateTime(cl.pXmlObject_DateHeure->GetValeur()) : CDateTime();
}

void CEntreeContacts::_ForceIdentifiant(const CXYString<wchar_t>& s) {
    // No longer new from here: the notification queues a change, not an addition.
    SetPropriete("id", 0, s.pszGet());
    vNotifieModif();
}

void CEntreeContacts::_ForceMiseAJour(const CDateTime& dt) {
    CVisiteur cl;
    if (CXmlObject* pcl = pclGetCreatePropriete("updated", 0))
        pcl->vAccepte(&cl);
    if (!cl.pXmlObject_DateHeure)
        return;
    CDateTimeRFC3339 clDate;
    static_cast<CDateTime&>(clDate) = dt;
    cl.pXmlObject_DateHeure->SetValeur(clDate);
}

// ---- Group ---------------------------------------------------------------------------------

ITypeDescription* CGglGroupeContact::ms_piType = nullptr;
const stXmlPropriete CGglGroupeContact::s_m_stTabXmlDescription__[] = {
#include "contacts/GroupeContactXml.def"
};
XML_OBJET_DEFINE(CGglGroupeContact, CEntreeContacts)
XML_ACCEPTE_DEFINE(CGglGroupeContact, )

const wchar_t* CGglGroupeContact::vpszGetURLAjoutMoiMeme() {
    return s_pszURLAjout(s_szGroupesContacts);
}

// ---- Contact -------------------------------------------------------------------------------

ITypeDescription* CGoogleContact::ms_piType = nullptr;
const stXmlPropriete CGoogleContact::s_m_stTabXmlDescription__[] = {
#include "contacts/GoogleContactXml.def"
};
XML_OBJET_DEFINE(CGoogleContact, CEntreeContacts)
XML_ACCEPTE_DEFINE(CGoogleContact, )

CGoogleContact::~CGoogleContact() {
    if (m_piTabGroupes)
        m_piTabGroupes->vRelease();
}

const wchar_t* CGoogleContact::vpszGetURLAjoutMoiMeme() {
    return s_pszURLAjout(s_szContacts);
}

void* CGoogleContact::AccesseurMessagerieInstantanee(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(new CTXmlEnumerateur<CIM>(this, "gd:im"));
}
void* CGoogleContact::AccesseurTelephone(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(new CTXmlEnumerateur<CPhoneNumber>(this, "gd:phoneNumber"));
}
void* CGoogleContact::AccesseurAdresse(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(new CTXmlEnumerateur<CPostalAddress>(this, "gd:postalAddress"));
}
void* CGoogleContact::AccesseurEmail(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(new CTXmlEnumerateur<CEmail>(this, "gd:email"));
}
void* CGoogleContact::AccesseurOrganisation(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(new CTXmlEnumerateur<COrganization>(this, "gd:organization"));
}

void CGoogleContact::_InitTableaux(IVM* piVM, CXError* pclErreur) {
    if (m_bTableauxInit)
        return;
    m_piTabGroupes = CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur, nullptr).pDetach();
    if (!m_piTabGroupes)
        return;
    m_piVM = piVM;
    _PropGroup2StrArray(m_piTabGroupes, piVM, pclErreur);
    m_bTableauxInit = 1;
}

void CGoogleContact::_PropGroup2StrArray(IKLTableau* piTableau, IVM* piVM, CXError* pclErreur) {
    if (!piTableau || !piVM || !pclErreur)
        return;
    CXmlObjectListe* pclListe = pclGetListe(kszGroupes);
    const int nNb = pclListe ? pclListe->nGetNbElement() : 0;
    if (!piTableau->vbRedimensionne(nNb, pclErreur))
        return;
    for (int i = 0; i < nNb; ++i) {
        CXYString<wchar_t> s;
        CXError clLecture;
        pclListe->pclGetElement(i)->vbGet(s, clLecture);
        CAny clValeur;
        clValeur.SetString(s);
        piTableau->vbSetElement(i, clValeur, pclErreur);
    }
}

void CGoogleContact::_StrArray2PropGroup(IKLTableau* piTableau, CXError* pclErreur) {
    if (!piTableau)
        return;
    if (CXmlObjectListe* pclListe = pclGetListe(kszGroupes))
        pclListe->SupprimeTout();
    else
        pclCreateListe(kszGroupes);
    const int nNb = piTableau->vnGetNbElement();
    for (int i = 0; i < nNb; ++i) {
        CXmlObject* pclMembre = pclGetCreatePropriete(kszGroupes, i);
        CAny clValeur;
        CXYString<wchar_t> s;
        // An element that is no text leaves what the cast gave.
        if (piTableau->vbGetElement(i, clValeur, pclErreur))
            clValeur.__nFillString(s);
        CXError clEcriture;
        if (pclMembre)
            pclMembre->vbSet(s.pszGet(), clEcriture);
    }
}

IKLTableau* CGoogleContact::GetGroupe(CCtxInfo* pclCtx, CXError* pclErreur) {
    _InitTableaux(CCtxInfo::s_piGetVM(pclCtx), pclErreur);
    if (m_piTabGroupes)
        m_piTabGroupes->vAddRef();
    return m_piTabGroupes;
}

void CGoogleContact::SetGroupe(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piTableau) {
    _InitTableaux(CCtxInfo::s_piGetVM(pclCtx), pclErreur);
    if (!piTableau)
        return;
    _StrArray2PropGroup(piTableau, pclErreur);
    if (m_piTabGroupes && m_piTabGroupes != piTableau)
        m_piTabGroupes->vbCopie(piTableau, pclErreur);
}

bool CGoogleContact::vbPreAjout(CXError& clErreur) {
    _StrArray2PropGroup(m_piTabGroupes, &clErreur);
    return true;
}

void CGoogleContact::_RafraichitTableau(IVM* piVM, CXError* pclErreur) {
    CXError clIgnore;
    CXError* pcl = pclErreur ? pclErreur : &clIgnore;
    if (m_piTabGroupes)
        _PropGroup2StrArray(m_piTabGroupes, m_piVM ? m_piVM : piVM, pcl);
    else if (!m_bTableauxInit)
        _InitTableaux(piVM, pcl);
}

void CGoogleContact::vPostAjout(CHTTPResponse& clReponse, CXError* pclErreur,
                                CGoogleConnexion* pclConnexion, IVM* piVM) {
    CEntreeContacts::vPostAjout(clReponse, pclErreur, pclConnexion, piVM);
    if (clReponse.eGetCodeRetour() == HTTPCreated)
        _RafraichitTableau(piVM, pclErreur);
}

void CGoogleContact::vPostModif(CHTTPResponse& clReponse, CXError* pclErreur, IVM* piVM) {
    CEntreeContacts::vPostModif(clReponse, pclErreur, piVM);
    if (clReponse.eGetCodeRetour() == HTTPOK)
        _RafraichitTableau(piVM, pclErreur);
}

void CGoogleContact::_vRAZ(CCtxInfo* pclCtx, CXError* pclErreur) {
    CXmlObjectMulti::_vRAZ(pclCtx, pclErreur);
    m_bTableauxInit = 0;
    if (m_piTabGroupes)
        m_piTabGroupes->vRelease();
    m_piTabGroupes = nullptr;
}

#include "frame/KllStubs.h"
#include "contacts/GoogleContact.def"
#include "frame/KllStubs.h"
#include "contacts/GglGroupeContact.def"
