// The SOAP operations of the HTTP service on the wire: the envelope posted as it is with its
// action, the reply kept, the two parts of a fault, headers added to the envelope, and the
// failures that are not faults.
#include "HostErrors.h"
#include "ManipAUB.h"
#include "RawServer.h"
#include "ServicesTestSupport.h"

#include <gtest/gtest.h>

namespace {

const std::string gsEnvelope =
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\" "
    "xmlns:urn=\"urn:example\"><SOAP-ENV:Header></SOAP-ENV:Header><SOAP-ENV:Body><urn:login >"
    "<urn:username>dupont</urn:username><urn:password>s\xC3\xA9same</urn:password></urn:login>"
    "</SOAP-ENV:Body></SOAP-ENV:Envelope>";

const std::string gsReply =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><soapenv:Envelope "
    "xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" xmlns=\"urn:example\">"
    "<soapenv:Body><loginResponse><result><sessionId>S1</sessionId></result></loginResponse>"
    "</soapenv:Body></soapenv:Envelope>";

const std::string gsFault11 =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><soapenv:Envelope "
    "xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" xmlns:sf=\"urn:fault.example\">"
    "<soapenv:Body><soapenv:Fault><faultcode>sf:INVALID_LOGIN</faultcode><faultstring>"
    "INVALID_LOGIN: Invalid username &amp; password</faultstring><detail/></soapenv:Fault>"
    "</soapenv:Body></soapenv:Envelope>";

const std::string gsFault12 =
    "<env:Envelope xmlns:env=\"http://www.w3.org/2003/05/soap-envelope\"><env:Body><env:Fault>"
    "<env:Code><env:Value>env:Sender</env:Value></env:Code><env:Reason>"
    "<env:Text xml:lang=\"en\"> Session expired </env:Text></env:Reason></env:Fault></env:Body>"
    "</env:Envelope>";

struct STEnvelope {
    CAny clValue;
    STManipAUB st{};
    explicit STEnvelope(const std::string& s) {
        clValue.SetStringA(s.c_str(), static_cast<int>(s.size()));
        clValue.nGetManipAUB(&st);
    }
    explicit STEnvelope(const std::wstring& s) {
        clValue.__nSetString(s.c_str(), static_cast<int>(s.size()));
        clValue.nGetManipAUB(&st);
    }
};

std::string Reply(CHTTPClient& cl, int nOption, uint16_t& nType) {
    CAny clValue;
    if (!cl.vbSoapDonneResultat(clValue, SOAP_RESULTAT_REPONSE, nOption))
        return "<none>";
    nType = clValue.nGetType();
    if (nType == 28) {
        CKLBIN clBin;
        clValue.nFillBinary(clBin);
        return std::string(clBin.sv());
    }
    CXYString<char> s;
    clValue.__nFillString(s);
    return std::string(s.sv());
}

std::string FaultPart(CHTTPClient& cl, eSOAPErreur e) {
    CXYString<wchar_t> s;
    if (!cl.vbSoapErreur(e, s))
        return "<none>";
    return KVUtf8::VersUtf8(s.sv());
}

TEST(Soap, PostsTheEnvelopeAsItIsWithItsAction) {
    CRawServer clServer([](const STRawRequest&) {
        return STRawReply{CRawServer::s_sAnswer(200, "OK", gsReply, {"Content-Type: text/xml"})};
    });
    auto cl = NewClient();
    STEnvelope e(gsEnvelope);
    ASSERT_TRUE(cl->vbSoapExecute(KVUtf8::VersWide(clServer.sUrl("/services/Soap/u/15.0")).c_str(),
                                  e.st, L""))
        << ErrorText(cl->vpiGetErreur());
    EXPECT_TRUE(cl->vpiGetErreur()->bEstPropre());

    auto tab = clServer.tabRequests();
    ASSERT_EQ(tab.size(), 1u);
    EXPECT_EQ(tab[0].sHead.substr(0, tab[0].sHead.find("\r\n")),
              "POST /services/Soap/u/15.0 HTTP/1.1");
    EXPECT_EQ(tab[0].sHeader("Content-Type"), "text/xml; charset=utf-8");
    EXPECT_EQ(tab[0].sHeader("SOAPAction"), "\"\"");
    EXPECT_EQ(tab[0].sHeader("Content-Length"), std::to_string(gsEnvelope.size()));
    EXPECT_EQ(tab[0].sBody, gsEnvelope);

    uint16_t nType = 0;
    EXPECT_EQ(Reply(*cl, 1, nType), gsReply);
    EXPECT_EQ(nType, 19);
    EXPECT_EQ(Reply(*cl, 0, nType), gsReply);
    EXPECT_EQ(nType, 28);
    EXPECT_EQ(FaultPart(*cl, SOAP_ERREUR_CODE), "<none>");
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_SOAP_NO_FAULT);
}

