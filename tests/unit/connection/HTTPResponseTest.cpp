// The answer of one exchange: the status read from the head, the labels users see, one header
// or one body line picked out, and the body in each of its forms.
#include "connection/HTTPResponse.h"

#include "HoteEssai.h"

#include "Any.h"
#include "KLBIN.h"

#include <gtest/gtest.h>

#include <string>

namespace {


CHTTPResponse Reponse(const wchar_t* pszEntete, const std::string& sCorps = {}) {
    CHTTPResponse cl;
    CAny clEntete, clCorps;
    if (pszEntete)
        clEntete.__nSetString(pszEntete);
    clCorps.SetBinary(sCorps.data(), sCorps.size());
    cl.SetEntete(clEntete);
    cl.SetMessage(clCorps);
    return cl;
}

struct STCasStatut {
    const wchar_t* pszEntete;
    int nCode;
};

const STCasStatut gtabStatuts[] = {
    {L"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", 404},
    {L"HTTP/1.1 200 OK\r\n", 200},
    {L"HTTP/1.0 302\r\nLocation: x\r\n", 302}, // no reason phrase: the number ends at "\r"
    {L"HTTP/2 418 I'm a teapot", 418},
    {L"HTTP/1.1 abc OK", 0},  // a second word that is not a number
    {L"HTTP/1.1  200 OK", 0}, // two blanks: the second word is empty
    {L"HTTP/1.1", -1},        // no second word
    {L"", -1},
    {nullptr, -1}, // a head of no type
};

void PrintTo(const STCasStatut& cas, std::ostream* os) { *os << Nom(cas.pszEntete); }

class Statut : public testing::TestWithParam<STCasStatut> {};
TEST_P(Statut, LuDansLaLigneDeStatut) {
    EXPECT_EQ(Reponse(GetParam().pszEntete).eGetCodeRetour(), GetParam().nCode);
}
INSTANTIATE_TEST_SUITE_P(HTTPReponse, Statut, testing::ValuesIn(gtabStatuts));

struct STCasLibelle {
    int nCode;
    const wchar_t* pszLibelle;
};

const STCasLibelle gtabLibelles[] = {
    {-1, L"Code HTTP Invalide"},
    {100, L"HTTPContinue"},
    {101, L"HTTPSwitchingProtocols"},
    {200, L"HTTPOK"},
    {201, L"HTTPCreated"},
    {202, L"HTTPAccepted"},
    {203, L"HTTPNonAuthoritative"},
    {204, L"HTTPNoContent"},
    {205, L"HTTPResetContent"},
    {206, L"HTTPPartielContent"},
    {300, L"HTTPMultipleChoices"},
    {301, L"HTTPMovedPermanently"},
    {302, L"HTTPMovedTemporarily"},
    {303, L"HTTPSeeOther"},
    {304, L"HTTPNotModified"},
    {305, L"HTTPUseProxy"},
    {307, L"HTTPTemporaryRedirect"},
    {308, L"HTTPResumeIncomplete"},
    {400, L"HTTPBadRequest"},
    {401, L"HTTPUnauthorized"},
    {402, L"HTTPPaymentRequired"},
    {403, L"HTTPForbidden"},
    {404, L"HTTPNotFound"},
    {405, L"HTTPMethodNotAllowed"},
    {406, L"HTTPNotAcceptable"},
    {407, L"HTTPProxyAuthRequired"},
    {408, L"HTTPRequestTimeOut"},
    {409, L"HTTPConflict"},
    {410, L"HTTPGone"},
    {411, L"HTTPLengthRequired"},
    {412, L"HTTPPreconditionFailed"},
    {413, L"HTTPRequestEntityTooLarge"},
    {414, L"HTTPRequestURITooLarge"},
    {415, L"HTTPUnsupportedMediaType"},
    {416, L"HTTPRequestedRangeNotSatisfiable"},
    {417, L"HTTPExpactationFailed"},
    {500, L"HTTPInternalServerError"},
    {501, L"HTTPNotImplemented"},
    {502, L"HTTPBadGateway"},
    {503, L"HTTPServiceUnavailable"},
    {504, L"HTTPGatewayTimeOut"},
    {505, L"HTTPVersionNotSupported"},
    // numbers without a label
    {0, L""},
    {306, L""},
    {418, L""},
    {429, L""},
    {506, L""},
    {-2, L""},
};

void PrintTo(const STCasLibelle& cas, std::ostream* os) { *os << "code" << cas.nCode; }

class Libelle : public testing::TestWithParam<STCasLibelle> {};
TEST_P(Libelle, TelQuIlAToujoursEte) {
    EXPECT_STREQ(CHTTPResponse::s_pszGetLibelle(static_cast<eHTTPCODE>(GetParam().nCode)),
                 GetParam().pszLibelle);
}
INSTANTIATE_TEST_SUITE_P(HTTPReponse, Libelle, testing::ValuesIn(gtabLibelles));

TEST(HTTPReponse, UneTeteVideEstUnCodeInvalide) {
    const CHTTPResponse cl;
    EXPECT_STREQ(CHTTPResponse::s_pszGetLibelle(cl.eGetCodeRetour()), L"Code HTTP Invalide");
}

struct STCasEntete {
    const wchar_t* pszEntete;
    const wchar_t* pszNom;
    bool bTrouve;
    const wchar_t* pszValeur;
};

const STCasEntete gtabEntetes[] = {
    {L"HTTP/1.1 302 Found\r\nLocation: https://h/a?b=c\r\nX: y\r\n\r\n", L"Location", true,
     L"https://h/a?b=c"},
    {L"HTTP/1.1 302 Found\r\nX: y\r\nLocation: /fin", L"Location", true, L"/fin"}, // last line
    {L"HTTP/1.1 302 Found\r\nLocation: \r\n", L"Location", true, L""},
    // exact spelling, one blank after the colon
    {L"HTTP/1.1 302 Found\r\nlocation: /a\r\n", L"Location", false, L""},
    {L"HTTP/1.1 302 Found\r\nLocation:/a\r\n", L"Location", false, L""},
    {L"HTTP/1.1 200 OK\r\nETag: \"v1\"\r\n", L"ETag", true, L"\"v1\""},
    {L"HTTP/1.1 200 OK\r\n", L"Location", false, L""},
    {L"", L"Location", false, L""},
};

void PrintTo(const STCasEntete& cas, std::ostream* os) {
    *os << Nom(cas.pszNom) << "_dans_" << Nom(cas.pszEntete);
}

class Entete : public testing::TestWithParam<STCasEntete> {};
TEST_P(Entete, UneLigneDeLaTete) {
    const STCasEntete& cas = GetParam();
    CXYString<wchar_t> sValeur(L"avant");
    EXPECT_EQ(Reponse(cas.pszEntete).bExtraitEntete(cas.pszNom, sValeur), cas.bTrouve);
    if (cas.bTrouve) {
        EXPECT_EQ(sValeur, cas.pszValeur);
    }
}
INSTANTIATE_TEST_SUITE_P(HTTPReponse, Entete, testing::ValuesIn(gtabEntetes));

TEST(HTTPReponse, UneLigneDuCorps) {
    const CHTTPResponse cl = Reponse(L"HTTP/1.1 200 OK\r\n",
                                     "SID=abc\nLSID=d\xC3\xA9\nAuth=zz\n");
    CAny clValeur;
    ASSERT_TRUE(cl.bExtraitMessage(L"LSID", clValeur));
    EXPECT_EQ(clValeur.nGetType(), 16);
    const wchar_t* psz = nullptr;
    clValeur.__nCastToString(&psz);
    EXPECT_STREQ(psz, L"d\u00e9") << "the body is read as UTF-8";
    ASSERT_TRUE(cl.bExtraitMessage(L"Auth", clValeur));
    clValeur.__nCastToString(&psz);
    EXPECT_STREQ(psz, L"zz");
    EXPECT_FALSE(cl.bExtraitMessage(L"Error", clValeur));
    EXPECT_FALSE(CHTTPResponse().bExtraitMessage(L"SID", clValeur)) << "no body at all";
}

TEST(HTTPReponse, LeCorpsSousSesFormes) {
    const std::string sCorps = "{\"n\":\"\xC3\xA9\"}";
    const CHTTPResponse cl = Reponse(L"HTTP/1.1 200 OK\r\n", sCorps);
    CKLBIN clOctets;
    ASSERT_TRUE(cl.bGetMessage(clOctets));
    EXPECT_EQ(clOctets.sv(), sCorps);
    CXYString<char> sNarrow;
    ASSERT_TRUE(cl.bGetMessage(sNarrow));
    EXPECT_EQ(sNarrow.sv(), sCorps);
    CXYString<wchar_t> sWide;
    ASSERT_TRUE(cl.bGetMessage(sWide));
    EXPECT_EQ(sWide, L"{\"n\":\"\u00e9\"}");
    CAny clAny;
    ASSERT_TRUE(cl.bGetMessage(clAny));
    EXPECT_EQ(clAny.nGetType(), 28);

    // Only a binary body gives bytes; an untyped body gives nothing at all.
    CHTTPResponse clTexte;
    CAny clMessage;
    clMessage.__nSetString(L"abc");
    clTexte.SetMessage(clMessage);
    EXPECT_FALSE(clTexte.bGetMessage(clOctets));
    ASSERT_TRUE(clTexte.bGetMessage(sWide));
    EXPECT_EQ(sWide, L"abc");
    const CHTTPResponse clVide;
    EXPECT_FALSE(clVide.bGetMessage(clAny));
    EXPECT_FALSE(clVide.bGetMessage(clOctets));
    EXPECT_FALSE(clVide.bGetMessage(sNarrow));
}

TEST(HTTPReponse, LaTeteEstCopieeEnTexte) {
    CHTTPResponse cl = Reponse(L"HTTP/1.1 201 Created\r\n");
    CXYString<wchar_t> s;
    ASSERT_TRUE(cl.bGetEntete(s));
    EXPECT_EQ(s, L"HTTP/1.1 201 Created\r\n");
    CAny clNarrow;
    clNarrow.SetStringA("HTTP/1.1 204 No Content\r\n");
    cl.SetEntete(clNarrow);
    EXPECT_EQ(cl.eGetCodeRetour(), 204) << "a narrow head is cast to wide text";
    cl.SetEntete(CAny());
    cl.bGetEntete(s);
    EXPECT_TRUE(s.bVide()) << "a head of no type clears the text";

    const CHTTPResponse clCopie = Reponse(L"HTTP/1.1 409 Conflict\r\n", "x");
    cl = clCopie;
    EXPECT_EQ(cl.eGetCodeRetour(), 409);
    CKLBIN clOctets;
    ASSERT_TRUE(cl.bGetMessage(clOctets));
    EXPECT_EQ(clOctets.sv(), "x");
}

} // namespace
