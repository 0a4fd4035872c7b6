#include "LuaObjects.h"

#include "Host.h"
#include "LuaRaise.h"
#include "LuaValues.h"

#include <lua.hpp>

#include <climits>
#include <new>
#include <string>

namespace {

CHost* gpclHost = nullptr;

struct STLuaObject {
    CRef<IObjetBase> clObjet;
};

struct STLuaCollection {
    CRef<IObjetCollection> clListe;
    CRef<IObjetBase> clProprietaire; // the list may live inside its owner
    int nClasse = -1;                // the owner's class
    int nAccesseur = -1;
};

STLuaCollection* s_pCollection(lua_State* L, int i) {
    return static_cast<STLuaCollection*>(luaL_testudata(L, i, CLuaObjects::kszCollectionMeta));
}

int s_nPushError(lua_State* L, const STHostOutcome& st) {
    if (!st.sRefusal.empty())
        return KVLua::nPushMessage(L, st.sRefusal);
    CLuaValues::s_PushError(L, st);
    return -1;
}

const CComponentTables::STClass* s_pstClasse(int nClasse) {
    if (nClasse < 0)
        return nullptr;
    return &gpclHost->clTables().tabClasses()[static_cast<size_t>(nClasse)];
}

std::string s_sNomClasse(int nClasse) {
    const auto* pst = s_pstClasse(nClasse);
    return pst ? pst->sName : std::string("object");
}

void s_PushCollection(lua_State* L, CRef<IObjetCollection> clListe, IObjetBase* piProprietaire,
                      int nClasse, int nAccesseur) {
    auto* p = new (lua_newuserdatauv(L, sizeof(STLuaCollection), 0)) STLuaCollection;
    p->clListe = std::move(clListe);
    p->clProprietaire = CRef<IObjetBase>::Retain(piProprietaire);
    p->nClasse = nClasse;
    p->nAccesseur = nAccesseur;
    luaL_setmetatable(L, CLuaObjects::kszCollectionMeta);
}

// ---- Objects -------------------------------------------------------------------------------

int s_nObjetIndex(lua_State* L) {
    IObjetBase* pi = CLuaObjects::s_piObject(L, 1);
    if (!pi)
        return KVLua::nPushMessage(L, "not an object of kvggl");
    int nClasse = gpclHost->nClassOf(pi);
    if (lua_type(L, 2) != LUA_TSTRING)
        return KVLua::nPushMessage(L, s_sNomClasse(nClasse) + " is indexed by names");
    size_t nLongueur = 0;
    const char* psz = lua_tolstring(L, 2, &nLongueur);
    std::string_view svNom(psz, nLongueur);
    int m = gpclHost->clTables().nFindMember(nClasse, svNom);
    STHostOutcome st;
    if (m >= 0) {
        if (!gpclHost->bGet(pi, m, st) || st.bError)
            return s_nPushError(L, st);
        CLuaValues::s_Push(L, st.clValue);
        return 1;
    }
    if (m != INT32_MIN) {
        CRef<IObjetCollection> clListe;
        if (!gpclHost->bCollection(pi, -1 - m, clListe, st) || st.bError)
            return s_nPushError(L, st);
        s_PushCollection(L, std::move(clListe), pi, nClasse, -1 - m);
        return 1;
    }
    int nFonction = gpclHost->clTables().nFindFunction(svNom);
    if (nFonction >= 0 && CLuaObjects::ms_pfnPushFunction) {
        CLuaObjects::ms_pfnPushFunction(L, nFonction);
        return 1;
    }
    // A record's own fields, known only to the object.
    if (gpclHost->bHasDynamic(pi)) {
        if (!gpclHost->bGetDynamic(pi, svNom, st) || st.bError)
            return s_nPushError(L, st);
        CLuaValues::s_Push(L, st.clValue);
        return 1;
    }
    return KVLua::nPushMessage(L, s_sNomClasse(nClasse) + " has no property, collection or function '" +
                                 std::string(svNom) + "'");
}

int s_nObjetNewIndex(lua_State* L) {
    IObjetBase* pi = CLuaObjects::s_piObject(L, 1);
    if (!pi)
        return KVLua::nPushMessage(L, "not an object of kvggl");
    int nClasse = gpclHost->nClassOf(pi);
    if (lua_type(L, 2) != LUA_TSTRING)
        return KVLua::nPushMessage(L, s_sNomClasse(nClasse) + " is indexed by names");
    size_t nLongueur = 0;
    const char* psz = lua_tolstring(L, 2, &nLongueur);
    std::string sNom(psz, nLongueur);
    int m = gpclHost->clTables().nFindMember(nClasse, sNom);
    if (m == INT32_MIN && gpclHost->bHasDynamic(pi)) {
        CHostValue clValeur;
        std::string sPourquoi;
        if (!CLuaValues::s_bToHost(L, 3, clValeur, sPourquoi))
            return KVLua::nPushMessage(L, "bad value for member '" + sNom + "' (" + sPourquoi + ")");
        STHostOutcome st;
        if (!gpclHost->bSetDynamic(pi, sNom, clValeur, st) || st.bError)
            return s_nPushError(L, st);
        return 0;
    }
    if (m == INT32_MIN)
        return KVLua::nPushMessage(L, s_sNomClasse(nClasse) + " has no property '" + sNom + "'");
    if (m < 0)
        return KVLua::nPushMessage(L, "collection '" + sNom + "' of " + s_sNomClasse(nClasse) +
                                     " is changed through its :add, :insert, :remove, :clear, "
                                     ":move and :swap");
    CHostValue clValeur;
    std::string sPourquoi;
    if (!CLuaValues::s_bToHost(L, 3, clValeur, sPourquoi))
        return KVLua::nPushMessage(L, "bad value for property '" + sNom + "' of " +
                                     s_sNomClasse(nClasse) + " (" + sPourquoi + ")");
    STHostOutcome st;
    if (!gpclHost->bSet(pi, m, clValeur, st) || st.bError)
        return s_nPushError(L, st);
    return 0;
}

int s_lObjetGc(lua_State* L) {
    if (auto* p = static_cast<STLuaObject*>(luaL_testudata(L, 1, CLuaObjects::kszObjectMeta))) {
        p->~STLuaObject();
        new (p) STLuaObject; // a finalised object that comes back holds nothing
    }
    return 0;
}

int s_lObjetEq(lua_State* L) {
    IObjetBase* pi1 = CLuaObjects::s_piObject(L, 1);
    IObjetBase* pi2 = CLuaObjects::s_piObject(L, 2);
    lua_pushboolean(L, pi1 && pi2 && (pi1 == pi2 || pi1->vbEgaliteObjet(pi2)));
    return 1;
}

int s_lObjetToString(lua_State* L) {
    IObjetBase* pi = CLuaObjects::s_piObject(L, 1);
    std::string s = pi && KVLua::gbHostLive ? s_sNomClasse(gpclHost->nClassOf(pi))
                                            : std::string("freed object");
    lua_pushfstring(L, "%s: %p", s.c_str(), static_cast<void*>(pi));
    return 1;
}

// The iterator of pairs, whatever the script did with the global next.
int s_lNext(lua_State* L) {
    lua_settop(L, 2);
    if (lua_type(L, 1) == LUA_TTABLE && lua_next(L, 1))
        return 2;
    lua_pushnil(L);
    return 1;
}

// pairs(obj): the properties that read, with their values; for a record, its own fields.
int s_nObjetPairs(lua_State* L) {
    IObjetBase* pi = CLuaObjects::s_piObject(L, 1);
    const auto* pstC = pi ? s_pstClasse(gpclHost->nClassOf(pi)) : nullptr;
    lua_pushcfunction(L, s_lNext);
    lua_createtable(L, 0, pstC ? static_cast<int>(pstC->tabProperties.size()) : 0);
    if (gpclHost->bHasDynamic(pi)) {
        std::vector<std::pair<std::string, CHostValue>> tab;
        STHostOutcome st;
        if (gpclHost->bListDynamic(pi, tab, st))
            for (const auto& [sNom, clValeur] : tab) {
                CLuaValues::s_Push(L, clValeur);
                lua_setfield(L, -2, sNom.c_str());
            }
    } else if (pstC) {
        for (size_t p = 0; p < pstC->tabProperties.size(); ++p) {
            STHostOutcome st;
            if (!gpclHost->bGet(pi, static_cast<int>(p), st) || st.bError)
                continue;
            CLuaValues::s_Push(L, st.clValue);
            lua_setfield(L, -2, pstC->tabProperties[p].sName.c_str());
        }
    }
    lua_pushnil(L);
    return 3;
}

// ---- Collections ---------------------------------------------------------------------------

std::string s_sNomCollection(const STLuaCollection* p) {
    const auto* pst = p && KVLua::gbHostLive ? s_pstClasse(p->nClasse) : nullptr;
    if (!pst || p->nAccesseur < 0)
        return "collection";
    return "collection " + pst->tabAccessors[static_cast<size_t>(p->nAccesseur)].sName + " of " +
           pst->sName;
}

int s_nCollectionIndex(lua_State* L) {
    STLuaCollection* p = s_pCollection(L, 1);
    if (!p)
        return KVLua::nPushMessage(L, std::string("bad argument #1 to '__index' (collection "
                                                  "expected, got ") +
                                          luaL_typename(L, 1) + ")");
    if (lua_type(L, 2) == LUA_TSTRING) {
        lua_pushvalue(L, 2);
        if (lua_rawget(L, lua_upvalueindex(1)) != LUA_TNIL)
            return 1;
        return KVLua::nPushMessage(L, "a collection has no member '" + std::string(lua_tostring(L, 2)) +
                                     "' (it has add, insert, remove, clear, move, swap, count)");
    }
    int nEst = 0;
    lua_Integer i = lua_tointegerx(L, 2, &nEst);
    if (!nEst || i < 1 || i > INT_MAX) {
        lua_pushnil(L);
        return 1;
    }
    STHostOutcome st;
    if (!gpclHost->bElement(p->clListe.pGet(), static_cast<int>(i - 1), st) || st.bError)
        return s_nPushError(L, st);
    CLuaValues::s_Push(L, st.clValue);
    return 1;
}

int s_nCollectionLen(lua_State* L) {
    STLuaCollection* p = s_pCollection(L, 1);
    STHostOutcome st;
    if (!p || !gpclHost->bCount(p->clListe.pGet(), st) || st.bError)
        return s_nPushError(L, st);
    lua_pushinteger(L, st.clValue.nGetInteger());
    return 1;
}

int s_nCollectionNewIndex(lua_State* L) {
    return KVLua::nPushMessage(L, s_sNomCollection(s_pCollection(L, 1)) +
                                 " is changed through its :add, :insert, :remove, :clear, :move "
                                 "and :swap");
}

int s_lCollectionGc(lua_State* L) {
    if (STLuaCollection* p = s_pCollection(L, 1)) {
        p->~STLuaCollection();
        new (p) STLuaCollection;
    }
    return 0;
}

int s_lCollectionToString(lua_State* L) {
    std::string s = s_sNomCollection(s_pCollection(L, 1));
    lua_pushstring(L, s.c_str());
    return 1;
}

// The methods: self, then their arguments, numbered from 1 after self in messages.
STLuaCollection* s_pSoi(lua_State* L, const char* pszMethode) {
    STLuaCollection* p = s_pCollection(L, 1);
    if (!p)
        lua_pushfstring(L, "calling '%s' on something that is not a collection", pszMethode);
    return p;
}

bool s_bIndice(lua_State* L, int i, const char* pszMethode, int& n) {
    int nEst = 0;
    lua_Integer v = lua_tointegerx(L, i, &nEst);
    if (!nEst || v < INT_MIN + 1 || v > INT_MAX) {
        lua_pushfstring(L, "bad argument #%d to '%s' (number expected, got %s)", i - 1, pszMethode,
                        luaL_typename(L, i));
        return false;
    }
    n = static_cast<int>(v - 1);
    return true;
}

// true, or false and the error.
int s_nResultat(lua_State* L, bool bFait, const STHostOutcome& st) {
    if (!bFait)
        return s_nPushError(L, st);
    if (st.bError) {
        lua_pushboolean(L, 0);
        CLuaValues::s_PushError(L, st);
        return 2;
    }
    lua_pushboolean(L, 1);
    return 1;
}

bool s_bElement(lua_State* L, int i, const char* pszMethode, CHostValue& cl) {
    std::string sPourquoi;
    if (CLuaValues::s_bToHost(L, i, cl, sPourquoi))
        return true;
    lua_pushfstring(L, "bad argument #%d to '%s' (%s)", i - 1, pszMethode, sPourquoi.c_str());
    return false;
}

int s_nAdd(lua_State* L) {
    STLuaCollection* p = s_pSoi(L, "add");
    CHostValue cl;
    if (!p || !s_bElement(L, 2, "add", cl))
        return -1;
    STHostOutcome st;
    if (!gpclHost->bAdd(p->clListe.pGet(), cl, st))
        return s_nPushError(L, st);
    if (st.bError) {
        lua_pushnil(L);
        CLuaValues::s_PushError(L, st);
        return 2;
    }
    lua_pushinteger(L, st.clValue.nGetInteger() + 1);
    return 1;
}

int s_nInsert(lua_State* L) {
    STLuaCollection* p = s_pSoi(L, "insert");
    int i = 0;
    CHostValue cl;
    if (!p || !s_bIndice(L, 2, "insert", i) || !s_bElement(L, 3, "insert", cl))
        return -1;
    STHostOutcome st;
    bool b = gpclHost->bInsert(p->clListe.pGet(), i, cl, st);
    return s_nResultat(L, b, st);
}

int s_nRemove(lua_State* L) {
    STLuaCollection* p = s_pSoi(L, "remove");
    int i = 0;
    if (!p || !s_bIndice(L, 2, "remove", i))
        return -1;
    STHostOutcome st;
    bool b = gpclHost->bRemove(p->clListe.pGet(), i, st);
    return s_nResultat(L, b, st);
}

int s_nClear(lua_State* L) {
    STLuaCollection* p = s_pSoi(L, "clear");
    if (!p)
        return -1;
    STHostOutcome st;
    bool b = gpclHost->bClear(p->clListe.pGet(), st);
    return s_nResultat(L, b, st);
}

int s_nMove(lua_State* L) {
    STLuaCollection* p = s_pSoi(L, "move");
    int i = 0, j = 0;
    if (!p || !s_bIndice(L, 2, "move", i) || !s_bIndice(L, 3, "move", j))
        return -1;
    STHostOutcome st;
    bool b = gpclHost->bMove(p->clListe.pGet(), i, j, st);
    return s_nResultat(L, b, st);
}

int s_nSwap(lua_State* L) {
    STLuaCollection* p = s_pSoi(L, "swap");
    int i = 0, j = 0;
    if (!p || !s_bIndice(L, 2, "swap", i) || !s_bIndice(L, 3, "swap", j))
        return -1;
    STHostOutcome st;
    bool b = gpclHost->bSwap(p->clListe.pGet(), i, j, st);
    return s_nResultat(L, b, st);
}

int s_nCount(lua_State* L) {
    if (!s_pSoi(L, "count"))
        return -1;
    return s_nCollectionLen(L);
}

} // namespace

