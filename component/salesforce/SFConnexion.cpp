#include "salesforce/SFConnexion.h"
#include "frame/ErrorCodes.h"

#include "frame/ComposanteGGL.h"
#include "frame/FctEntonnoir.h"
#include "frame/ModuleInfo.h"
#include "salesforce/SFObject.h"
#include "salesforce/SoapParametres.h"

#include "Any.h"
#include "Arrays.h"
#include "KVResult.h"
#include "Ref.h"
#include "VM.h"
#include "XMLService.h"
#include "XError.h"

#include <string>
#include <vector>

namespace {

constexpr unsigned knErreurReponseIllisible = KVERR_UNREADABLE_ANSWER;
constexpr unsigned knErreurSessionIncomplete = KVERR_INCOMPLETE_LOGIN_ANSWER;
constexpr unsigned knErreurSOAP = KVERR_SERVER_FAULT;
constexpr unsigned knErreurPasDeLogin = KVERR_INCOMPLETE_CONNECTION;
constexpr unsigned knErreurEchecElement = KVERR_RECORDS_REFUSED;
constexpr unsigned knErreurParametre = KVERR_INVALID_PARAMETER;

constexpr wchar_t gszUrlSalesforce[] = L"https://login.salesforce.com/services/Soap/u/15.0";
constexpr wchar_t gszUrlSalesforceBacASable[] = L"https://test.salesforce.com/services/Soap/u/15.0";
constexpr wchar_t gszNamespaceSalesforce[] =
    L"xmlns:urn=\"urn:partner.soap.sforce.com\" xmlns:sf=\"urn:sobject.partner.soap.sforce.com\"";
constexpr wchar_t gszFormatEntete[] =
    L"<urn:SessionHeader><urn:sessionId>%ls</urn:sessionId></urn:SessionHeader>";

// The object behind a host value, when it is of that class.
template <class T> T* s_pclObjetDe(const CAny& clValeur) {
    auto* pi = static_cast<IObjetBase*>(clValeur.piGetObjet());
    CObjetComposanteBase* pcl = pi ? CObjetComposanteBase::s_pclDepuisObjetBase(pi) : nullptr;
    return dynamic_cast<T*>(pcl);
}

// The first result whose success is false raises 600047; the array stays whole.
void s_VerifieResultats(IKLTableau* piTableau, CXError* pclErreur) {
    if (!piTableau || !pclErreur->bEstPropre())
        return;
    for (int i = 0; i < piTableau->vnGetNbElement(); ++i) {
        CAny clElement;
        if (!piTableau->vbGetElement(i, clElement, nullptr))
            continue;
        auto* pi = static_cast<IObjetBase*>(clElement.piGetObjet());
        auto* pcl = dynamic_cast<CXmlObjectMulti*>(pi ? CObjetComposanteBase::s_pclDepuisObjetBase(pi)
                                                      : nullptr);
        if (pcl && CXmlProprietesScript::s_nGetEntier(pcl, "success") == 0) {
            pclErreur->SetUserError(&gstMyModuleInfo60, knErreurEchecElement);
            return;
        }
    }
}

IKLTableau* s_piTableauVide(IVM* piVM, CXError* pclErreur, ITypeDescription* piType) {
    CXError clAutre;
    return CComposanteGGL::s_pclAlloueTableauVMVide(
               piVM, pclErreur->bEstPropre() ? pclErreur : &clAutre, piType)
        .pDetach();
}

} // namespace

ITypeDescription* CSFConnexion::ms_piType = nullptr;

CSFConnexion::~CSFConnexion() { __ClearSessionData(); }

void CSFConnexion::CopieObjet(CCtxInfo*, CXError*, CSFConnexion* pclSource) {
    if (!pclSource || pclSource == this)
        return;
    m_sLogin = pclSource->m_sLogin;
    m_sPassword = pclSource->m_sPassword;
    m_bBacASable = pclSource->m_bBacASable;
    m_sURLServeur = pclSource->m_sURLServeur;
}

