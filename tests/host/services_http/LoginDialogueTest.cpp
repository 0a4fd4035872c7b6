// The login dialogue end to end: curl plays the browser, a small local server plays the
// provider's login page that redirects back with the code and the state.
#include "HostErrors.h"
#include "LoginDialogue.h"
#include "RawServer.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <regex>
#include <thread>

namespace {

const bool gbNoProxy = [] {
    ::setenv("NO_PROXY", "*", 1);
    ::setenv("no_proxy", "*", 1);
    return true;
}();

STHostOptions LoginOptions(const std::string& sBrowser, long nWaitMs = 20000) {
    STHostOptions st;
    st.bBrowserSet = true;
    st.sBrowser = sBrowser;
    st.nLoginWaitMs = nWaitMs;
    return st;
}

CRef<CLoginDialogue> NewDialogue(const STHostOptions& st) {
    return CRef<CLoginDialogue>::Adopt(new CLoginDialogue(st));
}

std::string QueryValue(const std::string& sTarget, const std::string& sKey) {
    std::string sPrefix = sKey + "=";
    size_t n = sTarget.find("?" + sPrefix);
    if (n == std::string::npos)
        n = sTarget.find("&" + sPrefix);
    if (n == std::string::npos)
        return {};
    n += sPrefix.size() + 1;
    return sTarget.substr(n, sTarget.find('&', n) - n);
}

// The provider: its login page sends the browser back to redirect_uri with a code and the
// state it was given (or another one).
STRawReply Provider(const STRawRequest& r, const std::string& sForcedState = {}) {
    std::string sReturn = QueryValue(r.sTarget, "redirect_uri");
    std::string sState = sForcedState.empty() ? QueryValue(r.sTarget, "state") : sForcedState;
    return {CRawServer::s_sAnswer(302, "Found", "",
                                  {"Location: " + sReturn + "?code=4/abc&state=" + sState})};
}

struct STRun {
    eAUTHENTIFICATION e = AUTHENTIFICATION_ERREUR;
    std::string sAnswer;
    unsigned nCode = 0;
    std::string sMessage;
};

STRun RunDialogue(CLoginDialogue& cl, const std::string& sLoginUrl,
                  const wchar_t* pszFunction = L"GglConnecte") {
    STRun st;
    CXYString<wchar_t> sAnswerText;
    CXError clError;
    st.e = cl.veAuthentifie(KVUtf8::VersWide(sLoginUrl).c_str(), nullptr, pszFunction, sAnswerText,
                            &clError);
    st.sAnswer = KVUtf8::VersUtf8(sAnswerText.sv());
    st.nCode = clError.nGetUserErrorCode();
    st.sMessage = KVUtf8::VersUtf8(clError.pszGetUserMessage());
    if (st.e == AUTHENTIFICATION_OK) {
        EXPECT_TRUE(clError.bEstPropre());
    }
    return st;
}

std::string RedirectAddress(CLoginDialogue& cl) {
    CXYString<wchar_t> s;
    cl.vGetURLRedirection(1, s);
    return KVUtf8::VersUtf8(s.sv());
}

int PortOf(const std::string& sRedirect) {
    std::smatch m;
    if (!std::regex_match(sRedirect, m, std::regex(R"(http://127\.0\.0\.1:(\d+)/)")))
        return 0;
    return std::stoi(m[1]);
}

// Connects to the port; -1 when refused.
int Connect(int nPort) {
    int nFd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in st{};
    st.sin_family = AF_INET;
    st.sin_port = htons(static_cast<uint16_t>(nPort));
    st.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(nFd, reinterpret_cast<sockaddr*>(&st), sizeof st) != 0) {
        ::close(nFd);
        return -1;
    }
    return nFd;
}

// Sends a request and reads the answer to its end.
std::string Ask(int nPort, const std::string& sRequest) {
    int nFd = Connect(nPort);
    if (nFd < 0)
        return "<refused>";
    (void)!::send(nFd, sRequest.data(), sRequest.size(), MSG_NOSIGNAL);
    std::string s;
    char aby[4096];
    for (ssize_t n; (n = ::recv(nFd, aby, sizeof aby, 0)) > 0;)
        s.append(aby, static_cast<size_t>(n));
    ::close(nFd);
    return s;
}

