#include "LuaModule.h"

#include "AnyTypes.h"
#include "Host.h"
#include "HostServices.h"
#include "LuaJSON.h"
#include "LuaObjects.h"
#include "LuaRaise.h"
#include "LuaValues.h"
#include "NameKey.h"
#include "Utf8.h"

#include <lua.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr const char* kszSentinelMeta = "kvggl.sentinel";

// The host of the process, shared by its Lua states.
struct STModuleHost {
    CHost clHost;
    std::string sPath;
    int nStates = 0;
};
STModuleHost* gpstHost = nullptr;

CHost& s_Host() {
    return gpstHost->clHost;
}

// The value and, when the component left an error, the error table.
int s_nOutcome(lua_State* L, const STHostOutcome& st) {
    if (!st.sRefusal.empty())
        return KVLua::nPushMessage(L, st.sRefusal);
    CLuaValues::s_Push(L, st.clValue);
    if (!st.bError)
        return 1;
    CLuaValues::s_PushError(L, st);
    return 2;
}

// Arguments nFirst.. of the call; false with the message pushed. Messages number them from
// nNumber.
bool s_bArguments(lua_State* L, int nFirst, const std::string& sFunction,
                  std::vector<CHostValue>& tab, int nNumber = 1) {
    for (int i = nFirst, n = lua_gettop(L); i <= n; ++i) {
        CHostValue cl;
        std::string sWhy;
        if (!CLuaValues::s_bToHost(L, i, cl, sWhy)) {
            std::string s = "bad argument #" + std::to_string(i - nFirst + nNumber) + " to '" +
                            sFunction + "' (" + sWhy + ")";
            lua_pushlstring(L, s.data(), s.size());
            return false;
        }
        tab.push_back(std::move(cl));
    }
    return true;
}

// Where the script stands, for the VM's nInfoVM.
void s_Position(lua_State* L, const std::string& sFunction) {
    lua_Debug ar;
    if (lua_getstack(L, 1, &ar) && lua_getinfo(L, "Sl", &ar))
        s_Host().clVM().SetPosition(KVUtf8::VersWide(ar.short_src), KVUtf8::VersWide(sFunction),
                                    ar.currentline);
}

// ---- Functions, types, constants -------------------------------------------------------------

int s_nFunction(lua_State* L) {
    int nFonction = static_cast<int>(lua_tointeger(L, lua_upvalueindex(1)));
    const std::string& sNom =
        s_Host().clTables().tabFunctions()[static_cast<size_t>(nFonction)].sName;
    std::vector<CHostValue> tab;
    if (!s_bArguments(L, 1, sNom, tab))
        return -1;
    s_Position(L, sNom);
    STHostOutcome st;
    s_Host().bCall(nFonction, tab, st);
    tab.clear();
    return s_nOutcome(L, st);
}

void s_PushFunction(lua_State* L, int nFunction) {
    lua_pushinteger(L, nFunction);
    lua_pushcclosure(L, KVLua::lCall<s_nFunction>, 1);
}

int s_nConstruct(lua_State* L) {
    int nClasse = static_cast<int>(lua_tointeger(L, lua_upvalueindex(1)));
    const std::string& sNom = s_Host().clTables().tabClasses()[static_cast<size_t>(nClasse)].sName;
    std::vector<CHostValue> tab;
    if (!s_bArguments(L, 1, sNom, tab))
        return -1;
    STHostOutcome st;
    s_Host().bNew(nClasse, tab, st);
    return s_nOutcome(L, st);
}

// A type the component declares without a class: using it says so.
int s_nDeclaredOnly(lua_State* L) {
    return KVLua::nPushMessage(L, std::string("type '") + lua_tostring(L, lua_upvalueindex(1)) +
                             "' is declared by the component but has no class");
}

// The letters a name differs by (Levenshtein, on the keys that names match by).
size_t s_nDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> tab(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        tab[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t nDiagonale = tab[0];
        tab[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t n = std::min({tab[j] + 1, tab[j - 1] + 1,
                                 nDiagonale + (a[i - 1] == b[j - 1] ? 0 : 1)});
            nDiagonale = tab[j];
            tab[j] = n;
        }
    }
    return tab[b.size()];
}

