-- The interactive login on the wire: the consent page opened in its browser form, the code
-- exchanged at the token endpoint with the exact body of the authorization-code grant, then
-- service requests of every method, each with the bearer that login gave.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local SCOPE = "https://www.googleapis.com/auth/calendar"

-- Without and with the account hint.
for _, email in ipairs({false, W.SEEDED_EMAIL}) do
    local what = "login " .. (email or "without a hint")
    local c = W.connection(kvggl, nil, email or nil)
    local mark = W.mark()
    local ok, err = kvggl.GglConnecte(c)
    W.ok(err, what)
    W.eq(ok, true, what)

    local log = W.log(mark)
    W.eq(W.shape(log), "GET accounts.google.com /accounts.google.com/o/oauth2/auth\n" ..
                       "POST accounts.google.com /o/oauth2/token", what .. ": the exchanges")
    local redirect = W.check_consent_request(log[1], SCOPE, email or nil, what)
    local code, redirect_sent = W.check_code_grant(log[2], what)
    W.eq(redirect_sent, redirect, what .. ": the exchange names the dialogue's redirect")
    -- The code goes back as the provider wrote it in the redirect, percent-encoding included.
    W.match(code, "^4%%2F[%w%-_]+$", what .. ": the code")

    local refresh = W.match(c.RefreshTokens, '"calendar":"(1//[^"]+)"', what .. ": RefreshTokens")
    assert(refresh ~= W.SEEDED_REFRESH, what .. ": a refresh token of this login")
end

-- Every method through GglRequete carries the bearer; the forms with a body send it as given.
local c = W.connection(kvggl)
kvggl.check(kvggl.GglConnecte(c))
local mark = W.mark()
local list, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST .. "?maxResults=2")
W.ok(err, "the calendar list")
local answer = W.decode(list)
W.eq(answer.kind, "calendar#calendarList", "the answer")
W.eq(#answer.items, 2, "maxResults reached the service")
W.eq(answer.items[1].id, W.SEEDED_EMAIL, "the primary calendar comes first")

local PRIMARY = W.CALENDAR_LIST .. "/primary"
local sent = {
    {kvggl.gglRequeteGET, nil, "GET", ""},
    {kvggl.gglRequetePOST, '{"id":"team.planning@group.calendar.google.com"}', "POST"},
    {kvggl.gglRequetePUT, '{"summary":"Été \\"2024\\""}', "PUT"},
    {kvggl.gglRequeteDELETE, nil, "DELETE", ""},
}
for _, case in ipairs(sent) do
    local method, body = case[1], case[2]
    if body then
        kvggl.GglRequete(c, kvggl.gglServiceAgenda, PRIMARY, body, method)
    else
        kvggl.GglRequete(c, kvggl.gglServiceAgenda, PRIMARY, method)
    end
end
local log = W.log(mark)
W.eq(W.shape(log), "GET www.googleapis.com /calendar/v3/users/me/calendarList\n" ..
                   "GET www.googleapis.com /calendar/v3/users/me/calendarList/primary\n" ..
                   "POST www.googleapis.com /calendar/v3/users/me/calendarList/primary\n" ..
                   "PUT www.googleapis.com /calendar/v3/users/me/calendarList/primary\n" ..
                   "DELETE www.googleapis.com /calendar/v3/users/me/calendarList/primary",
     "no login again: the token is held")
W.eq(log[1].target, "/calendar/v3/users/me/calendarList?maxResults=2", "the query as given")
local bearers = W.check_bearers(log, "GglRequete")
W.eq(#bearers, 5, "every service request has its bearer")
for i = 2, #bearers do W.eq(bearers[i], bearers[1], "one login, one token") end
for i, case in ipairs(sent) do
    local entry = log[i + 1]
    W.eq(entry.body, case[4] or case[2], case[3] .. ": the body")
    if case[2] then
        W.eq(W.header(entry, "Content-Type"), "application/json", case[3] .. ": the calendar speaks JSON")
    end
end
