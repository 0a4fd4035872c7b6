-- A first tour of the Google connection: a login through the login dialogue, a raw request to
-- the Calendar API, the connection saved and restored as an application keeps it between runs,
-- and a silent login from the restored refresh token, without the dialogue.
--
-- Against the local emulators, by hand:
--   terminal 1:  ./kvggl emulators --port 0 --auto-approve
--                (it prints "kvggl-emulators listening on 127.0.0.1:PORT")
--   terminal 2:  export KVGGL_ROUTE='*=127.0.0.1:PORT'
--                export KVGGL_BROWSER='curl -s -L -o /dev/null'
--                ./kvggl run examples/google.lua
-- KVGGL_ROUTE sends every origin to the emulators; KVGGL_BROWSER is the command that opens the
-- consent page: curl plays the browser, and the auto-approving consent page sends it straight
-- back to the host's dialogue. Leave KVGGL_BROWSER unset to open the page in a real browser
-- and click Approve (start the emulators without --auto-approve to see the page).
--
-- The client is the emulators' demo client; against Google itself, give yours in
-- KVGGL_GOOGLE_CLIENT_ID and KVGGL_GOOGLE_CLIENT_SECRET, and leave KVGGL_ROUTE unset.
-- Errors come back as a second result {code, message, ...}: the tour shows each with its code
-- and message, and goes on where it can.
local kvggl = require "kvggl"

local CALENDAR_LIST = "https://www.googleapis.com/calendar/v3/users/me/calendarList"

local function show_error(what, err)
    print(("   %s: error %d: %s"):format(what, err.code, (err.message:gsub("\r?\n", " / "))))
end

-- A raw reply is JSON text: kvggl.json.decode makes it tables, with the host's own parser.
local function summaries(list)
    local t = {}
    for _, calendar in ipairs(kvggl.check(kvggl.json.decode(list)).items or {}) do
        t[#t + 1] = calendar.summary
    end
    return t
end

-- RefreshTokens is JSON too: one refresh token per service.
local function refresh_token(connection)
    local tokens = connection.RefreshTokens
    return tokens ~= "" and kvggl.check(kvggl.json.decode(tokens)).calendar or ""
end

local function abbreviated(token)
    return #token > 12 and token:sub(1, 12) .. "..." or token
end

local failures = 0
local function failed(what, err)
    show_error(what .. " failed", err)
    failures = failures + 1
end

-- 1. Log in through the dialogue: no refresh token yet, so the host opens the consent page.
local connection = kvggl.gglConnexion()
connection.ClientID = os.getenv("KVGGL_GOOGLE_CLIENT_ID") or "demo-client"
connection.ClientSecret = os.getenv("KVGGL_GOOGLE_CLIENT_SECRET") or "demo-secret"
print("1. login through the dialogue (calendar)")
local ok, err = kvggl.GglConnecte(connection, kvggl.gglServiceAgenda)
if not ok then
    failed("the login", err)
    error("no login: are the emulators running, and KVGGL_ROUTE and KVGGL_BROWSER set? " ..
          "(see the header of examples/google.lua)", 0)
end
print(("   logged in; refresh token %s"):format(abbreviated(refresh_token(connection))))

-- 2. A raw request: the Calendar API's calendar list, as the server writes it.
print("2. GglRequete: the calendar list")
local list
list, err = kvggl.GglRequete(connection, kvggl.gglServiceAgenda, CALENDAR_LIST .. "?maxResults=10")
if err then
    failed("the calendar list", err)
else
    local names = summaries(list)
    print(("   %d bytes of JSON, %d calendars:"):format(#list, #names))
    for _, name in ipairs(names) do print("     - " .. name) end
end

-- Errors are values: a service value that names no one service, and a path the API lacks.
print("   and two requests that fail on purpose, their errors shown with code and message:")
_, err = kvggl.GglRequete(connection, kvggl.gglServiceAgenda + kvggl.gglServiceContact,
                          CALENDAR_LIST)
show_error("a request for two services at once", err)
_, err = kvggl.GglRequete(connection, kvggl.gglServiceAgenda,
                          "https://www.googleapis.com/calendar/v3/no/such/path")
show_error("a request for a path the API lacks", err)

-- 3. Save the connection as text and rebuild it: the refresh tokens come back, the access
-- tokens do not (they are short-lived and never saved).
print("3. the connection saved and restored")
local saved = kvggl.check(kvggl.serialize(connection))
local restored = kvggl.check(kvggl.deserialize("gglConnexion", saved))
print(("   saved in %d bytes; restored refresh token %s, %s"):format(
    #saved, abbreviated(refresh_token(restored)),
    refresh_token(restored) == refresh_token(connection) and "the same" or "DIFFERENT"))
if refresh_token(restored) ~= refresh_token(connection) then failures = failures + 1 end

-- 4. The restored connection logs in silently, from its refresh token: no dialogue.
print("4. silent login from the restored refresh token")
ok, err = kvggl.GglConnecte(restored, kvggl.gglServiceAgenda)
if not ok then
    failed("the silent login", err)
else
    local primary
    primary, err = kvggl.GglRequete(restored, kvggl.gglServiceAgenda, CALENDAR_LIST .. "/primary")
    if err then
        failed("the primary calendar", err)
    else
        print(("   logged in; primary calendar: %s"):format(
            kvggl.check(kvggl.json.decode(primary)).summary or "?"))
    end
end

if failures > 0 then error(("the tour ended with %d failure(s)"):format(failures), 0) end
print("the tour went through")
