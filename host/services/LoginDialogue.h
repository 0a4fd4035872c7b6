// CLoginDialogue: the host's login dialogue (IAuthentification), run in the user's browser.
//
//   vGetURLRedirection  opens a listener on 127.0.0.1, on a port the system picks, and gives
//                       "http://127.0.0.1:PORT/". The listener serves one dialogue and closes;
//                       the next call opens a new one.
//   veAuthentifie       replaces every "[%STATE%]" of the login address with a fresh random
//                       value (128 bits from the system, in hex), opens the address with the
//                       browser command (STHostOptions: KVGGL_BROWSER, xdg-open, or the address
//                       printed on stderr; a routed origin is opened in its browser form,
//                       Routing.h), and waits for the browser to come back to "/" of the
//                       redirect address, at most STHostOptions::nLoginWaitMs. Requests for
//                       other paths (a browser's favicon) get a 404 and the wait goes on;
//                       several connections are served at once, since browsers open spare
//                       ones that never carry a request.
//
// The answer that comes back to "/" ends the dialogue either way:
//   - with the state value (or with any state when the address had no marker): the browser
//     gets a short page saying it may be closed, and the component gets the raw head of that
//     request, request line first, lines ended by CR LF, without the blank line;
//   - without it, or with another value: the browser gets a page saying the sign-in was
//     refused, and the result is AUTHENTIFICATION_ETAT_INVALIDE with HOSTERROR_LOGIN_STATE.
//     A forged or stale answer thus fails at once, clearly, instead of leaving the user
//     waiting for a timeout with no idea why.
// No answer in time: AUTHENTIFICATION_DELAI_DEPASSE with HOSTERROR_LOGIN_TIMEOUT. If the
// browser command fails, the address is printed on stderr and the wait goes on.
#pragma once
#include "HostOptions.h"
#include "LoginService.h"
#include "Routing.h"

#include <atomic>
#include <mutex>
#include <string>

class CLoginDialogue final : public IAuthentification {
public:
    // The count starts at 1, the creator's reference.
    explicit CLoginDialogue(const STHostOptions& stOptions);

    void vAddRef() override;
    void vRelease() override;

    void vGetURLRedirection(int bParNavigateur, CXYString<wchar_t>& sRedirection) override;
    eAUTHENTIFICATION veAuthentifie(const wchar_t* pszURLLogin, IVM* piVM,
                                    const wchar_t* pszNomFonction, CXYString<wchar_t>& sReponse,
                                    CXError* pclError) override;

    // A fresh state value: 32 hex digits from the system's random source; false when it has
    // none to give.
    static bool s_bNewState(std::string& sState);

private:
    ~CLoginDialogue();

    bool _bOpenListener();
    void _CloseListener();
    // Starts the browser on the address, or prints it; the child's id, or 0 when none runs.
    int _nOpenBrowser(const std::string& sUrl, const std::string& sFunction);

    std::atomic<int> m_nRef{1};
    std::mutex m_mutex;
    STHostOptions m_stOptions;
    CRouting m_clRouting;
    std::string m_sRouteError; // why KVGGL_ROUTE could not be read; every dialogue then fails
    int m_nListener = -1;
    int m_nPort = 0;
    std::string m_sListenerError;
};
