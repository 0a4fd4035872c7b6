// The HTTP service on the wire: the exact request bytes for each verb, the three result kinds,
// compression, keep-alive, routing, the redirect count, and every way an exchange fails, each
// with its code and a message that names the cause. Routing everything with '*' and the 21st
// redirect refused are proven by the Lua wire tests, which run that way.
#include "HostErrors.h"
#include "RawServer.h"
#include "ServicesTestSupport.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

namespace {

// Loopback only: a proxy from the environment must not stand in the way.
const bool gbNoProxy = [] {
    ::setenv("NO_PROXY", "*", 1);
    ::setenv("no_proxy", "*", 1);
    return true;
}();

STRawReply Ok(const std::string& sBody = "ok", const std::vector<std::string>& tab = {}) {
    return {CRawServer::s_sAnswer(200, "OK", sBody, tab)};
}

// ---- exact bytes, one case per verb

struct STVerbCase {
    const char* pszName;
    int nMethod;
    const char* pszVerb;
    std::string sBody;
    const wchar_t* pszType;
    bool bContentType; // the type goes out
};

class VerbOnWire : public testing::TestWithParam<STVerbCase> {};

TEST_P(VerbOnWire, SendsRequestLineHeadersAndBodyExactly) {
    const STVerbCase& c = GetParam();
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    auto cl = NewClient();
    HeaderList tabHeaders = {
        {L"Authorization", L"Bearer t0k"}, {L"X-Trace", L"été 1"}, {L"X-Empty", L""}};
    ASSERT_TRUE(Execute(*cl, c.nMethod, clServer.sUrl("/v1/items?q=a%20b&n=2"), c.sBody, c.pszType,
                        tabHeaders))
        << ErrorText(cl->vpiGetErreur());
    EXPECT_TRUE(cl->vpiGetErreur()->bEstPropre());

    auto tab = clServer.tabRequests();
    ASSERT_EQ(tab.size(), 1u);
    const STRawRequest& r = tab[0];
    EXPECT_EQ(r.sHead.substr(0, r.sHead.find("\r\n")),
              std::string(c.pszVerb) + " /v1/items?q=a%20b&n=2 HTTP/1.1");
    EXPECT_EQ(r.sHeader("Host"), "127.0.0.1:" + std::to_string(clServer.nPort()));
    EXPECT_EQ(r.sHeader("Authorization"), "Bearer t0k");
    EXPECT_EQ(r.sHeader("X-Trace"), "\xC3\xA9t\xC3\xA9 1"); // UTF-8 on the wire
    EXPECT_NE(r.sHead.find("\r\nX-Empty:"), std::string::npos) << "an empty header still goes";
    // The headers go in the order the set holds them.
    EXPECT_LT(r.sHead.find("\r\nAuthorization:"), r.sHead.find("\r\nX-Trace:"));
    EXPECT_FALSE(r.bHasHeader("Expect"));
    EXPECT_FALSE(r.bHasHeader("Transfer-Encoding"));
    if (c.bContentType) {
        EXPECT_EQ(r.sHeader("Content-Type"), KVUtf8::VersUtf8(c.pszType));
        EXPECT_EQ(r.sHeader("Content-Length"), std::to_string(c.sBody.size()));
    } else {
        EXPECT_FALSE(r.bHasHeader("Content-Type"));
        EXPECT_FALSE(r.bHasHeader("Content-Length"));
    }
    EXPECT_EQ(r.sBody, c.sBody);
    EXPECT_EQ(r.sRaw, r.sHead + "\r\n\r\n" + c.sBody) << "nothing else on the wire";
}

const STVerbCase gtabVerbs[] = {
    {"Get", METHODE_HTTP_GET, "GET", "", L"application/x-www-form-urlencoded", false},
    {"Post", METHODE_HTTP_POST, "POST", "code=a%2Fb&grant_type=authorization_code",
     L"application/x-www-form-urlencoded", true},
    {"PostEmpty", METHODE_HTTP_POST, "POST", "", L"application/x-www-form-urlencoded", true},
    {"Put", METHODE_HTTP_PUT, "PUT", "{\"summary\":\"r\xC3\xA9union\"}", L"application/json", true},
    {"Patch", METHODE_HTTP_PATCH, "PATCH", "{\"a\":1}", L"application/json", true},
    {"PutBinary", METHODE_HTTP_PUT, "PUT", std::string("\x89PNG\0\r\n\x1a", 8), L"image/png", true},
    {"Delete", METHODE_HTTP_DELETE, "DELETE", "", L"application/x-www-form-urlencoded", false},
};
INSTANTIATE_TEST_SUITE_P(HTTPClient, VerbOnWire, testing::ValuesIn(gtabVerbs),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(HTTPClient, ContentTypeOfTheHeaderSetWinsOverTheRecord) {
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    auto cl = NewClient();
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_POST, clServer.sUrl(), "x", L"text/plain",
                        {{L"Content-Type", L"application/atom+xml"}}));
    auto r = clServer.tabRequests().at(0);
    EXPECT_EQ(r.sHeader("Content-Type"), "application/atom+xml");
    EXPECT_EQ(r.sHead.find("text/plain"), std::string::npos) << "one Content-Type only";
}

