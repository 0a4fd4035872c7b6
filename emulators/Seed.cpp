#include "Seed.h"

#include <fstream>
#include <sstream>

#include "Text.h"

extern const char gszDefaultSeed[]; // generated from seed.json at build time

std::string_view CSeed::s_svDefault() {
    return gszDefaultSeed;
}

bool STClient::bKnownTo(std::string_view svProvider) const {
    if (tabProviders.empty())
        return true;
    for (const std::string& s : tabProviders)
        if (s == svProvider)
            return true;
    return false;
}

bool STClient::bAcceptsRedirect(std::string_view svUri) const {
    for (const std::string& s : tabRedirectUris)
        if (s == svUri)
            return true;
    return bLoopback && s_bIsLoopback(svUri);
}

bool STClient::s_bIsLoopback(std::string_view svUri) {
    if (!CText::s_bIStartsWith(svUri, "http://"))
        return false;
    if (svUri.find('#') != std::string_view::npos)
        return false; // no fragment in a redirect
    std::string_view sv = svUri.substr(7);
    bool bHost = false;
    for (std::string_view svHost : {"127.0.0.1", "localhost", "[::1]"}) {
        if (CText::s_bIStartsWith(sv, svHost)) {
            sv.remove_prefix(svHost.size());
            bHost = true;
            break;
        }
    }
    if (!bHost)
        return false;
    if (!sv.empty() && sv.front() == ':') {
        sv.remove_prefix(1);
        size_t nDigits = 0;
        while (nDigits < sv.size() && sv[nDigits] >= '0' && sv[nDigits] <= '9')
            ++nDigits;
        if (nDigits == 0 || nDigits > 5)
            return false;
        sv.remove_prefix(nDigits);
    }
    return sv.empty() || sv.front() == '/' || sv.front() == '?';
}

const STUser* CSeed::pFindUser(std::string_view svEmailOrId) const {
    for (const STUser& u : m_tabUsers)
        if (CText::s_bIEquals(u.sEmail, svEmailOrId) || u.sId == svEmailOrId)
            return &u;
    return nullptr;
}

const STClient* CSeed::pFindClient(std::string_view svProvider, std::string_view svId) const {
    for (const STClient& c : m_tabClients)
        if (c.sId == svId && c.bKnownTo(svProvider))
            return &c;
    return nullptr;
}

namespace {
// Reads a string member that must be there; the error names the place.
bool s_bRequire(const CJsonValue& v, const char* pszKey, const std::string& sWhere, std::string& s,
                std::string* pError) {
    const CJsonValue* p = v.pFind(pszKey);
    if (!p || !p->bIsString() || p->sGetString().empty()) {
        if (pError)
            *pError = sWhere + ": \"" + pszKey + "\" must be a non-empty string";
        return false;
    }
    s = p->sGetString();
    return true;
}

bool s_bStrings(const CJsonValue& v, const char* pszKey, const std::string& sWhere,
                std::vector<std::string>& tab, std::string* pError) {
    const CJsonValue* p = v.pFind(pszKey);
    if (!p)
        return true;
    bool bOk = p->bIsArray();
    for (const CJsonValue& x : p->Items()) {
        if (!x.bIsString())
            bOk = false;
        else
            tab.push_back(x.sGetString());
    }
    if (!bOk && pError)
        *pError = sWhere + ": \"" + pszKey + "\" must be an array of strings";
    return bOk;
}

// A string member that may be left out (s keeps its default then).
bool s_bOptional(const CJsonValue& v, const char* pszKey, const std::string& sWhere, std::string& s,
                 std::string* pError) {
    const CJsonValue* p = v.pFind(pszKey);
    if (!p)
        return true;
    if (!p->bIsString()) {
        if (pError)
            *pError = sWhere + ": \"" + pszKey + "\" must be a string";
        return false;
    }
    s = p->sGetString();
    return true;
}

bool s_bFlag(const CJsonValue& v, const char* pszKey, const std::string& sWhere, bool& b,
             std::string* pError) {
    const CJsonValue* p = v.pFind(pszKey);
    if (!p)
        return true;
    if (!p->bIsBool()) {
        if (pError)
            *pError = sWhere + ": \"" + pszKey + "\" must be true or false";
        return false;
    }
    b = p->bGetBool();
    return true;
}

const CJsonValue* s_pArray(const CJsonValue& doc, const char* pszKey, std::string* pError) {
    static const CJsonValue s_Empty = CJsonValue::s_Array();
    const CJsonValue* p = doc.pFind(pszKey);
    if (!p)
        return &s_Empty;
    if (!p->bIsArray()) {
        if (pError)
            *pError = std::string("\"") + pszKey + "\" must be an array";
        return nullptr;
    }
    return p;
}
} // namespace

