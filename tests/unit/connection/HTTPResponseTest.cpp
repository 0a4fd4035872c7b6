// The answer of one exchange: the status read from the head, the labels users see, one header
// or one body line picked out, and the body in each of its forms.
#include "connection/HTTPResponse.h"

#include "HoteEssai.h"

#include "Any.h"
#include "KLBIN.h"

#include <gtest/gtest.h>

#include <set>
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

// The labels users read inside error messages: one per known status, each its own and named
// after its status; the old spellings stay; a status without one gives nothing.
TEST(HTTPReponse, LesLibellesDesStatuts) {
    std::set<std::wstring> setVus;
    int nLibelles = 0;
    for (int nCode = -2; nCode < 600; ++nCode) {
        const std::wstring s = CHTTPResponse::s_pszGetLibelle(static_cast<eHTTPCODE>(nCode));
        if (s.empty())
            continue;
        ++nLibelles;
        EXPECT_TRUE(setVus.insert(s).second) << nCode;
        EXPECT_TRUE(nCode == -1 ? s == L"Code HTTP Invalide"
                                : s.starts_with(L"HTTP") && nCode >= 100 && nCode <= 505)
            << nCode;
    }
    EXPECT_EQ(nLibelles, 42);
    EXPECT_STREQ(CHTTPResponse::s_pszGetLibelle(HTTPUnauthorized), L"HTTPUnauthorized");
    EXPECT_STREQ(CHTTPResponse::s_pszGetLibelle(static_cast<eHTTPCODE>(417)),
                 L"HTTPExpactationFailed");
    EXPECT_STREQ(CHTTPResponse::s_pszGetLibelle(static_cast<eHTTPCODE>(206)),
                 L"HTTPPartielContent");
    for (int nCode : {0, 306, 418, 429, 506})
        EXPECT_STREQ(CHTTPResponse::s_pszGetLibelle(static_cast<eHTTPCODE>(nCode)), L"") << nCode;
}

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
