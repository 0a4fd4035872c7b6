#include "DataCompressor.h"
#include "Resources.h"
#include "Tables.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

// Packs bytes the way the unpacker reads them: charset 0 held, a shift for a character of
// another charset, an escape 38 for any other byte. Shared with XErrorTest.cpp.
std::string KVTest_Pack(std::string_view sOctets) {
    std::string sOut;
    std::vector<int> tabTriple;
    auto Paire = [&](std::string_view sBrut) {
        while (tabTriple.size() < 3)
            tabTriple.push_back(4); // a lock on charset 0 changes nothing
        int v = tabTriple[0] * 1600 + tabTriple[1] * 40 + tabTriple[2];
        sOut += static_cast<char>(v / 255 + 1);
        sOut += static_cast<char>(v % 255 + 1);
        sOut += sBrut;
        tabTriple.clear();
    };
    auto Symbole = [&](int s) {
        tabTriple.push_back(s);
        if (tabTriple.size() == 3)
            Paire({});
    };
    for (char c : sOctets) {
        bool bTrouve = false;
        for (int k = 0; k < 4 && !bTrouve; ++k) {
            const STCharset& st = CDataCompressor::ms_tabCharset[k];
            for (int i = 0; i < st.nLongueur; ++i) {
                if (st.pbyCaractere[i] != static_cast<unsigned char>(c))
                    continue;
                if (k != 0)
                    Symbole(k);
                Symbole(i + 8);
                bTrouve = true;
                break;
            }
        }
        if (!bTrouve) {
            Symbole(3);
            tabTriple.push_back(38);
            Paire(std::string_view(&c, 1));
        }
    }
    if (!tabTriple.empty())
        Paire({});
    return sOut;
}

