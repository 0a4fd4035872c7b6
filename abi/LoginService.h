// IAuthentification: the host's login dialogue. The host implements it: it serves the redirect
// address, shows the provider's login page to the user and catches the browser's return. The
// component gets it from the VM of the call (IVM::piGetAuthentification), builds the login URL
// and reads the result out of the request that came back. Slot order is binding.
#pragma once
#include "ObjectInterfaces.h"

class CXError;
class IVM;
template <class T> class CXYString;

// The login URL ends with "&state=" and this marker; the service replaces it with a fresh
// random value, and refuses an answer that does not bring that value back.
inline constexpr wchar_t gszMarqueurEtat[] = L"[%STATE%]";

enum eAUTHENTIFICATION : int {
    AUTHENTIFICATION_OK = 0,
    AUTHENTIFICATION_ERREUR = 1,        // the cause is in the error
    AUTHENTIFICATION_ANNULEE = 2,       // the user closed the dialogue
    AUTHENTIFICATION_DELAI_DEPASSE = 3, // no answer in time
    AUTHENTIFICATION_ETAT_INVALIDE = 4, // the answer did not bring the state value back
};

class IAuthentification : public IInterfaceObjetBase {
public:
    // The address the service will serve, to be given to the provider as redirect_uri.
    // bParNavigateur 1: the dialogue runs in the user's browser; 0: the host may use a window
    // of its own. A host with one way of doing it takes no notice.
    virtual void vGetURLRedirection(int bParNavigateur, CXYString<wchar_t>& sRedirection) = 0;
    // Runs the dialogue on the login URL, pszNomFonction naming the script function that asked,
    // and blocks until it ends. On AUTHENTIFICATION_OK, sReponse is the raw head of the request
    // that reached the redirect address, request line first ("GET /?code=...&state=...
    // HTTP/1.1"), lines ended by "\r\n".
    virtual eAUTHENTIFICATION veAuthentifie(const wchar_t* pszURLLogin, IVM* piVM,
                                            const wchar_t* pszNomFonction,
                                            CXYString<wchar_t>& sReponse, CXError* pclErreur) = 0;

protected:
    ~IAuthentification() = default;
};
