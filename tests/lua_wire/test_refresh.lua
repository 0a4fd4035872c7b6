-- The silent login from a refresh token on the wire, with the exact body of the refresh grant;
-- and a refresh that the server rejects, which falls through to the dialogue and leaves no
-- error behind.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local function check_refresh_grant(entry, token, what)
    W.eq(entry.method .. " " .. entry.host .. " " .. entry.target,
         "POST accounts.google.com /o/oauth2/token", what .. ": the request line")
    W.eq(entry.body, W.refresh_body(token), what .. ": the body")
    W.eq(W.header(entry, "Content-Type"), "application/x-www-form-urlencoded", what .. ": type")
    W.eq(W.header(entry, "Authorization"), nil, what .. ": no bearer at the token endpoint")
end

-- A service call on a connection that holds only a refresh token logs in silently first.
do
    local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH})
    local mark = W.mark()
    local list, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST)
    W.ok(err, "silent login")
    W.eq(W.decode(list).kind, "calendar#calendarList", "the answer")
    local log = W.log(mark)
    W.eq(W.shape(log), "POST accounts.google.com /o/oauth2/token\n" ..
                       "GET www.googleapis.com /calendar/v3/users/me/calendarList",
         "a refresh, then the request: no dialogue")
    check_refresh_grant(log[1], W.SEEDED_REFRESH, "silent login")
    W.check_bearers(log, "silent login")
    W.contains(c.RefreshTokens, '"calendar":"' .. W.SEEDED_REFRESH .. '"',
               "the refresh token stays as it was")
end

-- Two services holding one refresh token log in together with one refresh.
do
    local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH, contact = W.SEEDED_REFRESH})
    local mark = W.mark()
    W.eq(kvggl.check(kvggl.GglConnecte(c, kvggl.gglServiceAgenda + kvggl.gglServiceContact)), true,
         "two services")
    local log = W.log(mark)
    W.eq(W.shape(log), "POST accounts.google.com /o/oauth2/token", "one refresh for both")
    check_refresh_grant(log[1], W.SEEDED_REFRESH, "two services")
end

-- Rejected: by a fault on a token the server knows, or because the server does not know it.
local rejected = {
    {what = "a rejection injected", token = W.SEEDED_REFRESH,
     fault = {host = "accounts.google.com", method = "POST", path = "/o/oauth2/token",
              status = 400, count = 1,
              body = '{"error": "invalid_grant", "error_description": "Bad Request"}'}},
    {what = "an unknown refresh token", token = "1//revoked-long-ago"},
}
for _, case in ipairs(rejected) do
    local c = W.connection(kvggl, {calendar = case.token})
    local mark = W.mark()
    if case.fault then W.fault(case.fault) end
    local ok, err = kvggl.GglConnecte(c)
    W.ok(err, case.what .. ": no error left behind")
    W.eq(ok, true, case.what)
    local log = W.log(mark)
    W.eq(W.shape(log), "POST accounts.google.com /o/oauth2/token\n" ..
                       "GET accounts.google.com /accounts.google.com/o/oauth2/auth\n" ..
                       "POST accounts.google.com /o/oauth2/token",
         case.what .. ": the refresh, then the dialogue")
    check_refresh_grant(log[1], case.token, case.what)
    W.check_consent_request(log[2], "https://www.googleapis.com/auth/calendar", nil, case.what)
    W.check_code_grant(log[3], case.what)
    local refresh = W.match(c.RefreshTokens, '"calendar":"([^"]+)"', case.what)
    assert(refresh ~= case.token, case.what .. ": the dialogue's refresh token replaced it")
    local _, pending = W.control("GET", "/faults")
    W.eq(#pending, 0, case.what .. ": no fault left")

    -- The connection works: the next request uses the new token without logging in again.
    mark = W.mark()
    kvggl.check(kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST))
    W.eq(W.shape(W.log(mark)), "GET www.googleapis.com /calendar/v3/users/me/calendarList",
         case.what .. ": then served")
end
