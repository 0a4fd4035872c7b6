// CLuaObjects: the component's objects and collections as Lua userdata.
//
// An object holds one reference on the component object, dropped when Lua collects it:
//   obj.Name         a property (getter), or a collection, or a function of the component
//                    served by the object (obj:GglConnecte() is kvggl.GglConnecte(obj))
//   obj.Name = v     a property (setter); a read-only property raises an error
//   obj1 == obj2     the same component object
//   pairs(obj)       the properties and their values
// A collection holds its list and its owner:
//   coll[i], #coll   1-based elements, count; ipairs works
//   coll:add(x)      appends x, or a new empty element without x: the new position, or nil
//                    and the error the component left
//   coll:insert(i, x), coll:remove(i), coll:clear(), coll:move(from, to), coll:swap(i, j)
//                    true, or false and the error
// Names match regardless of case and accents. What the host refuses (an unknown name, a value
// of the wrong kind) raises a Lua error; errors the component leaves on a property raise the
// error table.
#pragma once
#include "HostValue.h"
#include "Ref.h"

struct lua_State;
class CHost;

class CLuaObjects {
public:
    static constexpr const char* kszObjectMeta = "kvggl.object";
    static constexpr const char* kszCollectionMeta = "kvggl.collection";

    // Creates the metatables in the registry. The host outlives every object of the state.
    static void s_Register(lua_State* L, CHost* pclHost);
    static void s_PushObject(lua_State* L, IObjetBase* pi);
    // The object at index i, borrowed; null when it is none.
    static IObjetBase* s_piObject(lua_State* L, int i);
    static bool s_bIsCollection(lua_State* L, int i);

    // Pushes the module's callable for a function of the component (set by the module).
    static void (*ms_pfnPushFunction)(lua_State* L, int nFunction);
};
