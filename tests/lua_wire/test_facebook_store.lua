-- Facebook sessions in the kind of host runtime without a login dialogue: a connection saved
-- in the host's store (SQLite) serves silently in a fresh host, another key is not connected,
-- opening a session is refused (600055, or 600057 when the host's option forbids it) with
-- nothing on the wire, and closing removes the record, the others written back.
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local KEY = "KV_GGL_ACCOUNTS"
local TOKEN = "EAAB-demo-user-token" -- seeded for the demo user, as another runtime saved it
local store = os.tmpname()
W.native.store(store, KEY, "demo-client;" .. TOKEN .. ";email,public_profile;\r\n" ..
                           "\r\nunreadable\r\n") -- an empty piece, a record with one field
W.native.setenv("KVGGL_PRODUCT_CODE", "2")
W.native.setenv("KVGGL_OPTIONS", "0x200")
W.native.setenv("KVGGL_STORE", store)
W.control("POST", "/reset") -- the seeded token, whatever earlier scripts expired
local kvggl = require "kvggl"

local s = kvggl.fbSession()
s.AppID, s.AppSecret = W.CLIENT_ID, W.CLIENT_SECRET
s.Permission = {kvggl.fbEmail, kvggl.fbInfoProfil}
local mark = W.mark()
W.eq(kvggl.FBEtatSession(s), 1, "connected from the store, in a fresh host")
W.eq(kvggl.check(kvggl.FBRecupereInformationUtilisateur(s, kvggl.fbNom)), "Demo User", "the name")
W.eq(kvggl.check(kvggl.FBRecupereInformationUtilisateur(s, "id")), "108765432109876543210", "the id")
local log = W.log(mark)
W.eq(W.shape(log), "GET graph.facebook.com /me\nGET graph.facebook.com /me", "no dialogue")
W.eq(W.header(log[1], "Authorization"), "Bearer " .. TOKEN, "the saved token")

local other = kvggl.fbSession()
other.AppID = W.CLIENT_ID
other.Permission = {kvggl.fbEmail}
W.eq(kvggl.FBEtatSession(other), 2, "other permissions: another key, not connected")
mark = W.mark()
local ok, err = kvggl.FBOuvreSession(other)
W.eq(ok, false, "the option forbids opening")
W.failed(600057, err, "the option's error")
local _, err2 = kvggl.FBRequete(other, "https://graph.facebook.com/me")
W.failed(600056, err2, "no session for that key")
W.eq(#W.log(mark), 0, "nothing on the wire")

kvggl.FBFermeSession(s)
W.eq(kvggl.FBEtatSession(s), 2, "closed")
-- A record reads whatever fields it has: the short one stays, written back whole.
W.eq(W.native.store(store, KEY), "unreadable;;;\r\n", "closing removed the session's record")
os.remove(store)
