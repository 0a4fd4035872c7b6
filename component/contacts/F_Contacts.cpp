// The contacts' script functions, members of CGoogleConnexion: the contacts of the feed (all,
// of a group, by the script's own query), the groups (all, or those of a contact), and the
// saves and deletes of one entry. One request is one page: a count of 0 asks for more entries
// than any feed holds, and the openSearch figures are not followed.
#include "connection/GoogleConnexion.h"
#include "frame/ErrorCodes.h"

#include "connection/GoogleEndpoints.h"
#include "connection/HTTPRequete.h"
#include "connection/HTTPResponse.h"
#include "contacts/GoogleContact.h"
#include "contacts/ListesContacts.h"
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"
#include "xmlobject/FctFind.h"

#include "Any.h"
#include "ObjectInterfaces.h"
#include "Ref.h"
#include "VM.h"
#include "XMLService.h"

#include <cwctype>
#include <string>

namespace {

constexpr wchar_t s_szStartIndex[] = L"start-index";
constexpr wchar_t s_szMaxResults[] = L"max-results";
constexpr wchar_t s_szGroup[] = L"group";
// A count no feed reaches: "all of them" in one request.
constexpr wchar_t s_szTous[] = L"1000000000";

constexpr unsigned knErreurArgument = KVERR_OUT_OF_RANGE;
constexpr unsigned knErreurGroupeInconnu = KVERR_GROUP_NOT_FOUND;

std::wstring s_sFeeds(const wchar_t* pszChemin) {
    return std::wstring(gszGoogleFeeds) + pszChemin;
}

// An array of the entries of the list, each taken out of its feed: the feed goes, the entries
// stay with the array's references.
IKLTableau* s_piTableauDe(CXmlObjectListe* pclListe, ITypeDescription* piType, IVM* piVM,
                          CXError* pclErreur) {
    auto clTableau = CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur, piType);
    const int nNb = pclListe ? pclListe->nGetNbElement() : 0;
    if (!clTableau || !clTableau->vbRedimensionne(nNb, pclErreur))
        return nullptr;
    for (int i = 0; i < nNb; ++i) {
        CXmlObject* pcl = pclListe->pclGetElement(i);
        pcl->vSetParent(nullptr);
        CAny clValeur;
        clValeur.SetObjet(pcl->vpiGetObjetBaseScript(), 111);
        if (!clTableau->vbSetElement(i, clValeur, pclErreur))
            return nullptr;
    }
    return clTableau.pDetach();
}

// The root of a 200 answer to a GET, or null with the error.
CRef<INoeudXML> s_clRacineFlux(CGoogleConnexion& clConnexion, CHTTPRequete& clRequete, IVM* piVM,
                               CXError* pclErreur) {
    CHTTPResponse clReponse = clConnexion.clExecuteRequeteCOM(piVM, clRequete, HTTPGET, pclErreur);
    if (!pclErreur->bEstPropre())
        return {};
    auto clDocument = CGoogleConnexion::s_piParseXMLResponse(clReponse, pclErreur, HTTPOK);
    return CRef<INoeudXML>::Adopt(clDocument ? clDocument->piGetRacine(0) : nullptr);
}

IKLTableau* s_piListeContacts(CGoogleConnexion& clConnexion, CHTTPRequete& clRequete, IVM* piVM,
                              CXError* pclErreur) {
    auto clRacine = s_clRacineFlux(clConnexion, clRequete, piVM, pclErreur);
    if (!clRacine)
        return nullptr;
    auto clFlux = CRef<CXmlObject>::Adopt(CListeContacts::s_pclCreate(clRacine.pGet(), XML_ELEMENT, nullptr, nullptr));
    return s_piTableauDe(clFlux->vpclGetXmlObjectMulti()->pclGetListe("entry"), CGoogleContact::ms_piType,
                         piVM, pclErreur);
}

// The whole groups feed, or null.
CRef<CXmlObject> s_clListeGroupes(CGoogleConnexion& clConnexion, IVM* piVM, CXError* pclErreur) {
    CHTTPRequete clRequete(SERVICEGOOGLE_CONTACT, s_sFeeds(s_szGroupesContacts).c_str(), HTTPCT_ATOM);
    clRequete.AjouteParametre(s_szMaxResults, s_szTous);
    auto clRacine = s_clRacineFlux(clConnexion, clRequete, piVM, pclErreur);
    if (!clRacine)
        return {};
    return CRef<CXmlObject>::Adopt(
        CListeGroupesContacts::s_pclCreate(clRacine.pGet(), XML_ELEMENT, nullptr, nullptr));
}