// The module's name closest to an unknown one, when one is close enough to be a slip; "".
std::string s_sClosest(lua_State* L, std::string_view svUnknown) {
    std::string sKey = CNameKey::s_sKey(svUnknown), sBest;
    size_t nBest = std::max<size_t>(2, sKey.size() / 3) + 1;
    auto fnTry = [&](const std::string& sName) {
        size_t n = s_nDistance(sKey, CNameKey::s_sKey(sName));
        if (n < nBest) {
            nBest = n;
            sBest = sName;
        }
    };
    const CComponentTables& cl = s_Host().clTables();
    for (const auto& st : cl.tabFunctions())
        fnTry(st.sName);
    for (const auto& st : cl.tabClasses())
        fnTry(st.sName);
    for (const auto& st : cl.tabConstants())
        fnTry(st.sName);
    for (const auto& st : cl.tabTypeRefs())
        fnTry(st.sName);
    lua_pushnil(L); // the module's own names: the keys of the table being resolved
    while (lua_next(L, 1)) {
        lua_pop(L, 1);
        if (lua_type(L, -1) == LUA_TSTRING)
            fnTry(lua_tostring(L, -1));
    }
    return sBest;
}

// kvggl.<name>: resolved once, then kept in the table of names behind the module. A name that
// is none of the module's is an error that suggests the closest one.
int s_nResolve(lua_State* L) {
    if (lua_type(L, 2) != LUA_TSTRING) {
        lua_pushnil(L);
        return 1;
    }
    size_t n = 0;
    const char* psz = lua_tolstring(L, 2, &n);
    std::string_view sv(psz, n);
    const CComponentTables& cl = s_Host().clTables();
    if (int f = cl.nFindFunction(sv); f >= 0) {
        s_PushFunction(L, f);
    } else if (int c = cl.nFindClass(sv); c >= 0) {
        lua_pushinteger(L, c);
        lua_pushcclosure(L, KVLua::lCall<s_nConstruct>, 1);
    } else if (int k = cl.nFindConstant(sv); k >= 0) {
        CLuaValues::s_Push(L, s_Host().clConstant(k));
    } else if (int t = cl.nFindTypeRef(sv); t >= 0) {
        lua_pushstring(L, cl.tabTypeRefs()[static_cast<size_t>(t)].sName.c_str());
        lua_pushcclosure(L, KVLua::lCall<s_nDeclaredOnly>, 1);
    } else {
        std::string s = "kvggl has no function, type or constant '" + std::string(sv) + "'";
        if (std::string sClosest = s_sClosest(L, sv); !sClosest.empty())
            s += " (did you mean '" + sClosest + "'?)";
        return KVLua::nPushMessage(L, s);
    }
    lua_pushvalue(L, 2);
    lua_pushvalue(L, -2);
    lua_rawset(L, 1);
    return 1;
}

// kvggl.<name> = value: the module's names are the component's, and constants stay constant.
int s_nAssign(lua_State* L) {
    std::string sName = luaL_tolstring(L, 2, nullptr);
    lua_pop(L, 1);
    const CComponentTables& cl = s_Host().clTables();
    if (cl.nFindConstant(sName) >= 0)
        return KVLua::nPushMessage(L, "cannot assign to '" + sName +
                                          "': it is a constant of the component");
    return KVLua::nPushMessage(L, "cannot assign to '" + sName +
                                      "': the module's names cannot be changed");
}

// ---- The module's own functions --------------------------------------------------------------

int s_nNew(lua_State* L) {
    if (lua_type(L, 1) != LUA_TSTRING)
        return KVLua::nPushMessage(L, std::string("bad argument #1 to 'new' (string expected, got ") +
                                 luaL_typename(L, 1) + ")");
    std::string sType = lua_tostring(L, 1);
    std::vector<CHostValue> tab;
    if (!s_bArguments(L, 2, "new", tab, 2))
        return -1;
    STHostOutcome st;
    s_Host().bNew(sType, tab, st);
    return s_nOutcome(L, st);
}

int s_lCheck(lua_State* L) {
    if (lua_gettop(L) >= 2 && CLuaValues::s_bIsError(L, 2)) {
        lua_pushvalue(L, 2);
        return lua_error(L);
    }
    lua_settop(L, 1);
    return 1;
}