namespace {

// Three symbols as one pair of bytes.
std::string P(int s1, int s2, int s3) {
    int v = s1 * 1600 + s2 * 40 + s3;
    return {static_cast<char>(v / 255 + 1), static_cast<char>(v % 255 + 1)};
}

struct STCasDecompress {
    const char* pszNom;
    std::string sEntree;
    int nRes;
    std::string sSortie;
};

TEST(DataCompressor, DecompressionDesSymboles) {
    // Symbol of a character = its index + 8. Charset 0: A=14; charset 1: a=10; charset 3: #=8.
    const STCasDecompress tabCas[] = {
        {"charset 0", P(14, 15, 16), 0, "ABC"},
        {"shift a un seul caractere", P(1, 10, 14), 0, "aA"},
        {"verrou", P(5, 10, 11) + P(12, 4, 14), 0, "abcA"},
        {"shift puis verrou", P(2, 17, 7) + P(8, 9, 4), 0, "0#$"},
        {"echappement 38, reste de la paire ignore", P(3, 38, 14) + "\xC3" + P(15, 4, 4), 0,
         "\xC3"
         "B"},
        {"echappement 38 d'un octet nul", P(3, 38, 14) + std::string(1, '\0'), 0,
         std::string(1, '\0')},
        {"echappement 39 sous verrou", P(7, 39, 14) + "\x03xyz" + P(8, 4, 14), 0, "xyz#A"},
        {"echappement 39 vide", P(3, 39, 0) + std::string(1, '\0') + P(14, 4, 4), 0, "A"},
        {"octet final seul", P(14, 15, 16) + "\x12", 0, "ABCD"},
        {"symboles 38 et 39 hors charset 3", P(38, 39, 1) + P(39, 4, 4), 0, "YZ\xEA"},
        {"octet nul en tete de paire", std::string("\x00\x05", 2), 4, ""},
        {"octet nul en second", P(14, 15, 16) + std::string("\x05\x00", 2), 4, "ABC"},
        {"octet final nul", P(14, 15, 16) + std::string(1, '\0'), 4, "ABC"},
        {"echappement 38 sans octet", P(3, 38, 0), 5, ""},
        {"echappement 39 trop long",
         P(3, 39, 0) + "\x05"
                       "ab",
         5, ""},
        {"echappement 39 sans compte", P(14, 3, 39), 5, "A"},
    };
    for (const STCasDecompress& cas : tabCas) {
        SCOPED_TRACE(cas.pszNom);
        unsigned char aby[64];
        int nLongueur = -1;
        int nRes = CDataCompressor::nDeCompress(
            aby, sizeof(aby), reinterpret_cast<const unsigned char*>(cas.sEntree.data()),
            static_cast<int>(cas.sEntree.size()), &nLongueur);
        EXPECT_EQ(nRes, cas.nRes);
        EXPECT_EQ(nLongueur, static_cast<int>(cas.sSortie.size()));
        EXPECT_EQ(std::string(reinterpret_cast<char*>(aby), cas.sSortie.size()), cas.sSortie);
        EXPECT_EQ(aby[cas.sSortie.size()], 0) << "the output ends with a zero byte";
    }
}

TEST(DataCompressor, TroncatureCompteJusquAuBout) {
    std::string s = P(14, 15, 16) + P(17, 18, 19) + P(20, 21, 22) + "\x18"; // A..J
    unsigned char aby[5];
    int nLongueur = 0;
    EXPECT_EQ(CDataCompressor::nDeCompress(aby, 5, reinterpret_cast<const unsigned char*>(s.data()),
                                           static_cast<int>(s.size()), &nLongueur),
              CDataCompressor::DC_TRONQUE);
    EXPECT_EQ(nLongueur, 10);
    EXPECT_STREQ(reinterpret_cast<char*>(aby), "ABCD");

    unsigned char abyJuste[11];
    EXPECT_EQ(CDataCompressor::nDeCompress(abyJuste, 11,
                                           reinterpret_cast<const unsigned char*>(s.data()),
                                           static_cast<int>(s.size())),
              CDataCompressor::DC_OK);
    EXPECT_STREQ(reinterpret_cast<char*>(abyJuste), "ABCDEFGHIJ");
}

TEST(DataCompressor, TablesDesCharsets) {
    const STCharset* t = CDataCompressor::ms_tabCharset;
    EXPECT_EQ(t[0].nLongueur, 32);
    EXPECT_EQ(t[1].nLongueur, 32);
    EXPECT_EQ(t[2].nLongueur, 32);
    EXPECT_EQ(t[3].nLongueur, 30) << "symbols 38 and 39 are escapes in charset 3";
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(t[0].pbyCaractere), 7), "\t\n\r ,.A");
    EXPECT_EQ(t[1].pbyCaractere[28], 0xE0);
    EXPECT_EQ(t[1].pbyCaractere[31], 0xEA);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(t[2].pbyCaractere) + 9, 10), "0123456789");
    EXPECT_EQ(t[2].pbyCaractere[22], 'X');
    EXPECT_EQ(t[3].pbyCaractere[19], '~');
    EXPECT_EQ(t[3].pbyCaractere[20], 0xA0);
    EXPECT_EQ(t[3].pbyCaractere[29], 0xFB);

    // Every byte goes through, by the tables or by an escape.
    std::string sTous;
    for (int c = 0; c < 256; ++c)
        sTous += static_cast<char>(c);
    std::string sPaquet = KVTest_Pack(sTous);
    std::vector<unsigned char> tab(400);
    int nLongueur = 0;
    ASSERT_EQ(CDataCompressor::nDeCompress(tab.data(), static_cast<int>(tab.size()),
                                           reinterpret_cast<const unsigned char*>(sPaquet.data()),
                                           static_cast<int>(sPaquet.size()), &nLongueur),
              0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(tab.data()), static_cast<size_t>(nLongueur)),
              sTous);
}

// ---- a small module with its resources

struct STTexte {
    std::string sPaquet;
    uint32_t nEncodage;
    int32_t nUtilisation;
};