TEST(LoginDialogue, EndToEndWithCurlAsTheBrowser) {
    CRawServer clProvider([](const STRawRequest& r) { return Provider(r); });
    auto cl = NewDialogue(LoginOptions("curl -s -L -o /dev/null"));
    std::string sRedirect = RedirectAddress(*cl);
    int nPort = PortOf(sRedirect);
    ASSERT_GT(nPort, 0) << sRedirect;

    std::string sLogin = clProvider.sUrl("/o/oauth2/auth?response_type=code&client_id=id") +
                         "&redirect_uri=" + sRedirect + "&state=[%STATE%]";
    STRun st = RunDialogue(*cl, sLogin);
    ASSERT_EQ(st.e, AUTHENTIFICATION_OK) << st.sMessage;

    auto tab = clProvider.tabRequests();
    ASSERT_EQ(tab.size(), 1u);
    std::string sState = QueryValue(tab[0].sTarget, "state");
    EXPECT_TRUE(std::regex_match(sState, std::regex("[0-9a-f]{32}"))) << sState;
    EXPECT_EQ(tab[0].sTarget.find("[%STATE%]"), std::string::npos);

    // The raw head of the browser's request, request line first.
    EXPECT_EQ(st.sAnswer.rfind("GET /?code=4/abc&state=" + sState + " HTTP/1.1\r\n", 0), 0u)
        << st.sAnswer;
    EXPECT_NE(st.sAnswer.find("\r\nHost: 127.0.0.1:" + std::to_string(nPort) + "\r\n"),
              std::string::npos)
        << st.sAnswer;
    EXPECT_EQ(st.sAnswer.substr(st.sAnswer.size() - 2), "\r\n");
    EXPECT_EQ(st.sAnswer.find("\r\n\r\n"), std::string::npos);

    // Single use: the address is closed, and a dialogue needs a new one.
    EXPECT_EQ(Connect(nPort), -1);
    STRun stSecond = RunDialogue(*cl, sLogin);
    EXPECT_EQ(stSecond.e, AUTHENTIFICATION_ERREUR);
    EXPECT_EQ(stSecond.nCode, HOSTERROR_LOGIN_URL);

    // A new address, a new state.
    std::string sRedirect2 = RedirectAddress(*cl);
    std::string sLogin2 =
        clProvider.sUrl("/auth?client_id=id") + "&redirect_uri=" + sRedirect2 + "&state=[%STATE%]";
    ASSERT_EQ(RunDialogue(*cl, sLogin2).e, AUTHENTIFICATION_OK);
    EXPECT_NE(QueryValue(clProvider.tabRequests().at(1).sTarget, "state"), sState);
}

TEST(LoginDialogue, RefusesAnAnswerWithAnotherState) {
    CRawServer clProvider([](const STRawRequest& r) { return Provider(r, "forged"); });
    auto cl = NewDialogue(LoginOptions("curl -s -L -o /dev/null"));
    std::string sRedirect = RedirectAddress(*cl);
    STRun st = RunDialogue(*cl, clProvider.sUrl("/auth?x=1") + "&redirect_uri=" + sRedirect +
                                    "&state=[%STATE%]");
    EXPECT_EQ(st.e, AUTHENTIFICATION_ETAT_INVALIDE);
    EXPECT_EQ(st.nCode, HOSTERROR_LOGIN_STATE);
    EXPECT_NE(st.sMessage.find("state"), std::string::npos);
    EXPECT_EQ(st.sAnswer, "");
    EXPECT_EQ(Connect(PortOf(sRedirect)), -1);
}

TEST(LoginDialogue, TimesOutWhenTheBrowserNeverComesBack) {
    auto cl = NewDialogue(LoginOptions("true", 300));
    std::string sRedirect = RedirectAddress(*cl);
    auto tStart = std::chrono::steady_clock::now();
    STRun st = RunDialogue(*cl, "https://login.example.test/auth?redirect_uri=" + sRedirect +
                                    "&state=[%STATE%]");
    auto nMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now() - tStart)
                   .count();
    EXPECT_EQ(st.e, AUTHENTIFICATION_DELAI_DEPASSE);
    EXPECT_EQ(st.nCode, HOSTERROR_LOGIN_TIMEOUT);
    EXPECT_NE(st.sMessage.find("0.3 s"), std::string::npos) << st.sMessage;
    EXPECT_GE(nMs, 290);
    EXPECT_LT(nMs, 5000);
    EXPECT_EQ(Connect(PortOf(sRedirect)), -1);
}

