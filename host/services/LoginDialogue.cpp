#include "LoginDialogue.h"

#include "HostBarrier.h"
#include "HostErrors.h"
#include "KVResult.h"
#include "Pkce.h"
#include "Utf8.h"
#include "XError.h"
#include "XYString.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <spawn.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

extern char** environ;

namespace {

constexpr char kszMarker[] = "[%STATE%]";
constexpr size_t knMaxHead = 16384;        // a request head larger than this is not a browser's
constexpr size_t knMaxClients = 16;        // connections served at once
constexpr long knRequestDeadlineMs = 5000; // a connection sends its request within this
constexpr int knBrowserGraceMs = 500;      // how long a finished dialogue waits for its browser

const char* const kszPageDone =
    "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Signed in</title></head><body>"
    "<p>The sign-in is complete. You may close this window and return to the application.</p>"
    "</body></html>";
const char* const kszPageRefused =
    "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Sign-in refused</title></head>"
    "<body><p>This sign-in answer was refused: it did not bring back the value the application "
    "sent with the request. Start the sign-in again from the application.</p></body></html>";
const char* const kszPageNotFound =
    "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Not found</title></head>"
    "<body><p>Not found.</p></body></html>";

// Browsers started by a dialogue that did not end in time; reaped at the next dialogue so that
// no zombie stays behind.
std::mutex gmutexChildren;
std::vector<pid_t> gtabChildren;

void s_ReapChildren() {
    std::lock_guard guard(gmutexChildren);
    std::erase_if(gtabChildren, [](pid_t pid) {
        int nStatus = 0;
        pid_t n = ::waitpid(pid, &nStatus, WNOHANG);
        return n == pid || (n < 0 && errno == ECHILD);
    });
}

void s_Close(int& nFd) {
    if (nFd >= 0)
        ::close(nFd);
    nFd = -1;
}

// Sends the whole answer on a non-blocking socket, giving up after a second of no progress,
// then closes it.
void s_Answer(int& nFd, int nCode, const char* pszReason, const char* pszPage) {
    std::string s = "HTTP/1.1 " + std::to_string(nCode) + " " + pszReason +
                    "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
                    std::to_string(std::strlen(pszPage)) +
                    "\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n" + pszPage;
    size_t nSent = 0;
    while (nSent < s.size()) {
        ssize_t n = ::send(nFd, s.data() + nSent, s.size() - nSent, MSG_NOSIGNAL);
        if (n > 0) {
            nSent += static_cast<size_t>(n);
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
            pollfd st{nFd, POLLOUT, 0};
            if (::poll(&st, 1, 1000) > 0)
                continue;
        }
        break;
    }
    ::shutdown(nFd, SHUT_WR);
    s_Close(nFd);
}

std::string s_sSeconds(long nMs) {
    char sz[32];
    std::snprintf(sz, sizeof sz, "%g s", static_cast<double>(nMs) / 1000.0);
    return sz;
}

void s_PrintAddress(const std::string& sFunction, const std::string& sUrl,
                    const std::string& sWhy) {
    std::string s = "kvggl: ";
    if (!sWhy.empty())
        s += sWhy + "; ";
    s += "to sign in";
    if (!sFunction.empty())
        s += " (" + sFunction + ")";
    s += ", open this address in a browser:\n" + sUrl + "\n";
    ssize_t n = ::write(STDERR_FILENO, s.data(), s.size());
    (void)n;
}

} // namespace

CLoginDialogue::CLoginDialogue(const STHostOptions& stOptions) : m_stOptions(stOptions) {
    if (!m_clRouting.bParse(m_stOptions.sRoute, m_sRouteError, m_stOptions.bRouteInsecure) &&
        m_sRouteError.empty())
        m_sRouteError = "KVGGL_ROUTE cannot be read";
}

CLoginDialogue::~CLoginDialogue() {
    _CloseListener();
}

void CLoginDialogue::vAddRef() {
    m_nRef.fetch_add(1, std::memory_order_relaxed);
}

