#include "KLBIN.h"
#include "KVResult.h"
#include "StrMemAlloc.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace {

// Counts what goes through the host's allocator, to prove the strings use it.
class CAllocateurCompteur final : public IStrMemAlloc {
public:
    void* vpAlloue(size_t n) override { return ++m_nAlloue, std::malloc(n); }
    void* vpRealloue(void* p, size_t n) override { return std::realloc(p, n); }
    void vLibere(void* p) override { ++m_nLibere, std::free(p); }
    int m_nAlloue = 0, m_nLibere = 0;
};

class AllocateurHote : public testing::Test {
protected:
    void SetUp() override { CInformationModule::ms_piStrMemAlloc = &m_clAlloc; }
    void TearDown() override { CInformationModule::ms_piStrMemAlloc = nullptr; }
    CAllocateurCompteur m_clAlloc;
};

TEST_F(AllocateurHote, LesBlocsPassentParLAllocateurDeLHote) {
    {
        CXYString<wchar_t> s(L"abc");
        CXYString<wchar_t> t = s; // shared, no new block
        CKLBIN b("xy", 2);
        EXPECT_EQ(m_clAlloc.m_nAlloue, 2);
    }
    EXPECT_EQ(m_clAlloc.m_nLibere, 2);
}

TEST(XYString, NullEstLaChaineVide) {
    CXYString<wchar_t> s;
    EXPECT_EQ(s.pGetBrut(), nullptr);
    EXPECT_STREQ(s.pszGet(), L"");
    EXPECT_TRUE(s.bVide());
    CXYString<char> n(static_cast<const char*>(nullptr));
    EXPECT_EQ(n.pGetBrut(), nullptr);
    CXYString<char> e("");
    EXPECT_EQ(e.pGetBrut(), nullptr) << "an empty text holds no block";
    EXPECT_TRUE(s == L"");
}

TEST(XYString, EnteteCompteCapaciteTailleEnOctets) {
    CXYString<wchar_t> s(L"héllo");
    const auto* pEnt = KVBloc::pEntete(s.pGetBrut());
    EXPECT_EQ(pEnt->nRef.load(), 1);
    EXPECT_EQ(pEnt->nTaille, 5 * sizeof(wchar_t));
    EXPECT_GE(pEnt->nCapacite, pEnt->nTaille);
    EXPECT_EQ(s.pGetBrut()[5], L'\0');
    EXPECT_EQ(reinterpret_cast<const char*>(s.pGetBrut()) - reinterpret_cast<const char*>(pEnt),
              12);
}

TEST(XYString, CopiePartageEtEcriturDesolidarise) {
    CXYString<char> a("partage");
    CXYString<char> b = a;
    EXPECT_EQ(a.pGetBrut(), b.pGetBrut());
    EXPECT_EQ(a.nGetRef(), 2);
    ASSERT_EQ(b.nConcatene(std::string_view("!")), KV_OK);
    EXPECT_NE(a.pGetBrut(), b.pGetBrut());
    EXPECT_STREQ(a.pszGet(), "partage");
    EXPECT_STREQ(b.pszGet(), "partage!");
    EXPECT_EQ(a.nGetRef(), 1);
}

TEST(XYString, ConcateneSoiMeme) {
    CXYString<wchar_t> s(L"ab");
    for (int i = 0; i < 6; ++i) ASSERT_EQ(s.nConcatene(s.pszGet(), s.nLongueur()), KV_OK);
    EXPECT_EQ(s.nLongueur(), 128u);
    EXPECT_EQ(s.sv().substr(0, 6), L"ababab");
}

TEST(XYString, AdoptEtRetainRespectentLeCompte) {
    CXYString<char> a("x");
    char* p = a.pGetBrut();
    {
        auto b = CXYString<char>::Retain(p);
        EXPECT_EQ(a.nGetRef(), 2);
    }
    EXPECT_EQ(a.nGetRef(), 1);
    char* pBrut = a.pDetach();
    EXPECT_EQ(a.pGetBrut(), nullptr);
    auto c = CXYString<char>::Adopt(pBrut);
    EXPECT_EQ(c.nGetRef(), 1);
    EXPECT_STREQ(c.pszGet(), "x");
}

