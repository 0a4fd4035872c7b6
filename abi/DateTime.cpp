#include "DateTime.h"

const wchar_t* const CDateTimeBase::ms_pcszValeurInitDate = L"";
const wchar_t* const CDateTimeBase::ms_pcszValeurInitTime = L"0000";

bool CDateTimeBase::s_bBissextile(int n) { return (n % 4 == 0 && n % 100 != 0) || n % 400 == 0; }

int CDateTimeBase::s_nJoursDansMois(int nAnnee, int nMois) {
    static const int gtabJours[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (nMois < 1 || nMois > 12) return 0;
    return gtabJours[nMois - 1] + (nMois == 2 && s_bBissextile(nAnnee) ? 1 : 0);
}

bool CDateTimeBase::bModifieAnnee(int n) {
    if (n < 0 || n > 9999) return false;
    m_nAnnee = static_cast<uint16_t>(n);
    return true;
}
bool CDateTimeBase::bModifieMois(int n) {
    if (n < 0 || n > 12) return false;
    m_nMois = static_cast<uint8_t>(n);
    return true;
}
bool CDateTimeBase::bModifieJour(int n) {
    if (n < 0 || n > 31) return false;
    m_nJour = static_cast<uint8_t>(n);
    return true;
}
bool CDateTimeBase::bModifieHeure(int n) {
    if (n < 0 || n > 23) return false;
    m_nMilli = m_nMilli % 3600000u + static_cast<uint32_t>(n) * 3600000u;
    return true;
}
bool CDateTimeBase::bModifieMinute(int n) {
    if (n < 0 || n > 59) return false;
    m_nMilli = m_nMilli - nGetMinute() * 60000u + static_cast<uint32_t>(n) * 60000u;
    return true;
}
bool CDateTimeBase::bModifieSeconde(int n) {
    if (n < 0 || n > 59) return false;
    m_nMilli = m_nMilli - nGetSeconde() * 1000u + static_cast<uint32_t>(n) * 1000u;
    return true;
}
bool CDateTimeBase::bModifieMilli(int n) {
    if (n < 0 || n > 999) return false;
    m_nMilli = m_nMilli - static_cast<uint32_t>(nGetMilli()) + static_cast<uint32_t>(n);
    return true;
}

namespace {
// Days since 0000-03-01 in the proleptic Gregorian calendar, and back.
long nJoursDepuisEpoque(long y, long m, long d) {
    y -= m <= 2;
    long era = (y >= 0 ? y : y - 399) / 400;
    long yoe = y - era * 400;
    long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe;
}
void DateDepuisJours(long z, long& y, long& m, long& d) {
    long era = (z >= 0 ? z : z - 146096) / 146097;
    long doe = z - era * 146097;
    long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    long mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp + (mp < 10 ? 3 : -9);
    y = yoe + era * 400 + (m <= 2);
}
} // namespace

bool CDateTimeBase::bDecaleMilli(long nDecalage) {
    if (!bEstRenseignee() || m_nJour > s_nJoursDansMois(m_nAnnee, m_nMois)) return false;
    long long nTotal = static_cast<long long>(m_nMilli) + nDecalage;
    long long nJours = nTotal / knMilliParJour;
    long long nReste = nTotal % knMilliParJour;
    if (nReste < 0) nReste += knMilliParJour, --nJours;
    long y, m, d;
    DateDepuisJours(nJoursDepuisEpoque(m_nAnnee, m_nMois, m_nJour) + static_cast<long>(nJours), y,
                    m, d);
    if (y < 1 || y > 9999) return false;
    m_nAnnee = static_cast<uint16_t>(y);
    m_nMois = static_cast<uint8_t>(m);
    m_nJour = static_cast<uint8_t>(d);
    m_nMilli = static_cast<uint32_t>(nReste);
    return true;
}

template <class T> bool CDateTimeBase::FromString(const T* psz) {
    if (!psz) return false;
    int tab[17];
    int n = 0;
    for (; psz[n] && n < 17; ++n) {
        if (psz[n] < T('0') || psz[n] > T('9')) return false;
        tab[n] = static_cast<int>(psz[n] - T('0'));
    }
    if (psz[n] || (n != 8 && n != 10 && n != 12 && n != 14 && n != 17)) return false;
    auto nLit = [&](int nDebut, int nLong) {
        int v = 0;
        for (int i = 0; i < nLong; ++i) v = v * 10 + tab[nDebut + i];
        return v;
    };
    int nAnnee = nLit(0, 4), nMois = nLit(4, 2), nJour = nLit(6, 2);
    int nHeure = n >= 10 ? nLit(8, 2) : 0, nMinute = n >= 12 ? nLit(10, 2) : 0;
    int nSeconde = n >= 14 ? nLit(12, 2) : 0, nMilli = n >= 17 ? nLit(14, 3) : 0;
    // An all-zero date is the host's empty date; anything else must be a real one.
    bool bVide = nAnnee == 0 && nMois == 0 && nJour == 0;
    if (!bVide && (nMois < 1 || nMois > 12 || nJour < 1 || nJour > 31)) return false;
    if (nHeure > 23 || nMinute > 59 || nSeconde > 59) return false;
    m_nAnnee = static_cast<uint16_t>(nAnnee);
    m_nMois = static_cast<uint8_t>(nMois);
    m_nJour = static_cast<uint8_t>(nJour);
    m_nMilli = static_cast<uint32_t>(((nHeure * 60 + nMinute) * 60 + nSeconde) * 1000 + nMilli);
    return true;
}

template <class T> void CDateTimeBase::ToString(T (&sz)[18]) const {
    const int tab[7][2] = {{m_nAnnee, 4},    {m_nMois, 2},      {m_nJour, 2},   {nGetHeure(), 2},
                           {nGetMinute(), 2}, {nGetSeconde(), 2}, {nGetMilli(), 3}};
    int p = 0;
    for (const auto& champ : tab) {
        int v = champ[0];
        for (int i = champ[1] - 1; i >= 0; --i, v /= 10) sz[p + i] = static_cast<T>('0' + v % 10);
        p += champ[1];
    }
    sz[17] = 0;
}

template bool CDateTimeBase::FromString<wchar_t>(const wchar_t*);
template bool CDateTimeBase::FromString<char>(const char*);
template void CDateTimeBase::ToString<wchar_t>(wchar_t (&)[18]) const;
template void CDateTimeBase::ToString<char>(char (&)[18]) const;
