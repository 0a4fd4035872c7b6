-- Calendar reads on the wire: the list with its option, the search of a calendar by name, and
-- the fill with every combination of bounds, each request line checked to the character.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local API = "www.googleapis.com"
local CHANTIER = "c0ntr4ct0r5chedule@group.calendar.google.com"
local EVENTS = "/calendar/v3/calendars/c0ntr4ct0r5chedule%40group.calendar.google.com/events"
local FIXED = "?singleEvents=true&orderBy=startTime&maxResults=2500"

W.control("POST", "/reset")
local c = W.connection(kvggl, {calendar = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c))

-- One call, its request lines after the mark.
local function lines(f)
    local mark = W.mark()
    local results = table.pack(f())
    local t = {}
    for _, e in ipairs(W.log(mark, API)) do t[#t + 1] = e.method .. " " .. e.target end
    return table.concat(t, "\n"), table.unpack(results, 1, results.n)
end

-- The list: 250 at most; only the option 1 restricts to owned calendars.
for _, case in ipairs({
    {args = {}, target = "?maxResults=250", count = 5},
    {args = {1}, target = "?minAccessRole=owner&maxResults=250", count = 2},
    {args = {2}, target = "?maxResults=250", count = 5},
}) do
    local what = "GglListeAgenda(" .. table.concat(case.args, ",") .. ")"
    local line, list, err = lines(function() return kvggl.GglListeAgenda(c, table.unpack(case.args)) end)
    W.ok(err, what)
    W.eq(line, "GET /calendar/v3/users/me/calendarList" .. case.target, what)
    W.eq(#list, case.count, what .. ": calendars")
end
local list = kvggl.check(kvggl.GglListeAgenda(c))
W.eq(list[2].Titre, "Chantier", "title")
W.eq(list[2].Identifiant, CHANTIER, "id")
W.eq(list[2].FuseauHoraire, "Europe/Paris", "time zone")
W.eq(list[2].Description, "Suivi du chantier, réunions et livraisons", "description")
W.eq(#list[2].Evenement, 0, "a listed calendar has no events yet")

-- The search: title or id, case, accents and blanks around not counting; then the fill from
-- now on, the id encoded with its '@' and '#' replaced.
for _, case in ipairs({
    {name = "  CHANTIER ", id = CHANTIER},
    {name = "jours feries en france", id = "fr.french#holiday@group.v.calendar.google.com",
     path = "/calendar/v3/calendars/fr.french%23holiday%40group.v.calendar.google.com/events"},
    {name = "team.planning@group.calendar.google.com", id = "team.planning@group.calendar.google.com"},
    {name = nil, id = W.SEEDED_EMAIL},
}) do
    local what = "GglRecupereAgenda(" .. tostring(case.name) .. ")"
    local line, agenda, err = lines(function()
        if case.name then return kvggl.GglRecupereAgenda(c, case.name) end
        return kvggl.GglRecupereAgenda(c)
    end)
    W.ok(err, what)
    W.eq(agenda.Identifiant, case.id, what)
    local path = case.path or ("/calendar/v3/calendars/" .. case.id:gsub("@", "%%40") .. "/events")
    W.match(line, "^GET /calendar/v3/users/me/calendarList\nGET " .. path:gsub("%p", "%%%0") ..
            FIXED:gsub("%p", "%%%0") .. "&timeMin=%d%d%d%d%-%d%d%-%d%dT%d%d:%d%d:%d%d%.%d%d%dZ$", what)
end

-- Not found: 600012 with the name, and an empty calendar.
local agenda, err = kvggl.GglRecupereAgenda(c, "Nulle part")
W.failed(600012, err, "unknown calendar")
W.contains(err.message, "Nulle part", "the name in the message")
W.eq(agenda.Identifiant, "", "an empty calendar")

-- The fill and its bounds, local time turned to UTC (the process runs in UTC here). Absent
-- dates, which a Lua script cannot pass, are the unit tests'.
local chantier = kvggl.check(kvggl.GglRecupereAgenda(c, "Chantier"))
local week = {{year = 2030, month = 6, day = 3}, {year = 2030, month = 6, day = 10}}
for _, case in ipairs({
    {args = {week[1], week[2]}, query = "&timeMin=2030-06-03T00:00:00.000Z&timeMax=2030-06-10T00:00:00.000Z",
     titles = "Point sécurité,Réunion de chantier,Point sécurité,Livraison béton,Point sécurité," ..
              "Point sécurité,Visite client,Fermeture du site,Point sécurité"},
    {args = {week[1]}, query = "&timeMin=2030-06-03T00:00:00.000Z", count = 12},
    {args = {{year = 2012, month = 5, day = 1, hour = 12}, {year = 2012, month = 6, day = 1}},
     query = "&timeMin=2012-05-01T12:00:00.000Z&timeMax=2012-06-01T00:00:00.000Z", titles = "Réunion de lancement"},
    {args = {week[1], week[2], "béton"}, query = "&timeMin=2030-06-03T00:00:00.000Z" ..
     "&timeMax=2030-06-10T00:00:00.000Z&q=b%C3%A9ton", titles = "Livraison béton"},
    {args = {week[1], week[2], ""}, query = "&timeMin=2030-06-03T00:00:00.000Z&timeMax=2030-06-10T00:00:00.000Z",
     count = 9},
}) do
    local what = "GglRemplitAgenda " .. case.query
    local line, ok, err = lines(function() return kvggl.GglRemplitAgenda(c, chantier, table.unpack(case.args)) end)
    W.ok(err, what)
    W.eq(ok, true, what)
    W.eq(line, "GET " .. EVENTS .. FIXED .. case.query, what)
    local titles = {}
    for i = 1, #chantier.Evenement do titles[i] = chantier.Evenement[i].Titre end
    if case.titles then W.eq(table.concat(titles, ","), case.titles, what .. ": events") end
    if case.count then W.eq(#titles, case.count, what .. ": events") end
end

-- The script's own query, as it stands, with the id unencoded.
local line, ok, err = lines(function()
    return kvggl.GglRemplitAgendaParRequete(c, chantier, "q=visite&timeMin=2030-01-01T00:00:00Z")
end)
W.ok(err, "by query")
W.eq(line, "GET /calendar/v3/calendars/" .. CHANTIER .. "/events?q=visite&timeMin=2030-01-01T00:00:00Z", "by query")
W.eq(#chantier.Evenement, 1, "by query: the events replaced")
local visite = chantier.Evenement[1]
W.eq(visite.Titre, "Visite client", "title")
W.eq(visite.Contenu, "Le client veut voir \"l'avancement\" des façades", "content")
W.eq(tostring(visite.DateDebut), "2030-06-06T12:00:00.000", "start, local time")
W.eq(visite.Auteur.Nom, "Demo User", "author's name")
W.eq(visite.Auteur.Email, "demo.user@example.com", "author's e-mail")
W.eq(visite.JourneeEntiere, false, "timed")

-- A refused list leaves the events as they were, with the status and the server's text.
W.fault({host = API, path = "/calendar/v3/calendars/", status = 503, count = 1, body = "Backend Error (maintenance)"})
ok, err = kvggl.GglRemplitAgenda(c, chantier, week[1], week[2])
W.failed(600005, err, "refused fill")
W.contains(err.message, "HTTPServiceUnavailable", "status label")
W.contains(err.message, "Backend Error (maintenance)", "server text")
W.eq(#chantier.Evenement, 1, "the events as they were")
