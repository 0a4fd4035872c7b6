#include "LoginDialogue.h"

#include "HostBarrier.h"
#include "HostErrors.h"
#include "KVResult.h"
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
constexpr size_t knMaxHead = 16384;   // a request head larger than this is not a browser's
constexpr size_t knMaxClients = 16;   // connections served at once
constexpr int knBrowserGraceMs = 500; // how long a finished dialogue waits for its browser

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

int s_nHex(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string s_sPercentDecode(std::string_view sv) {
    std::string s;
    for (size_t i = 0; i < sv.size(); ++i) {
        if (sv[i] == '%' && i + 2 < sv.size() && s_nHex(sv[i + 1]) >= 0 && s_nHex(sv[i + 2]) >= 0) {
            s += static_cast<char>(s_nHex(sv[i + 1]) * 16 + s_nHex(sv[i + 2]));
            i += 2;
        } else {
            s += sv[i] == '+' ? ' ' : sv[i];
        }
    }
    return s;
}

// The value of "state" in the query of a request target; false when it has none.
bool s_bStateOfTarget(std::string_view svTarget, std::string& sState) {
    size_t nMark = svTarget.find('?');
    if (nMark == std::string_view::npos)
        return false;
    std::string_view svQuery = svTarget.substr(nMark + 1);
    svQuery = svQuery.substr(0, svQuery.find('#'));
    while (!svQuery.empty()) {
        size_t nAmp = svQuery.find('&');
        std::string_view svPiece = svQuery.substr(0, nAmp);
        svQuery = nAmp == std::string_view::npos ? std::string_view{} : svQuery.substr(nAmp + 1);
        size_t nEquals = svPiece.find('=');
        if (nEquals != std::string_view::npos && svPiece.substr(0, nEquals) == "state") {
            sState = s_sPercentDecode(svPiece.substr(nEquals + 1));
            return true;
        }
    }
    return false;
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
    if (!m_clRouting.bParse(m_stOptions.sRoute, m_sRouteError) && m_sRouteError.empty())
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

int CLoginDialogue::_nOpenBrowser(const std::string& sUrl, const std::string& sFunction) {
    std::string sCommand;
    if (m_stOptions.bBrowserSet) {
        sCommand = m_stOptions.sBrowser;
    } else {
        const char* pszX = std::getenv("DISPLAY");
        const char* pszW = std::getenv("WAYLAND_DISPLAY");
        if ((pszX && *pszX) || (pszW && *pszW))
            sCommand = "xdg-open";
    }
    if (sCommand.find_first_not_of(" \t") == std::string::npos) {
        s_PrintAddress(sFunction, sUrl, "");
        return 0;
    }
    // Through the shell, so that the setting may hold arguments and quotes; the address comes
    // as "$1" and is never read by the shell as code.
    std::string sScript = sCommand + " \"$1\"";
    const char* tabArgs[] = {"sh", "-c", sScript.c_str(), "kvggl-browser", sUrl.c_str(), nullptr};
    posix_spawn_file_actions_t stActions;
    posix_spawn_file_actions_init(&stActions);
    // The browser's chatter must not mix with the script's own output.
    posix_spawn_file_actions_addopen(&stActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&stActions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    int nResult = ::posix_spawn(&pid, "/bin/sh", &stActions, nullptr,
                                const_cast<char* const*>(tabArgs), environ);
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
    return KVHost::Guard(pclError, AUTHENTIFICATION_ERREUR, [&]() -> eAUTHENTIFICATION {
        std::lock_guard guard(m_mutex);
        s_ReapChildren();
        CXError clLocal;
        CXError& clError = pclError ? *pclError : clLocal;
        auto Fail = [&](eAUTHENTIFICATION eOutcome, eHOSTERROR eCode, const std::string& sMessage) {
            KVHost::SetError(clError, eCode, sMessage);
            _CloseListener(); // single use, whatever the outcome
            return eOutcome;
        };

        if (!m_sRouteError.empty())
            return Fail(AUTHENTIFICATION_ERREUR, HOSTERROR_HTTP_ROUTE, m_sRouteError);
        if (!pszURLLogin || !*pszURLLogin)
            return Fail(AUTHENTIFICATION_ERREUR, HOSTERROR_LOGIN_URL, "No login address was given");
        if (m_nListener < 0) {
            if (!m_sListenerError.empty())
                return Fail(AUTHENTIFICATION_ERREUR, HOSTERROR_LOGIN_LISTENER, m_sListenerError);
            return Fail(AUTHENTIFICATION_ERREUR, HOSTERROR_LOGIN_URL,
                        "No redirect address is open for this sign-in: the redirect address is "
                        "asked first, and each one serves a single sign-in");
        }

        std::string sUrl = KVUtf8::VersUtf8(pszURLLogin);
        std::string sState;
        bool bMarker = sUrl.find(kszMarker) != std::string::npos;
        if (bMarker) {
            if (!s_bNewState(sState))
                return Fail(AUTHENTIFICATION_ERREUR, HOSTERROR_LOGIN_RANDOM,
                            "No random value could be drawn for the sign-in state");
            for (size_t n = sUrl.find(kszMarker); n != std::string::npos;
                 n = sUrl.find(kszMarker, n + sState.size()))
                sUrl.replace(n, sizeof kszMarker - 1, sState);
        }
        std::string sFunction = pszNomFonction ? KVUtf8::VersUtf8(pszNomFonction) : std::string();
        std::string sBrowserUrl = m_clRouting.sBrowserForm(sUrl);
        pid_t pidBrowser = _nOpenBrowser(sBrowserUrl, sFunction);

        struct STClient {
            int nFd;
            std::string sReceived;
        };
        std::vector<STClient> tabClients;
        auto CloseAll = [&] {
            for (STClient& st : tabClients)
                s_Close(st.nFd);
            tabClients.clear();
        };
        auto tDeadline =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(m_stOptions.nLoginWaitMs);
        eAUTHENTIFICATION eOutcome = AUTHENTIFICATION_DELAI_DEPASSE;
        std::string sHead;
        bool bDone = false;

        while (!bDone) {
            if (pidBrowser > 0) {
                int nStatus = 0;
                if (::waitpid(pidBrowser, &nStatus, WNOHANG) == pidBrowser) {
                    pidBrowser = 0;
                    if (!WIFEXITED(nStatus) || WEXITSTATUS(nStatus) != 0)
                        s_PrintAddress(
                            sFunction, sBrowserUrl,
                            "the browser command failed (status " +
                                std::to_string(WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1) +
                                ")");
                }
            }
            auto nLeft = std::chrono::duration_cast<std::chrono::milliseconds>(
                             tDeadline - std::chrono::steady_clock::now())
                             .count();
            if (nLeft <= 0)
                break;
            std::vector<pollfd> tabPoll;
            bool bListen = tabClients.size() < knMaxClients;
            if (bListen)
                tabPoll.push_back({m_nListener, POLLIN, 0});
            for (const STClient& st : tabClients)
                tabPoll.push_back({st.nFd, POLLIN, 0});
            // While the browser command runs, look at it now and then.
            int nDelay = static_cast<int>(pidBrowser > 0 ? std::min<long long>(nLeft, 100) : nLeft);
            int nReady = ::poll(tabPoll.data(), tabPoll.size(), nDelay);
            if (nReady < 0) {
                if (errno == EINTR)
                    continue;
                CloseAll();
                return Fail(AUTHENTIFICATION_ERREUR, HOSTERROR_LOGIN_LISTENER,
                            std::string("The login listener failed: ") + std::strerror(errno));
            }
            if (nReady == 0)
                continue;
            size_t nFirstClient = bListen ? 1 : 0;
            // Clients first, so that indices into tabPoll still match tabClients.
            for (size_t i = tabClients.size(); i-- > 0;) {
                short nEvents = tabPoll[nFirstClient + i].revents;
                if (!nEvents)
                    continue;
                STClient& st = tabClients[i];
                char aby[4096];
                ssize_t n = ::recv(st.nFd, aby, sizeof aby, 0);
                if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
                    continue;
                if (n <= 0) {
                    s_Close(st.nFd);
                    tabClients.erase(tabClients.begin() + static_cast<long>(i));
                    continue;
                }
                st.sReceived.append(aby, static_cast<size_t>(n));
                size_t nHeadEnd = st.sReceived.find("\r\n\r\n");
                if (nHeadEnd == std::string::npos) {
                    if (st.sReceived.size() > knMaxHead) {
                        s_Answer(st.nFd, 431, "Request Header Fields Too Large", kszPageNotFound);
                        tabClients.erase(tabClients.begin() + static_cast<long>(i));
                    }
                    continue;
                }
                // The request line: METHOD SP TARGET SP VERSION.
                std::string_view svLine(st.sReceived.data(), st.sReceived.find("\r\n"));
                size_t nSpace1 = svLine.find(' ');
                size_t nSpace2 = svLine.rfind(' ');
                if (nSpace1 == std::string_view::npos || nSpace2 <= nSpace1 ||
                    svLine.substr(nSpace2 + 1, 5) != "HTTP/") {
                    s_Answer(st.nFd, 400, "Bad Request", kszPageNotFound);
                    tabClients.erase(tabClients.begin() + static_cast<long>(i));
                    continue;
                }
                std::string_view svMethod = svLine.substr(0, nSpace1);
                std::string_view svTarget = svLine.substr(nSpace1 + 1, nSpace2 - nSpace1 - 1);
                std::string_view svPath = svTarget.substr(0, svTarget.find_first_of("?#"));
                if (svPath != "/" || svMethod != "GET") {
                    s_Answer(st.nFd, 404, "Not Found", kszPageNotFound);
                    tabClients.erase(tabClients.begin() + static_cast<long>(i));
                    continue;
                }
                std::string sStateReceived;
                bool bStateReceived = s_bStateOfTarget(svTarget, sStateReceived);
                if (bMarker && (!bStateReceived || sStateReceived != sState)) {
                    s_Answer(st.nFd, 400, "Bad Request", kszPageRefused);
                    tabClients.erase(tabClients.begin() + static_cast<long>(i));
                    eOutcome = AUTHENTIFICATION_ETAT_INVALIDE;
                    bDone = true;
                    break;
                }
                sHead = st.sReceived.substr(0, nHeadEnd + 2);
                s_Answer(st.nFd, 200, "OK", kszPageDone);
                tabClients.erase(tabClients.begin() + static_cast<long>(i));
                eOutcome = AUTHENTIFICATION_OK;
                bDone = true;
                break;
            }
            if (bDone || !bListen || !(tabPoll[0].revents & POLLIN))
                continue;
            while (tabClients.size() < knMaxClients) {
                int nFd = ::accept4(m_nListener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
                if (nFd < 0)
                    break;
                tabClients.push_back({nFd, {}});
            }
        }
        CloseAll();

        // The browser command has usually finished with the page; give it a moment, then leave it
        // to be reaped later rather than wait on a browser that stays open.
        if (pidBrowser > 0) {
            auto tLimit =
                std::chrono::steady_clock::now() + std::chrono::milliseconds(knBrowserGraceMs);
            int nStatus = 0;
            while (::waitpid(pidBrowser, &nStatus, WNOHANG) == 0 &&
                   std::chrono::steady_clock::now() < tLimit)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            if (::waitpid(pidBrowser, &nStatus, WNOHANG) == 0) {
                std::lock_guard guardChildren(gmutexChildren);
                gtabChildren.push_back(pidBrowser);
            }
        }

        switch (eOutcome) {
        case AUTHENTIFICATION_OK:
            _CloseListener();
            if (!KV_bSucces(KVUtf8::nVersWide(sHead, sReponse))) {
                clError.SetErrorNoMemory();
                return AUTHENTIFICATION_ERREUR;
            }
            clError.RAZ();
            return AUTHENTIFICATION_OK;
        case AUTHENTIFICATION_ETAT_INVALIDE:
            return Fail(
                eOutcome, HOSTERROR_LOGIN_STATE,
                "The answer to the sign-in did not bring back the state value sent with "
                "it, so it was refused (a stale or forged answer); start the sign-in again");
        default:
            return Fail(AUTHENTIFICATION_DELAI_DEPASSE, HOSTERROR_LOGIN_TIMEOUT,
                        "The browser did not come back to the redirect address within " +
                            s_sSeconds(m_stOptions.nLoginWaitMs) +
                            " (the host's wait for a sign-in, KVGGL_LOGIN_WAIT)");
        }
    });
}
