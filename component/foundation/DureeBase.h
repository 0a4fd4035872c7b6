// CDureeBase: a duration, a signed count of milliseconds, and its two text forms: days, then
// hours, minutes and seconds on two digits, then thousandths on three or hundredths on two.
#pragma once
#include "TString.h"

#include <cstdint>

class CDureeBase {
public:
    static const wchar_t* const ms_pcszFormatAffichageMillieme; // "%d%02d%02d%02d%03d"
    static const wchar_t* const ms_cpszFormatAffichageCentieme; // "%d%02d%02d%02d%02d"

    CDureeBase() = default;
    explicit CDureeBase(int64_t nMilli) : m_nMilli(nMilli) {}
    int64_t nGetMilli() const { return m_nMilli; }
    void SetMilli(int64_t n) { m_nMilli = n; }

    // A negative duration is written with a leading "-".
    void VersChaine(CTString& sSortie, bool bMillieme = true) const;
    // The same forms back; false, the value unchanged, for anything but digits (after an
    // optional "-") longer than the fixed part.
    bool bDepuisChaine(const wchar_t* pszTexte, bool bMillieme = true);

private:
    int64_t m_nMilli = 0;
};