// A browser stand-in: the command writes the address it was given to a file, and the test
// plays the browser's requests by hand.
class LoginDialogueByHand : public testing::Test {
protected:
    void SetUp() override {
        char sz[] = "/tmp/kvggl-login-XXXXXX";
        int nFd = ::mkstemp(sz);
        ASSERT_GE(nFd, 0);
        ::close(nFd);
        ::unlink(sz);
        m_sFile = sz;
    }
    void TearDown() override { ::unlink(m_sFile.c_str()); }

    std::string WaitForAddress() {
        for (int i = 0; i < 500; ++i) {
            std::ifstream f(m_sFile);
            std::string s;
            if (std::getline(f, s) && !s.empty())
                return s;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return {};
    }

    std::string m_sFile;
};

TEST_F(LoginDialogueByHand, ServesStrayRequestsAndIdleConnectionsUntilTheAnswer) {
    auto cl = NewDialogue(LoginOptions("printf '%s\\n' >" + m_sFile));
    std::string sRedirect = RedirectAddress(*cl);
    int nPort = PortOf(sRedirect);
    auto futDialogue = std::async(std::launch::async, [&] {
        return RunDialogue(*cl, "https://login.example.test/auth?client_id=a&redirect_uri=" +
                                    sRedirect + "&state=[%STATE%]");
    });
    std::string sOpened = WaitForAddress();
    std::string sState = QueryValue(sOpened, "state");
    ASSERT_EQ(sState.size(), 32u) << sOpened;

    int nIdle = Connect(nPort); // a browser's spare connection that never speaks
    ASSERT_GE(nIdle, 0);
    std::string sIcon = Ask(nPort, "GET /favicon.ico HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(sIcon.rfind("HTTP/1.1 404 ", 0), 0u) << sIcon;
    std::string sOther = Ask(nPort, "POST /?state=" + sState + " HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(sOther.rfind("HTTP/1.1 404 ", 0), 0u) << sOther;
    std::string sNonHttp = Ask(nPort, "hello\r\n\r\n");
    EXPECT_EQ(sNonHttp.rfind("HTTP/1.1 400 ", 0), 0u) << sNonHttp;
    EXPECT_EQ(futDialogue.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout)
        << "none of these ends the dialogue";

    const std::string sHead =
        "GET /?code=c%2F1&state=" + sState + " HTTP/1.1\r\nHost: 127.0.0.1\r\nX-Probe: 1\r\n";
    std::string sPage = Ask(nPort, sHead + "\r\n");
    EXPECT_EQ(sPage.rfind("HTTP/1.1 200 OK\r\n", 0), 0u) << sPage;
    EXPECT_NE(sPage.find("Content-Type: text/html; charset=utf-8"), std::string::npos);
    EXPECT_NE(sPage.find("You may close this window"), std::string::npos);

    STRun st = futDialogue.get();
    ::close(nIdle);
    ASSERT_EQ(st.e, AUTHENTIFICATION_OK) << st.sMessage;
    EXPECT_EQ(st.sAnswer, sHead);
}

TEST_F(LoginDialogueByHand, AcceptsAnyStateWhenTheAddressHadNoMarker) {
    auto cl = NewDialogue(LoginOptions("printf '%s\\n' >" + m_sFile));
    std::string sRedirect = RedirectAddress(*cl);
    auto futDialogue = std::async(std::launch::async, [&] {
        return RunDialogue(*cl, "https://login.example.test/auth?redirect_uri=" + sRedirect);
    });
    EXPECT_EQ(WaitForAddress(), "https://login.example.test/auth?redirect_uri=" + sRedirect);
    Ask(PortOf(sRedirect), "GET /?code=z HTTP/1.1\r\n\r\n");
    STRun st = futDialogue.get();
    EXPECT_EQ(st.e, AUTHENTIFICATION_OK) << st.sMessage;
    EXPECT_EQ(st.sAnswer, "GET /?code=z HTTP/1.1\r\n");
}

TEST_F(LoginDialogueByHand, RefusesAMissingState) {
    auto cl = NewDialogue(LoginOptions("printf '%s\\n' >" + m_sFile));
    std::string sRedirect = RedirectAddress(*cl);
    auto futDialogue = std::async(std::launch::async, [&] {
        return RunDialogue(*cl, "https://l.test/a?redirect_uri=" + sRedirect + "&state=[%STATE%]");
    });
    ASSERT_FALSE(WaitForAddress().empty());
    std::string sPage = Ask(PortOf(sRedirect), "GET /?code=z HTTP/1.1\r\n\r\n");
    EXPECT_EQ(sPage.rfind("HTTP/1.1 400 ", 0), 0u) << sPage;
    EXPECT_NE(sPage.find("refused"), std::string::npos);
    EXPECT_EQ(futDialogue.get().e, AUTHENTIFICATION_ETAT_INVALIDE);
}

TEST(LoginDialogue, PrintsTheAddressWhenNoBrowserCanBeOpened) {
    struct STCase {
        const char* pszName;
        bool bBrowserSet;
        const char* pszBrowser;
        const char* pszExtra; // more of the message
    };
    const STCase tab[] = {
        {"NoDisplay", false, "", ""},
        {"EmptyCommand", true, "", ""},
        {"FailingCommand", true, "sh -c 'exit 3'", "the browser command failed (status 3)"},
    };
    const char* pszDisplay = std::getenv("DISPLAY");
    std::string sDisplay = pszDisplay ? pszDisplay : "";
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    for (const STCase& c : tab) {
        STHostOptions st = LoginOptions(c.pszBrowser, 600);
        st.bBrowserSet = c.bBrowserSet;
        auto cl = NewDialogue(st);
        std::string sRedirect = RedirectAddress(*cl);
        testing::internal::CaptureStderr();
        STRun stRun = RunDialogue(
            *cl, "https://login.example.test/auth?redirect_uri=" + sRedirect + "&state=[%STATE%]",
            L"AuthIdentifie");
        std::string sOut = testing::internal::GetCapturedStderr();
        EXPECT_EQ(stRun.e, AUTHENTIFICATION_DELAI_DEPASSE) << c.pszName;
        std::smatch m;
        EXPECT_TRUE(std::regex_search(
            sOut, m,
            std::regex("to sign in \\(AuthIdentifie\\), open this address in a browser:\n"
                       "https://login\\.example\\.test/auth\\?redirect_uri=http://127\\.0\\.0\\.1:"
                       "[0-9]+/&state=[0-9a-f]{32}\n")))
            << c.pszName << ": " << sOut;
        EXPECT_NE(sOut.find(c.pszExtra), std::string::npos) << c.pszName << ": " << sOut;
    }
    if (!sDisplay.empty())
        ::setenv("DISPLAY", sDisplay.c_str(), 1);
}

TEST(LoginDialogue, RefusesToRunWithoutAnAddress) {
    auto cl = NewDialogue(LoginOptions("true"));
    RedirectAddress(*cl);
    STRun st = RunDialogue(*cl, "");
    EXPECT_EQ(st.e, AUTHENTIFICATION_ERREUR);
    EXPECT_EQ(st.nCode, HOSTERROR_LOGIN_URL);
    CXYString<wchar_t> sAnswerText;
    EXPECT_EQ(cl->veAuthentifie(nullptr, nullptr, nullptr, sAnswerText, nullptr),
              AUTHENTIFICATION_ERREUR)
        << "no error object: still no crash";
}

TEST(LoginDialogue, StatesAreFreshAndHex) {
    std::string s1;
    std::string s2;
    ASSERT_TRUE(CLoginDialogue::s_bNewState(s1));
    ASSERT_TRUE(CLoginDialogue::s_bNewState(s2));
    EXPECT_TRUE(std::regex_match(s1, std::regex("[0-9a-f]{32}")));
    EXPECT_NE(s1, s2);
}

} // namespace