void CSFConnexion::RAZObjet(CCtxInfo*, CXError*) {
    __ClearSessionData();
    m_sLogin.Vide();
    m_sPassword.Vide();
    m_bBacASable = false;
    m_sURLServeur.Vide();
}

IObjetBase* CSFConnexion::GetInfoSession(CCtxInfo*, CXError*) {
    return m_pclSession ? m_pclSession->piGetObjetBase() : nullptr;
}

// ---- session -----------------------------------------------------------------------------

void CSFConnexion::__ClearSessionData() {
    m_sSessionId.Vide();
    m_sServerUrl.Vide();
    m_sMetadataServerUrl.Vide();
    if (m_pclSession)
        m_pclSession->vRelease();
    m_pclSession = nullptr;
}

bool CSFConnexion::__bCheckLogin(CXError* pclErreur) {
    return m_pclSession || _bLogin(pclErreur);
}

void CSFConnexion::_vRaiseErrorSOAP(CXError* pclErreur) {
    IHTTP* piHTTP = piGetCOM(pclErreur);
    CTString sMessage, sCode;
    CAny clReponse;
    CXError clHote;
    if (!piHTTP || !FctEntonnoir::bSoapErreur(piHTTP, &clHote, SOAP_ERREUR_MESSAGE, sMessage) ||
        !FctEntonnoir::bSoapErreur(piHTTP, &clHote, SOAP_ERREUR_CODE, sCode) ||
        !FctEntonnoir::bSoapDonneResultat(piHTTP, &clHote, clReponse, SOAP_RESULTAT_REPONSE, 1))
        return;
    CXYString<wchar_t> sReponse;
    (void)clReponse.__nFillString(sReponse);
    // A fault is only ever told with its two parts and the reply it came in.
    pclErreur->SetUserError(&gstMyModuleInfo60, knErreurSOAP, sCode.pszGet(), sMessage.pszGet(),
                            sReponse.sv().empty() ? L"<>" : sReponse.pszGet());
}

bool CSFConnexion::_bSFAppelSOAP(CXError* pclErreur, const wchar_t* pszURL, const char* pszAction,
                                 const CSoapParametres* pclParametres,
                                 CXYString<wchar_t>* psReponse) {
    const wchar_t* pszCorps = pclParametres && !pclParametres->bEstVide() ? pclParametres->pszGet()
                                                                          : nullptr;
    // Before login there is no header at all.
    std::wstring sEntete;
    if (!m_sSessionId.bEstVide()) {
        const std::wstring sFormat = gszFormatEntete;
        const size_t n = sFormat.find(L"%ls");
        sEntete = sFormat.substr(0, n) + m_sSessionId.pszGet() + sFormat.substr(n + 3);
    }
    IHTTP* piHTTP = piGetCOM(pclErreur);
    if (!piHTTP)
        return false;
    return _bAppelSOAP(piHTTP, pclErreur, pszURL, sEntete.empty() ? nullptr : sEntete.c_str(),
                       pszAction, pszCorps, gszNamespaceSalesforce, nullptr, psReponse);
}

