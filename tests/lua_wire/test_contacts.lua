-- Contacts on the wire: the request lines of every listing form, the groups of a contact, a
-- contact created, changed and deleted, groups created, renamed and deleted, each body to the
-- character; a stale version refused and the change kept; what the feed holds beyond the
-- tables written back untouched, the members in the feed's order.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local HOST = "www.google.com"
local CONTACTS = "/m8/feeds/contacts/default/full"
local GROUPS = "GET /m8/feeds/groups/default/full?max-results=1000000000"
local ALL = "max-results=1000000000"
local BASE = "http://www.google.com/m8/feeds/groups/demo.user%40example.com/base/"
local COLLEGUES = BASE .. "4c7d2e9f1a3b5c60"
-- The host encodes a parameter's "%", and nothing else of a group's id.
local COLLEGUES_SENT = COLLEGUES:gsub("%%", "%%25")
local NAMESPACES = ' xmlns="http://www.w3.org/2005/Atom" xmlns:gd="http://schemas.google.com/g/2005"' ..
                   ' xmlns:gCal="http://schemas.google.com/gCal/2005"' ..
                   ' xmlns:openSearch="http://a9.com/-/spec/opensearchrss/1.0/"' ..
                   ' xmlns:gContact="http://schemas.google.com/contact/2008"' ..
                   ' xmlns:exif="http://schemas.google.com/photos/exif/2007"' ..
                   ' xmlns:gphoto="http://schemas.google.com/photos/2007"' ..
                   ' xmlns:media="http://search.yahoo.com/mrss/"'

W.control("POST", "/reset")
local c = W.connection(kvggl, {contact = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c, 2))

local function exchange(f) return W.exchange(HOST, f) end

-- The edit link of an entry as the feed gave it, as a request target.
local function edit(entry)
    return W.match(kvggl.check(kvggl.GglVersXML(entry)), 'rel="edit"[^>]- href="https://www%.google%.com([^"]+)"',
                   "edit link")
end

