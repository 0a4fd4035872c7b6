-- A tour of the static maps: two addresses turned into coordinates, a map with both as markers
-- and a path between them, the image written to a file; then the rules the map objects keep,
-- and the parameters saved and rebuilt as an application keeps its settings.
--
-- The map services take an API key, not a login: the key is the setting KVGGL_GOOGLE_API_KEY.
-- Against the local emulators, by hand:
--   terminal 1:  ./kvggl emulators --port 0
--   terminal 2:  export KVGGL_ROUTE='*=127.0.0.1:PORT' KVGGL_GOOGLE_API_KEY=demo-key
--                ./kvggl run examples/maps.lua [FILE]
-- The image goes to FILE, else to the file KVGGL_MAP_FILE names, else to kvggl-map.png in the
-- temporary folder.
local kvggl = require "kvggl"

local file = arg and arg[1] or os.getenv("KVGGL_MAP_FILE") or
             (os.getenv("TMPDIR") or "/tmp") .. "/kvggl-map.png"
local c = kvggl.gglConnexion()

local places = {}
for i, address in ipairs({"Tour Eiffel, Paris", "Musée du Louvre, Paris"}) do
    places[i] = kvggl.check(kvggl.GglAdresseVersCoordonnees(c, address))
    print(("%s is at %.4f, %.4f"):format(address, places[i].Latitude, places[i].Longitude))
end

-- The markers A (red) and B (green), and a blue path from one to the other. Colours give red
-- in the low byte.
local parameters = kvggl.gglParametreCarte()
parameters.Format = kvggl.gglPNG8
parameters.Langue = "fr"
local path = parameters.Chemin -- it belongs to the parameters: changed in place
path.Couleur, path.Opacite, path.Epaisseur = 0xFF0000, 80, 4
for i, place in ipairs(places) do
    path.Point:add(place)
    local marker = kvggl.gglMarqueur()
    marker.Latitude, marker.Longitude = place.Latitude, place.Longitude
    marker.Taille, marker.Lettre = kvggl.gglMoyen, ("AB"):sub(i, i)
    marker.Couleur = i == 1 and 0xFF or 0xFF00
    parameters.Marqueur:add(marker)
end

-- Centred between the two, at the zoom of a district.
local centre = kvggl.gglCoordonnee()
centre.Latitude = (places[1].Latitude + places[2].Latitude) / 2
centre.Longitude = (places[1].Longitude + places[2].Longitude) / 2
local image = kvggl.check(kvggl.GglRecupereCarte(c, centre, 640, 400, 14, parameters))
local out = assert(io.open(file, "wb"))
out:write(image)
out:close()
print(("the map, a PNG image of 640 x 400 pixels (%d bytes), is in %s"):format(#image, file))

-- What the service cannot draw is refused before anything is sent.
local _, err = kvggl.GglRecupereCarte(c, centre, 1000, 400, 14, parameters)
print(("a map of 1000 x 400: error %d: %s"):format(err.code, err.message))

-- A path holds at most 100 points.
while #path.Point < 100 do path.Point:add(places[2]) end
local position
position, err = path.Point:add(places[1])
print(("a 101st point: %s, error %d: %s"):format(tostring(position), err.code, err.message))
while #path.Point > 2 do path.Point:remove(#path.Point) end

-- Saved as text, rebuilt as a new object.
local saved = kvggl.check(kvggl.serialize(parameters))
local again = kvggl.check(kvggl.deserialize("gglParamètreCarte", saved))
assert(kvggl.serialize(again) == saved, "the rebuilt parameters save the same")
print(("saved in %d bytes, rebuilt with %d points and marker %s"):format(
    #saved, #again.Chemin.Point, again.Marqueur[2].Lettre))
