// The control surface: the request log as received, faults (answer, delay, drop), reset.
#include <gtest/gtest.h>

#include <chrono>

#include "Base64.h"
#include "EmulatorHarness.h"
#include "Flow.h"
#include "JsonValue.h"

namespace {
CJsonValue s_Log(const CHttpProbe& probe, std::string_view svQuery = {}) {
    STReply r = probe.Get("", "/_emulator/requests" + std::string(svQuery));
    EXPECT_EQ(r.nStatus, 200);
    auto o = CJsonValue::s_oParse(r.sBody, nullptr);
    EXPECT_TRUE(o && o->bIsArray()) << r.sBody;
    return o ? *o : CJsonValue::s_Array();
}

STReply s_Fault(const CHttpProbe& probe, std::string_view svJson) {
    return probe.Send("POST", "", "/_emulator/faults", svJson, "application/json");
}

const char s_szTokenBody[] =
    "refresh_token=1//demo-refresh-token&client_id=demo-client&client_secret=demo-secret"
    "&grant_type=refresh_token";
} // namespace

TEST(Control, LogShowsEachRequestExactlyAsReceived) {
    CEmulatorHarness h;
    // An encoded target stays encoded, headers keep their spelling, the body its bytes.
    const std::string sTarget = "/o/oauth2/token?x=%41%2f+y&empty=";
    STReply r = h.Probe().Send("POST", "accounts.google.com", sTarget, "a=1&b=%C3%A9",
                               "application/x-www-form-urlencoded",
                               {{"X-Custom-Header", "v1"}, {"Authorization", "Bearer abc"}});
    ASSERT_TRUE(r.bConnected);
    const std::string sBinary("\x00\xff\x80 binary", 10);
    h.Probe().Send("PUT", "oauth.provider.test:443", "/upload", sBinary,
                   "application/octet-stream");
    h.Probe().Get("127.0.0.1", "/accounts.google.com/o/oauth2/auth?client_id=x");

    CJsonValue log = s_Log(h.Probe());
    ASSERT_EQ(log.Items().size(), 3u);
    const CJsonValue& first = log.Items()[0];
    EXPECT_EQ(first.sText("host"), "accounts.google.com");
    EXPECT_EQ(first.sText("method"), "POST");
    EXPECT_EQ(first.sText("target"), sTarget);
    EXPECT_EQ(first.sText("body"), "a=1&b=%C3%A9");
    const CJsonValue* pHeaders = first.pFind("headers");
    ASSERT_TRUE(pHeaders);
    EXPECT_EQ(pHeaders->sText("X-Custom-Header"), "v1");
    EXPECT_EQ(pHeaders->sText("Authorization"), "Bearer abc");
    EXPECT_EQ(pHeaders->sText("Host"), "accounts.google.com");
    EXPECT_EQ(pHeaders->sText("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(pHeaders->pFind("REMOTE_ADDR"), nullptr); // the server's own bookkeeping stays out

    const CJsonValue& second = log.Items()[1];
    EXPECT_EQ(second.sText("host"), "oauth.provider.test");
    EXPECT_EQ(second.pFind("body"), nullptr);
    EXPECT_EQ(second.sText("body_base64"), CBase64::s_sEncode(sBinary));

    // The browser form: the service host, and the target as it came.
    const CJsonValue& third = log.Items()[2];
    EXPECT_EQ(third.sText("host"), "accounts.google.com");
    EXPECT_EQ(third.sText("target"), "/accounts.google.com/o/oauth2/auth?client_id=x");

    EXPECT_EQ(s_Log(h.Probe(), "?host=oauth.provider.test").Items().size(), 1u);
    // Control requests are not logged, and DELETE clears the log.
    STReply cleared = h.Probe().Send("DELETE", "", "/_emulator/requests");
    EXPECT_EQ(cleared.sBody, R"({"deleted":3})");
    EXPECT_TRUE(s_Log(h.Probe()).Items().empty());
}

TEST(Control, FaultAnswersTheNextMatchingRequests) {
    CEmulatorHarness h;
    STReply added = s_Fault(h.Probe(), R"({"host": "accounts.google.com", "method": "POST",
        "path": "/o/oauth2/token", "status": 503, "body": "{\"error\": \"backendError\"}",
        "headers": {"Retry-After": "7"}, "count": 2})");
    ASSERT_EQ(added.nStatus, 201) << added.sBody;

    // Another path or method is untouched, and leaves the fault in place.
    EXPECT_EQ(h.Probe().Get("accounts.google.com", "/o/oauth2/token").nStatus, 405);
    EXPECT_EQ(h.Probe().PostForm("oauth.provider.test", "/token", "").nStatus, 400);
    for (int i = 0; i < 2; ++i) {
        STReply r = h.Probe().PostForm("accounts.google.com", "/o/oauth2/token", s_szTokenBody);
        EXPECT_EQ(r.nStatus, 503);
        EXPECT_EQ(r.sBody, "{\"error\": \"backendError\"}");
        EXPECT_EQ(r.sHeader("Retry-After"), "7");
        EXPECT_EQ(r.sHeader("Content-Type"), "application/json; charset=utf-8");
    }
    EXPECT_EQ(h.Probe().PostForm("accounts.google.com", "/o/oauth2/token", s_szTokenBody).nStatus,
              200);
    EXPECT_EQ(h.Probe().Get("", "/_emulator/faults").sBody, "[]");
    // Faulted requests are logged all the same.
    EXPECT_EQ(s_Log(h.Probe(), "?host=accounts.google.com").Items().size(), 4u);
}

TEST(Control, FaultDelaysAndDrops) {
    CEmulatorHarness h;
    ASSERT_EQ(s_Fault(h.Probe(), R"({"path": "/o/oauth2/token", "delay_ms": 300})").nStatus, 201);
    auto t0 = std::chrono::steady_clock::now();
    STReply slow = h.Probe().PostForm("accounts.google.com", "/o/oauth2/token", s_szTokenBody);
    auto nMs =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0)
            .count();
    EXPECT_EQ(slow.nStatus, 200); // delayed, then answered by the service
    EXPECT_GE(nMs, 300);

    ASSERT_EQ(s_Fault(h.Probe(), R"({"host": "oauth.provider.test", "drop": true})").nStatus, 201);
    STReply dropped = h.Probe().PostForm("oauth.provider.test", "/token", "grant_type=x");
    EXPECT_FALSE(dropped.bConnected);
    // On the raw socket: the connection closes with not one byte of answer.
    ASSERT_EQ(s_Fault(h.Probe(), R"({"drop": true})").nStatus, 201);
    EXPECT_EQ(h.Probe().sRaw("GET /x HTTP/1.1\r\nHost: oauth.provider.test\r\n\r\n"), "");
    // The server goes on.
    EXPECT_EQ(h.Probe().PostForm("oauth.provider.test", "/token", "").nStatus, 400);
}