bool CSFConnexion::_bLogin(CXError* pclErreur) {
    if (m_sLogin.bEstVide()) {
        pclErreur->SetUserError(&gstMyModuleInfo60, knErreurPasDeLogin);
        return false;
    }
    __ClearSessionData();
    CSoapParametres clParametres;
    clParametres.Ajoute(L"urn:username", m_sLogin.pszGet());
    clParametres.Ajoute(L"urn:password", m_sPassword.pszGet());
    const wchar_t* pszURL = !m_sURLServeur.bEstVide() ? m_sURLServeur.pszGet()
                            : m_bBacASable            ? gszUrlSalesforceBacASable
                                                      : gszUrlSalesforce;
    CXYString<wchar_t> sReponse;
    if (!_bSFAppelSOAP(pclErreur, pszURL, "urn:login", &clParametres, &sReponse))
        return false;
    auto clNoeud = CRef<INoeudXML>::Adopt(_pclGetResponseNode(sReponse.pszGet(), "login", pclErreur));
    if (!pclErreur->bEstPropre() || !clNoeud)
        return false;
    auto* pclSession = new CSFLoginResult(clNoeud.pGet(), XML_ELEMENT, nullptr, "result");
    CXError clInit;
    pclSession->vInit(clInit);
    m_pclSession = pclSession;
    const CXYString<wchar_t> sId = CXmlProprietesScript::s_sGetTexte(pclSession, "sessionId");
    const CXYString<wchar_t> sServeur = CXmlProprietesScript::s_sGetTexte(pclSession, "serverUrl");
    const CXYString<wchar_t> sMeta = CXmlProprietesScript::s_sGetTexte(pclSession, "metadataServerUrl");
    if (!pclSession->pclGetPropriete("sessionId", 0) || !pclSession->pclGetPropriete("serverUrl", 0) ||
        !pclSession->pclGetPropriete("metadataServerUrl", 0)) {
        pclErreur->SetUserError(&gstMyModuleInfo60, knErreurSessionIncomplete);
        __ClearSessionData();
        return false;
    }
    CComposanteGGL::s_CWString2CTString(sId, m_sSessionId);
    CComposanteGGL::s_CWString2CTString(sServeur, m_sServerUrl);
    CComposanteGGL::s_CWString2CTString(sMeta, m_sMetadataServerUrl);
    return true;
}

bool CSFConnexion::_bLogout(CXError* pclErreur) {
    if (m_sSessionId.bEstVide())
        return true;
    if (!_bSFAppelSOAP(pclErreur, m_sServerUrl.pszGet(), "urn:logout", nullptr, nullptr))
        return false;
    __ClearSessionData();
    return true;
}

bool CSFConnexion::SFConnecte(CCtxInfo*, CXError* pclErreur) { return _bLogin(pclErreur); }
bool CSFConnexion::SFDeconnecte(CCtxInfo*, CXError* pclErreur) { return _bLogout(pclErreur); }

// ---- the two call helpers ------------------------------------------------------------------

IKLTableau* CSFConnexion::_piSFAppelSOAPRenvoieTableau(IVM* piVM, CXError* pclErreur,
                                                       const char* pszOperation,
                                                       const CSoapParametres* pclParametres,
                                                       PFNXMLCREATION pfnCreation,
                                                       ITypeDescription* piType) {
    auto clTableau = CRef<IKLTableau>::Adopt(s_piTableauVide(piVM, pclErreur, piType));
    if (!clTableau)
        return nullptr;
    const std::string sAction = std::string("urn:") + pszOperation;
    CXYString<wchar_t> sReponse;
    if (!_bSFAppelSOAP(pclErreur, m_sServerUrl.pszGet(), sAction.c_str(), pclParametres, &sReponse))
        return clTableau.pDetach();
    auto clNoeud = CRef<INoeudXML>::Adopt(_pclGetResponseNode(sReponse.pszGet(), pszOperation, pclErreur));
    if (!pclErreur->bEstPropre())
        return clTableau.pDetach();
    std::vector<CXmlObject*> tabObjets;
    for (CRef<INoeudXML> cl = clNoeud; cl; cl = CRef<INoeudXML>::Adopt(cl->piGetSuivant("result")))
        tabObjets.push_back(pfnCreation(cl.pGet(), XML_ELEMENT, nullptr, "result"));
    if (!clTableau->vbRedimensionne(static_cast<int>(tabObjets.size()), pclErreur))
        tabObjets.clear();
    for (size_t i = 0; i < tabObjets.size(); ++i) {
        // The value holds one reference, the array another: the object lives with the array.
        CAny clValeur;
        clValeur.SetObjet(tabObjets[i]->vpiGetObjetBaseScript(), 111);
        (void)clTableau->vbSetElement(static_cast<int>(i), clValeur, pclErreur);
    }
    return clTableau.pDetach();
}

