// The generic OAuth 2 provider: both response types, both grants, errors per RFC 6749 sent
// back to the client once its redirect address is known good, and its bearer resource.
#include <gtest/gtest.h>

#include "Base64.h"
#include "EmulatorHarness.h"
#include "Flow.h"
#include "JsonValue.h"

namespace {
const char s_szHost[] = "oauth.provider.test";
const char s_szRedirect[] = "https://app.example.test/callback";

std::string s_sAuthorize(std::string_view svResponseType, std::string_view svExtra) {
    return "/authorize?response_type=" + std::string(svResponseType) +
           "&client_id=provider-client&redirect_uri=" + s_szRedirect + std::string(svExtra);
}

STReply s_Token(const CHttpProbe& probe, std::string_view svBody) {
    return probe.PostForm(
        s_szHost, "/token", svBody,
        {{"Authorization", "Basic " + CBase64::s_sEncode("provider-client:provider-secret")}});
}
} // namespace

TEST(OAuthProvider, CodeFlowThenRefresh) {
    CEmulatorHarness h;
    STReply auth = h.Probe().Get(s_szHost, s_sAuthorize("code", "&scope=read%20write&state=42"));
    ASSERT_EQ(auth.nStatus, 302) << auth.sBody;
    std::string sLocation = auth.sHeader("Location");
    EXPECT_EQ(sLocation.rfind(std::string(s_szRedirect) + "?code=c-", 0), 0u) << sLocation;
    EXPECT_EQ(CFlow::s_sParam(sLocation, "state"), "42");

    STReply token = s_Token(
        h.Probe(), "grant_type=authorization_code&code=" + CFlow::s_sParam(sLocation, "code") +
                       "&redirect_uri=" + s_szRedirect);
    ASSERT_EQ(token.nStatus, 200) << token.sBody;
    auto v = CJsonValue::s_oParse(token.sBody, nullptr);
    ASSERT_TRUE(v);
    EXPECT_EQ(v->sText("token_type"), "Bearer");
    EXPECT_EQ(v->sText("scope"), "read write");
    EXPECT_EQ(v->pFind("id_token"), nullptr); // no "openid" asked for
    std::string sRefresh = v->sText("refresh_token");
    ASSERT_EQ(sRefresh.rfind("rt-", 0), 0u);

    // Narrower scope is granted, a wider one refused.
    STReply narrow =
        s_Token(h.Probe(), "grant_type=refresh_token&scope=read&refresh_token=" + sRefresh);
    ASSERT_EQ(narrow.nStatus, 200) << narrow.sBody;
    EXPECT_EQ(CFlow::s_sJsonText(narrow.sBody, "scope"), "read");
    STReply wide =
        s_Token(h.Probe(), "grant_type=refresh_token&scope=read+admin&refresh_token=" + sRefresh);
    EXPECT_EQ(wide.nStatus, 400);
    EXPECT_EQ(CFlow::s_sJsonText(wide.sBody, "error"), "invalid_scope");

    // The access token opens /userinfo here, and nowhere else.
    std::string sAccess = CFlow::s_sJsonText(narrow.sBody, "access_token");
    STReply info = h.Probe().Send("GET", s_szHost, "/userinfo", {}, {},
                                  {{"Authorization", "Bearer " + sAccess}});
    ASSERT_EQ(info.nStatus, 200) << info.sBody;
    EXPECT_EQ(CFlow::s_sJsonText(info.sBody, "email"), "demo.user@example.com");
}

TEST(OAuthProvider, OpenIdScopeAddsAnIdToken) {
    CEmulatorHarness h;
    STReply auth = h.Probe().Get(s_szHost, s_sAuthorize("code", "&scope=openid"));
    STReply token = s_Token(h.Probe(), "grant_type=authorization_code&code=" +
                                           CFlow::s_sParam(auth.sHeader("Location"), "code") +
                                           "&redirect_uri=" + s_szRedirect);
    std::string sIdToken = CFlow::s_sJsonText(token.sBody, "id_token");
    ASSERT_FALSE(sIdToken.empty()) << token.sBody;
    EXPECT_NE(sIdToken.find("."), std::string::npos);
}