TEST(Control, BadFaultsAreRefusedWithAReason) {
    CEmulatorHarness h;
    const char* tab[] = {
        "",
        "not json",
        R"({"status": 503)",
        "42",
        R"(["x"])",
        R"({"status": "503"})",
        R"({"status": 99})",
        R"({"status": 503, "count": 0})",
        R"({"status": 503, "drop": true})",
        R"({"delay_ms": -1})",
        R"({"delay_ms": 9999999})",
        R"({"path": "/x"})",
        R"({"status": 500, "headers": {"X-Split": "a\r\nSet-Cookie: b"}})",
        R"({"status": 500, "headers": {"Bad Name": "a"}})",
        R"({"status": 500, "headers": ["a"]})",
        R"({"status": 500, "delay": 10})",
        R"({"body": "no status", "delay_ms": 5})",
        R"([{"status": 500}, {"status": "bad"}])",
    };
    for (const char* psz : tab) {
        STReply r = s_Fault(h.Probe(), psz);
        EXPECT_EQ(r.nStatus, 400) << psz;
        EXPECT_FALSE(CFlow::s_sJsonText(r.sBody, "error").empty()) << psz << ": " << r.sBody;
    }
    // Nothing of the refused batch was kept.
    EXPECT_EQ(h.Probe().Get("", "/_emulator/faults").sBody, "[]");
}

