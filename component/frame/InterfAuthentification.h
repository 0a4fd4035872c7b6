// What the login driver CComposanteGGL::s_bAuthIdentifie needs of a provider: its client
// data, the login address, and how to turn the browser's return into tokens. The frame owns
// the interface and the connections implement it, so that the frame never reaches into them.
#pragma once

// The kind of runtime, as the host reports it, that has a login dialogue. Connections saved in
// the host's store are for the other kinds.
inline constexpr int knProduitAvecDialogue = 1;

class IInterfGGLCnx {
public:
    virtual const wchar_t* sGetClientID() const = 0;
    virtual const wchar_t* sGetClientSecret() const = 0;
    // Whether the host is to run the dialogue in the user's browser.
    virtual bool bGetParNavigateur() const = 0;
    // The provider's authorisation address with its query, before redirect_uri and state;
    // valid until the next call.
    virtual const wchar_t* sGetURLLogin() const = 0;
    // pszReponse: the raw head of the request that reached pszRedirection, request line first.
    virtual bool bProcessRedirectionHTTP(const wchar_t* pszReponse,
                                         const wchar_t* pszRedirection) = 0;
    virtual const wchar_t* sGetURLRedirection() const = 0;

protected:
    ~IInterfGGLCnx() = default;
};
