// The VM without the component: returned values read back from their forms, the host
// functions through the stack, arrays, services, dates and the argument forms.
#include "Any.h"
#include "ArgumentBlock.h"
#include "HostArray.h"
#include "HostVM.h"
#include "KLBIN.h"
#include "ManipAUB.h"
#include "MemoImage.h"
#include "ObjectSerializer.h"
#include "VMErrors.h"
#include "XError.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <cctype>

#include <cstdio>
#include <cstring>
#include <fstream>

namespace {

// ---- Values returned by stubs ---------------------------------------------------------------

std::string s_sEcrit(const CHostValue& cl) {
    switch (cl.eKind()) {
    case CHostValue::KIND_BOOLEAN:
        return cl.bGetBoolean() ? "true" : "false";
    case CHostValue::KIND_INTEGER:
        return std::to_string(cl.nGetInteger());
    case CHostValue::KIND_REAL:
        return std::to_string(cl.rGetReal());
    case CHostValue::KIND_STRING:
        return cl.sGetString();
    case CHostValue::KIND_DATETIME:
        return CHostValue::s_sFormatDate(cl.dtGetDateTime());
    default:
        return cl.pszKindName();
    }
}

TEST(VM, ValeursRetourneesLuesDeLeurForme) {
    {
        int32_t n = 7;
        CHostValue cl;
        ASSERT_TRUE(CHostVM::s_bReadValue(&n, 1, cl));
        EXPECT_EQ(s_sEcrit(cl), "true") << "a boolean is any int not 0";
    }
    const int32_t n8 = -5;
    const int64_t n9 = 1LL << 40;
    const double r = 2.5;
    const char c = 'x';
    const wchar_t* psz = L"été";
    const wchar_t* pszNul = nullptr;
    CXYString<wchar_t> sW(L"ça");
    CXYString<char> sA("a\0b", 3);
    CKLBIN clBin("\x01\x02\xff", 3);
    CDateTime dt;
    ASSERT_TRUE(CHostValue::s_bParseDate("2024-02-29T23:59:58.007", dt));
    CAny clAny;
    clAny.SetInt(42);
    struct {
        int nType;
        const void* p;
        CHostValue::eKIND eKind;
        std::string sAttendu;
    } tabCas[] = {
        {8, &n8, CHostValue::KIND_INTEGER, "-5"},
        {9, &n9, CHostValue::KIND_INTEGER, "1099511627776"},
        {12, &r, CHostValue::KIND_REAL, std::to_string(2.5)},
        {17, &c, CHostValue::KIND_STRING, "x"},
        {122, &psz, CHostValue::KIND_STRING, "été"},
        {122, &pszNul, CHostValue::KIND_STRING, ""},
        {16, &sW, CHostValue::KIND_STRING, "ça"},
        {19, &sA, CHostValue::KIND_STRING, std::string("a\0b", 3)},
        {28, &clBin, CHostValue::KIND_STRING, "\x01\x02\xff"},
        {26, &dt, CHostValue::KIND_DATETIME, "2024-02-29T23:59:58.007"},
        {31, &clAny, CHostValue::KIND_INTEGER, "42"},
    };
    for (auto& st : tabCas) {
        CHostValue cl;
        ASSERT_TRUE(CHostVM::s_bReadValue(st.p, st.nType, cl)) << st.nType;
        EXPECT_EQ(cl.eKind(), st.eKind) << st.nType;
        EXPECT_EQ(s_sEcrit(cl), st.sAttendu) << st.nType;
    }
    EXPECT_EQ(sW.nGetRef(), 1) << "reading takes no reference it keeps";
    // An image is read as its bytes, held or in its file; a file that cannot be read is no value.
    const std::string sFichier = testing::TempDir() + "kvggl-image.gif";
    std::ofstream(sFichier, std::ios::binary) << std::string("GIF89a\0\1", 8);
    const std::wstring sFichierW(sFichier.begin(), sFichier.end());
    const struct {
        CKLMemoImage clImage;
        bool bLue;
        std::string sOctets;
    } tabImages[] = {
        {CKLMemoImage::s_Octets(clBin), true, "\x01\x02\xff"},
        {CKLMemoImage::s_Fichier(sFichierW), true, std::string("GIF89a\0\1", 8)},
        {CKLMemoImage(), true, ""},
        {CKLMemoImage::s_Fichier(sFichierW + L".absent"), false, ""},
    };
    for (const auto& st : tabImages) {
        CHostValue cl;
        EXPECT_EQ(CHostVM::s_bReadValue(&st.clImage, 30, cl), st.bLue) << st.sOctets;
        EXPECT_EQ(cl.sGetString(), st.sOctets);
    }
    std::remove(sFichier.c_str());
}

TEST(VM, RetourDansLeContexteDeLAppel) {
    CHostVM clVM;
    CCallContext clCtx(&clVM);
    const wchar_t* psz = L"abc";
    EXPECT_EQ(clVM.bRetourneValeur(&clCtx, &psz, 122), 1);
    EXPECT_TRUE(clCtx.m_bReturned);
    EXPECT_EQ(clCtx.m_clResult.sGetString(), "abc");

    // An array comes with a reference the VM takes over, even for a context it does not know.
    int nAvant = CHostArray::s_nLive();
    IKLTableau* piTableau = clVM.pclAlloueTableau(16, 1, nullptr);
    EXPECT_EQ(CHostArray::s_nLive(), nAvant + 1);
    CCtxInfo clEtranger{nullptr, nullptr, &clVM};
    EXPECT_EQ(clVM.bRetourneValeur(&clEtranger, &piTableau, 112), 0);
    EXPECT_EQ(CHostArray::s_nLive(), nAvant);

    int nAppel = clVM.nBeginCall(&clCtx);
    int32_t n = 3;
    EXPECT_EQ(clVM.bRetourneValeurAppel(nAppel, &n, 8), 1);
    EXPECT_EQ(clCtx.m_clResult.nGetInteger(), 3);
    clVM.EndCall(nAppel);
    EXPECT_EQ(clVM.bRetourneValeurAppel(nAppel, &n, 8), 0) << "the call is over";
}

// ---- Host functions through the stack -------------------------------------------------------

TEST(VM, FonctionsHotePar297Et334) {
    if (!CHostVM::s_bHasHostFunctions())
        GTEST_SKIP() << "a build without host/services";
    CHostVM clVM;
    CXError clErreur;
    CAny clRecepteur;
    ASSERT_TRUE(clVM.bEmpileChaineA("a b/é", 0));
    ASSERT_TRUE(clVM.bEmpileAny(&clRecepteur));
    ASSERT_TRUE(clVM.bAppelleFonctionVM(8, 297, 0, 1, &clErreur));
    const char* pszEncode = nullptr;
    ASSERT_EQ(clRecepteur.__nCastToString(&pszEncode), 0);
    EXPECT_STREQ(pszEncode, "a%20b/%C3%A9");
    // The stack is empty afterwards: a call with nothing stacked is refused.
    EXPECT_FALSE(clVM.bAppelleFonctionVM(8, 297, 0, 1, &clErreur));
    EXPECT_EQ(clErreur.nGetUserErrorCode(), static_cast<unsigned>(VMERROR_BAD_PARAMETERS));

    // UTC to local and back gives the date again, in the host's digit form.
    CDateTime dt;
    ASSERT_TRUE(CHostValue::s_bParseDate("2023-07-14T10:20:30.400", dt));
    CAny clLocal, clRetour;
    CXError clPropre;
    clVM.bEmpileDateHeure(&dt);
    clVM.bEmpileAny(&clLocal);
    ASSERT_TRUE(clVM.bAppelleFonctionVM(8, 334, 0, 1, &clPropre));
    const wchar_t* pszLocal = nullptr;
    ASSERT_EQ(clLocal.__nCastToString(&pszLocal), 0);
    CDateTime dtLocal;
    ASSERT_TRUE(dtLocal.FromString(pszLocal)) << "17 digits";
    clVM.bEmpileDateHeure(&dtLocal);
    clVM.bEmpileAny(&clRetour);
    ASSERT_TRUE(clVM.bAppelleFonctionVM(8, 335, 0, 1, &clPropre));
    const wchar_t* pszRetour = nullptr;
    ASSERT_EQ(clRetour.__nCastToString(&pszRetour), 0);
    EXPECT_STREQ(pszRetour, L"20230714102030400");
    EXPECT_EQ(clVM.nFunctionCalls(334), 1);
}

TEST(VM, FonctionInconnueEtServices) {
    CHostVM clVM;
    CXError clErreur;
    CAny clRecepteur;
    clRecepteur.SetInt(5);
    clVM.bEmpileChaineA("x", 1);
    clVM.bEmpileAny(&clRecepteur);
    EXPECT_FALSE(clVM.bAppelleFonctionVM(8, 999, 0, 1, &clErreur));
    EXPECT_EQ(clErreur.nGetUserErrorCode(), static_cast<unsigned>(VMERROR_FUNCTION_UNAVAILABLE));
    EXPECT_EQ(clErreur.nGetErrorLevel(), ELEVEL_ERREUR);
    int n = 0;
    EXPECT_EQ(clRecepteur.nGetINT(&n), 0);
    EXPECT_EQ(n, 5) << "the receiver is untouched";

    EXPECT_NE(clVM.piGetService(8, nullptr), nullptr);
    CXError clService;
    EXPECT_EQ(clVM.piGetService(3, &clService), nullptr);
    EXPECT_EQ(clService.nGetUserErrorCode(), static_cast<unsigned>(VMERROR_NO_SERVICE));
    CXError clLogin;
    EXPECT_EQ(clVM.piGetAuthentification(&clLogin), nullptr) << "none given";
    EXPECT_FALSE(clLogin.bEstPropre());

    clVM.SetPosition(L"Clic", L"BTN_OK", 12);
    EXPECT_STREQ(reinterpret_cast<const wchar_t*>(clVM.nInfoVM(13, 1)), L"Clic");
    EXPECT_STREQ(reinterpret_cast<const wchar_t*>(clVM.nInfoVM(13, 2)), L"BTN_OK");
    EXPECT_EQ(clVM.nInfoVM(13, 3), 12);
    EXPECT_EQ(clVM.nInfoVM(14, 1), 0);
}

// ---- Arrays ---------------------------------------------------------------------------------

TEST(VM, TableauxConvertissentAuTypeDesElements) {
    CHostVM clVM;
    CXError clErreur;
    CRef<IKLTableau> cl = CRef<IKLTableau>::Adopt(clVM.pclAlloueTableau(16, 1, &clErreur));
    ASSERT_TRUE(cl);
    ASSERT_TRUE(cl->vbInitialise(nullptr, 0, 0, &clVM, &clErreur));
    ASSERT_TRUE(cl->vbRedimensionne(2, &clErreur));
    CAny clEntier, clLu;
    clEntier.SetInt(42);
    ASSERT_TRUE(cl->vbSetElement(1, clEntier, &clErreur));
    ASSERT_TRUE(cl->vbGetElement(1, clLu, &clErreur));
    EXPECT_EQ(clLu.nGetType(), 16) << "stored as the element type";
    const wchar_t* psz = nullptr;
    ASSERT_EQ(clLu.__nCastToString(&psz), 0);
    EXPECT_STREQ(psz, L"42");
    ASSERT_TRUE(cl->vbGetElement(0, clLu, &clErreur));
    EXPECT_EQ(clLu.nGetType(), 16) << "a new element is an empty value of the type";

    EXPECT_FALSE(cl->vbGetElement(2, clLu, &clErreur));
    EXPECT_EQ(clErreur.nGetUserErrorCode(), static_cast<unsigned>(VMERROR_ARRAY_INDEX));
    CXError clNegatif;
    EXPECT_FALSE(cl->vbRedimensionne(-1, &clNegatif));

    CRef<IKLTableau> clEntiers = CRef<IKLTableau>::Adopt(clVM.pclAlloueTableau(8, 1, nullptr));
    CAny clTexte;
    clTexte.__nSetString(L"pas un nombre");
    CXError clType;
    clEntiers->vbRedimensionne(1, &clType);
    EXPECT_FALSE(clEntiers->vbSetElement(0, clTexte, &clType));
    EXPECT_EQ(clType.nGetUserErrorCode(), static_cast<unsigned>(VMERROR_ARRAY_TYPE));
}

TEST(VM, TableauxDeValeursHote) {
    int nAvant = CHostArray::s_nLive();
    {
        CHostValue clTab = CHostValue::s_Array(
            {CHostValue::s_Integer(1), CHostValue::s_Real(2.5), CHostValue::s_Integer(3)});
        CAny clAny;
        CXError clErreur;
        ASSERT_TRUE(clTab.bToAny(clAny, &clErreur));
        EXPECT_EQ(clAny.nGetType(), 12 | CAny::knTableau) << "integers and reals mix as reals";
        CHostValue clRetour;
        ASSERT_TRUE(CHostValue::s_bFromAny(clAny, clRetour));
        ASSERT_EQ(clRetour.tabGetArray().size(), 3u);
        EXPECT_EQ(clRetour.tabGetArray()[1].rGetReal(), 2.5);

        CHostValue clMele =
            CHostValue::s_Array({CHostValue::s_Integer(1), CHostValue::s_String("a")});
        CAny clRefuse;
        EXPECT_FALSE(clMele.bToAny(clRefuse, &clErreur));
    }
    EXPECT_EQ(CHostArray::s_nLive(), nAvant) << "no array outlives its values";
}

// ---- Dates and base64 -----------------------------------------------------------------------

struct STCasDate {
    const char* psz;
    bool bValide;
    const char* pszForme;
};
const STCasDate gtabDates[] = {
    {"2024-05-01", true, "2024-05-01T00:00:00.000"},
    {"2024-05-01T10:20", true, "2024-05-01T10:20:00.000"},
    {"2024-05-01 10:20:30", true, "2024-05-01T10:20:30.000"},
    {"2024-05-01T10:20:30.5", true, "2024-05-01T10:20:30.500"},
    {"2024-05-01T10:20:30.123", true, "2024-05-01T10:20:30.123"},
    {"2023-02-29", false, ""}, // no such day
    {"2024-13-01", false, ""},
    {"2024-05-01T24:00", false, ""},
    {"2024-5-1", false, ""},
    {"2024-05-01T10:20:30.1234", false, ""},
    {"2024-05-01Z", false, ""},
    {"", false, ""},
};
class Dates : public testing::TestWithParam<STCasDate> {};
TEST_P(Dates, LuesEtEcrites) {
    CDateTime dt;
    ASSERT_EQ(CHostValue::s_bParseDate(GetParam().psz, dt), GetParam().bValide);
    if (GetParam().bValide) {
        EXPECT_EQ(CHostValue::s_sFormatDate(dt), GetParam().pszForme);
    }
}
INSTANTIATE_TEST_SUITE_P(VM, Dates, testing::ValuesIn(gtabDates), [](const auto& st) {
    std::string s = "cas" + std::to_string(st.index) + "_";
    for (const char* p = st.param.psz; *p; ++p)
        if (std::isdigit(static_cast<unsigned char>(*p)))
            s += *p;
    return s;
});

TEST(VM, Base64AllerRetour) {
    for (std::string s : {std::string(), std::string("a"), std::string("ab"), std::string("abc"),
                          std::string("\0\xff\x10zz", 5)}) {
        std::string sRetour;
        ASSERT_TRUE(CObjectSerializer::s_bFromBase64(CObjectSerializer::s_sBase64(s), sRetour));
        EXPECT_EQ(sRetour, s);
    }
    EXPECT_EQ(CObjectSerializer::s_sBase64("Man"), "TWFu");
    std::string s;
    EXPECT_FALSE(CObjectSerializer::s_bFromBase64("TWF", s));
    EXPECT_FALSE(CObjectSerializer::s_bFromBase64("TW!u", s));
}

// ---- Argument forms -------------------------------------------------------------------------

TEST(VM, ArgumentsDansLaFormeDeLeurType) {
    CArgumentBlock cl;
    std::string sPourquoi;
    ASSERT_TRUE(cl.bAdd({8, 0}, CHostValue::s_Real(4.0), nullptr, sPourquoi));
    ASSERT_TRUE(cl.bAdd({122, 0}, CHostValue::s_String("é"), nullptr, sPourquoi));
    ASSERT_TRUE(cl.bAdd({130, 0}, CHostValue::s_Integer(12), nullptr, sPourquoi));
    ASSERT_TRUE(
        cl.bAdd({0x801A, 0}, CHostValue::s_String("2024-01-02T03:04:05"), nullptr, sPourquoi));
    ASSERT_TRUE(cl.bAdd({80, 0}, CHostValue::s_String("f.txt"), nullptr, sPourquoi));
    ASSERT_TRUE(cl.bAdd({58, 0},
                        CHostValue::s_Array({CHostValue::s_String("a"), CHostValue::s_Integer(2)}),
                        nullptr, sPourquoi));
    ASSERT_TRUE(cl.bAdd({122, 0}, CHostValue(), nullptr, sPourquoi));
    ASSERT_TRUE(cl.bAdd({28, 0}, CHostValue::s_String(std::string("\0\1", 2)), nullptr, sPourquoi));
    // An image: bytes that begin as one are the image, any other text names its file.
    const std::string sPNG("\x89PNG\r\n\x1a\n\0\0", 10);
    ASSERT_TRUE(cl.bAdd({30, 0}, CHostValue::s_String(sPNG), nullptr, sPourquoi));
    ASSERT_TRUE(cl.bAdd({30, 0}, CHostValue::s_String("BMW/carte.png"), nullptr, sPourquoi));
    unsigned char** pp = cl.ppArguments();
    int32_t n;
    std::memcpy(&n, pp[0], 4);
    EXPECT_EQ(n, 4);
    EXPECT_STREQ(*reinterpret_cast<const wchar_t**>(pp[1]), L"é");
    EXPECT_EQ(reinterpret_cast<const CXYString<wchar_t>*>(pp[2])->sv(), L"12");
    CDateTime dt;
    std::memcpy(&dt, pp[3], sizeof(dt));
    EXPECT_EQ(dt.nGetSeconde(), 5);
    STManipAUB st;
    std::memcpy(&st, pp[4], sizeof(st));
    EXPECT_EQ(st.nType, 16);
    EXPECT_EQ(st.qwTaille, 5 * sizeof(wchar_t));
    auto* ptab = *reinterpret_cast<CXYStringArray<wchar_t>**>(pp[5]);
    ASSERT_EQ(ptab->nGetNbElement(), 2u);
    EXPECT_EQ((*ptab)[1].sv(), L"2");
    EXPECT_EQ(*reinterpret_cast<const wchar_t**>(pp[6]), nullptr) << "nil is a null text";
    EXPECT_EQ(reinterpret_cast<const CKLBIN*>(pp[7])->nGetTaille(), 2u);
    const auto* pclImage = *reinterpret_cast<const CKLMemoImage**>(pp[8]);
    EXPECT_TRUE(pclImage->bEnMemoire());
    EXPECT_EQ(pclImage->pclGetBinDataEx()->sv(), sPNG);
    pclImage = *reinterpret_cast<const CKLMemoImage**>(pp[9]);
    EXPECT_FALSE(pclImage->bEnMemoire());
    EXPECT_STREQ(pclImage->pszGetChemin(), L"BMW/carte.png");

    struct {
        STSignatureItem st;
        CHostValue cl;
        const char* pszPourquoi;
    } tabRefus[] = {
        {{8, 0}, CHostValue::s_Real(1.5), "number has no integer representation"},
        {{8, 0}, CHostValue::s_Integer(1LL << 40), "number out of the range of a 32-bit integer"},
        {{1, 0}, CHostValue::s_Integer(1), "boolean expected"},
        {{26, 0}, CHostValue::s_String("demain"), "date expected as YYYY-MM-DDTHH:MM:SS[.mmm]"},
        {{111, 0}, CHostValue::s_String("x"), "object expected"},
        {{30, 0}, CHostValue::s_Integer(3), "string expected (the image's bytes or its file)"},
        {{65, 0}, CHostValue::s_String("x"), "a value of type 65, which this host cannot give"},
    };
    for (auto& stR : tabRefus) {
        CArgumentBlock clR;
        std::string s;
        EXPECT_FALSE(clR.bAdd(stR.st, stR.cl, nullptr, s));
        EXPECT_EQ(s, stR.pszPourquoi);
    }
}

} // namespace
