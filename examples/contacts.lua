-- A contacts tour: the groups of the account, the contacts of one group, a phone number added
-- to one of them and saved, a contact created with two e-mails and a postal address, then
-- deleted, and what the server holds at the end.
--
-- Against the local emulators, as examples/google.lua explains (KVGGL_ROUTE and KVGGL_BROWSER
-- set), the account holds thirty seeded contacts in four groups:
--   ./kvggl run examples/contacts.lua
local kvggl = require "kvggl"

local connection = kvggl.gglConnexion()
connection.ClientID = os.getenv("KVGGL_GOOGLE_CLIENT_ID") or "demo-client"
connection.ClientSecret = os.getenv("KVGGL_GOOGLE_CLIENT_SECRET") or "demo-secret"
kvggl.check(kvggl.GglConnecte(connection, kvggl.gglServiceContact))

local function show(contact)
    local phones = {}
    for i = 1, #contact.Telephone do phones[i] = contact.Telephone[i].Numero end
    local email = #contact.Email > 0 and contact.Email[1].Adresse or ""
    print(("     %-20s %-34s %s"):format(contact.Nom, email, table.concat(phones, ", ")))
end

-- 1. The groups.
print("1. GglListeGroupeContact: the groups")
for _, group in ipairs(kvggl.check(kvggl.GglListeGroupeContact(connection))) do
    print(("     %-28s %s"):format(group.Nom, group.Identifiant))
end

-- 2. The contacts of one group, found by its name (case and accents do not count).
print("2. GglListeContact: the group \"collegues\"")
local colleagues = kvggl.check(kvggl.GglListeContact(connection, "collegues"))
for _, contact in ipairs(colleagues) do show(contact) end

-- 3. A phone number added to the first one, and saved: the entry goes back whole to its edit
-- link, with what the script does not see (extended properties, web sites) untouched.
local contact = colleagues[1]
local phone = kvggl.gglTelephone()
phone.Numero = "+33 6 07 08 09 10"
contact.Telephone:add(phone)
kvggl.check(kvggl.GglEcrit(connection, contact))
print("3. GglEcrit: a phone added to " .. contact.Nom)
show(contact)

-- 4. A new contact with two e-mails and a postal address, posted to the feed.
local new = kvggl.gglContact()
new.Nom = "Inès Caron"
new.Notes = "Architecte, chantier de la rue des Écoles"
for _, address in ipairs({"ines.caron@example.com", "ines@atelier-caron.example"}) do
    local email = kvggl.gglEmail()
    email.Adresse = address
    new.Email:add(email)
end
local postal = kvggl.gglAdressePostale()
postal.Valeur = "1 rue des Écoles\n75005 Paris"
new.Adresse:add(postal)
kvggl.check(kvggl.GglEcrit(connection, new))
print("4. GglEcrit: a new contact, " .. new.Identifiant)
show(new)

-- 5. Deleted again.
kvggl.check(kvggl.GglSupprime(connection, new))
print("5. GglSupprime: " .. new.Nom .. " deleted")

-- 6. What the server holds now: the group read again, and a search for the deleted contact.
print("6. the server now")
for _, c in ipairs(kvggl.check(kvggl.GglListeContact(connection, "collegues", 1, 3))) do show(c) end
local left = kvggl.check(kvggl.GglListeContactParRequete(connection, "q=caron"))
print(("     %d contacts in all; \"caron\" finds %d"):format(#kvggl.check(kvggl.GglListeContact(connection)), #left))
