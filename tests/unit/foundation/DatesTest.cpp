// The date readers and writers of the feeds and headers, and the duration text forms.
#include "foundation/DateTimeRFC3339.h"
#include "foundation/DateTimeRFC822.h"
#include "foundation/DureeBase.h"
#include "foundation/XTime.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Champs(const CDateTime& cl) {
    char sz[64];
    std::snprintf(sz, sizeof sz, "%04d-%02d-%02d %02d:%02d:%02d.%03d", cl.nGetAnnee(), cl.nGetMois(),
                  cl.nGetJour(), cl.nGetHeure(), cl.nGetMinute(), cl.nGetSeconde(), cl.nGetMilli());
    return sz;
}

// RFC 822: the reader adds the zone's offset to the time as written (not a conversion to UTC),
// and the writer has no day name and always ends in "Z".
struct STCas822 {
    const wchar_t* pszTexte;
    int nResultat;
    const char* pszChamps;
    const wchar_t* pszEcrit;
};
const STCas822 gtab822[] = {
    {L"Tue, 15 Nov 1994 08:12:31 GMT", 0, "1994-11-15 08:12:31.000", L"15 Nov 1994 08:12:31 Z"},
    {L"15 Nov 1994 08:12 +0100", 0, "1994-11-15 09:12:00.000", L"15 Nov 1994 09:12:00 Z"},
    {L"15 Nov 1994 23:12:00 +0200", 0, "1994-11-16 01:12:00.000", L"16 Nov 1994 01:12:00 Z"},
    {L"Mon,  1 Jan 2001 03:00:00 -0530", 0, "2000-12-31 21:30:00.000", L"31 Dec 2000 21:30:00 Z"},
    {L"15 Nov 1994 08:12:31 EST", 0, "1994-11-15 03:12:31.000", nullptr},
    {L"15 Nov 1994 08:12 XYZ", 0, "1994-11-15 08:12:00.000", nullptr},
    {L"15 Foo 1994 08:12 GMT", 0, "1994-12-15 08:12:00.000", nullptr}, // unknown month: December
    {L"15 Nov 1994", 110, nullptr, nullptr},
};
class RFC822 : public testing::TestWithParam<STCas822> {};
TEST_P(RFC822, LitEtEcrit) {
    const STCas822& st = GetParam();
    CDateTimeRFC822 cl;
    ASSERT_EQ(cl.nVersDate_RFC822(st.pszTexte), st.nResultat);
    if (st.pszChamps) {
        EXPECT_EQ(Champs(cl), st.pszChamps);
    }
    CTString s;
    if (st.pszEcrit) {
        EXPECT_EQ(cl.nVersChaine_RFC822(s), 0);
        EXPECT_EQ(s, st.pszEcrit);
    }
}
INSTANTIATE_TEST_SUITE_P(Dates, RFC822, testing::ValuesIn(gtab822));

TEST(RFC822, MoisHorsTableEcritAuxBornes) {
    CDateTimeRFC822 cl; // month 0
    CTString s;
    cl.nVersChaine_RFC822(s);
    EXPECT_EQ(s, L"0 Jan 0000 00:00:00 Z");
}

