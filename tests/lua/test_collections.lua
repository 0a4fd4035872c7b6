-- Collections are 1-based, with #, ipairs, :add :insert :remove :clear :move :swap, and the
-- component's codes as errors; a path refuses its 101st point with 600014.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")

local function point(lat)
    local p = kvggl.gglCoordonnee()
    p.Latitude = lat
    return p
end

local chemin = kvggl.gglChemin()
local points = chemin.Point
T.eq(#points, 0, "empty")
T.eq(points[1], nil, "nothing at 1")
for i = 1, 3 do T.eq(points:add(point(i)), i, "position of the addition") end
T.eq(#points, 3, "three points")
T.eq(T.latitudes(points), "1.0,2.0,3.0", "in order")
assert(points:insert(1, point(0)))
T.eq(T.latitudes(points), "0.0,1.0,2.0,3.0", "inserted first")
assert(points:move(1, 4))
T.eq(T.latitudes(points), "1.0,2.0,3.0,0.0", "moved last")
assert(points:swap(1, 3))
T.eq(T.latitudes(points), "3.0,2.0,1.0,0.0", "swapped")
assert(points:remove(2))
T.eq(T.latitudes(points), "3.0,1.0,0.0", "removed")
T.eq(points:add(), 4, "a new empty point")
T.eq(points[4].Latitude, 0.0, "empty")
T.eq(points:count(), 4, "count")
T.eq(tostring(points), "collection Point of gglChemin", "tostring")

-- The elements are the collection's: a change through one is a change of the other.
points[1].Longitude = 7.5
T.eq(chemin.Point[1].Longitude, 7.5, "by reference")

-- The component's refusals come back as errors, and change nothing.
T.failed(600006, points:remove(9))
T.failed(600006, points:move(1, 0))
T.failed(600006, points:swap(5, 1))
T.failed(600006, points:insert(7, point(1)))
T.failed(600004, points:add(kvggl.gglMarqueur()))
T.eq(#points, 4, "unchanged")
local err = T.raises("kvggl error 600006", kvggl.check, points:remove(9))
T.eq(err.code, 600006, "check raises the error table")
T.eq(kvggl.check(points:remove(4)), true, "check passes a success through")

T.raises("bad argument #1 to 'insert' (number expected, got string)", points.insert, points, "x")
T.raises("bad argument #1 to 'add' (object expected, got number)", points.add, points, 3)
T.raises("a collection has no member 'push'", function() return points.push end)
T.raises("is changed through its :add", function() points[1] = point(1) end)
assert(points:clear())
T.eq(#points, 0, "cleared")

-- A path takes 100 points and refuses the 101st.
for i = 1, 100 do assert(points:add(point(i))) end
local position, refusal = points:add(point(101))
T.eq(position, nil, "no position")
T.failed(600014, position, refusal, "the 101st point")
T.eq(#points, 100, "still 100")

-- The markers of map parameters.
local p = kvggl.gglParametreCarte()
local m = kvggl.gglMarqueur()
m.Lettre = "A"
T.eq(p.Marqueur:add(m), 1, "a marker")
T.eq(p.Marqueur[1].Lettre, "A", "its letter")
assert(p.Marqueur[1] == m, "the marker itself")
