-- A tour of Salesforce: a login, accounts with their contacts, 1,200 leads paged through, two
-- records created of which one fails, an update, a delete and its restore, a lead converted,
-- and the logout.
--
-- Against the local emulators, as examples/google.lua says (KVGGL_ROUTE):
--   ./kvggl run examples/salesforce.lua
-- The account is the emulators' demo user; against Salesforce itself, give yours in
-- KVGGL_SALESFORCE_LOGIN and KVGGL_SALESFORCE_PASSWORD, and leave KVGGL_ROUTE unset.
local kvggl = require "kvggl"

local c = kvggl.sfConnexion()
c.Login = os.getenv("KVGGL_SALESFORCE_LOGIN") or "demo.user@example.com"
c.Password = os.getenv("KVGGL_SALESFORCE_PASSWORD") or "demo-password"

print("1. SFConnecte: the login, then every call goes to the server it names")
kvggl.check(kvggl.SFConnecte(c))
print("   " .. c.InfoSession.InfoUtilisateur.userFullName .. " on " .. c.InfoSession.URLServeur)

print("2. SFExecuteRequete: the accounts, then their contacts through the relationship")
local accounts = kvggl.check(kvggl.SFExecuteRequete(c, "SELECT Id, Name, Industry FROM Account ORDER BY Name"))
for i = 1, #accounts.sObjects do
    local a = accounts.sObjects[i]
    print(("   %s (%s)"):format(a.Name, a.Industry))
end
local contacts = kvggl.check(kvggl.SFExecuteRequete(c,
    "SELECT Id, Name, Account.Name FROM Contact WHERE Account.Name != null ORDER BY LastName"))
for i = 1, #contacts.sObjects do
    local rec = contacts.sObjects[i]
    print(("   %s works at %s"):format(rec.Name, rec.Account.Name))
end

print("3. SFAvanceRequete: the leads, a batch at a time")
local page = kvggl.check(kvggl.SFExecuteRequete(c, "SELECT Id, Company FROM Lead WHERE IsConverted = false"))
local seen = #page.sObjects
while not page.done do
    page = kvggl.check(kvggl.SFAvanceRequete(c, page.queryLocator))
    seen = seen + #page.sObjects
end
print(("   %d leads of %d"):format(seen, page.size))

print("4. SFAjoute: two accounts, the second without its required Name")
local good, bad = kvggl.sfObjet(), kvggl.sfObjet()
good.Type, good.Name, good.BillingCity = "Account", "Initech", "Nantes"
bad.Type, bad.Phone = "Account", "+33 1 00 00 00 00"
local results, err = kvggl.SFAjoute(c, {good, bad})
for i = 1, #results do
    local r = results[i]
    print(("   record %d: %s"):format(i, r.success and ("created " .. r.id)
        or (r.errors[1].statusCode .. ": " .. r.errors[1].message)))
end
print("   the call says: " .. (err and err.code or "no error"))
local id = results[1].id

print("5. SFModifie, SFSupprime, SFRestaure: the new account changed, deleted, restored")
local change = kvggl.sfObjet()
change.Type, change.ID, change.Website = "Account", id, "https://initech.example"
kvggl.check(kvggl.SFModifie(c, {change}))
kvggl.check(kvggl.SFSupprime(c, {id}))
kvggl.check(kvggl.SFRestaure(c, {id}))
local read = kvggl.check(kvggl.SFLit(c, "Name, Website", "Account", {id}))
print("   " .. read[1].Name .. ", " .. read[1].Website)

print("6. SFConvertitPiste: a lead becomes an account, a contact and an opportunity")
local lead = kvggl.check(kvggl.SFExecuteRequete(c,
    "SELECT Id, Company FROM Lead WHERE IsConverted = false LIMIT 1")).sObjects[1]
local conversion = kvggl.sfConversionPiste()
conversion.leadId, conversion.convertedStatus = lead.ID, "Closed - Converted"
local converted = kvggl.check(kvggl.SFConvertitPiste(c, {conversion}))[1]
print(("   %s: account %s, contact %s, opportunity %s"):format(lead.Company, converted.accountId,
    converted.contactId, converted.opportunityId))

print("7. SFDeconnecte: the session ends")
kvggl.check(kvggl.SFDeconnecte(c))
