// Google accounts on the wire: the consent page, the code and refresh grants, the errors as
// Google writes them, and the bearer check the Google API emulators rely on.
#include <gtest/gtest.h>

#include "Base64.h"
#include "EmulatorHarness.h"
#include "Flow.h"
#include "GoogleAccounts.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"

namespace {
const char s_szHost[] = "accounts.google.com";
const char s_szRedirect[] = "http://127.0.0.1:5555/callback";
const char s_szCalendar[] = "https://www.googleapis.com/auth/calendar";

std::string s_sAuthTarget(std::string_view svExtra) {
    return std::string("/o/oauth2/auth?response_type=code&client_id=demo-client&redirect_uri=") +
           s_szRedirect + "&scope=" + s_szCalendar + "%20https://www.google.com/m8/feeds/" +
           std::string(svExtra);
}

std::string s_sExchange(std::string_view svCode, std::string_view svSecret = "demo-secret",
                        std::string_view svRedirect = s_szRedirect) {
    return "code=" + std::string(svCode) +
           "&client_id=demo-client&client_secret=" + std::string(svSecret) +
           "&redirect_uri=" + std::string(svRedirect) + "&grant_type=authorization_code";
}

// The code as the redirect carries it; still percent-encoded, as a client reads it.
std::string s_sCode(const CHttpProbe& probe, std::string_view svExtra = "&state=s1") {
    STReply r = probe.Get(s_szHost, s_sAuthTarget(svExtra));
    EXPECT_EQ(r.nStatus, 302);
    return CFlow::s_sParam(r.sHeader("Location"), "code");
}

CJsonValue s_Json(const STReply& r) {
    auto o = CJsonValue::s_oParse(r.sBody, nullptr);
    EXPECT_TRUE(o) << r.sBody;
    return o ? *o : CJsonValue();
}

// The claims of an ID token: three dot-separated parts, the middle one base64url JSON.
CJsonValue s_Claims(const std::string& sIdToken) {
    size_t n1 = sIdToken.find('.'), n2 = sIdToken.rfind('.');
    EXPECT_NE(n1, n2);
    auto oPayload = CBase64::s_oDecode(sIdToken.substr(n1 + 1, n2 - n1 - 1));
    EXPECT_TRUE(oPayload);
    auto o = CJsonValue::s_oParse(oPayload.value_or(""), nullptr);
    return o ? *o : CJsonValue();
}

STRequest s_BearerRequest(std::string_view svAuthorization) {
    STRequest req;
    req.sMethod = "GET";
    req.sHost = "www.googleapis.com";
    req.sTarget = req.sPath = "/calendar/v3/users/me/calendarList";
    if (!svAuthorization.empty())
        req.tabHeaders.emplace_back("Authorization", svAuthorization);
    return req;
}
} // namespace

