-- Not a test: a script that fails, for the harness to see how a failure reads.
local kvggl = require "kvggl"
local c = kvggl.gglConnexion()
kvggl.GglRequete(c, print, "/x")
