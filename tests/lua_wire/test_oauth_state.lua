-- AuthIdentifie with a way back whose state was changed: the host's dialogue refuses the answer
-- before the component sees it (and says so when its wait ends), so no code is exchanged, and
-- the script gets a token object without a token.
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")
W.native.setenv("KVGGL_BROWSER", "sh '" .. W.native.dir .. "/tamper-browser.sh'")
-- The forged answer is refused and the dialogue waits on for the true one, which never comes.
W.native.setenv("KVGGL_LOGIN_WAIT", "1")
local kvggl = require "kvggl"

local p = kvggl.OAuth2Parametres()
p.ClientID, p.ClientSecret = W.CLIENT_ID, W.CLIENT_SECRET
p.URLAuth, p.URLToken = "https://oauth.provider.test/authorize", "https://oauth.provider.test/token"
local mark = W.mark()
local token, err = kvggl.AuthIdentifie(p)
W.failed(702005, err, "a forged state")
W.eq(token.Valide, false, "no token")
W.eq(W.shape(W.log(mark)), "GET oauth.provider.test /oauth.provider.test/authorize",
     "the consent page only: no token request")
