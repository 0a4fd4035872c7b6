// The pieces under the services: form decoding, JSON quoting, seeds, loopback addresses and
// host names.
#include <gtest/gtest.h>

#include "Base64.h"
#include "Emulator.h"
#include "Form.h"
#include "JsonValue.h"
#include "Seed.h"

TEST(Units, FormFieldsDecodedAndRaw) {
    struct STCase {
        const char* pszText;
        const char* pszName;
        const char* pszValue;
        const char* pszRaw;
    };
    const STCase tab[] = {
        {"a=1&b=2", "b", "2", "2"},
        {"scope=x%20y+z", "scope", "x y z", "x%20y+z"},
        {"k", "k", "", ""},
        {"&&k=v&&", "k", "v", "v"},
        {"k=first&k=second", "k", "first", "first"},
        {"n%61me=%E2%82%AC", "name", "\xE2\x82\xAC", "%E2%82%AC"},
        {"k=a=b", "k", "a=b", "a=b"},
    };
    for (const STCase& c : tab) {
        auto o = CForm::s_oParse(c.pszText, CForm::eStrict, nullptr);
        ASSERT_TRUE(o) << c.pszText;
        const CForm::STField* p = o->pField(c.pszName);
        ASSERT_TRUE(p) << c.pszText;
        EXPECT_EQ(p->sValue, c.pszValue) << c.pszText;
        EXPECT_EQ(p->sRaw, c.pszRaw) << c.pszText;
    }
}

TEST(Units, FormStrictRefusesWhatLenientKeeps) {
    for (const char* psz : {"a=%", "a=%4", "a=%zz", "%g0=1", "a=1&b=%"}) {
        std::string sError;
        EXPECT_FALSE(CForm::s_oParse(psz, CForm::eStrict, &sError)) << psz;
        EXPECT_FALSE(sError.empty()) << psz;
        EXPECT_TRUE(CForm::s_oParse(psz, CForm::eLenient, nullptr)) << psz;
    }
    EXPECT_EQ(CForm::s_oParse("s=[%STATE%]", CForm::eLenient, nullptr)->sValue("s"), "[%STATE%]");
    EXPECT_EQ(CForm::s_sEncode("a b/é~"), "a%20b%2F%C3%A9~");
}

TEST(Units, JsonQuoteKeepsEveryByteReadable) {
    struct STCase {
        std::string sIn;
        const char* pszOut;
    };
    const STCase tab[] = {
        {"plain", "\"plain\""},
        {"q\"b\\", "\"q\\\"b\\\\\""},
        {"\n\r\t\b\f", "\"\\n\\r\\t\\b\\f\""},
        {std::string("\x00\x1f", 2), "\"\\u0000\\u001f\""},
        {"\xC3\xA9", "\"\xC3\xA9\""},         // UTF-8 passes
        {"\xE9t\xE9", "\"\\u00e9t\\u00e9\""}, // Latin-1 bytes are shown as such
        {"\xC3", "\"\\u00c3\""},              // a cut sequence too
    };
    for (const STCase& c : tab) {
        std::string sQuoted = CJsonValue::s_sQuote(c.sIn);
        EXPECT_EQ(sQuoted, c.pszOut);
        EXPECT_TRUE(CJsonValue::s_oParse(sQuoted, nullptr)) << sQuoted;
    }
}

TEST(Units, JsonRoundTripKeepsOrderAndTypes) {
    const char szText[] =
        R"({"z":1,"a":[true,null,-2.5,"s"],"m":{"k":"v"},"big":9007199254740993})";
    auto o = CJsonValue::s_oParse(szText, nullptr);
    ASSERT_TRUE(o);
    EXPECT_EQ(o->sSerialize(), szText);
    for (const char* psz : {"", "{", "[1,]", "{\"a\":}", "nul", "\"\\x\""})
        EXPECT_FALSE(CJsonValue::s_oParse(psz, nullptr)) << psz;
    std::string sDeep(5000, '['); // deeper than the parser allows: refused, not a crash
    EXPECT_FALSE(CJsonValue::s_oParse(sDeep + std::string(5000, ']'), nullptr));
}

