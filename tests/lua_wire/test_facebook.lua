-- Facebook sessions on the wire, in the host's default kind (the one with a login dialogue):
-- the dialogue, the code exchange, the long-term exchange and the page token, then Graph
-- requests with the page's token, and Graph's errors.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local PAGE = "1029384756"
local GRAPH = "https://graph.facebook.com"

local function session(k, permissions, page)
    local s = k.fbSession()
    s.AppID, s.AppSecret = W.CLIENT_ID, W.CLIENT_SECRET
    s.Permission = permissions
    if page then s.PageID = page end
    return s
end

-- ---- the dialogue kind ---------------------------------------------------------------------
local s = session(kvggl, {kvggl.fbEmail, kvggl.fbInfoProfil}, PAGE)
W.eq(kvggl.FBEtatSession(s), 2, "not connected before the login")
local mark = W.mark()
kvggl.check(kvggl.FBOuvreSession(s))
local log = W.log(mark)
W.eq(W.shape(log), "GET www.facebook.com /www.facebook.com/dialog/oauth\n" ..
                   "GET graph.facebook.com /oauth/access_token\n" ..
                   "GET graph.facebook.com /oauth/access_token\n" ..
                   "GET graph.facebook.com /me/accounts", "the road of a login with a page")
-- The permissions keep the comma the page's element leaves after them.
local redirect = W.match(log[1].target,
    "^/www%.facebook%.com/dialog/oauth%?client_id=demo%-client&display=popup" ..
    "&scope=email,public_profile,&redirect_uri=(http://127%.0%.0%.1:%d+/)&", "the dialogue address")
local code = W.match(log[2].target, "^/oauth/access_token%?client_id=demo%-client" ..
    "&client_secret=demo%-secret&code=([%w%-_]+)&redirect_uri=", "the code exchange")
W.eq(log[2].target:sub(-#redirect - 1), "=" .. redirect, "the redirect address, its slash kept")
assert(#code > 8, "a code from the dialogue")
local exchange = W.match(log[3].target, "^/oauth/access_token%?grant_type=fb_exchange_token" ..
    "&client_id=demo%-client&client_secret=demo%-secret&fb_exchange_token=(EAAB[%w%-_]+)$",
    "the long-term exchange")
W.eq(W.header(log[4], "Authorization"):sub(1, 7), "Bearer ", "the page list with the user's token")
assert(W.header(log[4], "Authorization") ~= "Bearer " .. exchange, "the long-term token is another")
W.eq(kvggl.FBEtatSession(s), 1, "connected")

-- Graph requests go with the page's token: the page posts to its own feed.
mark = W.mark()
local posted = kvggl.check(kvggl.FBRequete(s, GRAPH .. "/" .. PAGE .. "/feed", kvggl.fbRequetePOST,
                                           "message=Hello"))
W.eq(W.decode(posted).id, PAGE .. "_1", "the post's id")
local name = kvggl.check(kvggl.FBRecupereInformationUtilisateur(s, kvggl.fbNom))
W.eq(name, "Demo Page", "the page speaks for itself")
local picture = kvggl.check(kvggl.FBRecupereInformationUtilisateur(s, "PICTURE"))
W.eq(picture:sub(1, 8), "\137PNG\r\n\26\n", "the picture's bytes")
log = W.log(mark, "graph.facebook.com")
W.eq(W.shape(log), "POST graph.facebook.com /" .. PAGE .. "/feed\n" ..
                   "GET graph.facebook.com /me\nGET graph.facebook.com /me/picture", "the requests")
W.eq(log[1].body, "message=Hello", "the post's body")

-- A Graph error reaches the script with Graph's code and message.
local _, err = kvggl.FBRequete(s, GRAPH .. "/v2.8/999/feed")
W.failed(600005, err, "an unknown object")
W.contains(err.message, "Object with ID '999' does not exist", "Graph's message")
W.contains(err.message, '"code":100', "Graph's code")

-- This kind keeps nothing: its host's store (test_facebook_store.lua shows the other kind).
W.eq(kvggl.FBFermeSession(s), nil, "closing returns nothing")
W.eq(kvggl.FBEtatSession(s), 2, "closed")
