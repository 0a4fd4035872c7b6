#include "Any.h"

#include "DateTime.h"
#include "KLBIN.h"
#include "KVResult.h"
#include "ManipAUB.h"
#include "ObjectInterfaces.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <ostream>
#include <string>
#include <utility>

namespace {

// The text form of a value, or a marker when it has none.
std::wstring Texte(const CAny& a) {
    CXYString<wchar_t> s;
    return KV_bSucces(a.__nFillString(s)) ? std::wstring(s.sv()) : L"<sans texte>";
}

CAny Chaine(const wchar_t* psz) {
    CAny a;
    EXPECT_EQ(a.__nSetString(psz), KV_OK);
    return a;
}

class CObjetCompte final : public IInterfaceObjetBase {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    int m_nRef = 0;
};

// ---- one row per code ---------------------------------------------------------------------

struct STCasType {
    uint16_t nCode;
    const char* pszClasse;
    size_t nTaille;
    const wchar_t* pszDefaut; // the default as text; null for a value with no text form
};

const STCasType gtabTypes[] = {
    {1, "CAny_KLBOOL", 4, L"0"},
    {2, "CAny_KLUI1", 1, L"0"},
    {3, "CAny_KLUI2", 2, L"0"},
    {4, "CAny_KLUI4", 4, L"0"},
    {5, "CAny_KLUI8", 8, L"0"},
    {6, "CAny_KLI1", 1, L"0"},
    {7, "CAny_KLI2", 2, L"0"},
    {8, "CAny_KLI4", 4, L"0"},
    {9, "CAny_KLI8", 8, L"0"},
    {10, "CAny_KLCY", 10, L"0"},
    {11, "CAny_KLR4", 4, L"0"},
    {12, "CAny_KLR8", 8, L"0"},
    {14, "CAny_KLUIX", sizeof(void*), L"0"},
    {16, "CAny_KLDSTRW", 8, L""},
    {17, "CAny_KLCARA", 1, L""},
    {18, "CAny_KLPSTRA", 8, L""},
    {19, "CAny_KLDSTRA", 8, L""},
    {24, "CAny_KLDATEW", 8, L""},
    {25, "CAny_KLTIMEW", 8, L"0000"},
    {26, "CAny_KLDATETIME", 8, L"00000000000000000"},
    {27, "CAny_KLDUREE", 8, L"0000000000"},
    {28, "CAny_KLBIN", 8, L""},
    {29, "CAny_KLBUFFER", 8, L""},
    {30, "CAny_KLMEMOIMG", 8, nullptr},
    {50, "CAny_KLCONVOYEUR", 8, nullptr},
    {65, "CAny_KLPOLICE", 8, nullptr},
    {81, "CAny_KLCARW", sizeof(wchar_t), L""},
    {83, "CAny_KLTABVALANY", 8, nullptr},
    {108, "CAny_KLOBJET_BASE", 8, nullptr},
    {110, "CAny_KLPSTRW", 8, L""},
    {111, "CAny_KLDINO", 8, nullptr},
    {128, "CAny_KLDATEA", 8, L""},
    {129, "CAny_KLTIMEA", 8, L"0000"},
    {135, "CAny_KLOBJET_BASE", 8, nullptr},
    {136, "CAny_KLOBJET_BASE", 8, nullptr},
    {141, "CAny_KLOBJET_BASE", 8, nullptr},
    {142, "CAny_KLOBJET_BASE", 8, nullptr},
    {143, "CAny_KLOBJET_BASE", 8, nullptr},
    {148, "CAny_KLDSTRW", 8, L""},
    {149, "CAny_KLDSTRW", 8, L""},
    {150, "CAny_KLPOINT", 8, nullptr},
    {151, "CAny_KLRECTANGLE", 16, nullptr},
};

class AnyType : public testing::TestWithParam<STCasType> {};

TEST_P(AnyType, ClasseTailleEtDefaut) {
    const STCasType& c = GetParam();
    CAny a;
    // The default replaces whatever was there before.
    if (c.nCode == 19)
        a.SetInt(9);
    else
        ASSERT_EQ(a.SetStringA("avant"), KV_OK);
    ASSERT_EQ(a.__SetType(c.nCode, 0), KV_OK);
    EXPECT_EQ(a.nGetType(), c.nCode);
    EXPECT_FALSE(a.bEstTableau());
    EXPECT_EQ(a.nGetTypeScalaire(), c.nCode);
    EXPECT_STREQ(a.pclGetIntern()->vpszNomClasse(), c.pszClasse);
    EXPECT_EQ(a.pclGetIntern()->nGetSize(), c.nTaille);
    EXPECT_EQ(static_cast<const void*>(a.pclGetIntern()), static_cast<const void*>(&a))
        << "the implementation object lives in the value's leading word";
    EXPECT_EQ(Texte(a), c.pszDefaut ? c.pszDefaut : L"<sans texte>");

    CAny t;
    auto nTableau = static_cast<uint16_t>(c.nCode | CAny::knTableau);
    ASSERT_EQ(t.__SetType(nTableau, 0), KV_OK);
    EXPECT_EQ(t.nGetType(), nTableau);
    EXPECT_NE(t.nGetType(), c.nCode) << "an array never compares equal to its element type";
    EXPECT_TRUE(t.bEstTableau());
    EXPECT_EQ(t.nGetTypeScalaire(), c.nCode);
    EXPECT_STREQ(t.pclGetIntern()->vpszNomClasse(), "CAny_Intern");
    EXPECT_EQ(t.pclGetIntern()->nGetSize(), sizeof(void*));
}

INSTANTIATE_TEST_SUITE_P(Codes, AnyType, testing::ValuesIn(gtabTypes),
                         [](const testing::TestParamInfo<STCasType>& i) {
                             return "Code" + std::to_string(i.param.nCode);
                         });

// ---- __SetType ----------------------------------------------------------------------------

TEST(Any, SetTypeReplieInconnusEtMemeCode) {
    CAny a;
    EXPECT_EQ(a.__SetType(15, 0), KV_OK);
    EXPECT_EQ(a.nGetType(), 9);
    EXPECT_STREQ(a.pclGetIntern()->vpszNomClasse(), "CAny_KLI8");
    EXPECT_EQ(a.__SetType(15 | CAny::knTableau, 0), KV_OK);
    EXPECT_EQ(a.nGetType(), 9 | CAny::knTableau);

    for (uint16_t nCode : {13, 20, 31, 152, 200, 255, 0x100, 0x1FF, 0x200, 0x8010, 0xFFFF}) {
        CAny b;
        b.SetInt(3);
        b.__SetType(nCode, 0);
        EXPECT_EQ(b.nGetType(), 0) << nCode;
        EXPECT_STREQ(b.pclGetIntern()->vpszNomClasse(), "CAny_Intern") << nCode;
    }

    CAny s = Chaine(L"garde");
    const wchar_t* pAvant = s.pclGetIntern()->nGetPCWSTR();
    EXPECT_EQ(s.__SetType(16, 0), KV_OK);
    EXPECT_EQ(s.pclGetIntern()->nGetPCWSTR(), pAvant) << "the same code changes nothing";
    EXPECT_EQ(Texte(s), L"garde");
}

TEST(Any, SetTypeGardeConvertitOuVide) {
    CAny a;
    a.SetInt(42);
    ASSERT_EQ(a.__SetType(16, 1), KV_OK);
    EXPECT_EQ(Texte(a), L"42");
    ASSERT_EQ(a.__SetType(2, 1), KV_OK);
    int n = 0;
    ASSERT_EQ(a.nGetINT(&n), KV_OK);
    EXPECT_EQ(n, 42);

    CAny b = Chaine(L"pas un nombre");
    EXPECT_GT(b.__SetType(8, 1), 99);
    EXPECT_EQ(b.nGetType(), 8) << "a failed conversion still sets the type";
    ASSERT_EQ(b.nGetINT(&n), KV_OK);
    EXPECT_EQ(n, 0);

    CAny c = Chaine(L"x");
    EXPECT_GT(c.__SetType(25, 1), 99);
    EXPECT_EQ(Texte(c), L"0000") << "cleared to the default of the new type";
}

// ---- conversions --------------------------------------------------------------------------

struct STCasConversion {
    const char* pszNom;
    void (*pfnSource)(CAny&);
    uint16_t nCible;
    int nResultat;
    const wchar_t* pszTexte; // the text after a success
};

CDateTime DateTest() {
    CDateTime d;
    EXPECT_TRUE(d.FromString(L"20240115123045678"));
    return d;
}

#define SRC(expr) [](CAny& a) { expr; }
const STCasConversion gtabConversions[] = {
    {"I4 dans UI1", SRC(a.SetInt(255)), 2, KV_OK, L"255"},
    {"I4 trop grand pour UI1", SRC(a.SetInt(256)), 2, KV_ERR_DEPASSEMENT, nullptr},
    {"negatif vers UI4", SRC(a.SetInt(-1)), 4, KV_ERR_DEPASSEMENT, nullptr},
    {"I8 minimum de I1", SRC(a.SetINT_64(-128)), 6, KV_OK, L"-128"},
    {"I8 sous I1", SRC(a.SetINT_64(-129)), 6, KV_ERR_DEPASSEMENT, nullptr},
    {"UI8 maximum vers I8", SRC(a.SetUINT_64(ULONG_MAX)), 9, KV_ERR_DEPASSEMENT, nullptr},
    {"UI8 maximum en texte", SRC(a.SetUINT_64(ULONG_MAX)), 16, KV_OK, L"18446744073709551615"},
    {"I8 minimum en texte", SRC(a.SetINT_64(LONG_MIN)), 16, KV_OK, L"-9223372036854775808"},
    {"reel le plus court", SRC(a.SetREAL(0.1)), 16, KV_OK, L"0.1"},
    {"R4 le plus court", SRC(a.SetREAL(0.1)), 11, KV_OK, L"0.1"},
    {"reel tronque", SRC(a.SetREAL(-2.9)), 8, KV_OK, L"-2"},
    {"reel hors R4", SRC(a.SetREAL(1e300)), 11, KV_ERR_DEPASSEMENT, nullptr},
    {"reel hors I8", SRC(a.SetREAL(1e19)), 9, KV_ERR_DEPASSEMENT, nullptr},
    {"NaN vers entier", SRC(a.SetREAL(std::nan(""))), 8, KV_ERR_CONVERSION, nullptr},
    {"texte entier", SRC(a.__nSetString(L" +42 ")), 8, KV_OK, L"42"},
    {"texte exposant", SRC(a.__nSetString(L"1e3")), 8, KV_OK, L"1000"},
    {"texte reel", SRC(a.__nSetString(L"-2.5")), 12, KV_OK, L"-2.5"},
    {"texte invalide", SRC(a.__nSetString(L"12abc")), 8, KV_ERR_CONVERSION, nullptr},
    {"texte vide", SRC(a.__nSetString(L"")), 8, KV_ERR_CONVERSION, nullptr},
    {"texte hexadecimal", SRC(a.__nSetString(L"0x10")), 8, KV_ERR_CONVERSION, nullptr},
    {"texte immense", SRC(a.__nSetString(std::wstring(400, L'9').c_str())), 9, KV_ERR_DEPASSEMENT,
     nullptr},
    {"booleen en texte", SRC(a.SetBool(true)), 16, KV_OK, L"1"},
    {"TRUE sans casse", SRC(a.__nSetString(L"TRUE")), 1, KV_OK, L"1"},
    {"False sans casse", SRC(a.__nSetString(L"False")), 1, KV_OK, L"0"},
    {"nombre vers booleen", SRC(a.SetInt(7)), 1, KV_OK, L"1"},
    {"mot vers booleen", SRC(a.__nSetString(L"oui")), 1, KV_ERR_CONVERSION, nullptr},
    {"booleen vers entier", SRC(a.SetBool(true)), 8, KV_OK, L"1"},
    {"texte large vers etroit", SRC(a.__nSetString(L"h\u00e9 \u20ac")), 19, KV_OK,
     L"h\u00e9 \u20ac"},
    {"texte vers binaire", SRC(a.__nSetString(L"\u00e9t\u00e9")), 28, KV_OK, L"\u00e9t\u00e9"},
    {"binaire vers nombre", SRC(a.SetBinary("17", 2)), 8, KV_OK, L"17"},
    {"date-heure en texte", SRC(a.SetDateTime(DateTest())), 16, KV_OK, L"20240115123045678"},
    {"date-heure en date", SRC(a.SetDateTime(DateTest())), 24, KV_OK, L"20240115"},
    {"date-heure en heure", SRC(a.SetDateTime(DateTest())), 129, KV_OK, L"123045678"},
    {"date-heure vide en date", SRC(a.SetDateTime(CDateTime())), 128, KV_OK, L""},
    {"texte date vers date-heure", SRC(a.__nSetString(L"20240115")), 26, KV_OK,
     L"20240115000000000"},
    {"texte heure vers date-heure", SRC(a.__nSetString(L"1230")), 26, KV_OK, L"00000000123000000"},
    {"mois 13", SRC(a.__nSetString(L"20241315")), 26, KV_ERR_CONVERSION, nullptr},
    {"date trop courte", SRC(a.__nSetString(L"2024011")), 24, KV_ERR_CONVERSION, nullptr},
    {"heure 25", SRC(a.__nSetString(L"2530")), 25, KV_ERR_CONVERSION, nullptr},
    {"date-heure texte vers heure", SRC(a.__nSetString(L"20240115083000000")), 25, KV_OK,
     L"083000000"},
    {"duree en texte", SRC(a.SetDuree(90061001)), 16, KV_OK, L"1010101001"},
    {"duree negative", SRC(a.SetDuree(-1500)), 16, KV_OK, L"-0000001500"},
    {"duree vers entier", SRC(a.SetDuree(1234)), 9, KV_OK, L"1234"},
    {"texte vers duree", SRC(a.__nSetString(L"1010101001")), 27, KV_OK, L"1010101001"},
    {"texte court vers duree", SRC(a.__nSetString(L"5000")), 27, KV_OK, L"0000005000"},
    {"duree heure 25", SRC(a.__nSetString(L"250000000")), 27, KV_ERR_CONVERSION, nullptr},
    {"texte monnaie", SRC(a.__nSetString(L"-12.345")), 10, KV_OK, L"-12.345"},
    {"monnaie decimale", SRC(a.__nSetString(L"12.9")), 10, KV_OK, L"12.9"},
    {"I8 maximum hors monnaie", SRC(a.SetINT_64(LONG_MAX)), 10, KV_ERR_DEPASSEMENT, nullptr},
    {"grand entier en monnaie", SRC(a.SetINT_64(1000000000000L)), 10, KV_OK, L"1000000000000"},
    {"un caractere large", SRC(a.__nSetString(L"\u00e9")), 81, KV_OK, L"\u00e9"},
    {"deux caracteres", SRC(a.__nSetString(L"ab")), 81, KV_ERR_CONVERSION, nullptr},
    {"caractere etroit multi-octet", SRC(a.__nSetString(L"\u00e9")), 17, KV_ERR_CONVERSION,
     nullptr},
    {"caractere etroit", SRC(a.__nSetString(L"a")), 17, KV_OK, L"a"},
    {"pointeur de texte lu", SRC(a.SetPSTRX(L"abc")), 19, KV_OK, L"abc"},
    {"texte vers pointeur de texte", SRC(a.__nSetString(L"abc")), 110, KV_ERR_TYPE, nullptr},
    {"point vers texte", SRC(a.SetPoint({1, 2})), 16, KV_ERR_CONVERSION, nullptr},
    {"valeur sans type", SRC(a.Vide()), 16, KV_ERR_CONVERSION, nullptr},
    {"vers un code inconnu", SRC(a.SetInt(1)), 152, KV_ERR_TYPE, nullptr},
};
#undef SRC

class AnyConversion : public testing::TestWithParam<STCasConversion> {};

TEST_P(AnyConversion, CastTo) {
    const STCasConversion& c = GetParam();
    CAny a;
    c.pfnSource(a);
    uint16_t nAvant = a.nGetType();
    std::wstring sAvant = Texte(a);
    EXPECT_EQ(a.__nCastTo(c.nCible), c.nResultat);
    if (KV_bSucces(c.nResultat)) {
        EXPECT_EQ(a.nGetType(), c.nCible);
        EXPECT_EQ(Texte(a), c.pszTexte);
    } else {
        EXPECT_EQ(a.nGetType(), nAvant) << "unchanged on failure";
        EXPECT_EQ(Texte(a), sAvant);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, AnyConversion, testing::ValuesIn(gtabConversions),
                         [](const testing::TestParamInfo<STCasConversion>& i) {
                             std::string s = i.param.pszNom;
                             for (char& ch : s)
                                 if (!isalnum(static_cast<unsigned char>(ch)))
                                     ch = '_';
                             return s;
                         });

TEST(Any, LecteursBornesEtTexteHostile) {
    CAny a;
    a.SetUINT_64(1ul << 40);
    int n = 7;
    EXPECT_EQ(a.nGetINT(&n), KV_ERR_DEPASSEMENT);
    EXPECT_EQ(n, 7) << "output untouched on failure";
    long l = 0;
    ASSERT_EQ(a.nGetINT_64(&l), KV_OK);
    EXPECT_EQ(l, 1l << 40);

    const wchar_t* tabHostiles[] = {
        L"",    L" ",       L"-",      L"+",    L"1e",           L"--1",   L"1.2.3", L"nan",
        L"inf", L"1e99999", L"\u00e9", L"12 3", L"\x0661\x0662", L"0x1p3", L"1,5"};
    for (const wchar_t* psz : tabHostiles) {
        CAny h = Chaine(psz);
        n = 7;
        double r = 7;
        EXPECT_GT(h.nGetINT(&n), 99) << psz;
        EXPECT_GT(h.nGetREAL(&r), 99);
        EXPECT_EQ(n, 7);
        EXPECT_EQ(r, 7);
        EXPECT_EQ(h.nGetType(), 16);
    }
    CAny e = Chaine(std::wstring(100000, L'7').c_str());
    EXPECT_EQ(e.nGetINT_64(&l), KV_ERR_DEPASSEMENT);
}

// Every text into every type, then every value into every type: each step either succeeds or
// leaves the value as it was, and nothing reads out of bounds (the sanitizers watch).
TEST(Any, TexteHostileDansChaqueType) {
    const char* tabTextes[] = {"",
                               "0",
                               "-1",
                               "1e400",
                               "\xFF\xFE",
                               "true",
                               "20240115",
                               "1230",
                               "12.5",
                               "x",
                               "99999999999999999999999",
                               "\xC3\xA9"};
    for (const STCasType& cSource : gtabTypes) {
        for (const char* psz : tabTextes) {
            CAny a;
            a.__SetType(cSource.nCode, 0);
            std::wstring sAvant = Texte(a);
            int nRes = a.pclGetIntern()->SetValueFromANSI(psz);
            if (!KV_bSucces(nRes)) {
                EXPECT_EQ(Texte(a), sAvant) << cSource.nCode << " " << psz;
            }
            for (const STCasType& cCible : gtabTypes) {
                CAny b = a;
                std::wstring sB = Texte(b);
                if (!KV_bSucces(b.__nCastTo(cCible.nCode))) {
                    EXPECT_EQ(b.nGetType(), a.nGetType());
                    EXPECT_EQ(Texte(b), sB);
                }
            }
        }
    }
}

TEST(Any, BitFieldZeroEtendSelonLaLargeur) {
    struct {
        void (*pfn)(CAny&);
        unsigned long nAttendu;
    } tab[] = {
        {[](CAny& a) { a.SetInt(-1); }, 0xFFFFFFFFul},
        {[](CAny& a) { a.SetINT_64(-1); }, ~0ul},
        {[](CAny& a) { a.__nSetString(L"18446744073709551615"); }, ~0ul},
        {[](CAny& a) { a.__nSetString(L"-2"); }, ~1ul},
        {[](CAny& a) { a.SetBool(true); }, 1ul},
    };
    for (const auto& c : tab) {
        CAny a;
        c.pfn(a);
        unsigned long n = 0;
        ASSERT_EQ(a.nGetBitField_64(n), KV_OK) << Texte(a);
        EXPECT_EQ(n, c.nAttendu);
    }
    CAny a = Chaine(L"18446744073709551616");
    unsigned long n = 5;
    EXPECT_EQ(a.nGetBitField_64(n), KV_ERR_DEPASSEMENT);
    EXPECT_EQ(n, 5ul);
}

TEST(Any, TexteEtroitEnUtf8EtLatin1) {
    CAny a = Chaine(L"h\u00e9\u20ac");
    const char* psz = nullptr;
    ASSERT_EQ(a.__nCastToString(&psz), KV_OK);
    EXPECT_EQ(a.nGetType(), 19);
    EXPECT_STREQ(psz, "h\xC3\xA9\xE2\x82\xAC");

    CXYString<char> s;
    STOCAW stLatin1{sizeof(STOCAW), 28591};
    CAny w = Chaine(L"h\u00e9\u20ac");
    ASSERT_EQ(w.__nFillString(s, &stLatin1), KV_OK);
    EXPECT_STREQ(s.pszGet(), "h\xE9?");
    STOCAW stInconnu{sizeof(STOCAW), 1234};
    EXPECT_EQ(w.__nFillString(s, &stInconnu), KV_ERR_PARAMETRE);

    CAny b;
    b.__SetType(16, 0);
    ASSERT_EQ(b.pclGetIntern()->SetValueFromANSI("\xE9t\xE9", 28591u), KV_OK);
    EXPECT_EQ(Texte(b), L"\u00e9t\u00e9");
    b.__SetType(19, 0);
    ASSERT_EQ(b.pclGetIntern()->SetValueFromANSI("\xE9", 28591u), KV_OK);
    EXPECT_STREQ(b.pclGetIntern()->nGetPCASTR(), "\xE9") << "stored in the code page named";
}

// ---- sharing and references ---------------------------------------------------------------

TEST(Any, CopiesPartagentChainesEtBinaires) {
    CXYString<wchar_t> s(L"partage");
    CAny a;
    a.SetString(s);
    EXPECT_EQ(s.nGetRef(), 2);
    {
        CAny b = a;
        EXPECT_EQ(b.pclGetIntern()->nGetPCWSTR(), s.pGetBrut());
        EXPECT_EQ(s.nGetRef(), 3);
        ASSERT_EQ(b.nUnshare(), KV_OK);
        EXPECT_NE(b.pclGetIntern()->nGetPCWSTR(), s.pGetBrut());
        EXPECT_EQ(Texte(b), L"partage");
        EXPECT_EQ(s.nGetRef(), 2);
        CAny c = a;
        c.__SetType(148, 1);
        EXPECT_EQ(c.pclGetIntern()->nGetPCWSTR(), s.pGetBrut()) << "16 and 148 share the string";
    }
    EXPECT_EQ(s.nGetRef(), 2);

    CKLBIN bin("a\0b", 3);
    CAny x;
    x.SetBinary(bin);
    CAny y;
    y = x;
    EXPECT_EQ(bin.nGetRef(), 3);
    ASSERT_EQ(y.__SetType(29, 1), KV_OK);
    EXPECT_EQ(y.pclGetIntern()->nGetDataAdr(), bin.pGetDonnees());
    ASSERT_EQ(y.nUnshare(), KV_OK);
    EXPECT_NE(y.pclGetIntern()->nGetDataAdr(), bin.pGetDonnees());
    EXPECT_EQ(bin.nGetRef(), 2);
    CKLBIN lu;
    ASSERT_EQ(y.nFillBinary(lu), KV_OK);
    EXPECT_EQ(lu, bin);
    x.Vide();
    EXPECT_EQ(bin.nGetRef(), 1);
}

TEST(Any, ObjetsEtTableauxComptes) {
    CObjetCompte o;
    {
        CAny a;
        ASSERT_EQ(a.SetObjet(&o), KV_OK);
        EXPECT_EQ(o.m_nRef, 1);
        CAny b(a);
        EXPECT_EQ(o.m_nRef, 2);
        ASSERT_EQ(b.__SetType(111, 1), KV_OK);
        EXPECT_EQ(b.piGetObjet(), &o) << "objects keep their reference across object codes";
        EXPECT_EQ(o.m_nRef, 2);
        EXPECT_GT(b.__SetType(16, 1), 99);
        EXPECT_EQ(o.m_nRef, 1);
        EXPECT_EQ(a.SetObjet(&o, 16), KV_ERR_TYPE);
        IInterfaceObjetBase* pi = &o;
        EXPECT_EQ(a.pclGetIntern()->SetValue(&pi, sizeof pi), KV_ERR_TYPE)
            << "bytes never become a reference";
        EXPECT_EQ(o.m_nRef, 1);
    }
    EXPECT_EQ(o.m_nRef, 0);

    CAny t;
    ASSERT_EQ(t.SetTableau(&o, 16), KV_OK);
    EXPECT_EQ(t.nGetType(), 16 | CAny::knTableau);
    EXPECT_EQ(t.piGetObjet(), &o);
    {
        CAny u = t;
        EXPECT_EQ(o.m_nRef, 2);
        CAny v = std::move(u);
        EXPECT_EQ(u.nGetType(), 0);
        EXPECT_EQ(o.m_nRef, 2);
    }
    EXPECT_EQ(o.m_nRef, 1);
    t.SetInt(0);
    EXPECT_EQ(o.m_nRef, 0);
}

TEST(Any, SwapEchangeValeursEtImplementations) {
    CAny a, b = Chaine(L"x");
    a.SetInt(5);
    swap(a, b);
    EXPECT_EQ(a.nGetType(), 16);
    EXPECT_EQ(b.nGetType(), 8);
    EXPECT_STREQ(a.pclGetIntern()->vpszNomClasse(), "CAny_KLDSTRW");
    EXPECT_STREQ(b.pclGetIntern()->vpszNomClasse(), "CAny_KLI4");
    EXPECT_EQ(static_cast<const void*>(a.pclGetIntern()), static_cast<const void*>(&a));
    EXPECT_EQ(static_cast<const void*>(b.pclGetIntern()), static_cast<const void*>(&b));
    EXPECT_EQ(Texte(a), L"x");
    EXPECT_EQ(Texte(b), L"5");
}

// ---- text or bytes, and the host's operations ---------------------------------------------

TEST(Any, ManipAUBTexteOctetsEtConversion) {
    STManipAUB st{};
    CAny w = Chaine(L"abc");
    ASSERT_EQ(w.nGetManipAUB(&st), KV_OK);
    EXPECT_EQ(st.nType, 16);
    EXPECT_EQ(st.pGetDonnees(), w.pclGetIntern()->nGetPCWSTR());
    EXPECT_EQ(st.nGetTaille(), 3 * sizeof(wchar_t));

    CAny n;
    ASSERT_EQ(n.SetStringA("abcd"), KV_OK);
    ASSERT_EQ(n.nGetManipAUB(&st), KV_OK);
    EXPECT_EQ(st.nType, 19);
    EXPECT_EQ(st.svOctets(), "abcd");

    CAny b;
    ASSERT_EQ(b.SetBinary("a\0b", 3), KV_OK);
    ASSERT_EQ(b.nGetManipAUB(&st), KV_OK);
    EXPECT_EQ(st.nType, 28);
    EXPECT_EQ(st.svOctets(), std::string_view("a\0b", 3));

    CAny i;
    i.SetInt(-42);
    ASSERT_EQ(i.nGetManipAUB(&st), KV_OK);
    EXPECT_EQ(i.nGetType(), 16) << "a number is turned into text in place";
    EXPECT_EQ(std::wstring_view(static_cast<const wchar_t*>(st.pGetDonnees()), 3), L"-42");

    CAny p;
    p.SetPoint({1, 2});
    EXPECT_GT(p.nGetManipAUB(&st), 99);
}

TEST(Any, OperationsDeLImplementation) {
    CAny s = Chaine(L"abcd");
    CAny_Intern* pi = s.pclGetIntern();
    EXPECT_EQ(pi->nGetDataSize(), 5 * sizeof(wchar_t));
    EXPECT_EQ(pi->nGetUtilDataSize(), 4 * sizeof(wchar_t));
    EXPECT_EQ(pi->nGetSTRLEN(), 4u);
    wchar_t sz[8] = {};
    EXPECT_EQ(pi->nFillUtilDataBuffer(sz, 2 * sizeof(wchar_t)), KV_TRONQUE);
    EXPECT_EQ(std::wstring_view(sz), L"ab");
    EXPECT_EQ(pi->nFillDataBuffer(sz, 2 * sizeof(wchar_t)), KV_ERR_PARAMETRE);
    ASSERT_EQ(pi->nFillDataBuffer(sz, sizeof sz), KV_OK);
    EXPECT_STREQ(sz, L"abcd");

    CAny u;
    u.__SetType(2, 0);
    uint8_t by = 255;
    ASSERT_EQ(u.pclGetIntern()->SetValue(&by, 1), KV_OK);
    EXPECT_EQ(u.pclGetIntern()->SetValue(&by, 2), KV_ERR_PARAMETRE);
    EXPECT_EQ(u.pclGetIntern()->nIncremente(), KV_ERR_DEPASSEMENT);
    EXPECT_EQ(Texte(u), L"255");
    ASSERT_EQ(u.pclGetIntern()->nDecremente(), KV_OK);
    EXPECT_EQ(Texte(u), L"254");
    EXPECT_TRUE(u.pclGetIntern()->bIsPositive());

    CAny m = Chaine(L"-0.5");
    ASSERT_EQ(m.__nCastTo(10), KV_OK);
    EXPECT_FALSE(m.pclGetIntern()->bIsPositive());
    ASSERT_EQ(m.pclGetIntern()->nIncremente(), KV_OK);
    EXPECT_EQ(Texte(m), L"0.5");

    CAny o;
    o.__SetType(8, 0);
    ASSERT_EQ(o.pclGetIntern()->SetValueOption("1234", 4, 19), KV_OK);
    EXPECT_EQ(Texte(o), L"1234");
    EXPECT_EQ(o.pclGetIntern()->SetValueFromUNICODE(L"x1"), KV_ERR_CONVERSION);
    EXPECT_EQ(Texte(o), L"1234");
    ASSERT_EQ(o.pclGetIntern()->SetValueFromUNICODE(L"-77", 2, 0), KV_OK);
    EXPECT_EQ(Texte(o), L"-7");
}

TEST(Any, BinaireDe8OctetsVersDureeEtDateHeure) {
    CAny a;
    int64_t nMilli = -90061001;
    ASSERT_EQ(a.SetBinary(&nMilli, sizeof nMilli), KV_OK);
    ASSERT_EQ(a.nCastFrom_BIN_DUREE_To_DUREE(), KV_OK);
    long l = 0;
    ASSERT_EQ(a.nGetDuree(&l), KV_OK);
    EXPECT_EQ(l, nMilli);
    EXPECT_EQ(a.nCastFrom_BIN_DUREE_To_DUREE(), KV_ERR_TYPE);

    CDateTime d = DateTest();
    ASSERT_EQ(a.SetBinary(&d, sizeof d), KV_OK);
    ASSERT_EQ(a.nCastFrom_BIN_DATEHEURE_To_DATEHEURE(), KV_OK);
    EXPECT_EQ(Texte(a), L"20240115123045678");

    unsigned char tabFaux[8] = {1, 13, 0xE8, 0x07, 0, 0, 0, 0}; // month 13
    ASSERT_EQ(a.SetBinary(tabFaux, 8), KV_OK);
    EXPECT_EQ(a.nCastFrom_BIN_DATEHEURE_To_DATEHEURE(), KV_ERR_CONVERSION);
    ASSERT_EQ(a.SetBinary(tabFaux, 7), KV_OK);
    EXPECT_EQ(a.nCastFrom_BIN_DUREE_To_DUREE(), KV_ERR_CONVERSION);
    EXPECT_EQ(a.nGetType(), 28);
}

// ---- setting a value again ----------------------------------------------------------------

// Numbers and booleans set over a value give the same value, byte for byte, whatever it held
// before: the same type (kept in place), another one, or a shared text (let go).
struct STSetCase {
    const char* pszName;
    void (*pfSet)(CAny&);
};
void PrintTo(const STSetCase& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

const STSetCase gtabSets[] = {
    {"Bool", [](CAny& a) { a.SetBool(true); }},
    {"Int", [](CAny& a) { a.SetInt(-7); }},
    {"INT_64", [](CAny& a) { a.SetINT_64(-1234567890123L); }},
    {"UINT_64", [](CAny& a) { a.SetUINT_64(~0UL); }},
    {"REAL", [](CAny& a) { a.SetREAL(-2.5); }},
};

class AnySetAgain : public testing::TestWithParam<STSetCase> {};

TEST_P(AnySetAgain, SameResultWhateverCameBefore) {
    const STSetCase& stCase = GetParam();
    CAny clFresh;
    stCase.pfSet(clFresh);
    CXYString<wchar_t> sShared(L"shared text");
    const std::pair<const char*, void (*)(CAny&, CXYString<wchar_t>&)> atabBefore[] = {
        {"nothing", [](CAny&, CXYString<wchar_t>&) {}},
        {"false", [](CAny& a, CXYString<wchar_t>&) { a.SetBool(false); }},
        {"int", [](CAny& a, CXYString<wchar_t>&) { a.SetInt(123456); }},
        {"int64", [](CAny& a, CXYString<wchar_t>&) { a.SetINT_64(-1); }},
        {"uint64", [](CAny& a, CXYString<wchar_t>&) { a.SetUINT_64(42); }},
        {"real", [](CAny& a, CXYString<wchar_t>&) { a.SetREAL(1e300); }},
        {"text", [](CAny& a, CXYString<wchar_t>& s) { a.SetString(s); }},
        {"twice", [](CAny& a, CXYString<wchar_t>&) { a.SetINT_64(-1), a.SetREAL(-0.0); }},
    };
    for (const auto& [pszBefore, pfBefore] : atabBefore) {
        CAny a;
        pfBefore(a, sShared);
        stCase.pfSet(a);
        EXPECT_EQ(a.nGetType(), clFresh.nGetType()) << pszBefore;
        EXPECT_STREQ(a.pclGetIntern()->vpszNomClasse(), clFresh.pclGetIntern()->vpszNomClasse())
            << pszBefore;
        EXPECT_EQ(std::memcmp(a.pGetValeur(), clFresh.pGetValeur(), CAny::knTailleValeur), 0)
            << pszBefore;
        EXPECT_EQ(Texte(a), Texte(clFresh)) << pszBefore;
        EXPECT_EQ(sShared.nGetRef(), 1) << pszBefore << ": the text was let go";
    }
}

INSTANTIATE_TEST_SUITE_P(Setters, AnySetAgain, testing::ValuesIn(gtabSets),
                         [](const auto& info) { return std::string(info.param.pszName); });

// A text set over a text that nobody shares goes into its block when it fits; a shared block
// is never written.
TEST(Any, SetStringReusesItsOwnUnsharedText) {
    CAny a = Chaine(L"a first text, long enough");
    const wchar_t* pBlock = a.pclGetIntern()->nGetPCWSTR();
    ASSERT_EQ(a.__nSetString(L"shorter"), KV_OK);
    EXPECT_EQ(a.pclGetIntern()->nGetPCWSTR(), pBlock);
    EXPECT_EQ(Texte(a), L"shorter");
    EXPECT_EQ(a.pclGetIntern()->nGetSTRLEN(), 7u);

    CAny b = a;
    ASSERT_EQ(a.__nSetString(L"other"), KV_OK);
    EXPECT_NE(a.pclGetIntern()->nGetPCWSTR(), pBlock);
    EXPECT_EQ(Texte(b), L"shorter") << "the copy keeps its text";
    EXPECT_EQ(Texte(a), L"other");

    ASSERT_EQ(a.__nSetString(a.pclGetIntern()->nGetPCWSTR() + 1, 3), KV_OK);
    EXPECT_EQ(Texte(a), L"the") << "from its own text";
    EXPECT_EQ(a.__nSetString(L"x", 0x1FFFFFC0), KV_ERR_TROP_LONG);
    EXPECT_EQ(a.__nSetString(L"x", -2), KV_ERR_PARAMETRE);
    EXPECT_EQ(Texte(a), L"the") << "a refused text changes nothing";
    ASSERT_EQ(a.__nSetString(L""), KV_OK);
    EXPECT_EQ(a.nGetType(), 16);
    EXPECT_EQ(Texte(a), L"");

    CAny n;
    ASSERT_EQ(n.SetStringA("narrow text"), KV_OK);
    const char* pNarrow = n.pclGetIntern()->nGetPCASTR();
    ASSERT_EQ(n.SetStringA("narrow"), KV_OK);
    EXPECT_EQ(n.pclGetIntern()->nGetPCASTR(), pNarrow);
    CAny m = n;
    ASSERT_EQ(n.SetStringA("other"), KV_OK);
    EXPECT_NE(n.pclGetIntern()->nGetPCASTR(), pNarrow);
    EXPECT_STREQ(m.pclGetIntern()->nGetPCASTR(), "narrow");
    EXPECT_STREQ(n.pclGetIntern()->nGetPCASTR(), "other");
}

} // namespace
