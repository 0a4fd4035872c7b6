// CXmlObjectSimpleConv: the conversions between a leaf's text and its value, one pair per
// value type. Text to value gives true on success; value to text too.
#pragma once
#include "foundation/DateTimeRFC3339.h"
#include "foundation/DateTimeRFC822.h"

#include "XYString.h"

#include <cstdint>

class CXError;

// A date alone, written "%d-%d-%d" without leading zeros.
class CDateJourRFC3339 : public CDateTimeRFC3339 {};
// A duration read and written in minutes, held in milliseconds.
struct CDureeMinutes {
    int64_t nMilli = 0;
};
// A boolean written "true" or "false".
struct CBooleenLiteral {
    int bValeur = 0;
};

class CXmlObjectSimpleConv {
public:
    static bool s_bConvertToType(const wchar_t* psz, CXYString<wchar_t>& s);
    static bool s_bConvertToType(const wchar_t* psz, int& n);
    static bool s_bConvertToType(const wchar_t* psz, long& n);
    static bool s_bConvertToType(const wchar_t* psz, double& d);
    static bool s_bConvertToType(const wchar_t* psz, CDateTimeRFC3339& cl);
    static bool s_bConvertToType(const wchar_t* psz, CDateTimeRFC822& cl);
    static bool s_bConvertToType(const wchar_t* psz, CDureeMinutes& cl);
    static bool s_bConvertToType(const wchar_t* psz, CBooleenLiteral& cl);

    static bool s_bConvertFromType(const CXYString<wchar_t>& sValeur, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const int& n, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const long& n, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const double& d, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const CDateTimeRFC3339& cl, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const CDateJourRFC3339& cl, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const CDateTimeRFC822& cl, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const CDureeMinutes& cl, CXYString<wchar_t>& s, CXError&);
    static bool s_bConvertFromType(const CBooleenLiteral& cl, CXYString<wchar_t>& s, CXError&);
};
