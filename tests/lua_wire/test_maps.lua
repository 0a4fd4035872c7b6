-- The map functions on the wire: the request of each syntax, byte for byte (the key road: a key
-- in the query, no bearer); images of each format and scale, with a marker where its
-- coordinates fall; the address search; and each error the two functions report.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")
local wire = W.native

local MAPS = "maps.googleapis.com"
local EIFFEL = {48.8584, 2.2945}
wire.setenv("KVGGL_GOOGLE_API_KEY", "demo-key")

local c = kvggl.gglConnexion() -- no login: these services take a key, not a token

local function point(at)
    local p = kvggl.gglCoordonnee()
    p.Latitude, p.Longitude = at[1], at[2]
    return p
end
local function marker(at, colour, size, letter)
    local m = kvggl.gglMarqueur()
    m.Latitude, m.Longitude, m.Couleur, m.Taille = at[1], at[2], colour, size
    if letter then m.Lettre = letter end
    return m
end

-- The parameters of syntax 2: options, one marker and a visible zone around the centre.
local full = kvggl.gglParametreCarte()
full.Format, full.Langue, full.Echelle = kvggl.gglPNG32, "fr", 2
full.Marqueur:add(marker(EIFFEL, 0xFF0000, kvggl.gglMoyen, "a"))
full.Zone.Latitude, full.Zone.Longitude = 0.01, 0.02
-- Framed by two markers and a path alone.
local framed = kvggl.gglParametreCarte()
framed.Marqueur:add(marker(EIFFEL, 0xFF, kvggl.gglPetit))
framed.Marqueur:add(marker({48.8606, 2.3376}, 0xFF, kvggl.gglPetit))
framed.Chemin.Point:add(point(EIFFEL))
framed.Chemin.Point:add(point({48.8606, 2.3376}))

local STATIC = "/maps/api/staticmap?"
local FULL = "&format=png32&hl=fr&scale=2&markers=size:mid%7Ccolor:blue%7Clabel:A%7C48.858400,2.294500"
local FRAMED = "&path=color:0xFF00007F%7Cweight:5%7C48.858400,2.294500%7C48.860600,2.337600" ..
               "&markers=size:small%7Ccolor:red%7C48.858400,2.294500%7C48.860600,2.337600"
