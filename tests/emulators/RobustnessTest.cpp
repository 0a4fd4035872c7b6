// Hostile and broken requests get error answers and the server stays up; many clients at once
// see consistent state.
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "EmulatorHarness.h"
#include "Flow.h"
#include "JsonValue.h"

namespace {
// The status code of a raw answer, or 0 when none came.
int s_nStatus(const std::string& sAnswer) {
    if (sAnswer.rfind("HTTP/1.1 ", 0) != 0 || sAnswer.size() < 12)
        return 0;
    return std::stoi(sAnswer.substr(9, 3));
}
} // namespace

TEST(Robustness, MalformedRequestsGetErrors) {
    CEmulatorHarness h;
    struct STCase {
        const char* pszName;
        std::string sBytes;
        int nMinStatus, nMaxStatus; // the answer's status must fall in between
    };
    const std::string sHuge(100000, 'a');
    std::string sManyHeaders = "GET /_emulator/ HTTP/1.1\r\nHost: x\r\n";
    for (int i = 0; i < 2000; ++i)
        sManyHeaders += "X-H" + std::to_string(i) + ": v\r\n";
    sManyHeaders += "\r\n";
    const STCase tab[] = {
        {"garbage line", "HELLO\r\n\r\n", 400, 400},
        {"unknown method", "BREW /pot HTTP/1.1\r\nHost: accounts.google.com\r\n\r\n", 400, 400},
        {"huge header", "GET / HTTP/1.1\r\nHost: x\r\nX-Big: " + sHuge + "\r\n\r\n", 400, 499},
        {"huge target", "GET /" + sHuge + " HTTP/1.1\r\nHost: x\r\n\r\n", 400, 499},
        {"bad length",
         "POST /o/oauth2/token HTTP/1.1\r\nHost: accounts.google.com\r\n"
         "Content-Length: nope\r\n\r\nabc",
         400, 499},
        {"bad chunk",
         "POST /o/oauth2/token HTTP/1.1\r\nHost: accounts.google.com\r\n"
         "Transfer-Encoding: chunked\r\n\r\nzz\r\nabc\r\n0\r\n\r\n",
         400, 499},
        {"binary form body",
         "POST /o/oauth2/token HTTP/1.1\r\nHost: accounts.google.com\r\n"
         "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 6\r\n\r\n" +
             std::string("\x00\xff%\x01=&", 6),
         400, 400},
        {"NUL in target",
         std::string("GET /o/oauth2/auth?client_id=") + '\0' +
             "x HTTP/1.1\r\nHost: accounts.google.com\r\n\r\n",
         400, 400},
        {"many headers", sManyHeaders, 200, 200},
        // No Content-Length: no body, and an answer at once (not after a read timeout).
        {"POST without length", "POST /_emulator/reset HTTP/1.1\r\nHost: x\r\n\r\n", 200, 200},
        {"token POST without length",
         "POST /o/oauth2/token HTTP/1.1\r\nHost: accounts.google.com\r\n\r\n", 400, 400},
    };
    for (const STCase& c : tab) {
        int nStatus = s_nStatus(h.Probe().sRaw(c.sBytes));
        EXPECT_GE(nStatus, c.nMinStatus) << c.pszName;
        EXPECT_LE(nStatus, c.nMaxStatus) << c.pszName;
    }
    // A body cut short, and a client gone before the end: no answer is owed, nothing breaks.
    h.Probe().sRaw("POST /o/oauth2/token HTTP/1.1\r\nHost: accounts.google.com\r\n"
                   "Content-Length: 1000\r\n\r\nabc",
                   200);
    h.Probe().sRaw("GET /o/oauth2/au", 100);
    EXPECT_EQ(h.Probe().Get("", "/_emulator/").nStatus, 200);
}

TEST(Robustness, ConcurrentFlowsStayConsistent) {
    CEmulatorHarness h;
    const int nThreads = 8, nFlows = 15;
    std::atomic<int> nFailures{0};
    std::atomic<bool> bDone{false};
    std::mutex mtx;
    std::set<std::string> setTokens;
    std::vector<std::thread> tabThreads;
    for (int t = 0; t < nThreads; ++t) {
        tabThreads.emplace_back([&, t] {
            for (int i = 0; i < nFlows; ++i) {
                std::string sRedirect = "http://127.0.0.1:" + std::to_string(1000 + t) + "/";
                STReply auth = h.Probe().Get(
                    "accounts.google.com", "/o/oauth2/auth?response_type=code&client_id=demo-client"
                                           "&scope=s&state=" +
                                               std::to_string(i) + "&redirect_uri=" + sRedirect);
                std::string sCode = CFlow::s_sParam(auth.sHeader("Location"), "code");
                STReply token = h.Probe().PostForm(
                    "accounts.google.com", "/o/oauth2/token",
                    "code=" + sCode +
                        "&client_id=demo-client&client_secret=demo-secret&redirect_uri=" +
                        sRedirect + "&grant_type=authorization_code");
                std::string sAccess = CFlow::s_sJsonText(token.sBody, "access_token");
                if (CFlow::s_sParam(auth.sHeader("Location"), "state") != std::to_string(i) ||
                    token.nStatus != 200 || sAccess.empty()) {
                    ++nFailures;
                    continue;
                }
                std::lock_guard lock(mtx);
                setTokens.insert(sAccess);
            }
        });
    }
    // Meanwhile the control surface is read and written.
    std::thread control([&] {
        while (!bDone) {
            if (h.Probe().Get("", "/_emulator/requests").nStatus != 200)
                ++nFailures;
            h.Probe().Send("POST", "", "/_emulator/faults",
                           R"({"path": "/unused", "status": 500})");
            h.Probe().Send("DELETE", "", "/_emulator/faults");
        }
    });
    for (std::thread& t : tabThreads)
        t.join();
    bDone = true;
    control.join();
    EXPECT_EQ(nFailures, 0);
    EXPECT_EQ(setTokens.size(), static_cast<size_t>(nThreads * nFlows));
    EXPECT_EQ(h.Emulator().Log().nCount(), static_cast<size_t>(2 * nThreads * nFlows));
}

TEST(Robustness, StopsPromptlyWithARequestStillDelayed) {
    auto pHarness = std::make_unique<CEmulatorHarness>();
    pHarness->Probe().Send("POST", "", "/_emulator/faults", R"({"delay_ms": 600000})");
    CHttpProbe probe = pHarness->Probe();
    std::thread client([probe] { probe.Get("accounts.google.com", "/o/oauth2/auth"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    auto t0 = std::chrono::steady_clock::now();
    pHarness.reset();
    client.join();
    EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::seconds(10));
}
