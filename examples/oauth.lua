-- A token from any OAuth 2 provider with AuthIdentifie: the provider described by an
-- OAuth2Paramètres object, the login dialogue, a call to the provider's /userinfo with the
-- token, and the token saved and restored as an application keeps it between runs.
--
-- Against the local emulators, as for examples/google.lua:
--   terminal 1:  ./kvggl emulators --port 0 --auto-approve
--   terminal 2:  export KVGGL_ROUTE='*=127.0.0.1:PORT'
--                export KVGGL_BROWSER='curl -s -L -o /dev/null'
--                ./kvggl run examples/oauth.lua
-- The provider is the emulators' generic one, oauth.provider.test. Against a provider of your
-- own, set KVGGL_OAUTH_AUTH, KVGGL_OAUTH_TOKEN, KVGGL_OAUTH_USERINFO, KVGGL_OAUTH_CLIENT_ID
-- and KVGGL_OAUTH_CLIENT_SECRET, and leave KVGGL_ROUTE unset. /userinfo is fetched with curl.
local kvggl = require "kvggl"

local PROVIDER = "https://oauth.provider.test"
local USERINFO = os.getenv("KVGGL_OAUTH_USERINFO") or PROVIDER .. "/userinfo"

local function show_error(what, err)
    print(("   %s: error %d: %s"):format(what, err.code, (err.message:gsub("\r?\n", " / "))))
end

local function abbreviated(text)
    return #text > 12 and text:sub(1, 12) .. "..." or text
end

-- GET with the bearer token; routed to the emulators the way the host routes (KVGGL_ROUTE).
local function get_with_token(url, token)
    local port = (os.getenv("KVGGL_ROUTE") or ""):match("^%*=127%.0%.0%.1:(%d+)$")
    local host, path = url:match("^https?://([^/]+)(.*)$")
    local command = port
        and ("curl -s -H 'Host: %s' -H 'Authorization: Bearer %s' 'http://127.0.0.1:%s%s'"):format(
            host, token, port, path)
        or ("curl -s -H 'Authorization: Bearer %s' '%s'"):format(token, url)
    local pipe = assert(io.popen(command))
    local body = pipe:read("a")
    pipe:close()
    return body
end

local failures = 0

-- 1. The provider, as the script describes it, and the token through the dialogue.
local p = kvggl.OAuth2Parametres()
p.ClientID = os.getenv("KVGGL_OAUTH_CLIENT_ID") or "demo-client"
p.ClientSecret = os.getenv("KVGGL_OAUTH_CLIENT_SECRET") or "demo-secret"
p.URLAuth = os.getenv("KVGGL_OAUTH_AUTH") or PROVIDER .. "/authorize"
p.URLToken = os.getenv("KVGGL_OAUTH_TOKEN") or PROVIDER .. "/token"
p.Scope = "openid"
print("1. AuthIdentifie: a token through the login dialogue")
local token, err = kvggl.AuthIdentifie(p)
if err then
    show_error("AuthIdentifie", err)
    error("no token: are the emulators running, and KVGGL_ROUTE and KVGGL_BROWSER set? " ..
          "(see the header of examples/oauth.lua)", 0)
end
print(("   Valide %s, access token %s, answer of %d bytes"):format(
    tostring(token.Valide), abbreviated(token.Valeur), #token.ReponseServeur))

-- 2. The token opens the provider's resources.
print("2. /userinfo with the token")
local info = get_with_token(USERINFO, token.Valeur)
local profile = kvggl.json.decode(info)
local email = type(profile) == "table" and profile.email
if email then
    print("   signed in as " .. email)
else
    print("   no e-mail in the answer: " .. info)
    failures = failures + 1
end

-- 3. Saved as text and restored: the same token, ready for the next run.
print("3. the token saved and restored")
local saved = kvggl.check(kvggl.serialize(token))
local restored = kvggl.check(kvggl.deserialize("AuthToken", saved))
local same = restored.Valeur == token.Valeur and restored.Valide
print(("   saved in %d bytes; restored token %s"):format(#saved, same and "the same" or "DIFFERENT"))
if not same then failures = failures + 1 end

-- 4. A failure is a value too: the object comes back, without a token.
print("4. a provider address that does not parse")
p.URLAuth = "oauth.provider.test/authorize"
local none
none, err = kvggl.AuthIdentifie(p)
show_error("AuthIdentifie", err)
print(("   the token object is still there: Valide %s"):format(tostring(none.Valide)))

if failures > 0 then error(("the tour ended with %d failure(s)"):format(failures), 0) end
print("the tour went through")