CXmlObject* CSFConnexion::_pclSFAppelSOAPRenvoieSimple(CXError* pclErreur, const char* pszOperation,
                                                       const CSoapParametres* pclParametres,
                                                       PFNXMLCREATION pfnCreation) {
    const std::string sAction = std::string("urn:") + pszOperation;
    CXYString<wchar_t> sReponse;
    if (!_bSFAppelSOAP(pclErreur, m_sServerUrl.pszGet(), sAction.c_str(), pclParametres, &sReponse))
        return nullptr;
    auto clNoeud = CRef<INoeudXML>::Adopt(_pclGetResponseNode(sReponse.pszGet(), pszOperation, pclErreur));
    if (!clNoeud)
        return nullptr;
    return pfnCreation(clNoeud.pGet(), XML_ELEMENT, nullptr, "result");
}

// ---- the calls -----------------------------------------------------------------------------

namespace {

// Objects handed to the host start at count 0: the host's reference, or the array's, is
// their only one.
template <class T>
CXmlObject* s_pclCreePourHote(INoeudXML* piNoeud, eTypePropXML eType, CXmlObjectMulti* pclParent,
                              const char* pszNom) {
    T* pcl = new T(piNoeud, eType, pclParent, pszNom, 0);
    CXError clErreur;
    pcl->vInit(clErreur);
    return pcl;
}

// The call's object, or an empty one, so that the script always receives an object.
template <class T> IObjetBase* s_piResultat(CXmlObject* pcl) {
    T* pclObjet = CCastor<T>(pcl).pGet();
    if (!pclObjet)
        pclObjet = T::s_pclCreeObjet(nullptr, nullptr);
    return pclObjet->piGetObjetBase();
}

} // namespace

CXmlObject* CSFConnexion::_pclAppelTexte(CXError* pclErreur, const char* pszOperation,
                                         const wchar_t* pszNom, const wchar_t* pszValeur,
                                         PFNXMLCREATION pfnCreation) {
    if (!__bCheckLogin(pclErreur))
        return nullptr;
    CSoapParametres clParametres;
    clParametres.Ajoute(pszNom, pszValeur);
    return _pclSFAppelSOAPRenvoieSimple(pclErreur, pszOperation, &clParametres, pfnCreation);
}

// The query's parameter alone carries its prefix; the others of the family stand without.
IObjetBase* CSFConnexion::SFExecuteRequete(CCtxInfo*, CXError* pclErreur, const wchar_t* pszRequete,
                                           bool bInclutSupprimes) {
    return s_piResultat<CSFQueryResult>(
        _pclAppelTexte(pclErreur, bInclutSupprimes ? "queryAll" : "query", L"urn:queryString",
                       pszRequete, &s_pclCreePourHote<CSFQueryResult>));
}
IObjetBase* CSFConnexion::SFAvanceRequete(CCtxInfo*, CXError* pclErreur, CXYString<wchar_t> sLocator) {
    return s_piResultat<CSFQueryResult>(_pclAppelTexte(pclErreur, "queryMore", L"queryLocator",
                                                       sLocator.pszGet(),
                                                       &s_pclCreePourHote<CSFQueryResult>));
}
IObjetBase* CSFConnexion::SFRecherche(CCtxInfo*, CXError* pclErreur, const wchar_t* pszRecherche) {
    return s_piResultat<CSFSearchResult>(_pclAppelTexte(pclErreur, "search", L"searchString",
                                                        pszRecherche,
                                                        &s_pclCreePourHote<CSFSearchResult>));
}

IKLTableau* CSFConnexion::_piAppelIds(CCtxInfo* pclCtx, CXError* pclErreur, const char* pszOperation,
                                      CXYStringArray<wchar_t>* ptabIds, PFNXMLCREATION pfnCreation,
                                      ITypeDescription* piType, bool bRefuseVide) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckLogin(pclErreur) || (bRefuseVide && (!ptabIds || !ptabIds->nGetNbElement())))
        return s_piTableauVide(piVM, pclErreur, piType);
    CSoapParametres clParametres;
    for (size_t i = 0; ptabIds && i < ptabIds->nGetNbElement(); ++i)
        clParametres.Ajoute(L"ids", (*ptabIds)[i]);
    IKLTableau* pi = _piSFAppelSOAPRenvoieTableau(piVM, pclErreur, pszOperation, &clParametres,
                                                  pfnCreation, piType);
    s_VerifieResultats(pi, pclErreur);
    return pi;
}

