// The saved byte form: the marked text to the byte, the reading modes over each form a file
// may hold, blocks that an older reader skips, and the main header.
#include "foundation/KVBuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using TOctets = std::vector<unsigned char>;

TOctets Octets(const CKVBuffer& cl) {
    return TOctets(cl.pGetDonnees(), cl.pGetDonnees() + cl.nGetTaille());
}

void Charge(CKVBuffer& cl, const TOctets& tab) {
    cl.ClearAll();
    cl.Set(tab.data(), tab.size());
    cl.Seek(0, BUFFER_SEEK_DEBUT);
}

const TOctets gtabABC = {0xFF, 0xCE, 0x88, 0xF1, 0x10, 0x00, 0x00, 0x00,
                         0x61, 0x62, 0x63, 0x00, 0xFE, 0xED, 0x98, 0xE1};

TEST(KVBuffer, MarkedTextToTheByte) {
    CKVBuffer cl;
    cl << CTString(L"abc");
    EXPECT_EQ(Octets(cl), gtabABC);

    cl.ClearAll();
    cl.SetString(L"");
    cl.SetString(nullptr);
    cl.SaveStringNewUtf8Mark(L"", false);
    EXPECT_EQ(Octets(cl),
              (TOctets{0, 0, 0xFF, 0xCE, 0x88, 0xF1, 0x0D, 0, 0, 0, 0, 0xFE, 0xED, 0x98, 0xE1}));
}

struct STCasMode {
    const char* pszForme;
    TOctets tabOctets;
    EModeTString eMode;
    const wchar_t* pszLu; // null: the read fails and the position stays
};

TOctets FinDecalee() {
    TOctets tab = gtabABC;
    tab[4] = 0x0F; // T one short: the end mark is not where T says
    return tab;
}

const STCasMode gtabModes[] = {
    {"marked", gtabABC, MODETSTRING_DEFAUT, L"abc"},
    {"marked", gtabABC, MODETSTRING_MARQUE, L"abc"},
    {"marked", gtabABC, MODETSTRING_MARQUE_SEUL, L"abc"},
    {"zero byte", {0}, MODETSTRING_MARQUE, L""},
    {"zero byte", {0}, MODETSTRING_MARQUE_SEUL, nullptr},
    {"old", {'a', 0xE9, 0x80, 0}, MODETSTRING_ANCIEN, L"a\u00E9\u20AC"},
    {"old", {'a', 'b', 0}, MODETSTRING_DEFAUT, L"ab"},
    {"old", {'a', 'b', 0}, MODETSTRING_MARQUE, nullptr},
    {"old without null", {'a', 'b'}, MODETSTRING_ANCIEN, nullptr},
    {"end mark off", FinDecalee(), MODETSTRING_MARQUE_SEUL, nullptr},
    {"end mark off", FinDecalee(), MODETSTRING_DEFAUT, L"\u00FF\u00CE\u02C6\u00F1\u000F"},
    {"marked, cut short", TOctets(gtabABC.begin(), gtabABC.end() - 1), MODETSTRING_MARQUE, nullptr},
    {"marked text with a null inside",
     {0xFF, 0xCE, 0x88, 0xF1, 0x10, 0, 0, 0, 'a', 0, 'c', 0, 0xFE, 0xED, 0x98, 0xE1},
     MODETSTRING_MARQUE,
     nullptr},
};

class KVBufferModes : public testing::TestWithParam<STCasMode> {};

TEST_P(KVBufferModes, Reads) {
    const STCasMode& st = GetParam();
    CKVBuffer cl;
    Charge(cl, st.tabOctets);
    CTString s;
    const bool bLu = cl.bReadString(s, st.eMode, nCODEPAGE_1252);
    ASSERT_EQ(bLu, st.pszLu != nullptr) << st.pszForme << " in mode " << st.eMode;
    if (bLu)
        EXPECT_EQ(s.sv(), std::wstring_view(st.pszLu)) << st.pszForme;
    else
        EXPECT_EQ(cl.nGetPosition(), 0u) << st.pszForme;
}

INSTANTIATE_TEST_SUITE_P(Formes, KVBufferModes, testing::ValuesIn(gtabModes));

