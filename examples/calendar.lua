-- A calendar tour: the calendars of the account, one of them with a week of events, an all-day
-- event added with a participant, a timed event moved, another deleted, all saved with one
-- GglEcrit, and the week read back as the server now holds it.
--
-- Against the local emulators, as examples/google.lua explains (KVGGL_ROUTE and KVGGL_BROWSER
-- set), the account's seeded calendar "Chantier" holds a week of site events in June 2030:
--   ./kvggl run examples/calendar.lua
local kvggl = require "kvggl"

local function stamp(d)
    if not d then return "(none)" end
    return ("%04d-%02d-%02d %02d:%02d"):format(d.year, d.month, d.day, d.hour, d.min)
end

local function show_week(agenda)
    for i = 1, #agenda.Evenement do
        local e = agenda.Evenement[i]
        local when = e.JourneeEntiere and (stamp(e.DateDebut):sub(1, 10) .. "  all day       ")
                     or (stamp(e.DateDebut) .. " to " .. stamp(e.DateFin):sub(12))
        local who = {}
        for k = 1, #e.Participant do who[k] = e.Participant[k].Email end
        print(("     %s  %s%s"):format(when, e.Titre, #who > 0 and ("  [" .. table.concat(who, ", ") .. "]") or ""))
    end
end

local connection = kvggl.gglConnexion()
connection.ClientID = os.getenv("KVGGL_GOOGLE_CLIENT_ID") or "demo-client"
connection.ClientSecret = os.getenv("KVGGL_GOOGLE_CLIENT_SECRET") or "demo-secret"
kvggl.check(kvggl.GglConnecte(connection, kvggl.gglServiceAgenda))

-- 1. The calendars of the account.
print("1. GglListeAgenda: the calendars")
for _, agenda in ipairs(kvggl.check(kvggl.GglListeAgenda(connection))) do
    print(("     %-26s %s"):format(agenda.Titre, agenda.Identifiant))
end

-- 2. One calendar by its title (case and accents do not count), with a week of events.
local monday, next_monday = {year = 2030, month = 6, day = 3}, {year = 2030, month = 6, day = 10}
print("2. GglRecupereAgenda: \"chantier\", the week of 3 June 2030")
local agenda = kvggl.check(kvggl.GglRecupereAgenda(connection, "chantier", monday, next_monday))
show_week(agenda)

-- 3. Changes stay in the objects until GglEcrit sends them: an all-day event with a
-- participant, a timed event moved by a day, one deleted through the collection.
print("3. local changes, then GglEcrit")
local closing = kvggl.gglEvenement()
closing.Titre = "Réception des travaux"
closing.JourneeEntiere = true
closing.DateDebut = {year = 2030, month = 6, day = 8}
closing.DateFin = {year = 2030, month = 6, day = 8}
local client = kvggl.gglPersonne()
client.Email, client.Libelle = "client@example.com", "Le client"
closing.Participant:add(client)
agenda.Evenement:add(closing)
for i = #agenda.Evenement, 1, -1 do
    local e = agenda.Evenement[i]
    if e.Titre == "Livraison béton" then
        local start, finish = e.DateDebut, e.DateFin
        start.day, finish.day = start.day + 1, finish.day + 1
        e.DateDebut, e.DateFin = start, finish
        print("     moved:   " .. e.Titre .. " to " .. stamp(e.DateDebut))
    elseif e.Titre == "Visite client" then
        agenda.Evenement:remove(i)
        print("     deleted: " .. e.Titre)
    end
end
print("     added:   " .. closing.Titre)
kvggl.check(kvggl.GglEcrit(connection, agenda))

-- 4. What the server holds now.
print("4. GglRemplitAgenda: the same week, read back")
kvggl.check(kvggl.GglRemplitAgenda(connection, agenda, monday, next_monday))
show_week(agenda)