TEST(OAuthProvider, ImplicitFlowPutsTheTokenInTheFragment) {
    CEmulatorHarness h;
    STReply auth = h.Probe().Get(s_szHost, s_sAuthorize("token", "&scope=read&state=abc"));
    ASSERT_EQ(auth.nStatus, 302) << auth.sBody;
    std::string sLocation = auth.sHeader("Location");
    EXPECT_EQ(sLocation.rfind(std::string(s_szRedirect) + "#access_token=at-", 0), 0u) << sLocation;
    EXPECT_FALSE(CFlow::s_bHasParam(sLocation, "access_token")); // never in the query
    EXPECT_EQ(CFlow::s_sParam(sLocation, "token_type", true), "Bearer");
    EXPECT_EQ(CFlow::s_sParam(sLocation, "expires_in", true), "3599");
    EXPECT_EQ(CFlow::s_sParam(sLocation, "state", true), "abc");
    EXPECT_FALSE(CFlow::s_bHasParam(sLocation, "refresh_token", true));

    std::string sAccess = CFlow::s_sParam(sLocation, "access_token", true);
    STReply info = h.Probe().Send("GET", s_szHost, "/userinfo", {}, {},
                                  {{"Authorization", "Bearer " + sAccess}});
    EXPECT_EQ(info.nStatus, 200) << info.sBody;
    // Tokens belong to their provider: Google's accounts do not know this one.
    STReply none = h.Probe().Send("GET", s_szHost, "/userinfo");
    EXPECT_EQ(none.nStatus, 401);
    EXPECT_EQ(none.sHeader("WWW-Authenticate"), "Bearer realm=\"oauth.provider.test\"");
    STReply bad = h.Probe().Send("GET", s_szHost, "/userinfo", {}, {},
                                 {{"Authorization", "Bearer ya29.not-from-here"}});
    EXPECT_EQ(bad.nStatus, 401);
    EXPECT_NE(bad.sHeader("WWW-Authenticate").find("error=\"invalid_token\""), std::string::npos);
}

TEST(OAuthProvider, ErrorsGoBackToAKnownRedirect) {
    CEmulatorHarness h(false);
    struct STCase {
        std::string sTarget;
        const char* pszError;
        bool bFragment;
    };
    const STCase tab[] = {
        {"/authorize?client_id=provider-client&redirect_uri=" + std::string(s_szRedirect) +
             "&state=s",
         "invalid_request", false},
        {s_sAuthorize("device", "&state=s"), "unsupported_response_type", false},
    };
    for (const STCase& c : tab) {
        STReply r = h.Probe().Get(s_szHost, c.sTarget);
        ASSERT_EQ(r.nStatus, 302) << c.sTarget;
        std::string sLocation = r.sHeader("Location");
        EXPECT_EQ(CFlow::s_sParam(sLocation, "error", c.bFragment), c.pszError) << sLocation;
        EXPECT_EQ(CFlow::s_sParam(sLocation, "state", c.bFragment), "s") << sLocation;
    }
    // An unregistered redirect is never followed.
    STReply bad = h.Probe().Get(s_szHost, "/authorize?response_type=code&client_id=provider-client"
                                          "&redirect_uri=https://app.example.test/other");
    EXPECT_EQ(bad.nStatus, 400);
    EXPECT_EQ(bad.sHeader("Location"), "");

    // Denying an implicit request answers in the fragment.
    STReply page = h.Probe().Get(s_szHost, s_sAuthorize("token", "&state=t"));
    ASSERT_EQ(page.nStatus, 200);
    EXPECT_NE(page.sBody.find("action=\"/authorize/decision\""), std::string::npos);
    size_t n = page.sBody.find("name=\"txn\" value=\"") + 18;
    std::string sTxn = page.sBody.substr(n, page.sBody.find('"', n) - n);
    STReply deny = h.Probe().Get(s_szHost, "/authorize/decision?decision=deny&txn=" + sTxn);
    ASSERT_EQ(deny.nStatus, 302);
    EXPECT_EQ(deny.sHeader("Location"), std::string(s_szRedirect) +
                                            "#error=access_denied&error_description=The%20resource"
                                            "%20owner%20denied%20the%20request.&state=t");
}