// ---- what comes back

TEST(HTTPClient, GivesHeadBodyAndStatus) {
    const std::string sBody("\x00\x01\xFFz", 4);
    CRawServer clServer([&](const STRawRequest&) {
        return STRawReply{CRawServer::s_sAnswer(201, "Created", sBody, {"X-Reply: yes"})};
    });
    auto cl = NewClient();
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));

    CAny clHead;
    ASSERT_TRUE(cl->vbDonneResultat(clHead, RESULTAT_HTTP_ENTETE));
    ASSERT_EQ(clHead.nGetType(), 16);
    CXYString<wchar_t> sHead;
    ASSERT_TRUE(KV_bSucces(clHead.__nFillString(sHead)));
    std::wstring s(sHead.sv());
    EXPECT_EQ(s.rfind(L"HTTP/1.1 201 Created\r\n", 0), 0u) << KVUtf8::VersUtf8(s);
    EXPECT_NE(s.find(L"\r\nX-Reply: yes\r\n"), std::wstring::npos);
    EXPECT_NE(s.find(L"\r\nContent-Length: 4\r\n"), std::wstring::npos);
    EXPECT_EQ(s.find(L"\r\n\r\n"), std::wstring::npos) << "no blank line kept";
    EXPECT_EQ(s.substr(s.size() - 2), L"\r\n");

    EXPECT_EQ(BodyOf(*cl), sBody);
    EXPECT_EQ(StatusOf(*cl), 201);

    CAny clOther;
    EXPECT_FALSE(cl->vbDonneResultat(clOther, 4));
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_HTTP_NO_ANSWER);
}

TEST(HTTPClient, AnErrorStatusIsAnAnswer) {
    CRawServer clServer([](const STRawRequest&) {
        return STRawReply{CRawServer::s_sAnswer(401, "Unauthorized", "{\"error\":\"x\"}")};
    });
    auto cl = NewClient();
    EXPECT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    EXPECT_TRUE(cl->vpiGetErreur()->bEstPropre());
    EXPECT_EQ(StatusOf(*cl), 401);
    EXPECT_EQ(BodyOf(*cl), "{\"error\":\"x\"}");
}

