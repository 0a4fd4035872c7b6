// The date arithmetic of the calendar: the present moment in UTC, distances between two
// values, and the UTC moment of an RFC 3339 value (its time less its zone).
#pragma once
#include "foundation/DateTimeRFC3339.h"

#include "DateTime.h"

#include <cstdint>

namespace DatesAgenda {

CDateTime dtMaintenantUTC();
// Milliseconds from 1970-01-01 to the value, read as a moment of one same zone.
int64_t nMilli(const CDateTime& clDate);
// The value moved by the opposite of its zone: "10:00+02:00" is 08:00 UTC.
CDateTime dtVersUTC(const CDateTimeRFC3339& clDate);
CXYString<wchar_t> sTexte(const CDateTimeRFC3339& clDate);

} // namespace DatesAgenda
