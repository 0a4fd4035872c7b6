// Values between Lua and the host, without the component: what each Lua value becomes, what
// comes back, dates as tables and their text, and the error tables.
#include "LuaValues.h"

#include <lua.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

class ValeursLua : public testing::Test {
protected:
    void SetUp() override {
        L = luaL_newstate();
        luaL_openlibs(L);
        CLuaValues::s_Register(L);
    }
    void TearDown() override { lua_close(L); }
    // The value of a Lua expression, converted; false with the reason.
    bool bConvertit(const char* pszExpression, CHostValue& cl, std::string& sPourquoi) {
        std::string s = std::string("return ") + pszExpression;
        EXPECT_EQ(luaL_dostring(L, s.c_str()), LUA_OK) << lua_tostring(L, -1);
        bool b = CLuaValues::s_bToHost(L, -1, cl, sPourquoi);
        lua_settop(L, 0);
        return b;
    }
    // tostring of what the value becomes when pushed back.
    std::string sRetour(const CHostValue& cl) {
        CLuaValues::s_Push(L, cl);
        std::string s = luaL_tolstring(L, -1, nullptr);
        lua_settop(L, 0);
        return s;
    }
    lua_State* L = nullptr;
};

struct STCas {
    const char* pszExpression;
    CHostValue::eKIND eKind;
    const char* pszRetour; // tostring of the value pushed back, or the reason of a refusal
};
const STCas gtabCas[] = {
    {"nil", CHostValue::KIND_NIL, "nil"},
    {"true", CHostValue::KIND_BOOLEAN, "true"},
    {"42", CHostValue::KIND_INTEGER, "42"},
    {"2^53", CHostValue::KIND_REAL, "9.007199254741e+15"},
    {"'été'", CHostValue::KIND_STRING, "été"},
    {"'a\\0b'", CHostValue::KIND_STRING, std::string("a\0b", 3).c_str()},
    {"{year=2024, month=2, day=29}", CHostValue::KIND_DATETIME, "2024-02-29T00:00:00.000"},
    {"{year=2024, month=5, day=1, hour=13, min=5, sec=9, ms=7}", CHostValue::KIND_DATETIME,
     "2024-05-01T13:05:09.007"},
    {"{year=2023, month=2, day=29}", CHostValue::KIND_NIL,
     "invalid date: no such day in that month"},
    {"{year=2024, month=13, day=1}", CHostValue::KIND_NIL,
     "invalid date: field 'month' out of range"},
    {"{year=2024, day=1}", CHostValue::KIND_NIL, "invalid date: field 'month' missing"},
    {"{year=2024, month=1, day=1, hour=1.5}", CHostValue::KIND_NIL,
     "invalid date: field 'hour' out of range"},
    {"print", CHostValue::KIND_NIL, "value expected, got function"},
};

TEST_F(ValeursLua, DeLuaALHoteEtRetour) {
    for (const STCas& st : gtabCas) {
        CHostValue cl;
        std::string sPourquoi;
        bool bAccepte = bConvertit(st.pszExpression, cl, sPourquoi);
        bool bRefus = st.eKind == CHostValue::KIND_NIL && st.pszExpression != std::string("nil");
        ASSERT_EQ(bAccepte, !bRefus) << st.pszExpression << ": " << sPourquoi;
        if (bRefus) {
            EXPECT_EQ(sPourquoi, st.pszRetour) << st.pszExpression;
            continue;
        }
        EXPECT_EQ(cl.eKind(), st.eKind) << st.pszExpression;
        if (st.eKind == CHostValue::KIND_STRING && std::string(st.pszExpression) == "'a\\0b'")
            EXPECT_EQ(cl.sGetString(), std::string("a\0b", 3));
        else
            EXPECT_EQ(sRetour(cl), st.pszRetour) << st.pszExpression;
    }
}

TEST_F(ValeursLua, TableauxEtImbrication) {
    CHostValue cl;
    std::string sPourquoi;
    ASSERT_TRUE(bConvertit("{1, 'deux', {3}, {year=2020, month=1, day=2}}", cl, sPourquoi))
        << sPourquoi;
    ASSERT_EQ(cl.eKind(), CHostValue::KIND_ARRAY);
    ASSERT_EQ(cl.tabGetArray().size(), 4u);
    EXPECT_EQ(cl.tabGetArray()[2].eKind(), CHostValue::KIND_ARRAY);
    EXPECT_EQ(cl.tabGetArray()[3].eKind(), CHostValue::KIND_DATETIME);
    // Tables are read raw: a metatable of the script does not run.
    ASSERT_TRUE(bConvertit("setmetatable({}, {__index = function() error('ran') end, "
                           "__len = function() error('ran') end})",
                           cl, sPourquoi));
    EXPECT_TRUE(cl.tabGetArray().empty());
    // Deep nesting is refused, not followed.
    ASSERT_FALSE(bConvertit(
        "(function() local t = {} for i = 1, 100 do t = {t} end return t end)()", cl, sPourquoi));
    EXPECT_EQ(sPourquoi, "tables nested too deep");

    CLuaValues::s_Push(L,
                       CHostValue::s_Array({CHostValue::s_Integer(7), CHostValue::s_String("x")}));
    lua_setglobal(L, "t");
    ASSERT_EQ(luaL_dostring(L, "return #t == 2 and t[1] == 7 and t[2] == 'x'"), LUA_OK);
    EXPECT_TRUE(lua_toboolean(L, -1));
    lua_settop(L, 0);
}

TEST_F(ValeursLua, DatesAbsentesEtTexte) {
    CLuaValues::s_PushDate(L, CDateTime());
    EXPECT_TRUE(lua_isnil(L, -1)) << "an absent date is nil";
    lua_settop(L, 0);
    CDateTime dt;
    ASSERT_TRUE(CHostValue::s_bParseDate("1999-12-31T23:59:59.999", dt));
    CLuaValues::s_PushDate(L, dt);
    lua_setglobal(L, "d");
    ASSERT_EQ(
        luaL_dostring(L, "return tostring(d), d.year, d.month, d.day, d.hour, d.min, d.sec, d.ms"),
        LUA_OK);
    EXPECT_STREQ(lua_tostring(L, 1), "1999-12-31T23:59:59.999");
    const int tabAttendu[] = {1999, 12, 31, 23, 59, 59, 999};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(lua_tointeger(L, i + 2), tabAttendu[i]);
}

TEST_F(ValeursLua, TablesDErreur) {
    STHostOutcome st;
    st.bError = true;
    st.nCode = 600014;
    st.nLevel = 2;
    st.sMessage = "trop de points";
    st.sDebug = "##detail##";
    CLuaValues::s_PushError(L, st);
    EXPECT_TRUE(CLuaValues::s_bIsError(L, -1));
    lua_setglobal(L, "e");
    ASSERT_EQ(luaL_dostring(L, "return tostring(e), e.code, e.level, e.message, e.debug"), LUA_OK);
    EXPECT_STREQ(lua_tostring(L, 1), "kvggl error 600014 (level 2): trop de points");
    EXPECT_EQ(lua_tointeger(L, 2), 600014);
    EXPECT_EQ(lua_tointeger(L, 3), 2);
    EXPECT_STREQ(lua_tostring(L, 5), "##detail##");
    ASSERT_EQ(luaL_dostring(L, "return {code = 1}"), LUA_OK);
    EXPECT_FALSE(CLuaValues::s_bIsError(L, -1)) << "a table like it is not one";
}

} // namespace