std::string Gzip(const std::string& s) {
    z_stream z{};
    deflateInit2(&z, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string sOut(deflateBound(&z, s.size()) + 32, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(s.data()));
    z.avail_in = static_cast<uInt>(s.size());
    z.next_out = reinterpret_cast<Bytef*>(sOut.data());
    z.avail_out = static_cast<uInt>(sOut.size());
    deflate(&z, Z_FINISH);
    sOut.resize(z.total_out);
    deflateEnd(&z);
    return sOut;
}

TEST(HTTPClient, OffersCompressionAndKeepsTheDecompressedBody) {
    std::string sText;
    for (int i = 0; i < 2000; ++i)
        sText += "{\"id\":" + std::to_string(i) + ",\"summary\":\"meeting\"},";
    const std::string sCompressed = Gzip(sText);
    ASSERT_LT(sCompressed.size(), sText.size() / 4);
    CRawServer clServer([&](const STRawRequest& r) {
        if (r.sHeader("Accept-Encoding").find("gzip") == std::string::npos)
            return STRawReply{CRawServer::s_sAnswer(400, "No gzip", "")};
        return STRawReply{
            CRawServer::s_sAnswer(200, "OK", sCompressed, {"Content-Encoding: gzip"})};
    });
    auto cl = NewClient();
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    EXPECT_EQ(StatusOf(*cl), 200);
    EXPECT_EQ(BodyOf(*cl), sText);
}

TEST(HTTPClient, KeepsTheConnectionAlive) {
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    auto cl = NewClient();
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(Execute(*cl, i == 1 ? METHODE_HTTP_POST : METHODE_HTTP_GET,
                            clServer.sUrl("/" + std::to_string(i)), "b", L"text/plain"));
    EXPECT_EQ(clServer.tabRequests().size(), 3u);
    EXPECT_EQ(clServer.nConnections(), 1);
}

TEST(HTTPClient, ReconnectsWhenTheServerClosedTheConnection) {
    CRawServer clServer([](const STRawRequest&) {
        STRawReply st = Ok();
        st.bClose = true;
        return st;
    });
    auto cl = NewClient();
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl())) << ErrorText(cl->vpiGetErreur());
    EXPECT_EQ(clServer.nConnections(), 2);
}

// ---- routing

TEST(HTTPClient, RoutesAnOriginToPlainHTTPKeepingHostPathAndHeaders) {
    CRawServer clServer([](const STRawRequest&) { return Ok("routed"); });
    STHostOptions st = TestOptions();
    st.sRoute = "https://www.example.test=127.0.0.1:" + std::to_string(clServer.nPort()) +
                ", api.example.test:8443=127.0.0.1:" + std::to_string(clServer.nPort());
    auto cl = NewClient(st);
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, "https://www.example.test/x/y?z=1&w=%2F", "", L"",
                        {{L"Authorization", L"Bearer k"}}))
        << ErrorText(cl->vpiGetErreur());
    ASSERT_TRUE(
        Execute(*cl, METHODE_HTTP_POST, "https://api.example.test:8443/p", "b", L"text/plain"))
        << ErrorText(cl->vpiGetErreur());
    EXPECT_EQ(BodyOf(*cl), "routed");
    auto tab = clServer.tabRequests();
    ASSERT_EQ(tab.size(), 2u);
    EXPECT_EQ(tab[0].sHead.substr(0, tab[0].sHead.find("\r\n")), "GET /x/y?z=1&w=%2F HTTP/1.1");
    EXPECT_EQ(tab[0].sHeader("Host"), "www.example.test");
    EXPECT_EQ(tab[0].sHeader("Authorization"), "Bearer k");
    EXPECT_EQ(tab[1].sHeader("Host"), "api.example.test:8443");
    EXPECT_EQ(tab[1].sBody, "b");

    // An origin that is not in the setting goes where its URL says.
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, "http://www.example.test/x"));
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_HTTP_RESOLVE);
}

// ---- redirects

TEST(HTTPClient, AnyOtherAnswerStartsTheRedirectCountAgain) {
    CRawServer clServer([](const STRawRequest& r) {
        if (r.sTarget == "/done")
            return Ok("done");
        if (r.sTarget == "/cached")
            return STRawReply{"HTTP/1.1 304 Not Modified\r\n\r\n"};
        return STRawReply{CRawServer::s_sAnswer(307, "Temporary Redirect", "", {"Location: /a"})};
    });
    auto cl = NewClient();
    for (int nRound = 0; nRound < 3; ++nRound) {
        for (int i = 0; i < CHTTPClient::knMaxRedirects; ++i)
            ASSERT_TRUE(Execute(*cl, METHODE_HTTP_POST, clServer.sUrl("/a"), "x", L"text/plain"))
                << "round " << nRound << " redirect " << i;
        ASSERT_TRUE(
            Execute(*cl, METHODE_HTTP_GET, clServer.sUrl(nRound == 1 ? "/done" : "/cached")));
        // 304 is no redirect: like a 200, it ends the chain.
        EXPECT_EQ(StatusOf(*cl), nRound == 1 ? 200 : 304);
    }
}