std::map<unsigned, STTexte>& s_mapTexte() {
    static std::map<unsigned, STTexte> map = [] {
        std::map<unsigned, STTexte> m;
        m[10] = {KVTest_Pack("Connexion au service impossible."), 1, 2};
        m[11] = {KVTest_Pack("\xC3\x89"
                             "chec \xE2\x82\xAC"),
                 1, 0}; // Échec €
        m[12] = {KVTest_Pack("%1 fichier\n\xC2\xA7\n%1 fichiers"), 1, 1};
        m[13] = {"", 1, 3};
        m[14] = {std::string("\x05\x00", 2), 1, 0};
        m[15] = {KVTest_Pack(std::string("O\0K\0"
                                         "\x3D\xD8"
                                         "\x00\xDE",
                                         8)),
                 2, 0}; // OK, U+1F600
        m[16] = {KVTest_Pack("abc"), 3, 0};
        m[17] = {KVTest_Pack("%2!s! a %1!u! ans"), 1, 0};
        std::string sLong;
        for (int i = 0; i < 300; ++i)
            sLong += static_cast<char>('A' + i % 26);
        m[18] = {KVTest_Pack(sLong), 1, 0};
        return m;
    }();
    return map;
}

int s_nGetRessourceTest(STRessourceModule& st) {
    auto it = s_mapTexte().find(st.nNumero);
    if (it == s_mapTexte().end())
        return 0;
    st.pbyTexte = reinterpret_cast<const unsigned char*>(it->second.sPaquet.data());
    st.nTaille = static_cast<uint32_t>(it->second.sPaquet.size());
    st.nEncodage = it->second.nEncodage;
    st.nUtilisation = it->second.nUtilisation;
    return 1;
}

_stMyModuleInfo s_stModule() {
    _stMyModuleInfo st{};
    st.pszNomModule = L"kvtest.so";
    st.pszVersionModule = L"1.0";
    st.pfnGetRessource = s_nGetRessourceTest;
    return st;
}

// The host's loader, for the time of one test.
class CLoaderKVM {
public:
    explicit CLoaderKVM(PFNLoadStringKVM pfn) { gpfnLoadStringKVM = pfn; }
    ~CLoaderKVM() { gpfnLoadStringKVM = nullptr; }
};

long s_nLoaderKVM(unsigned nNumero, wchar_t* pszBuffer, int nCapacite) {
    if (nNumero != 10 && nNumero != 99)
        return 0;
    return static_cast<long>(
        std::swprintf(pszBuffer, static_cast<size_t>(nCapacite), L"hote %u", nNumero));
}

TEST(Resources, LoadStringLongueurEtTroncature) {
    const _stMyModuleInfo stModule = s_stModule();
    wchar_t sz[64];
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 10, sz, 64), 32);
    EXPECT_STREQ(sz, L"Connexion au service impossible.");

    wchar_t szPetit[5] = {L'x', L'x', L'x', L'x', L'x'};
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 10, szPetit, 5), 4);
    EXPECT_STREQ(szPetit, L"Conn");

    EXPECT_EQ(DLLRES_nLoadString(&stModule, 11, sz, 64), 7);
    EXPECT_STREQ(sz, L"\u00C9chec \u20AC");
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 15, sz, 64), 3) << "UTF-16 with a surrogate pair";
    EXPECT_STREQ(sz, L"OK\U0001F600");
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 18, sz, 64), 63) << "longer than the stack area";

    for (unsigned nNumero :
         {13u /* empty */, 14u /* zero byte */, 16u /* encoding 3 */, 99u /* absent */}) {
        SCOPED_TRACE(nNumero);
        sz[0] = L'x';
        EXPECT_EQ(DLLRES_nLoadString(&stModule, nNumero, sz, 64), 0);
        EXPECT_EQ(sz[0], L'\0');
    }
    EXPECT_EQ(DLLRES_nLoadString(nullptr, 10, sz, 64), 0);
}

TEST(Resources, DeCompressDansUnTamponWide) {
    STRessourceModule st{18, 0, nullptr, 0, 0, -1};
    ASSERT_TRUE(s_nGetRessourceTest(st));
    wchar_t sz[10];
    int nCapacite = 10;
    EXPECT_EQ(CDataCompressor::s_nDeCompress(sz, &nCapacite, st), CDataCompressor::DC_TRONQUE);
    EXPECT_EQ(nCapacite, 300) << "the whole length comes back";
    EXPECT_STREQ(sz, L"ABCDEFGHI");

    wchar_t* psz = CDataCompressor::s_pszDeCompress(st);
    ASSERT_NE(psz, nullptr);
    EXPECT_EQ(std::wcslen(psz), 300u);
    EXPECT_EQ(psz[299], L'N');
    std::free(psz);

    st.nEncodage = 7;
    nCapacite = 10;
    EXPECT_EQ(CDataCompressor::s_nDeCompress(sz, &nCapacite, st), CDataCompressor::DC_ERR_ENCODAGE);
    EXPECT_EQ(CDataCompressor::s_pszDeCompress(st), nullptr);
}