TEST(XYString, LongueursALaLimiteRefusees) {
    CXYString<char> s("garde");
    const char c = 'z';
    // The length is checked before anything is read or allocated.
    EXPECT_EQ(s.nAffecte(&c, 0x7FFFFF00u), KV_ERR_TROP_LONG);
    EXPECT_EQ(s.nReserve(0x7FFFFF00u), KV_ERR_TROP_LONG);
    EXPECT_EQ(s.nConcatene(&c, 0x7FFFFF00u - 5), KV_ERR_TROP_LONG);
    CXYString<wchar_t> w;
    EXPECT_EQ(w.nReserve(0x7FFFFF00u / sizeof(wchar_t)), KV_ERR_TROP_LONG);
    EXPECT_STREQ(s.pszGet(), "garde") << "a refused write changes nothing";
    EXPECT_EQ(KVBloc::pAlloue(0x7FFFFF00u, 1), nullptr);
}

TEST(XYString, UnshareDonneUnBlocPropre) {
    CXYString<wchar_t> a(L"t");
    CXYString<wchar_t> b = a;
    ASSERT_EQ(b.nUnshare(), KV_OK);
    EXPECT_NE(a.pGetBrut(), b.pGetBrut());
    EXPECT_EQ(b.nGetRef(), 1);
    b.pGetTampon()[0] = L'u';
    EXPECT_STREQ(a.pszGet(), L"t");
}

TEST(XYString, ComptesAtomiquesEntreThreads) {
    CXYString<char> s("commun");
    std::vector<std::thread> tabThreads;
    for (int t = 0; t < 4; ++t)
        tabThreads.emplace_back([&s] {
            for (int i = 0; i < 10000; ++i) {
                CXYString<char> c = s;
                (void)c;
            }
        });
    for (auto& th : tabThreads) th.join();
    EXPECT_EQ(s.nGetRef(), 1);
}

// Assignment writes over the string's own block when nobody shares it, it has the room, and it
// is not much larger than the text; otherwise a new block, the sharers keeping the old text.
struct STAssignCase {
    const char* pszName;
    size_t nBefore; // characters of the string before the assignment
    bool bShared;   // another string holds the same block
    size_t nAfter;  // characters assigned
    bool bInPlace;  // the same block is expected
};
void PrintTo(const STAssignCase& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

const STAssignCase gtabAssign[] = {
    {"ShorterUnique", 20, false, 5, true},
    {"SameLengthUnique", 12, false, 12, true},
    {"LongerUnique", 5, false, 6, false},
    {"ShorterShared", 20, true, 5, false},
    {"SameLengthShared", 12, true, 12, false},
    {"LargeBlockShortText", 4000, false, 10, false},
    {"LargeBlockQuarterText", 4000, false, 1000, true},
};

class XYStringAssign : public testing::TestWithParam<STAssignCase> {};

TEST_P(XYStringAssign, InPlaceOnlyWhenUniqueWithRoom) {
    const STAssignCase& stCase = GetParam();
    const std::wstring sBefore(stCase.nBefore, L'a');
    std::wstring sAfter;
    for (size_t i = 0; i < stCase.nAfter; ++i)
        sAfter += static_cast<wchar_t>(L'b' + i % 20);
    CXYString<wchar_t> s(sBefore.data(), sBefore.size());
    CXYString<wchar_t> clOther;
    if (stCase.bShared)
        clOther = s;
    const wchar_t* pBefore = s.pGetBrut();
    ASSERT_EQ(s.nAffecte(sAfter.data(), sAfter.size()), KV_OK);
    EXPECT_EQ(s.pGetBrut() == pBefore, stCase.bInPlace);
    EXPECT_EQ(s.sv(), sAfter);
    EXPECT_EQ(s.pGetBrut()[sAfter.size()], L'\0');
    EXPECT_EQ(s.nGetRef(), 1);
    if (stCase.bShared) {
        EXPECT_EQ(clOther.sv(), sBefore) << "a shared block is never written in place";
        EXPECT_EQ(clOther.nGetRef(), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, XYStringAssign, testing::ValuesIn(gtabAssign),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(XYString, AssignFromItsOwnText) {
    CXYString<char> s("0123456789");
    const char* pBlock = s.pGetBrut();
    ASSERT_EQ(s.nAffecte(s.pszGet() + 3, 5), KV_OK);
    EXPECT_EQ(s.pGetBrut(), pBlock);
    EXPECT_STREQ(s.pszGet(), "34567");
    ASSERT_EQ(s.nAffecte(s.pszGet(), s.nLongueur()), KV_OK);
    EXPECT_STREQ(s.pszGet(), "34567");
    // From its own text into a new block: the old one is let go only after the copy.
    CXYString<char> t("abc");
    CXYString<char> u = t;
    ASSERT_EQ(t.nAffecte(u.pszGet() + 1, 2), KV_OK);
    EXPECT_STREQ(t.pszGet(), "bc");
    EXPECT_STREQ(u.pszGet(), "abc");
}

} // namespace