TEST(GoogleAccounts, CodeFlowGivesTokensOnceAndTheyWork) {
    CEmulatorHarness h;
    STReply auth =
        h.Probe().Get(s_szHost, s_sAuthTarget("&state=xyz&login_hint=demo.user@example.com"));
    ASSERT_EQ(auth.nStatus, 302);
    std::string sLocation = auth.sHeader("Location");
    EXPECT_EQ(sLocation.rfind(std::string(s_szRedirect) + "?code=", 0), 0u) << sLocation;
    EXPECT_EQ(CFlow::s_sParam(sLocation, "state"), "xyz");
    std::string sCode = CFlow::s_sParam(sLocation, "code");
    ASSERT_FALSE(sCode.empty());

    STReply token = h.Probe().PostForm(s_szHost, "/o/oauth2/token", s_sExchange(sCode));
    ASSERT_EQ(token.nStatus, 200) << token.sBody;
    EXPECT_EQ(token.sHeader("Cache-Control"), "no-store");
    CJsonValue v = s_Json(token);
    EXPECT_EQ(v.sText("token_type"), "Bearer");
    EXPECT_EQ(v.sText("access_token").rfind("ya29.", 0), 0u);
    EXPECT_FALSE(v.sText("refresh_token").empty());
    ASSERT_TRUE(v.pFind("expires_in") && v.pFind("expires_in")->bIsInteger());
    EXPECT_EQ(v.pFind("expires_in")->nGetInt(), 3599);
    EXPECT_EQ(v.sText("scope"), std::string(s_szCalendar) + " https://www.google.com/m8/feeds/");
    CJsonValue claims = s_Claims(v.sText("id_token"));
    EXPECT_EQ(claims.sText("aud"), "demo-client");
    EXPECT_EQ(claims.sText("email"), "demo.user@example.com");
    EXPECT_EQ(claims.sText("iss"), "https://accounts.google.com");

    // The access token opens the Google APIs for its scopes, and only those.
    STRequest req = s_BearerRequest("Bearer " + v.sText("access_token"));
    STResponse res;
    STGrant g;
    EXPECT_TRUE(CGoogleAccounts::s_bAuthorise(h.Emulator(), req, res, {s_szCalendar}, &g));
    EXPECT_EQ(g.sEmail, "demo.user@example.com");
    EXPECT_FALSE(CGoogleAccounts::s_bAuthorise(h.Emulator(), req, res,
                                               {"https://www.googleapis.com/auth/drive"}));
    EXPECT_EQ(res.nStatus, 403);

    // A code is good once; using it again fails and revokes what it gave.
    STReply again = h.Probe().PostForm(s_szHost, "/o/oauth2/token", s_sExchange(sCode));
    EXPECT_EQ(again.nStatus, 400);
    EXPECT_EQ(again.sBody, R"({"error":"invalid_grant","error_description":"Bad Request"})");
    STResponse resAfter;
    EXPECT_FALSE(CGoogleAccounts::s_bAuthorise(h.Emulator(), req, resAfter, {s_szCalendar}));
    EXPECT_EQ(resAfter.nStatus, 401);
}

TEST(GoogleAccounts, RefreshFlowGivesAnAccessTokenOnly) {
    CEmulatorHarness h;
    STReply r = h.Probe().PostForm(
        s_szHost, "/o/oauth2/token",
        "refresh_token=1//demo-refresh-token&client_id=demo-client&client_secret=demo-secret"
        "&grant_type=refresh_token");
    ASSERT_EQ(r.nStatus, 200) << r.sBody;
    CJsonValue v = s_Json(r);
    EXPECT_FALSE(v.sText("access_token").empty());
    EXPECT_EQ(v.pFind("refresh_token"), nullptr);
    EXPECT_EQ(v.sText("token_type"), "Bearer");
    EXPECT_FALSE(v.sText("id_token").empty());

    // The refreshed token carries the seeded grant's scopes, until the tokens expire.
    STRequest req = s_BearerRequest("Bearer " + v.sText("access_token"));
    STResponse res;
    EXPECT_TRUE(CGoogleAccounts::s_bAuthorise(h.Emulator(), req, res, {s_szCalendar}));
    EXPECT_EQ(h.Probe().Send("POST", "", "/_emulator/expire").nStatus, 200);
    EXPECT_FALSE(CGoogleAccounts::s_bAuthorise(h.Emulator(), req, res, {s_szCalendar}));
    EXPECT_EQ(res.nStatus, 401);
    EXPECT_NE(res.pHeader("WWW-Authenticate")->find("invalid_token"), std::string::npos);
}

TEST(GoogleAccounts, BearerErrorsInGoogleFormat) {
    CEmulatorHarness h;
    struct STCase {
        const char* pszAuthorization;
        int nStatus;
        const char* pszReason;
    };
    const STCase tab[] = {
        {"", 401, "required"},
        {"Bearer not-a-token", 401, "authError"},
        {"Basic ZGVtbzpkZW1v", 401, "required"},
    };
    for (const STCase& c : tab) {
        STResponse res;
        EXPECT_FALSE(CGoogleAccounts::s_bAuthorise(
            h.Emulator(), s_BearerRequest(c.pszAuthorization), res, {s_szCalendar}))
            << c.pszAuthorization;
        EXPECT_EQ(res.nStatus, c.nStatus) << c.pszAuthorization;
        auto o = CJsonValue::s_oParse(res.sBody, nullptr);
        ASSERT_TRUE(o) << res.sBody;
        const CJsonValue* pError = o->pFind("error");
        ASSERT_TRUE(pError) << res.sBody;
        EXPECT_EQ(pError->pFind("code")->nGetInt(), 401);
        EXPECT_EQ(pError->sText("status"), "UNAUTHENTICATED");
        EXPECT_EQ(pError->pFind("errors")->Items().at(0).sText("reason"), c.pszReason);
    }
}

