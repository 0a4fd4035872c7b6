-- What a script writer meets first: raw replies read as tables through the host's JSON parser,
-- constants that stay constant, a slip in a name answered with the closest name, and a saved
-- connection that leaves its secrets out on request.
local kvggl = require "kvggl"
local T = dofile(arg[0]:match("(.*/)") .. "support.lua")
local json = kvggl.json

local text = '{"items":[{"summary":"\\u00c9t\\u00e9 \\"2026\\"","n":3,"r":0.5,"ok":false,' ..
             '"none":null,"tags":[]}],"total":1}'
local v = kvggl.check(json.decode(text))
local item = v.items[1]
T.eq(item.summary, 'Été "2026"', "a text, escapes read, UTF-8")
T.eq(math.type(item.n), "integer", "an integer stays one")
T.eq(item.r, 0.5, "a real")
T.eq(item.ok, false, "false is kept")
T.eq(item.none, json.null, "null")
T.eq(tostring(json.null), "null", "null writes itself")
T.eq(json.encode(v), '{"items":[{"n":3,"none":null,"ok":false,"r":0.5,"summary":"Été \\"2026\\"",' ..
                     '"tags":{}}],"total":1}', "written back, members in name order")
T.eq(json.encode({1, "two", {3}}), '[1,"two",[3]]', "a sequence is an array")
T.eq(json.encode({year = 2026, month = 3, day = 1}), '{"day":1,"month":3,"year":2026}',
     "a table without the dates' metatable is an object")

local none, err = json.decode('{"a":')
T.eq(none, nil, "not JSON: no value")
assert(err.code > 0 and #err.message > 0, "not JSON: an error table " .. tostring(err))
local looped = {}
looped.self = looped
for _, case in ipairs({{{f = print}, "a function cannot be written as JSON"},
                       {{[2] = 1}, "neither an array nor an object"},
                       {"\xff", "not UTF-8"},
                       {0 / 0, "NaN"},
                       {looped, "does a table hold itself?"}}) do
    T.raises(case[2], json.encode, case[1])
end
T.raises("bad argument #1 to 'decode' (string expected, got no value)", json.decode)

-- Constants and every other name of the module stay what they are.
local agenda = kvggl.gglServiceAgenda
T.raises("cannot assign to 'gglServiceAgenda': it is a constant of the component",
         function() kvggl.gglServiceAgenda = 5 end)
T.raises("it is a constant", function() kvggl.GGLSERVICEAGENDA = 5 end)
T.raises("the module's names cannot be changed", function() kvggl.check = nil end)
T.eq(kvggl.gglServiceAgenda, agenda, "the constant kept its value")
T.raises("cannot change a protected metatable", setmetatable, kvggl, nil)

-- A slip in a name: the closest one of any kind, helpers included; none when nothing is close.
for _, case in ipairs({{"GglConecte", "GglConnecte"}, {"gglConexion", "gglConnexion"},
                       {"gglServiceAgnda", "gglServiceAgenda"}, {"serialise", "serialize"}}) do
    T.raises(("'%s' (did you mean '%s'?)"):format(case[1], case[2]),
             function() return kvggl[case[1]] end)
end
local e = T.raises("kvggl has no function, type or constant 'zzzz'", function() return kvggl.zzzz end)
assert(not tostring(e):find("did you mean", 1, true), e)

-- A saved connection holds its credentials in plain text, unless asked to leave them out.
local c = kvggl.check(kvggl.deserialize(json.encode({type = "gglConnexion", properties = {
    ClientID = "id-1", ClientSecret = "secret-1", Email = "anne@example.com",
    RefreshTokens = json.encode({calendar = "rt-1"})}})))
local full = json.decode(kvggl.check(kvggl.serialize(c))).properties
local bare = json.decode(kvggl.check(kvggl.serialize(c, {secrets = false}))).properties
T.eq(full.ClientSecret, "secret-1", "the secret, saved")
assert(full.RefreshTokens:find("rt-1", 1, true), "the refresh tokens, saved")
T.eq(bare.ClientSecret, nil, "the secret, left out")
T.eq(bare.RefreshTokens, nil, "the refresh tokens, left out")
T.eq(bare.ClientID .. " " .. bare.Email, "id-1 anne@example.com", "the rest kept")
local token = kvggl.AuthToken()
token.Valeur = "ya29.secret-token"
assert(kvggl.check(kvggl.serialize(token)):find("ya29.secret-token", 1, true), "a token, saved")
assert(not kvggl.check(kvggl.serialize(token, {secrets = false})):find("ya29", 1, true),
       "a token, left out, its saved form too")
T.raises("bad argument #2 to 'serialize' (table of options expected, got boolean)",
         kvggl.serialize, c, false)

-- Nesting past the reader's limit is refused whole, inside an object or an array.
for _, ends in ipairs({{'{"a":', "}"}, {"[", "]"}}) do
    T.raises("nested more than 200 levels", json.decode, ends[1]:rep(250) .. "1" .. ends[2]:rep(250))
end
