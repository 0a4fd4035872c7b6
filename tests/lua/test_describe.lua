-- describe lists the vocabulary read from the tables.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")

local d = kvggl.describe()
T.eq(#d.functions, 99, "functions by name (102 rows)")
T.eq(#d.constants, 79, "constants")
T.eq(#d.types, 52, "types")
local properties, collections = 0, 0
for _, t in ipairs(d.types) do
    properties = properties + #t.properties
    collections = collections + #t.collections
end
T.eq(properties, 242, "properties")
T.eq(collections, 29, "collections")
T.eq(#d.declared, 10, "types declared without a class")

local byname = {}
for _, f in ipairs(d.functions) do byname[f.name] = f end
local requete = byname.GglRequete
T.eq(requete.number, 5, "GglRequete's row")
T.eq(#requete.syntaxes, 4, "its syntaxes")
T.eq(requete.syntaxes[2].result, "buffer", "result")
T.eq(table.concat(requete.syntaxes[2].parameters, ","), "gglConnexion,int,text,int", "syntax 1")
T.eq(byname.GglAdWListeCampagne.syntaxes[1].handled, false, "no handler")
T.eq(byname.GglRecupereCarte.syntaxes[8].handled, true, "a handler")
T.eq(#byname.GglDeconnecte.syntaxes[2].parameters, 0, "no signature")
T.eq(byname.GglDeconnecte.syntaxes[2].count, 2, "but a count")

local types = {}
for _, t in ipairs(d.types) do types[t.name] = t end
local conn = types.gglConnexion
T.eq(conn.number, 0, "gglConnexion's number")
local access = {}
for _, p in ipairs(conn.properties) do access[p.name] = p.access .. (p.compat and "!" or "") end
T.eq(access.Email, "rw", "Email")
T.eq(access.RefreshTokens, "rf!", "RefreshTokens")
T.eq(access.MotDePasse, "rw!", "MotDePasse")
T.eq(types.gglChemin.collections[1].name, "Point", "the path's collection")
T.eq(types.gglChemin.collections[1].type, "gglCoordonnée", "of coordinates")

local constants = {}
for _, k in ipairs(d.constants) do constants[k.name] = k.value end
T.eq(constants.gglJPGBaseline, "jpg-baseline", "a text constant")
T.eq(constants.gglRequeteDELETE, 8, "an integer constant")
