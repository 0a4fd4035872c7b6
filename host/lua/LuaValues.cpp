#include "LuaValues.h"

#include "LuaObjects.h"

#include <lua.hpp>

#include <cmath>
#include <vector>

namespace {

int s_lDateToString(lua_State* L) {
    CHostValue cl;
    std::string sPourquoi;
    if (!CLuaValues::s_bToHost(L, 1, cl, sPourquoi) || cl.eKind() != CHostValue::KIND_DATETIME) {
        lua_pushstring(L, "(invalid date)");
        return 1;
    }
    std::string s = CHostValue::s_sFormatDate(cl.dtGetDateTime());
    lua_pushlstring(L, s.data(), s.size());
    return 1;
}

// A field of a table, read raw.
int s_nRawField(lua_State* L, int i, const char* psz) {
    lua_pushstring(L, psz);
    return lua_rawget(L, i);
}

int s_lErrorToString(lua_State* L) {
    luaL_checktype(L, 1, LUA_TTABLE); // raised here: no C++ value is alive yet
    s_nRawField(L, 1, "code");
    lua_Integer nCode = lua_tointeger(L, -1);
    s_nRawField(L, 1, "level");
    lua_Integer nNiveau = lua_tointeger(L, -1);
    s_nRawField(L, 1, "message");
    const char* pszMessage = lua_tostring(L, -1);
    lua_pushfstring(L, "kvggl error %I (level %I): %s", nCode, nNiveau,
                    pszMessage ? pszMessage : "");
    return 1;
}

bool s_bDate(lua_State* L, int i, CDateTime& dt, std::string& sWhy) {
    struct {
        const char* psz;
        int nMin, nMax, nDefaut;
        bool bRequis;
    } tabChamps[] = {{"year", 1, 9999, 0, true}, {"month", 1, 12, 0, true},
                     {"day", 1, 31, 0, true},    {"hour", 0, 23, 0, false},
                     {"min", 0, 59, 0, false},   {"sec", 0, 59, 0, false},
                     {"ms", 0, 999, 0, false}};
    int tab[7];
    for (int n = 0; n < 7; ++n) {
        int nType = s_nRawField(L, i, tabChamps[n].psz);
        int nEst = 0;
        lua_Integer v = lua_tointegerx(L, -1, &nEst);
        lua_pop(L, 1);
        if (nType == LUA_TNIL && !tabChamps[n].bRequis) {
            tab[n] = tabChamps[n].nDefaut;
            continue;
        }
        if (!nEst || v < tabChamps[n].nMin || v > tabChamps[n].nMax) {
            sWhy = std::string("invalid date: field '") + tabChamps[n].psz +
                   (nType == LUA_TNIL ? "' missing" : "' out of range");
            return false;
        }
        tab[n] = static_cast<int>(v);
    }
    if (tab[2] > CDateTimeBase::s_nJoursDansMois(tab[0], tab[1])) {
        sWhy = "invalid date: no such day in that month";
        return false;
    }
    CDateTime d;
    d.bModifieAnnee(tab[0]);
    d.bModifieMois(tab[1]);
    d.bModifieJour(tab[2]);
    d.bModifieHeure(tab[3]);
    d.bModifieMinute(tab[4]);
    d.bModifieSeconde(tab[5]);
    d.bModifieMilli(tab[6]);
    dt = d;
    return true;
}

bool s_bVersHote(lua_State* L, int i, CHostValue& cl, std::string& sWhy, int nProfondeur) {
    i = lua_absindex(L, i);
    switch (lua_type(L, i)) {
    case LUA_TNIL:
    case LUA_TNONE:
        cl = CHostValue();
        return true;
    case LUA_TBOOLEAN:
        cl = CHostValue::s_Boolean(lua_toboolean(L, i));
        return true;
    case LUA_TNUMBER:
        if (lua_isinteger(L, i))
            cl = CHostValue::s_Integer(lua_tointeger(L, i));
        else
            cl = CHostValue::s_Real(lua_tonumber(L, i));
        return true;
    case LUA_TSTRING: {
        size_t n = 0;
        const char* p = lua_tolstring(L, i, &n);
        cl = CHostValue::s_String(std::string(p, n));
        return true;
    }
    case LUA_TUSERDATA:
        if (IObjetBase* pi = CLuaObjects::s_piObject(L, i)) {
            cl = CHostValue::s_Object(pi);
            return true;
        }
        sWhy = CLuaObjects::s_bIsCollection(L, i) ? "a collection cannot be passed as a value"
                                                  : "value expected, got userdata";
        return false;
    case LUA_TTABLE: {
        if (nProfondeur >= CLuaValues::knMaxDepth) {
            sWhy = "tables nested too deep";
            return false;
        }
        // A table with a year is a date; any other is an array.
        int nType = s_nRawField(L, i, "year");
        lua_pop(L, 1);
        if (nType != LUA_TNIL) {
            CDateTime dt;
            if (!s_bDate(L, i, dt, sWhy))
                return false;
            cl = CHostValue::s_DateTime(dt);
            return true;
        }
        std::vector<CHostValue> tab;
        lua_Unsigned n = lua_rawlen(L, i);
        for (lua_Unsigned k = 1; k <= n; ++k) {
            lua_rawgeti(L, i, static_cast<lua_Integer>(k));
            CHostValue clE;
            bool bOk = s_bVersHote(L, -1, clE, sWhy, nProfondeur + 1);
            lua_pop(L, 1);
            if (!bOk)
                return false;
            tab.push_back(std::move(clE));
        }
        cl = CHostValue::s_Array(std::move(tab));
        return true;
    }
    default:
        sWhy = std::string("value expected, got ") + luaL_typename(L, i);
        return false;
    }
}

} // namespace

