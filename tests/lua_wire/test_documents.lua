-- Documents on the wire: the search expression of each mask, with and without folder and text,
-- character for character in the request's q; both upload requests byte for byte; a 308 as a
-- failure; a download into a folder that does not exist; a second delete reported.
local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")

local FILES = "/drive/v2/files"
local T = "mimeType='application/vnd.google-apps.document' or mimeType='application/vnd.oasis.opendocument.text' or mimeType='application/vnd.openxmlformats-officedocument.wordprocessingml.document' or mimeType='application/msword'"
local P = "mimeType='application/vnd.google-apps.presentation' or mimeType='application/vnd.oasis.opendocument.presentation' or mimeType='application/vnd.ms-powerpoint' or mimeType='application/vnd.openxmlformats-officedocument.presentationml.presentation'"
local S = "mimeType='application/vnd.google-apps.spreadsheet' or mimeType='application/vnd.oasis.opendocument.spreadsheet' or mimeType='application/vnd.ms-excel' or mimeType='application/vnd.openxmlformats-officedocument.spreadsheetml.sheet'"
local FOLDERS = "('0BfProjetsA' in parents or '0BfProjetsB' in parents or '0BfProjetsC' in parents)" ..
                " and (mimeType!='application/vnd.google-apps.folder' or title!='Projets')"

W.control("POST", "/reset")
local c = W.connection(kvggl, {documentlist = W.SEEDED_REFRESH})

-- The q of the last listing request, decoded as the server reads it.
local function q_of(entry)
    local raw = W.match(entry.target, "^" .. FILES .. "%?q=(.*)$", "a listing with q alone")
    return (raw:gsub("+", " "):gsub("%%(%x%x)", function(h) return string.char(tonumber(h, 16)) end))
end

