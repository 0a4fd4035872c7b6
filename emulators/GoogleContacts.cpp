#include "GoogleContacts.h"

#include <pugixml.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <sstream>

#include "Emulator.h"
#include "Form.h"
#include "GoogleAccounts.h"
#include "Request.h"
#include "Response.h"
#include "Text.h"
#include "TokenStore.h"

namespace {

const std::initializer_list<std::string_view> s_tabScopes = {
    "https://www.google.com/m8/feeds/", "https://www.google.com/m8/feeds",
    "http://www.google.com/m8/feeds/"};

constexpr std::string_view s_svPrefix = "/m8/feeds/";
constexpr std::string_view s_svAtom = "application/atom+xml; charset=UTF-8";
constexpr std::string_view s_svNamespaces =
    " xmlns='http://www.w3.org/2005/Atom' xmlns:openSearch='http://a9.com/-/spec/opensearchrss/1.0/'"
    " xmlns:gContact='http://schemas.google.com/contact/2008'"
    " xmlns:batch='http://schemas.google.com/gdata/batch' xmlns:gd='http://schemas.google.com/g/2005'";
constexpr std::string_view s_svDeclaration = "<?xml version='1.0' encoding='UTF-8'?>";
constexpr long long s_nFirstVersion = 1732000000000000;

std::string s_sNow() {
    const std::time_t t = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm tm{};
    gmtime_r(&t, &tm);
    char sz[32];
    std::strftime(sz, sizeof sz, "%Y-%m-%dT%H:%M:%S.000Z", &tm);
    return sz;
}

// Text in XML: the escapes of the pages serve, every one of them valid in a document.
std::string s_sEscape(std::string_view sv) { return CText::s_sHtmlEscape(sv); }

// The GData error document.
void s_WriteError(STResponse& res, int nStatus, std::string_view svCode, std::string_view svReason) {
    res.SetBody(nStatus, "application/vnd.google.gdata.error+xml",
                "<errors xmlns='http://schemas.google.com/g/2005'><error><domain>GData</domain><code>" +
                    std::string(svCode) + "</code><internalReason>" + s_sEscape(svReason) +
                    "</internalReason></error></errors>");
}

std::string_view s_svLocal(std::string_view svName) {
    const size_t n = svName.find(':');
    return n == std::string_view::npos ? svName : svName.substr(n + 1);
}

// What q finds: the texts and the addresses, in lower case.
void s_AddSearch(const pugi::xml_node& node, std::string& s) {
    for (const pugi::xml_attribute& a : node.attributes())
        if (s_svLocal(a.name()) == "address" || s_svLocal(a.name()) == "fullName")
            s.append(CText::s_sLower(a.value())).append(" ");
    for (const pugi::xml_node& child : node.children()) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            s.append(CText::s_sLower(child.value())).append(" ");
        else if (child.type() == pugi::node_element)
            s_AddSearch(child, s);
    }
}

struct STPath {
    std::string sKind, sUser, sId, sVersion;
    bool bValid = false;
};

// kind/user/full[/id[/version]] after the prefix.
STPath s_Path(std::string_view svPath) {
    STPath p;
    if (svPath.substr(0, s_svPrefix.size()) != s_svPrefix)
        return p;
    std::vector<std::string> tab;
    std::string_view sv = svPath.substr(s_svPrefix.size());
    for (size_t n; (n = sv.find('/')) != std::string_view::npos; sv.remove_prefix(n + 1))
        tab.emplace_back(sv.substr(0, n));
    tab.emplace_back(sv);
    if (tab.size() < 3 || tab.size() > 5 || (tab[0] != "contacts" && tab[0] != "groups") ||
        tab[2] != "full")
        return p;
    p.sKind = tab[0];
    p.sUser = CForm::s_oDecode(tab[1], CForm::eLenient).value_or(tab[1]);
    p.sId = tab.size() > 3 ? tab[3] : "";
    p.sVersion = tab.size() > 4 ? tab[4] : "";
    p.bValid = tab.size() == 3 || !p.sId.empty();
    return p;
}

} // namespace

std::unique_ptr<IService> CGoogleContacts::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CGoogleContacts>(emulator);
}

bool CGoogleContacts::s_bReadEntry(std::string_view svXml, STEntry& e) {
    pugi::xml_document doc;
    if (!doc.load_buffer(svXml.data(), svXml.size(), pugi::parse_default, pugi::encoding_utf8))
        return false;
    pugi::xml_node root = doc.document_element();
    if (s_svLocal(root.name()) != "entry")
        return false;
    e.tabElements.clear();
    e.sSearch.clear();
    e.tabGroups.clear();
    for (const pugi::xml_node& child : root.children()) {
        if (child.type() != pugi::node_element)
            continue;
        const std::string_view svName = child.name();
        const std::string_view svRel = child.attribute("rel").value();
        const bool bServer = svName == "id" || svName == "updated" || svName == "app:edited" ||
                             (svName == "category" && std::string_view(child.attribute("scheme").value()) ==
                                                          "http://schemas.google.com/g/2005#kind") ||
                             (svName == "link" && (svRel == "self" || svRel == "edit"));
        if (bServer)
            continue;
        if (s_svLocal(svName) == "groupMembershipInfo" &&
            std::string_view(child.attribute("deleted").value()) != "true")
            e.tabGroups.emplace_back(child.attribute("href").value());
        s_AddSearch(child, e.sSearch);
        std::ostringstream os;
        child.print(os, "", pugi::format_raw | pugi::format_attribute_single_quote);
        e.tabElements.push_back(os.str());
    }
    return true;
}

