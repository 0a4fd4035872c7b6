// CLuaModule: the Lua module "kvggl" (require "kvggl", Lua 5.4). Loading it loads the component
// as a host does (CHost; the component's path is KVGGL_COMPONENT, else kv220ggl.so beside the
// module). One host serves every Lua state of the process; it ends with the last of them.
//
// The module table:
//   kvggl.<Function>(...)      a function of the component by its script name: its value, and
//                              when the call left an error, a second result, the error table
//                              {code, level, message, debug}
//   kvggl.<type>(...)          a new object of the type by its script name; kvggl.new(name, ...)
//   kvggl.<constant>           a constant
//   kvggl.check(v, err)        raises err when it is an error, else returns v
//   kvggl.serialize(obj)       the host's save path: the object saved as text
//   kvggl.deserialize([type,] saved)   and its rebuild: a new object
//   kvggl.copy(obj)            a new object copied from obj (the type's copy handler)
//   kvggl.reset(obj)           obj back to a new object's state (the type's reset handler)
//   kvggl.describe()           the vocabulary: functions with their syntaxes, constants, types
//                              with their properties and collections, declared types
//   kvggl.status()             the component's path, whether its library refused the host
//                              (and why), the services, the settings that could not be read,
//                              and how many of the component's objects the host saw that
//                              are still alive
// Names match regardless of case and accents. A function or type that the component has no
// handler for raises a clear error when used; so does an argument no syntax takes, in Lua's
// idiom: "bad argument #2 to 'GglRequete' (number expected, got table)". The module prints
// nothing.
#pragma once

struct lua_State;

class CLuaModule {
public:
    // The body of luaopen_kvggl: pushes the module table, or raises.
    static int s_nOpen(lua_State* L);
};

extern "C" __attribute__((visibility("default"))) int luaopen_kvggl(lua_State* L);