IKLTableau* CSFConnexion::SFSupprime(CCtxInfo* pclCtx, CXError* pclErreur,
                                     CXYStringArray<wchar_t>* ptabIds) {
    return _piAppelIds(pclCtx, pclErreur, "delete", ptabIds, &s_pclCreePourHote<CSFDeleteResult>,
                       CSFDeleteResult::ms_piType, true);
}
IKLTableau* CSFConnexion::SFRestaure(CCtxInfo* pclCtx, CXError* pclErreur,
                                     CXYStringArray<wchar_t>* ptabIds) {
    return _piAppelIds(pclCtx, pclErreur, "undelete", ptabIds, &s_pclCreePourHote<CSFUndeleteResult>,
                       CSFUndeleteResult::ms_piType, false);
}
IKLTableau* CSFConnexion::SFVideCorbeille(CCtxInfo* pclCtx, CXError* pclErreur,
                                          CXYStringArray<wchar_t>* ptabIds) {
    return _piAppelIds(pclCtx, pclErreur, "emptyRecycleBin", ptabIds,
                       &s_pclCreePourHote<CSFEmptyRecycleBinResult>, CSFEmptyRecycleBinResult::ms_piType,
                       false);
}

IKLTableau* CSFConnexion::SFLit(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszChamps,
                                const wchar_t* pszType, CXYStringArray<wchar_t>* ptabIds) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckLogin(pclErreur))
        return s_piTableauVide(piVM, pclErreur, CSFObject::ms_piType);
    CSoapParametres clParametres;
    clParametres.Ajoute(L"fieldList", pszChamps);
    clParametres.Ajoute(L"sObjectType", pszType);
    for (size_t i = 0; ptabIds && i < ptabIds->nGetNbElement(); ++i)
        clParametres.Ajoute(L"ids", (*ptabIds)[i]);
    return _piSFAppelSOAPRenvoieTableau(piVM, pclErreur, "retrieve", &clParametres,
                                        &s_pclCreePourHote<CSFObject>, CSFObject::ms_piType);
}

IKLTableau* CSFConnexion::_piSFCreeModifie(CCtxInfo* pclCtx, CXError* pclErreur,
                                           const char* pszOperation, IKLTableau* piObjets,
                                           const wchar_t* pszChampExterne) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckLogin(pclErreur))
        return s_piTableauVide(piVM, pclErreur, CSFUpsertResult::ms_piType);
    CSoapParametres clParametres;
    if (pszChampExterne)
        clParametres.Ajoute(L"externalIDFieldName", pszChampExterne);
    // Elements that are not records are left out without a word.
    for (int i = 0; piObjets && i < piObjets->vnGetNbElement(); ++i) {
        CAny clElement;
        if (!piObjets->vbGetElement(i, clElement, pclErreur))
            return nullptr;
        if (CSFObject* pcl = s_pclObjetDe<CSFObject>(clElement))
            clParametres.Ajoute(L"sObjects", pcl);
    }
    IKLTableau* pi = _piSFAppelSOAPRenvoieTableau(piVM, pclErreur, pszOperation, &clParametres,
                                                  &s_pclCreePourHote<CSFUpsertResult>,
                                                  CSFUpsertResult::ms_piType);
    if (pi && std::string_view(pszOperation) == "create") {
        // A create's results say nothing of "created": it is their success.
        for (int i = 0; i < pi->vnGetNbElement(); ++i) {
            CAny clElement;
            if (!pi->vbGetElement(i, clElement, nullptr))
                continue;
            if (CSFUpsertResult* pcl = s_pclObjetDe<CSFUpsertResult>(clElement))
                pcl->Forcecreated(nullptr, nullptr, pcl->Getsuccess(nullptr, nullptr));
        }
    }
    s_VerifieResultats(pi, pclErreur);
    return pi;
}

