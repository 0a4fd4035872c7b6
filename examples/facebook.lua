-- A tour of Facebook sessions: a session opened for a page through the login dialogue, the
-- user's name and picture, a post on the page's feed, and the session closed.
--
-- Against the local emulators, as examples/google.lua says (KVGGL_ROUTE, KVGGL_BROWSER):
--   ./kvggl run examples/facebook.lua
-- The application is the emulators' demo application; against Facebook itself, give yours in
-- KVGGL_FACEBOOK_APP_ID and KVGGL_FACEBOOK_APP_SECRET, and leave KVGGL_ROUTE unset.
--
-- Saved sessions: a host runtime without a login dialogue (KVGGL_PRODUCT_CODE other than 1)
-- opens no dialogue; it finds sessions that were saved in the host's store (KVGGL_STORE) under
-- the application, page and permissions, and serves them without asking anyone. The runtime
-- with the dialogue keeps nothing there.
local kvggl = require "kvggl"

local GRAPH = "https://graph.facebook.com"
local PAGE = os.getenv("KVGGL_FACEBOOK_PAGE") or "1029384756"

local session = kvggl.fbSession()
session.AppID = os.getenv("KVGGL_FACEBOOK_APP_ID") or "demo-client"
session.AppSecret = os.getenv("KVGGL_FACEBOOK_APP_SECRET") or "demo-secret"
session.Permission = {kvggl.fbInfoProfil, kvggl.fbEmail}
session.PageID = PAGE

print("1. FBOuvreSession: the dialogue, then the long-term and the page's tokens")
kvggl.check(kvggl.FBOuvreSession(session))
print("   state: " .. kvggl.FBEtatSession(session) .. " (1: connected)")

print("2. FBRecupereInformationUtilisateur: who speaks, and the picture's bytes")
print("   name: " .. kvggl.check(kvggl.FBRecupereInformationUtilisateur(session, kvggl.fbNom)))
local picture = kvggl.check(kvggl.FBRecupereInformationUtilisateur(session, kvggl.fbImage))
print(("   picture: %d bytes, %s"):format(#picture, picture:sub(2, 4)))

print("3. FBRequete: a post on the page's feed, then the feed")
local posted = kvggl.check(kvggl.FBRequete(session, GRAPH .. "/" .. PAGE .. "/feed",
                                           kvggl.fbRequetePOST, "message=Hello from kvggl"))
print("   posted: " .. kvggl.check(kvggl.json.decode(posted)).id)
local feed = kvggl.check(kvggl.json.decode(kvggl.check(kvggl.FBRequete(session, GRAPH .. "/" ..
                                                                                 PAGE .. "/feed"))))
print(("   the feed holds %d post(s), the last: %q"):format(#feed.data, feed.data[1].message))

print("4. A Graph error reaches the script with Graph's own code and message")
local _, err = kvggl.FBRequete(session, GRAPH .. "/999/feed")
print(("   error %d: %s"):format(err.code, (err.message:gsub("\r?\n", " / "):sub(1, 110))))

print("5. FBFermeSession")
kvggl.FBFermeSession(session)
print("   state: " .. kvggl.FBEtatSession(session) .. " (2: not connected)")
