-- AuthIdentifie on the wire against the generic providers: the authorisation address and the
-- token request of each road, a token address whose query moves into the body (with PKCE
-- through it), a client id that needs encoding, the token saved and restored in another Lua
-- state, and what a script gets back when the provider, the answer or the saved text is bad.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local PROVIDER, TENANT = "https://oauth.provider.test", "https://login.tenant.test"
-- RFC 7636, appendix B.
local VERIFIER = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"
local CHALLENGE = "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"

local function parameters(t)
    local p = kvggl.OAuth2Parametres()
    p.ClientID, p.ClientSecret = t.id or W.CLIENT_ID, W.CLIENT_SECRET
    p.URLAuth, p.URLToken = t.auth, t.token or ""
    p.Scope, p.ParametresSupplementaires = t.scope or "", t.extra or ""
    return p
end

-- The consent request: the address as the component made it, then the host's redirect and
-- state, and the host's proof key when the address asked a code without one. Returns the
-- redirect address.
local HOST_PKCE = "&code_challenge=[%w_-]+&code_challenge_method=S256"
local function check_consent(entry, expected, what, host_pkce)
    W.eq(entry.method, "GET", what .. ": the browser")
    W.eq(entry.target:sub(1, #expected), expected, what .. ": the authorisation address")
    return W.match(entry.target:sub(#expected + 1),
                   "^&redirect_uri=(http://127%.0%.0%.1:%d+/)&state=%x+" .. (host_pkce and HOST_PKCE or "") .. "$",
                   what .. ": its end")
end

local roads = {
    {what = "code road", auth = PROVIDER .. "/authorize", token = PROVIDER .. "/token", scope = "openid",
     consent = "/oauth.provider.test/authorize?client_id=demo-client&scope=openid&response_type=code",
     exchange = "/token", prefix = "at%-", answer = '"id_token":', host_pkce = true},
    -- The loopback listener never sees a fragment: the token comes in the query.
    {what = "implicit road", auth = PROVIDER .. "/authorize", token = PROVIDER .. "/token",
     extra = "response_type=token&response_mode=query",
     consent = "/oauth.provider.test/authorize?client_id=demo-client&response_type=token&response_mode=query",
     prefix = "at%-", answer = "^GET /%?access_token=at%-"},
    -- The address's own query is merged; the token address's query goes in the body, and
    -- carries the PKCE verifier that answers the challenge of the extra parameters.
    {what = "tenant with PKCE", auth = TENANT .. "/oauth2/authorize?prompt=consent",
     token = TENANT .. "/oauth2/token?tenant=kvggl&code_verifier=" .. VERIFIER,
     extra = "code_challenge=" .. CHALLENGE .. "&code_challenge_method=S256",
     consent = "/login.tenant.test/oauth2/authorize?client_id=demo-client&response_type=code" ..
               "&code_challenge=" .. CHALLENGE .. "&code_challenge_method=S256&prompt=consent",
     exchange = "/oauth2/token", body_end = "&tenant=kvggl&code_verifier=" .. VERIFIER,
     prefix = "tat%-", answer = '"access_token":"tat%-'},
}
local saved_code_token
for _, road in ipairs(roads) do
    local mark = W.mark()
    local token, err = kvggl.AuthIdentifie(parameters(road))
    W.ok(err, road.what)
    W.eq(token.Valide, true, road.what .. ": Valide")
    W.match(token.Valeur, "^" .. road.prefix, road.what .. ": the access token")
    W.match(token.ReponseServeur, road.answer, road.what .. ": the provider's answer")

    local log = W.log(mark)
    W.eq(#log, road.exchange and 2 or 1, road.what .. ": the requests")
    local redirect = check_consent(log[1], road.consent, road.what, road.host_pkce)
    if road.exchange then
        local post = log[2]
        W.eq(post.method .. " " .. post.target, "POST " .. road.exchange, road.what .. ": no query left")
        W.eq(W.header(post, "Content-Type"), "application/x-www-form-urlencoded", road.what)
        local code = W.match(post.body, "^code=([^&]+)&client_id=demo%-client&client_secret=demo%-secret" ..
                                        "&redirect_uri=([^&]+)&grant_type=authorization_code(.*)$",
                             road.what .. ": the body")
        local _, sent_redirect, rest = post.body:match("^code=([^&]+).-redirect_uri=([^&]+)&grant_type=[%w_]+(.*)$")
        W.eq(sent_redirect, redirect, road.what .. ": the dialogue's redirect")
        if road.host_pkce then
            W.match(rest, "^&code_verifier=[%w_-]+$", road.what .. ": the host's verifier")
        else
            W.eq(rest, road.body_end or "", road.what .. ": the body's end")
        end
        assert(#code > 0)
    end
    if road.what == "code road" then saved_code_token = token end
    local again = kvggl.check(kvggl.deserialize("AuthToken", kvggl.check(kvggl.serialize(token))))
    W.eq(again.Valeur, token.Valeur, road.what .. ": saved and restored")
end

-- Saved, and restored in a state that knows only the text; the restored token opens the
-- provider's /userinfo.
local saved = kvggl.check(kvggl.serialize(saved_code_token))
local value, valid, answer = W.native.run([[
    local kvggl = require "kvggl"
    local t = kvggl.check(kvggl.deserialize("AuthToken", ...))
    return t.Valeur, tostring(t.Valide), t.ReponseServeur
]], saved)
W.eq(value, saved_code_token.Valeur, "restored: Valeur")
W.eq(valid, "true", "restored: Valide")
W.eq(answer, saved_code_token.ReponseServeur, "restored: ReponseServeur")
local status, info = W.native.http(W.port, "GET", "/oauth.provider.test/userinfo?access_token=" .. value)
W.eq(status, 200, "/userinfo with the restored token")
W.eq(W.decode(info).email, W.SEEDED_EMAIL, "/userinfo")

-- A saved text cut short or altered: a clear error, and the token as it was.
local form = W.decode(saved)
local bytes = form.properties.__Serialisation__
for _, bad in ipairs({bytes:sub(1, 24), bytes:sub(1, 16) .. "////" .. bytes:sub(21)}) do
    form.properties.__Serialisation__ = bad
    local t, e = kvggl.deserialize("AuthToken", W.encode(form))
    W.failed(600048, e, "a damaged saved token")
    W.eq(t == nil or not t.Valide, true, "nothing restored from it")
end
local empty = kvggl.check(kvggl.deserialize("AuthToken", kvggl.check(kvggl.serialize(kvggl.AuthToken()))))
W.eq(empty.Valide, false, "an empty token round-trips empty")

-- Failures: the script always gets a token object, Valide false, with the provider's answer
-- where there was one.
local failures = {
    -- Encoded in the address; the body takes the id as it stands, and the provider reads
    -- another client from it.
    {what = "a client id with & # @", id = "kv&g#l@demo", code = 600001, message = "invalid_",
     consent = "/oauth.provider.test/authorize?client_id=kv%26g%23l%40demo&response_type=code",
     shape = 2, answer = '"error":"invalid_'},
    {what = "a token answer that is not JSON", code = 600003, shape = 2, answer = "^<html>",
     fault = {status = 200, body = "<html>busy</html>", headers = {["Content-Type"] = "text/html"}}},
    {what = "a token answer without access token", code = 600003, shape = 2, answer = "^{}",
     fault = {status = 200, body = "{}"}},
    {what = "a refused exchange", code = 600001, message = "invalid_grant", shape = 2,
     answer = "invalid_grant",
     fault = {status = 400, body = '{"error":"invalid_grant","error_description":"no"}'}},
    {what = "an authorisation address that does not parse", auth = "oauth.provider.test/authorize",
     code = 600048, shape = 0},
}
for _, case in ipairs(failures) do
    if case.fault then
        case.fault.host, case.fault.method, case.fault.path, case.fault.count =
            "oauth.provider.test", "POST", "/token", 1
        W.fault(case.fault)
    end
    local mark = W.mark()
    local token, err = kvggl.AuthIdentifie(parameters({id = case.id, auth = case.auth or PROVIDER .. "/authorize",
                                                       token = PROVIDER .. "/token"}))
    W.failed(case.code, err, case.what)
    if case.message then W.contains(err.message, case.message, case.what) end
    W.eq(token.Valide, false, case.what .. ": Valide")
    if case.answer then W.match(token.ReponseServeur, case.answer, case.what .. ": the answer kept") end
    local log = W.log(mark)
    W.eq(#log, case.shape, case.what .. ": the requests")
    if case.consent then check_consent(log[1], case.consent, case.what, true) end
    if case.id then W.contains(log[2].body, "&client_id=" .. case.id .. "&", case.what .. ": the body") end
end