TEST(GoogleAccounts, StateIsEchoedAsReceived) {
    CEmulatorHarness h;
    struct STCase {
        const char* pszQuery; // appended to the authorisation target
        bool bState;
        const char* pszEchoed;
    };
    const STCase tab[] = {
        {"&state=[%STATE%]", true, "[%STATE%]"}, // the host's marker, unfilled
        {"&state=a%20b+c", true, "a%20b+c"},          {"&state=", true, ""}, {"", false, ""},
        {"&state=first&state=second", true, "first"},
    };
    for (const STCase& c : tab) {
        STReply r = h.Probe().Get(s_szHost, s_sAuthTarget(c.pszQuery));
        ASSERT_EQ(r.nStatus, 302) << c.pszQuery;
        std::string sLocation = r.sHeader("Location");
        EXPECT_EQ(CFlow::s_bHasParam(sLocation, "state"), c.bState) << sLocation;
        EXPECT_EQ(CFlow::s_sParam(sLocation, "state"), c.pszEchoed) << sLocation;
    }
}

TEST(GoogleAccounts, CodeIsBoundToClientRedirectAndSecret) {
    // A second Google client, to present someone else's code.
    const char szSeed[] = R"({
        "users": [{"email": "u@example.com"}],
        "clients": [{"client_id": "demo-client", "client_secret": "demo-secret", "loopback": true},
                    {"client_id": "other", "client_secret": "other-secret", "loopback": true}]})";
    CEmulatorHarness h(true, szSeed);
    struct STCase {
        const char* pszName;
        std::string sBody;
        const char* pszBasic; // Authorization: Basic, or null
        int nStatus;
        const char* pszError;
    };
    std::string sCode = s_sCode(h.Probe());
    const STCase tab[] = {
        {"wrong secret", s_sExchange(sCode, "nope"), nullptr, 401, "invalid_client"},
        {"no secret",
         "code=" + sCode + "&client_id=demo-client&redirect_uri=x&grant_type=authorization_code",
         nullptr, 401, "invalid_client"},
        {"unknown client",
         "code=" + sCode + "&client_id=who-is-this&client_secret=demo-secret" +
             "&redirect_uri=" + s_szRedirect + "&grant_type=authorization_code",
         nullptr, 401, "invalid_client"},
        {"other redirect", s_sExchange(sCode, "demo-secret", "http://127.0.0.1:5556/callback"),
         nullptr, 400, "redirect_uri_mismatch"},
        {"other client",
         "code=" + sCode + "&client_id=other&client_secret=other-secret&redirect_uri=" +
             s_szRedirect + "&grant_type=authorization_code",
         nullptr, 400, "invalid_grant"},
        {"basic, wrong secret",
         "code=" + sCode + "&redirect_uri=" + s_szRedirect + "&grant_type=authorization_code",
         "demo-client:nope", 401, "invalid_client"},
        {"basic and body secret",
         "code=" + sCode + "&client_secret=demo-secret&redirect_uri=" + s_szRedirect +
             "&grant_type=authorization_code",
         "demo-client:demo-secret", 400, "invalid_request"},
    };
    for (const STCase& c : tab) {
        CHttpProbe::Headers headers;
        if (c.pszBasic)
            headers.emplace_back("Authorization", "Basic " + CBase64::s_sEncode(c.pszBasic));
        STReply r = h.Probe().PostForm(s_szHost, "/o/oauth2/token", c.sBody, headers);
        EXPECT_EQ(r.nStatus, c.nStatus) << c.pszName << ": " << r.sBody;
        EXPECT_EQ(CFlow::s_sJsonText(r.sBody, "error"), c.pszError) << c.pszName;
        if (c.pszBasic && c.nStatus == 401) {
            EXPECT_EQ(r.sHeader("WWW-Authenticate").rfind("Basic ", 0), 0u) << c.pszName;
        }
    }
    // None of the failures spent the code: the right request still gets its tokens, with the
    // client authenticated by HTTP Basic this time.
    STReply ok = h.Probe().PostForm(
        s_szHost, "/o/oauth2/token",
        "code=" + sCode + "&redirect_uri=" + s_szRedirect + "&grant_type=authorization_code",
        {{"Authorization", "Basic " + CBase64::s_sEncode("demo-client:demo-secret")}});
    EXPECT_EQ(ok.nStatus, 200) << ok.sBody;
}

