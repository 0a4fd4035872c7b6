local kvggl = require "kvggl"
local W = dofile(arg[0]:match("(.*/)") .. "wire.lua")
local HOST = "www.google.com"
W.control("POST", "/reset")
local c = W.connection(kvggl, {contact = W.SEEDED_REFRESH})
kvggl.check(kvggl.GglConnecte(c, 2))
local function exchange(f)
    local mark = W.mark()
    local results = table.pack(f())
    local lines, bodies = {}, {}
    for _, e in ipairs(W.log(mark, HOST)) do
        lines[#lines + 1] = e.method .. " " .. e.target
        bodies[#bodies + 1] = e.body or ""
        print(e.status, W.header(e, "Content-Type"), W.header(e, "If-Match"), W.header(e, "GData-Version"))
    end
    return table.concat(lines, "\n"), bodies, table.unpack(results, 1, results.n)
end
for _, args in ipairs({{}, {"", 5, 10}, {"Collègues"}, {"https://x"}, {"", 0}}) do
  local l, b, list, err = exchange(function() return kvggl.GglListeContact(c, table.unpack(args)) end)
  print(l, list and #list, err and err.code)
end
local l, b, list, err = exchange(function() return kvggl.GglListeContactParRequete(c, "q=nguy") end)
print(l, #list, list[1].Nom, list[1].Notes, #list[1].Email, list[1].Email[1].Adresse, list[1].Telephone[1].Numero, table.concat(list[1].Groupe, ","))
local d = list[1]
local groups = kvggl.check(kvggl.GglListeGroupeContact(c, d))
print(#groups, groups[1].Nom, groups[2].Nom)
local p = kvggl.gglTelephone()
p.Numero = "+33 6 00 00 00 01"
d.Telephone:add(p)
local l, b, ok, err = exchange(function() return kvggl.GglEcrit(c, d) end)
print(l, ok, err) print(b[1])
local n = kvggl.gglContact()
n.Nom = "Inès Caron"
local e1 = kvggl.gglEmail(); e1.Adresse = "ines@example.com"; n.Email:add(e1)
local a = kvggl.gglAdressePostale(); a.Valeur = "1 rue X\n75001 Paris"; n.Adresse:add(a)
local l, b, ok, err = exchange(function() return kvggl.GglEcrit(c, n) end)
print(l, ok, err, n.Identifiant) print(b[1])
local l, b, ok, err = exchange(function() return kvggl.GglSupprime(c, n) end)
print(l, ok, err)
