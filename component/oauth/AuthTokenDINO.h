// CAuthTokenDINO, script type "AuthToken": the token that AuthIdentifie returns, with the
// provider's answer, and its saved form so that a script keeps it between runs.
#pragma once
#include "oauth/AuthToken.h"

#include "frame/ObjetComposante.h"

#include "KLBIN.h"
#include "Ref.h"

class CCtxInfo;
class CXError;
class COAuth2ParametresDINO;

class IAuthTokenDINO {
public:
    // Borrowed; null for no token.
    virtual IAuthToken* vpiGetAuthToken() = 0;
    virtual void vSetAuthTokenRefresh(IAuthToken* piToken) = 0;

protected:
    ~IAuthTokenDINO() = default;
};

class CAuthTokenDINO final : public CObjetComposante, public IAuthTokenDINO {
public:
    static ITypeDescription* ms_piType;

    CAuthTokenDINO() = default;
    // A token read from a token answer's text, for those parameters.
    CAuthTokenDINO(COAuth2ParametresDINO* pclParametres, const CXYString<char>& sTexte);
    explicit CAuthTokenDINO(IAuthToken* piToken) : m_clToken(CRef<IAuthToken>::Retain(piToken)) {}

    static CAuthTokenDINO* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CAuthTokenDINO; }
    // The parameters object and the answer's text.
    static CAuthTokenDINO* s_pclCreeObjet(CCtxInfo*, CXError*, unsigned char** ppArguments);
    void CopieObjet(CCtxInfo*, CXError*, CAuthTokenDINO* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { m_clToken = {}; }

    IAuthToken* vpiGetAuthToken() override { return m_clToken.pGet(); }
    void vSetAuthTokenRefresh(IAuthToken* piToken) override {
        m_clToken = CRef<IAuthToken>::Retain(piToken);
    }

    bool GetValide(CCtxInfo*, CXError*) const;
    CXYString<wchar_t> GetValeur(CCtxInfo*, CXError*) const;
    void SetValeur(CCtxInfo*, CXError*, const CXYString<wchar_t>& sAccessToken);
    CKLBIN GetReponseServeur(CCtxInfo*, CXError*) const;
    CKLBIN Get__Serialisation__(CCtxInfo*, CXError*) const;
    // An altered or cut saved form leaves the token as it was, with error 600048.
    void Force__Serialisation__(CCtxInfo*, CXError* pclErreur, const CKLBIN& clSauve);

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

private:
    ~CAuthTokenDINO() override = default;
    IOAuth2Token* _piGetOAuth2Token() const {
        return m_clToken ? m_clToken->vpiGetOAuth2Token() : nullptr;
    }

    CRef<IAuthToken> m_clToken;
};
