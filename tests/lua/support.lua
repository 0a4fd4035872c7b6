-- Helpers of the Lua tests: each test script loads this file from its own folder.
local M = {}

-- Raises unless fn(...) raises an error whose text holds `fragment` (plain text).
function M.raises(fragment, fn, ...)
    local ok, err = pcall(fn, ...)
    if ok then error(("expected an error with %q, got none"):format(fragment), 2) end
    local text = tostring(err)
    if not text:find(fragment, 1, true) then
        error(("expected an error with %q, got %q"):format(fragment, text), 2)
    end
    return err
end

function M.eq(got, expected, what)
    if got ~= expected then
        error(("%s: expected %s, got %s"):format(what or "value", tostring(expected),
                                                 tostring(got)), 2)
    end
end

function M.near(got, expected, what)
    if type(got) ~= "number" or math.abs(got - expected) > 1e-9 then
        error(("%s: expected %s, got %s"):format(what or "value", tostring(expected),
                                                 tostring(got)), 2)
    end
end

-- The error table a failed call returned, checked for its code.
function M.failed(code, value, err, what)
    if err == nil then error((what or "call") .. ": expected error " .. code .. ", got none", 2) end
    if err.code ~= code then
        error(("%s: expected error %d, got %s"):format(what or "call", code, tostring(err)), 2)
    end
    return value
end

-- The latitudes of a collection of points, in order, as text.
function M.latitudes(collection)
    local t = {}
    for _, p in ipairs(collection) do t[#t + 1] = tostring(p.Latitude) end
    return table.concat(t, ",")
end

function M.collect()
    collectgarbage()
    collectgarbage()
end

return M
