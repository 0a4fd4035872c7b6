-- Redirects of a service request on the wire: a 301 or 302 is followed once more with the
-- bearer, as a GET after GET and DELETE, as a POST with the same body after POST and PUT; a 303
-- or 307 comes back as it is; and an endless chain is cut by the host.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local LIST = "/calendar/v3/users/me/calendarList"
local TARGET = "https://www.googleapis.com" .. LIST .. "/primary"
local BODY = '{"colorId":"7"}'

local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c))

local cases = {
    {method = "GET", status = 302, follow = "GET"},
    {method = "GET", status = 301, follow = "GET"},
    {method = "DELETE", status = 302, follow = "GET"},
    {method = "POST", status = 302, body = BODY, follow = "POST"},
    {method = "PUT", status = 301, body = BODY, follow = "POST"},
    {method = "GET", status = 303},
    {method = "GET", status = 307},
}
local constants = {GET = kvggl.gglRequeteGET, POST = kvggl.gglRequetePOST,
                   PUT = kvggl.gglRequetePUT, DELETE = kvggl.gglRequeteDELETE}
for _, case in ipairs(cases) do
    local what = ("%d on %s"):format(case.status, case.method)
    local mark = W.mark()
    W.fault({host = "www.googleapis.com", method = case.method, path = LIST, status = case.status,
             headers = {Location = TARGET}, body = "moved", count = 1})
    local result, err
    if case.body then
        result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, "https://www.googleapis.com" .. LIST,
                                       case.body, constants[case.method])
    else
        result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, "https://www.googleapis.com" .. LIST,
                                       constants[case.method])
    end
    local log = W.log(mark)
    local bearers = W.check_bearers(log, what)
    if case.follow then
        W.eq(W.shape(log), ("%s www.googleapis.com %s\n%s www.googleapis.com %s/primary"):format(
            case.method, LIST, case.follow, LIST), what .. ": followed")
        W.eq(log[2].target, LIST .. "/primary", what .. ": to the Location")
        W.eq(bearers[2], bearers[1], what .. ": the bearer goes along")
        W.eq(log[2].body, case.body or "", what .. ": the body")
        if case.follow == "GET" then
            W.ok(err, what)
            W.eq(W.decode(result).id, W.SEEDED_EMAIL, what .. ": the answer of the Location")
        end
    else
        W.eq(W.shape(log), ("%s www.googleapis.com %s"):format(case.method, LIST),
             what .. ": not followed")
        W.failed(600005, err, what)
        W.eq(result, "", what .. ": no text")
        W.contains(err.message, "moved", what .. ": the server's text")
    end
end

-- Separate calls that each end on a redirect nobody follows are no loop, however many.
W.fault({host = "www.googleapis.com", method = "GET", path = LIST, status = 307, count = 25,
         headers = {Location = TARGET}, body = "moved"})
for i = 1, 25 do
    local _, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, "https://www.googleapis.com" .. LIST)
    W.failed(600005, err, "307, call " .. i)
end

-- A redirect to itself, again and again: the host refuses the 21st redirect of the chain
-- instead of letting the hops exhaust the stack, and the script gets its error.
local mark = W.mark()
W.fault({host = "www.googleapis.com", method = "GET", path = LIST, status = 302,
         headers = {Location = "https://www.googleapis.com" .. LIST}, count = 50})
local result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda, "https://www.googleapis.com" .. LIST)
W.control("DELETE", "/faults")
assert(err, "an endless chain fails")
W.eq(result, "", "no text")
W.contains(err.message, "21 redirects in a row", "the host's reason")
W.eq(#W.log(mark), 21, "the first request and 20 hops went out")

-- A 301 or 302 that names no address: the connection asks for the empty address, as its rules
-- say, and the host refuses it before the wire, so the script gets a clear error.
for _, method in ipairs({"GET", "POST"}) do
    mark = W.mark()
    W.fault({host = "www.googleapis.com", method = method, path = LIST, status = 302,
             body = "moved", count = 1})
    if method == "POST" then
        result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda,
                                       "https://www.googleapis.com" .. LIST, BODY,
                                       kvggl.gglRequetePOST)
    else
        result, err = kvggl.GglRequete(c, kvggl.gglServiceAgenda,
                                       "https://www.googleapis.com" .. LIST)
    end
    assert(err, method .. " redirect without Location fails")
    W.eq(result, "", method .. " redirect without Location: no text")
    W.contains(err.message, "The address '' is not an http or https URL", method .. " redirect without Location: the reason")
    W.eq(#W.log(mark), 1, method .. " redirect without Location: one request went out")
end
