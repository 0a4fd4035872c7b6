// How the binding raises: the work runs with C++ values alive and leaves its outcome on the
// Lua stack; the Lua error, which unwinds with longjmp, is raised only once they are gone.
#pragma once
#include <lua.hpp>

#include <exception>
#include <new>
#include <string>

namespace KVLua {

// Whether the module's host runs: it ends with the last Lua state, and a finaliser that runs
// after that (an object of the script made before the module) finds every entry refusing.
inline bool gbHostLive = false;

// Raises what the work left on top: a message (given the caller's position, as luaL_error
// would) or an error table.
inline int nRaise(lua_State* L) {
    if (lua_type(L, -1) == LUA_TSTRING) {
        luaL_where(L, 1);
        lua_insert(L, -2);
        lua_concat(L, 2);
    }
    return lua_error(L);
}

// A Lua function over a work function: its count of results, or -1 with the error pushed.
using FNWork = int (*)(lua_State*);

// The work under the exception barrier: what the C++ library throws never crosses Lua's C
// frames, it becomes a Lua error in Lua's words ("not enough memory"), pushed once the
// exception is gone.
inline int nGuard(lua_State* L, FNWork fn) noexcept {
    std::string sWhat;
    bool bMemory = false;
    try {
        return fn(L);
    } catch (const std::bad_alloc&) {
        bMemory = true;
    } catch (const std::exception& e) {
        try {
            sWhat = e.what();
        } catch (...) {
            bMemory = true;
        }
    } catch (...) {
    }
    if (bMemory)
        lua_pushliteral(L, "not enough memory");
    else
        lua_pushfstring(L, "internal error in the kvggl module: %s",
                        sWhat.empty() ? "an unknown exception" : sWhat.c_str());
    return -1;
}

template <FNWork fn> int lCall(lua_State* L) {
    if (!gbHostLive) {
        lua_pushliteral(L, "kvggl: the module's host has ended (a call from a finaliser run "
                           "after the module's last state closed)");
        return nRaise(L);
    }
    int n = nGuard(L, fn);
    return n < 0 ? nRaise(L) : n;
}

inline int nPushMessage(lua_State* L, const std::string& s) {
    lua_pushlstring(L, s.data(), s.size());
    return -1;
}

} // namespace KVLua