TEST(KVBuffer, TextsReadBackInOrderThroughEveryReader) {
    CKVBuffer cl;
    const wchar_t* tabTextes[] = {L"Évènement ✓", L"", L"x"};
    for (const wchar_t* psz : tabTextes)
        cl.SetString(psz);
    cl.Seek(0, BUFFER_SEEK_DEBUT);
    CXYString<wchar_t> s;
    ASSERT_TRUE(cl.bReadString(s, MODETSTRING_MARQUE, nCODEPAGE_1252));
    EXPECT_EQ(s, tabTextes[0]);
    wchar_t sz[1];
    EXPECT_EQ(cl.nReadString(sz, 1, MODETSTRING_MARQUE, nCODEPAGE_1252), 1); // "" and its null
    EXPECT_LT(cl.nReadString(sz, 1, MODETSTRING_MARQUE, nCODEPAGE_1252), 0); // no room for "x"
    wchar_t* psz = cl.pszReadCreateString(MODETSTRING_MARQUE, nCODEPAGE_1252);
    ASSERT_NE(psz, nullptr);
    EXPECT_STREQ(psz, L"x");
    std::free(psz);
    EXPECT_EQ(cl.nReste(), 0u);
    EXPECT_FALSE(cl.bSeekString(MODETSTRING_DEFAUT));
}

// A later writer adds a field inside a block; the older reader takes what it knows, skips the
// rest, and the value after the block is read in its place.
TEST(KVBuffer, BlocksSkipWhatTheReaderDoesNotKnow) {
    CKVBufferMark cl;
    ASSERT_TRUE(cl.WriteEntetePrincipale(0x4B56, 2));
    const size_t nMarque = CKVBufferMark::s_dwWriteBeginMark(cl);
    cl.SetString(L"known");
    cl.Set32(77);
    cl.SetString(L"added later");
    EXPECT_EQ(CKVBufferMark::s_WriteEndMark(cl, nMarque), 4u + 18 + 4 + 24);
    cl.SetString(L"after");

    unsigned a = 0, b = 0;
    EXPECT_EQ(cl.nReadEntetePrincipale(0x4B56, 2, &a, &b), 0);
    EXPECT_EQ(cl.nGetPosition(), 12u);
    unsigned nLongueur = 0;
    const size_t nFin = CKVBufferMark::s_dwReadBeginMark(cl, &nLongueur);
    CTString s;
    ASSERT_TRUE(cl.bReadString(s, MODETSTRING_DEFAUT, nCODEPAGE_1252));
    EXPECT_EQ(s, L"known");
    CKVBufferMark::s_ReadEndMark(cl, nFin);
    cl >> s;
    EXPECT_EQ(s, L"after");

    EXPECT_EQ(cl.nReadEntetePrincipale(0x4B56, 3, &a, &b), 4);
    cl.Seek(0, BUFFER_SEEK_DEBUT);
    cl.Set32(11);
    EXPECT_EQ(cl.nReadEntetePrincipale(0x4B56, 2, &a, &b), 2);
    // A length field cut short reads as an empty block, the position put back.
    Charge(cl, {1, 2});
    EXPECT_EQ(CKVBufferMark::s_dwReadBeginMark(cl, &nLongueur), 0u);
    EXPECT_EQ(nLongueur, 0u);
    EXPECT_EQ(cl.nGetPosition(), 0u);
}

TEST(KVBuffer, MemoryChangesOwner) {
    CKVBuffer cl;
    cl.SetString(L"abc");
    CKVBuffer clCible;
    cl.Transfert(clCible);
    EXPECT_EQ(cl.nGetTaille(), 0u);
    EXPECT_EQ(Octets(clCible), gtabABC);
    size_t nTaille = 0;
    unsigned char* pby = clCible.GetOwnershipMemory(&nTaille);
    cl.GiveOwnershipMemory(pby, nTaille);
    CTString s;
    EXPECT_TRUE(cl.bReadString(s, MODETSTRING_MARQUE_SEUL, nCODEPAGE_1252));
    EXPECT_EQ(s, L"abc");
}

} // namespace
