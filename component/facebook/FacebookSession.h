// CFacebookSession, script type "fbSession": what a script sets (application id and secret,
// e-mail, permissions, page) and the connection it owns. Its script functions open and close
// the session, tell its state, and send Graph requests with its token.
#pragma once
#include "facebook/FacebookConnexionGenerique.h"
#include "frame/ObjetComposante.h"

#include "KLBIN.h"
#include "Ref.h"
#include "TString.h"

#include <memory>

class CAny;
class CCtxInfo;
class CKLANYArray;
class IKLTableau;

class CFacebookSession : public CObjetComposante {
public:
    static ITypeDescription* ms_piType;

    CFacebookSession();
    ~CFacebookSession() override;

    static CFacebookSession* s_pclCreeObjet(CCtxInfo* pclCtx, CXError* pclErreur);
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CFacebookSession* pclSource);
    void RAZObjet(CCtxInfo* pclCtx, CXError* pclErreur);

    // ---- properties
    const wchar_t* GetAppID(CCtxInfo*, CXError*) const;
    void SetAppID(CCtxInfo*, CXError*, const wchar_t* psz);
    const wchar_t* GetAppSecret(CCtxInfo*, CXError*) const;
    void SetAppSecret(CCtxInfo*, CXError*, const wchar_t* psz);
    const wchar_t* GetEmail(CCtxInfo*, CXError*) const;
    void SetEmail(CCtxInfo*, CXError*, const wchar_t* psz);
    IKLTableau* GetPermission(CCtxInfo*, CXError*) const { return m_clPermission.pGet(); }
    void SetPermission(CCtxInfo*, CXError*, IKLTableau* piTableau);
    const wchar_t* GetPageID(CCtxInfo*, CXError*) const { return m_sPageID.pszGet(); }
    void SetPageID(CCtxInfo*, CXError*, const wchar_t* psz) { m_sPageID = psz; }

    // ---- script functions
    bool FBOuvreSession(CCtxInfo* pclCtx, CXError* pclErreur);
    void FBFermeSession(CCtxInfo* pclCtx, CXError* pclErreur);
    // 1 connected, 2 not, -1 without a connection.
    int FBEtatSession(CCtxInfo* pclCtx, CXError* pclErreur);
    // A Graph request with the session's token; verb 1 GET, 2 POST, 3 PUT. The body of the
    // answer, or an empty binary with the error.
    CKLBIN FBRequete(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszURL, int nVerbe,
                     CKLBIN clDonnees);
    CKLBIN FBRequete(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszURL, int nVerbe) {
        return FBRequete(pclCtx, pclErreur, pszURL, nVerbe, CKLBIN());
    }
    CKLBIN FBRequete(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszURL) {
        return FBRequete(pclCtx, pclErreur, pszURL, knVerbeGET);
    }
    // One member of the user's profile as text; "picture" gives the picture's bytes.
    CAny FBRecupereInformationUtilisateur(CCtxInfo* pclCtx, CXError* pclErreur,
                                          const wchar_t* pszNom);

    static constexpr int knVerbeGET = 1;

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

private:
    // The permissions in order, then the page's marked element when a page is set.
    void _ConstruitParamArray(CKLANYArray& tabListe) const;
    // Whether the session is connected, restoring a saved token; 600056 otherwise.
    bool _bVerifieConnecte(IVM* piVM, CXError* pclErreur);

    std::unique_ptr<CFaceBookConnexionGenerique> m_pclConnexion;
    CRef<IKLTableau> m_clPermission;
    CTString m_sPageID;
};