IObjetBase* s_piObjectArgument(lua_State* L, int i, const char* pszFunction) {
    IObjetBase* pi = CLuaObjects::s_piObject(L, i);
    if (!pi)
        lua_pushfstring(L, "bad argument #%d to '%s' (object expected, got %s)", i, pszFunction,
                        luaL_typename(L, i));
    return pi;
}

// serialize(object [, {secrets = false}]): without secrets, credentials are left out.
int s_nSerialize(lua_State* L) {
    IObjetBase* pi = s_piObjectArgument(L, 1, "serialize");
    if (!pi)
        return -1;
    bool bSecrets = true;
    if (!lua_isnoneornil(L, 2)) {
        if (lua_type(L, 2) != LUA_TTABLE)
            return KVLua::nPushMessage(L, std::string("bad argument #2 to 'serialize' (table of "
                                                      "options expected, got ") +
                                              luaL_typename(L, 2) + ")");
        lua_getfield(L, 2, "secrets");
        bSecrets = lua_isnil(L, -1) || lua_toboolean(L, -1);
        lua_pop(L, 1);
    }
    STHostOutcome st;
    s_Host().bSave(pi, st, bSecrets);
    return s_nOutcome(L, st);
}

int s_nDeserialize(lua_State* L) {
    int nSauve = lua_gettop(L) >= 2 ? 2 : 1;
    for (int i = 1; i <= nSauve; ++i)
        if (lua_type(L, i) != LUA_TSTRING)
            return KVLua::nPushMessage(L, "bad argument #" + std::to_string(i) +
                                     " to 'deserialize' (string expected, got " +
                                     luaL_typename(L, i) + ")");
    std::string sType = nSauve == 2 ? lua_tostring(L, 1) : "";
    size_t n = 0;
    const char* psz = lua_tolstring(L, nSauve, &n);
    STHostOutcome st;
    s_Host().bRebuild(sType, std::string_view(psz, n), st);
    return s_nOutcome(L, st);
}

int s_nCopy(lua_State* L) {
    IObjetBase* pi = s_piObjectArgument(L, 1, "copy");
    if (!pi)
        return -1;
    STHostOutcome st;
    s_Host().bCopy(pi, st);
    return s_nOutcome(L, st);
}

int s_nReset(lua_State* L) {
    IObjetBase* pi = s_piObjectArgument(L, 1, "reset");
    if (!pi)
        return -1;
    STHostOutcome st;
    if (!s_Host().bReset(pi, st))
        return KVLua::nPushMessage(L, st.sRefusal);
    st.clValue = CHostValue::s_Boolean(!st.bError);
    return s_nOutcome(L, st);
}

void s_SetString(lua_State* L, const char* pszField, const std::string& s) {
    lua_pushlstring(L, s.data(), s.size());
    lua_setfield(L, -2, pszField);
}
void s_SetBoolean(lua_State* L, const char* pszField, bool b) {
    lua_pushboolean(L, b);
    lua_setfield(L, -2, pszField);
}
void s_SetInteger(lua_State* L, const char* pszField, lua_Integer n) {
    lua_pushinteger(L, n);
    lua_setfield(L, -2, pszField);
}

void s_PushSyntax(lua_State* L, const CComponentTables& cl, const CComponentTables::STSyntax& st) {
    lua_createtable(L, 0, 5);
    s_SetInteger(L, "index", st.nIndex);
    s_SetInteger(L, "count", st.nParameters);
    s_SetBoolean(L, "handled", st.bHandled());
    if (st.bSigned) {
        s_SetString(L, "result", cl.sSignatureTypeName(st.stResult));
        lua_createtable(L, static_cast<int>(st.tabParameters.size()), 0);
        for (size_t i = 0; i < st.tabParameters.size(); ++i) {
            std::string s = cl.sSignatureTypeName(st.tabParameters[i]);
            lua_pushlstring(L, s.data(), s.size());
            lua_rawseti(L, -2, static_cast<lua_Integer>(i + 1));
        }
    } else {
        s_SetString(L, "result", "");
        lua_createtable(L, 0, 0); // no signature: nothing is told of its types
    }
    lua_setfield(L, -2, "parameters");
}

