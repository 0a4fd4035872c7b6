// How the binding raises: the work runs with C++ values alive and leaves its outcome on the
// Lua stack; the Lua error, which unwinds with longjmp, is raised only once they are gone.
#pragma once
#include <lua.hpp>

#include <string>

namespace KVLua {

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
template <FNWork fn> int lCall(lua_State* L) {
    int n = fn(L);
    return n < 0 ? nRaise(L) : n;
}

inline int nPushMessage(lua_State* L, const std::string& s) {
    lua_pushlstring(L, s.data(), s.size());
    return -1;
}

} // namespace KVLua
