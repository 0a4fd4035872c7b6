-- Prints the vocabulary the component's tables declare, as the host reads them: functions
-- with their syntaxes, constants, types with their properties and collections. Names given as
-- arguments keep only what contains one of them (regardless of case).
-- Run with: ./kvggl describe [NAME...]
local kvggl = require "kvggl"

local filters = {}
for _, a in ipairs(arg or {}) do filters[#filters + 1] = a:lower() end
local function shown(name)
    if #filters == 0 then return true end
    for _, f in ipairs(filters) do
        if name:lower():find(f, 1, true) then return true end
    end
    return false
end
local function mark(handled) return handled and "" or "   (no handler)" end

local d = kvggl.describe()
local status = kvggl.status()
print(("component %s: %d functions, %d constants, %d types"):format(
    status.component, #d.functions, #d.constants, #d.types))
if status.refusal then print("the library refused the host: " .. tostring(status.refusal)) end

print(("\nfunctions (%d)"):format(#d.functions))
for _, f in ipairs(d.functions) do
    if shown(f.name) then
        for i, s in ipairs(f.syntaxes) do
            local signature
            if s.result == "" then
                signature = ("(%d values, no signature)"):format(s.count)
            else
                signature = ("%s (%s)"):format(s.result, table.concat(s.parameters, ", "))
            end
            local head = i == 1 and ("%-42s [%d]"):format(f.name, f.number) or ""
            print(("  %-48s %s%s"):format(head, signature, mark(s.handled)))
        end
    end
end

print(("\nconstants (%d)"):format(#d.constants))
for _, k in ipairs(d.constants) do
    if shown(k.name) then
        local value = type(k.value) == "string" and ("%q"):format(k.value) or tostring(k.value)
        print(("  %-28s = %s"):format(k.name, value))
    end
end

print(("\ntypes (%d)"):format(#d.types))
for _, t in ipairs(d.types) do
    if shown(t.name) then
        print(("  %s [%d]%s"):format(t.name, t.number, mark(t.handled)))
        for _, p in ipairs(t.properties) do
            print(("      %-28s %-26s %-2s%s%s"):format(p.name, p.type, p.access,
                                                     p.compat and "  compat" or "",
                                                     mark(p.handled)))
        end
        for _, c in ipairs(t.collections) do
            print(("      collection %s of %s%s%s"):format(c.name, c.type,
                                                       c.compat and "  compat" or "",
                                                       mark(c.handled)))
        end
    end
end

print(("\ndeclared without a class (%d): %s"):format(#d.declared, table.concat(d.declared, ", ")))