void CGoogleContacts::vReset() {
    std::lock_guard lock(m_mtx);
    m_mapUsers.clear();
    m_nVersion = s_nFirstVersion;
    m_nNextId = 0;
    const CJsonValue* pSection = m_Emulator.Seed().Document().pFind("contacts");
    if (!pSection)
        return;
    CFeeds& feeds = m_mapUsers[m_Emulator.Seed().DefaultUser().sEmail];
    for (const char* pszKind : {"groups", "contacts"}) {
        const CJsonValue* pList = pSection->pFind(pszKind);
        if (!pList || !pList->bIsArray())
            continue;
        for (const CJsonValue& seed : pList->Items()) {
            STEntry e;
            e.sId = seed.sText("id");
            e.sUpdated = seed.sText("updated", "2026-01-15T09:30:00.000Z");
            e.nVersion = nNextVersion();
            if (s_bReadEntry("<entry>" + seed.sText("xml") + "</entry>", e))
                feeds[pszKind].push_back(std::move(e));
        }
    }
}

std::string CGoogleContacts::sEntry(const std::string& sUser, std::string_view svKind,
                                    const STEntry& e, bool bDeclarations) const {
    const std::string sUserPath = CForm::s_sEncode(sUser);
    const std::string sFull = "https://www.google.com/m8/feeds/" + std::string(svKind) + "/" + sUserPath + "/full/" + e.sId;
    std::string s = bDeclarations ? std::string(s_svDeclaration) + "<entry" + std::string(s_svNamespaces) : "<entry";
    s += " gd:etag='&quot;" + std::to_string(e.nVersion) + "&quot;'>";
    s += "<id>http://www.google.com/m8/feeds/" + std::string(svKind) + "/" + sUserPath + "/base/" + e.sId + "</id>";
    s += "<updated>" + e.sUpdated + "</updated>";
    s += "<category scheme='http://schemas.google.com/g/2005#kind' term='http://schemas.google.com/contact/2008#";
    s += svKind == "groups" ? "group'/>" : "contact'/>";
    for (const std::string& sElement : e.tabElements)
        s += sElement;
    s += "<link rel='self' type='application/atom+xml' href='" + sFull + "'/>";
    s += "<link rel='edit' type='application/atom+xml' href='" + sFull + "/" + std::to_string(e.nVersion) + "'/>";
    return s + "</entry>";
}