TEST(Resources, ChargeurDeLHotePrioritaire) {
    const _stMyModuleInfo stModule = s_stModule();
    CLoaderKVM clLoader(s_nLoaderKVM);
    wchar_t sz[64];
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 10, sz, 64), 7);
    EXPECT_STREQ(sz, L"hote 10");
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 11, sz, 64), 7) << "a 0 from the host falls through";
    EXPECT_STREQ(sz, L"\u00C9chec \u20AC");
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 99, sz, 64), 7) << "a text the module lacks";

    CTString cl;
    EXPECT_EQ(KVM_bLoadString(99, &cl), 1);
    EXPECT_EQ(cl, L"hote 99");
    EXPECT_EQ(KVM_bLoadString(11, &cl), 0) << "the KVM forms never read the module";
    EXPECT_EQ(KVM_nLoadString(11, sz, 64), 0);
    EXPECT_EQ(DLLRES_bLoadString(&stModule, 10, &cl), 1);
    EXPECT_EQ(cl, L"hote 10");
}

TEST(Resources, LoadStringVersChaines) {
    const _stMyModuleInfo stModule = s_stModule();
    CTString cl(L"avant");
    EXPECT_EQ(DLLRES_bLoadString(&stModule, 13, &cl), 1) << "an empty text is found";
    EXPECT_TRUE(cl.bEstVide());
    EXPECT_EQ(DLLRES_bLoadString(&stModule, 99, &cl), 0);
    EXPECT_EQ(DLLRES_bLoadString(&stModule, 14, &cl), 0);

    CXYString<wchar_t> s;
    EXPECT_EQ(DLLRES_bLoadString(&stModule, 18, &s), 1);
    EXPECT_EQ(s.nLongueur(), 300u);
    EXPECT_EQ(DLLRES_bLoadString(&stModule, 99, &s), 0);
    EXPECT_TRUE(s.bVide());

    EXPECT_EQ(DLLRES_nGetUtilisation(&stModule, 13), 3);
    EXPECT_EQ(DLLRES_nGetUtilisation(&stModule, 99), -1);
}

std::wstring Formate(const wchar_t* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    CTString cl;
    unsigned long n = DLLRES_dwFormatMessage(pszFormat, &cl, &args);
    va_end(args);
    EXPECT_EQ(n, cl.nGetLongueur());
    return cl.s();
}

TEST(Resources, FormatPositionnel) {
    EXPECT_EQ(Formate(L"%2 puis %1", L"a", L"b"), L"b puis a");
    EXPECT_EQ(Formate(L"%1!u! dans %2!s!, %3!S!", 42u, L"bo\u00EEte", "h\xC3\xA9"),
              L"42 dans bo\u00EEte, h\u00E9");
    EXPECT_EQ(Formate(L"%3!d!/%1!s!/%2!.1f!/%3!d!", L"x", 2.5, -7), L"-7/x/2.5/-7");
    EXPECT_EQ(
        Formate(L"%1!08x! %2!lld! %3!c!", 255u, -5000000000LL, static_cast<wint_t>(L'\u00E9')),
        L"000000ff -5000000000 \u00E9");
    EXPECT_EQ(Formate(L"%1 %3", L"a", L"saute", L"c"), L"a c") << "a skipped index is still read";
    EXPECT_EQ(Formate(L"<%1><%1!s!>", static_cast<const wchar_t*>(nullptr)), L"<><>");
    EXPECT_EQ(Formate(L"100%% %1%", L"a"), L"100% a%");
    EXPECT_EQ(Formate(L"%0 %a %1!q! %1!*d!"), L"%0 %a %1!q! %1!*d!") << "not placeholders";
    EXPECT_EQ(Formate(L"%10", L"a"), L"a0") << "one digit only";
    EXPECT_EQ(Formate(L"%1!d! %1!s!", 3), L"3 %1!s!") << "one index, one type";

    CTString cl;
    EXPECT_EQ(DLLRES_dwFormatMessage(L"%1 et %%", &cl, nullptr), 5u) << "no argument is read";
    EXPECT_EQ(cl, L" et %");
}