CXmlObjectListe* s_pclEntrees(const CRef<CXmlObject>& clFlux) {
    return clFlux ? clFlux->vpclGetXmlObjectMulti()->pclGetListe("entry") : nullptr;
}

// The id of the group of that title (compared loosely), "" with 600032 when none has it.
CXYString<wchar_t> s_sIdGroupe(CGoogleConnexion& clConnexion, const wchar_t* pszNom, IVM* piVM,
                               CXError* pclErreur) {
    auto clFlux = s_clListeGroupes(clConnexion, piVM, pclErreur);
    if (!pclErreur->bEstPropre())
        return {};
    CXmlObjectListe* pclGroupes = s_pclEntrees(clFlux);
    FctFind::Texte clTitre("title", pszNom);
    CXmlObject* pclGroupe = pclGroupes ? pclGroupes->pclFind(&clTitre, 0) : nullptr;
    CXmlObject* pclId = pclGroupe ? pclGroupe->pclGetPropriete("id", 0) : nullptr;
    CXYString<wchar_t> sId;
    CXError clLecture;
    if (!pclId || !pclId->vbGet(sId, clLecture))
        pclErreur->SetUserError(&gstMyModuleInfo60, knErreurGroupeInconnu, pszNom);
    return sId;
}

// Only "http://" marks an id; anything else, "https://" too, is a group's name.
bool s_bEstIdGroupe(std::wstring_view sv) {
    constexpr std::wstring_view svHttp = L"http://";
    if (sv.size() < svHttp.size())
        return false;
    for (size_t i = 0; i < svHttp.size(); ++i)
        if (static_cast<wchar_t>(std::towlower(static_cast<wint_t>(sv[i]))) != svHttp[i])
            return false;
    return true;
}

} // namespace

IKLTableau* CGoogleConnexion::GglListeContact(CCtxInfo* pclCtx, CXError* pclErreur,
                                              CXYString<wchar_t> sGroupe, int nDebut, int nMax) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, piVM, pclErreur))
        return CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur, CGoogleContact::ms_piType)
            .pDetach();
    if (nDebut < 1 || nMax < 0) {
        pclErreur->SetUserError(&gstMyModuleInfo60, knErreurArgument, nDebut < 1 ? 3 : 4);
        return nullptr;
    }
    CHTTPRequete clRequete(SERVICEGOOGLE_CONTACT, s_sFeeds(s_szContacts).c_str(), HTTPCT_ATOM);
    if (nDebut != 1)
        clRequete.AjouteParametre(s_szStartIndex, nDebut);
    if (nMax == 0)
        clRequete.AjouteParametre(s_szMaxResults, s_szTous);
    else
        clRequete.AjouteParametre(s_szMaxResults, nMax);
    if (!sGroupe.sv().empty()) {
        CXYString<wchar_t> sId = sGroupe;
        if (!s_bEstIdGroupe(sGroupe.sv())) {
            sId = s_sIdGroupe(*this, sGroupe.pszGet(), piVM, pclErreur);
            if (!pclErreur->bEstPropre())
                return CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur,
                                                                CGoogleContact::ms_piType)
                    .pDetach();
        }
        clRequete.AjouteParametre(s_szGroup, sId.pszGet());
    }
    return s_piListeContacts(*this, clRequete, piVM, pclErreur);
}

IKLTableau* CGoogleConnexion::GglListeContactParRequete(CCtxInfo* pclCtx, CXError* pclErreur,
                                                        const wchar_t* pszRequete) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, piVM, pclErreur))
        return CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur, CGoogleContact::ms_piType)
            .pDetach();
    // The script writes the query string itself: it goes as it stands.
    std::wstring sURL = s_sFeeds(s_szContacts);
    if (pszRequete && *pszRequete)
        sURL.append(L"?").append(pszRequete);
    CHTTPRequete clRequete(SERVICEGOOGLE_CONTACT, sURL.c_str(), HTTPCT_ATOM);
    return s_piListeContacts(*this, clRequete, piVM, pclErreur);
}