// ---- failures

int ClosedPort() {
    int nFd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in st{};
    st.sin_family = AF_INET;
    st.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t n = sizeof st;
    ::bind(nFd, reinterpret_cast<sockaddr*>(&st), sizeof st);
    ::getsockname(nFd, reinterpret_cast<sockaddr*>(&st), &n);
    ::close(nFd); // nobody listens there now
    return ntohs(st.sin_port);
}

struct STFailureCase {
    const char* pszName;
    eHOSTERROR eCode;
    const char* pszInMessage; // a piece of the message that names the cause
};

void ExpectFailure(CHTTPClient& cl, const STFailureCase& c) {
    CXError* pcl = cl.vpiGetErreur();
    EXPECT_EQ(pcl->nGetUserErrorCode(), static_cast<unsigned>(c.eCode)) << ErrorText(pcl);
    EXPECT_EQ(pcl->nGetErrorLevel(), ELEVEL_ERREUR);
    EXPECT_NE(ErrorText(pcl).find(c.pszInMessage), std::string::npos) << ErrorText(pcl);
    CAny clValeur;
    EXPECT_FALSE(cl.vbDonneResultat(clValeur, RESULTAT_HTTP_CODE)) << "no answer is held";
}

TEST(HTTPClientFailure, ConnectionRefused) {
    auto cl = NewClient();
    int nPort = ClosedPort();
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, "http://127.0.0.1:" + std::to_string(nPort) + "/"));
    EXPECT_NE(ErrorText(cl->vpiGetErreur()).find("127.0.0.1:" + std::to_string(nPort)),
              std::string::npos)
        << ErrorText(cl->vpiGetErreur());
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_CONNECT, "Connection refused"});
}

TEST(HTTPClientFailure, UnknownHost) {
    auto cl = NewClient();
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, "https://no-such-host.invalid/x"));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_RESOLVE, "no-such-host.invalid"});
}

TEST(HTTPClientFailure, ServerThatNeverAnswers) {
    CRawServer clServer([](const STRawRequest&) { return STRawReply{"", false, true}; });
    STHostOptions st = TestOptions();
    st.nTimeoutMs = 300;
    auto cl = NewClient(st);
    auto tStart = std::chrono::steady_clock::now();
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    auto nMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now() - tStart)
                   .count();
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_TIMEOUT, "did not answer within 0.3 s"});
    EXPECT_GE(nMs, 250);
    EXPECT_LT(nMs, 5000);
}

// On a kept-alive connection nothing is connected, yet the timeout is the exchange's.
TEST(HTTPClientFailure, SilenceOnAReusedConnectionIsTheExchangeTimeout) {
    CRawServer clServer([](const STRawRequest& r) {
        return r.sTarget == "/first" ? STRawReply{CRawServer::s_sAnswer(200, "OK", "x")}
                                     : STRawReply{"", false, true};
    });
    STHostOptions st = TestOptions();
    st.nTimeoutMs = 300;
    auto cl = NewClient(st);
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl("/first")));
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl("/second")));
    EXPECT_EQ(clServer.nConnections(), 1);
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_TIMEOUT, "did not answer within 0.3 s"});
}

TEST(HTTPClientFailure, TruncatedBody) {
    CRawServer clServer([](const STRawRequest&) {
        return STRawReply{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123456789", true};
    });
    auto cl = NewClient();
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_CONNECTION_LOST, "after 10 bytes of the 100 announced"});
}

TEST(HTTPClientFailure, TruncatedChunkedBody) {
    CRawServer clServer([](const STRawRequest&) {
        return STRawReply{
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n40\r\nabc", true};
    });
    auto cl = NewClient();
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_CONNECTION_LOST, "127.0.0.1"});
}