// RFC 3339: read, written back, and moved to UTC by adding the stored zone.
struct STCas3339 {
    const wchar_t* pszTexte;
    int nResultat;
    const char* pszChamps;
    const wchar_t* pszEcrit;
    const char* pszUTC;
};
const STCas3339 gtab3339[] = {
    {L"2014-01-02", 0, "2014-01-02 00:00:00.000", L"2014-01-02", nullptr},
    {L"2014-01-02T10:20:30.5+00:00", 0, "2014-01-02 10:20:30.500", L"2014-01-02T10:20:30.500Z",
     "2014-01-02 10:20:30.500"},
    {L"2014-01-02T10:20:30Z", 0, "2014-01-02 10:20:30.000", L"2014-01-02T10:20:30.000Z", nullptr},
    {L"2014-01-02T23:20:30.123456-05:30", 0, "2014-01-02 23:20:30.123",
     L"2014-01-02T23:20:30.123-05:30", "2014-01-02 17:50:30.123"},
    {L"2014-01-02T10:20:30+02:00", 0, nullptr, L"2014-01-02T10:20:30.000+02:00",
     "2014-01-02 12:20:30.000"},
    // Zone bounds: hours beyond 12 or minutes beyond 59 are written as no zone.
    {L"2014-01-02T10:20:30+12:59", 0, nullptr, L"2014-01-02T10:20:30.000+12:59", nullptr},
    {L"2014-01-02T10:20:30+13:00", 0, nullptr, L"2014-01-02T10:20:30.000Z", nullptr},
    {L"2014-01-02T10:20:30-12:60", 0, nullptr, L"2014-01-02T10:20:30.000-12:00", nullptr},
    {L"2014-01-02T10:20:30+00:60", 0, nullptr, L"2014-01-02T10:20:30.000Z", nullptr},
    {L"2014-13-02", 110, nullptr, nullptr, nullptr},
    {L"hier", 110, nullptr, nullptr, nullptr},
    {L"2014-01-02T10", 110, nullptr, nullptr, nullptr},
};
class RFC3339 : public testing::TestWithParam<STCas3339> {};
TEST_P(RFC3339, LitEcritUTC) {
    const STCas3339& st = GetParam();
    CDateTimeRFC3339 cl;
    ASSERT_EQ(cl.nVersDate_RFC3339(st.pszTexte), st.nResultat);
    if (st.pszChamps) {
        EXPECT_EQ(Champs(cl), st.pszChamps);
    }
    if (st.pszEcrit) {
        CXYString<wchar_t> s;
        EXPECT_EQ(cl.nVersChaine_RFC3339(s), 0);
        EXPECT_EQ(s, st.pszEcrit);
    }
    if (st.pszUTC) {
        CDateTime clUTC;
        cl.nVersDate_UTC(clUTC);
        EXPECT_EQ(Champs(clUTC), st.pszUTC);
    }
}
INSTANTIATE_TEST_SUITE_P(Dates, RFC3339, testing::ValuesIn(gtab3339));

TEST(Duree, FormesTexte) {
    const struct {
        int64_t nMilli;
        bool bMillieme;
        const wchar_t* pszTexte;
    } tab[] = {
        {0, true, L"0000000000"},
        {((2LL * 24 + 3) * 3600 + 4 * 60 + 5) * 1000 + 67, true, L"2030405067"},
        {((2LL * 24 + 3) * 3600 + 4 * 60 + 5) * 1000 + 670, false, L"203040567"},
        {-(61LL * 1000 + 5), true, L"-0000101005"},
        {123LL * 86400000, false, L"12300000000"},
    };
    for (const auto& st : tab) {
        CTString s;
        CDureeBase(st.nMilli).VersChaine(s, st.bMillieme);
        EXPECT_EQ(s, st.pszTexte);
        CDureeBase cl;
        ASSERT_TRUE(cl.bDepuisChaine(st.pszTexte, st.bMillieme)) << st.nMilli;
        EXPECT_EQ(cl.nGetMilli(), st.nMilli);
    }
    CDureeBase cl(7);
    EXPECT_FALSE(cl.bDepuisChaine(L"12a4567890"));
    EXPECT_FALSE(cl.bDepuisChaine(L"1234"));
    EXPECT_EQ(cl.nGetMilli(), 7);
}

TEST(XTime, AllerRetour) {
    STSYSTEMTIME st{};
    ASSERT_TRUE(CXTime::bSetKLDate(st, L"20240229"));
    ASSERT_TRUE(CXTime::bSetKLTime(st, L"235958123"));
    EXPECT_FALSE(CXTime::bSetKLDate(st, L"20230229"));
    EXPECT_FALSE(CXTime::bSetKLTime(st, L"2460"));
    CTString s;
    CXTime::GetKLTimeAAAAMMJJ_HHMMSS(st, s);
    EXPECT_EQ(s, L"20240229235958");
    const int64_t nUnix = CXTime::SystemTimeToUnixTime(st);
    EXPECT_EQ(nUnix, 1709251198);
    EXPECT_EQ(CXTime::FileTimeToUnixTime(CXTime::UnixTimeToFileTime(nUnix)), nUnix);
    STSYSTEMTIME st2{};
    CXTime::UnixTimeToSystemTime(nUnix, st2);
    EXPECT_EQ(st2.wDay, 29);
    EXPECT_EQ(st2.wDayOfWeek, 4); // a Thursday
    EXPECT_EQ(CXTime::UnixTimeToFileTime(0), 116444736000000000ULL);
}

} // namespace
