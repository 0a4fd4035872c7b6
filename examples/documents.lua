-- A tour of Drive files: the starred spreadsheets of the folders called "Projets", a PDF sent,
-- found again, written back to disk and compared, then deleted.
--
-- Against the local emulators, as examples/google.lua says (KVGGL_ROUTE, KVGGL_BROWSER):
--   ./kvggl run examples/documents.lua
local kvggl = require "kvggl"

local c = kvggl.gglConnexion()
c.ClientID = os.getenv("KVGGL_GOOGLE_CLIENT_ID") or "demo-client"
c.ClientSecret = os.getenv("KVGGL_GOOGLE_CLIENT_SECRET") or "demo-secret"
kvggl.check(kvggl.GglConnecte(c, kvggl.gglServiceDocument))

print("1. GglListeDocument: the starred spreadsheets of the folders called Projets")
local sheets = kvggl.check(kvggl.GglListeDocument(c, kvggl.gglDocumentTableur + kvggl.gglDocumentSuivi,
                                                  "Projets"))
for _, d in ipairs(sheets) do
    print(("   %s (%s), changed %04d-%02d-%02d"):format(d.Titre, d.TypeMIME, d.DateMiseAJour.year,
                                                     d.DateMiseAJour.month, d.DateMiseAJour.day))
end

print("2. GglEnvoieDocument: a small PDF")
local dir = os.tmpname()
os.remove(dir)
os.execute("mkdir -p '" .. dir .. "'")
local pdf = "%PDF-1.4\n1 0 obj << /Type /Catalog >> endobj\n%%EOF\n"
local f = assert(io.open(dir .. "/Bilan.pdf", "wb"))
f:write(pdf)
f:close()
kvggl.check(kvggl.GglEnvoieDocument(c, dir .. "/Bilan.pdf"))

print("3. found again by a query, written to disk, compared")
local found = kvggl.check(kvggl.GglListeDocument(c, "title = 'Bilan.pdf'"))
print(("   %d file(s) titled Bilan.pdf"):format(#found))
kvggl.check(kvggl.GglRecupereDocument(c, found[1], dir .. "/copy/Bilan.pdf"))
local back = assert(io.open(dir .. "/copy/Bilan.pdf", "rb")):read("a")
print("   the same bytes: " .. tostring(back == pdf))
assert(back == pdf, "the bytes differ")

print("4. GglSupprime")
kvggl.check(kvggl.GglSupprime(c, found[1]))
print(("   %d file(s) titled Bilan.pdf now"):format(#kvggl.check(kvggl.GglListeDocument(c, "title = 'Bilan.pdf'"))))
os.execute("rm -rf '" .. dir .. "'")