local cases = {
    {{}, "trashed=false", 10},
    {{kvggl.gglDocumentTous}, "trashed=false", 10},
    {{1}, "((" .. T .. ")) and trashed=false", 2},
    {{3}, "((" .. T .. " or " .. S .. ")) and trashed=false", 4},
    {{5}, "((" .. T .. " or " .. P .. ")) and trashed=false", 3},
    {{7}, "((" .. T .. " or " .. P .. " or " .. S .. ")) and trashed=false", 5},
    {{8}, "(starred=true) and trashed=false", 3},
    {{9, "Projets"}, "((" .. T .. ") and starred=true and (" .. FOLDERS .. ")) and trashed=false", 1},
    {{0, "Projets"}, "((" .. FOLDERS .. ")) and trashed=false", 5},
    {{2, "Projets", "title contains 'Budget'"},
     "(((" .. S .. ") and (" .. FOLDERS .. ")) and (title contains 'Budget')) and trashed=false", 1},
    {{"starred=true and not mimeType contains 'x'"}, nil, nil},
    {{"title = 'Notes de réunion'"}, "(title = 'Notes de réunion') and trashed=false", 1},
}
for i, case in ipairs(cases) do
    local what = "listing " .. i
    local mark = W.mark()
    local docs, err = kvggl.GglListeDocument(c, table.unpack(case[1]))
    local log = W.log(mark)
    if case[2] then
        W.ok(err, what)
        W.eq(q_of(log[#log]), case[2], what .. ": q")
        W.eq(#docs, case[3], what .. ": documents")
        if type(case[1][2]) == "string" then
            W.eq(q_of(log[1]), "mimeType='application/vnd.google-apps.folder' and title='Projets'",
                 what .. ": the folder search first")
        end
    else
        -- A query the server cannot read comes back as its error.
        W.failed(600005, err, what)
        W.contains(err.message, "Invalid query", what .. ": Drive's word")
    end
end
local starred = kvggl.check(kvggl.GglListeDocument(c, 8))
W.eq(starred[1].Titre, "Budget 2026", "a document's title")
W.eq(starred[1].Suivi, true, "starred")
W.eq(starred[1].TypeMIME, "application/vnd.google-apps.spreadsheet", "its type")
W.eq(starred[1].DateMiseAJour.year, 2026, "its date")

-- An unknown folder: an empty array, and no listing after the folder search.
local mark = W.mark()
W.eq(#kvggl.check(kvggl.GglListeDocument(c, 1, "Nowhere")), 0, "unknown folder")
W.eq(#W.log(mark), 1, "the folder search alone")

-- Upload: both requests, byte for byte; an empty file too.
local dir = os.tmpname(); os.remove(dir); os.execute("mkdir -p " .. dir)
local pdf = "%PDF-1.4\n% kvggl\n%%EOF\n"
for _, case in ipairs({{"Bilan.pdf", pdf}, {"Vide.pdf", ""}}) do
    local name, bytes = case[1], case[2]
    local f = assert(io.open(dir .. "/" .. name, "wb")); f:write(bytes); f:close()
    mark = W.mark()
    kvggl.check(kvggl.GglEnvoieDocument(c, dir .. "/" .. name))
    local log = W.log(mark)
    W.eq(W.shape(log), "POST www.googleapis.com /upload/drive/v2/files\nPUT www.googleapis.com /upload/drive/v2/files", name)
    W.eq(log[1].target, "/upload/drive/v2/files?uploadType=resumable", name .. ": the session")
    W.eq(W.header(log[1], "Content-Type"), "application/json; charset=UTF-8", name .. ": JSON")
    W.eq(W.header(log[1], "X-Upload-Content-Type"), "application/pdf", name .. ": announced type")
    W.eq(W.header(log[1], "X-Upload-Content-Length"), tostring(#bytes), name .. ": announced length")
    W.eq(log[1].body, '{"title":"' .. name .. '"}', name .. ": the title")
    W.match(log[2].target, "^/upload/drive/v2/files%?uploadType=resumable&upload_id=[%w%-_]+$", name .. ": the session's address")
    W.eq(W.header(log[2], "Content-Type"), "application/pdf", name .. ": data type")
    W.eq(W.header(log[2], "Content-Length"), tostring(#bytes), name .. ": data length")
    W.eq(log[2].body or "", bytes, name .. ": the bytes")
end

-- A 308 on the data request is a failure.
W.fault({host = "www.googleapis.com", method = "PUT", path = "/upload/drive/v2/files", status = 308,
         headers = {Range = "bytes=0-9"}, count = 1})
local ok, err = kvggl.GglEnvoieDocument(c, dir .. "/Bilan.pdf")
W.eq(ok, false, "308")
W.failed(600005, err, "308")
-- Refused before the network: unknown type, missing file.
mark = W.mark()
local f = assert(io.open(dir .. "/notes.zzz", "wb")); f:write("x"); f:close()
W.failed(600009, select(2, kvggl.GglEnvoieDocument(c, dir .. "/notes.zzz")), "unknown type")
W.failed(600008, select(2, kvggl.GglEnvoieDocument(c, dir .. "/absent.pdf")), "missing file")
W.eq(#W.log(mark), 0, "nothing on the wire")

-- Find the upload, download it into a folder that does not exist yet, compare, delete twice.
local found = kvggl.check(kvggl.GglListeDocument(c, "title = 'Bilan.pdf'"))
W.eq(#found, 1, "the upload is listed")
local target = dir .. "/new/deeper/Bilan.pdf"
kvggl.check(kvggl.GglRecupereDocument(c, found[1], target))
local back = assert(io.open(target, "rb")):read("a")
W.eq(back, pdf, "the same bytes")
W.failed(600051, select(2, kvggl.GglRecupereDocument(c, starred[1], dir .. "/x")), "no download address")
kvggl.check(kvggl.GglSupprime(c, found[1]))
local again = W.failed(600005, select(2, kvggl.GglSupprime(c, found[1])), "second delete")
W.contains(again.message, "File not found", "Drive's word")
os.execute("rm -rf " .. dir)
