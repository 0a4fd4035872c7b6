-- The host's save/rebuild path: a connection, RefreshTokens included, and map parameters with
-- their path, points and markers survive serialize/deserialize.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")

-- RefreshTokens is read-only to scripts: a saved connection brings them back through the
-- forced setter.
local saved = [[{"type":"gglConnexion","properties":{"Email":"anne@example.com",
  "ClientID":"id-1","ClientSecret":"secret-1",
  "RefreshTokens":"{\"calendar\":\"rt-cal\",\"picasa\":\"rt-pic\"}"}}]]
local c = kvggl.check(kvggl.deserialize("gglConnexion", saved))
T.eq(c.Email, "anne@example.com", "Email")
assert(c.RefreshTokens:find('"calendar":"rt-cal"', 1, true), c.RefreshTokens)
assert(c.RefreshTokens:find('"picasa":"rt-pic"', 1, true), c.RefreshTokens)
c.MotDePasse = "hunter2"

local text = kvggl.check(kvggl.serialize(c))
assert(not text:find("hunter2", 1, true), "the password is never kept")
local c2 = kvggl.check(kvggl.deserialize(text))
assert(c2 ~= c, "a new object")
for _, name in ipairs({"Email", "ClientID", "ClientSecret", "RefreshTokens"}) do
    T.eq(c2[name], c[name], name)
end
T.eq(kvggl.serialize(c2), text, "saved again, the same text")

-- Map parameters: plain values, objects in place, collections rebuilt.
local p = kvggl.gglParametreCarte()
p.Format = "png8"
p.Mobile = true
p.Chemin.Opacite = 70
for i = 1, 3 do
    local pt = kvggl.gglCoordonnee()
    pt.Latitude, pt.Longitude = i / 4, -i
    p.Chemin.Point:add(pt)
end
local m = kvggl.gglMarqueur()
m.Lettre, m.Taille = "B", "mid"
p.Marqueur:add(m)
local p2 = kvggl.check(kvggl.deserialize("GGLPARAMETRECARTE", kvggl.serialize(p)))
T.eq(p2.Format, "png8", "Format")
T.eq(p2.Mobile, true, "Mobile")
T.eq(p2.Chemin.Opacite, 70, "the path's opacity")
T.eq(T.latitudes(p2.Chemin.Point), "0.25,0.5,0.75", "the points")
T.eq(p2.Chemin.Point[3].Longitude, -3.0, "a point's longitude")
T.eq(p2.Marqueur[1].Lettre, "B", "the marker")
T.eq(p2.Marqueur[1].Taille, "mid", "its size")

-- What cannot be rebuilt says so.
T.raises("the saved object is a gglConnexion, not a gglChemin", kvggl.deserialize, "gglChemin",
         text)
T.raises("the saved text is not a saved object", kvggl.deserialize, "{not json")
T.raises("bad argument #1 to 'serialize' (object expected, got string)", kvggl.serialize, "x")

-- copy and reset.
local copy = kvggl.copy(p.Chemin)
T.eq(#copy.Point, 3, "the copy has the points")
assert(kvggl.reset(p.Chemin))
T.eq(#p.Chemin.Point, 0, "reset empties the path")
T.eq(p.Chemin.Opacite, 50, "and gives back its default")
T.eq(#copy.Point, 3, "the copy is its own")
