// Google's side of the interactive authorisation (frame/InterfAuthentification.h has the
// interface the driver needs), made on the stack of a login for the services it asks.
#pragma once
#include "XYString.h"
#include "frame/InterfAuthentification.h"

class CGoogleConnexion;
class CXError;

// What the browser's return carried, each field empty when absent.
struct stInfoResHTTP {
    CXYString<wchar_t> m_sError;
    CXYString<wchar_t> m_sState;
    CXYString<wchar_t> m_sCode;
    CXYString<wchar_t> m_sAccessToken;
    CXYString<wchar_t> m_sTokenType;
};

class CInterfGGLCnx final : public IInterfGGLCnx {
public:
    // nServices: the script bits of the services the login asks for.
    CInterfGGLCnx(CXError* pclErreur, CGoogleConnexion* pclConnexion, int nServices)
        : m_pclErreur(pclErreur), m_pclConnexion(pclConnexion), m_nServices(nServices) {}

    const wchar_t* sGetClientID() const override;
    const wchar_t* sGetClientSecret() const override;
    bool bGetParNavigateur() const override;
    const wchar_t* sGetURLLogin() const override;
    // Exchanges the code at the token endpoint and stores the tokens for the services. False
    // with the provider's error text as the connection's last error, or the cause in the error.
    bool bProcessRedirectionHTTP(const wchar_t* pszReponse, const wchar_t* pszRedirection) override;
    const wchar_t* sGetURLRedirection() const override { return L""; }

    // Reads the query (or the fragment) of the request line of pszTexte. True when the last of
    // "error", "code" and "access_token" seen says success: a code or a token, not empty.
    static bool s_bExtraitInfoResHTTP(const wchar_t* pszTexte, stInfoResHTTP& stInfo);

private:
    CXError* m_pclErreur;
    CGoogleConnexion* m_pclConnexion;
    int m_nServices;
    mutable CXYString<wchar_t> m_sURL;
};