TEST(Soap, QuotesTheActionOnce) {
    CRawServer clServer(
        [](const STRawRequest&) { return STRawReply{CRawServer::s_sAnswer(200, "OK", gsReply)}; });
    auto cl = NewClient();
    STEnvelope e(gsEnvelope);
    std::wstring sUrl = KVUtf8::VersWide(clServer.sUrl("/soap"));
    ASSERT_TRUE(cl->vbSoapExecute(sUrl.c_str(), e.st, L"urn:login"));
    ASSERT_TRUE(cl->vbSoapExecute(sUrl.c_str(), e.st, L"\"urn:query\""));
    ASSERT_TRUE(cl->vbSoapExecute(sUrl.c_str(), e.st, nullptr));
    auto tab = clServer.tabRequests();
    ASSERT_EQ(tab.size(), 3u);
    EXPECT_EQ(tab[0].sHeader("SOAPAction"), "\"urn:login\"");
    EXPECT_EQ(tab[1].sHeader("SOAPAction"), "\"urn:query\"");
    EXPECT_EQ(tab[2].sHeader("SOAPAction"), "\"\"");
}

TEST(Soap, AWideEnvelopeGoesAsUTF8) {
    CRawServer clServer(
        [](const STRawRequest&) { return STRawReply{CRawServer::s_sAnswer(200, "OK", gsReply)}; });
    auto cl = NewClient();
    STEnvelope e(KVUtf8::VersWide(gsEnvelope));
    ASSERT_EQ(e.st.nType, 16);
    ASSERT_TRUE(cl->vbSoapExecute(KVUtf8::VersWide(clServer.sUrl()).c_str(), e.st, L""));
    EXPECT_EQ(clServer.tabRequests().at(0).sBody, gsEnvelope);
}

struct STFaultCase {
    const char* pszName;
    int nStatus;
    std::string sReply;
    const char* pszCode;
    const char* pszString;
};

class SoapFault : public testing::TestWithParam<STFaultCase> {};

TEST_P(SoapFault, IsReadInTwoPartsWithTheErrorLeftClean) {
    const STFaultCase& c = GetParam();
    CRawServer clServer([&](const STRawRequest&) {
        return STRawReply{CRawServer::s_sAnswer(c.nStatus, "Whatever", c.sReply)};
    });
    auto cl = NewClient();
    STEnvelope e(gsEnvelope);
    EXPECT_FALSE(cl->vbSoapExecute(KVUtf8::VersWide(clServer.sUrl()).c_str(), e.st, L""));
    EXPECT_TRUE(cl->vpiGetErreur()->bEstPropre()) << ErrorText(cl->vpiGetErreur());
    EXPECT_EQ(FaultPart(*cl, SOAP_ERREUR_CODE), c.pszCode);
    EXPECT_EQ(FaultPart(*cl, SOAP_ERREUR_MESSAGE), c.pszString);
    EXPECT_EQ(FaultPart(*cl, static_cast<eSOAPErreur>(3)), "<none>");
    uint16_t nType = 0;
    EXPECT_EQ(Reply(*cl, 1, nType), c.sReply) << "the reply of a fault is kept for the message";
}

const STFaultCase gtabFaults[] = {
    {"Soap11", 500, gsFault11, "sf:INVALID_LOGIN", "INVALID_LOGIN: Invalid username & password"},
    {"Soap11WithStatus200", 200, gsFault11, "sf:INVALID_LOGIN",
     "INVALID_LOGIN: Invalid username & password"},
    {"Soap12", 400, gsFault12, "env:Sender", "Session expired"},
};
INSTANTIATE_TEST_SUITE_P(Soap, SoapFault, testing::ValuesIn(gtabFaults),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(Soap, AFailureStatusWithoutFaultIsAnError) {
    CRawServer clServer([](const STRawRequest&) {
        return STRawReply{
            CRawServer::s_sAnswer(503, "Service Unavailable", "down for maintenance")};
    });
    auto cl = NewClient();
    STEnvelope e(gsEnvelope);
    EXPECT_FALSE(cl->vbSoapExecute(KVUtf8::VersWide(clServer.sUrl()).c_str(), e.st, L""));
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_SOAP_NOT_SOAP);
    EXPECT_NE(ErrorText(cl->vpiGetErreur()).find("503 Service Unavailable"), std::string::npos)
        << ErrorText(cl->vpiGetErreur());
    EXPECT_EQ(FaultPart(*cl, SOAP_ERREUR_CODE), "<none>");
}