local syntaxes = {
    {{point(EIFFEL), 400, 300}, "center=48.858400,2.294500&zoom=14&size=400x300&maptype=roadmap"},
    {{point(EIFFEL), 400, 300, 12}, "center=48.858400,2.294500&zoom=12&size=400x300&maptype=roadmap"},
    {{point(EIFFEL), 400, 300, 12, full}, "center=48.858400,2.294500&zoom=12&size=400x300&maptype=roadmap" ..
        FULL .. "&visible=48.848400,2.274500%7C48.868400,2.314500"},
    {{"Tour Eiffel, Paris", 400, 300}, "center=Tour%20Eiffel,%20Paris&zoom=14&size=400x300&maptype=roadmap"},
    {{"Tour Eiffel, Paris", 400, 300, 16}, "center=Tour%20Eiffel,%20Paris&zoom=16&size=400x300&maptype=roadmap"},
    -- An address has no coordinates to put a zone around: no "visible".
    {{"Musée du Louvre, Paris", 400, 300, 16, full},
        "center=Mus%C3%A9e%20du%20Louvre,%20Paris&zoom=16&size=400x300&maptype=roadmap" .. FULL},
    {{400, 300, framed}, "size=400x300&maptype=roadmap" .. FRAMED},
    {{400, 300, 10, framed}, "zoom=10&size=400x300&maptype=roadmap" .. FRAMED},
}
for k, s in ipairs(syntaxes) do
    local what = "syntax " .. (k - 1)
    local mark = W.mark()
    local image, err = kvggl.GglRecupereCarte(c, table.unpack(s[1]))
    W.ok(err, what)
    local log = W.log(mark, MAPS)
    W.eq(#log, 1, what .. ": one request")
    W.eq(log[1].method .. " " .. log[1].target, "GET " .. STATIC .. s[2] .. "&key=demo-key", what)
    W.eq(W.header(log[1], "Authorization"), nil, what .. ": no bearer on the key road")
    local kind, width, height = wire.image(image)
    W.eq(kind, "png", what .. ": an image")
    local scale = s[2]:find("scale=2") and 2 or 1
    W.eq(width .. "x" .. height, (400 * scale) .. "x" .. (300 * scale), what .. ": its size")
end

-- Each format as asked, at each scale; JPEG progressive unless baseline is asked.
for _, case in ipairs({{kvggl.gglPNG8, "png", 3}, {kvggl.gglPNG32, "png", 6}, {kvggl.gglGIF, "gif"},
                       {kvggl.gglJPG, "jpeg"}, {kvggl.gglJPGBaseline, "jpeg"}}) do
    for scale = 1, 2 do
        local what = ("%s at scale %d"):format(case[1], scale)
        local p = kvggl.gglParametreCarte()
        p.Format, p.Echelle = case[1], scale
        local image, err = kvggl.GglRecupereCarte(c, point(EIFFEL), 320, 200, 14, p)
        W.ok(err, what)
        local kind, width, height = wire.image(image)
        W.eq(kind, case[2], what .. ": kind")
        W.eq(width .. "x" .. height, (320 * scale) .. "x" .. (200 * scale), what .. ": size")
        if case[3] then W.eq(image:byte(26), case[3], what .. ": PNG colour type") end
        if case[2] == "jpeg" then
            W.eq(image:find("\xFF\xC2", 1, true) ~= nil, case[1] == kvggl.gglJPG, what .. ": progressive")
        end
    end
end

-- A marker lands where its coordinates fall; the background stays plain elsewhere.
do
    local p = kvggl.gglParametreCarte()
    p.Format = kvggl.gglPNG32
    local at = {48.8600, 2.2990}
    p.Marqueur:add(marker(at, 0xFF0000, kvggl.gglPetit)) -- blue
    p.Marqueur:add(marker({48.8570, 2.2900}, 0xFFFF, kvggl.gglMoyen, "Z")) -- yellow, labelled
    local image = kvggl.check(kvggl.GglRecupereCarte(c, point(EIFFEL), 400, 300, 15, p))
    local x, y = wire.project(EIFFEL[1], EIFFEL[2], 15, 400, 300, at[1], at[2])
    W.eq(("%06X"):format(wire.pixel(image, x, y)), "0000FF", "the blue marker at its point")
    W.eq(("%06X"):format(wire.pixel(image, x + 4, y)), "0000FF", "and around it")
    x, y = wire.project(EIFFEL[1], EIFFEL[2], 15, 400, 300, 48.8570, 2.2900)
    W.eq(("%06X"):format(wire.pixel(image, x - 6, y)), "FFFF00", "the labelled marker beside its letter")
    W.eq(("%06X"):format(wire.pixel(image, 5, 5)), "F2EFE9", "the background")
end

-- The address search: the first result's location; accents, postal codes, a region's bias.
local mark = W.mark()
local at = kvggl.check(kvggl.GglAdresseVersCoordonnees(c, "Tour Eiffel, Paris"))
W.eq(("%.4f,%.4f"):format(at.Latitude, at.Longitude), "48.8584,2.2945", "Tour Eiffel")
at = kvggl.check(kvggl.GglAdresseVersCoordonnees(c, "Paris", "us"))
W.eq(("%.4f,%.4f"):format(at.Latitude, at.Longitude), "33.6609,-95.5555", "Paris with region us")
local log = W.log(mark, MAPS)
W.eq(log[1].target, "/maps/api/geocode/json?address=Tour%20Eiffel,%20Paris&key=demo-key", "syntax 0")
W.eq(log[2].target, "/maps/api/geocode/json?address=Paris&region=us&key=demo-key", "syntax 1")
for _, case in ipairs({{"Paris", "48.8566,2.3522"}, {"MUSEE DU LOUVRE paris", "48.8606,2.3376"},
                       {"75001 Paris", "48.8606,2.3376"}, {"Cathédrale Notre-Dame de Paris", "48.8530,2.3499"},
                       {"1600 Amphitheatre Parkway, Mountain View, CA", "37.4225,-122.0842"}}) do
    at = kvggl.check(kvggl.GglAdresseVersCoordonnees(c, case[1]))
    W.eq(("%.4f,%.4f"):format(at.Latitude, at.Longitude), case[2], case[1])
end
W.eq(("%.7f"):format(at.Longitude), "-122.0842499", "the location as the service gave it")

-- Refused before anything is sent: sizes, zooms, parameters that frame nothing.
mark = W.mark()
for _, case in ipairs({
        {600030, {point(EIFFEL), 0, 300}, "(0 x 300 pixels)"},
        {600030, {"Paris", 641, 100, 3}, "(641 x 100 pixels)"},
        {600034, {point(EIFFEL), 400, 300, 22}, "zoom level 22"},
        {600034, {"Paris", 400, 300, -1}, "zoom level -1"},
        {600049, {400, 300, kvggl.gglParametreCarte()}, "a marker or a path to frame"}}) do
    local image, err = kvggl.GglRecupereCarte(c, table.unpack(case[2]))
    W.failed(case[1], err, "error " .. case[1])
    W.contains(err.message, case[3], "error " .. case[1] .. ": its message")
    W.eq(image, "", "error " .. case[1] .. ": no image")
end
W.eq(#W.log(mark, MAPS), 0, "nothing went out")

-- Refused by the services.
local p = kvggl.gglParametreCarte()
p.Echelle = 3
local _, err = kvggl.GglRecupereCarte(c, point(EIFFEL), 400, 300, 12, p)
W.contains(W.failed(600049, err, "scale 3").message, "Invalid 'scale' parameter", "the service's text")
_, err = kvggl.GglAdresseVersCoordonnees(c, "Nowhere Street 999")
W.contains(W.failed(600029, err, "unknown address").message, '"Nowhere Street 999"', "the address")

wire.setenv("KVGGL_GOOGLE_API_KEY", "exhausted-key")
_, err = kvggl.GglAdresseVersCoordonnees(c, "Paris")
W.contains(W.failed(600020, err, "over quota").message, "OVER_QUERY_LIMIT", "the status")
_, err = kvggl.GglRecupereCarte(c, "Paris", 100, 100)
W.contains(W.failed(600019, err, "over quota").message, "exceeded your daily request quota", "text")

wire.setenv("KVGGL_GOOGLE_API_KEY", nil)
mark = W.mark()
_, err = kvggl.GglRecupereCarte(c, "Paris", 100, 100)
W.failed(600019, err, "no key")
W.contains(err.message, "HTTPForbidden", "the status label")
W.contains(err.message, "You must use an API key", "the service's text")
local result
result, err = kvggl.GglAdresseVersCoordonnees(c, "Paris")
W.eq(result, nil, "no coordinates")
W.contains(W.failed(600020, err, "no key").message, "REQUEST_DENIED", "the status")
W.contains(err.message, "You must use an API key", "the service's message")
log = W.log(mark, MAPS)
W.eq(log[1].target, STATIC .. "center=Paris&zoom=14&size=100x100&maptype=roadmap", "no key sent")
