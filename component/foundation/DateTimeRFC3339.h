// CDateTimeRFC3339: the date of Google and Salesforce answers, "2014-01-02T10:20:30.500+02:00"
// or a date alone. The value stays in the zone's local time; the zone is kept beside it.
#pragma once
#include "DateTime.h"
#include "XYString.h"

#include <cstdint>

class CDateTimeRFC3339 : public CDateTime {
public:
    // 0 on success, 110 for a text that cannot be read. The option is kept for callers; no
    // reading depends on it.
    int nVersDate_RFC3339(const wchar_t* pszTexte, int nOption = 0);
    // The value moved by the zone as stored (hours and minutes added).
    int nVersDate_UTC(CDateTime& clSortie) const;
    int nVersChaine_RFC3339(CXYString<wchar_t>& sSortie) const;

    int nGetZoneHeures() const { return m_nZoneHeures; }
    int nGetZoneMinutes() const { return m_nZoneMinutes; }
    bool bDateSeule() const { return m_bDateSeule != 0; }
    void SetZone(int nHeures, int nMinutes) { m_nZoneHeures = nHeures, m_nZoneMinutes = nMinutes; }
    void SetDateSeule(bool b) { m_bDateSeule = b ? 1 : 0; }

    friend bool operator==(const CDateTimeRFC3339& a, const CDateTimeRFC3339& b) {
        return static_cast<const CDateTimeBase&>(a) == b && a.m_nZoneHeures == b.m_nZoneHeures &&
               a.m_nZoneMinutes == b.m_nZoneMinutes && a.m_bDateSeule == b.m_bDateSeule;
    }

private:
    int32_t m_nZoneHeures = 0;
    int32_t m_nZoneMinutes = 0;
    int32_t m_bDateSeule = 0; // non-zero for a date with no time
};
