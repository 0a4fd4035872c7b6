// CGoogleConnexion, script type "gglConnexion": the application's OAuth client data and one
// token pair per Google service.
#pragma once
#include "connection/OAuthToken.h"
#include "connection/ServicesGoogle.h"
#include "frame/ObjetComposante.h"

#include "Arrays.h"
#include "TString.h"
#include "XYString.h"

class CCtxInfo;
class CXError;

// A service and its text key, as RefreshTokens writes it.
struct STIdServiceGoogle {
    eSERVICESGOOGLE eService;
    const wchar_t* pszCle;
};

class CGoogleConnexion : public CObjetComposante {
public:
    static ITypeDescription* ms_piType;
    // Every service in index order, row 0 "none" included.
    static const STIdServiceGoogle s_stTabIdServices[SERVICEGOOGLE_NB];

    CGoogleConnexion();

    static CGoogleConnexion* s_pclCreeObjet(CCtxInfo* pclCtx, CXError* pclErreur);
    // The client data and the token pairs.
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleConnexion* pclSource);
    // Back to a new connection: no client data, empty tokens.
    void RAZObjet(CCtxInfo* pclCtx, CXError* pclErreur);

    const wchar_t* GetEmail(CCtxInfo*, CXError*) const { return m_sEmail.pszGet(); }
    void SetEmail(CCtxInfo*, CXError*, const wchar_t* psz) { m_sEmail = psz; }
    // Kept for old scripts: a password and an application name are no longer used. Reading
    // gives the empty text, writing drops the value.
    const wchar_t* GetMotDePasse(CCtxInfo*, CXError*) const { return L""; }
    void SetMotDePasse(CCtxInfo*, CXError*, const wchar_t*) {}
    const wchar_t* GetNomApplication(CCtxInfo*, CXError*) const { return L""; }
    void SetNomApplication(CCtxInfo*, CXError*, const wchar_t*) {}
    const wchar_t* GetClientID(CCtxInfo*, CXError*) const { return m_sClientID.pszGet(); }
    void SetClientID(CCtxInfo*, CXError*, const wchar_t* psz) { m_sClientID = psz; }
    const wchar_t* GetClientSecret(CCtxInfo*, CXError*) const { return m_sClientSecret.pszGet(); }
    void SetClientSecret(CCtxInfo*, CXError*, const wchar_t* psz) { m_sClientSecret = psz; }
    // {"none":"<refresh token>","calendar":"...",...}: the refresh token of every service, in
    // index order, the texts as they stand.
    CXYString<wchar_t> GetRefreshTokens(CCtxInfo*, CXError*) const;
    // The host's rebuild: the refresh tokens of a text that GetRefreshTokens wrote. Services the
    // text does not name keep theirs; access tokens are left alone. An empty text changes
    // nothing; a text that is not JSON leaves the cause in the error.
    void ForceRefreshTokens(CCtxInfo*, CXError* pclErreur, const CXYString<wchar_t>& sJSON);

    // One pair per eSERVICESGOOGLE value.
    CXArray<COAuthToken>& tabGetToken() { return m_tabToken; }
    const CXArray<COAuthToken>& tabGetToken() const { return m_tabToken; }

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

private:
    void __RAZToken();

    CTString m_sEmail;
    CTString m_sClientID;
    CTString m_sClientSecret;
    CXArray<COAuthToken> m_tabToken;
};