// "calendar": {"calendars": [{"user", "id", "summary", ...}]}: each user's calendar list.
bool CSeed::s_bParseCalendars(const CJsonValue& doc, CSeed& seed, std::string* pError) {
    const CJsonValue* pSection = doc.pFind("calendar");
    if (!pSection)
        return true;
    if (!pSection->bIsObject()) {
        if (pError)
            *pError = "\"calendar\" must be an object";
        return false;
    }
    const CJsonValue* pList = pSection->pFind("calendars");
    if (!pList)
        return true;
    if (!pList->bIsArray()) {
        if (pError)
            *pError = "calendar: \"calendars\" must be an array";
        return false;
    }
    for (size_t i = 0; i < pList->Items().size(); ++i) {
        const CJsonValue& v = pList->Items()[i];
        std::string sWhere = "calendar.calendars[" + std::to_string(i) + "]";
        STSeedCalendar c;
        c.sTimeZone = "UTC";
        c.sAccessRole = "owner";
        c.sColorId = "14";
        c.sBackgroundColor = "#9fe1e7";
        c.sForegroundColor = "#000000";
        if (!v.bIsObject()) {
            if (pError)
                *pError = sWhere + " must be an object";
            return false;
        }
        if (!s_bRequire(v, "user", sWhere, c.sUser, pError) ||
            !s_bRequire(v, "id", sWhere, c.sId, pError) ||
            !s_bRequire(v, "summary", sWhere, c.sSummary, pError) ||
            !s_bOptional(v, "description", sWhere, c.sDescription, pError) ||
            !s_bOptional(v, "timeZone", sWhere, c.sTimeZone, pError) ||
            !s_bOptional(v, "accessRole", sWhere, c.sAccessRole, pError) ||
            !s_bOptional(v, "colorId", sWhere, c.sColorId, pError) ||
            !s_bOptional(v, "backgroundColor", sWhere, c.sBackgroundColor, pError) ||
            !s_bOptional(v, "foregroundColor", sWhere, c.sForegroundColor, pError) ||
            !s_bFlag(v, "primary", sWhere, c.bPrimary, pError) ||
            !s_bFlag(v, "hidden", sWhere, c.bHidden, pError) ||
            !s_bFlag(v, "selected", sWhere, c.bSelected, pError))
            return false;
        const STUser* pUser = seed.pFindUser(c.sUser);
        std::string sProblem;
        if (!pUser)
            sProblem = "unknown user " + c.sUser;
        else if (c.sAccessRole != "freeBusyReader" && c.sAccessRole != "reader" &&
                 c.sAccessRole != "writer" && c.sAccessRole != "owner")
            sProblem = "\"accessRole\" must be freeBusyReader, reader, writer or owner";
        for (const STSeedCalendar& other : seed.m_tabCalendars) {
            if (!sProblem.empty() || !pUser || other.sUser != pUser->sEmail)
                continue;
            if (other.sId == c.sId)
                sProblem = "the calendar " + c.sId + " is in " + c.sUser + "'s list twice";
            else if (other.bPrimary && c.bPrimary)
                sProblem = c.sUser + " has a primary calendar already";
        }
        if (!sProblem.empty()) {
            if (pError)
                *pError = sWhere + ": " + sProblem;
            return false;
        }
        c.sUser = pUser->sEmail; // as the tokens name the user
        seed.m_tabCalendars.push_back(std::move(c));
    }
    return true;
}

