-- Types construct by their script names, regardless of case and accents; what the component
-- declares without a handler gives a clear error, never a crash.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")

local landed = {"gglConnexion", "gglChemin", "gglCoordonnée", "gglMarqueur", "gglParamètreCarte"}
for _, name in ipairs(landed) do
    local o = kvggl[name]()
    T.eq(tostring(o):match("^(.-):"), name, "tostring of a new " .. name)
    local o2 = kvggl.new(name)
    assert(o2 ~= o, "two objects are two")
    assert(o == o, "an object is itself")
end
assert(tostring(kvggl.GGLCOORDONNEE()):find("^gglCoordonnée"), "case and accents")
assert(tostring(kvggl.new("gglparametrecarte")):find("^gglParamètreCarte"))

-- Every class of the tables either constructs or says it cannot.
for _, t in ipairs(kvggl.describe().types) do
    if t.handled then
        assert(kvggl.new(t.name), t.name)
    else
        T.raises("type '" .. t.name .. "' has no constructor in this component", kvggl.new, t.name)
    end
end
T.raises("type 'gglAdWConnexion' is declared by the component but has no class",
         kvggl.gglAdWConnexion)
T.raises("the component has no type 'gglRien'", kvggl.new, "gglRien")

-- Functions without a handler: the AdWords functions are registered with none.
T.raises("'GglAdWListeCampagne' has no handler in this component", kvggl.gglAdWListeCampagne,
         kvggl.gglConnexion())
local c = kvggl.gglConnexion()
T.raises("has no handler", function() return c:GglAdWListeCampagne() end)

-- Constants.
T.eq(kvggl.gglGIF, "gif", "gglGIF")
T.eq(kvggl.GGLGRAND, "", "gglGrand is empty")
T.eq(kvggl.gglSansLimite, -1, "gglSansLimite")
T.eq(kvggl.gglServicePicasa, 16, "gglServicePicasa")
T.eq(math.type(kvggl.gglPicasaTag), "integer", "integer constants")

-- Arguments no syntax takes, in Lua's idiom.
T.raises("bad argument #2 to 'new' (value expected, got function)", kvggl.new, "gglChemin", print)
T.raises("bad argument #1 to 'new' (string expected, got number)", kvggl.new, 3)
