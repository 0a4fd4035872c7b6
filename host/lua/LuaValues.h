// CLuaValues: script values between Lua and the host. Texts are Lua strings in UTF-8, buffers
// and binary values Lua strings of bytes; numbers stay integers or floats; dates are tables
// {year, month, day, hour, min, sec, ms} (by those field names) with a metatable that writes
// them "YYYY-MM-DDTHH:MM:SS.mmm", and the host also takes that text where a date is due;
// arrays are Lua sequences; objects are the module's userdata. Errors the component leaves are
// tables {code, level, message, debug} whose __tostring writes them.
//
// Nothing here raises a Lua error: conversions answer false with the reason, so that the
// caller raises once its C++ values are gone (Lua errors jump over C++ destructors).
// Tables are read raw: no metamethod of the script runs during a conversion.
#pragma once
#include "HostOutcome.h"
#include "HostValue.h"

#include <string>

struct lua_State;

class CLuaValues {
public:
    static constexpr int knMaxDepth = 16;
    static constexpr const char* kszDateMeta = "kvggl.date";
    static constexpr const char* kszErrorMeta = "kvggl.error";

    // Creates the metatables of dates and errors in the registry.
    static void s_Register(lua_State* L);

    // The value at index i; false with what was wrong ("date has no field 'day'").
    static bool s_bToHost(lua_State* L, int i, CHostValue& clOut, std::string& sWhy);
    static void s_Push(lua_State* L, const CHostValue& cl);
    static void s_PushDate(lua_State* L, const CDateTime& dt);
    // The error of an outcome as a table.
    static void s_PushError(lua_State* L, const STHostOutcome& st);
    // Whether the value at index i is an error table of the module.
    static bool s_bIsError(lua_State* L, int i);
    // Whether it is a date the module made (a table with the dates' metatable).
    static bool s_bIsDate(lua_State* L, int i);
};