std::optional<CSeed> CSeed::s_oParse(std::string_view svText, std::string* pError) {
    std::string sParseError;
    auto oDoc = CJsonValue::s_oParse(svText, &sParseError);
    if (!oDoc) {
        if (pError)
            *pError = "the seed is not JSON: " + sParseError;
        return std::nullopt;
    }
    if (!oDoc->bIsObject()) {
        if (pError)
            *pError = "the seed must be a JSON object";
        return std::nullopt;
    }
    CSeed seed;
    seed.m_Document = std::move(*oDoc);
    const CJsonValue& doc = seed.m_Document;

    const CJsonValue* pUsers = s_pArray(doc, "users", pError);
    if (!pUsers)
        return std::nullopt;
    for (size_t i = 0; i < pUsers->Items().size(); ++i) {
        const CJsonValue& v = pUsers->Items()[i];
        std::string sWhere = "users[" + std::to_string(i) + "]";
        STUser u;
        if (!s_bRequire(v, "email", sWhere, u.sEmail, pError))
            return std::nullopt;
        u.sId = v.sText("id");
        u.sName = v.sText("name", u.sEmail);
        if (u.sId.empty())
            u.sId = std::to_string(100000000000000000ULL + i);
        if (seed.pFindUser(u.sEmail)) {
            if (pError)
                *pError = sWhere + ": the e-mail " + u.sEmail + " is seeded twice";
            return std::nullopt;
        }
        seed.m_tabUsers.push_back(std::move(u));
    }
    if (seed.m_tabUsers.empty()) {
        if (pError)
            *pError = "the seed needs at least one user in \"users\"";
        return std::nullopt;
    }

    const CJsonValue* pClients = s_pArray(doc, "clients", pError);
    if (!pClients)
        return std::nullopt;
    for (size_t i = 0; i < pClients->Items().size(); ++i) {
        const CJsonValue& v = pClients->Items()[i];
        std::string sWhere = "clients[" + std::to_string(i) + "]";
        STClient c;
        if (!s_bRequire(v, "client_id", sWhere, c.sId, pError) ||
            !s_bRequire(v, "client_secret", sWhere, c.sSecret, pError) ||
            !s_bStrings(v, "redirect_uris", sWhere, c.tabRedirectUris, pError) ||
            !s_bStrings(v, "providers", sWhere, c.tabProviders, pError))
            return std::nullopt;
        c.sName = v.sText("name", c.sId);
        const CJsonValue* pLoopback = v.pFind("loopback");
        c.bLoopback = pLoopback && pLoopback->bIsBool() && pLoopback->bGetBool();
        seed.m_tabClients.push_back(std::move(c));
    }

    const CJsonValue* pGrants = s_pArray(doc, "grants", pError);
    if (!pGrants)
        return std::nullopt;
    for (size_t i = 0; i < pGrants->Items().size(); ++i) {
        const CJsonValue& v = pGrants->Items()[i];
        std::string sWhere = "grants[" + std::to_string(i) + "]";
        STSeedGrant g;
        if (!s_bRequire(v, "provider", sWhere, g.sProvider, pError) ||
            !s_bRequire(v, "client_id", sWhere, g.sClientId, pError) ||
            !s_bRequire(v, "user", sWhere, g.sUser, pError))
            return std::nullopt;
        g.sScope = v.sText("scope");
        g.sAccessToken = v.sText("access_token");
        g.sRefreshToken = v.sText("refresh_token");
        if (!seed.pFindClient(g.sProvider, g.sClientId) || !seed.pFindUser(g.sUser)) {
            if (pError)
                *pError = sWhere + ": unknown client or user for provider " + g.sProvider;
            return std::nullopt;
        }
        seed.m_tabGrants.push_back(std::move(g));
    }

    if (!s_bParseCalendars(doc, seed, pError))
        return std::nullopt;

    if (const CJsonValue* p = doc.pFind("token_lifetime_s")) {
        if (!p->bIsInteger() || p->nGetInt() <= 0) {
            if (pError)
                *pError = "\"token_lifetime_s\" must be a positive integer";
            return std::nullopt;
        }
        seed.m_nTokenLifetime = p->nGetInt();
    }
    return seed;
}

std::optional<CSeed> CSeed::s_oLoadFile(const std::string& sPath, std::string* pError) {
    std::ifstream in(sPath, std::ios::binary);
    if (!in) {
        if (pError)
            *pError = "cannot read the seed file " + sPath;
        return std::nullopt;
    }
    std::ostringstream os;
    os << in.rdbuf();
    std::string sError;
    auto oSeed = s_oParse(os.str(), &sError);
    if (!oSeed && pError)
        *pError = sPath + ": " + sError;
    return oSeed;
}