TEST(GoogleAccounts, TokenEndpointRefusesMalformedRequests) {
    CEmulatorHarness h;
    struct STCase {
        const char* pszMethod;
        const char* pszContentType;
        const char* pszBody;
        int nStatus;
        const char* pszError;
    };
    const STCase tab[] = {
        {"POST", "application/x-www-form-urlencoded", "", 400, "unsupported_grant_type"},
        {"POST", "application/x-www-form-urlencoded", "grant_type=password&client_id=demo-client",
         400, "unsupported_grant_type"},
        {"POST", "application/x-www-form-urlencoded",
         "grant_type=authorization_code&client_id=demo-client&client_secret=demo-secret", 400,
         "invalid_request"},
        {"POST", "application/x-www-form-urlencoded",
         "grant_type=authorization_code&code=x&client_id=demo-client&client_secret=demo-secret",
         400, "invalid_request"}, // no redirect_uri
        {"POST", "application/x-www-form-urlencoded",
         "grant_type=refresh_token&client_id=demo-client&client_secret=demo-secret", 400,
         "invalid_request"},
        {"POST", "application/x-www-form-urlencoded", "grant_type=refresh_token&refresh_token=x",
         400, "invalid_request"}, // no client
        {"POST", "application/x-www-form-urlencoded", "grant_type=refresh_token&code=%zz", 400,
         "invalid_request"},
        {"POST", "application/x-www-form-urlencoded", "grant_type=refresh_token&code=%4", 400,
         "invalid_request"},
        {"POST", "application/json", R"({"grant_type":"refresh_token"})", 400, "invalid_request"},
        {"POST", "", "grant_type=refresh_token", 400, "invalid_request"},
        {"POST", "application/x-www-form-urlencoded",
         "grant_type=refresh_token&refresh_token=unknown&client_id=demo-client&client_secret=demo-"
         "secret",
         400, "invalid_grant"},
        {"GET", "", "", 405, "invalid_request"},
        {"PUT", "application/x-www-form-urlencoded", "grant_type=refresh_token", 405,
         "invalid_request"},
    };
    for (const STCase& c : tab) {
        STReply r =
            h.Probe().Send(c.pszMethod, s_szHost, "/o/oauth2/token", c.pszBody, c.pszContentType);
        EXPECT_EQ(r.nStatus, c.nStatus) << c.pszMethod << " " << c.pszBody << ": " << r.sBody;
        EXPECT_EQ(CFlow::s_sJsonText(r.sBody, "error"), c.pszError) << c.pszBody;
    }
}

TEST(GoogleAccounts, AuthorisationErrorsStayOnThePage) {
    CEmulatorHarness h;
    struct STCase {
        const char* pszTarget;
        int nStatus;
        const char* pszError;
    };
    const STCase tab[] = {
        {"/o/oauth2/auth?response_type=code&redirect_uri=http://127.0.0.1:1/&scope=s", 400,
         "invalid_request"},
        {"/o/oauth2/auth?response_type=code&client_id=nobody&redirect_uri=http://127.0.0.1:1/"
         "&scope=s",
         401, "invalid_client"},
        {"/o/oauth2/auth?response_type=code&client_id=demo-client&scope=s", 400, "invalid_request"},
        {"/o/oauth2/auth?response_type=code&client_id=demo-client&redirect_uri=https://evil.test/"
         "&scope=s",
         400, "redirect_uri_mismatch"},
        {"/o/oauth2/auth?response_type=code&client_id=demo-client&redirect_uri=http://"
         "127.0.0.1.evil.test/&scope=s",
         400, "redirect_uri_mismatch"},
        {"/o/oauth2/auth?response_type=code&client_id=demo-client&redirect_uri=http://"
         "127.0.0.1@evil.test/&scope=s",
         400, "redirect_uri_mismatch"},
        {"/o/oauth2/auth?response_type=code&client_id=demo-client&redirect_uri=http://127.0.0.1:1/",
         400, "invalid_request"}, // Google wants a scope
        {"/o/oauth2/auth?response_type=id_token&client_id=demo-client&redirect_uri=http://"
         "127.0.0.1:1/&scope=s",
         400, "unsupported_response_type"},
        {"/o/oauth2/auth?client_id=demo-client&redirect_uri=http://127.0.0.1:1/&scope=s", 400,
         "invalid_request"},
    };
    for (const STCase& c : tab) {
        STReply r = h.Probe().Get(s_szHost, c.pszTarget);
        EXPECT_EQ(r.nStatus, c.nStatus) << c.pszTarget;
        EXPECT_EQ(r.sHeader("Location"), "") << c.pszTarget;
        EXPECT_NE(r.sBody.find(std::string("<code id=\"error\">") + c.pszError + "</code>"),
                  std::string::npos)
            << c.pszTarget << "\n"
            << r.sBody;
    }
}

