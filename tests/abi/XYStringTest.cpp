#include "KLBIN.h"
#include "KVResult.h"
#include "StrMemAlloc.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <cstdlib>
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

} // namespace
