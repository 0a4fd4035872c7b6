// CXTime: the older calendar helper. Broken-down times, Unix seconds, file times (100 ns
// ticks since 1601-01-01) and the host's digit forms "YYYYMMDD" and "HHMMSS[mmm]".
#pragma once
#include "DateTime.h"
#include "TString.h"

#include <cstdint>

struct STSYSTEMTIME {
    uint16_t wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

class CXTime {
public:
    static bool bBissextile(int nAnnee) { return CDateTimeBase::s_bBissextile(nAnnee); }
    static int nGetDayInMonth(int nAnnee, int nMois) {
        return CDateTimeBase::s_nJoursDansMois(nAnnee, nMois);
    }
    static uint64_t UnixTimeToFileTime(int64_t nUnix);
    static int64_t FileTimeToUnixTime(uint64_t nFileTime);
    static int64_t SystemTimeToUnixTime(const STSYSTEMTIME& st);
    static void UnixTimeToSystemTime(int64_t nUnix, STSYSTEMTIME& st);
    // "YYYYMMDDHHMMSS" of the broken-down time.
    static void GetKLTimeAAAAMMJJ_HHMMSS(const STSYSTEMTIME& st, CTString& sSortie);
    // "YYYYMMDD" into the date fields, "HHMMSS" with optional "mmm" into the time fields;
    // false, nothing changed, for another form or a value out of range.
    static bool bSetKLDate(STSYSTEMTIME& st, const wchar_t* pszDate);
    static bool bSetKLTime(STSYSTEMTIME& st, const wchar_t* pszHeure);

    static void VersDateTime(const STSYSTEMTIME& st, CDateTime& cl);
    static void DepuisDateTime(const CDateTime& cl, STSYSTEMTIME& st);
    // The local time of a UTC time, through the C library and the process time zone.
    static bool bUTCVersLocal(const STSYSTEMTIME* pstUTC, STSYSTEMTIME* pstLocal);
};

// The value moved from UTC to local time; false for an incomplete date.
bool bUTC2Local(CDateTime& cl);
