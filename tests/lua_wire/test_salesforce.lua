-- Salesforce over SOAP on the wire: each call's envelope as the server received it, byte for
-- byte, the session header after login, records with their own fields, per-record results,
-- faults reaching the script as 600022, and a dead session failing until the next login.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local INSTANCE = "na1.salesforce.com"
local ENVELOPE = '<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/" ' ..
    'xmlns:xsi="http://www.w3.org/1999/XMLSchema-instance" xmlns:xsd="http://www.w3.org/1999/XMLSchema" ' ..
    'xmlns:urn="urn:partner.soap.sforce.com" xmlns:sf="urn:sobject.partner.soap.sforce.com">' ..
    '<SOAP-ENV:Header>%s</SOAP-ENV:Header><SOAP-ENV:Body>%s</SOAP-ENV:Body></SOAP-ENV:Envelope>'
local session

-- Runs the call and checks the one request it made: its host and its envelope, which alone
-- names the operation (the SOAPAction header stays empty).
local function call(what, host, body, f, ...)
    local mark = W.mark()
    local results = table.pack(f(...))
    local log = W.log(mark)
    W.eq(#log, 1, what .. ": one request")
    W.eq(log[1].host .. " " .. log[1].method .. " " .. log[1].target:sub(1, 21), host ..
         " POST /services/Soap/u/15.0", what .. ": where it went")
    W.eq(W.header(log[1], "SOAPAction"), '""', what .. ": the action header")
    local header = session and ("<urn:SessionHeader><urn:sessionId>" .. session ..
                                "</urn:sessionId></urn:SessionHeader>") or ""
    W.eq(log[1].body, ENVELOPE:format(header, body), what .. ": the envelope")
    return table.unpack(results, 1, results.n)
end

W.control("POST", "/reset") -- the seeded records, whatever ran before
local c = kvggl.sfConnexion()
c.Login, c.Password = "demo.user@example.com", "demo-password"

-- ---- login -----------------------------------------------------------------------------------
W.eq(kvggl.check(call("login", "login.salesforce.com",
    "<urn:login ><urn:username>demo.user@example.com</urn:username>" ..
    "<urn:password>demo-password</urn:password></urn:login>", kvggl.SFConnecte, c)), true, "login")
session = c.InfoSession.IdSession
W.match(session, "^00D%w+!", "the session id")
W.eq(c.InfoSession.InfoUtilisateur.userFullName, "Demo User", "the user of the session")

-- ---- queries, records and paging ---------------------------------------------------------------
local q = "SELECT Id, Name, Account.Name FROM Contact WHERE LastName = 'Martin'"
local r = kvggl.check(call("query", INSTANCE,
    "<urn:query ><urn:queryString>" .. q .. "</urn:queryString></urn:query>",
    kvggl.SFExecuteRequete, c, q))
W.eq(r.size, 1, "one contact")
local rec = r.sObjects[1]
W.match(rec.ID, "^003%w+$", "the record's id, given once")
W.eq(rec.Name .. " / " .. rec.Account.Name, "Claire Martin / Acme", "its fields, a relationship's too")
local ok, err = pcall(function() return rec.Email end)
W.eq(ok, false, "a field the query did not select")
W.contains(tostring(err), "Email", "600046 names it")
rec.Title = 12
local fields = {}
for k, v in pairs(rec) do fields[#fields + 1] = k .. "=" .. tostring(v) end
W.contains(table.concat(fields, ","), "Title=12", "a written member, as text, among the fields")

q = "SELECT Id FROM Lead"
r = kvggl.check(call("queryAll", INSTANCE,
    "<urn:queryAll ><urn:queryString>" .. q .. "</urn:queryString></urn:queryAll>",
    kvggl.SFExecuteRequete, c, q, true))
local sizes = {#r.sObjects}
while not r.done do
    local locator = r.queryLocator
    r = kvggl.check(call("queryMore", INSTANCE,
        "<urn:queryMore ><queryLocator>" .. locator .. "</queryLocator></urn:queryMore>",
        kvggl.SFAvanceRequete, c, locator))
    sizes[#sizes + 1] = #r.sObjects
end
W.eq(table.concat(sizes, " "), "500 500 200", "1,200 leads in batches")

-- ---- writes ---------------------------------------------------------------------------------
local function account(fields)
    local a = kvggl.sfObjet()
    a.Type = "Account"
    for _, kv in ipairs(fields) do a[kv[1]] = kv[2] end
    return a
end
local results
results, err = call("create", INSTANCE,
    "<urn:create ><sObjects><sf:type>Account</sf:type><Name>One</Name></sObjects>" ..
    "<sObjects><sf:type>Account</sf:type><Phone>555</Phone></sObjects>" ..
    "<sObjects><sf:type>Account</sf:type><Name>Three</Name></sObjects></urn:create>",
    kvggl.SFAjoute, c, {account{{"Name", "One"}}, account{{"Phone", "555"}}, account{{"Name", "Three"}}})
W.failed(600047, err, "the second record fails")
W.eq(#results, 3, "three results")
W.eq(tostring(results[1].created) .. tostring(results[2].created) .. tostring(results[3].created),
     "truefalsetrue", "the third is written all the same")
W.eq(results[2].errors[1].statusCode .. " " .. results[2].errors[1].fields, "REQUIRED_FIELD_MISSING Name",
     "the failure, named")
local id = results[3].id

local upd = account{{"Name", "Three bis"}}
upd.ID = id
results = kvggl.check(call("update", INSTANCE,
    "<urn:update ><sObjects><sf:type>Account</sf:type><Name>Three bis</Name><sf:Id>" .. id ..
    "</sf:Id></sObjects></urn:update>", kvggl.SFModifie, c, {upd}))
W.eq(results[1].success, true, "updated")

results = kvggl.check(call("upsert", INSTANCE,
    "<urn:upsert ><externalIDFieldName>External_Id__c</externalIDFieldName><sObjects><sf:type>Account" ..
    "</sf:type><External_Id__c>EXT-1</External_Id__c><Website>x.test</Website></sObjects></urn:upsert>",
    kvggl.SFModifie, c, {account{{"External_Id__c", "EXT-1"}, {"Website", "x.test"}}}, 1, "External_Id__c"))
W.eq(results[1].created, false, "the upsert found Acme by its external id")

local read = kvggl.check(call("retrieve", INSTANCE,
    "<urn:retrieve ><fieldList>Name, Website</fieldList><sObjectType>Account</sObjectType><ids>" ..
    results[1].id .. "</ids><ids>" .. id .. "</ids></urn:retrieve>",
    kvggl.SFLit, c, "Name, Website", "Account", {results[1].id, id}))
W.eq(read[1].Website .. " " .. read[2].Name, "x.test Three bis", "the records as written")

for _, step in ipairs{{"delete", kvggl.SFSupprime}, {"undelete", kvggl.SFRestaure}} do
    results = kvggl.check(call(step[1], INSTANCE, "<urn:" .. step[1] .. " ><ids>" .. id ..
        "</ids></urn:" .. step[1] .. ">", step[2], c, {id}))
    W.eq(results[1].success, true, step[1])
end

local lead = kvggl.check(kvggl.SFExecuteRequete(c, "SELECT Id FROM Lead WHERE LastName = 'Lead 0007'")).sObjects[1].ID
local conversion = kvggl.sfConversionPiste()
conversion.leadId, conversion.convertedStatus = lead, "Closed - Converted"
conversion.doNotCreateOpportunity = true
results = kvggl.check(call("convertLead", INSTANCE,
    "<urn:convertLead ><leadConverts><convertedStatus>Closed - Converted</convertedStatus>" ..
    "<leadId>" .. lead .. "</leadId><doNotCreateOpportunity>1</doNotCreateOpportunity>" ..
    "</leadConverts></urn:convertLead>", kvggl.SFConvertitPiste, c, {conversion}))
W.match(results[1].accountId .. " " .. results[1].contactId .. " " .. results[1].opportunityId,
        "^001%w+ 003%w+ $", "converted, without an opportunity")

local found = kvggl.check(call("search", INSTANCE,
    "<urn:search ><searchString>FIND {Acme} RETURNING Account(Name)</searchString></urn:search>",
    kvggl.SFRecherche, c, "FIND {Acme} RETURNING Account(Name)"))
W.eq(found.searchRecords[1].record.Name, "Acme", "a search")

local span = {"2000-01-01T00:00:00", "2099-12-31T23:59:59"}
local dates = "<startDate>2000-01-01T00:00:00</startDate><endDate>2099-12-31T23:59:59</endDate>"
local deleted = kvggl.check(call("getDeleted", INSTANCE, "<urn:getDeleted ><sObjectType>Account" ..
    "</sObjectType>" .. dates .. "</urn:getDeleted>", kvggl.SFRechercheSupprime, c, "Account", span[1], span[2]))
W.eq(#deleted.deletedRecords, 0, "the restored account is not among the deleted")
local updated = kvggl.check(call("getUpdated", INSTANCE, "<urn:getUpdated ><sObjectType>Account" ..
    "</sObjectType>" .. dates .. "</urn:getUpdated>", kvggl.SFRechercheModifie, c, "Account", span[1], span[2]))
W.contains(updated.ids, id, "the changed account, one id a line")

local merge = kvggl.sfRequeteFusionne()
merge.masterRecord.Type = "Account" -- members go out in the order they were made
merge.masterRecord.ID = id
merge.recordToMergeIds = results[1].accountId
results = kvggl.check(call("merge", INSTANCE, "<urn:merge ><request><masterRecord><sf:type>Account" ..
    "</sf:type><sf:Id>" .. id .. "</sf:Id></masterRecord><recordToMergeIds>" .. results[1].accountId ..
    "</recordToMergeIds></request></urn:merge>", kvggl.SFFusionne, c, {merge}))
W.eq(results[1].mergedRecordIds .. " " .. results[1].updatedRelatedIds:sub(1, 3),
     merge.recordToMergeIds .. " 003", "merged, its contact moved to the master")

local submit = kvggl.sfRequeteTraitementSoumission()
submit.objectId = id
submit.comments = "please"
results = kvggl.check(call("process", INSTANCE, "<urn:process ><actions><objectId>" .. id ..
    "</objectId><comments>please</comments></actions></urn:process>", kvggl.SFExecuteTraitement, c, {submit}))
W.eq(results[1].instanceStatus, "Pending", "submitted for approval")

-- ---- faults ------------------------------------------------------------------------------------
-- A value with '&' goes out as it stands; the server's fault comes back with its three parts.
q = "SELECT Id FROM Account WHERE Name = 'A&B'"
r, err = call("unescaped", INSTANCE,
    "<urn:query ><urn:queryString>" .. q .. "</urn:queryString></urn:query>", kvggl.SFExecuteRequete, c, q)
W.failed(600022, err, "the malformed envelope")
W.contains(err.message, "(soapenv:Client)", "the fault code")
W.contains(err.message, "<soapenv:Fault>", "the reply text")
W.eq(r.size, 0, "an empty result all the same")

-- A dead session fails every call until the next login.
W.expire()
for _, f in ipairs{function() return kvggl.SFExecuteRequete(c, "SELECT Id FROM Account") end,
                   function() return kvggl.SFSupprime(c, {id}) end} do
    local _, e = f()
    W.failed(600022, e, "a call on a dead session")
    W.contains(e.message, "sf:INVALID_SESSION_ID", "the server's code")
end
kvggl.check(kvggl.SFConnecte(c))
session = c.InfoSession.IdSession
W.eq(kvggl.check(kvggl.SFExecuteRequete(c, "SELECT COUNT() FROM Account WHERE Name LIKE 'Three%'")).size,
     1, "alive again")

W.eq(kvggl.check(call("logout", INSTANCE, "<urn:logout ></urn:logout>",
                      kvggl.SFDeconnecte, c)), true, "logout")