TEST(Units, LoopbackRedirects) {
    struct STCase {
        const char* pszUri;
        bool bLoopback;
    };
    const STCase tab[] = {
        {"http://127.0.0.1:8080/callback", true},
        {"http://localhost:1/", true},
        {"http://LOCALHOST/x?y=1", true},
        {"http://[::1]:9000/", true},
        {"http://127.0.0.1", true},
        {"https://127.0.0.1:8080/", false},
        {"http://127.0.0.1.evil.test/", false},
        {"http://127.0.0.1@evil.test/", false},
        {"http://localhost:99999999/", false},
        {"http://localhost:/", false},
        {"http://127.0.0.1:80/#frag", false},
        {"http://evil.test/?http://127.0.0.1/", false},
    };
    for (const STCase& c : tab)
        EXPECT_EQ(STClient::s_bIsLoopback(c.pszUri), c.bLoopback) << c.pszUri;
}

TEST(Units, SeedsAreCheckedWithTheirPlace) {
    struct STCase {
        const char* pszSeed;
        const char* pszErrorPart;
    };
    const STCase tab[] = {
        {"[", "not JSON"},
        {"[]", "JSON object"},
        {"{}", "at least one user"},
        {R"({"users": [{"name": "x"}]})", "users[0]"},
        {R"({"users": [{"email": "a@x"}, {"email": "A@x"}]})", "twice"},
        {R"({"users": [{"email": "a@x"}], "clients": [{"client_id": "c"}]})", "clients[0]"},
        {R"({"users": [{"email": "a@x"}], "clients": {}})", "\"clients\" must be an array"},
        {R"({"users": [{"email": "a@x"}], "grants": [{"provider": "p", "client_id": "c", "user": "a@x"}]})",
         "grants[0]"},
        {R"({"users": [{"email": "a@x"}], "token_lifetime_s": 0})", "token_lifetime_s"},
    };
    for (const STCase& c : tab) {
        std::string sError;
        EXPECT_FALSE(CSeed::s_oParse(c.pszSeed, &sError)) << c.pszSeed;
        EXPECT_NE(sError.find(c.pszErrorPart), std::string::npos) << c.pszSeed << ": " << sError;
    }
    std::string sError;
    auto oDefault = CSeed::s_oParse(CSeed::s_svDefault(), &sError);
    ASSERT_TRUE(oDefault) << sError;
    const STClient* pDemo = oDefault->pFindClient("oauth.provider.test", "demo-client");
    ASSERT_TRUE(pDemo);
    EXPECT_EQ(pDemo->sSecret, "demo-secret");
    EXPECT_TRUE(oDefault->pFindClient("accounts.google.com", "demo-client"));
    EXPECT_FALSE(oDefault->pFindClient("accounts.google.com", "provider-client"));
}

TEST(Units, HostNamesWithoutPortOrCase) {
    struct STCase {
        const char* pszHeader;
        const char* pszHost;
    };
    const STCase tab[] = {
        {"accounts.google.com", "accounts.google.com"},
        {"Accounts.Google.COM:443", "accounts.google.com"},
        {"example.com.", "example.com"},
        {"[::1]:8080", "[::1]"},
        {" 127.0.0.1:80 ", "127.0.0.1"},
        {"", ""},
    };
    for (const STCase& c : tab)
        EXPECT_EQ(CEmulator::s_sHostName(c.pszHeader), c.pszHost) << c.pszHeader;
}

TEST(Units, Base64BothAlphabets) {
    const std::string sBytes("\xfb\xff\x00x", 4);
    EXPECT_EQ(CBase64::s_sEncode(sBytes), "+/8AeA==");
    EXPECT_EQ(CBase64::s_sEncode(sBytes, true), "-_8AeA");
    EXPECT_EQ(CBase64::s_oDecode("+/8AeA=="), sBytes);
    EXPECT_EQ(CBase64::s_oDecode("-_8AeA"), sBytes);
    EXPECT_FALSE(CBase64::s_oDecode("a"));
    EXPECT_FALSE(CBase64::s_oDecode("ab$c"));
}
