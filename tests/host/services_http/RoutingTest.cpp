// The routing setting and the host options, read from their texts.
#include "HostOptions.h"
#include "Routing.h"

#include <gtest/gtest.h>

#include <map>

namespace {

struct STRouteCase {
    const char* pszName;
    const char* pszSetting;
    const char* pszUrl;
    const char* pszRoutedUrl; // null: not routed
    const char* pszHost;
};

class Route : public testing::TestWithParam<STRouteCase> {};

TEST_P(Route, SendsTheOriginWhereTheSettingSays) {
    const STRouteCase& c = GetParam();
    CRouting cl;
    std::string sError;
    ASSERT_TRUE(cl.bParse(c.pszSetting, sError)) << sError;
    std::string sUrl;
    std::string sHost;
    bool bRouted = cl.bRouteRequest(c.pszUrl, sUrl, sHost);
    ASSERT_EQ(bRouted, c.pszRoutedUrl != nullptr);
    if (bRouted) {
        EXPECT_EQ(sUrl, c.pszRoutedUrl);
        EXPECT_EQ(sHost, c.pszHost);
    }
}

const STRouteCase gtabRoutes[] = {
    {"Star", "*=127.0.0.1:8931", "https://www.googleapis.com/calendar/v3/x?a=1#frag",
     "http://127.0.0.1:8931/calendar/v3/x?a=1", "www.googleapis.com"},
    {"ExactOrigin", "https://www.googleapis.com=127.0.0.1:8931", "https://www.googleapis.com/drive",
     "http://127.0.0.1:8931/drive", "www.googleapis.com"},
    {"OriginHostCase", "https://WWW.Example.TEST=127.0.0.1:1", "https://www.example.test/",
     "http://127.0.0.1:1/", "www.example.test"},
    {"OtherScheme", "https://www.example.test=127.0.0.1:1", "http://www.example.test/", nullptr,
     ""},
    {"OtherPort", "https://www.example.test=127.0.0.1:1", "https://www.example.test:444/", nullptr,
     ""},
    {"DefaultPortWritten", "https://www.example.test:443=127.0.0.1:1", "https://www.example.test/a",
     "http://127.0.0.1:1/a", "www.example.test"},
    {"PortKeptInHost", "*=127.0.0.1:1", "https://www.example.test:8443/a", "http://127.0.0.1:1/a",
     "www.example.test:8443"},
    {"DefaultPortNotInHost", "*=127.0.0.1:1", "https://www.example.test:443/a",
     "http://127.0.0.1:1/a", "www.example.test"},
    {"HostOnlyAnyScheme", "www.example.test=127.0.0.1:2", "http://www.example.test:8080/q",
     "http://127.0.0.1:2/q", "www.example.test:8080"},
    {"FirstMatchWins", " a.test=127.0.0.1:1 , *=127.0.0.1:2 ", "https://a.test/x",
     "http://127.0.0.1:1/x", "a.test"},
    {"FallsToStar", "a.test=127.0.0.1:1,*=127.0.0.1:2", "https://b.test/x", "http://127.0.0.1:2/x",
     "b.test"},
    {"NoPathNoQuery", "*=[::1]:9000", "https://b.test", "http://[::1]:9000/", "b.test"},
    {"QueryWithoutPath", "*=127.0.0.1:1", "https://b.test?x=1", "http://127.0.0.1:1/?x=1",
     "b.test"},
    {"UserInfoDropped", "*=127.0.0.1:1", "https://u:p@b.test/x", "http://127.0.0.1:1/x", "b.test"},
    {"PathAsWritten", "*=127.0.0.1:1", "https://b.test/a/../b/%2e/c?x=%20",
     "http://127.0.0.1:1/a/../b/%2e/c?x=%20", "b.test"},
    {"Empty", "", "https://b.test/x", nullptr, ""},
    {"NotHttp", "*=127.0.0.1:1", "ftp://b.test/x", nullptr, ""},
};
INSTANTIATE_TEST_SUITE_P(Routing, Route, testing::ValuesIn(gtabRoutes),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(Routing, RefusesASettingItCannotRead) {
    for (const char* psz : {"nonsense", "*=127.0.0.1", "*=127.0.0.1:0", "*=127.0.0.1:70000",
                            "*=:80", "ftp://x=127.0.0.1:1", "=127.0.0.1:1", "a.test=,",
                            "https://a b=127.0.0.1:1", "*=[::1:80"}) {
        CRouting cl;
        std::string sError;
        EXPECT_FALSE(cl.bParse(psz, sError)) << psz;
        EXPECT_NE(sError.find("KVGGL_ROUTE"), std::string::npos) << psz;
        EXPECT_TRUE(cl.bEmpty()) << "nothing half-routed: " << psz;
    }
}

// Routed requests go in clear: only to this machine, unless the user allows more.
TEST(Routing, SendsOnlyToThisMachineUnlessAllowed) {
    for (const char* psz : {"*=127.0.0.1:1", "*=127.1.2.3:1", "*=localhost:1", "*=[::1]:1"}) {
        CRouting cl;
        std::string sError;
        EXPECT_TRUE(cl.bParse(psz, sError)) << psz << ": " << sError;
    }
    for (const char* psz : {"*=10.0.0.1:80", "https://www.googleapis.com=evil.example:80"}) {
        CRouting cl;
        std::string sError;
        EXPECT_FALSE(cl.bParse(psz, sError)) << psz;
        EXPECT_NE(sError.find("KVGGL_ROUTE_INSECURE=1"), std::string::npos) << sError;
        EXPECT_TRUE(cl.bParse(psz, sError, true)) << psz << ": " << sError;
    }
}

TEST(Routing, GivesTheBrowserFormOfARoutedAddress) {
    CRouting cl;
    std::string sError;
    ASSERT_TRUE(cl.bParse("https://accounts.example.test=127.0.0.1:8931", sError));
    EXPECT_EQ(cl.sBrowserForm("https://accounts.example.test/o/oauth2/auth?client_id=a&state=s"),
              "http://127.0.0.1:8931/accounts.example.test/o/oauth2/auth?client_id=a&state=s");
    EXPECT_EQ(cl.sBrowserForm("https://other.example.test/o?x"), "https://other.example.test/o?x");
}

TEST(HostOptions, ReadsTheVariablesWithTheirDefaults) {
    std::map<std::string, std::string> tabVariables;
    auto fnGet = [&](const char* psz) -> const char* {
        auto it = tabVariables.find(psz);
        return it == tabVariables.end() ? nullptr : it->second.c_str();
    };
    std::string sWarnings;
    STHostOptions st = STHostOptions::s_stFromVariables(fnGet, sWarnings);
    EXPECT_EQ(sWarnings, "");
    EXPECT_EQ(st.nConnectTimeoutMs, 30000);
    EXPECT_EQ(st.nTimeoutMs, 300000);
    EXPECT_EQ(st.nLoginWaitMs, 300000);
    EXPECT_EQ(st.nMaxBody, size_t{1} << 30);
    EXPECT_EQ(st.eProgress, HOSTPROGRESS_AUTO);
    EXPECT_FALSE(st.bBrowserSet);
    EXPECT_EQ(st.sRoute, "");

    tabVariables = {{"KVGGL_ROUTE", "*=127.0.0.1:1"},
                    {"KVGGL_CONNECT_TIMEOUT", "2.5"},
                    {"KVGGL_TIMEOUT", "0"},
                    {"KVGGL_LOGIN_WAIT", "12"},
                    {"KVGGL_HTTP_MAX_BODY", "1000"},
                    {"KVGGL_PROGRESS", "never"},
                    {"KVGGL_BROWSER", ""}};
    st = STHostOptions::s_stFromVariables(fnGet, sWarnings);
    EXPECT_EQ(sWarnings, "");
    EXPECT_EQ(st.sRoute, "*=127.0.0.1:1");
    EXPECT_EQ(st.nConnectTimeoutMs, 2500);
    EXPECT_EQ(st.nTimeoutMs, 0);
    EXPECT_EQ(st.nLoginWaitMs, 12000);
    EXPECT_EQ(st.nMaxBody, 1000u);
    EXPECT_EQ(st.eProgress, HOSTPROGRESS_NEVER);
    EXPECT_TRUE(st.bBrowserSet);
    EXPECT_EQ(st.sBrowser, "");

    tabVariables = {{"KVGGL_CONNECT_TIMEOUT", "soon"},
                    {"KVGGL_TIMEOUT", "-1"},
                    {"KVGGL_HTTP_MAX_BODY", "1e6"},
                    {"KVGGL_PROGRESS", "yes"},
                    {"KVGGL_LOGIN_WAIT", "10s"}};
    st = STHostOptions::s_stFromVariables(fnGet, sWarnings);
    EXPECT_EQ(st.nConnectTimeoutMs, 30000);
    EXPECT_EQ(st.nTimeoutMs, 300000);
    EXPECT_EQ(st.nMaxBody, size_t{1} << 30);
    EXPECT_EQ(st.eProgress, HOSTPROGRESS_AUTO);
    EXPECT_EQ(st.nLoginWaitMs, 300000);
    for (const char* psz :
         {"KVGGL_CONNECT_TIMEOUT: 'soon'", "KVGGL_TIMEOUT: '-1'", "KVGGL_HTTP_MAX_BODY: '1e6'",
          "KVGGL_PROGRESS: 'yes'", "KVGGL_LOGIN_WAIT: '10s'"})
        EXPECT_NE(sWarnings.find(psz), std::string::npos) << psz << "\n" << sWarnings;
    EXPECT_EQ(std::count(sWarnings.begin(), sWarnings.end(), '\n'), 5);
}

} // namespace
