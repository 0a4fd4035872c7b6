-- Calendar writes on the wire: a calendar created, changed and deleted, events created timed
-- and all-day, changed through a participant, moved, deleted through the collection; each
-- request line and body to the character, a refused write kept for the next GglEcrit.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local API = "www.googleapis.com"
W.control("POST", "/reset")
local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c))

-- The numeric offset the host writes for a local time of that day: "Z" in UTC.
local function zone(y, m, d, h)
    local t = os.time({year = y, month = m, day = d, hour = h})
    local z = os.date("%z", t)
    return z == "+0000" and "Z" or (z:sub(1, 3) .. ":" .. z:sub(4))
end

-- The requests of one call, as "METHOD target" lines and their bodies.
local function exchange(f)
    local mark = W.mark()
    local results = table.pack(f())
    local lines, bodies = {}, {}
    for _, e in ipairs(W.log(mark, API)) do
        lines[#lines + 1] = e.method .. " " .. e.target
        bodies[#bodies + 1] = e.body or ""
        if e.method == "POST" or e.method == "PATCH" then
            W.eq(W.header(e, "Content-Type"), "application/json", e.method .. ": type")
        end
    end
    return table.concat(lines, "\n"), bodies, table.unpack(results, 1, results.n)
end

-- A new calendar with two events: POST of the calendar, then of each event in its new id.
local agenda = kvggl.gglAgenda()
agenda.Titre = "Chantier \"Lilas\""
agenda.Description = "Gros œuvre\tlot 2\n"
local timed = kvggl.gglEvenement()
timed.Titre = "Coulage\u{A0}dalle"
timed.DateDebut = {year = 2030, month = 6, day = 4, hour = 10}
timed.DateFin = {year = 2030, month = 6, day = 4, hour = 11}
local anne = kvggl.gglPersonne()
anne.Email, anne.Libelle = "anne.martin@example.com", "Anne"
timed.Participant:add(anne)
for _, text in ipairs({"Salle 3", "Salle 4"}) do
    local lieu = kvggl.gglLieu()
    lieu.Description = text
    timed.Lieu:add(lieu)
end
agenda.Evenement:add(timed)
local allday = kvggl.gglEvenement()
allday.Titre = "Fermeture"
allday.JourneeEntiere = true
allday.DateDebut = {year = 2030, month = 6, day = 7}
allday.DateFin = {year = 2030, month = 6, day = 7}
agenda.Evenement:add(allday)
W.eq(tostring(allday.DateFin), "2030-06-07T00:00:00.000", "the end as set, though it goes one day on")

local lines, bodies, ok, err = exchange(function() return kvggl.GglEcrit(c, agenda) end)
W.ok(err, "create")
local id = agenda.Identifiant
W.match(id, "^[0-9a-z]+@group%.calendar%.google%.com$", "the new calendar's id")
W.eq(lines, "POST /calendar/v3/calendars\nPOST /calendar/v3/calendars/" .. id .. "/events\n" ..
            "POST /calendar/v3/calendars/" .. id .. "/events", "create: requests")
W.eq(bodies[1], '{"kind": "calendar#calendar", "id": "", "summary": "Chantier \\"Lilas\\"",' ..
                '"description": "Gros œuvre\\tlot 2\\n", "timeZone": ""}', "calendar body")
local z = zone(2030, 6, 4, 10)
W.eq(bodies[2], '{"kind": "calendar#event", "id":"", "summary":"Coulage\\u00A0dalle", "description":"", ' ..
                '"location":"Salle 3", "attendees":[{"id":"", "email":"anne.martin@example.com", ' ..
                '"displayName":"Anne"}], "start":{"dateTime":"2030-06-04T10:00:00.000' .. z .. '", date:null}, ' ..
                '"end":{"dateTime":"2030-06-04T11:00:00.000' .. z .. '", date:null}}', "timed event body")
W.eq(bodies[3], '{"kind": "calendar#event", "id":"", "summary":"Fermeture", "description":"", "location":"", ' ..
                '"attendees":[], "start":{"date":"2030-06-07", dateTime:null}, ' ..
                '"end":{"date":"2030-06-08", dateTime:null}}', "all-day event body")
W.eq(agenda.FuseauHoraire, "UTC", "the server's answer read back")
W.eq(#timed.Lieu, 1, "only the first place went; the answer's one replaces them")
W.match(timed.Identifiant, "^[0-9a-v]+$", "the event's id")

-- Nothing changed: nothing sent. A title written again: the calendar goes as a PATCH.
lines = exchange(function() return kvggl.GglEcrit(c, agenda) end)
W.eq(lines, "", "nothing to send")
agenda.Titre = agenda.Titre
lines, bodies = exchange(function() return kvggl.check(kvggl.GglEcrit(c, agenda)) end)
W.eq(lines, "PATCH /calendar/v3/calendars/" .. id, "patch of the calendar, the id unencoded")
W.eq(bodies[1], '{"kind": "calendar#calendar", "id": "' .. id .. '", "summary": "Chantier \\"Lilas\\"",' ..
                '"description": "Gros œuvre\\tlot 2\\n", "timeZone": "UTC"}', "patch body")

-- Read back: a participant renamed makes the whole event go as a PATCH; a participant removed
-- is left out of the next one; a moved event is a PATCH; an event removed from the collection leaves the view
-- at once and goes as a DELETE.
local lu = kvggl.check(kvggl.GglRecupereAgenda(c, "chantier \"LILAS\"", {year = 2030, month = 6, day = 1}))
W.eq(#lu.Evenement, 2, "both events on the server")
local e1, e2 = lu.Evenement[1], lu.Evenement[2]
W.eq(tostring(e2.DateFin), "2030-06-08T00:00:00.000", "an all-day end read back as the server wrote it")
W.eq(e1.Participant[1].Libelle, "Anne", "attendee read back")
e1.Participant[1].Libelle = "Anne M."
e2.DateDebut = {year = 2030, month = 6, day = 6}
lines, bodies = exchange(function() return kvggl.check(kvggl.GglEcrit(c, lu)) end)
W.eq(lines, "PATCH /calendar/v3/calendars/" .. id .. "/events/" .. e1.Identifiant .. "\n" ..
            "PATCH /calendar/v3/calendars/" .. id .. "/events/" .. e2.Identifiant, "two patches")
W.contains(bodies[1], '"attendees":[{"id":"", "email":"anne.martin@example.com", "displayName":"Anne M."}]',
           "the new name")
W.contains(bodies[2], '"start":{"date":"2030-06-06", dateTime:null}, "end":{"date":"2030-06-08", dateTime:null}}',
           "the moved all-day event")
e1.Participant:remove(1) -- a removal alone sends nothing: it rides with the next change
e1.Contenu = "sans Anne"
local gone = e2.Identifiant
lu.Evenement:remove(2)
W.eq(#lu.Evenement, 1, "the removed event left the view at once")
lines, bodies = exchange(function() return kvggl.check(kvggl.GglEcrit(c, lu)) end)
W.eq(lines, "PATCH /calendar/v3/calendars/" .. id .. "/events/" .. e1.Identifiant .. "\n" ..
            "DELETE /calendar/v3/calendars/" .. id .. "/events/" .. gone, "patch and delete")
W.contains(bodies[1], '"attendees":[]', "the removed participant is left out")
lines = exchange(function() return kvggl.check(kvggl.GglEcrit(c, lu)) end)
W.eq(lines, "", "the deleted event left the calendar")

-- A refused write: 600005 with the label and the server's text; the change stays and the
-- next GglEcrit sends it.
e1.Titre = "Coulage reporté"
W.fault({host = API, method = "PATCH", path = "/calendar/v3/calendars/", status = 400, count = 1,
         body = '{"error":{"code":400,"message":"Invalid attendee email."}}'})
ok, err = kvggl.GglEcrit(c, lu)
W.failed(600005, err, "refused write")
W.contains(err.message, "HTTPBadRequest", "status label")
W.contains(err.message, "Invalid attendee email.", "server text")
W.eq(e1.Titre, "Coulage reporté", "the script's change kept")
W.fault({host = API, method = "PATCH", path = "/calendar/v3/calendars/", status = 409, count = 1, body = "{}"})
W.failed(600031, select(2, kvggl.GglEcrit(c, lu)), "conflict")
lines, bodies = exchange(function() return kvggl.check(kvggl.GglEcrit(c, lu)) end)
W.eq(lines, "PATCH /calendar/v3/calendars/" .. id .. "/events/" .. e1.Identifiant, "sent on the next save")
W.contains(bodies[1], '"summary":"Coulage reporté"', "the kept change")

-- What the server holds now.
local server = kvggl.check(kvggl.GglRecupereAgenda(c, id, {year = 2030, month = 6, day = 1}))
W.eq(#server.Evenement, 1, "one event left")
W.eq(server.Evenement[1].Titre, "Coulage reporté", "its title")
W.eq(#server.Evenement[1].Participant, 0, "no participant left")

-- The calendar deleted: DELETE with the id as it stands, none of its events, the answer not
-- read; then the calendar is one to create again, with an empty id.
lu.Evenement[1].Titre = "not sent"
lines = exchange(function() return kvggl.check(kvggl.GglSupprime(c, lu)) end)
W.eq(lines, "DELETE /calendar/v3/calendars/" .. id, "delete")
W.eq(lu.Identifiant, "", "the id emptied")
W.fault({host = API, method = "DELETE", path = "/calendar/v3/calendars/", status = 403, count = 1, body = "{}"})
W.ok(select(2, kvggl.GglSupprime(c, server)), "a refused delete goes unnoticed")
lines, bodies = exchange(function() return kvggl.GglEcrit(c, lu) end)
W.match(lines, "^POST /calendar/v3/calendars\n", "written again as a new calendar")
W.contains(bodies[1], '"id": ""', "with an empty id")
