#include "calendar/DatesAgenda.h"

#include "foundation/XTime.h"

#include <chrono>

namespace DatesAgenda {

CDateTime dtMaintenantUTC() {
    const int64_t nMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                            std::chrono::system_clock::now().time_since_epoch())
                            .count();
    STSYSTEMTIME st{};
    CXTime::UnixTimeToSystemTime(nMs / 1000, st);
    st.wMilliseconds = static_cast<uint16_t>(nMs % 1000);
    CDateTime cl;
    CXTime::VersDateTime(st, cl);
    return cl;
}

int64_t nMilli(const CDateTime& clDate) {
    STSYSTEMTIME st{};
    CXTime::DepuisDateTime(clDate, st);
    return CXTime::SystemTimeToUnixTime(st) * 1000 + st.wMilliseconds;
}

CDateTime dtVersUTC(const CDateTimeRFC3339& clDate) {
    CDateTime cl = clDate;
    cl.bDecaleMilli(-(clDate.nGetZoneHeures() * 60L + clDate.nGetZoneMinutes()) * 60000L);
    return cl;
}

CXYString<wchar_t> sTexte(const CDateTimeRFC3339& clDate) {
    CXYString<wchar_t> s;
    (void)clDate.nVersChaine_RFC3339(s);
    return s;
}

} // namespace DatesAgenda
