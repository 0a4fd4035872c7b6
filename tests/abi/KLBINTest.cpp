#include "KLBIN.h"
#include "KVResult.h"

#include <gtest/gtest.h>

namespace {

CKLBIN Bin(std::string_view s) { return CKLBIN(s.data(), s.size()); }

TEST(KLBIN, RechercheEtComparaison) {
    CKLBIN b = Bin(std::string_view("ab\0cdab", 7));
    EXPECT_EQ(b.nGetTaille(), 7u);
    EXPECT_EQ(b.nPos("ab", 2), 0);
    EXPECT_EQ(b.nPos("ab", 2, 1), 5);
    EXPECT_EQ(b.nPos("\0c", 2), 2) << "zero bytes are data, not an end";
    EXPECT_EQ(b.nPos("zz", 2), CKLBIN::knAbsent);
    EXPECT_EQ(b.nPos("a", 1, 8), CKLBIN::knAbsent);
    EXPECT_TRUE(b.bCommencePar("ab", 2));
    EXPECT_TRUE(b.bTerminePar("dab", 3));
    EXPECT_FALSE(b.bTerminePar("abcdabcd", 8));
    EXPECT_TRUE(b.bContient("cd", 2));
    EXPECT_LT(Bin("ab").nCompare(Bin("abc")), 0);
    EXPECT_GT(Bin("b").nCompare(Bin("abc")), 0);
    EXPECT_EQ(Bin("abc").nCompare(Bin("abc")), 0);
    EXPECT_EQ(CKLBIN().nCompare(Bin("")), 0);
}

TEST(KLBIN, MilieuTronqueRemplaceRepete) {
    CKLBIN b = Bin("0123456789"), m;
    ASSERT_EQ(b.nMilieu(3, 4, m), KV_OK);
    EXPECT_EQ(m.sv(), "3456");
    ASSERT_EQ(b.nMilieu(8, 40, m), KV_OK);
    EXPECT_EQ(m.sv(), "89");
    ASSERT_EQ(b.nMilieu(10, 1, m), KV_OK);
    EXPECT_TRUE(m.bVide());

    CKLBIN partage = b;
    b.Tronque(4);
    EXPECT_EQ(b.sv(), "0123");
    EXPECT_EQ(partage.sv(), "0123456789") << "truncation unshares first";

    CKLBIN r = Bin("a-b-c");
    EXPECT_EQ(r.Remplace("-", 1, "--", 2), 2);
    EXPECT_EQ(r.sv(), "a--b--c");
    EXPECT_EQ(r.Remplace("x", 1, "y", 1), 0);

    CKLBIN rep;
    ASSERT_EQ(rep.nRepete(Bin("ab"), 3), KV_OK);
    EXPECT_EQ(rep.sv(), "ababab");
    ASSERT_EQ(rep.nRepete(Bin("ab"), 0), KV_OK);
    EXPECT_TRUE(rep.bVide());
}

TEST(KLBIN, ConcatTakeEtConversions) {
    CKLBIN b = Bin("h\xC3\xA9");
    ASSERT_EQ(b.nConcat(b), KV_OK);
    EXPECT_EQ(b.sv(), "h\xC3\xA9h\xC3\xA9");
    CXYString<wchar_t> w;
    ASSERT_EQ(b.nAffecteToUNICODE(w), KV_OK);
    EXPECT_STREQ(w.pszGet(), L"héhé");
    CXYString<char> a;
    ASSERT_EQ(Bin(std::string_view("ab\0cd", 5)).nAffecteToANSI(a), KV_OK);
    EXPECT_EQ(a.nLongueur(), 5u);
    ASSERT_EQ(Bin(std::string_view("ab\0cd", 5)).nAffecteANSIToANSI(a), KV_OK);
    EXPECT_STREQ(a.pszGet(), "ab");

    CKLBIN c;
    c.Take(b);
    EXPECT_TRUE(b.bVide());
    EXPECT_EQ(c.nGetTaille(), 6u);
    EXPECT_EQ(c.pGetDonnees()[6], 0) << "a zero byte follows the data";
}

} // namespace
