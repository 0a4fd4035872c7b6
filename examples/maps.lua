-- A static map described with the map objects: a path through three points, two markers, and
-- the parameters that carry them; then the description saved and rebuilt, as an application
-- keeps its settings. Run with: ./kvggl run examples/maps.lua
local kvggl = require "kvggl"

local function point(latitude, longitude)
    local p = kvggl.gglCoordonnee()
    p.Latitude, p.Longitude = latitude, longitude
    return p
end

local parameters = kvggl.gglParametreCarte()
parameters.Format = kvggl.gglPNG8
parameters.Langue = "fr"
parameters.Echelle = 2

-- The path belongs to the parameters: it is changed in place.
local path = parameters.Chemin
path.Couleur, path.Opacite, path.Epaisseur = 0xFF0000, 80, 4
path.Point:add(point(48.8584, 2.2945)) -- the Eiffel Tower
path.Point:add(point(48.8606, 2.3376)) -- the Louvre
path.Point:add(point(48.8530, 2.3499)) -- Notre-Dame

for i, name in ipairs({"A", "B"}) do
    local marker = kvggl.gglMarqueur()
    local at = path.Point[i * 2 - 1]
    marker.Latitude, marker.Longitude = at.Latitude, at.Longitude
    marker.Lettre = name
    marker.Taille = kvggl.gglMoyen
    parameters.Marqueur:add(marker)
end

-- The component keeps its rules: a path holds at most 100 points.
while #path.Point < 100 do path.Point:add(point(48.85, 2.35)) end
local position, err = path.Point:add(point(0, 0))
print(("a 101st point: %s, error %d: %s"):format(tostring(position), err.code, err.message))
while #path.Point > 3 do path.Point:remove(#path.Point) end

print(("%d points, %d markers, format %s"):format(#path.Point, #parameters.Marqueur,
                                                 parameters.Format))
for i, p in ipairs(path.Point) do
    print(("  point %d: %.4f, %.4f"):format(i, p.Latitude, p.Longitude))
end

-- Saved as text, rebuilt as a new object.
local saved = kvggl.check(kvggl.serialize(parameters))
local again = kvggl.check(kvggl.deserialize("gglParamètreCarte", saved))
assert(kvggl.serialize(again) == saved, "the rebuilt parameters save the same")
print(("saved in %d bytes, rebuilt with %d points and marker %s"):format(
    #saved, #again.Chemin.Point, again.Marqueur[2].Lettre))
