-- Replies and ids the calendar must survive: each bad reply, injected as the events list's
-- answer, gives a clear error or a faithful result, and a refused reply leaves the events that
-- were there; ids with characters a path cannot hold go out encoded on reads.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local API = "www.googleapis.com"
W.control("POST", "/reset")
local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c))
local week = {{year = 2030, month = 6, day = 3}, {year = 2030, month = 6, day = 10}}
local agenda = kvggl.check(kvggl.GglRecupereAgenda(c, "Chantier", week[1], week[2]))
W.eq(#agenda.Evenement, 9, "the seeded week")

-- Pads a reply to about n bytes with a member nobody reads.
local function padded(n) return '{"kind":"calendar#events","pad":"' .. ("x"):rep(n) .. '","items":[]}' end

for _, case in ipairs({
    {what = "not JSON", body = "<html>Service Unavailable</html>", fails = true},
    {what = "truncated", body = '{"items":[{"id":"a","summary":"x"', fails = true},
    {what = "items not an array", body = '{"items":{"id":"a"}}', count = 0},
    {what = "members of the wrong types",
     body = '{"items":[{"id":7,"summary":["x"],"description":null,"start":{"dateTime":5},' ..
            '"end":true,"attendees":"all","location":5,"creator":"me"}]}',
     count = 1, check = function(e)
         W.eq(e.Identifiant, "", "id") W.eq(e.Titre, "", "title") W.eq(e.DateDebut, nil, "start")
         W.eq(#e.Participant, 0, "participants") W.eq(e.Lieu[1].Description, "", "place")
     end},
    {what = "dates that do not read",
     body = '{"items":[{"summary":"d","start":{"dateTime":"2030-13-45T99:00:00Z"},' ..
            '"end":{"date":"yesterday"},"updated":"now"}]}',
     count = 1, check = function(e)
         W.eq(e.DateDebut, nil, "start") W.eq(e.DateFin, nil, "end") W.eq(e.JourneeEntiere, true, "the last date member decides")
     end},
    {what = "nested items", body = '{"data":{"items":[{"summary":"deep"}]}}', count = 1,
     check = function(e) W.eq(e.Titre, "deep", "title") end},
    {what = "8 MB", body = padded(8 * 1024 * 1024), count = 0},
}) do
    W.eq(#agenda.Evenement > 0 or case.count ~= nil, true, case.what .. ": events before")
    -- The fault written by hand: the large body is not worth the generic encoder's time.
    local status = W.native.http(W.port, "POST", "/_emulator/faults",
        '{"host":"' .. API .. '","method":"GET","path":"/calendar/v3/calendars/","status":200,' ..
        '"count":1,"headers":{"Content-Type":"application/json; charset=UTF-8"},"body":"' ..
        case.body:gsub('[\\"]', "\\%0") .. '"}')
    W.eq(status, 201, case.what .. ": the fault")
    local before = #agenda.Evenement
    local ok, err = kvggl.GglRemplitAgenda(c, agenda, week[1], week[2])
    if case.fails then
        W.eq(ok, false, case.what)
        W.eq(err ~= nil, true, case.what .. ": an error")
        W.eq(#agenda.Evenement, before, case.what .. ": the events as they were")
    else
        W.ok(err, case.what)
        W.eq(#agenda.Evenement, case.count, case.what .. ": events")
        if case.check then case.check(agenda.Evenement[1]) end
    end
    if #agenda.Evenement == 0 then kvggl.check(kvggl.GglRemplitAgenda(c, agenda, week[1], week[2])) end
end

-- Ids a path cannot hold: encoded on reads (the server then finds no such calendar), sent as
-- they stand on writes; an error each time, never a crash.
for _, id in ipairs({"a b/c#d@é", "100%", "x?y=1&z"}) do
    local odd = kvggl.check(kvggl.deserialize("gglAgenda", W.encode({type = "gglAgenda",
                                              properties = {Identifiant = id, Titre = "odd"}})))
    local mark = W.mark()
    local ok, err = kvggl.GglRemplitAgenda(c, odd, week[1], week[2])
    W.eq(ok, false, id .. ": read")
    W.failed(600005, err, id .. ": read")
    W.contains(err.message, "HTTPNotFound", id .. ": the server's answer")
    local log = W.log(mark, API)
    W.eq(#log, 1, id .. ": one request")
    W.eq(log[1].target:find("[ #@é]"), nil, id .. ": nothing left unencoded")
    local e = kvggl.gglEvenement()
    e.Titre = "x"
    odd.Evenement:add(e)
    ok, err = kvggl.GglEcrit(c, odd)
    W.eq(ok, false, id .. ": write")
    W.eq(err ~= nil, true, id .. ": write error")
end
W.control("POST", "/reset") -- the large fault goes with the rest
