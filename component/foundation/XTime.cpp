#include "foundation/XTime.h"

#include <ctime>
#include <cwchar>

namespace {
constexpr int64_t knSecondes1601A1970 = 11644473600LL;
constexpr int64_t knTicksParSeconde = 10000000LL;

// Days from 1970-01-01 of a civil date, and back.
int64_t nJoursCivils(int64_t y, int64_t m, int64_t d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    return era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy - 719468;
}

bool bChiffres(const wchar_t* psz, size_t n) {
    if (!psz || std::wcslen(psz) != n)
        return false;
    for (size_t i = 0; i < n; ++i)
        if (psz[i] < L'0' || psz[i] > L'9')
            return false;
    return true;
}

int nNombre(const wchar_t* psz, int nLong) {
    int v = 0;
    for (int i = 0; i < nLong; ++i)
        v = v * 10 + (psz[i] - L'0');
    return v;
}
} // namespace

uint64_t CXTime::UnixTimeToFileTime(int64_t nUnix) {
    return static_cast<uint64_t>((nUnix + knSecondes1601A1970) * knTicksParSeconde);
}

int64_t CXTime::FileTimeToUnixTime(uint64_t nFileTime) {
    return static_cast<int64_t>(nFileTime / knTicksParSeconde) - knSecondes1601A1970;
}

int64_t CXTime::SystemTimeToUnixTime(const STSYSTEMTIME& st) {
    return nJoursCivils(st.wYear, st.wMonth, st.wDay) * 86400 + st.wHour * 3600 + st.wMinute * 60 +
           st.wSecond;
}

void CXTime::UnixTimeToSystemTime(int64_t nUnix, STSYSTEMTIME& st) {
    int64_t nJours = nUnix >= 0 ? nUnix / 86400 : (nUnix - 86399) / 86400;
    int64_t nSecondes = nUnix - nJours * 86400;
    const int64_t z = nJours + 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    const int64_t m = mp + (mp < 10 ? 3 : -9);
    st.wDay = static_cast<uint16_t>(doy - (153 * mp + 2) / 5 + 1);
    st.wMonth = static_cast<uint16_t>(m);
    st.wYear = static_cast<uint16_t>(yoe + era * 400 + (m <= 2));
    st.wDayOfWeek = static_cast<uint16_t>((nJours % 7 + 11) % 7); // 1970-01-01 was a Thursday
    st.wHour = static_cast<uint16_t>(nSecondes / 3600);
    st.wMinute = static_cast<uint16_t>(nSecondes / 60 % 60);
    st.wSecond = static_cast<uint16_t>(nSecondes % 60);
    st.wMilliseconds = 0;
}

void CXTime::GetKLTimeAAAAMMJJ_HHMMSS(const STSYSTEMTIME& st, CTString& sSortie) {
    wchar_t sz[32];
    std::swprintf(sz, 32, L"%04u%02u%02u%02u%02u%02u", st.wYear, st.wMonth, st.wDay, st.wHour,
                  st.wMinute, st.wSecond);
    sSortie = sz;
}

bool CXTime::bSetKLDate(STSYSTEMTIME& st, const wchar_t* pszDate) {
    if (!bChiffres(pszDate, 8))
        return false;
    int nAnnee = nNombre(pszDate, 4), nMois = nNombre(pszDate + 4, 2), nJour = nNombre(pszDate + 6, 2);
    if (nMois < 1 || nMois > 12 || nJour < 1 || nJour > nGetDayInMonth(nAnnee, nMois))
        return false;
    st.wYear = static_cast<uint16_t>(nAnnee);
    st.wMonth = static_cast<uint16_t>(nMois);
    st.wDay = static_cast<uint16_t>(nJour);
    return true;
}

bool CXTime::bSetKLTime(STSYSTEMTIME& st, const wchar_t* pszHeure) {
    bool bMilli = bChiffres(pszHeure, 9);
    if (!bMilli && !bChiffres(pszHeure, 6))
        return false;
    int nHeure = nNombre(pszHeure, 2), nMinute = nNombre(pszHeure + 2, 2);
    int nSeconde = nNombre(pszHeure + 4, 2);
    if (nHeure > 23 || nMinute > 59 || nSeconde > 59)
        return false;
    st.wHour = static_cast<uint16_t>(nHeure);
    st.wMinute = static_cast<uint16_t>(nMinute);
    st.wSecond = static_cast<uint16_t>(nSeconde);
    st.wMilliseconds = static_cast<uint16_t>(bMilli ? nNombre(pszHeure + 6, 3) : 0);
    return true;
}

void CXTime::VersDateTime(const STSYSTEMTIME& st, CDateTime& cl) {
    cl.InitDate();
    cl.bModifieAnnee(st.wYear);
    cl.bModifieMois(st.wMonth);
    cl.bModifieJour(st.wDay);
    cl.bModifieHeure(st.wHour);
    cl.bModifieMinute(st.wMinute);
    cl.bModifieSeconde(st.wSecond);
    cl.bModifieMilli(st.wMilliseconds);
}

void CXTime::DepuisDateTime(const CDateTime& cl, STSYSTEMTIME& st) {
    st = {static_cast<uint16_t>(cl.nGetAnnee()), static_cast<uint16_t>(cl.nGetMois()), 0,
          static_cast<uint16_t>(cl.nGetJour()),  static_cast<uint16_t>(cl.nGetHeure()),
          static_cast<uint16_t>(cl.nGetMinute()), static_cast<uint16_t>(cl.nGetSeconde()),
          static_cast<uint16_t>(cl.nGetMilli())};
}

bool CXTime::bUTCVersLocal(const STSYSTEMTIME* pstUTC, STSYSTEMTIME* pstLocal) {
    if (!pstUTC || !pstLocal)
        return false;
    const time_t t = static_cast<time_t>(SystemTimeToUnixTime(*pstUTC));
    struct tm stTm {};
    if (!localtime_r(&t, &stTm))
        return false;
    const uint16_t nMilli = pstUTC->wMilliseconds;
    UnixTimeToSystemTime(static_cast<int64_t>(t) + stTm.tm_gmtoff, *pstLocal);
    pstLocal->wMilliseconds = nMilli;
    return true;
}

bool bUTC2Local(CDateTime& cl) {
    if (!cl.bEstRenseignee())
        return false;
    STSYSTEMTIME st, stLocal;
    CXTime::DepuisDateTime(cl, st);
    if (!CXTime::bUTCVersLocal(&st, &stLocal))
        return false;
    CXTime::VersDateTime(stLocal, cl);
    return true;
}
