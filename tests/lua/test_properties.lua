-- Every property of the landed classes reads, and writes where it may; a read-only property
-- refuses with a clear error; MotDePasse drops what it is given.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")

local cases = {
    {"gglChemin", "Couleur", 0x00FF00},
    {"gglChemin", "Opacite", 80},
    {"gglChemin", "Epaisseur", 3},
    {"gglCoordonnée", "Latitude", 48.8584},
    {"gglCoordonnée", "Longitude", -2.25},
    {"gglMarqueur", "Latitude", -33.5},
    {"gglMarqueur", "Longitude", 151.25},
    {"gglMarqueur", "Taille", "tiny"},
    {"gglMarqueur", "Couleur", 0xFF0000},
    {"gglMarqueur", "Lettre", "Q"},
    {"gglParamètreCarte", "Format", "png32"},
    {"gglParamètreCarte", "Cadre", true},
    {"gglParamètreCarte", "Langue", "fr"},
    {"gglParamètreCarte", "Mobile", true},
    {"gglParamètreCarte", "Echelle", 2},
    {"gglConnexion", "Email", "anne@example.com"},
    {"gglConnexion", "ClientID", "client-é"},
    {"gglConnexion", "ClientSecret", "s3cret"},
}
for _, case in ipairs(cases) do
    local type_, name, value = case[1], case[2], case[3]
    local o = kvggl[type_]()
    o[name] = value
    T.eq(o[name], value, type_ .. "." .. name)
    T.eq(o[name:upper()], value, type_ .. "." .. name .. " by another case")
end

-- Each property of each landed class reads; object-valued ones give their object.
for _, t in ipairs(kvggl.describe().types) do
    if t.handled then
        local o = kvggl.new(t.name)
        for _, p in ipairs(t.properties) do
            local v = o[p.name]
            if p.type:find("^ggl") then assert(v ~= nil, t.name .. "." .. p.name) end
        end
    end
end

-- Compatibility properties take what they are given and drop it.
local c = kvggl.gglConnexion()
c.MotDePasse = "hunter2"
T.eq(c.MotDePasse, "", "MotDePasse")
c.NomApplication = "app"
T.eq(c.NomApplication, "", "NomApplication")

-- Read-only properties, and values of the wrong kind.
local p = kvggl.gglParametreCarte()
T.raises("property 'Chemin' of gglParamètreCarte is read-only",
         function() p.Chemin = kvggl.gglChemin() end)
T.raises("property 'RefreshTokens' of gglConnexion is read-only",
         function() c.RefreshTokens = "{}" end)
T.raises("bad value for property 'Echelle' of gglParamètreCarte (number expected, got table)",
         function() p.Echelle = {} end)
T.raises("(number has no integer representation)", function() p.Echelle = 1.5 end)
T.raises("bad value for property 'Cadre' of gglParamètreCarte (boolean expected, got string)",
         function() p.Cadre = "yes" end)
T.raises("gglParamètreCarte has no property 'Zoom'", function() p.Zoom = 3 end)
T.raises("gglParamètreCarte has no property, collection or function 'Zoom'",
         function() return p.Zoom end)
T.raises("collection 'Marqueur' of gglParamètreCarte is changed through its :add",
         function() p.Marqueur = {} end)
-- An error of the component on a property is raised as its error table.
local err = T.raises("kvggl error 600018", function() p.Format = "bmp" end)
T.eq(err.code, 600018, "unknown format")
assert(err.level == 2 or err.level == 3, "its level")
assert(#err.message > 0, "a message")
T.eq(p.Format, "", "the format stays")

-- Object-valued properties give the object the parameters hold.
local chemin = p.Chemin
chemin.Epaisseur = 9
T.eq(p.Chemin.Epaisseur, 9, "the same path")
assert(p.Chemin == chemin, "the same object")
p.Zone.Latitude = 1.5
T.eq(p.zone.latitude, 1.5, "the zone")

-- pairs lists the properties.
local seen = {}
for k, v in pairs(kvggl.gglMarqueur()) do seen[k] = v end
T.eq(seen.Taille, "", "the default size, gglGrand")
T.eq(seen.Couleur, 0xFF, "the default colour")
