#include "LuaJSON.h"

#include "Any.h"
#include "Host.h"
#include "JSONService.h"
#include "LuaRaise.h"
#include "LuaValues.h"
#include "ObjectSerializer.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <lua.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr const char* kszNullKey = "kvggl.json.null";

CHost* gpclHost = nullptr;

void s_PushNull(lua_State* L) {
    lua_getfield(L, LUA_REGISTRYINDEX, kszNullKey);
}

bool s_bIsNull(lua_State* L, int i) {
    s_PushNull(L);
    bool b = lua_rawequal(L, i < 0 ? i - 1 : i, -1);
    lua_pop(L, 1);
    return b;
}

// ---- Decoding: one visitor per level of the tree, each filling the table on top -----------

bool s_bPushNode(lua_State* L, IElementJSON& clNode, int nDepth, std::string& sWhy);

class CLevel final : public IVisiteurJSON {
public:
    CLevel(lua_State* L, int nDepth, std::string& sWhy) : m_L(L), m_nDepth(nDepth), m_sWhy(sWhy) {}

    eVISITEJSON veVisiteValeur(CAny&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteObjet(IObjetJSON&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON& clValeur) override {
        std::string s = KVUtf8::VersUtf8(clNom.sv());
        lua_pushlstring(m_L, s.data(), s.size());
        if (!s_bPushNode(m_L, clValeur, m_nDepth + 1, m_sWhy)) {
            lua_pop(m_L, 1); // the name
            return VISITE_ARRET;
        }
        lua_rawset(m_L, -3);
        return VISITE_SUIVANT;
    }
    eVISITEJSON veVisiteElement(IElementJSON& clElement) override {
        if (!s_bPushNode(m_L, clElement, m_nDepth + 1, m_sWhy))
            return VISITE_ARRET;
        lua_rawseti(m_L, -2, ++m_nElements);
        return VISITE_SUIVANT;
    }

    bool bOk() const { return m_sWhy.empty(); }

private:
    lua_State* m_L;
    int m_nDepth;
    std::string& m_sWhy;
    lua_Integer m_nElements = 0;
};

// The node as a Lua value on top; false with sWhy set and nothing pushed.
bool s_bPushNode(lua_State* L, IElementJSON& clNode, int nDepth, std::string& sWhy) {
    if (nDepth > CLuaJSON::knMaxDepth || !lua_checkstack(L, 4)) {
        sWhy = "the text is nested more than " + std::to_string(CLuaJSON::knMaxDepth) +
               " levels deep";
        return false;
    }
    CLevel clLevel(L, nDepth, sWhy);
    if (IObjetJSON* pi = clNode.vpiGetIObjetJSON()) {
        lua_createtable(L, 0, pi->vnGetNbMembre());
        pi->vAccepte(clLevel);
    } else if (ITableauJSON* piT = clNode.vpiGetITableauJSON()) {
        lua_createtable(L, piT->vnGetNbElement(), 0);
        piT->vAccepte(clLevel);
    } else {
        CAny clValeur;
        CHostValue cl;
        if (clNode.veGetGenre() == GENRE_JSON_NUL) {
            s_PushNull(L);
        } else if (clNode.vbGetValeur(clValeur) && CHostValue::s_bFromAny(clValeur, cl)) {
            CLuaValues::s_Push(L, cl);
        } else {
            sWhy = "a value of the text cannot be read";
            return false;
        }
    }
    if (clLevel.bOk())
        return true;
    lua_pop(L, 1);
    return false;
}

int s_nDecode(lua_State* L) {
    if (lua_type(L, 1) != LUA_TSTRING)
        return KVLua::nPushMessage(L, std::string("bad argument #1 to 'decode' (string expected, got ") +
                                          luaL_typename(L, 1) + ")");
    size_t n = 0;
    const char* psz = lua_tolstring(L, 1, &n);
    CXError clErreur;
    CRef<IContenuJSON> clService = CRef<IContenuJSON>::Adopt(static_cast<IContenuJSON*>(
        gpclHost->clLibShop().piGetInterface(0, 0, gszServiceJSON, &clErreur)));
    if (!clService)
        return KVLua::nPushMessage(L, "decode: the host has no JSON service");
    CRef<IElementJSON> clRacine = CRef<IElementJSON>::Adopt(clService->vpiAnalyse(psz, n, &clErreur));
    if (!clRacine) {
        STHostOutcome st;
        st.TakeError(clErreur);
        lua_pushnil(L);
        CLuaValues::s_PushError(L, st);
        return 2;
    }
    std::string sWhy;
    if (!s_bPushNode(L, *clRacine, 0, sWhy))
        return KVLua::nPushMessage(L, "decode: " + sWhy);
    return 1;
}

// ---- Encoding -------------------------------------------------------------------------------

class CWriter {
public:
    explicit CWriter(lua_State* L) : m_L(L) {}