void CLuaValues::s_Register(lua_State* L) {
    // Protected, so that a script cannot reach the functions and call them on anything.
    if (luaL_newmetatable(L, kszDateMeta)) {
        lua_pushcfunction(L, s_lDateToString);
        lua_setfield(L, -2, "__tostring");
        lua_pushliteral(L, "kvggl.date");
        lua_setfield(L, -2, "__metatable");
    }
    lua_pop(L, 1);
    if (luaL_newmetatable(L, kszErrorMeta)) {
        lua_pushcfunction(L, s_lErrorToString);
        lua_setfield(L, -2, "__tostring");
        lua_pushliteral(L, "kvggl.error");
        lua_setfield(L, -2, "__metatable");
    }
    lua_pop(L, 1);
}

bool CLuaValues::s_bToHost(lua_State* L, int i, CHostValue& clOut, std::string& sWhy) {
    return s_bVersHote(L, i, clOut, sWhy, 0);
}

void CLuaValues::s_PushDate(lua_State* L, const CDateTime& dt) {
    if (!dt.bEstRenseignee()) {
        lua_pushnil(L); // an absent date
        return;
    }
    lua_createtable(L, 0, 7);
    const struct {
        const char* psz;
        int n;
    } tab[] = {{"year", dt.nGetAnnee()}, {"month", dt.nGetMois()}, {"day", dt.nGetJour()},
               {"hour", dt.nGetHeure()}, {"min", dt.nGetMinute()}, {"sec", dt.nGetSeconde()},
               {"ms", dt.nGetMilli()}};
    for (auto& st : tab) {
        lua_pushinteger(L, st.n);
        lua_setfield(L, -2, st.psz);
    }
    luaL_setmetatable(L, kszDateMeta);
}

void CLuaValues::s_Push(lua_State* L, const CHostValue& cl) {
    switch (cl.eKind()) {
    case CHostValue::KIND_NIL:
        lua_pushnil(L);
        return;
    case CHostValue::KIND_BOOLEAN:
        lua_pushboolean(L, cl.bGetBoolean());
        return;
    case CHostValue::KIND_INTEGER:
        lua_pushinteger(L, cl.nGetInteger());
        return;
    case CHostValue::KIND_REAL:
        lua_pushnumber(L, cl.rGetReal());
        return;
    case CHostValue::KIND_STRING:
        lua_pushlstring(L, cl.sGetString().data(), cl.sGetString().size());
        return;
    case CHostValue::KIND_DATETIME:
        s_PushDate(L, cl.dtGetDateTime());
        return;
    case CHostValue::KIND_OBJECT:
        CLuaObjects::s_PushObject(L, cl.piGetObject());
        return;
    case CHostValue::KIND_ARRAY: {
        const auto& tab = cl.tabGetArray();
        lua_createtable(L, static_cast<int>(tab.size()), 0);
        for (size_t k = 0; k < tab.size(); ++k) {
            s_Push(L, tab[k]);
            lua_rawseti(L, -2, static_cast<lua_Integer>(k + 1));
        }
        return;
    }
    }
    lua_pushnil(L);
}

void CLuaValues::s_PushError(lua_State* L, const STHostOutcome& st) {
    lua_createtable(L, 0, 4);
    lua_pushinteger(L, st.nCode);
    lua_setfield(L, -2, "code");
    lua_pushinteger(L, st.nLevel);
    lua_setfield(L, -2, "level");
    lua_pushlstring(L, st.sMessage.data(), st.sMessage.size());
    lua_setfield(L, -2, "message");
    lua_pushlstring(L, st.sDebug.data(), st.sDebug.size());
    lua_setfield(L, -2, "debug");
    luaL_setmetatable(L, kszErrorMeta);
}

// Whether the value at index i is a table with the module's metatable of that name.
static bool s_bTableOf(lua_State* L, int i, const char* pszMeta) {
    if (lua_type(L, i) != LUA_TTABLE || !lua_getmetatable(L, i))
        return false;
    luaL_getmetatable(L, pszMeta);
    bool b = lua_rawequal(L, -1, -2);
    lua_pop(L, 2);
    return b;
}

bool CLuaValues::s_bIsError(lua_State* L, int i) {
    return s_bTableOf(L, i, kszErrorMeta);
}

bool CLuaValues::s_bIsDate(lua_State* L, int i) {
    return s_bTableOf(L, i, kszDateMeta);
}
