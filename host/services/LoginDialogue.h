// CLoginDialogue: the host's login dialogue (IAuthentification), run in the user's browser.
//
//   vGetURLRedirection  opens a listener on 127.0.0.1, on a port the system picks, and gives
//                       "http://127.0.0.1:PORT/". The listener serves one dialogue and closes;
//                       the next call opens a new one.
//   veAuthentifie       replaces every "[%STATE%]" of the login address with a fresh random
//                       value (128 bits from the system, in hex), opens the address with the
//                       browser command (STHostOptions: KVGGL_BROWSER, xdg-open, or the address
//                       printed on stderr; a routed origin is opened in its browser form,
//                       Routing.h; the command gets the address as "$1" and in
//                       KVGGL_LOGIN_URL), and waits for the browser to come back to "/" of the
//                       redirect address, at most STHostOptions::nLoginWaitMs.
//
// Only a GET of "/" bringing the state value back (any state when the address had no marker)
// ends the wait: the component gets the raw head of that request, request line first, lines
// ended by CR LF, without the blank line; the browser gets a page saying it may be closed, or,
// when the answer carries error=, that the sign-in did not complete. Anything else gets its
// page and the wait goes on, so that another local process can neither end nor answer the
// sign-in: another path (a favicon) 404, garbage 400, a wrong or missing state 400 with a page
// saying it was refused. Each connection has knRequestDeadlineMs to send its request, and when
// all knMaxClients slots are taken the oldest is dropped.
//
// Failures, fast where nobody could answer:
//   - an address with an empty client_id: HOSTERROR_LOGIN_CLIENT, at once;
//   - a provider host that the HTTP service could not reach in the last minute (the silent
//     refresh before): that transport error, at once;
//   - a browser command that exits non-zero: HOSTERROR_LOGIN_BROWSER with its status, at once;
//   - no browser command and no terminal on standard input: the wait is at most 60 s unless
//     KVGGL_LOGIN_WAIT is set, and the timeout names KVGGL_BROWSER;
//   - no answer in time: AUTHENTIFICATION_DELAI_DEPASSE with HOSTERROR_LOGIN_TIMEOUT, or
//     AUTHENTIFICATION_ETAT_INVALIDE with HOSTERROR_LOGIN_STATE when answers with a wrong
//     state were refused meanwhile.
#pragma once
#include "HostOptions.h"
#include "LoginService.h"
#include "Routing.h"

#include <atomic>
#include <chrono>
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
    struct STSignIn;
    struct STClient;

    ~CLoginDialogue();

    bool _bOpenListener();
    void _CloseListener();
    // Starts the browser on the address, or prints it; the child's id, or 0 when none runs
    // (bUnattended: none, and no terminal where someone could read the address).
    int _nOpenBrowser(const std::string& sUrl, const std::string& sFunction, bool& bUnattended);

    // One sign-in, in its steps: the address checked and its state filled; the wait, which
    // watches the browser command, accepts and reads connections and serves their requests;
    // the browser left to finish; the outcome.
    eAUTHENTIFICATION _eSignIn(const wchar_t* pszURLLogin, const wchar_t* pszNomFonction,
                               CXYString<wchar_t>& sReponse, CXError& clError);
    bool _bPrepare(const wchar_t* pszURLLogin, const wchar_t* pszNomFonction, STSignIn& st,
                   CXError& clError);
    long _nWaitMs(const STSignIn& st) const;
    void _Wait(STSignIn& st);
    void _WatchBrowser(STSignIn& st);
    void _Accept(STSignIn& st);
    void _DropLateClients(STSignIn& st, std::chrono::steady_clock::time_point tNow);
    // True when the connection is done with (answered or gone).
    bool _bRead(STSignIn& st, size_t i);
    void _Serve(STSignIn& st, STClient& stClient, size_t nHeadEnd);
    static void _LeaveBrowser(int pidBrowser);
    eAUTHENTIFICATION _eOutcome(const STSignIn& st, CXYString<wchar_t>& sReponse, CXError& clError);

    std::atomic<int> m_nRef{1};
    std::mutex m_mutex;
    STHostOptions m_stOptions;
    CRouting m_clRouting;
    std::string m_sRouteError; // why KVGGL_ROUTE could not be read; every dialogue then fails
    int m_nListener = -1;
    int m_nPort = 0;
    std::string m_sListenerError;
};
