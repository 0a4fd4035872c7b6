-- Prints the vocabulary the component's tables declare, as the host reads them, with the
-- parameter names and meanings of the reference rows (component/frame/Reference.def).
--   describe            every function, constant and type
--   describe NAME...    a name given whole (regardless of case and accents): all that is known
--                       of it; otherwise every name that contains it. Exit status 1 when a NAME
--                       matches nothing.
-- Run with: ./kvggl describe [NAME...]
local kvggl = require "kvggl"
local found, reference = pcall(require, "kvggl_reference")
if not found then reference = {functions = {}, types = {}} end

-- The key names match by: small letters, accents taken off.
local plain = {["à"] = "a", ["â"] = "a", ["ä"] = "a", ["ç"] = "c", ["é"] = "e", ["è"] = "e",
               ["ê"] = "e", ["ë"] = "e", ["î"] = "i", ["ï"] = "i", ["ô"] = "o", ["ö"] = "o",
               ["ù"] = "u", ["û"] = "u", ["ü"] = "u"}
local function key(name)
    return (name:lower():gsub("\xC3[\x80-\xBF]", function(c)
        local small = c:byte(2) < 0xA0 and "\xC3" .. string.char(c:byte(2) + 0x20) or c
        return plain[small] or small
    end))
end

local d = kvggl.describe()
local status = kvggl.status()

-- What a function's syntax k (1-based) is: served, or why not.
local function state(f, k)
    if f.syntaxes[k].handled then return nil end
    local ref = reference.functions[f.name]
    if not ref then return "no handler" end
    return ref.unserved[k] and "registered without a handler" or "not built yet"
end

-- The state shared by all its syntaxes, or nil when they differ.
local function common_state(f)
    local first = state(f, 1)
    for k = 2, #f.syntaxes do
        if state(f, k) ~= first then return nil end
    end
    return first or "served"
end

local function signature(f, k, named)
    local s = f.syntaxes[k]
    local ref = reference.functions[f.name]
    local names = named and ref and ref.syntaxes and ref.syntaxes[k] or {}
    if s.result == "" then
        if #names > 0 then return ("(%s), no signature"):format(table.concat(names, ", ")) end
        return ("(%d values, no signature)"):format(s.count)
    end
    local parameters = {}
    for i, t in ipairs(s.parameters) do
        parameters[i] = names[i] and names[i] .. ": " .. t or t
    end
    return ("%s (%s)"):format(s.result, table.concat(parameters, ", "))
end

local function list_function(f)
    local whole = common_state(f)
    for k = 1, #f.syntaxes do
        local head = k == 1 and ("%-42s [%d]"):format(f.name, f.number) or ""
        local mark = whole and "" or state(f, k)
        if k == 1 and whole and whole ~= "served" then mark = whole end
        print(("  %-48s %s%s"):format(head, signature(f, k, false),
                                      mark and mark ~= "" and "   (" .. mark .. ")" or ""))
    end
end

local function list_type(t)
    local ref = reference.types[t.name]
    print(("  %s [%d]%s"):format(t.name, t.number, t.handled and "" or "   (no constructor)"))
    for _, p in ipairs(t.properties) do
        print(("      %-28s %-26s %-2s%s%s"):format(p.name, p.type, p.access,
                                                 p.compat and "  compat" or "",
                                                 p.handled and "" or "   (not built yet)"))
    end
    for _, c in ipairs(t.collections) do
        print(("      collection %s of %s%s%s"):format(c.name, c.type, c.compat and "  compat" or "",
                                                   c.handled and "" or "   (not built yet)"))
    end
    if ref then
        print("      " .. ref.summary)
        for _, p in ipairs(t.properties) do
            if ref.members[p.name] then print(("      %-14s %s"):format(p.name, ref.members[p.name])) end
        end
        for _, c in ipairs(t.collections) do
            if ref.members[c.name] then print(("      %-14s %s"):format(c.name, ref.members[c.name])) end
        end
        print(("      see docs/lua/%s.md"):format(ref.page))
    end
end

local function constant_text(k)
    return type(k.value) == "string" and ("%q"):format(k.value) or tostring(k.value)
end

-- All that is known of one function.
local function show_function(f)
    local ref = reference.functions[f.name] or {}
    print(("%s [function %d, %d row%s]: %s"):format(f.name, f.number, ref.rows or 1,
                                                   (ref.rows or 1) > 1 and "s" or "",
                                                   common_state(f) or "partly served"))
    if ref.summary then print("  " .. ref.summary) end
    print("  syntaxes:")
    for k = 1, #f.syntaxes do
        local mark = state(f, k)
        print(("    %s%s"):format(signature(f, k, true), mark and "   (" .. mark .. ")" or ""))
    end
    if ref.parameters then
        print("  parameters:")
        for _, p in ipairs(ref.parameters) do print(("    %-12s %s"):format(p[1], p[2])) end
    end
    if ref.result then print("  returns: " .. ref.result) end
    if ref.page then print(("  see docs/lua/%s.md"):format(ref.page)) end
end

local function whole(name, wanted)
    return key(name) == wanted
end

if #arg > 0 then
    local missing = {}
    for _, name in ipairs(arg) do
        local wanted, shown = key(name), false
        for _, f in ipairs(d.functions) do
            if whole(f.name, wanted) then show_function(f); shown = true end
        end
        for _, t in ipairs(d.types) do
            if whole(t.name, wanted) then print("type"); list_type(t); shown = true end
        end
        for _, k in ipairs(d.constants) do
            if whole(k.name, wanted) then
                print(("%s [constant %d] = %s"):format(k.name, k.number, constant_text(k)))
                shown = true
            end
        end
        if not shown then
            -- Not a whole name: every name that contains it.
            local function has(n) return key(n):find(wanted, 1, true) end
            for _, f in ipairs(d.functions) do
                if has(f.name) then list_function(f); shown = true end
            end
            for _, t in ipairs(d.types) do
                if has(t.name) then list_type(t); shown = true end
            end
            for _, k in ipairs(d.constants) do
                if has(k.name) then
                    print(("  %-28s = %s"):format(k.name, constant_text(k)))
                    shown = true
                end
            end
        end
        if not shown then missing[#missing + 1] = name end
    end
    for _, name in ipairs(missing) do
        io.stderr:write(("describe: no such name '%s'\n"):format(name))
    end
    os.exit(#missing == 0 and 0 or 1)
end

local rows = 0
for _, f in ipairs(d.functions) do rows = rows + ((reference.functions[f.name] or {}).rows or 1) end
print(("component %s: %d function rows (%d names), %d constants, %d types"):format(
    status.component, rows, #d.functions, #d.constants, #d.types))
if status.refusal then print("the library refused the host: " .. tostring(status.refusal)) end

print(("\nfunctions (%d rows, %d names)"):format(rows, #d.functions))
for _, f in ipairs(d.functions) do list_function(f) end

print(("\nconstants (%d)"):format(#d.constants))
for _, k in ipairs(d.constants) do print(("  %-28s = %s"):format(k.name, constant_text(k))) end

print(("\ntypes (%d)"):format(#d.types))
for _, t in ipairs(d.types) do list_type(t) end

print(("\ndeclared without a class (%d): %s"):format(#d.declared, table.concat(d.declared, ", ")))