TEST(HTTPClientFailure, ConnectionClosedWithoutAnswer) {
    CRawServer clServer([](const STRawRequest&) { return STRawReply{"", true}; });
    auto cl = NewClient();
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_CONNECTION_LOST, "without answering"});
}

TEST(HTTPClientFailure, BodyOverTheLimit) {
    const std::string sLarge(5000, 'x');
    CRawServer clServer([&](const STRawRequest& r) {
        if (r.sTarget == "/announced")
            return STRawReply{CRawServer::s_sAnswer(200, "OK", sLarge)};
        // No length announced: the limit is seen while the bytes arrive.
        std::string s = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        for (int i = 0; i < 5; ++i)
            s += "3e8\r\n" + std::string(1000, 'y') + "\r\n";
        return STRawReply{s + "0\r\n\r\n"};
    });
    STHostOptions st = TestOptions();
    st.nMaxBody = 1000;
    auto cl = NewClient(st);
    for (const char* pszPath : {"/announced", "/chunked"}) {
        ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl(pszPath))) << pszPath;
        ExpectFailure(*cl, {"", HOSTERROR_HTTP_TOO_LARGE, "limit of 1000 bytes"});
    }
    // At the limit exactly, it passes.
    st.nMaxBody = 5000;
    auto cl2 = NewClient(st);
    EXPECT_TRUE(Execute(*cl2, METHODE_HTTP_GET, clServer.sUrl("/announced")));
    EXPECT_EQ(BodyOf(*cl2), sLarge);
}

TEST(HTTPClientFailure, ServerThatDoesNotSpeakTLS) {
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    clServer.SetGreeting("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
    auto cl = NewClient();
    ASSERT_FALSE(Execute(*cl, METHODE_HTTP_GET,
                         "https://127.0.0.1:" + std::to_string(clServer.nPort()) + "/"));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_TLS, "secure connection to 127.0.0.1"});
}

// Requests that must not leave at all.
struct STRefusedCase {
    const char* pszName;
    int nMethod;
    std::string sUrl; // "@" stands for the test server's address
    HeaderList tabHeaders;
    const char* pszInMessage;
};

class RefusedRequest : public testing::TestWithParam<STRefusedCase> {};

TEST_P(RefusedRequest, FailsClearlyAndSendsNothing) {
    const STRefusedCase& c = GetParam();
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    auto cl = NewClient();
    std::string sUrl = c.sUrl.rfind('@', 0) == 0 ? clServer.sUrl(c.sUrl.substr(1)) : c.sUrl;
    ASSERT_FALSE(Execute(*cl, c.nMethod, sUrl, "", L"", c.tabHeaders));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_BAD_REQUEST, c.pszInMessage});
    EXPECT_TRUE(clServer.tabRequests().empty());
}

const STRefusedCase gtabRefused[] = {
    {"VerbZero", 0, "@/", {}, "HTTP method 0"},
    {"VerbFive", 5, "@/", {}, "HTTP method 5"},
    {"VerbSeven", 7, "@/", {}, "HTTP method 7"},
    {"EmptyUrl", METHODE_HTTP_GET, "", {}, "is not an http or https URL"},
    {"NotAUrl", METHODE_HTTP_GET, "not a url", {}, "is not an http or https URL"},
    {"OtherScheme", METHODE_HTTP_GET, "ftp://127.0.0.1/x", {}, "is not an http or https URL"},
    {"HeaderInjection", METHODE_HTTP_GET, "@/", {{L"X-A", L"1\r\nInjected: yes"}}, "X-A"},
    {"HeaderNameWithColon", METHODE_HTTP_GET, "@/", {{L"X:B", L"1"}}, "HTTP token"},
    {"HeaderNameEmpty", METHODE_HTTP_GET, "@/", {{L"", L"1"}}, "HTTP token"},
};
INSTANTIATE_TEST_SUITE_P(HTTPClient, RefusedRequest, testing::ValuesIn(gtabRefused),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(HTTPClientFailure, RecordOfAnotherVersion) {
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    auto cl = NewClient();
    CParametresHTTPRequete clRequest;
    FillRequest(*cl, clRequest, METHODE_HTTP_GET, clServer.sUrl());
    clRequest.m_nVersion = 3;
    EXPECT_FALSE(cl->vbExecute(clRequest, 0));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_BAD_REQUEST, "version 3"});
}

