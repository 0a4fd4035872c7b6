#include "HostFunctions.h"

#include "HostErrors.h"
#include "XError.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace KVHost {

// ---- 297

std::string UrlEncode(std::string_view svUtf8) {
    static const char kszHex[] = "0123456789ABCDEF";
    auto bKeep = [](unsigned char c) {
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            return true;
        switch (c) {
        case '-':
        case '.':
        case '_':
        case '~':
        case ':':
        case '/':
        case '?':
        case '[':
        case ']':
        case '@':
        case '!':
        case '$':
        case '&':
        case '\'':
        case '(':
        case ')':
        case '*':
        case ',':
        case ';':
        case '=':
            return true;
        default:
            return false;
        }
    };
    std::string s;
    s.reserve(svUtf8.size());
    for (unsigned char c : svUtf8) {
        if (bKeep(c)) {
            s += static_cast<char>(c);
        } else {
            s += '%';
            s += kszHex[c >> 4];
            s += kszHex[c & 15];
        }
    }
    return s;
}

// ---- 334, 335

namespace {

bool s_bValidDate(const CDateTime& cl, CXError* pclError) {
    if (cl.nGetJour() <= CDateTimeBase::s_nJoursDansMois(cl.nGetAnnee(), cl.nGetMois()) &&
        cl.nGetMilliJour() < CDateTimeBase::knMilliParJour)
        return true;
    if (pclError) {
        char sz[64];
        std::snprintf(sz, sizeof sz, "%04d-%02d-%02d", cl.nGetAnnee(), cl.nGetMois(),
                      cl.nGetJour());
        SetError(*pclError, HOSTERROR_TIME_INVALID,
                 std::string("The date ") + sz + " does not exist and has no time zone offset");
    }
    return false;
}

std::tm s_stWallClock(const CDateTime& cl) {
    std::tm st{};
    st.tm_year = cl.nGetAnnee() - 1900;
    st.tm_mon = cl.nGetMois() - 1;
    st.tm_mday = cl.nGetJour();
    st.tm_hour = cl.nGetHeure();
    st.tm_min = cl.nGetMinute();
    st.tm_sec = cl.nGetSeconde();
    return st;
}

bool s_bSameWallClock(const std::tm& a, const std::tm& b) {
    return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday &&
           a.tm_hour == b.tm_hour && a.tm_min == b.tm_min && a.tm_sec == b.tm_sec;
}

long s_nOffset(std::time_t t) {
    std::tm st{};
    if (!localtime_r(&t, &st))
        return 0;
    return st.tm_gmtoff;
}

bool s_bShift(const CDateTime& clSource, long nSeconds, CDateTime& clTarget, CXError* pclError) {
    CDateTime cl = clSource;
    if (!cl.bDecaleMilli(nSeconds * 1000L)) {
        if (pclError)
            SetError(*pclError, HOSTERROR_TIME_INVALID,
                     "The date-time falls outside the years 1 to 9999 once converted");
        return false;
    }
    clTarget = cl;
    return true;
}

} // namespace

bool bUtcToLocal(const CDateTime& clUtc, CDateTime& clLocal, CXError* pclError) {
    if (!clUtc.bEstRenseignee()) {
        clLocal = clUtc;
        return true;
    }
    if (!s_bValidDate(clUtc, pclError))
        return false;
    tzset();
    std::tm stWall = s_stWallClock(clUtc);
    std::time_t t = timegm(&stWall);
    return s_bShift(clUtc, s_nOffset(t), clLocal, pclError);
}

bool bLocalToUtc(const CDateTime& clLocal, CDateTime& clUtc, CXError* pclError) {
    if (!clLocal.bEstRenseignee()) {
        clUtc = clLocal;
        return true;
    }
    if (!s_bValidDate(clLocal, pclError))
        return false;
    tzset();
    const std::tm stWall = s_stWallClock(clLocal);
    std::tm stCopy = stWall;
    const std::time_t tWall = timegm(&stCopy); // the wall clock read as if it were UTC

    // The instants whose local wall clock reads this; two around a clock change backwards.
    bool bFound = false;
    std::time_t tChosen = 0;
    for (int nSummer : {1, 0}) {
        std::tm st = stWall;
        st.tm_isdst = nSummer;
        std::time_t t = std::mktime(&st);
        std::tm stBack{};
        if (!localtime_r(&t, &stBack) || !s_bSameWallClock(stBack, stWall))
            continue;
        if (!bFound || t < tChosen)
            tChosen = t;
        bFound = true;
    }
    long nOffset;
    if (bFound) {
        nOffset = static_cast<long>(tWall - tChosen);
    } else {
        // Skipped by a clock change forwards: the offset in force the day before, which puts
        // the time as far past the change as it was written past the hour that vanished.
        nOffset = s_nOffset(tWall - 86400 - 14 * 3600);
    }
    return s_bShift(clLocal, -nOffset, clUtc, pclError);
}

// ---- the comparison of the locale service

namespace {

constexpr int knFolded = 32;

// The character decomposed, without marks, case-folded; itself when utf8proc cannot.
int s_nFold(wchar_t c, utf8proc_int32_t (&tab)[knFolded]) {
    utf8proc_int32_t n = static_cast<utf8proc_int32_t>(c);
    if (!utf8proc_codepoint_valid(n)) {
        tab[0] = n;
        return 1;
    }
    int nBoundClass = 0;
    utf8proc_ssize_t nLength = utf8proc_decompose_char(
        n, tab, knFolded,
        static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_STRIPMARK | UTF8PROC_CASEFOLD),
        &nBoundClass);
    if (nLength < 0 || nLength > knFolded) {
        tab[0] = n;
        return 1;
    }
    return static_cast<int>(nLength); // 0 for a mark alone, which then equals nothing but a mark
}

} // namespace

int nCompareCharLoose(wchar_t c1, wchar_t c2) {
    if (c1 == c2)
        return 0;
    utf8proc_int32_t tab1[knFolded];
    utf8proc_int32_t tab2[knFolded];
    int n1 = s_nFold(c1, tab1);
    int n2 = s_nFold(c2, tab2);
    for (int i = 0; i < n1 && i < n2; ++i)
        if (tab1[i] != tab2[i])
            return tab1[i] < tab2[i] ? -1 : 1;
    return n1 < n2 ? -1 : n1 > n2 ? 1 : 0;
}

int nCompareTextLoose(std::wstring_view sv1, std::wstring_view sv2) {
    size_t n = std::min(sv1.size(), sv2.size());
    for (size_t i = 0; i < n; ++i)
        if (int r = nCompareCharLoose(sv1[i], sv2[i]))
            return r;
    return sv1.size() < sv2.size() ? -1 : sv1.size() > sv2.size() ? 1 : 0;
}

} // namespace KVHost
