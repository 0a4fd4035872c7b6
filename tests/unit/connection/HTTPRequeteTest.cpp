// The request description: its MIME tables, how parameters are joined and encoded through the
// host's encoder, how body chunks are assembled, and what a copy keeps.
#include "HoteEssai.h"

#include "connection/HTTPRequete.h"

#include "Utf8.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <set>
#include <string>
#include <vector>


namespace {

// The MIME table: one well-formed type per row, each its own, then the end mark; a request
// takes its row; the multipart type carries the boundary the bodies use.
TEST(TableMIME, UnTypeBienFormeParLignePuisLaMarqueDeFin) {
    std::set<std::wstring> setVus;
    for (int i = 0; i < HTTPCT_NB; ++i) {
        const std::wstring s = CHTTPRequete::s_pszGetMIMEType(static_cast<eHTTPCONTENTTYPE>(i));
        const size_t nBarre = s.find(L'/');
        EXPECT_TRUE(nBarre != std::wstring::npos && nBarre > 0 && nBarre + 1 < s.size()) << i;
        EXPECT_TRUE(setVus.insert(s).second) << "row " << i << " repeats " << KVUtf8::VersUtf8(s.c_str());
        CHTTPRequete cl(SERVICEGOOGLE_AUCUN, L"u", static_cast<eHTTPCONTENTTYPE>(i));
        EXPECT_EQ(cl.pszGetContentType(), s) << "the request takes row " << i;
    }
    EXPECT_EQ(CHTTPRequete::s_szTabMIMEType[HTTPCT_NB], nullptr);
    EXPECT_STREQ(CHTTPRequete::s_pszGetMIMEType(HTTPCT_JSON), L"application/json");
    const std::wstring sRelated = CHTTPRequete::s_pszGetMIMEType(HTTPCT_MULTIPART_RELATED);
    EXPECT_NE(sRelated.find(gszFrontiereMultipart), std::wstring::npos)
        << "bodies and the type share one boundary";
}

// An extension names a type whatever its case; anything else is Google's unknown type.
TEST(TableMIME, LesExtensionsSansEgardALaCasse) {
    for (const wchar_t* psz : {L".pdf", L".Docx", L".jpeg", L".TAB", L".pps"}) {
        std::wstring sMajuscules = psz;
        for (wchar_t& c : sMajuscules)
            c = static_cast<wchar_t>(std::towupper(c));
        const eHTTPCONTENTTYPE e = CHTTPRequete::s_eGetContentType(psz);
        EXPECT_NE(e, HTTPCT_GOOGLE_INCONNU) << KVUtf8::VersUtf8(psz);
        EXPECT_EQ(CHTTPRequete::s_eGetContentType(sMajuscules.c_str()), e);
    }
    EXPECT_EQ(CHTTPRequete::s_eGetContentType(L".CSV"), HTTPCT_CSV);
    for (const wchar_t* psz : {L".exe", L"CSV", L".DOCXX", L".", L"", static_cast<const wchar_t*>(nullptr)})
        EXPECT_EQ(CHTTPRequete::s_eGetContentType(psz), HTTPCT_GOOGLE_INCONNU) << Nom(psz);
}

// Each image kind the host knows gives an image type of the table; any other, nothing.
TEST(TableMIME, ImagesParGenre) {
    for (int nGenre = -1; nGenre <= 9; ++nGenre) {
        const std::wstring s =
            CHTTPRequete::s_pszGetMIME(static_cast<IImageFactory::TYPEIMAGE>(nGenre)).pszGet();
        const bool bConnu = nGenre == 1 || nGenre == 2 || nGenre == 3 || nGenre == 8;
        EXPECT_EQ(s.starts_with(L"image/"), bConnu) << nGenre;
        EXPECT_EQ(s.empty(), !bConnu) << nGenre;
        if (bConnu) {
            EXPECT_NE(CHTTPRequete::s_eGetContentType((L"." + s.substr(6)).c_str()),
                      HTTPCT_GOOGLE_INCONNU)
                << nGenre;
        }
    }
}

TEST(HTTPRequete, TypeDeContenu) {
    CHTTPRequete cl(SERVICEGOOGLE_AGENDA, L"https://h/p", HTTPCT_JSON);
    EXPECT_EQ(cl.eGetService(), SERVICEGOOGLE_AGENDA);
    EXPECT_STREQ(cl.pszGetURL(), L"https://h/p");
    cl.SetContentType(L"text/x-custom");
    EXPECT_STREQ(cl.pszGetContentType(), L"text/x-custom");
    cl.SetContentType(L"");
    ASSERT_NE(cl.pszGetContentType(), nullptr);
    EXPECT_STREQ(cl.pszGetContentType(), L"");
    cl.SetContentType(L"a/b");
    cl.SetContentType(nullptr);
    EXPECT_STREQ(cl.pszGetContentType(), L"");
    cl.SetURL(L"https://autre/");
    EXPECT_STREQ(cl.pszGetURL(), L"https://autre/");
    CHTTPRequete clHors(SERVICEGOOGLE_AUCUN, nullptr, static_cast<eHTTPCONTENTTYPE>(HTTPCT_NB));
    EXPECT_STREQ(clHors.pszGetContentType(), L"") << "a type past the table is not read";
    EXPECT_STREQ(clHors.pszGetURL(), L"");
}

// ---- parameters

struct STCasParametres {
    const char* pszNom;
    std::vector<std::pair<const wchar_t*, const wchar_t*>> tabParametres;
    const wchar_t* pszBrut;   // joined as they stand
    const wchar_t* pszEncode; // joined through the encoder
};

const STCasParametres gtabParametres[] = {
    {"aucun", {}, L"", L""},
    {"un", {{L"a", L"1"}}, L"a=1", L"a=1"},
    {"deux", {{L"a", L"1"}, {L"b", L"2"}}, L"a=1&b=2", L"a=1&b=2"},
    {"blanc", {{L"q", L"x y"}}, L"q=x y", L"q=x%20y"},
    {"accent", {{L"q", L"\u00e9t\u00e9"}}, L"q=\u00e9t\u00e9", L"q=%C3%A9t%C3%A9"},
    {"pourcent", {{L"q", L"100%"}}, L"q=100%", L"q=100%25"},
    // the encoder keeps "&": escaped after it, so that only joins remain literal
    {"et", {{L"q", L"a&b"}, {L"r", L"c"}}, L"q=a&b&r=c", L"q=a%26b&r=c"},
    {"etDansLeNom", {{L"a&b", L"1"}}, L"a&b=1", L"a%26b=1"},
    // "=" and "@" are the encoder's to keep; "#" and "+" it encodes, so that a text arrives whole
    {"reserves", {{L"q", L"a=b#c@d+e"}}, L"q=a=b#c@d+e", L"q=a=b%23c@d%2Be"},
    {"vides", {{L"", L""}, {L"b", L""}}, L"=&b=", L"=&b="},
};

void PrintTo(const STCasParametres& cas, std::ostream* os) { *os << cas.pszNom; }

class Parametres : public testing::TestWithParam<STCasParametres> {};

TEST_P(Parametres, JointsEtEncodes) {
    const STCasParametres& cas = GetParam();
    CHTTPRequete cl(SERVICEGOOGLE_AUCUN, L"https://h/", HTTPCT_FORMULAIRE);
    for (auto& [pszNom, pszValeur] : cas.tabParametres)
        cl.AjouteParametre(pszNom, pszValeur);
    EXPECT_EQ(cl.nGetNbParametre(), cas.tabParametres.size());

    CVMEnregistreur clVM;
    CXError clErreur(&gstMyModuleInfo60);
    EXPECT_EQ(cl.csGetParametres(0, &clVM, &clErreur), cas.pszBrut);
    EXPECT_TRUE(clVM.m_tabAppels.empty()) << "no encoding asked";

    EXPECT_EQ(cl.csGetParametres(1, &clVM, &clErreur), cas.pszEncode);
    EXPECT_TRUE(clErreur.bEstPropre());
    // Each whole "name=value" goes to the encoder in one piece, as UTF-8.
    std::vector<std::string> tabAttendus;
    for (auto& [pszNom, pszValeur] : cas.tabParametres) {
        std::wstring s = std::wstring(pszNom) + L"=" + pszValeur;
        tabAttendus.push_back(KVUtf8::VersUtf8(s));
    }
    EXPECT_EQ(clVM.m_tabEncodes, tabAttendus);
}

INSTANTIATE_TEST_SUITE_P(HTTPRequete, Parametres, testing::ValuesIn(gtabParametres),
                         [](const auto& info) { return std::string(info.param.pszNom); });

TEST(HTTPRequete, ParametreEntier) {
    CHTTPRequete cl(SERVICEGOOGLE_AUCUN, L"u", HTTPCT_FORMULAIRE);
    cl.AjouteParametre(L"max", 25);
    cl.AjouteParametre(L"n", -3);
    cl.AjouteParametre(L"v", static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ(cl.csGetParametres(0, nullptr, nullptr), L"max=25&n=-3&v=");
}

TEST(HTTPRequete, UnEncodeurEnEchecLaisseSaCauseEtNeDonneRien) {
    CHTTPRequete cl(SERVICEGOOGLE_AUCUN, L"u", HTTPCT_FORMULAIRE);
    cl.AjouteParametre(L"a", L"1");
    cl.AjouteParametre(L"b", L"2");
    CVMEnregistreur clVM;
    clVM.m_bEchoue = true;
    CXError clErreur(&gstMyModuleInfo60);
    EXPECT_EQ(cl.csGetParametres(1, &clVM, &clErreur), L"&");
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600003u) << "the host's cause is kept for the caller";
}

// ---- headers

TEST(HTTPRequete, EntetesDansLOrdre) {
    CHTTPRequete cl(SERVICEGOOGLE_AUCUN, L"u", HTTPCT_FORMULAIRE);
    cl.AjouteHeader(L"If-Match", L"*");
    cl.AjouteHeader(L"X-A", L"1");
    cl.AjouteHeader(L"X-A", L"2");
    EXPECT_EQ(cl.nGetNbHeader(), 3u);
    auto* pi = new CEntetesEssai;
    cl.RemplitEntetesHTTP(pi);
    EXPECT_EQ(pi->m_tab, (Entetes{{L"If-Match", L"*"}, {L"X-A", L"1"}, {L"X-A", L"2"}}));
    pi->vRelease();
    cl.RemplitEntetesHTTP(nullptr); // nothing to fill
}

// ---- body

TEST(HTTPRequete, LesMorceauxSontAssemblesDansLOrdre) {
    CHTTPRequete cl(SERVICEGOOGLE_AUCUN, L"u", HTTPCT_JSON);
    unsigned long n = 99;
    EXPECT_EQ(cl.nGetTailleDonnees(), 0u);
    cl.pGetDonnees(&n);
    EXPECT_EQ(n, 0u);

    std::string s1 = "{\"a\":", s2 = "", s3 = std::string("1\0}", 3);
    cl.AjouteDonnees(reinterpret_cast<unsigned char*>(s1.data()), s1.size());
    cl.AjouteDonnees(reinterpret_cast<unsigned char*>(s2.data()), s2.size());
    cl.AjouteDonnees(reinterpret_cast<unsigned char*>(s3.data()), s3.size());
    s1[0] = 'X'; // the chunks are copies
    EXPECT_EQ(cl.nGetTailleDonnees(), 8u);
    const unsigned char* p = cl.pGetDonnees(&n);
    ASSERT_EQ(n, 8u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(p), n), std::string("{\"a\":1\0}", 8));
    // Each call assembles again; the size pointer may be null.
    p = cl.pGetDonnees(nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(p), 8), std::string("{\"a\":1\0}", 8));
}