-- Every listing form: start 1 is not sent, count 0 asks for all, a name is looked up first
-- (loosely), and only "http://" marks an id.
for _, case in ipairs({
    {f = "GglListeContact", args = {}, lines = "GET " .. CONTACTS .. "?" .. ALL, count = 30},
    {f = "GglListeContact", args = {"", 5, 10}, lines = "GET " .. CONTACTS .. "?start-index=5&max-results=10", count = 10},
    {f = "GglListeContact", args = {"", 1, 3}, lines = "GET " .. CONTACTS .. "?max-results=3", count = 3},
    {f = "GglListeContact", args = {" collegues "}, count = 9,
     lines = GROUPS .. "\nGET " .. CONTACTS .. "?" .. ALL .. "&group=" .. COLLEGUES_SENT},
    {f = "GglListeContact", args = {COLLEGUES, 2}, count = 8,
     lines = "GET " .. CONTACTS .. "?start-index=2&" .. ALL .. "&group=" .. COLLEGUES_SENT},
    {f = "GglListeContact", args = {"https://" .. COLLEGUES:sub(8)}, lines = GROUPS, count = 0, code = 600032},
    {f = "GglListeContact", args = {"", 0}, lines = "", count = 0, code = 600006},
    {f = "GglListeContact", args = {"", 1, -1}, lines = "", count = 0, code = 600006},
    {f = "GglListeContactParRequete", args = {""}, lines = "GET " .. CONTACTS, count = 25},
    {f = "GglListeContactParRequete", args = {"q=nguy&max-results=5"}, lines = "GET " .. CONTACTS .. "?q=nguy&max-results=5", count = 1},
    {f = "GglListeGroupeContact", args = {}, lines = GROUPS, count = 4},
}) do
    local what = case.f .. "(" .. table.concat(case.args, ",") .. ")"
    local lines, _, list, err = exchange(function() return kvggl[case.f](c, table.unpack(case.args)) end)
    W.eq(lines, case.lines, what)
    if case.code then W.failed(case.code, err, what) else W.ok(err, what) end
    W.eq(#list, case.count, what .. ": entries")
end

-- A contact as read: its collections, its groups index for index with its memberships.
local daniel = kvggl.check(kvggl.GglListeContactParRequete(c, "q=nguy"))[1]
W.eq(daniel.Nom, "Daniel Nguyễn", "name")
W.eq(#daniel.Email .. " " .. daniel.Email[2].Adresse, "2 daniel.nguyen.perso@example.net", "e-mails")
W.eq(daniel.Organisation[1].Nom, "Nguyễn Conseil", "organisation")
local _, _, groups = exchange(function() return kvggl.GglListeGroupeContact(c, daniel) end)
W.eq(groups[1].Nom .. "|" .. groups[2].Nom, "Collègues|System Group: My Contacts", "its groups")

-- A phone added: the entry goes back whole to its edit link, version included, the extended
-- property and the members as the feed gave them, a true flag in its canonical form, the new
-- phone last.
local target, before = edit(daniel), kvggl.check(kvggl.GglVersXML(daniel))
local phone = kvggl.gglTelephone()
phone.Numero = "+33 6 00 00 00 01"
daniel.Telephone:add(phone)
local lines, bodies, ok, err = exchange(function() return kvggl.GglEcrit(c, daniel) end)
W.ok(err, "change")
W.eq(lines, "PUT " .. target, "change: the edit link")
W.contains(before, '<gd:extendedProperty name="crm-id" value="C-1003"/>', "the feed's own element")
W.eq(bodies[1], before:gsub('primary="true"', 'primary="1"'):gsub("</entry>$",
     "<gd:phoneNumber>+33 6 00 00 00 01</gd:phoneNumber></entry>"), "change: body")

-- Two copies of one contact: the second saved first, the first is refused for its old
-- version, reported, and keeps its change for the next save.
local first = kvggl.check(kvggl.GglListeContactParRequete(c, "q=nguy"))[1]
local second = kvggl.check(kvggl.GglListeContactParRequete(c, "q=nguy"))[1]
second.Notes = "Client depuis 2019"
kvggl.check(kvggl.GglEcrit(c, second))
first.Nom = "Daniel N."
for attempt = 1, 2 do
    lines, bodies, ok, err = exchange(function() return kvggl.GglEcrit(c, first) end)
    W.eq(lines, "PUT " .. edit(first), "stale: attempt " .. attempt)
    W.contains(bodies[1], "<title type=\"text\">Daniel N.</title>", "stale: the change")
    W.failed(600005, err, "stale")
    W.contains(err.message, "(HTTPConflict)", "stale: the status")
end
W.eq(kvggl.check(kvggl.GglListeContactParRequete(c, "q=nguy"))[1].Notes, "Client depuis 2019", "kept")

-- A new contact: posted with what the script set; after that it is a saved one. A change then
-- deleted goes nowhere: only the delete is sent.
local ines = kvggl.gglContact()
ines.Nom = "Inès Caron"
for _, address in ipairs({"ines.caron@example.com", "ines@example.org"}) do
    local email = kvggl.gglEmail()
    email.Adresse = address
    ines.Email:add(email)
end
local postal = kvggl.gglAdressePostale()
postal.Valeur = "1 rue des Écoles\n75005 Paris"
ines.Adresse:add(postal)
W.failed(600028, select(2, kvggl.GglSupprime(c, ines)), "deleting a new contact")
lines, bodies, ok, err = exchange(function() return kvggl.GglEcrit(c, ines) end)
W.ok(err, "create")
W.eq(lines, "POST " .. CONTACTS, "create")
W.eq(bodies[1], "<entry" .. NAMESPACES .. "><title>Inès Caron</title>" ..
                '<gd:email address="ines.caron@example.com"/><gd:email address="ines@example.org"/>' ..
                "<gd:postalAddress>1 rue des Écoles\n75005 Paris</gd:postalAddress></entry>", "create: body")
W.match(ines.Identifiant, "^http://www%.google%.com/m8/feeds/contacts/demo%.user%%40example%.com/base/%x+$", "id")
-- The server's answer replaced the entry: its edit link is the one the answer carried.
local function edit_after_save(entry, kind)
    return "DELETE /m8/feeds/" .. kind .. "/demo%.user%%40example%.com/full/" ..
           entry.Identifiant:match("/(%x+)$") .. "/%d+$"
end
ines.Nom = "Inès C."
lines = exchange(function() return kvggl.check(kvggl.GglSupprime(c, ines)) end)
W.match(lines, "^" .. edit_after_save(ines, "contacts"), "delete")
W.eq(#kvggl.check(kvggl.GglListeContactParRequete(c, "q=caron")), 0, "deleted")

-- Groups: a new one posted, then renamed: put whole, rebuilt from what the answer gave, to the
-- edit link of that answer; then deleted. A group read from the feed whose title alone
-- changed counts as unchanged, as one not touched: nothing is sent.
local voisins = kvggl.gglGroupeContact()
voisins.Nom = "Voisins"
lines, bodies = exchange(function() return kvggl.check(kvggl.GglEcrit(c, voisins)) end)
W.eq(lines .. "\n" .. bodies[1], "POST /m8/feeds/groups/default/full\n<entry" .. NAMESPACES ..
     "><title>Voisins</title></entry>", "new group")
voisins.Nom = "Voisins & amis"
lines, bodies = exchange(function() return kvggl.check(kvggl.GglEcrit(c, voisins)) end)
local id, version = voisins.Identifiant:match("/(%x+)$"), lines:match("/(%d+)$")
local full = "https://www.google.com/m8/feeds/groups/demo.user%40example.com/full/" .. id
W.eq(lines, "PUT /m8/feeds/groups/demo.user%40example.com/full/" .. id .. "/" .. version, "renamed group")
W.eq(bodies[1]:gsub("<updated>[^<]+</updated>", "<updated/>"), "<entry" .. NAMESPACES .. "><id>" ..
     voisins.Identifiant .. "</id><updated/>" ..
     '<category scheme="http://schemas.google.com/g/2005#kind" term="http://schemas.google.com/contact/2008#group"/>' ..
     '<title>Voisins &amp; amis</title><link rel="self" type="application/atom+xml" href="' .. full .. '"/>' ..
     '<link rel="edit" type="application/atom+xml" href="' .. full .. "/" .. version .. '"/></entry>', "renamed group: body")
local fournisseurs = kvggl.check(kvggl.GglListeGroupeContact(c))[4]
W.eq(exchange(function() return kvggl.check(kvggl.GglEcrit(c, fournisseurs)) end), "", "unchanged group")
fournisseurs.Nom = "Fournisseurs & sous-traitants"
W.eq(exchange(function() return kvggl.check(kvggl.GglEcrit(c, fournisseurs)) end), "", "a title alone")
W.match(exchange(function() return kvggl.check(kvggl.GglSupprime(c, voisins)) end),
        "^" .. edit_after_save(voisins, "groups"), "group deleted")
W.eq(#kvggl.check(kvggl.GglListeGroupeContact(c)), 4, "the groups the server holds")

-- A membership that no group has: an empty group at its index.
local lone = kvggl.gglContact()
lone.Groupe = {BASE .. "gone", COLLEGUES}
local found = kvggl.check(kvggl.GglListeGroupeContact(c, lone))
W.eq(#found .. "|" .. found[1].Identifiant .. "|" .. found[2].Nom, "2||Collègues", "unknown membership")

-- Replies the feed should never give: a clear error, or the entries as they stand.
local FEED = "<feed xmlns='http://www.w3.org/2005/Atom'>%s</feed>"
for _, case in ipairs({
    {what = "not XML", body = "<feed><entry>", code = 600003, count = 0},
    {what = "no id, no edit link, an unknown rel", count = 1,
     body = FEED:format("<entry><title>Sans lien</title><link rel='urn:x' href='https://x.test/'/></entry>")},
    {what = "a 1 MB note", count = 1, notes = 1000000,
     body = FEED:format("<entry><id>urn:big</id><content>" .. ("n"):rep(1000000) .. "</content></entry>")},
}) do
    W.fault({host = HOST, path = CONTACTS, status = 200, count = 1, body = case.body,
             headers = {["Content-Type"] = "application/atom+xml"}})
    local list, err = kvggl.GglListeContact(c)
    if case.code then W.failed(case.code, err, case.what) else W.ok(err, case.what) end
    W.eq(#list, case.count, case.what)
    if case.notes then W.eq(#list[1].Notes, case.notes, case.what .. ": the note") end
end
