// COAuth2Token: the fields of one token answer of an OAuth 2 provider, and the parameters of
// the provider it came from, so that it can be renewed.
#pragma once
#include "oauth/OAuth2Parametres.h"
#include "connection/OAuth2TokenBase.h"

#include "Ref.h"

class CXError;
class IAuthToken;

// The text fields of a token: X(name, field of STOAuth2TokenBase).
#define KV_OAUTH2_TEXTES_JETON(X)                                                                  \
    X(Error, m_sError)                                                                             \
    X(AccessToken, m_sAccessToken)                                                                 \
    X(RefreshToken, m_sRefreshToken)                                                               \
    X(IdToken, m_sIdToken)                                                                         \
    X(TokenType, m_sTokenType)

class IOAuth2Token {
public:
    virtual void vAddRef() = 0;
    virtual void vRelease() = 0;
    virtual int vnGetVersion_IOAuth2Token() const = 0;
    virtual IOAuth2Token* vpiClone() const = 0;
#define KV_OAUTH2_ACCES(Nom, Champ)                                                                \
    virtual const CXYString<wchar_t>& vczGet##Nom() const = 0;                                     \
    virtual void vSet##Nom(const CXYString<wchar_t>& s) = 0;
    KV_OAUTH2_TEXTES_JETON(KV_OAUTH2_ACCES)
#undef KV_OAUTH2_ACCES
    virtual int vnGetTokenExpires() const = 0;
    virtual void vSetTokenExpires(int nSecondes) = 0;
    // Borrowed; null when the token came without them.
    virtual IOAuth2Parametres* vpiGetOAuth2Parametres() const = 0;
    // A new token (count 0) from the token endpoint for the refresh token; null when there is
    // no refresh token or no parameters, or when the endpoint did not answer 200.
    virtual IAuthToken* vpiRequestRefreshToken() = 0;

protected:
    virtual ~IOAuth2Token() = default;
};

class COAuth2Token final : public CImplInterfaceAddRefRelease<IOAuth2Token, CAddRefRelease>,
                           public STOAuth2TokenBase {
public:
    explicit COAuth2Token(IOAuth2Parametres* piParametres)
        : m_clParametres(CRef<IOAuth2Parametres>::Retain(piParametres)) {}
    COAuth2Token(const CXYString<wchar_t>& sAccessToken, const CXYString<wchar_t>& sTokenType,
                 IOAuth2Parametres* piParametres);

    int vnGetVersion_IOAuth2Token() const override { return 1; }
    IOAuth2Token* vpiClone() const override;
#define KV_OAUTH2_ACCES(Nom, Champ)                                                                \
    const CXYString<wchar_t>& vczGet##Nom() const override {                                       \
        return Champ;                                                                              \
    }                                                                                              \
    void vSet##Nom(const CXYString<wchar_t>& s) override {                                         \
        Champ = s;                                                                                 \
    }
    KV_OAUTH2_TEXTES_JETON(KV_OAUTH2_ACCES)
#undef KV_OAUTH2_ACCES
    int vnGetTokenExpires() const override {
        return m_nExpires;
    }
    void vSetTokenExpires(int nSecondes) override {
        m_nExpires = nSecondes;
    }
    IOAuth2Parametres* vpiGetOAuth2Parametres() const override {
        return m_clParametres.pGet();
    }
    IAuthToken* vpiRequestRefreshToken() override;

    // The fields from the JSON text of a token answer; a token type the answer does not give
    // is "Bearer". False with 600003 (when the error held nothing yet) if it is not JSON.
    bool bInitFromJSON(const char* pszTexte, CXError* pclErreur);
    void RAZ() {
        static_cast<STOAuth2TokenBase&>(*this) = STOAuth2TokenBase();
    }

private:
    ~COAuth2Token() override = default;

    CRef<IOAuth2Parametres> m_clParametres;
};