TEST(Soap, ATransportFailureKeepsNoReply) {
    CRawServer clServer([](const STRawRequest&) { return STRawReply{"", true}; });
    auto cl = NewClient();
    STEnvelope e(gsEnvelope);
    EXPECT_FALSE(cl->vbSoapExecute(KVUtf8::VersWide(clServer.sUrl()).c_str(), e.st, L""));
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_HTTP_CONNECTION_LOST);
    uint16_t nType = 0;
    EXPECT_EQ(Reply(*cl, 1, nType), "<none>");
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_HTTP_NO_ANSWER);
    EXPECT_FALSE(cl->vbSoapExecute(L"", e.st, L""));
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_HTTP_BAD_REQUEST);
}

TEST(Soap, AddedHeadersGoIntoEveryLaterEnvelope) {
    CRawServer clServer(
        [](const STRawRequest&) { return STRawReply{CRawServer::s_sAnswer(200, "OK", gsReply)}; });
    auto cl = NewClient();
    CAny clSession;
    clSession.SetStringA("abc<&>");
    ASSERT_TRUE(cl->vbSoapAjouteEntete(L"sessionId", clSession, L"urn:example", 1));
    CAny clNumber;
    clNumber.SetInt(42);
    ASSERT_TRUE(cl->vbSoapAjouteEntete(L"q:Batch", clNumber, L"urn:q", 0));
    CAny clNone;
    EXPECT_FALSE(cl->vbSoapAjouteEntete(L"bad name", clNone, nullptr, 0));
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_HTTP_BAD_REQUEST);

    const std::string sNoHeader =
        "<S:Envelope xmlns:S=\"http://schemas.xmlsoap.org/soap/envelope/\"><S:Body><x/></S:Body>"
        "</S:Envelope>";
    std::wstring sUrl = KVUtf8::VersWide(clServer.sUrl());
    STEnvelope e1(gsEnvelope);
    STEnvelope e2(sNoHeader);
    ASSERT_TRUE(cl->vbSoapExecute(sUrl.c_str(), e1.st, L"")) << ErrorText(cl->vpiGetErreur());
    ASSERT_TRUE(cl->vbSoapExecute(sUrl.c_str(), e2.st, L"")) << ErrorText(cl->vpiGetErreur());
    auto tab = clServer.tabRequests();
    ASSERT_EQ(tab.size(), 2u);
    const std::string sHeaders =
        "<sessionId xmlns=\"urn:example\" SOAP-ENV:mustUnderstand=\"1\">abc&lt;&amp;&gt;"
        "</sessionId><q:Batch xmlns:q=\"urn:q\">42</q:Batch>";
    EXPECT_NE(
        tab[0].sBody.find("<SOAP-ENV:Header>" + sHeaders + "</SOAP-ENV:Header><SOAP-ENV:Body>"),
        std::string::npos)
        << tab[0].sBody;
    EXPECT_NE(tab[0].sBody.find("<urn:password>s\xC3\xA9same</urn:password>"), std::string::npos);
    EXPECT_EQ(
        tab[1].sBody,
        "<S:Envelope xmlns:S=\"http://schemas.xmlsoap.org/soap/envelope/\"><S:Header>"
        "<sessionId xmlns=\"urn:example\" S:mustUnderstand=\"1\">abc&lt;&amp;&gt;</sessionId>"
        "<q:Batch xmlns:q=\"urn:q\">42</q:Batch></S:Header><S:Body><x/></S:Body></S:Envelope>");

    // An envelope that cannot take them is refused before anything leaves.
    STEnvelope e3(std::string("<S:Envelope><S:Body>"));
    EXPECT_FALSE(cl->vbSoapExecute(sUrl.c_str(), e3.st, L""));
    EXPECT_EQ(cl->vpiGetErreur()->nGetUserErrorCode(), HOSTERROR_HTTP_BAD_REQUEST);
    EXPECT_EQ(clServer.tabRequests().size(), 2u);
}

} // namespace