TEST(Control, ResetGoesBackToTheSeed) {
    CEmulatorHarness h;
    STReply auth = h.Probe().Get("accounts.google.com",
                                 "/o/oauth2/auth?response_type=code&client_id=demo-client"
                                 "&redirect_uri=http://localhost:1/&scope=s");
    std::string sCode = CFlow::s_sParam(auth.sHeader("Location"), "code");
    ASSERT_FALSE(sCode.empty());
    ASSERT_EQ(s_Fault(h.Probe(), R"({"status": 500, "count": 5})").nStatus, 201);

    STReply reset = h.Probe().Send("POST", "", "/_emulator/reset");
    EXPECT_EQ(reset.nStatus, 200);
    EXPECT_TRUE(s_Log(h.Probe()).Items().empty());
    EXPECT_EQ(h.Probe().Get("", "/_emulator/faults").sBody, "[]");
    STReply old =
        h.Probe().PostForm("accounts.google.com", "/o/oauth2/token",
                           "code=" + sCode +
                               "&client_id=demo-client&client_secret=demo-secret"
                               "&redirect_uri=http://localhost:1/&grant_type=authorization_code");
    EXPECT_EQ(old.nStatus, 400); // given before the reset: forgotten
    EXPECT_EQ(h.Probe().PostForm("accounts.google.com", "/o/oauth2/token", s_szTokenBody).nStatus,
              200);
}

TEST(Control, RoutingAndControlErrors) {
    CEmulatorHarness h;
    struct STCase {
        const char* pszMethod;
        const char* pszHost;
        const char* pszTarget;
        int nStatus;
    };
    const STCase tab[] = {
        {"GET", "unknown.example", "/anything", 404},
        {"GET", "127.0.0.1", "/", 404},
        {"GET", "127.0.0.1", "/not.a.service/x", 404},
        {"GET", "ACCOUNTS.GOOGLE.COM:443", "/o/oauth2/auth",
         400}, // host told apart without port or case
        {"GET", "accounts.google.com", "/no/such/path", 404},
        {"GET", "", "/_emulator/nothing", 404},
        {"POST", "", "/_emulator/requests", 405},
        {"GET", "", "/_emulator/reset", 405},
        {"PUT", "accounts.google.com", "/_emulator/faults", 405},
        {"GET", "", "/_emulator", 200},
        {"GET", "", "/_emulator/requests?host=%zz", 400},
    };
    for (const STCase& c : tab) {
        STReply r = h.Probe().Send(c.pszMethod, c.pszHost, c.pszTarget);
        EXPECT_EQ(r.nStatus, c.nStatus)
            << c.pszMethod << " " << c.pszHost << c.pszTarget << ": " << r.sBody;
        if (c.nStatus == 405) {
            EXPECT_FALSE(r.sHeader("Allow").empty()) << c.pszTarget;
        }
        if (r.nStatus >= 400 && std::string_view(c.pszTarget).rfind("/o/", 0) != 0) {
            EXPECT_TRUE(CJsonValue::s_oParse(r.sBody, nullptr)) << c.pszTarget << ": " << r.sBody;
        }
    }
    auto oIndex = CJsonValue::s_oParse(h.Probe().Get("", "/_emulator/").sBody, nullptr);
    ASSERT_TRUE(oIndex);
    EXPECT_EQ(oIndex->pFind("services")->Items().at(0).sGetString(), "accounts.google.com");
    EXPECT_TRUE(oIndex->pFind("auto_approve")->bGetBool());
}