int s_nDescribe(lua_State* L) {
    const CComponentTables& cl = s_Host().clTables();
    lua_createtable(L, 0, 4);

    lua_createtable(L, static_cast<int>(cl.tabFunctions().size()), 0);
    for (size_t f = 0; f < cl.tabFunctions().size(); ++f) {
        const auto& st = cl.tabFunctions()[f];
        lua_createtable(L, 0, 3);
        s_SetString(L, "name", st.sName);
        s_SetInteger(L, "number", static_cast<lua_Integer>(st.tabRows.front()->nNumero));
        lua_createtable(L, static_cast<int>(st.tabSyntaxes.size()), 0);
        for (size_t k = 0; k < st.tabSyntaxes.size(); ++k) {
            s_PushSyntax(L, cl, st.tabSyntaxes[k]);
            lua_rawseti(L, -2, static_cast<lua_Integer>(k + 1));
        }
        lua_setfield(L, -2, "syntaxes");
        lua_rawseti(L, -2, static_cast<lua_Integer>(f + 1));
    }
    lua_setfield(L, -2, "functions");

    lua_createtable(L, static_cast<int>(cl.tabConstants().size()), 0);
    for (size_t k = 0; k < cl.tabConstants().size(); ++k) {
        lua_createtable(L, 0, 3);
        s_SetString(L, "name", cl.tabConstants()[k].sName);
        s_SetInteger(L, "number", static_cast<lua_Integer>(cl.tabConstants()[k].pst->nNumero));
        CLuaValues::s_Push(L, s_Host().clConstant(static_cast<int>(k)));
        lua_setfield(L, -2, "value");
        lua_rawseti(L, -2, static_cast<lua_Integer>(k + 1));
    }
    lua_setfield(L, -2, "constants");

    lua_createtable(L, static_cast<int>(cl.tabClasses().size()), 0);
    for (size_t c = 0; c < cl.tabClasses().size(); ++c) {
        const auto& st = cl.tabClasses()[c];
        lua_createtable(L, 0, 6);
        s_SetString(L, "name", st.sName);
        s_SetInteger(L, "number", st.nNumber);
        s_SetInteger(L, "constructors", static_cast<lua_Integer>(st.tabConstructors.size()));
        s_SetBoolean(L, "handled", !st.tabConstructors.empty() && st.tabConstructors[0].bHandled());
        lua_createtable(L, static_cast<int>(st.tabProperties.size()), 0);
        for (size_t p = 0; p < st.tabProperties.size(); ++p) {
            const auto& stP = st.tabProperties[p];
            lua_createtable(L, 0, 5);
            s_SetString(L, "name", stP.sName);
            s_SetString(L, "type", cl.sPropertyTypeName(stP));
            s_SetString(L, "access", stP.pst->pfnSet ? "rw" : stP.pst->pfnSetForce ? "rf" : "r");
            s_SetBoolean(L, "handled", stP.pfnGetter() != nullptr);
            s_SetBoolean(L, "compat", (stP.pst->qwFlags & 1) != 0);
            lua_rawseti(L, -2, static_cast<lua_Integer>(p + 1));
        }
        lua_setfield(L, -2, "properties");
        lua_createtable(L, static_cast<int>(st.tabAccessors.size()), 0);
        for (size_t a = 0; a < st.tabAccessors.size(); ++a) {
            const auto& stA = st.tabAccessors[a];
            lua_createtable(L, 0, 4);
            s_SetString(L, "name", stA.sName);
            s_SetString(
                L, "type",
                cl.sSignatureTypeName({KVTYPE_KLDINO, static_cast<uint16_t>(stA.nTypeRef())}));
            s_SetBoolean(L, "handled", stA.pst->pfnAccesseur != nullptr);
            s_SetBoolean(L, "compat", (stA.pst->qwFlags & 1) != 0);
            lua_rawseti(L, -2, static_cast<lua_Integer>(a + 1));
        }
        lua_setfield(L, -2, "collections");
        lua_rawseti(L, -2, static_cast<lua_Integer>(c + 1));
    }
    lua_setfield(L, -2, "types");

    lua_createtable(L, 0, 0);
    lua_Integer n = 0;
    for (const auto& st : cl.tabTypeRefs()) {
        if (st.nClass >= 0)
            continue;
        lua_pushlstring(L, st.sName.data(), st.sName.size());
        lua_rawseti(L, -2, ++n);
    }
    lua_setfield(L, -2, "declared");
    return 1;
}

