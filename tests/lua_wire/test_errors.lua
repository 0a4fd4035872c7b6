-- Errors on the wire: 600005 with the status label and the server's text on a 401, whether the
-- token expired or the server says so; 600013 for a value that names no one service, with
-- nothing sent; an unknown method sends nothing and reports nothing.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c))

-- An expired token keeps failing: the connection never renews it by itself.
W.expire()
local mark = W.mark()
for i = 1, 2 do
    local result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST)
    W.failed(600005, err, "expired token, call " .. i)
    W.eq(result, "", "no text")
    W.contains(err.message, "HTTPUnauthorized", "the status label")
    W.contains(err.message, "Request had invalid authentication credentials", "the server's text")
    W.contains(err.message, '"status":"UNAUTHENTICATED"', "the server's text, whole")
end
local log = W.log(mark)
W.eq(W.shape(log), "GET www.googleapis.com /calendar/v3/users/me/calendarList\n" ..
                   "GET www.googleapis.com /calendar/v3/users/me/calendarList",
     "no retry, no refresh")
local bearers = W.check_bearers(log, "expired")
W.eq(bearers[2], bearers[1], "the same expired token")

-- Logging in again renews it, silently from the refresh token.
mark = W.mark()
kvggl.check(kvggl.GglConnecte(c))
kvggl.check(kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST))
W.eq(W.shape(W.log(mark)), "POST accounts.google.com /o/oauth2/token\n" ..
                           "GET www.googleapis.com /calendar/v3/users/me/calendarList",
     "a new login, then served")

-- A 401 that the server words its own way: its text comes through as it was sent.
W.fault({host = "www.googleapis.com", path = "/calendar/v3/", status = 401, count = 1,
         body = "Token revoked by the administrator at 10:42 (é)",
         headers = {["WWW-Authenticate"] = 'Bearer error="invalid_token"'}})
local result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST)
W.failed(600005, err, "injected 401")
W.eq(result, "", "no text")
W.contains(err.message, "HTTPUnauthorized", "the status label")
W.contains(err.message, "Token revoked by the administrator at 10:42 (é)", "the server's text")

-- No one service: nothing goes out.
mark = W.mark()
for _, bit in ipairs({0, 3, 5, 32, -1, kvggl.gglServiceAgenda + kvggl.gglServiceContact}) do
    local what = "service value " .. bit
    local result, err = kvggl.GglRequete(c, bit, W.CALENDAR_LIST)
    W.failed(600013, err, what)
    W.eq(result, "", what .. ": no text")
    W.contains(err.message, ("Parameter 2: %d "):format(bit), what .. ": the argument and the value")
end
-- A method that is none of the four: an empty answer, no error, nothing sent.
local result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST, 3)
W.ok(err, "method 3")
W.eq(result, "", "method 3: no text")
W.eq(#W.log(mark), 0, "nothing went out")
