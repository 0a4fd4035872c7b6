#include "foundation/DateTimeRFC3339.h"

#include "KVResult.h"

#include <cwchar>
#include <string_view>

namespace {

// A whole decimal number of the piece; false when the piece is empty or holds anything else.
bool bLitEntier(std::wstring_view sv, long& n) {
    if (sv.empty() || sv.size() > 9)
        return false;
    wchar_t sz[10] = {};
    sv.copy(sz, sv.size());
    wchar_t* pFin = nullptr;
    n = std::wcstol(sz, &pFin, 10);
    return pFin == sz + sv.size();
}

// The next piece up to the separator, taken off the front of sv.
std::wstring_view svCoupe(std::wstring_view& sv, wchar_t cSeparateur) {
    size_t n = sv.find(cSeparateur);
    std::wstring_view svMorceau = sv.substr(0, n);
    sv = n == std::wstring_view::npos ? std::wstring_view() : sv.substr(n + 1);
    return svMorceau;
}

constexpr int knIllisible = 110;

} // namespace

int CDateTimeRFC3339::nVersDate_RFC3339(const wchar_t* pszTexte, int) {
    InitDate();
    m_nZoneHeures = m_nZoneMinutes = 0;
    m_bDateSeule = 0;
    if (!pszTexte)
        return knIllisible;
    std::wstring_view sv(pszTexte);
    size_t nT = sv.find(L'T');
    std::wstring_view svDate = sv.substr(0, nT);
    long nAnnee, nMois, nJour;
    if (!bLitEntier(svCoupe(svDate, L'-'), nAnnee) || !bLitEntier(svCoupe(svDate, L'-'), nMois) ||
        !bLitEntier(svCoupe(svDate, L'-'), nJour) || !svDate.empty())
        return knIllisible;
    if (!bModifieAnnee(nAnnee) || !bModifieMois(nMois) || !bModifieJour(nJour))
        return knIllisible;
    if (nT == std::wstring_view::npos) {
        m_bDateSeule = 1;
        return 0;
    }
    std::wstring_view svHeure = sv.substr(nT + 1);
    // The zone: "Z" at the end, or a sign and hh:mm.
    std::wstring_view svZone;
    int nSigne = 1;
    if (size_t n = svHeure.find_first_of(L"+-"); n != std::wstring_view::npos) {
        nSigne = svHeure[n] == L'-' ? -1 : 1;
        svZone = svHeure.substr(n + 1);
        svHeure = svHeure.substr(0, n);
    } else if (!svHeure.empty() && (svHeure.back() == L'Z' || svHeure.back() == L'z')) {
        svHeure.remove_suffix(1);
    }
    std::wstring_view svFraction;
    if (size_t n = svHeure.find(L'.'); n != std::wstring_view::npos) {
        svFraction = svHeure.substr(n + 1);
        svHeure = svHeure.substr(0, n);
    }
    long nHeure, nMinute, nSeconde = 0;
    if (!bLitEntier(svCoupe(svHeure, L':'), nHeure) || !bLitEntier(svCoupe(svHeure, L':'), nMinute))
        return knIllisible;
    if (!svHeure.empty() && !bLitEntier(svCoupe(svHeure, L':'), nSeconde))
        return knIllisible;
    // The fraction to thousandths: ".5" is 500, digits past the third are dropped.
    long nMilli = 0;
    for (size_t i = 0; i < 3; ++i) {
        wchar_t c = i < svFraction.size() ? svFraction[i] : L'0';
        if (c < L'0' || c > L'9')
            return knIllisible;
        nMilli = nMilli * 10 + (c - L'0');
    }
    if (!bModifieHeure(nHeure) || !bModifieMinute(nMinute) || !bModifieSeconde(nSeconde) ||
        !bModifieMilli(nMilli))
        return knIllisible;
    if (!svZone.empty()) {
        long nZh, nZm = 0;
        if (!bLitEntier(svCoupe(svZone, L':'), nZh) ||
            (!svZone.empty() && !bLitEntier(svZone, nZm)))
            return knIllisible;
        m_nZoneHeures = static_cast<int32_t>(nSigne * nZh);
        m_nZoneMinutes = static_cast<int32_t>(nSigne * nZm);
    }
    return 0;
}

int CDateTimeRFC3339::nVersDate_UTC(CDateTime& clSortie) const {
    clSortie = *this;
    clSortie.bDecaleMilli((m_nZoneHeures * 60L + m_nZoneMinutes) * 60000L);
    return 0;
}

int CDateTimeRFC3339::nVersChaine_RFC3339(CXYString<wchar_t>& sSortie) const {
    wchar_t sz[64];
    if (m_bDateSeule) {
        std::swprintf(sz, 64, L"%04d-%02d-%02d", nGetAnnee(), nGetMois(), nGetJour());
        return sSortie.nAffecte(sz) == KV_OK ? 0 : knIllisible;
    }
    int n = std::swprintf(sz, 64, L"%04d-%02d-%02dT%02d:%02d:%02d.%03d", nGetAnnee(), nGetMois(),
                          nGetJour(), nGetHeure(), nGetMinute(), nGetSeconde(), nGetMilli());
    // A zone out of bounds counts as none.
    int nZh = m_nZoneHeures >= -12 && m_nZoneHeures <= 12 ? m_nZoneHeures : 0;
    int nZm = m_nZoneMinutes >= -59 && m_nZoneMinutes <= 59 ? m_nZoneMinutes : 0;
    if (nZh == 0 && nZm == 0)
        std::swprintf(sz + n, 64 - n, L"Z");
    else
        std::swprintf(sz + n, 64 - n, L"%lc%02d:%02d", nZh < 0 || nZm < 0 ? L'-' : L'+',
                      nZh < 0 ? -nZh : nZh, nZm < 0 ? -nZm : nZm);
    return sSortie.nAffecte(sz) == KV_OK ? 0 : knIllisible;
}
