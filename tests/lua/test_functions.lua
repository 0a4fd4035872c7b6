-- Functions of the component by their script names: the syntax follows the arguments, a method
-- is reachable from its object, the value comes back and an error as the second result. Only
-- calls that stay inside the process are made here.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")

local handled = {}
for _, f in ipairs(kvggl.describe().functions) do
    for _, s in ipairs(f.syntaxes) do handled[f.name] = handled[f.name] or s.handled end
end

local saved = [[{"type":"gglConnexion","properties":{
  "RefreshTokens":"{\"calendar\":\"rt-cal\",\"contact\":\"rt-con\"}"}}]]
local function connection() return kvggl.check(kvggl.deserialize(saved)) end

if handled.GglDeconnecte then
    -- A syntax without signature, served by the connection: every token goes, or those of the
    -- services named by their bits.
    local c = connection()
    local value, err = c:GglDeconnecte(kvggl.gglServiceAgenda)
    T.eq(value, nil, "no value")
    T.eq(err, nil, "no error")
    assert(c.RefreshTokens:find('"calendar":""', 1, true), c.RefreshTokens)
    assert(c.RefreshTokens:find('"contact":"rt-con"', 1, true), c.RefreshTokens)
    kvggl.gglDECONNECTE(c)
    assert(not c.RefreshTokens:find("rt-", 1, true), c.RefreshTokens)
    T.raises("bad argument #1 to 'GglDeconnecte' (gglConnexion expected, got gglChemin)",
             kvggl.GglDeconnecte, kvggl.gglChemin())
end

if handled.GglRequete then
    -- An unknown service bit is the component's error, found before any exchange.
    local c = kvggl.gglConnexion()
    local value, err = kvggl.GglRequete(c, 3, "/calendar/v3/users/me/calendarList")
    assert(err, "an error")
    T.eq(err.code, 600013, "unknown service")
    assert(value == nil or value == "", "an empty value")
    T.raises("kvggl error 600013", kvggl.check, kvggl.GglRequete(c, 3, "/x", "{}", 2))
    T.raises("bad argument #2 to 'GglRequete' (number expected, got table)", kvggl.GglRequete, c,
             {}, "/x")
    T.raises("bad argument #2 to 'GglRequete' (number has no integer representation)",
             kvggl.GglRequete, c, 1.5, "/x")
    T.raises("wrong number of arguments to 'GglRequete' (3 to 5 expected, got 1)",
             kvggl.GglRequete, c)
end