TEST(HTTPClientFailure, UnreadableRouteSettingStopsEveryExchange) {
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    STHostOptions st = TestOptions();
    st.sRoute = "https://www.example.test->127.0.0.1:1";
    auto cl = NewClient(st);
    EXPECT_FALSE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    ExpectFailure(*cl, {"", HOSTERROR_HTTP_ROUTE, "KVGGL_ROUTE"});
    EXPECT_TRUE(clServer.tabRequests().empty());
}

TEST(HTTPClientFailure, ASuccessCleansTheError) {
    CRawServer clServer([](const STRawRequest&) { return Ok(); });
    auto cl = NewClient();
    ASSERT_FALSE(Execute(*cl, 5, clServer.sUrl()));
    ASSERT_FALSE(cl->vpiGetErreur()->bEstPropre());
    ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl()));
    EXPECT_TRUE(cl->vpiGetErreur()->bEstPropre());
}

// ---- the progress line

TEST(HTTPClient, ShowsProgressForTransfersOverOneMegabyte) {
    const std::string sLarge(3 << 20, 'g');
    CRawServer clServer([&](const STRawRequest& r) {
        return Ok(r.sTarget == "/big" ? sLarge : std::string(100000, 's'));
    });
    for (eHOSTPROGRESS e : {HOSTPROGRESS_ALWAYS, HOSTPROGRESS_NEVER}) {
        STHostOptions st = TestOptions();
        st.eProgress = e;
        auto cl = NewClient(st);
        testing::internal::CaptureStderr();
        ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl("/big")));
        ASSERT_TRUE(Execute(*cl, METHODE_HTTP_GET, clServer.sUrl("/small")));
        std::string sOut = testing::internal::GetCapturedStderr();
        EXPECT_EQ(BodyOf(*cl).size(), 100000u);
        if (e == HOSTPROGRESS_NEVER) {
            EXPECT_EQ(sOut, "");
            continue;
        }
        std::string sExpected = "kvggl: GET 127.0.0.1:" + std::to_string(clServer.nPort()) +
                                ": 3.1 MB of 3.1 MB (100%)";
        EXPECT_NE(sOut.find(sExpected), std::string::npos) << sOut;
        EXPECT_EQ(sOut.back(), '\n');
        EXPECT_EQ(std::count(sOut.begin(), sOut.end(), '\n'), 1) << "one line, the big one";
    }
}

TEST(HTTPClient, HeaderSetKeepsOrderAndDuplicates) {
    auto cl = NewClient();
    CRef<IEntetesHTTP> clHeaders = CRef<IEntetesHTTP>::Adopt(cl->vpiCreeEntetes());
    clHeaders->vAjoute(L"A", L"1");
    clHeaders->vAjoute(L"B", nullptr);
    clHeaders->vAjoute(nullptr, L"ignored");
    clHeaders->vAjoute(L"A", L"2");
    const wchar_t* pszFirst = clHeaders->vpszGetNom(0);
    for (int i = 0; i < 100; ++i)
        clHeaders->vAjoute(L"Filler", L"x");
    EXPECT_EQ(clHeaders->vnGetNbEntete(), 103);
    EXPECT_EQ(pszFirst, clHeaders->vpszGetNom(0)) << "texts stay where they are";
    EXPECT_EQ(std::wstring(clHeaders->vpszGetValeur(1)), L"");
    EXPECT_EQ(std::wstring(clHeaders->vpszGetNom(2)), L"A");
    EXPECT_EQ(std::wstring(clHeaders->vpszGetValeur(2)), L"2");
    EXPECT_EQ(std::wstring(clHeaders->vpszGetNom(103)), L"");
    EXPECT_EQ(std::wstring(clHeaders->vpszGetValeur(-1)), L"");
}

} // namespace
