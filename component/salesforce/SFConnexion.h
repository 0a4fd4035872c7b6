// CSFConnexion, script type "sfConnexion": a Salesforce account reached through the partner
// SOAP interface 15.0. It logs in with user name and password, keeps the session id and the
// server URL that the login gave, and sends every later call there with the session header.
// A dead session is not renewed: the server's fault comes back on each call until SFConnecte.
#pragma once
#include "connection/ConnexionWebServiceSOAP.h"
#include "frame/ObjetComposante.h"

#include "DateTime.h"
#include "TString.h"
#include "XYString.h"

class CCtxInfo;
class CSoapParametres;
class CSFLoginResult;
class CXmlObject;
class CXmlObjectMulti;
class IKLTableau;
class INoeudXML;
class ITypeDescription;
template <class T> class CXYStringArray;
enum eTypePropXML : int32_t;
using PFNXMLCREATION = CXmlObject* (*)(INoeudXML*, eTypePropXML, CXmlObjectMulti*, const char*);

class CSFConnexion final : public CObjetComposante, public CConnexionWebServiceSOAP {
public:
    static ITypeDescription* ms_piType;

    CSFConnexion() = default;
    ~CSFConnexion() override;

    static CSFConnexion* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CSFConnexion; }
    void CopieObjet(CCtxInfo*, CXError*, CSFConnexion* pclSource);
    void RAZObjet(CCtxInfo*, CXError*);
    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

    // ---- properties
    const wchar_t* GetLogin(CCtxInfo*, CXError*) const { return m_sLogin.pszGet(); }
    void SetLogin(CCtxInfo*, CXError*, const wchar_t* psz) { m_sLogin = psz; }
    const wchar_t* GetPassword(CCtxInfo*, CXError*) const { return m_sPassword.pszGet(); }
    void SetPassword(CCtxInfo*, CXError*, const wchar_t* psz) { m_sPassword = psz; }
    IObjetBase* GetInfoSession(CCtxInfo*, CXError*);
    bool GetBacASable(CCtxInfo*, CXError*) const { return m_bBacASable; }
    void SetBacASable(CCtxInfo*, CXError*, int b) { m_bBacASable = b != 0; }
    const wchar_t* GetURLServeur(CCtxInfo*, CXError*) const { return m_sURLServeur.pszGet(); }
    void SetURLServeur(CCtxInfo*, CXError*, const wchar_t* psz) { m_sURLServeur = psz; }

    // ---- script functions
    bool SFConnecte(CCtxInfo* pclCtx, CXError* pclErreur);
    bool SFDeconnecte(CCtxInfo* pclCtx, CXError* pclErreur);
    // invalidateSessions for other sessions; the results into tabSortie when given.
    bool SFDeconnecte(CCtxInfo* pclCtx, CXError* pclErreur, CXYStringArray<wchar_t>* ptabIds,
                      IKLTableau* piSortie);
    bool SFDeconnecte(CCtxInfo* pclCtx, CXError* pclErreur, CXYStringArray<wchar_t>* ptabIds) {
        return SFDeconnecte(pclCtx, pclErreur, ptabIds, nullptr);
    }
    IObjetBase* SFExecuteRequete(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszRequete,
                                 bool bInclutSupprimes);
    IObjetBase* SFExecuteRequete(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszRequete) {
        return SFExecuteRequete(pclCtx, pclErreur, pszRequete, false);
    }
    IObjetBase* SFAvanceRequete(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sLocator);
    IObjetBase* SFRecherche(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszRecherche);
    IKLTableau* SFLit(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszChamps,
                      const wchar_t* pszType, CXYStringArray<wchar_t>* ptabIds);
    IKLTableau* SFAjoute(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piObjets);
    IKLTableau* SFModifie(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piObjets);
    IKLTableau* SFModifie(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piObjets, int nMode,
                          const wchar_t* pszChamp);
    IKLTableau* SFSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CXYStringArray<wchar_t>* ptabIds);
    IKLTableau* SFRestaure(CCtxInfo* pclCtx, CXError* pclErreur, CXYStringArray<wchar_t>* ptabIds);
    IKLTableau* SFVideCorbeille(CCtxInfo* pclCtx, CXError* pclErreur,
                                CXYStringArray<wchar_t>* ptabIds);
    IKLTableau* SFConvertitPiste(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piConversions);
    IKLTableau* SFListeProduit(CCtxInfo* pclCtx, CXError* pclErreur);
    // getDeleted and getUpdated: the dates go out as the script gave them, with no zone.
    IObjetBase* SFRechercheSupprime(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszType,
                                    CDateTime dtDebut, CDateTime dtFin);
    IObjetBase* SFRechercheModifie(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszType,
                                   CDateTime dtDebut, CDateTime dtFin);
    IKLTableau* SFFusionne(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piRequetes);
    IKLTableau* SFExecuteTraitement(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piActions);