void CLoginDialogue::vRelease() {
    if (m_nRef.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

bool CLoginDialogue::s_bNewState(std::string& sState) {
    unsigned char aby[16];
    size_t nRead = 0;
    while (nRead < sizeof aby) {
        ssize_t n = ::getrandom(aby + nRead, sizeof aby - nRead, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        nRead += static_cast<size_t>(n);
    }
    if (nRead < sizeof aby) {
        // A kernel without getrandom: the device gives the same bytes.
        int nFd = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
        if (nFd < 0)
            return false;
        while (nRead < sizeof aby) {
            ssize_t n = ::read(nFd, aby + nRead, sizeof aby - nRead);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            nRead += static_cast<size_t>(n);
        }
        ::close(nFd);
        if (nRead < sizeof aby)
            return false;
    }
    static const char kszHex[] = "0123456789abcdef";
    sState.clear();
    for (unsigned char c : aby) {
        sState += kszHex[c >> 4];
        sState += kszHex[c & 15];
    }
    return true;
}

bool CLoginDialogue::_bOpenListener() {
    if (m_nListener >= 0)
        return true;
    m_sListenerError.clear();
    int nFd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (nFd < 0) {
        m_sListenerError = std::string("Cannot open the login listener: ") + std::strerror(errno);
        return false;
    }
    sockaddr_in st{};
    st.sin_family = AF_INET;
    st.sin_port = 0; // the system picks a free port
    st.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t nLength = sizeof st;
    if (::bind(nFd, reinterpret_cast<sockaddr*>(&st), sizeof st) != 0 ||
        ::listen(nFd, static_cast<int>(knMaxClients)) != 0 ||
        ::getsockname(nFd, reinterpret_cast<sockaddr*>(&st), &nLength) != 0) {
        m_sListenerError =
            std::string("Cannot listen on 127.0.0.1 for the login answer: ") + std::strerror(errno);
        ::close(nFd);
        return false;
    }
    m_nListener = nFd;
    m_nPort = ntohs(st.sin_port);
    return true;
}

void CLoginDialogue::_CloseListener() {
    s_Close(m_nListener);
    m_nPort = 0;
}

void CLoginDialogue::vGetURLRedirection(int /*bParNavigateur*/, CXYString<wchar_t>& sRedirection) {
    KVHost::Guard(nullptr, [&] {
        std::lock_guard guard(m_mutex);
        if (!_bOpenListener()) {
            sRedirection.Vide(); // veAuthentifie reports why
            return;
        }
        std::wstring s = L"http://127.0.0.1:" + std::to_wstring(m_nPort) + L"/";
        if (!KV_bSucces(sRedirection.nAffecte(s.c_str(), s.size())))
            sRedirection.Vide();
    });
}

// ---- one sign-in

namespace {

using tClock = std::chrono::steady_clock;

const char* const kszPageError =
    "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Sign-in not complete</title>"
    "</head><body><p>The sign-in did not complete: the provider answered with an error. Return to "
    "the application to see why.</p></body></html>";

} // namespace

// A connection to the redirect address, and what it sent so far.
struct CLoginDialogue::STClient {
    int nFd = -1;
    tClock::time_point tOpened;
    std::string sReceived;
};

// One sign-in as it runs: the address opened, its state, the browser, the connections.
struct CLoginDialogue::STSignIn {
    std::string sUrl;        // the login address, the state marker filled
    std::string sBrowserUrl; // as the browser opens it (routed origins in their browser form)
    std::string sFunction;
    std::string sState;    // empty: the address had no marker, any state is taken
    std::string sVerifier; // the proof key the host added, empty when none
    bool bMarker = false;
    bool bUnattended = false; // no browser command and no terminal: nobody may see the address
    pid_t pidBrowser = 0;
    int nBrowserStatus = -1; // the exit status of a browser command that failed
    std::vector<STClient> tabClients;
    int nRefusedStates = 0; // answers refused for their state
    std::string sHead;      // the answer, once it came
};

int CLoginDialogue::_nOpenBrowser(const std::string& sUrl, const std::string& sFunction,
                                  bool& bUnattended) {
    std::string sCommand;
    if (m_stOptions.bBrowserSet) {
        sCommand = m_stOptions.sBrowser;
    } else {
        const char* pszX = std::getenv("DISPLAY");
        const char* pszW = std::getenv("WAYLAND_DISPLAY");
        if ((pszX && *pszX) || (pszW && *pszW))
            sCommand = "xdg-open";
    }
    bUnattended = false;
    if (sCommand.find_first_not_of(" \t") == std::string::npos) {
        bUnattended = !::isatty(STDIN_FILENO);
        s_PrintAddress(sFunction, sUrl, "");
        return 0;
    }
    // Through the shell, so that the setting may hold arguments and quotes; the address comes
    // as "$1", never read by the shell as code, and in KVGGL_LOGIN_URL, where a command that
    // reads it keeps it off the process list.
    std::string sScript = sCommand + " \"$1\"";
    const char* tabArgs[] = {"sh", "-c", sScript.c_str(), "kvggl-browser", sUrl.c_str(), nullptr};
    std::vector<char*> tabEnv;
    for (char** pp = environ; pp && *pp; ++pp)
        if (std::strncmp(*pp, "KVGGL_LOGIN_URL=", 16) != 0)
            tabEnv.push_back(*pp);
    std::string sUrlVariable = "KVGGL_LOGIN_URL=" + sUrl;
    tabEnv.push_back(sUrlVariable.data());
    tabEnv.push_back(nullptr);
    posix_spawn_file_actions_t stActions;
    posix_spawn_file_actions_init(&stActions);
    // The browser's chatter must not mix with the script's own output.
    posix_spawn_file_actions_addopen(&stActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&stActions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    int nResult = ::posix_spawn(&pid, "/bin/sh", &stActions, nullptr,
                                const_cast<char* const*>(tabArgs), tabEnv.data());
    posix_spawn_file_actions_destroy(&stActions);
    if (nResult != 0) {
        s_PrintAddress(sFunction, sUrl,
                       "the browser command cannot be started (" +
                           std::string(std::strerror(nResult)) + ")");
        return 0;
    }
    return pid;
}

eAUTHENTIFICATION CLoginDialogue::veAuthentifie(const wchar_t* pszURLLogin, IVM* /*piVM*/,
                                                const wchar_t* pszNomFonction,
                                                CXYString<wchar_t>& sReponse, CXError* pclError) {
    CXError clLocal;
    CXError& clError = pclError ? *pclError : clLocal;
    eAUTHENTIFICATION e = KVHost::Guard(&clError, AUTHENTIFICATION_ERREUR, [&] {
        std::lock_guard guard(m_mutex);
        return _eSignIn(pszURLLogin, pszNomFonction, sReponse, clError);
    });
    if (e != AUTHENTIFICATION_OK)
        _CloseListener(); // single use, whatever the outcome
    return e;
}

eAUTHENTIFICATION CLoginDialogue::_eSignIn(const wchar_t* pszURLLogin,
                                           const wchar_t* pszNomFonction,
                                           CXYString<wchar_t>& sReponse, CXError& clError) {
    s_ReapChildren();
    STSignIn st;
    if (!_bPrepare(pszURLLogin, pszNomFonction, st, clError))
        return AUTHENTIFICATION_ERREUR;
    st.pidBrowser = _nOpenBrowser(st.sBrowserUrl, st.sFunction, st.bUnattended);
    _Wait(st);
    for (STClient& stClient : st.tabClients)
        s_Close(stClient.nFd);
    _LeaveBrowser(st.pidBrowser);
    return _eOutcome(st, sReponse, clError);
}

bool CLoginDialogue::_bPrepare(const wchar_t* pszURLLogin, const wchar_t* pszNomFonction,
                               STSignIn& st, CXError& clError) {
    auto Fail = [&](eHOSTERROR eCode, const std::string& sMessage) {
        KVHost::SetError(clError, eCode, sMessage);
        return false;
    };
    if (!m_sRouteError.empty())
        return Fail(HOSTERROR_HTTP_ROUTE, m_sRouteError);
    if (!pszURLLogin || !*pszURLLogin)
        return Fail(HOSTERROR_LOGIN_URL, "No login address was given");
    if (m_nListener < 0) {
        if (!m_sListenerError.empty())
            return Fail(HOSTERROR_LOGIN_LISTENER, m_sListenerError);
        return Fail(HOSTERROR_LOGIN_URL,
                    "No redirect address is open for this sign-in: the redirect address is "
                    "asked first, and each one serves a single sign-in");
    }
    st.sUrl = KVUtf8::VersUtf8(pszURLLogin);
    st.sFunction = pszNomFonction ? KVUtf8::VersUtf8(pszNomFonction) : std::string();
    // A consent page without a client cannot be answered: say so now rather than wait for a
    // browser that will never come back.
    if (std::string sClient;
        CRouting::s_bQueryValue(st.sUrl, "client_id", sClient) && sClient.empty())
        return Fail(HOSTERROR_LOGIN_CLIENT,
                    "The sign-in address has no client: set ClientID (the OAuth client of the "
                    "application) before logging in");
    // When the provider could not be reached a moment ago (the silent refresh before this),
    // the consent page and the code exchange after it cannot either: that cause, at once.
    STUrlParts stParts;
    if (CRouting::s_bSplitUrl(st.sUrl, stParts)) {
        eHOSTERROR eCode{};
        std::string sCause;
        if (KVHost::bRecentTransportFailure(stParts.sHost, eCode, sCause))
            return Fail(eCode, "The sign-in was not started: " + sCause);
    }
    st.bMarker = st.sUrl.find(kszMarker) != std::string::npos;
    if (st.bMarker) {
        if (!s_bNewState(st.sState))
            return Fail(HOSTERROR_LOGIN_RANDOM,
                        "No random value could be drawn for the sign-in state");
        for (size_t n = st.sUrl.find(kszMarker); n != std::string::npos;
             n = st.sUrl.find(kszMarker, n + st.sState.size()))
            st.sUrl.replace(n, sizeof kszMarker - 1, st.sState);
    }
    // A code asked without a proof key: the host adds its own (Pkce.h).
    std::string sType, sChallenge;
    if (CRouting::s_bQueryValue(st.sUrl, "response_type", sType) && sType == "code" &&
        !CRouting::s_bQueryValue(st.sUrl, "code_challenge", sChallenge)) {
        if (!KVPkce::bNew(st.sVerifier, sChallenge))
            return Fail(HOSTERROR_LOGIN_RANDOM, "No random value could be drawn for the sign-in");
        size_t nFragment = std::min(st.sUrl.find('#'), st.sUrl.size());
        st.sUrl.insert(nFragment, std::string(st.sUrl.find('?') < nFragment ? "&" : "?") +
                                      "code_challenge=" + sChallenge +
                                      "&code_challenge_method=S256");
    }
    st.sBrowserUrl = m_clRouting.sBrowserForm(st.sUrl);
    return true;
}

long CLoginDialogue::_nWaitMs(const STSignIn& st) const {
    // Nobody can see the printed address: a long wait only delays the error.
    if (st.bUnattended && !m_stOptions.bLoginWaitSet)
        return std::min(m_stOptions.nLoginWaitMs, STHostOptions::knLoginWaitUnattendedMs);
    return m_stOptions.nLoginWaitMs;
}

void CLoginDialogue::_Wait(STSignIn& st) {
    auto tDeadline = tClock::now() + std::chrono::milliseconds(_nWaitMs(st));
    while (st.sHead.empty() && st.nBrowserStatus < 0) {
        _WatchBrowser(st);
        if (st.nBrowserStatus >= 0)
            break;
        auto tNow = tClock::now();
        _DropLateClients(st, tNow);
        auto nLeft =
            std::chrono::duration_cast<std::chrono::milliseconds>(tDeadline - tNow).count();
        if (nLeft <= 0)
            break;
        std::vector<pollfd> tabPoll;
        tabPoll.push_back({m_nListener, POLLIN, 0});
        for (const STClient& stClient : st.tabClients)
            tabPoll.push_back({stClient.nFd, POLLIN, 0});
        // The browser command and the connections' deadlines are looked at now and then.
        bool bWatch = st.pidBrowser > 0 || !st.tabClients.empty();
        int nDelay = static_cast<int>(bWatch ? std::min<long long>(nLeft, 100) : nLeft);
        int nReady = ::poll(tabPoll.data(), tabPoll.size(), nDelay);
        if (nReady <= 0)
            continue; // EINTR, or nothing yet
        // Clients first, from the last, so that the indices into tabPoll still match.
        for (size_t i = st.tabClients.size(); i-- > 0 && st.sHead.empty();) {
            if (tabPoll[1 + i].revents && _bRead(st, i))
                st.tabClients.erase(st.tabClients.begin() + static_cast<long>(i));
        }
        if (st.sHead.empty() && (tabPoll[0].revents & POLLIN))
            _Accept(st);
    }
}

void CLoginDialogue::_WatchBrowser(STSignIn& st) {
    int nStatus = 0;
    if (st.pidBrowser <= 0 || ::waitpid(st.pidBrowser, &nStatus, WNOHANG) != st.pidBrowser)
        return;
    st.pidBrowser = 0;
    // A command that failed will bring nobody back: the wait ends with its status.
    if (!WIFEXITED(nStatus) || WEXITSTATUS(nStatus) != 0) {
        st.nBrowserStatus = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128 + WTERMSIG(nStatus);
        s_PrintAddress(st.sFunction, st.sBrowserUrl,
                       "the browser command failed (status " + std::to_string(st.nBrowserStatus) +
                           ")");
    }
}

void CLoginDialogue::_Accept(STSignIn& st) {
    for (;;) {
        int nFd = ::accept4(m_nListener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (nFd < 0)
            return;
        // Every slot taken: the oldest connection goes, so that idle ones cannot starve the
        // browser that will bring the answer.
        if (st.tabClients.size() >= knMaxClients) {
            s_Close(st.tabClients.front().nFd);
            st.tabClients.erase(st.tabClients.begin());
        }
        st.tabClients.push_back({nFd, tClock::now(), {}});
    }
}

void CLoginDialogue::_DropLateClients(STSignIn& st, tClock::time_point tNow) {
    std::erase_if(st.tabClients, [&](STClient& stClient) {
        if (tNow - stClient.tOpened < std::chrono::milliseconds(knRequestDeadlineMs))
            return false;
        s_Close(stClient.nFd);
        return true;
    });
}

bool CLoginDialogue::_bRead(STSignIn& st, size_t i) {
    STClient& stClient = st.tabClients[i];
    char aby[4096];
    ssize_t n = ::recv(stClient.nFd, aby, sizeof aby, 0);
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
        return false;
    if (n <= 0) {
        s_Close(stClient.nFd);
        return true;
    }
    stClient.sReceived.append(aby, static_cast<size_t>(n));
    size_t nHeadEnd = stClient.sReceived.find("\r\n\r\n");
    if (nHeadEnd == std::string::npos) {
        if (stClient.sReceived.size() <= knMaxHead)
            return false;
        s_Answer(stClient.nFd, 431, "Request Header Fields Too Large", kszPageNotFound);
        return true;
    }
    _Serve(st, stClient, nHeadEnd);
    return true;
}

// Answers one whole request head. Only a GET of "/" with the sign-in's state ends the wait;
// anything else gets its page and the listener goes on waiting, so that another local process
// can neither end the sign-in nor answer it.
void CLoginDialogue::_Serve(STSignIn& st, STClient& stClient, size_t nHeadEnd) {
    std::string_view svLine(stClient.sReceived.data(), stClient.sReceived.find("\r\n"));
    size_t nSpace1 = svLine.find(' ');
    size_t nSpace2 = svLine.rfind(' ');
    if (nSpace1 == std::string_view::npos || nSpace2 <= nSpace1 ||
        svLine.substr(nSpace2 + 1, 5) != "HTTP/")
        return s_Answer(stClient.nFd, 400, "Bad Request", kszPageNotFound);
    std::string_view svMethod = svLine.substr(0, nSpace1);
    std::string_view svTarget = svLine.substr(nSpace1 + 1, nSpace2 - nSpace1 - 1);
    std::string_view svPath = svTarget.substr(0, svTarget.find_first_of("?#"));
    if (svPath != "/" || svMethod != "GET")
        return s_Answer(stClient.nFd, 404, "Not Found", kszPageNotFound);
    std::string sState;
    if (st.bMarker &&
        (!CRouting::s_bQueryValue(svTarget, "state", sState) || sState != st.sState)) {
        ++st.nRefusedStates;
        return s_Answer(stClient.nFd, 400, "Bad Request", kszPageRefused);
    }
    st.sHead = stClient.sReceived.substr(0, nHeadEnd + 2);
    if (std::string sCode;
        !st.sVerifier.empty() && CRouting::s_bQueryValue(svTarget, "code", sCode))
        KVPkce::Remember(sCode, st.sVerifier);
    std::string sProviderError;
    bool bError = CRouting::s_bQueryValue(svTarget, "error", sProviderError);
    s_Answer(stClient.nFd, 200, "OK", bError ? kszPageError : kszPageDone);
}

void CLoginDialogue::_LeaveBrowser(int pidBrowser) {
    // The browser command has usually finished with the page; give it a moment, then leave it
    // to be reaped later rather than wait on a browser that stays open.
    if (pidBrowser <= 0)
        return;
    auto tLimit = tClock::now() + std::chrono::milliseconds(knBrowserGraceMs);
    int nStatus = 0;
    while (::waitpid(pidBrowser, &nStatus, WNOHANG) == 0 && tClock::now() < tLimit)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (::waitpid(pidBrowser, &nStatus, WNOHANG) == 0) {
        std::lock_guard guardChildren(gmutexChildren);
        gtabChildren.push_back(pidBrowser);
    }
}

eAUTHENTIFICATION CLoginDialogue::_eOutcome(const STSignIn& st, CXYString<wchar_t>& sReponse,
                                            CXError& clError) {
    if (!st.sHead.empty()) {
        _CloseListener();
        if (!KV_bSucces(KVUtf8::nVersWide(st.sHead, sReponse))) {
            clError.SetErrorNoMemory();
            return AUTHENTIFICATION_ERREUR;
        }
        clError.RAZ();
        return AUTHENTIFICATION_OK;
    }
    if (st.nBrowserStatus >= 0) {
        KVHost::SetError(clError, HOSTERROR_LOGIN_BROWSER,
                         "The browser command failed (exit status " +
                             std::to_string(st.nBrowserStatus) +
                             "), so nobody can answer the sign-in; check KVGGL_BROWSER");
        return AUTHENTIFICATION_ERREUR;
    }
    std::string sWait = "within " + s_sSeconds(_nWaitMs(st));
    if (st.nRefusedStates > 0) {
        KVHost::SetError(clError, HOSTERROR_LOGIN_STATE,
                         "No answer to the sign-in came back " + sWait +
                             " with the state value "
                             "sent with it; " +
                             std::to_string(st.nRefusedStates) +
                             " answer(s) without it were refused (a stale or forged answer)");
        return AUTHENTIFICATION_ETAT_INVALIDE;
    }
    if (st.bUnattended)
        KVHost::SetError(clError, HOSTERROR_LOGIN_TIMEOUT,
                         "Nobody came back to the sign-in " + sWait +
                             ": no browser could be opened and no one is at a terminal; set "
                             "KVGGL_BROWSER to a command that opens the address (and "
                             "KVGGL_LOGIN_WAIT for a longer wait)");
    else
        KVHost::SetError(clError, HOSTERROR_LOGIN_TIMEOUT,
                         "The browser did not come back to the redirect address " + sWait +
                             " (the host's wait for a sign-in, KVGGL_LOGIN_WAIT)");
    return AUTHENTIFICATION_DELAI_DEPASSE;
}
