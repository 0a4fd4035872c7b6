// Against the kvggl-emulators process of the kvggl_emulators fixture: the port comes from the
// file the fixture wrote, and a whole browser-form login runs as the integration tests will.
#include <gtest/gtest.h>

#include <fstream>

#include "Flow.h"
#include "HttpProbe.h"

namespace {
int s_nPort() {
    std::ifstream in(KVGGL_EMULATORS_PORT_FILE);
    int nPort = 0;
    in >> nPort;
    return nPort;
}
} // namespace

TEST(Fixture, ProcessAnswersALoginWithAutoApprove) {
    int nPort = s_nPort();
    ASSERT_GT(nPort, 0) << "no port in " << KVGGL_EMULATORS_PORT_FILE;
    CHttpProbe probe(nPort);
    STReply index = probe.Get("", "/_emulator/");
    ASSERT_EQ(index.nStatus, 200);
    EXPECT_NE(index.sBody.find("\"auto_approve\":true"), std::string::npos) << index.sBody;

    const std::string sRedirect = "http://127.0.0.1:" + std::to_string(nPort + 1) + "/fixture";
    STReply auth =
        probe.Get("", "/accounts.google.com/o/oauth2/auth?response_type=code"
                      "&client_id=demo-client&scope=https://www.googleapis.com/auth/calendar"
                      "&include_granted_scopes=true&redirect_uri=" +
                          sRedirect + "&state=f1");
    ASSERT_EQ(auth.nStatus, 302) << auth.sBody;
    std::string sLocation = auth.sHeader("Location");
    EXPECT_EQ(CFlow::s_sParam(sLocation, "state"), "f1");
    STReply token = probe.PostForm(
        "accounts.google.com", "/o/oauth2/token",
        "code=" + CFlow::s_sParam(sLocation, "code") +
            "&client_id=demo-client&client_secret=demo-secret&redirect_uri=" + sRedirect +
            "&grant_type=authorization_code");
    EXPECT_EQ(token.nStatus, 200) << token.sBody;
    EXPECT_FALSE(CFlow::s_sJsonText(token.sBody, "refresh_token").empty());

    STReply log = probe.Get("", "/_emulator/requests?host=accounts.google.com");
    EXPECT_NE(log.sBody.find("\"target\":\"/o/oauth2/token\""), std::string::npos);
}