TEST(HTTPRequete, LaCopieEstProfonde) {
    CHTTPRequete cl(SERVICEGOOGLE_PICASA, L"https://h/p", HTTPCT_ATOM);
    cl.AjouteParametre(L"a", L"1");
    cl.AjouteHeader(L"X-A", L"1");
    std::string s = "<entry/>";
    cl.AjouteDonnees(reinterpret_cast<unsigned char*>(s.data()), s.size());
    cl.AjouteDonnees(reinterpret_cast<unsigned char*>(s.data()), 2);

    CHTTPRequete clCopie(cl);
    cl.SetURL(L"https://ailleurs/");
    cl.SetContentType(L"");
    cl.AjouteParametre(L"b", L"2");
    cl.AjouteHeader(L"X-B", L"2");
    cl.AjouteDonnees(reinterpret_cast<unsigned char*>(s.data()), 1);

    EXPECT_EQ(clCopie.eGetService(), SERVICEGOOGLE_PICASA);
    EXPECT_STREQ(clCopie.pszGetURL(), L"https://h/p");
    EXPECT_STREQ(clCopie.pszGetContentType(), L"application/atom+xml");
    EXPECT_EQ(clCopie.csGetParametres(0, nullptr, nullptr), L"a=1");
    auto* pi = new CEntetesEssai;
    clCopie.RemplitEntetesHTTP(pi);
    EXPECT_EQ(pi->m_tab, (Entetes{{L"X-A", L"1"}}));
    pi->vRelease();
    unsigned long n = 0;
    const unsigned char* p = clCopie.pGetDonnees(&n);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(p), n), "<entry/><e");
    EXPECT_EQ(cl.nGetTailleDonnees(), 11u);
}

} // namespace
