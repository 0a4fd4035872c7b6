// The host functions: URL encoding (297), UTC and local time (334, 335) under a time zone set
// by the test, and the case- and accent-blind character comparison.
#include "HostErrors.h"
#include "HostFunctions.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace {

// ---- 297

struct STEncodeCase {
    const char* pszName;
    std::string sIn;
    std::string sOut;
};

class UrlEncode : public testing::TestWithParam<STEncodeCase> {};

TEST_P(UrlEncode, KeepsWhatAURIMayHoldAndEncodesTheRest) {
    EXPECT_EQ(KVHost::UrlEncode(GetParam().sIn), GetParam().sOut);
}

const STEncodeCase gtabEncoding[] = {
    {"Empty", "", ""},
    {"Unreserved", "azAZ09-._~", "azAZ09-._~"},
    {"Reserved", ":/?[]@!$&'()*,;=", ":/?[]@!$&'()*,;="},
    // A "+" would reach the server as a space, a "#" would cut the address there.
    {"PlusAndHash", "a+b c#d", "a%2Bb%20c%23d"},
    {"SpaceAndPercent", "a b%c", "a%20b%25c"},
    {"JoinedParameter", "q=title contains 'x'&n=1", "q=title%20contains%20'x'&n=1"},
    {"Latin", "caf\xC3\xA9", "caf%C3%A9"},
    {"Euro", "\xE2\x82\xAC", "%E2%82%AC"},
    {"Emoji", "\xF0\x9F\x98\x80", "%F0%9F%98%80"},
    {"Unsafe", "\"<>\\^`{|}", "%22%3C%3E%5C%5E%60%7B%7C%7D"},
    {"Controls", std::string("\n\t\x7f\0", 4), "%0A%09%7F%00"},
    {"InvalidUtf8", "\xFF\xC3", "%FF%C3"},
};
INSTANTIATE_TEST_SUITE_P(HostFunctions, UrlEncode, testing::ValuesIn(gtabEncoding),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(HostFunctions, UrlEncodingOfEveryByteDecodesBack) {
    const std::string sKept =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?[]@!$&'()*,;=";
    for (int c = 0; c < 256; ++c) {
        std::string sIn(1, static_cast<char>(c));
        std::string sOut = KVHost::UrlEncode(sIn);
        if (sKept.find(static_cast<char>(c)) != std::string::npos) {
            EXPECT_EQ(sOut, sIn) << c;
        } else {
            ASSERT_EQ(sOut.size(), 3u) << c;
            EXPECT_EQ(sOut[0], '%');
            EXPECT_EQ(std::stoi(sOut.substr(1), nullptr, 16), c);
            EXPECT_EQ(sOut.substr(1), [&] {
                std::string s = sOut.substr(1);
                for (char& x : s)
                    x = static_cast<char>(std::toupper(static_cast<unsigned char>(x)));
                return s;
            }()) << "capitals";
        }
    }
}

// ---- 334, 335

CDateTime Date(const char* psz) {
    CDateTime cl;
    EXPECT_TRUE(cl.FromString(psz)) << psz;
    return cl;
}

std::string Text(const CDateTime& cl) {
    char sz[18];
    cl.ToString(sz);
    return std::string(sz, 17);
}

class TimeZone : public testing::Test {
protected:
    void Use(const char* pszZone) {
        ::setenv("TZ", pszZone, 1);
        ::tzset();
    }
    void SetUp() override {
        const char* psz = std::getenv("TZ");
        m_bHad = psz != nullptr;
        if (psz)
            m_sWas = psz;
    }
    void TearDown() override {
        if (m_bHad)
            ::setenv("TZ", m_sWas.c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    bool m_bHad = false;
    std::string m_sWas;
};

struct STTimeCase {
    const char* pszZone;
    const char* pszUtc; // YYYYMMDDHHMMSSmmm
    const char* pszLocal;
};

TEST_F(TimeZone, UtcToLocalAcrossTheYear) {
    const STTimeCase tab[] = {
        {"Europe/Paris", "20240115120000123", "20240115130000123"}, // winter, +1
        {"Europe/Paris", "20240715120000000", "20240715140000000"}, // summer, +2
        {"Europe/Paris", "20240331005959999", "20240331015959999"}, // last instant of winter
        {"Europe/Paris", "20240331010000000", "20240331030000000"}, // first of summer
        {"Europe/Paris", "20241027003000000", "20241027023000000"}, // 02:30 summer time
        {"Europe/Paris", "20241027013000000", "20241027023000000"}, // 02:30 again, winter time
        {"Europe/Paris", "20241231233000000", "20250101003000000"}, // into the next year
        {"America/New_York", "20240310070000000", "20240310030000000"},
        {"Australia/Sydney", "20240101000000000", "20240101110000000"},
        {"UTC", "20240229235959999", "20240229235959999"},
    };
    for (const STTimeCase& c : tab) {
        Use(c.pszZone);
        CDateTime clLocal;
        CXError clError;
        ASSERT_TRUE(KVHost::bUtcToLocal(Date(c.pszUtc), clLocal, &clError)) << c.pszUtc;
        EXPECT_EQ(Text(clLocal), c.pszLocal) << c.pszZone << " " << c.pszUtc;
    }
}

TEST_F(TimeZone, LocalToUtcAcrossTheYear) {
    const STTimeCase tab[] = {
        {"Europe/Paris", "20240115120000123", "20240115130000123"},
        {"Europe/Paris", "20240715120000000", "20240715140000000"},
        {"Europe/Paris", "20240331013000000", "20240331023000000"}, // skipped: read in winter time
        {"Europe/Paris", "20241027003000000", "20241027023000000"}, // twice: the first one
        {"Europe/Paris", "20241231233000000", "20250101003000000"},
        {"America/New_York", "20240310073000000", "20240310023000000"}, // skipped
        {"America/New_York", "20241103053000000", "20241103013000000"}, // twice
        {"Australia/Sydney", "20240406153000000", "20240407023000000"}, // twice, southern
        {"UTC", "20240229235959999", "20240229235959999"},
    };
    for (const STTimeCase& c : tab) {
        Use(c.pszZone);
        CDateTime clUtc;
        CXError clError;
        ASSERT_TRUE(KVHost::bLocalToUtc(Date(c.pszLocal), clUtc, &clError)) << c.pszLocal;
        EXPECT_EQ(Text(clUtc), c.pszUtc) << c.pszZone << " " << c.pszLocal;
    }
}

TEST_F(TimeZone, EveryLocalTimeOfAYearComesBack) {
    Use("Europe/Paris");
    CDateTime cl = Date("20240101000000000");
    int nSeen = 0;
    while (cl.nGetAnnee() == 2024) {
        bool bSkipped = cl.nGetMois() == 3 && cl.nGetJour() == 31 && cl.nGetHeure() == 2;
        CDateTime clUtc;
        CDateTime clBack;
        ASSERT_TRUE(KVHost::bLocalToUtc(cl, clUtc, nullptr));
        ASSERT_TRUE(KVHost::bUtcToLocal(clUtc, clBack, nullptr));
        if (!bSkipped) {
            ASSERT_EQ(Text(clBack), Text(cl));
        }
        ++nSeen;
        ASSERT_TRUE(cl.bDecaleMilli(30 * 60 * 1000L));
    }
    EXPECT_EQ(nSeen, 366 * 48);
}

TEST_F(TimeZone, AbsentAndImpossibleDates) {
    Use("Europe/Paris");
    CDateTime clEmpty;
    CDateTime clOut = Date("20200101000000000");
    EXPECT_TRUE(KVHost::bUtcToLocal(clEmpty, clOut, nullptr));
    EXPECT_TRUE(clOut == clEmpty) << "an absent date stays absent";
    EXPECT_TRUE(KVHost::bLocalToUtc(clEmpty, clOut, nullptr));
    EXPECT_TRUE(clOut == clEmpty);

    for (const char* psz : {"20240431120000000", "20230229120000000"}) {
        CDateTime cl = Date(psz);
        CDateTime clBefore = Date("20200101000000000");
        clOut = clBefore;
        CXError clError;
        EXPECT_FALSE(KVHost::bUtcToLocal(cl, clOut, &clError)) << psz;
        EXPECT_EQ(clError.nGetUserErrorCode(), HOSTERROR_TIME_INVALID);
        EXPECT_TRUE(clOut == clBefore) << "the output is left alone";
        CXError clError2;
        EXPECT_FALSE(KVHost::bLocalToUtc(cl, clOut, &clError2));
        EXPECT_EQ(clError2.nGetUserErrorCode(), HOSTERROR_TIME_INVALID);
        EXPECT_FALSE(KVHost::bLocalToUtc(cl, clOut, nullptr)) << "no error object: no crash";
    }

    // Past the last year a date can hold.
    Use("Australia/Sydney");
    CXError clError;
    EXPECT_FALSE(KVHost::bUtcToLocal(Date("99991231230000000"), clOut, &clError));
    EXPECT_EQ(clError.nGetUserErrorCode(), HOSTERROR_TIME_INVALID);
}

// ---- comparison

struct STCompareCase {
    wchar_t c1;
    wchar_t c2;
    int nSign;
};

TEST(HostFunctions, ComparesCharactersBlindToCaseAndAccents) {
    const STCompareCase tab[] = {
        {L'a', L'a', 0},
        {L'a', L'A', 0},
        {L'e', L'\u00C9', 0},      // É
        {L'\u00E9', L'\u00C8', 0}, // é È
        {L'c', L'\u00C7', 0},
        {L'n', L'\u00F1', 0},
        {L'o', L'\u00D6', 0},
        {L'\u0130', L'i', 0},      // İ
        {L'\u1E9E', L'\u00DF', 0}, // ẞ ß
        {L'\u03A3', L'\u03C3', 0},
        {L'\u03C2', L'\u03C3', 0}, // Σ σ ς
        {L'\u0419', L'\u0438', 0}, // Й и
        {L'a', L'b', -1},
        {L'B', L'a', 1},
        {L'\u00C9', L'f', -1},
        {L'\u00DF', L's', 1}, // ß folds to "ss", which follows "s"
        {L'1', L'1', 0},
        {L'1', L'2', -1},
        {L' ', L' ', 0},
        {L'\0', L'a', -1},
        {L'\u0301', L'\u0300', 0}, // two marks alone: nothing each
        {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xD800), 0},
        {static_cast<wchar_t>(0xD800), L'a', 1},
        {static_cast<wchar_t>(0x110000), L'a', 1},
    };
    for (const STCompareCase& c : tab) {
        int n = KVHost::nCompareCharLoose(c.c1, c.c2);
        EXPECT_EQ((n > 0) - (n < 0), c.nSign) << std::hex << int(c.c1) << " " << int(c.c2);
        int nReverse = KVHost::nCompareCharLoose(c.c2, c.c1);
        EXPECT_EQ((nReverse > 0) - (nReverse < 0), -c.nSign) << "antisymmetric";
    }
}

TEST(HostFunctions, ComparesTexts) {
    EXPECT_EQ(KVHost::nCompareTextLoose(L"  \u00C9v\u00E9nement", L"  evenement"), 0);
    EXPECT_EQ(KVHost::nCompareTextLoose(L"TRUE", L"true"), 0);
    EXPECT_LT(KVHost::nCompareTextLoose(L"tru", L"true"), 0);
    EXPECT_GT(KVHost::nCompareTextLoose(L"truf", L"TRUE"), 0);
    EXPECT_EQ(KVHost::nCompareTextLoose(L"", L""), 0);
}

} // namespace