    // The value at index i appended to s; false with sWhy set.
    bool bValue(int i, int nDepth) {
        i = lua_absindex(m_L, i);
        switch (lua_type(m_L, i)) {
        case LUA_TBOOLEAN:
            m_s += lua_toboolean(m_L, i) ? "true" : "false";
            return true;
        case LUA_TNUMBER:
            return bNumber(i);
        case LUA_TSTRING: {
            size_t n = 0;
            const char* psz = lua_tolstring(m_L, i, &n);
            return bText(std::string_view(psz, n));
        }
        case LUA_TTABLE:
            return bTable(i, nDepth);
        default:
            if (s_bIsNull(m_L, i)) {
                m_s += "null";
                return true;
            }
            return bFail(std::string("a ") + luaL_typename(m_L, i) + " cannot be written as JSON");
        }
    }

    std::string m_s;
    std::string m_sWhy;

private:
    bool bFail(std::string s) {
        m_sWhy = std::move(s);
        return false;
    }

    bool bNumber(int i) {
        if (lua_isinteger(m_L, i)) {
            m_s += std::to_string(lua_tointeger(m_L, i));
            return true;
        }
        double r = lua_tonumber(m_L, i);
        if (!std::isfinite(r))
            return bFail("JSON has no infinite or NaN numbers");
        char sz[40];
        std::snprintf(sz, sizeof(sz), "%.17g", r);
        m_s += sz;
        return true;
    }

    bool bText(std::string_view sv) {
        if (KVUtf8::VersUtf8(KVUtf8::VersWide(sv)) != sv)
            return bFail("a string is not UTF-8 text");
        CObjectSerializer::s_QuoteJSON(m_s, sv);
        return true;
    }

    bool bTable(int i, int nDepth) {
        if (nDepth >= CLuaJSON::knMaxDepth || !lua_checkstack(m_L, 6))
            return bFail("the value is nested more than " +
                         std::to_string(CLuaJSON::knMaxDepth) +
                         " levels deep (does a table hold itself?)");
        if (CLuaValues::s_bIsDate(m_L, i)) {
            CHostValue cl;
            std::string sWhy;
            if (!CLuaValues::s_bToHost(m_L, i, cl, sWhy))
                return bFail(sWhy);
            return bText(CHostValue::s_sFormatDate(cl.dtGetDateTime()));
        }
        // Keys first: an array has exactly 1..n; an object's members go in name order.
        lua_Integer nKeys = 0;
        std::vector<std::string> tabNames;
        bool bNames = true;
        lua_pushnil(m_L);
        while (lua_next(m_L, i)) {
            lua_pop(m_L, 1);
            ++nKeys;
            if (lua_type(m_L, -1) == LUA_TSTRING)
                tabNames.emplace_back(lua_tostring(m_L, -1));
            else
                bNames = false;
        }
        lua_Integer n = static_cast<lua_Integer>(lua_rawlen(m_L, i));
        if (nKeys > 0 && n == nKeys) {
            m_s += '[';
            for (lua_Integer k = 1; k <= n; ++k) {
                if (k > 1)
                    m_s += ',';
                lua_rawgeti(m_L, i, k);
                bool b = bValue(-1, nDepth + 1);
                lua_pop(m_L, 1);
                if (!b)
                    return false;
            }
            m_s += ']';
            return true;
        }
        if (!bNames)
            return bFail("a table with keys other than strings is neither an array nor an object");
        std::sort(tabNames.begin(), tabNames.end());
        m_s += '{';
        for (size_t k = 0; k < tabNames.size(); ++k) {
            if (k > 0)
                m_s += ',';
            if (!bText(tabNames[k]))
                return false;
            m_s += ':';
            lua_pushlstring(m_L, tabNames[k].data(), tabNames[k].size());
            lua_rawget(m_L, i);
            bool b = bValue(-1, nDepth + 1);
            lua_pop(m_L, 1);
            if (!b)
                return false;
        }
        m_s += '}';
        return true;
    }

    lua_State* m_L;
};

int s_nEncode(lua_State* L) {
    luaL_checkany(L, 1);
    std::string s;
    {
        CWriter cl(L);
        if (!cl.bValue(1, 0))
            return KVLua::nPushMessage(L, "bad argument #1 to 'encode' (" + cl.m_sWhy + ")");
        s = std::move(cl.m_s);
    }
    lua_pushlstring(L, s.data(), s.size());
    return 1;
}

int s_lNullToString(lua_State* L) {
    lua_pushliteral(L, "null");
    return 1;
}

} // namespace

void CLuaJSON::s_Push(lua_State* L, CHost* pclHost) {
    gpclHost = pclHost;
    lua_getfield(L, LUA_REGISTRYINDEX, kszNullKey);
    if (lua_isnil(L, -1)) {
        lua_newuserdatauv(L, 0, 0);
        lua_createtable(L, 0, 2);
        lua_pushcfunction(L, s_lNullToString);
        lua_setfield(L, -2, "__tostring");
        lua_pushliteral(L, "null");
        lua_setfield(L, -2, "__name");
        lua_setmetatable(L, -2);
        lua_setfield(L, LUA_REGISTRYINDEX, kszNullKey);
    }
    lua_pop(L, 1);
    const luaL_Reg tab[] = {{"decode", KVLua::lCall<s_nDecode>},
                            {"encode", KVLua::lCall<s_nEncode>},
                            {nullptr, nullptr}};
    luaL_newlib(L, tab);
    s_PushNull(L);
    lua_setfield(L, -2, "null");
}
