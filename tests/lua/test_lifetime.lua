-- Objects are freed when Lua collects them, and the host holds nothing of them after.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")

T.collect()
local before = kvggl.status().objects
do
    local p = kvggl.gglParametreCarte()
    local chemin = p.Chemin
    for i = 1, 10 do chemin.Point:add(kvggl.gglCoordonnee()) end
    local list = {}
    for i = 1, 50 do list[i] = kvggl.gglMarqueur() end
    assert(kvggl.status().objects >= before + 50 + 2, "objects held")
end
T.collect()
T.eq(kvggl.status().objects, before, "every object went with its last Lua reference")

-- An element outlives its removal from a collection while Lua holds it.
local chemin = kvggl.gglChemin()
local pt = kvggl.gglCoordonnee()
pt.Latitude = 4
chemin.Point:add(pt)
local held = chemin.Point[1]
chemin.Point:clear()
chemin = nil
T.collect()
T.eq(held.Latitude, 4.0, "still alive")
held, pt = nil, nil
T.collect()
T.eq(kvggl.status().objects, before, "and then gone")

-- The status says what the host is.
local s = kvggl.status()
assert(s.component:find("kv220ggl.so", 1, true), s.component)
T.eq(type(s.services), "boolean", "services")
if s.services then T.eq(s.refusal, nil, "with HTTP the library accepts the host") end
