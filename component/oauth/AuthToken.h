// CAuthToken: a token as a script keeps it, the provider's answer byte for byte with the token
// read from it. CAuthTokenVide stands for no token at all.
#pragma once
#include "foundation/SimpleBuffer.h"
#include "oauth/OAuth2Token.h"

#include "Ref.h"

class CXError;

class IAuthToken {
public:
    virtual void vAddRef() = 0;
    virtual void vRelease() = 0;
    virtual int vnGetVersion_IAuthToken() const = 0;
    virtual IAuthToken* vpiClone() const = 0;
    virtual const CSimpleBuffer& vclGetBufferServeur() const = 0;
    // Borrowed; null for no token.
    virtual IOAuth2Token* vpiGetOAuth2Token() const = 0;

protected:
    virtual ~IAuthToken() = default;
};

class CAuthToken final : public CImplInterfaceAddRefRelease<IAuthToken, CAddRefRelease> {
public:
    CAuthToken(CSimpleBuffer clServeur, IOAuth2Token* piToken)
        : m_clServeur(std::move(clServeur)), m_clToken(CRef<IOAuth2Token>::Retain(piToken)) {}

    int vnGetVersion_IAuthToken() const override { return 1; }
    IAuthToken* vpiClone() const override;
    const CSimpleBuffer& vclGetBufferServeur() const override { return m_clServeur; }
    IOAuth2Token* vpiGetOAuth2Token() const override { return m_clToken.pGet(); }

    // A token given whole in the browser's return: its access token and type, the return's
    // text kept as the answer (UTF-8, with its end byte).
    static CAuthToken* s_pclCreateTokenOAuth2(const CXYString<wchar_t>& sAccessToken,
                                              const CXYString<wchar_t>& sTokenType,
                                              const wchar_t* pszTexte,
                                              IOAuth2Parametres* piParametres, CXError* pclErreur);
    // A token from the body of a token answer. Made in any case, so that the answer stays
    // readable; a body that is not JSON leaves the error at level 2.
    static CAuthToken* s_pclCreateTokenOAuth2(const CSimpleBuffer& clServeur,
                                              IOAuth2Parametres* piParametres, CXError* pclErreur);

private:
    ~CAuthToken() override = default;

    CSimpleBuffer m_clServeur;
    CRef<IOAuth2Token> m_clToken;
};

class CAuthTokenVide final : public CImplInterfaceAddRefRelease<IAuthToken, CAddRefRelease> {
public:
    int vnGetVersion_IAuthToken() const override { return 1; }
    IAuthToken* vpiClone() const override { return new CAuthTokenVide; }
    const CSimpleBuffer& vclGetBufferServeur() const override { return m_clVide; }
    IOAuth2Token* vpiGetOAuth2Token() const override { return nullptr; }

private:
    ~CAuthTokenVide() override = default;
    CSimpleBuffer m_clVide;
};
