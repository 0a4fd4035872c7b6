-- RefreshTokens saved with the connection and restored in a fresh Lua state: the restored
-- connection logs in silently, with the refresh grant of the saved token and nothing else.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local c = W.connection(kvggl, nil, W.SEEDED_EMAIL)
local mark = W.mark()
kvggl.check(kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST))
local first = W.log(mark)
W.eq(W.shape(first), "GET accounts.google.com /accounts.google.com/o/oauth2/auth\n" ..
                     "POST accounts.google.com /o/oauth2/token\n" ..
                     "GET www.googleapis.com /calendar/v3/users/me/calendarList",
     "the first login goes through the dialogue")
local bearer = W.check_bearers(first, "first login")[1]
local refresh = W.match(c.RefreshTokens, '"calendar":"(1//[^"]+)"', "RefreshTokens")

local saved = kvggl.check(kvggl.serialize(c))

-- The other state knows only the saved text.
local restore = [[
    local saved, url = ...
    local kvggl = require "kvggl"
    local c = kvggl.check(kvggl.deserialize("gglConnexion", saved))
    local tokens = c.RefreshTokens
    local list, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, url)
    if err then error(("GglRequete: %d %s"):format(err.code, err.message)) end
    return tokens, c.Email, c.ClientID, c.ClientSecret, list
]]
mark = W.mark()
local tokens, email, id, secret, list = W.native.run(restore, saved, W.CALENDAR_LIST)
W.eq(tokens, c.RefreshTokens, "RefreshTokens round-trip")
W.eq(email, W.SEEDED_EMAIL, "Email")
W.eq(id .. "/" .. secret, W.CLIENT_ID .. "/" .. W.CLIENT_SECRET, "the client")
W.eq(W.decode(list).kind, "calendar#calendarList", "the restored connection is served")

local log = W.log(mark)
W.eq(W.shape(log), "POST accounts.google.com /o/oauth2/token\n" ..
                   "GET www.googleapis.com /calendar/v3/users/me/calendarList",
     "only the refresh grant: no dialogue")
W.eq(log[1].body, W.refresh_body(refresh), "the refresh grant of the saved token")
local again = W.check_bearers(log, "restored")[1]
assert(again ~= bearer, "a new access token: the saved text holds none")
