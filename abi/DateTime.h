// CDateTimeBase / CDateTime: the 8-byte date value of the boundary. Day, month (0 when unset),
// year, then the time of day in milliseconds. Passed by value in these 8 bytes.
#pragma once
#include <cstdint>

class CDateTimeBase {
public:
    static const wchar_t* const ms_pcszValeurInitDate; // ""
    static const wchar_t* const ms_pcszValeurInitTime; // "0000"
    static constexpr uint32_t knMilliParJour = 86400000u;

    void InitDate() { m_nJour = m_nMois = 0, m_nAnnee = 0, m_nMilli = 0; }

    int nGetJour() const { return m_nJour; }
    int nGetMois() const { return m_nMois; }
    int nGetAnnee() const { return m_nAnnee; }
    uint32_t nGetMilliJour() const { return m_nMilli; }
    int nGetHeure() const { return static_cast<int>(m_nMilli / 3600000u); }
    int nGetMinute() const { return static_cast<int>(m_nMilli / 60000u % 60u); }
    int nGetSeconde() const { return static_cast<int>(m_nMilli / 1000u % 60u); }
    int nGetMilli() const { return static_cast<int>(m_nMilli % 1000u); }

    // Each setter refuses a value out of its range and leaves the date as it was.
    bool bModifieAnnee(int n);
    bool bModifieMois(int n);
    bool bModifieJour(int n);
    bool bModifieHeure(int n);
    bool bModifieMinute(int n);
    bool bModifieSeconde(int n);
    bool bModifieMilli(int n);
    // Moves the value by a signed count of milliseconds, carrying across days, months and
    // years. Needs a complete date; false otherwise, the value unchanged.
    bool bDecaleMilli(long nDecalage);

    // A date counts as given only when its year is not 0, its month lies in 1 to 12 and its
    // day in 1 to 31; any other is absent.
    bool bEstRenseignee() const {
        return m_nAnnee != 0 && m_nMois >= 1 && m_nMois <= 12 && m_nJour >= 1 && m_nJour <= 31;
    }

    // The host's text form: "YYYYMMDD" then optionally "HH", "MM", "SS" and "mmm" digits.
    // Anything else, or a date out of range, fails and leaves the value unchanged.
    template <class T> bool FromString(const T* psz);
    // The same form written whole: 17 digits.
    template <class T> void ToString(T (&sz)[18]) const;

    friend bool operator==(const CDateTimeBase& a, const CDateTimeBase& b) {
        return a.m_nJour == b.m_nJour && a.m_nMois == b.m_nMois && a.m_nAnnee == b.m_nAnnee &&
               a.m_nMilli == b.m_nMilli;
    }

    static bool s_bBissextile(int nAnnee);
    static int s_nJoursDansMois(int nAnnee, int nMois);

private:
    uint8_t m_nJour = 0;
    uint8_t m_nMois = 0;
    uint16_t m_nAnnee = 0;
    uint32_t m_nMilli = 0;
};

class CDateTime : public CDateTimeBase {};
static_assert(sizeof(CDateTime) == 8, "a date crosses the boundary in 8 bytes");
