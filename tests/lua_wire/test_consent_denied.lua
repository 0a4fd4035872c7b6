-- A denied consent on the wire: emulators of this script's own, whose consent page waits for a
-- click, and a browser that clicks Deny. The login fails with 600001 and the provider's error,
-- and no token is asked for; so does AuthIdentifie at the generic provider, with the provider's
-- description, and the script still gets a token object.
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")
local native = W.native

local own = native.emulators(false)
-- The host reads its settings when it starts, at the module's loading.
native.setenv("KVGGL_ROUTE", "*=127.0.0.1:" .. own.port)
native.setenv("KVGGL_BROWSER", "sh '" .. native.dir .. "/deny-browser.sh'")
local kvggl = require "kvggl"

local c = W.connection(kvggl)
local fixture_mark = W.mark()
local ok, err = kvggl.GglConnecte(c)
W.eq(ok, false, "denied")
W.failed(600001, err, "denied")
W.contains(err.message, "access_denied", "the provider's error as the last error")

local log = W.log(0, nil, own.port)
W.eq(W.shape(log), "GET accounts.google.com /accounts.google.com/o/oauth2/auth\n" ..
                   "POST accounts.google.com /accounts.google.com/o/oauth2/approval",
     "the consent page and the refusal, and no token request")
W.check_consent_request(log[1], "https://www.googleapis.com/auth/calendar", nil, "denied")
W.contains(log[2].body, "decision=deny", "the Deny button")
W.eq(c.RefreshTokens, '{"none":"","calendar":"","contact":"","documentlist":"","staticmaps":"","picasa":""}',
     "no token kept")

-- A service call without a token asks again, is refused again, and sends nothing.
local result, err2 = kvggl.GglRequete(c, kvggl.gglServiceAgenda, W.CALENDAR_LIST)
W.failed(600001, err2, "the request that needed a login")
W.eq(result, "", "no text")
W.contains(err2.message, "access_denied", "the same cause")
log = W.log(2, nil, own.port)
W.eq(W.shape(log), "GET accounts.google.com /accounts.google.com/o/oauth2/auth\n" ..
                   "POST accounts.google.com /accounts.google.com/o/oauth2/approval",
     "a second dialogue, refused, and no service request")

local p = kvggl.OAuth2Parametres()
p.ClientID, p.ClientSecret = W.CLIENT_ID, W.CLIENT_SECRET
p.URLAuth, p.URLToken = "https://oauth.provider.test/authorize", "https://oauth.provider.test/token"
local token, err3 = kvggl.AuthIdentifie(p)
W.failed(600001, err3, "AuthIdentifie denied")
W.contains(err3.message, "access_denied: The resource owner denied the request.", "the provider's words")
W.eq(token.Valide, false, "no token")
W.eq(token.ReponseServeur, "", "no answer to keep")
W.eq(W.shape(W.log(4, nil, own.port)),
     "GET oauth.provider.test /oauth.provider.test/authorize\n" ..
     "POST oauth.provider.test /oauth.provider.test/authorize/decision",
     "AuthIdentifie: the consent page and the refusal, and no token request")
W.eq(#W.log(fixture_mark), 0, "the fixture's emulators saw nothing of this")
own:stop()