IKLTableau* CGoogleConnexion::GglListeGroupeContact(CCtxInfo* pclCtx, CXError* pclErreur) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, piVM, pclErreur))
        return CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur,
                                                        CGglGroupeContact::ms_piType)
            .pDetach();
    auto clFlux = s_clListeGroupes(*this, piVM, pclErreur);
    return s_piTableauDe(s_pclEntrees(clFlux), CGglGroupeContact::ms_piType, piVM, pclErreur);
}

// A membership that no group of the feed has gives a new, empty group at its index, so that
// the array stays index for index with the contact's Groupe.
IKLTableau* CGoogleConnexion::GglListeGroupeContact(CCtxInfo* pclCtx, CXError* pclErreur,
                                                    CGoogleContact* pclContact) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    auto clTableau =
        CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur, CGglGroupeContact::ms_piType);
    CXmlObjectListe* pclMembres = pclContact ? pclContact->pclGetListe("gContact:groupMembershipInfo") : nullptr;
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, piVM, pclErreur) || !pclMembres || !clTableau)
        return clTableau.pDetach();
    auto clFlux = s_clListeGroupes(*this, piVM, pclErreur);
    if (!clFlux)
        return clTableau.pDetach();
    CXmlObjectListe* pclGroupes = s_pclEntrees(clFlux);
    const int nNb = pclMembres->nGetNbElement();
    if (!clTableau->vbRedimensionne(nNb, pclErreur))
        return clTableau.pDetach();
    for (int i = 0; i < nNb; ++i) {
        CXYString<wchar_t> sHref;
        CXError clLecture;
        pclMembres->pclGetElement(i)->vbGet(sHref, clLecture);
        FctFind::Texte clId("id", sHref.pszGet());
        CXmlObject* pclGroupe = pclGroupes ? pclGroupes->pclFind(&clId, 0) : nullptr;
        IObjetBase* piGroupe = nullptr;
        if (pclGroupe) {
            pclGroupe->vSetParent(nullptr);
            piGroupe = pclGroupe->vpiGetObjetBaseScript();
        } else {
            piGroupe = CGglGroupeContact::s_pclCreeObjet(pclCtx, pclErreur)->piGetObjetBase();
        }
        CAny clValeur;
        clValeur.SetObjet(piGroupe, 111);
        if (!clTableau->vbSetElement(i, clValeur, pclErreur))
            break;
    }
    return clTableau.pDetach();
}

bool CGoogleConnexion::GglEcrit(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleContact* pclContact) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, piVM, pclErreur) || !pclContact)
        return false;
    // The group array may have been edited in place, unseen: every save sends the entry.
    if (pclContact->vbPreModif(*pclErreur))
        pclContact->vNotifieModif();
    pclContact->clGetUpdates().doOperations(this, piVM, pclErreur);
    return pclErreur->bEstPropre();
}

bool CGoogleConnexion::GglEcrit(CCtxInfo* pclCtx, CXError* pclErreur, CGglGroupeContact* pclGroupe) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, piVM, pclErreur) || !pclGroupe)
        return false;
    pclGroupe->clGetUpdates().doOperations(this, piVM, pclErreur);
    return pclErreur->bEstPropre();
}

bool CGoogleConnexion::GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleContact* pclContact) {
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, CCtxInfo::s_piGetVM(pclCtx), pclErreur) || !pclContact)
        return false;
    return _bGglSupprime(pclCtx, pclErreur, pclContact->vpclGetXmlObjectMulti());
}

bool CGoogleConnexion::GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CGglGroupeContact* pclGroupe) {
    if (!__bCheckAndLogService(SERVICEGOOGLE_CONTACT, CCtxInfo::s_piGetVM(pclCtx), pclErreur) || !pclGroupe)
        return false;
    return _bGglSupprime(pclCtx, pclErreur, pclGroupe->vpclGetXmlObjectMulti());
}

#define KLL_METHODES_CGoogleConnexion_GglListeContact KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglListeContactParRequete KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglListeGroupeContact KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglEcrit_1 KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglEcrit_3 KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglSupprime_2 KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglSupprime_3 KLL_OUI
#include "frame/KllMethodStubs.h"