IKLTableau* CSFConnexion::SFAjoute(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piObjets) {
    return _piSFCreeModifie(pclCtx, pclErreur, "create", piObjets, nullptr);
}
IKLTableau* CSFConnexion::SFModifie(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piObjets) {
    return _piSFCreeModifie(pclCtx, pclErreur, "update", piObjets, nullptr);
}
IKLTableau* CSFConnexion::SFModifie(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piObjets,
                                    int nMode, const wchar_t* pszChamp) {
    // Upsert by an external id is the only mode there is.
    if (nMode != 1) {
        pclErreur->SetUserError(&gstMyModuleInfo60, knErreurParametre, 3);
        return nullptr;
    }
    return _piSFCreeModifie(pclCtx, pclErreur, "upsert", piObjets, pszChamp ? pszChamp : L"");
}

IKLTableau* CSFConnexion::_piAppelObjets(CCtxInfo* pclCtx, CXError* pclErreur,
                                         const char* pszOperation, const wchar_t* pszNom,
                                         IKLTableau* piObjets, PFNXMLCREATION pfnCreation,
                                         ITypeDescription* piType, bool bVerifie) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckLogin(pclErreur))
        return s_piTableauVide(piVM, pclErreur, piType);
    CSoapParametres clParametres;
    for (int i = 0; piObjets && i < piObjets->vnGetNbElement(); ++i) {
        CAny clElement;
        if (!piObjets->vbGetElement(i, clElement, pclErreur))
            return nullptr;
        auto* pi = static_cast<IObjetBase*>(clElement.piGetObjet());
        CObjetComposanteBase* pcl = pi ? CObjetComposanteBase::s_pclDepuisObjetBase(pi) : nullptr;
        if (auto* pclXml = dynamic_cast<CXmlObjectMulti*>(pcl))
            clParametres.Ajoute(pszNom, pclXml);
    }
    IKLTableau* pi = _piSFAppelSOAPRenvoieTableau(piVM, pclErreur, pszOperation, &clParametres,
                                                  pfnCreation, piType);
    if (bVerifie)
        s_VerifieResultats(pi, pclErreur);
    return pi;
}

IKLTableau* CSFConnexion::SFConvertitPiste(CCtxInfo* pclCtx, CXError* pclErreur,
                                           IKLTableau* piConversions) {
    return _piAppelObjets(pclCtx, pclErreur, "convertLead", L"leadConverts", piConversions,
                          &s_pclCreePourHote<CSFLeadConvertResult>, CSFLeadConvertResult::ms_piType,
                          true);
}
IKLTableau* CSFConnexion::SFFusionne(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piRequetes) {
    return _piAppelObjets(pclCtx, pclErreur, "merge", L"request", piRequetes,
                          &s_pclCreePourHote<CSFMergeResult>, CSFMergeResult::ms_piType, true);
}
// Submit and work item requests alike go as "actions"; a process's results are not checked.
IKLTableau* CSFConnexion::SFExecuteTraitement(CCtxInfo* pclCtx, CXError* pclErreur,
                                              IKLTableau* piActions) {
    return _piAppelObjets(pclCtx, pclErreur, "process", L"actions", piActions,
                          &s_pclCreePourHote<CSFProcessResult>, CSFProcessResult::ms_piType, false);
}

CXmlObject* CSFConnexion::_pclAppelDates(CXError* pclErreur, const char* pszOperation,
                                         const wchar_t* pszType, const CDateTime& dtDebut,
                                         const CDateTime& dtFin, PFNXMLCREATION pfnCreation) {
    if (!__bCheckLogin(pclErreur))
        return nullptr;
    CSoapParametres clParametres;
    clParametres.Ajoute(L"sObjectType", pszType);
    clParametres.AjouteDateHeure(L"startDate", dtDebut);
    clParametres.AjouteDateHeure(L"endDate", dtFin);
    return _pclSFAppelSOAPRenvoieSimple(pclErreur, pszOperation, &clParametres, pfnCreation);
}
IObjetBase* CSFConnexion::SFRechercheSupprime(CCtxInfo*, CXError* pclErreur, const wchar_t* pszType,
                                              CDateTime dtDebut, CDateTime dtFin) {
    return s_piResultat<CSFGetDeletedResult>(_pclAppelDates(
        pclErreur, "getDeleted", pszType, dtDebut, dtFin, &s_pclCreePourHote<CSFGetDeletedResult>));
}
IObjetBase* CSFConnexion::SFRechercheModifie(CCtxInfo*, CXError* pclErreur, const wchar_t* pszType,
                                             CDateTime dtDebut, CDateTime dtFin) {
    return s_piResultat<CSFGetUpdatedResult>(_pclAppelDates(
        pclErreur, "getUpdated", pszType, dtDebut, dtFin, &s_pclCreePourHote<CSFGetUpdatedResult>));
}

