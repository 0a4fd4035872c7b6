-- Credentials stay on their origin: a service request redirected to another origin is followed
-- without the bearer and without the body; one redirected to the same origin keeps both; a
-- redirect from https to plain http is refused by the host. A relative Location is followed
-- from the address it answered.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local LIST = "/calendar/v3/users/me/calendarList"
local BODY = '{"colorId":"7"}'
local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c))

local cases = {
    {what = "another host", to = "https://collector.example.test/steal", target = "/steal"},
    {what = "another port", to = "https://www.googleapis.com:8443/x", target = "/x"},
    {what = "the same origin", to = "https://www.googleapis.com" .. LIST .. "/primary",
     target = LIST .. "/primary", kept = true},
    {what = "a relative address", to = LIST .. "/primary", target = LIST .. "/primary", kept = true},
    {what = "plain http", to = "http://www.googleapis.com/x", refused = 701014},
}
for _, case in ipairs(cases) do
    for _, method in ipairs({"GET", "POST"}) do
        local what = case.what .. " after " .. method
        local mark = W.mark()
        W.fault({host = "www.googleapis.com", method = method, path = LIST, status = 302,
                 headers = {Location = case.to}, body = "moved", count = 1})
        local _, err
        if method == "POST" then
            _, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, "https://www.googleapis.com" .. LIST,
                                      BODY, kvggl.gglRequetePOST)
        else
            _, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, "https://www.googleapis.com" .. LIST)
        end
        local log = W.log(mark)
        if case.refused then
            W.failed(case.refused, err, what)
            W.eq(#log, 1, what .. ": nothing sent after the redirect")
        else
            W.eq(#log, 2, what .. ": the redirect followed")
            local hop = log[2]
            W.eq(hop.target, case.target, what .. ": where the hop went")
            local bearer = W.header(hop, "Authorization")
            if case.kept then
                W.match(bearer or "", "^Bearer .+", what .. ": the bearer kept")
                if method == "POST" then W.eq(hop.body, BODY, what .. ": the body kept") end
            else
                W.eq(bearer, nil, what .. ": no bearer to another origin")
                W.eq(hop.body or "", "", what .. ": no body to another origin")
            end
        end
    end
end