void (*CLuaObjects::ms_pfnPushFunction)(lua_State* L, int nFunction) = nullptr;

void CLuaObjects::s_Register(lua_State* L, CHost* pclHost) {
    gpclHost = pclHost;
    if (luaL_newmetatable(L, kszObjectMeta)) {
        const luaL_Reg tab[] = {{"__index", KVLua::lCall<s_nObjetIndex>},
                                {"__newindex", KVLua::lCall<s_nObjetNewIndex>},
                                {"__gc", s_lObjetGc},
                                {"__eq", s_lObjetEq},
                                {"__tostring", s_lObjetToString},
                                {"__pairs", KVLua::lCall<s_nObjetPairs>},
                                {nullptr, nullptr}};
        luaL_setfuncs(L, tab, 0);
        // Scripts see a name, not the metatable: its finaliser is not theirs to call.
        lua_pushliteral(L, "kvggl.object");
        lua_setfield(L, -2, "__metatable");
    }
    lua_pop(L, 1);
    if (luaL_newmetatable(L, kszCollectionMeta)) {
        const luaL_Reg tabMethodes[] = {
            {"add", KVLua::lCall<s_nAdd>},       {"insert", KVLua::lCall<s_nInsert>},
            {"remove", KVLua::lCall<s_nRemove>}, {"clear", KVLua::lCall<s_nClear>},
            {"move", KVLua::lCall<s_nMove>},     {"swap", KVLua::lCall<s_nSwap>},
            {"count", KVLua::lCall<s_nCount>},   {nullptr, nullptr}};
        luaL_newlib(L, tabMethodes);
        lua_pushcclosure(L, KVLua::lCall<s_nCollectionIndex>, 1);
        lua_setfield(L, -2, "__index");
        const luaL_Reg tab[] = {{"__len", KVLua::lCall<s_nCollectionLen>},
                                {"__newindex", KVLua::lCall<s_nCollectionNewIndex>},
                                {"__gc", s_lCollectionGc},
                                {"__tostring", s_lCollectionToString},
                                {nullptr, nullptr}};
        luaL_setfuncs(L, tab, 0);
        lua_pushliteral(L, "kvggl.collection");
        lua_setfield(L, -2, "__metatable");
    }
    lua_pop(L, 1);
}

void CLuaObjects::s_PushObject(lua_State* L, IObjetBase* pi) {
    if (!pi) {
        lua_pushnil(L);
        return;
    }
    auto* p = new (lua_newuserdatauv(L, sizeof(STLuaObject), 0)) STLuaObject;
    p->clObjet = CRef<IObjetBase>::Retain(pi);
    luaL_setmetatable(L, kszObjectMeta);
}

IObjetBase* CLuaObjects::s_piObject(lua_State* L, int i) {
    auto* p = static_cast<STLuaObject*>(luaL_testudata(L, i, kszObjectMeta));
    return p ? p->clObjet.pGet() : nullptr;
}

bool CLuaObjects::s_bIsCollection(lua_State* L, int i) {
    return s_pCollection(L, i) != nullptr;
}