TEST(OAuthProvider, TokenEndpointErrorsPerRfc6749) {
    CEmulatorHarness h;
    struct STCase {
        const char* pszBody;
        int nStatus;
        const char* pszError;
    };
    const STCase tab[] = {
        {"client_id=provider-client&client_secret=provider-secret", 400, "invalid_request"},
        {"grant_type=client_credentials&client_id=provider-client&client_secret=provider-secret",
         400, "unsupported_grant_type"},
        {"grant_type=authorization_code&code=c-nothing&redirect_uri=https://app.example.test/"
         "callback"
         "&client_id=provider-client&client_secret=provider-secret",
         400, "invalid_grant"},
        {"grant_type=refresh_token&refresh_token=rt-x&client_id=provider-client&client_secret=bad",
         401, "invalid_client"},
        // The seeded Google refresh token means nothing here.
        {"grant_type=refresh_token&refresh_token=1//demo-refresh-token&client_id=demo-client"
         "&client_secret=demo-secret",
         400, "invalid_grant"},
    };
    for (const STCase& c : tab) {
        STReply r = h.Probe().PostForm(s_szHost, "/token", c.pszBody);
        EXPECT_EQ(r.nStatus, c.nStatus) << c.pszBody << ": " << r.sBody;
        EXPECT_EQ(CFlow::s_sJsonText(r.sBody, "error"), c.pszError) << c.pszBody;
    }
}

// PKCE (RFC 7636, with its appendix B pair): a code whose authorisation carried a challenge is
// exchanged only with the verifier that answers it; the tenant provider's token endpoint wants
// its tenant in the query or in the body.
TEST(OAuthProvider, PkceAndTheTenantParameter) {
    const std::string sVerifier = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk";
    const std::string sChallenge = "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM";
    struct STCas {
        const char* pszHost;
        const char* pszPrefix; // of the paths
        std::string sChallenge; // query text after the redirect
        std::string sTokenQuery;
        std::string sExtraBody;
        int nStatus;
        const char* pszError;
    };
    const STCas tabCas[] = {
        {s_szHost, "", "&code_challenge=" + sChallenge + "&code_challenge_method=S256", "",
         "&code_verifier=" + sVerifier, 200, ""},
        {s_szHost, "", "&code_challenge=" + sChallenge + "&code_challenge_method=S256", "",
         "&code_verifier=" + sChallenge, 400, "invalid_grant"},
        {s_szHost, "", "&code_challenge=" + sChallenge + "&code_challenge_method=S256", "", "", 400,
         "invalid_grant"},
        {s_szHost, "", "&code_challenge=plain-one", "", "&code_verifier=plain-one", 200, ""},
        {s_szHost, "", "", "", "&code_verifier=unasked", 200, ""}, // no challenge, nothing checked
        {"login.tenant.test", "/oauth2", "", "?tenant=kvggl", "", 200, ""},
        {"login.tenant.test", "/oauth2", "", "", "&tenant=kvggl", 200, ""},
        {"login.tenant.test", "/oauth2", "", "", "", 400, "invalid_request"},
        {"login.tenant.test", "/oauth2", "", "?tenant=other", "", 400, "invalid_request"},
    };
    CEmulatorHarness h;
    for (const STCas& st : tabCas) {
        const std::string sWhat = std::string(st.pszHost) + st.sChallenge + st.sTokenQuery + st.sExtraBody;
        STReply auth = h.Probe().Get(st.pszHost, std::string(st.pszPrefix) +
                                                     "/authorize?response_type=code&client_id="
                                                     "demo-client&redirect_uri=http://127.0.0.1:9/" +
                                                     st.sChallenge);
        ASSERT_EQ(auth.nStatus, 302) << sWhat << auth.sBody;
        STReply token = h.Probe().PostForm(
            st.pszHost, std::string(st.pszPrefix) + "/token" + st.sTokenQuery,
            "grant_type=authorization_code&client_id=demo-client&client_secret=demo-secret&code=" +
                CFlow::s_sParam(auth.sHeader("Location"), "code") +
                "&redirect_uri=http://127.0.0.1:9/" + st.sExtraBody);
        EXPECT_EQ(token.nStatus, st.nStatus) << sWhat << token.sBody;
        if (*st.pszError) {
            EXPECT_EQ(CFlow::s_sJsonText(token.sBody, "error"), st.pszError) << sWhat;
        }
    }
    STReply bad = h.Probe().Get(s_szHost, s_sAuthorize("code", "&code_challenge=x&code_challenge_method=MD5"));
    EXPECT_EQ(CFlow::s_sParam(bad.sHeader("Location"), "error"), "invalid_request");
}
