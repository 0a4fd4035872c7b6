// CInterfGGLOAuth2: the login seam for any OAuth 2 provider that a script describes. It makes
// the authorisation address from the script's texts, checks the state it sent (when it sent
// one), takes a token given straight in the return, or exchanges the code for one. Lives on
// the stack of AuthIdentifie.
#pragma once
#include "oauth/AuthToken.h"

#include "frame/InterfAuthentification.h"

#include "Ref.h"
#include "XYString.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CXError;
class IHTTP;
class IVM;

// Query parameters by name, names compared ignoring case. Entries keep the place of their
// first setting, so a query goes out in the order it was built.
class CTableParametresOAuth2 {
public:
    void Set(std::wstring_view svCle, std::wstring_view svValeur);
    // "a=b&c" from the entries whose name is not empty; a value left empty gives the name alone.
    std::wstring sJoint() const;

private:
    std::vector<std::pair<std::wstring, std::wstring>> m_tab;
};

class CInterfGGLOAuth2 final : public IInterfGGLCnx {
public:
    CInterfGGLOAuth2(IOAuth2Parametres* piParametres, IVM* piVM, CXError* pclErreur, IHTTP* piHTTP)
        : m_clParametres(CRef<IOAuth2Parametres>::Retain(piParametres)), m_piVM(piVM),
          m_pclErreur(pclErreur), m_piHTTP(piHTTP) {}

    const wchar_t* sGetClientID() const override {
        return m_clParametres->vczGetClientID().pszGet();
    }
    const wchar_t* sGetClientSecret() const override {
        return m_clParametres->vczGetClientSecret().pszGet();
    }
    bool bGetParNavigateur() const override { return true; }
    const wchar_t* sGetURLLogin() const override;
    bool bProcessRedirectionHTTP(const wchar_t* pszReponse, const wchar_t* pszRedirection) override;
    const wchar_t* sGetURLRedirection() const override {
        return m_clParametres->vczGetURLRedirection().pszGet();
    }

    // The token of the last exchange, kept on failure too so that its answer can be read.
    IAuthToken* piGetResultat() const { return m_clResultat.pGet(); }
    // The state sent in the login address; empty when the host's marker served.
    const CXYString<wchar_t>& sGetState() const { return m_sState; }

    // Reads "a=b&c=d" into the table: a piece without "=" is a name with an empty value.
    void __ExtraitParamsToHash(const CXYString<wchar_t>& sTexte, CTableParametresOAuth2& tab) const;

private:
    bool _bErreur(unsigned nCode, const wchar_t* pszArgument);

    CRef<IOAuth2Parametres> m_clParametres;
    IVM* m_piVM;
    CXError* m_pclErreur;
    IHTTP* m_piHTTP;
    mutable CXYString<wchar_t> m_sState;
    mutable CXYString<wchar_t> m_sURL;
    CRef<IAuthToken> m_clResultat;
};
