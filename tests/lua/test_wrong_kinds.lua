-- Every entry of the module, and every metamethod it sets, called with each wrong kind of
-- argument: each returns or raises a Lua error, none crashes (this runs under ASan and UBSan).
-- A text holding NUL is refused by name; bytes go whole.
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")
-- Made before the module, so finalised after the module's host has ended when the state
-- closes: its call must raise, not crash.
_G.early = setmetatable({}, {__gc = function()
    assert(not pcall(function() return package.loaded.kvggl.gglChemin() end))
end})
local kvggl = require "kvggl"

local path = kvggl.gglChemin()
local points = path.Point
local c = kvggl.gglConnexion()
local _, err = kvggl.GglRequete(c, 3, "/x") -- an error table, without any exchange
local kinds = {nil, true, 42, 4.5, "text", "a\0b", {}, {1, 2}, {year = 2024}, print,
               coroutine.create(print), io.stdout, path, points, err}

-- Calls fn with each kind at each of the first `count` places, the others left as given.
local function poke(what, fn, count, ...)
    local base = table.pack(...)
    for place = 1, count do
        for k = 1, 15 do
            local args = {table.unpack(base, 1, math.max(base.n, count))}
            args[place] = kinds[k]
            local ok, e = pcall(fn, table.unpack(args, 1, count))
            if not ok and type(e) ~= "string" and type(e) ~= "table" then
                error(what .. ": raised a " .. type(e))
            end
        end
    end
end

for _, name in ipairs({"new", "serialize", "deserialize", "copy", "reset", "describe", "status",
                       "check"}) do
    poke("kvggl." .. name, kvggl[name], 3)
end
poke("GglRequete", kvggl.GglRequete, 3, c, 3, "/x")
poke("GglChemin", kvggl.gglChemin, 2)

-- Metamethods, reached through the values themselves and called on anything.
local meta = {}
for _, value in ipairs({path, points}) do
    local mt = debug.getmetatable(value)
    for _, event in ipairs({"__index", "__newindex", "__tostring", "__len", "__eq", "__pairs",
                            "__gc"}) do
        if type(mt[event]) == "function" then meta[#meta + 1] = {event, mt[event]} end
    end
end
for _, m in ipairs(meta) do poke(m[1], m[2], 3, path, "Point", 1) end
for _, method in ipairs({"add", "insert", "remove", "clear", "move", "swap", "count"}) do
    poke(":" .. method, points[method], 3, points, 1, 1)
end
-- Their metatables are protected, the error's and the date's too.
for _, value in ipairs({path, points, err}) do
    T.eq(type(getmetatable(value)), "string", "a protected metatable")
end
local errmeta = debug.getmetatable(err)
poke("error __tostring", errmeta.__tostring, 1)

-- NUL: refused in a text argument and a text property, by name.
T.raises("bad argument #3 to 'GglRequete' (text holds a NUL byte)", kvggl.GglRequete, c, 3,
         "https://www.googleapis.com/a\0b")
T.raises("bad value for property 'ClientID' of gglConnexion (text holds a NUL byte)",
         function() c.ClientID = "id\0tail" end)