void CGoogleContacts::List(const STRequest& req, const std::string& sUser, std::string_view svKind,
                           STResponse& res) {
    auto oQuery = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr);
    const CForm query = oQuery ? *oQuery : CForm();
    const long long nStart = query.bHas("start-index") ? CText::s_nDecimal(query.sValue("start-index"), 9) : 1;
    const long long nMax = query.bHas("max-results") ? CText::s_nDecimal(query.sValue("max-results"), 12) : ms_nDefaultPage;
    if (nStart < 1)
        return s_WriteError(res, 400, "invalid", "Invalid value for start-index parameter: " + query.sValue("start-index"));
    if (nMax < 0)
        return s_WriteError(res, 400, "invalid", "Invalid value for max-results parameter: " + query.sValue("max-results"));
    const std::string sGroup = query.sValue("group"), sMin = query.sValue("updated-min");
    std::vector<std::string> tabWords;
    std::istringstream words(CText::s_sLower(query.sValue("q")));
    for (std::string w; words >> w;)
        tabWords.push_back(w);

    std::vector<const STEntry*> tabFound;
    for (const STEntry& e : m_mapUsers[sUser][std::string(svKind)]) {
        if (!sGroup.empty() && std::find(e.tabGroups.begin(), e.tabGroups.end(), sGroup) == e.tabGroups.end())
            continue;
        if (!sMin.empty() && e.sUpdated < sMin)
            continue;
        if (std::any_of(tabWords.begin(), tabWords.end(),
                        [&](const std::string& w) { return e.sSearch.find(w) == std::string::npos; }))
            continue;
        tabFound.push_back(&e);
    }

    const std::string sUserPath = CForm::s_sEncode(sUser);
    const std::string sFeed = "https://www.google.com/m8/feeds/" + std::string(svKind) + "/" + sUserPath + "/full";
    const bool bGroups = svKind == "groups";
    const STUser* pUser = m_Emulator.Seed().pFindUser(sUser);
    const std::string sName = pUser ? pUser->sName : sUser;
    std::string s = std::string(s_svDeclaration) + "<feed" + std::string(s_svNamespaces) + ">";
    s += "<id>http://www.google.com/m8/feeds/" + std::string(svKind) + "/" + sUserPath + "/base</id>";
    s += "<updated>" + s_sNow() + "</updated>";
    s += "<category scheme='http://schemas.google.com/g/2005#kind' term='http://schemas.google.com/contact/2008#";
    s += bGroups ? "group'/>" : "contact'/>";
    s += "<title type='text'>" + s_sEscape(sName) + (bGroups ? "'s Contact Groups" : "'s Contacts") + "</title>";
    s += "<link rel='alternate' type='text/html' href='https://www.google.com/'/>";
    s += "<link rel='http://schemas.google.com/g/2005#feed' type='application/atom+xml' href='" + sFeed + "'/>";
    s += "<link rel='http://schemas.google.com/g/2005#post' type='application/atom+xml' href='" + sFeed + "'/>";
    s += "<link rel='self' type='application/atom+xml' href='" + sFeed + "?max-results=" + std::to_string(nMax) + "'/>";
    const size_t nFirst = static_cast<size_t>(nStart - 1);
    if (nFirst + static_cast<size_t>(nMax) < tabFound.size())
        s += "<link rel='next' type='application/atom+xml' href='" + sFeed + "?start-index=" +
             std::to_string(nStart + nMax) + "&amp;max-results=" + std::to_string(nMax) + "'/>";
    s += "<author><name>" + s_sEscape(sName) + "</name><email>" + s_sEscape(sUser) + "</email></author>";
    s += "<generator version='1.0' uri='http://www.google.com/m8/feeds'>Contacts</generator>";
    s += "<openSearch:totalResults>" + std::to_string(tabFound.size()) + "</openSearch:totalResults>";
    s += "<openSearch:startIndex>" + std::to_string(nStart) + "</openSearch:startIndex>";
    s += "<openSearch:itemsPerPage>" + std::to_string(nMax) + "</openSearch:itemsPerPage>";
    for (size_t i = nFirst; i < tabFound.size() && i - nFirst < static_cast<size_t>(nMax); ++i)
        s += sEntry(sUser, svKind, *tabFound[i], false);
    res.SetBody(200, s_svAtom, s + "</feed>");
}

void CGoogleContacts::vHandle(const STRequest& req, STResponse& res) {
    const STPath p = s_Path(req.sPath);
    if (!p.bValid)
        return s_WriteError(res, 404, "notFound", "No such feed.");
    STGrant g;
    if (!CGoogleAccounts::s_bAuthorise(m_Emulator, req, res, s_tabScopes, &g))
        return;
    if (p.sUser != "default" && !CText::s_bIEquals(p.sUser, g.sEmail))
        return s_WriteError(res, 403, "forbidden", "You do not have access to this user's contacts.");
    std::lock_guard lock(m_mtx);
    const std::string& sUser = g.sEmail;
    std::vector<STEntry>& tab = m_mapUsers[sUser][p.sKind];

    if (p.sId.empty()) {
        if (req.sMethod == "GET")
            return List(req, sUser, p.sKind, res);
        if (req.sMethod != "POST")
            return s_WriteError(res, 405, "methodNotAllowed", "Method not allowed.");
        STEntry e;
        if (!s_bReadEntry(req.sBody, e))
            return s_WriteError(res, 400, "invalid", "Entry is not valid Atom.");
        char sz[24];
        std::snprintf(sz, sizeof sz, "%llx", 0x5a3e00000000LL + ++m_nNextId);
        e.sId = sz;
        e.sUpdated = s_sNow();
        e.nVersion = nNextVersion();
        tab.push_back(std::move(e));
        return res.SetBody(201, s_svAtom, sEntry(sUser, p.sKind, tab.back(), true));
    }

    auto it = std::find_if(tab.begin(), tab.end(), [&](const STEntry& e) { return e.sId == p.sId; });
    if (it == tab.end())
        return s_WriteError(res, 404, "notFound", "Entry not found: " + p.sId);
    if (req.sMethod == "GET")
        return res.SetBody(200, s_svAtom, sEntry(sUser, p.sKind, *it, true));
    if (req.sMethod != "PUT" && req.sMethod != "DELETE")
        return s_WriteError(res, 405, "methodNotAllowed", "Method not allowed.");
    // A write names the version it read; an older one is told the current entry.
    if (!p.sVersion.empty() && p.sVersion != std::to_string(it->nVersion))
        return res.SetBody(409, s_svAtom, sEntry(sUser, p.sKind, *it, true));
    if (req.sMethod == "DELETE") {
        tab.erase(it);
        return res.SetBody(200, "text/html; charset=UTF-8", "");
    }
    STEntry e = *it;
    if (!s_bReadEntry(req.sBody, e))
        return s_WriteError(res, 400, "invalid", "Entry is not valid Atom.");
    e.sUpdated = s_sNow();
    e.nVersion = nNextVersion();
    *it = std::move(e);
    res.SetBody(200, s_svAtom, sEntry(sUser, p.sKind, *it, true));
}
