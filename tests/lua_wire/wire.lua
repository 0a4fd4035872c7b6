-- Helpers of the wire scripts: the emulators' control surface, their request log read from a
-- mark on (the fixture's log is shared, so a script looks only at what came after its mark),
-- faults, and the checks the scripts share. Each script loads it from its own folder:
--   local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")
local native = require "kvggl_wire"

local W = {native = native, port = native.port()}

W.CALENDAR_LIST = "https://www.googleapis.com/calendar/v3/users/me/calendarList"
W.CLIENT_ID, W.CLIENT_SECRET = "demo-client", "demo-secret"
W.SEEDED_REFRESH = "1//demo-refresh-token"
W.SEEDED_EMAIL = "demo.user@example.com"

-- JSON both ways through the module, the host's own parser: what a script itself would use.
-- The module is loaded at first use, so that a script sets the host's settings before.
function W.encode(value) return require("kvggl").json.encode(value) end
function W.decode(text)
    local kvggl = require "kvggl"
    return kvggl.check(kvggl.json.decode(text))
end

-- One request to the control surface of the emulators on `port` (the fixture's by default):
-- the status and the decoded answer.
function W.control(method, path, body, port)
    local status, text = native.http(port or W.port, method, "/_emulator" .. path,
                                     body and W.encode(body) or nil)
    local value = require("kvggl").json.decode(text)
    return status, value ~= nil and value or text
end

-- The header of a log entry, whatever the case of its name.
function W.header(entry, name)
    for k, v in pairs(entry.headers) do
        if k:lower() == name:lower() then return v end
    end
end

-- The number of entries in the log now: later entries are this script's.
function W.mark(port)
    local status, index = W.control("GET", "/", nil, port)
    assert(status == 200, "the emulators' index: " .. tostring(status))
    return index.requests
end

-- Whether an entry came from the host or from the browser command (curl): tests that share
-- the fixture without its lock send their own requests, and those do not count here.
local function ours(entry)
    local agent = W.header(entry, "User-Agent") or ""
    return agent:find("^kvggl%-host/") or agent:find("^curl/")
end

-- The entries after `mark` that the host and the browser sent, optionally of one host.
function W.log(mark, host, port)
    local status, all = W.control("GET", "/requests", nil, port)
    assert(status == 200, "the request log: " .. tostring(status))
    assert(#all >= mark, "the log was cleared under this script")
    local t = {}
    for i = mark + 1, #all do
        if ours(all[i]) and (not host or all[i].host == host) then t[#t + 1] = all[i] end
    end
    return t
end

-- The requests to `host` that f() made, as "METHOD target" lines, their bodies, then f's results.
function W.exchange(host, f)
    local mark = W.mark()
    local results = table.pack(f())
    local lines, bodies = {}, {}
    for _, e in ipairs(W.log(mark, host)) do
        lines[#lines + 1] = e.method .. " " .. e.target
        bodies[#bodies + 1] = e.body or ""
    end
    return table.concat(lines, "\n"), bodies, table.unpack(results, 1, results.n)
end

function W.fault(fault, port)
    local status, answer = W.control("POST", "/faults", fault, port)
    assert(status == 201, "fault refused: " .. W.encode(answer))
end

function W.expire(port)
    local status, answer = W.control("POST", "/expire", nil, port)
    assert(status == 200, "expire: " .. tostring(status))
    return answer.expired
end

-- "METHOD host path" of each entry, the query left out: the shape of an exchange at a glance.
function W.shape(entries)
    local t = {}
    for _, e in ipairs(entries) do
        t[#t + 1] = ("%s %s %s"):format(e.method, e.host, (e.target:gsub("%?.*", "")))
    end
    return table.concat(t, "\n")
end

function W.eq(got, expected, what)
    if got ~= expected then
        error(("%s:\n  expected %s\n  got      %s"):format(what or "value", tostring(expected),
                                                       tostring(got)), 2)
    end
end

-- Raises unless `text` matches the Lua pattern; returns the captures.
function W.match(text, pattern, what)
    local captures = table.pack(tostring(text):match(pattern))
    if captures[1] == nil then
        error(("%s:\n  %q\n  does not match %q"):format(what or "text", tostring(text), pattern), 2)
    end
    return table.unpack(captures, 1, captures.n)
end

function W.contains(text, fragment, what)
    if not tostring(text):find(fragment, 1, true) then
        error(("%s:\n  %q\n  does not hold %q"):format(what or "text", tostring(text), fragment), 2)
    end
end

-- The error table of a failed call, checked for its code.
function W.failed(code, err, what)
    if err == nil then error((what or "call") .. ": expected error " .. code .. ", got none", 2) end
    if err.code ~= code then
        error(("%s: expected error %d, got %s: %s"):format(what or "call", code, tostring(err.code),
                                                          tostring(err.message)), 2)
    end
    return err
end

function W.ok(err, what)
    if err ~= nil then
        error(("%s: unexpected error %s: %s"):format(what or "call", tostring(err.code),
                                                     tostring(err.message)), 2)
    end
end

-- A connection with the emulators' demo client, optionally restored with refresh tokens
-- (RefreshTokens is read-only to scripts: the save/rebuild path sets it).
function W.connection(kvggl, refresh_tokens, email)
    local properties = {ClientID = W.CLIENT_ID, ClientSecret = W.CLIENT_SECRET, Email = email}
    if refresh_tokens then properties.RefreshTokens = W.encode(refresh_tokens) end
    return kvggl.check(kvggl.deserialize("gglConnexion",
                                         W.encode({type = "gglConnexion", properties = properties})))
end

-- The body of the refresh grant, byte for byte: the values go as they stand, unencoded.
function W.refresh_body(token)
    return ("refresh_token=%s&client_id=%s&client_secret=%s&grant_type=refresh_token"):format(
        token, W.CLIENT_ID, W.CLIENT_SECRET)
end

-- Checks a token request of the authorization-code grant and returns its code and redirect.
function W.check_code_grant(entry, what)
    W.eq(entry.method .. " " .. entry.host .. " " .. entry.target,
         "POST accounts.google.com /o/oauth2/token", what .. ": the request line")
    W.eq(W.header(entry, "Content-Type"), "application/x-www-form-urlencoded", what .. ": type")
    W.eq(W.header(entry, "Authorization"), nil, what .. ": no bearer at the token endpoint")
    local code, redirect = W.match(entry.body,
        "^code=([^&]+)&client_id=demo%-client&client_secret=demo%-secret" ..
        "&redirect_uri=(http://127%.0%.0%.1:%d+/)&grant_type=authorization_code" ..
        "&code_verifier=[%w_-]+$", what .. ": body (the host's proof key last)")
    return code, redirect
end

-- Checks the browser's request for the consent page (the login dialogue opened the routed
-- address in its browser form) and returns the redirect address it carried.
function W.check_consent_request(entry, scope, email, what)
    W.eq(entry.method .. " " .. entry.host, "GET accounts.google.com", what .. ": request")
    local expected = "/accounts.google.com/o/oauth2/auth?response_type=code&client_id=demo-client" ..
                     "&scope=" .. scope .. "&include_granted_scopes=true" ..
                     (email and ("&login_hint=" .. email) or "") .. "&redirect_uri="
    W.eq(entry.target:sub(1, #expected), expected, what .. ": the login address")
    local redirect, state = W.match(entry.target:sub(#expected + 1),
                                    "^(http://127%.0%.0%.1:%d+/)&state=(%x+)" ..
                                    "&code_challenge=[%w_-]+&code_challenge_method=S256$",
                                    what .. ": its end, with the host's proof key")
    W.eq(#state, 32, what .. ": the state the host filled in")
    return redirect
end

-- Every service request carries "Authorization: Bearer TOKEN"; the tokens, in order.
function W.check_bearers(entries, what)
    local tokens = {}
    for i, e in ipairs(entries) do
        if e.host == "www.googleapis.com" then
            tokens[#tokens + 1] = W.match(W.header(e, "Authorization"), "^Bearer (ya29%.[%w%-_]+)$",
                                          ("%s: request %d (%s %s)"):format(what, i, e.method, e.target))
        end
    end
    return tokens
end

return W