TEST(Resources, FormatMessageDepuisLaRessource) {
    const _stMyModuleInfo stModule = s_stModule();
    CTString cl;
    EXPECT_EQ(DLLRES_bFormatMessage(&stModule, 17, &cl, 12u, L"Lou"), 1);
    EXPECT_EQ(cl, L"Lou a 12 ans");
    EXPECT_EQ(DLLRES_bFormatMessage(&stModule, 99, &cl, 12u, L"Lou"), 0);
    EXPECT_TRUE(cl.bEstVide());

    wchar_t sz[8];
    EXPECT_EQ(DLLRES_nFormatMessage(&stModule, 17, sz, 8, 12u, L"Lou"), 7);
    EXPECT_STREQ(sz, L"Lou a 1");
    EXPECT_EQ(DLLRES_nFormatMessage(&stModule, 99, sz, 8, 12u, L"Lou"), 0);
}

TEST(Resources, SingulierPluriel) {
    const _stMyModuleInfo stModule = s_stModule();
    CTString cl;
    EXPECT_EQ(DLLRES_bFormatMessageSingulierPluriel(&stModule, 0, 12, &cl, L"1"), 1);
    EXPECT_EQ(cl, L"1 fichier");
    EXPECT_EQ(DLLRES_bFormatMessageSingulierPluriel(&stModule, 1, 12, &cl, L"3"), 1);
    EXPECT_EQ(cl, L"3 fichiers");
    EXPECT_EQ(DLLRES_bFormatMessageSingulierPluriel(&stModule, 2, 12, &cl, L"3"), 0);
    EXPECT_TRUE(cl.bEstVide());
    EXPECT_EQ(DLLRES_bFormatMessageSingulierPluriel(&stModule, 0, 99, &cl, L"3"), 0);

    EXPECT_EQ(__bLoadStringSingulierPluriel(&stModule, 1, 12, &cl), 1);
    EXPECT_EQ(cl, L"%1 fichiers");
    EXPECT_EQ(__bLoadStringSingulierPluriel(&stModule, 1, 10, &cl), 0) << "a text of one form";
}

uint64_t s_nCommandeVue = 0;
uint32_t s_nTailleVue = 0;
uint64_t s_nCommandeTest(uint64_t nCommande, uint64_t nArgument) {
    s_nCommandeVue = nCommande;
    std::memcpy(&s_nTailleVue, reinterpret_cast<const void*>(nArgument), sizeof(s_nTailleVue));
    return 0;
}

TEST(Resources, InitialisationEtRessourcesExternes) {
    EXPECT_EQ(DLLRES_bForceInitRessource(nullptr), 0);
    EXPECT_EQ(DLLRES_bForceInitRessource(s_nCommandeTest), 1);
    EXPECT_EQ(s_nCommandeVue, 3u);
    EXPECT_EQ(s_nTailleVue, 24u) << "the record gives its size first";

    uint32_t nTaille = 77;
    EXPECT_EQ(DLLRES_pLoadResource(nullptr, nullptr, 8035, L"RT_KVL", &nTaille), nullptr);
    EXPECT_EQ(nTaille, 0u);
    void* h = dlopen(nullptr, RTLD_NOW);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(DLLRES_pLoadResource(nullptr, h, 8035, L"RT_KVL", &nTaille), nullptr)
        << "the test program exports no resource lookup";
    dlclose(h);

    EXPECT_EQ(DLLRES_bInit(nullptr, 0), 1);
    EXPECT_EQ(gbInitialise, 1);
    DLLRES_Term();
    EXPECT_EQ(gbInitialise, 0);
    EXPECT_EQ(DLLRES_bUtiliseDLLRes(), 0);
}

} // namespace
