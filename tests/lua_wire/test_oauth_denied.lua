-- AuthIdentifie refused by the user: emulators of this script's own, whose consent page waits
-- for a click, and a browser that clicks Deny. The provider's error and description reach the
-- script with 600001, no token is asked for, and the script still gets a token object.
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")
local native = W.native

local own = native.emulators(false)
native.setenv("KVGGL_ROUTE", "*=127.0.0.1:" .. own.port)
native.setenv("KVGGL_BROWSER", "sh '" .. native.dir .. "/deny-browser.sh'")
local kvggl = require "kvggl"

local p = kvggl.OAuth2Parametres()
p.ClientID, p.ClientSecret = W.CLIENT_ID, W.CLIENT_SECRET
p.URLAuth, p.URLToken = "https://oauth.provider.test/authorize", "https://oauth.provider.test/token"
local token, err = kvggl.AuthIdentifie(p)
W.failed(600001, err, "denied")
W.contains(err.message, "access_denied: The resource owner denied the request.", "the provider's words")
W.eq(token.Valide, false, "no token")
W.eq(token.ReponseServeur, "", "no answer to keep")
W.eq(W.shape(W.log(0, nil, own.port)),
     "GET oauth.provider.test /oauth.provider.test/authorize\n" ..
     "POST oauth.provider.test /oauth.provider.test/authorize/decision",
     "the consent page and the refusal, and no token request")
own:stop()
