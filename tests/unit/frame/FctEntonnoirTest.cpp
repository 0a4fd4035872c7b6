// The funnels into the VM's standard library: what they stack, what they call, and what they
// make of the answer, against a VM that runs the functions as the host does.
#include "HoteEssai.h"

#include "frame/FctEntonnoir.h"
#include "frame/ModuleInfo.h"

#include "DateTime.h"
#include "XError.h"

#include <gtest/gtest.h>


namespace {

struct STCasEncode {
    const char* pszNom;
    const wchar_t* pszTexte;
    const wchar_t* pszEncode;
};

const STCasEncode gtabEncodes[] = {
    {"Parametre", L"a=1", L"a=1"},
    {"Blanc", L"q=x y", L"q=x%20y"},
    {"UTF8", L"\u00e9\u20ac", L"%C3%A9%E2%82%AC"}, // UTF-8 bytes, each escaped
    {"Pourcent", L"100%", L"100%25"},
    {"Separateurs", L"a&b=c#d@e", L"a&b=c%23d@e"}, // the URI's own characters stay, but "#"
    {"Reserves", L"-._~:/?[]!$'()*+,;", L"-._~:/?[]!$'()*%2B,;"}, // "+" would read as a space
    {"Autres", L"\"<>\\^`{|}", L"%22%3C%3E%5C%5E%60%7B%7C%7D"},
};

void PrintTo(const STCasEncode& cas, std::ostream* os) { *os << cas.pszNom; }

class UrlEncode : public testing::TestWithParam<STCasEncode> {};

TEST_P(UrlEncode, ParLaFonctionDeLHote) {
    CVMEnregistreur clVM;
    CXError clErreur(&gstMyModuleInfo60);
    CXYString<wchar_t> sSortie;
    EXPECT_EQ(FctEntonnoir::bUrlEncode(&clVM, &clErreur, GetParam().pszTexte, &sSortie), 1);
    EXPECT_EQ(sSortie, GetParam().pszEncode);
    EXPECT_EQ(clVM.m_tabAppels, std::vector<int>{297});
    ASSERT_EQ(clVM.m_tabEncodes.size(), 1u);
    EXPECT_EQ(clVM.m_tabEncodes[0], KVUtf8::VersUtf8(GetParam().pszTexte)) << "sent as UTF-8";
}

INSTANTIATE_TEST_SUITE_P(Entonnoir, UrlEncode, testing::ValuesIn(gtabEncodes));

TEST(Entonnoir, UnTexteVideNAppellePasLHote) {
    CVMEnregistreur clVM;
    CXError clErreur(&gstMyModuleInfo60);
    CXYString<wchar_t> sSortie(L"avant");
    EXPECT_EQ(FctEntonnoir::bUrlEncode(&clVM, &clErreur, CXYString<wchar_t>(), &sSortie), 0);
    EXPECT_EQ(FctEntonnoir::bUrlEncode(&clVM, &clErreur, L"", &sSortie), 0);
    EXPECT_TRUE(clVM.m_tabAppels.empty());
    EXPECT_EQ(sSortie, L"avant") << "the output untouched";
    EXPECT_TRUE(clErreur.bEstPropre());
    EXPECT_EQ(FctEntonnoir::bUrlEncode(nullptr, &clErreur, L"a", &sSortie), 0);
}

TEST(Entonnoir, UnEchecDeLHoteLaisseLaSortieEtDonneSaCause) {
    CVMEnregistreur clVM;
    clVM.m_bEchoue = true;
    CXError clErreur(&gstMyModuleInfo60);
    CXYString<wchar_t> sSortie(L"avant");
    EXPECT_EQ(FctEntonnoir::bUrlEncode(&clVM, &clErreur, L"a b", &sSortie), 0);
    EXPECT_EQ(sSortie, L"avant");
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600003u);

    CDateTime clDate;
    ASSERT_TRUE(clDate.FromString(L"20240131233000000"));
    const CDateTime clAvant = clDate;
    EXPECT_EQ(FctEntonnoir::bDateHeureUTCVersLocale(&clVM, &clErreur, &clDate), 0);
    EXPECT_TRUE(clDate == clAvant);
}

TEST(Entonnoir, UnResultatVideVideLaSortie) {
    CVMEnregistreur clVM;
    clVM.m_bResultatVide = true;
    CXError clErreur(&gstMyModuleInfo60);
    CXYString<wchar_t> sSortie(L"avant");
    EXPECT_EQ(FctEntonnoir::bUrlEncode(&clVM, &clErreur, L"a", &sSortie), 1);
    EXPECT_TRUE(sSortie.bVide());
    EXPECT_EQ(FctEntonnoir::bUrlEncode(&clVM, &clErreur, L"a", nullptr), 1) << "no output asked";
}

TEST(Entonnoir, DatesConvertiesSurPlace) {
    CFuseauEssai clFuseau; // two hours east of UTC, summer or winter
    CVMEnregistreur clVM;
    CXError clErreur(&gstMyModuleInfo60);
    CDateTime clDate;
    ASSERT_TRUE(clDate.FromString(L"20241231230000123"));
    ASSERT_EQ(FctEntonnoir::bDateHeureUTCVersLocale(&clVM, &clErreur, &clDate), 1);
    wchar_t sz[18];
    clDate.ToString(sz);
    EXPECT_STREQ(sz, L"20250101010000123") << "read back from the host's digit text";
    ASSERT_EQ(FctEntonnoir::bDateHeureLocaleVersUTC(&clVM, &clErreur, &clDate), 1);
    clDate.ToString(sz);
    EXPECT_STREQ(sz, L"20241231230000123");
    EXPECT_EQ(clVM.m_tabAppels, (std::vector<int>{334, 335}));
    EXPECT_EQ(FctEntonnoir::bDateHeureLocaleVersUTC(nullptr, &clErreur, &clDate), 0);
    EXPECT_EQ(FctEntonnoir::bDateHeureLocaleVersUTC(&clVM, &clErreur, nullptr), 0);
    EXPECT_EQ(clVM.m_tabAppels.size(), 2u);
}

} // namespace