TEST(GoogleAccounts, ConsentPageApprovesAndDeniesInTheBrowserForm) {
    CEmulatorHarness h(false);
    // What a browser opens: the routed address, origin host as first segment.
    std::string sTarget = std::string("/accounts.google.com") + s_sAuthTarget("&state=st%2F1");
    STReply page = h.Probe().Get("127.0.0.1", sTarget);
    ASSERT_EQ(page.nStatus, 200);
    EXPECT_EQ(page.sHeader("Content-Type"), "text/html; charset=utf-8");
    EXPECT_NE(page.sBody.find("action=\"/accounts.google.com/o/oauth2/approval\""),
              std::string::npos)
        << page.sBody;
    EXPECT_NE(page.sBody.find(s_szCalendar), std::string::npos);
    EXPECT_NE(page.sBody.find("value=\"approve\""), std::string::npos);
    EXPECT_NE(page.sBody.find("value=\"deny\""), std::string::npos);
    auto sTxn = [](const std::string& sHtml) {
        size_t n = sHtml.find("name=\"txn\" value=\"");
        if (n == std::string::npos)
            return std::string();
        n += 18;
        return sHtml.substr(n, sHtml.find('"', n) - n);
    };
    std::string sTransaction = sTxn(page.sBody);
    ASSERT_FALSE(sTransaction.empty());

    // The form posts back in the browser form; the second account is chosen on the page.
    STReply approve = h.Probe().PostForm("127.0.0.1:9", "/accounts.google.com/o/oauth2/approval",
                                         "txn=" + sTransaction +
                                             "&user=second.user%40example.com&decision=approve");
    ASSERT_EQ(approve.nStatus, 302) << approve.sBody;
    std::string sLocation = approve.sHeader("Location");
    EXPECT_EQ(CFlow::s_sParam(sLocation, "state"), "st%2F1");
    STReply token = h.Probe().PostForm(s_szHost, "/o/oauth2/token",
                                       s_sExchange(CFlow::s_sParam(sLocation, "code")));
    ASSERT_EQ(token.nStatus, 200) << token.sBody;
    EXPECT_EQ(s_Claims(CFlow::s_sJsonText(token.sBody, "id_token")).sText("email"),
              "second.user@example.com");

    // A transaction is answered once.
    STReply replay = h.Probe().PostForm("127.0.0.1", "/accounts.google.com/o/oauth2/approval",
                                        "txn=" + sTransaction + "&decision=approve");
    EXPECT_EQ(replay.nStatus, 400);

    // Deny, this time through the Host header: the form stays on that form.
    STReply page2 = h.Probe().Get(s_szHost, s_sAuthTarget("&state=zz"));
    EXPECT_NE(page2.sBody.find("action=\"/o/oauth2/approval\""), std::string::npos);
    STReply deny = h.Probe().PostForm(s_szHost, "/o/oauth2/approval",
                                      "txn=" + sTxn(page2.sBody) + "&decision=deny");
    ASSERT_EQ(deny.nStatus, 302);
    EXPECT_EQ(deny.sHeader("Location"),
              std::string(s_szRedirect) + "?error=access_denied&state=zz");
}

TEST(GoogleAccounts, LoginHintChoosesTheAccount) {
    CEmulatorHarness h;
    std::string sCode = s_sCode(h.Probe(), "&login_hint=second.user@example.com");
    STReply token = h.Probe().PostForm(s_szHost, "/o/oauth2/token", s_sExchange(sCode));
    EXPECT_EQ(s_Claims(CFlow::s_sJsonText(token.sBody, "id_token")).sText("email"),
              "second.user@example.com");
}