private:
    bool _bLogin(CXError* pclErreur);
    bool _bLogout(CXError* pclErreur);
    bool __bCheckLogin(CXError* pclErreur);
    void __ClearSessionData();
    void _vRaiseErrorSOAP(CXError* pclErreur) override;

    bool _bSFAppelSOAP(CXError* pclErreur, const wchar_t* pszURL, const char* pszAction,
                       const CSoapParametres* pclParametres, CXYString<wchar_t>* psReponse);
    // One host array of the type, an object per "result" node; the empty array on failure.
    IKLTableau* _piSFAppelSOAPRenvoieTableau(IVM* piVM, CXError* pclErreur, const char* pszOperation,
                                             const CSoapParametres* pclParametres,
                                             PFNXMLCREATION pfnCreation, ITypeDescription* piType);
    // The one "result" as an object of the creation function's class, count 0; null on failure.
    CXmlObject* _pclSFAppelSOAPRenvoieSimple(CXError* pclErreur, const char* pszOperation,
                                             const CSoapParametres* pclParametres,
                                             PFNXMLCREATION pfnCreation);
    // A call with one text parameter and one result object.
    CXmlObject* _pclAppelTexte(CXError* pclErreur, const char* pszOperation, const wchar_t* pszNom,
                               const wchar_t* pszValeur, PFNXMLCREATION pfnCreation);
    // The ids, each as one element of that name.
    IKLTableau* _piAppelIds(CCtxInfo* pclCtx, CXError* pclErreur, const char* pszOperation,
                            CXYStringArray<wchar_t>* ptabIds, PFNXMLCREATION pfnCreation,
                            ITypeDescription* piType, bool bRefuseVide);
    // Each described object of the array under that name, then the call and the check.
    IKLTableau* _piAppelObjets(CCtxInfo* pclCtx, CXError* pclErreur, const char* pszOperation,
                               const wchar_t* pszNom, IKLTableau* piObjets,
                               PFNXMLCREATION pfnCreation, ITypeDescription* piType, bool bVerifie);
    CXmlObject* _pclAppelDates(CXError* pclErreur, const char* pszOperation, const wchar_t* pszType,
                               const CDateTime& dtDebut, const CDateTime& dtFin,
                               PFNXMLCREATION pfnCreation);
    // create, update and upsert: each record of the array as "sObjects".
    IKLTableau* _piSFCreeModifie(CCtxInfo* pclCtx, CXError* pclErreur, const char* pszOperation,
                                 IKLTableau* piObjets, const wchar_t* pszChampExterne);

    CTString m_sLogin;
    CTString m_sPassword;
    CSFLoginResult* m_pclSession = nullptr; // one reference, the login's tree
    CTString m_sSessionId;
    CTString m_sServerUrl;
    CTString m_sMetadataServerUrl;
    bool m_bBacASable = false;
    CTString m_sURLServeur;
};