bool CSFConnexion::SFDeconnecte(CCtxInfo* pclCtx, CXError* pclErreur,
                                CXYStringArray<wchar_t>* ptabIds, IKLTableau* piSortie) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckLogin(pclErreur))
        return false;
    CSoapParametres clParametres;
    for (size_t i = 0; ptabIds && i < ptabIds->nGetNbElement(); ++i)
        clParametres.Ajoute(L"sessionIds", (*ptabIds)[i]);
    auto clResultats = CRef<IKLTableau>::Adopt(_piSFAppelSOAPRenvoieTableau(
        piVM, pclErreur, "invalidateSessions", &clParametres,
        &s_pclCreePourHote<CSFInvalidateSessionsResult>, CSFInvalidateSessionsResult::ms_piType));
    if (!pclErreur->bEstPropre())
        return false;
    s_VerifieResultats(clResultats.pGet(), pclErreur);
    bool bResultat = pclErreur->bEstPropre();
    if (piSortie && clResultats) {
        const int n = clResultats->vnGetNbElement();
        bResultat = piSortie->vbRedimensionne(n, pclErreur) != 0;
        for (int i = 0; bResultat && i < n; ++i) {
            CAny clElement;
            bResultat = clResultats->vbGetElement(i, clElement, pclErreur) &&
                        piSortie->vbSetElement(i, clElement, pclErreur);
        }
    }
    return bResultat;
}

IKLTableau* CSFConnexion::SFListeProduit(CCtxInfo* pclCtx, CXError* pclErreur) {
    return CComposanteGGL::s_pclAlloueTableauVMVide(CCtxInfo::s_piGetVM(pclCtx), pclErreur,
                                                    CSFProduit::ms_piType)
        .pDetach();
}

#include "frame/KllStubs.h"
#include "salesforce/SFConnexion.def"

#define KLL_METHODES_CSFConnexion_SFConnecte KLL_OUI
#define KLL_METHODES_CSFConnexion_SFDeconnecte KLL_OUI
#define KLL_METHODES_CSFConnexion_SFExecuteRequete KLL_OUI
#define KLL_METHODES_CSFConnexion_SFAvanceRequete KLL_OUI
#define KLL_METHODES_CSFConnexion_SFRecherche KLL_OUI
#define KLL_METHODES_CSFConnexion_SFLit KLL_OUI
#define KLL_METHODES_CSFConnexion_SFAjoute KLL_OUI
#define KLL_METHODES_CSFConnexion_SFModifie KLL_OUI
#define KLL_METHODES_CSFConnexion_SFSupprime KLL_OUI
#define KLL_METHODES_CSFConnexion_SFRestaure KLL_OUI
#define KLL_METHODES_CSFConnexion_SFVideCorbeille KLL_OUI
#define KLL_METHODES_CSFConnexion_SFConvertitPiste KLL_OUI
#define KLL_METHODES_CSFConnexion_SFListeProduit KLL_OUI
#define KLL_METHODES_CSFConnexion_SFRechercheSupprime KLL_OUI
#define KLL_METHODES_CSFConnexion_SFRechercheModifie KLL_OUI
#define KLL_METHODES_CSFConnexion_SFFusionne KLL_OUI
#define KLL_METHODES_CSFConnexion_SFExecuteTraitement KLL_OUI
#include "frame/KllMethodStubs.h"