int s_nStatus(lua_State* L) {
    lua_createtable(L, 0, 4);
    s_SetString(L, "component", gpstHost->sPath);
    s_SetBoolean(L, "services", CHostServices::s_bAvailable());
    s_SetString(L, "warnings", s_Host().sWarnings());
    s_SetInteger(L, "objects", s_Host().clFactory().nLivePeers());
    if (s_Host().bRefused()) {
        STHostOutcome st;
        st.TakeError(s_Host().errRefusal());
        CLuaValues::s_PushError(L, st);
        lua_setfield(L, -2, "refusal");
    }
    return 1;
}

// ---- Life ------------------------------------------------------------------------------------

// The last state of the process ends the host: after every object of the state, since the
// sentinel was made before any of them and finalisers run in reverse order.
int s_lEnd(lua_State*) {
    if (gpstHost && --gpstHost->nStates == 0) {
        KVLua::gbHostLive = false;
        delete gpstHost;
        gpstHost = nullptr;
    }
    return 0;
}

int s_nOpenWork(lua_State* L) {
    if (!gpstHost) {
        // Held until it is loaded, so that a load cut short by memory unloads what it began.
        auto pst = std::make_unique<STModuleHost>();
        pst->sPath = CHost::s_sDefaultPath();
        std::string sErreur;
        if (!pst->clHost.bLoad(pst->sPath, sErreur))
            return KVLua::nPushMessage(L, "kvggl: " + sErreur);
        gpstHost = pst.release();
        KVLua::gbHostLive = true;
    }
    ++gpstHost->nStates;
    lua_newuserdatauv(L, 0, 0);
    if (luaL_newmetatable(L, kszSentinelMeta)) {
        lua_pushcfunction(L, s_lEnd);
        lua_setfield(L, -2, "__gc");
    }
    lua_setmetatable(L, -2);
    // Kept under its own address: a second opening in one state keeps the first one's too.
    lua_rawsetp(L, LUA_REGISTRYINDEX, lua_topointer(L, -1));

    CLuaValues::s_Register(L);
    CLuaObjects::s_Register(L, &s_Host());
    CLuaObjects::ms_pfnPushFunction = s_PushFunction;

    const luaL_Reg tab[] = {{"new", KVLua::lCall<s_nNew>},
                            {"check", s_lCheck},
                            {"serialize", KVLua::lCall<s_nSerialize>},
                            {"deserialize", KVLua::lCall<s_nDeserialize>},
                            {"copy", KVLua::lCall<s_nCopy>},
                            {"reset", KVLua::lCall<s_nReset>},
                            {"describe", KVLua::lCall<s_nDescribe>},
                            {"status", KVLua::lCall<s_nStatus>},
                            {nullptr, nullptr}};
    // The names live behind the module table, which stays empty so that every assignment to
    // it reaches __newindex; the component's names join them as they are first used.
    luaL_newlib(L, tab);
    CLuaJSON::s_Push(L, &s_Host());
    lua_setfield(L, -2, "json");
    lua_createtable(L, 0, 1);
    lua_pushcfunction(L, KVLua::lCall<s_nResolve>);
    lua_setfield(L, -2, "__index");
    lua_setmetatable(L, -2);

    lua_createtable(L, 0, 0);
    lua_createtable(L, 0, 3);
    lua_pushvalue(L, -3);
    lua_setfield(L, -2, "__index");
    lua_pushcfunction(L, KVLua::lCall<s_nAssign>);
    lua_setfield(L, -2, "__newindex");
    lua_pushliteral(L, "kvggl");
    lua_setfield(L, -2, "__metatable");
    lua_setmetatable(L, -2);
    return 1;
}

} // namespace

int CLuaModule::s_nOpen(lua_State* L) {
    int n = KVLua::nGuard(L, s_nOpenWork);
    return n < 0 ? lua_error(L) : n;
}

extern "C" int luaopen_kvggl(lua_State* L) {
    return CLuaModule::s_nOpen(L);
}
