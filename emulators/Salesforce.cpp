#include "Salesforce.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <optional>
#include <pugixml.hpp>

#include "Emulator.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "Seed.h"
#include "Text.h"
#include "TokenStore.h"

namespace {

constexpr const char* s_pszLoginHost = "login.salesforce.com";
constexpr const char* s_pszSoapPath = "/services/Soap/u/15.0";
constexpr const char* s_pszOrgId = "00D500000000001AAA";
constexpr size_t s_nBatch = 500;
const CTokenStore::STStyle s_Style = {"", "00D500000000001!AQ", ""};

// The fields each kind of record has, those a create must give after a '*'. A field outside
// the list is INVALID_FIELD, as the real schema would have it.
struct STSchema {
    const char* pszType;
    const char* pszPrefix;
    std::vector<std::string> tabFields;
};
const std::vector<STSchema>& s_Schemas() {
    static const std::vector<STSchema> s = {
        {"Account", "001", {"LastModifiedDate", "*Name", "Phone", "Industry", "BillingCity", "Website", "AccountNumber",
                            "External_Id__c", "NumberOfEmployees", "CreatedDate"}},
        {"Contact", "003", {"LastModifiedDate", "*LastName", "FirstName", "Name", "Email", "Phone", "AccountId", "Title",
                            "CreatedDate"}},
        {"Lead", "00Q", {"LastModifiedDate", "*LastName", "*Company", "FirstName", "Name", "Email", "Status", "LeadSource",
                         "IsConverted", "ConvertedAccountId", "ConvertedContactId",
                         "ConvertedOpportunityId", "CreatedDate"}},
        {"Opportunity", "006", {"LastModifiedDate", "*Name", "*StageName", "*CloseDate", "Amount", "AccountId",
                                "CreatedDate"}},
        {"Case", "500", {"LastModifiedDate", "Subject", "Status", "Priority", "AccountId", "ContactId", "CreatedDate"}},
    };
    return s;
}
const STSchema* s_pSchema(std::string_view svType) {
    for (const STSchema& s : s_Schemas())
        if (CText::s_bIEquals(s.pszType, svType))
            return &s;
    return nullptr;
}
// The field's name as the schema spells it, or "" when the kind has no such field.
std::string s_sField(const STSchema& s, std::string_view svName) {
    if (CText::s_bIEquals(svName, "Id") || CText::s_bIEquals(svName, "IsDeleted"))
        return CText::s_bIEquals(svName, "Id") ? "Id" : "IsDeleted";
    for (const std::string& f : s.tabFields) {
        std::string_view sv = f;
        if (sv.front() == '*')
            sv.remove_prefix(1);
        if (CText::s_bIEquals(sv, svName))
            return std::string(sv);
    }
    return {};
}

// Text in XML: the escapes of the pages serve, every one of them valid in a document.
std::string s_sEscape(std::string_view sv) { return CText::s_sHtmlEscape(sv); }

std::string s_sEnvelope(std::string_view svBody) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><soapenv:Envelope "
           "xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" "
           "xmlns=\"urn:partner.soap.sforce.com\" "
           "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xmlns:sf=\"urn:sobject.partner.soap.sforce.com\"><soapenv:Body>" +
           std::string(svBody) + "</soapenv:Body></soapenv:Envelope>";
}

// A fault as the service writes it: the exception code in the faultcode and at the head of the
// faultstring, and the detail naming the kind of fault. A client fault (a malformed envelope)
// has the soapenv:Client code and no detail.
void s_Fault(STResponse& res, const std::string& sCode, const std::string& sMessage) {
    std::string sBody;
    if (sCode.rfind("soapenv:", 0) == 0) {
        sBody = "<soapenv:Fault><faultcode>" + sCode + "</faultcode><faultstring>" +
                s_sEscape(sMessage) + "</faultstring></soapenv:Fault>";
    } else {
        const char* pszKind = sCode == "INVALID_LOGIN"     ? "LoginFault"
                              : sCode == "MALFORMED_QUERY" ? "MalformedQueryFault"
                              : sCode == "MALFORMED_SEARCH" ? "MalformedSearchFault"
                              : sCode == "INVALID_FIELD"   ? "InvalidFieldFault"
                              : sCode == "INVALID_TYPE"    ? "InvalidSObjectFault"
                              : sCode == "INVALID_QUERY_LOCATOR" ? "InvalidQueryLocatorFault"
                                                                 : "UnexpectedErrorFault";
        sBody = "<soapenv:Fault><faultcode xmlns:sf=\"urn:fault.partner.soap.sforce.com\">sf:" +
                sCode + "</faultcode><faultstring>" + sCode + ": " + s_sEscape(sMessage) +
                "</faultstring><detail><sf:" + pszKind +
                " xmlns:sf=\"urn:fault.partner.soap.sforce.com\" xsi:type=\"sf:" + pszKind +
                "\"><sf:exceptionCode>" + sCode + "</sf:exceptionCode><sf:exceptionMessage>" +
                s_sEscape(sMessage) + "</sf:exceptionMessage></sf:" + pszKind + "></detail>" +
                "</soapenv:Fault>";
    }
    res.SetBody(500, "text/xml; charset=utf-8", s_sEnvelope(sBody));
}

const char* s_pszLocal(const char* psz) {
    const char* p = std::strchr(psz, ':');
    return p ? p + 1 : psz;
}
pugi::xml_node s_Child(const pugi::xml_node& n, const char* pszLocal) {
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element && std::strcmp(s_pszLocal(c.name()), pszLocal) == 0)
            return c;
    return {};
}
std::vector<pugi::xml_node> s_Children(const pugi::xml_node& n, const char* pszLocal) {
    std::vector<pugi::xml_node> tab;
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element && std::strcmp(s_pszLocal(c.name()), pszLocal) == 0)
            tab.push_back(c);
    return tab;
}

std::string s_sNow() {
    std::time_t t = std::time(nullptr);
    char sz[32];
    std::strftime(sz, sizeof sz, "%Y-%m-%dT%H:%M:%S.000Z", std::gmtime(&t));
    return sz;
}

std::string s_sError(const std::string& sCode, const std::string& sMessage,
                     const std::vector<std::string>& tabFields = {}) {
    std::string s = "<errors>";
    for (const std::string& f : tabFields)
        s += "<fields>" + f + "</fields>";
    return s + "<message>" + s_sEscape(sMessage) + "</message><statusCode>" + sCode +
           "</statusCode></errors>";
}

// ---- SOQL ------------------------------------------------------------------------------------
// SELECT f, Parent.f | COUNT() FROM Type [WHERE cond] [ORDER BY f [ASC|DESC], ...] [LIMIT n],
// cond made of f op value with = != < > <= >= LIKE IN (...), AND, OR, NOT and parentheses;
// values are quoted texts, numbers, true, false, null and dates.

struct STToken {
    enum { eWord, eText, eSymbol, eEnd } eKind;
    std::string s;
};

std::optional<std::vector<STToken>> s_oTokens(std::string_view sv) {
    std::vector<STToken> tab;
    size_t i = 0;
    while (i < sv.size()) {
        char c = sv[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
        } else if (c == '\'') {
            std::string s;
            for (++i; i < sv.size() && sv[i] != '\''; ++i) {
                if (sv[i] == '\\' && i + 1 < sv.size())
                    ++i;
                s += sv[i];
            }
            if (i >= sv.size())
                return std::nullopt;
            ++i;
            tab.push_back({STToken::eText, s});
        } else if (std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '-' ||
                   c == ':') {
            size_t j = i;
            while (j < sv.size() && (std::isalnum(static_cast<unsigned char>(sv[j])) || sv[j] == '_' ||
                                     sv[j] == '.' || sv[j] == '-' || sv[j] == ':' || sv[j] == '+'))
                ++j;
            tab.push_back({STToken::eWord, std::string(sv.substr(i, j - i))});
            i = j;
        } else if ((c == '!' || c == '<' || c == '>') && i + 1 < sv.size() && sv[i + 1] == '=') {
            tab.push_back({STToken::eSymbol, std::string(sv.substr(i, 2))});
            i += 2;
        } else if (std::strchr("=<>(),{}", c)) {
            tab.push_back({STToken::eSymbol, std::string(1, c)});
            ++i;
        } else {
            return std::nullopt;
        }
    }
    tab.push_back({STToken::eEnd, ""});
    return tab;
}

bool s_bLike(std::string_view svText, std::string_view svPattern) {
    if (svPattern.empty())
        return svText.empty();
    if (svPattern[0] == '%') {
        for (size_t i = 0; i <= svText.size(); ++i)
            if (s_bLike(svText.substr(i), svPattern.substr(1)))
                return true;
        return false;
    }
    if (svText.empty())
        return false;
    if (svPattern[0] != '_' && std::tolower(static_cast<unsigned char>(svPattern[0])) !=
                                   std::tolower(static_cast<unsigned char>(svText[0])))
        return false;
    return s_bLike(svText.substr(1), svPattern.substr(1));
}

int s_nCompare(const std::string& a, const std::string& b) {
    char* pa = nullptr;
    char* pb = nullptr;
    double da = std::strtod(a.c_str(), &pa);
    double db = std::strtod(b.c_str(), &pb);
    if (!a.empty() && !b.empty() && !*pa && !*pb)
        return da < db ? -1 : da > db ? 1 : 0;
    std::string la = CText::s_sLower(a), lb = CText::s_sLower(b);
    return la < lb ? -1 : la > lb ? 1 : 0;
}

using FnValue = std::function<std::optional<std::string>(const std::string&)>; // null: no value
using FnCond = std::function<bool(const FnValue&)>;

struct STParser {
    explicit STParser(const std::vector<STToken>& t) : tab(t) {}
    const std::vector<STToken>& tab;
    size_t i = 0;
    std::string sFault, sMessage;
    std::function<bool(const std::string&)> fnKnown; // a field path of the queried kind

    const STToken& Peek() const { return tab[i]; }
    bool bWord(const char* psz) const {
        return tab[i].eKind == STToken::eWord && CText::s_bIEquals(tab[i].s, psz);
    }
    bool bSymbol(const char* psz) const {
        return tab[i].eKind == STToken::eSymbol && tab[i].s == psz;
    }
    bool bFail(const std::string& s) {
        if (sFault.empty()) {
            sFault = "MALFORMED_QUERY";
            sMessage = s;
        }
        return false;
    }
    std::optional<std::string> oValue() {
        const STToken& t = tab[i];
        if (t.eKind == STToken::eText || t.eKind == STToken::eWord) {
            ++i;
            if (t.eKind == STToken::eWord && CText::s_bIEquals(t.s, "null"))
                return std::nullopt;
            return t.s;
        }
        bFail("unexpected token: '" + t.s + "'");
        return std::nullopt;
    }
    FnCond Or() {
        FnCond f = And();
        while (f && bWord("OR")) {
            ++i;
            FnCond g = And();
            if (!g)
                return nullptr;
            f = [f, g](const FnValue& v) { return f(v) || g(v); };
        }
        return f;
    }
    FnCond And() {
        FnCond f = Not();
        while (f && bWord("AND")) {
            ++i;
            FnCond g = Not();
            if (!g)
                return nullptr;
            f = [f, g](const FnValue& v) { return f(v) && g(v); };
        }
        return f;
    }
    FnCond Not() {
        if (bWord("NOT")) {
            ++i;
            FnCond f = Not();
            if (!f)
                return nullptr;
            return [f](const FnValue& v) { return !f(v); };
        }
        if (bSymbol("(")) {
            ++i;
            FnCond f = Or();
            if (!f || !bSymbol(")"))
                return bFail("expecting ')'"), nullptr;
            ++i;
            return f;
        }
        if (Peek().eKind != STToken::eWord)
            return bFail("unexpected token: '" + Peek().s + "'"), nullptr;
        std::string sField = tab[i++].s;
        if (!fnKnown(sField)) {
            sFault = "INVALID_FIELD";
            sMessage = "No such column '" + sField + "' on entity";
            return nullptr;
        }
        if (bWord("IN") || bWord("NOT")) {
            bool bNot = bWord("NOT");
            if (bNot && !(++i, bWord("IN")))
                return bFail("expecting IN"), nullptr;
            ++i;
            if (!bSymbol("("))
                return bFail("expecting '('"), nullptr;
            std::vector<std::string> tabList;
            do {
                ++i;
                std::optional<std::string> o = oValue();
                if (!sFault.empty())
                    return nullptr;
                tabList.push_back(o.value_or(""));
            } while (bSymbol(","));
            if (!bSymbol(")"))
                return bFail("expecting ')'"), nullptr;
            ++i;
            return [sField, tabList, bNot](const FnValue& v) {
                std::optional<std::string> o = v(sField);
                bool b = o && std::any_of(tabList.begin(), tabList.end(),
                                          [&](const std::string& s) { return s_nCompare(*o, s) == 0; });
                return b != bNot;
            };
        }
        std::string sOp;
        if (bWord("LIKE"))
            sOp = "LIKE";
        else if (Peek().eKind == STToken::eSymbol && std::string("= != < > <= >=").find(Peek().s) != std::string::npos)
            sOp = Peek().s;
        else
            return bFail("unexpected token: '" + Peek().s + "'"), nullptr;
        ++i;
        std::optional<std::string> oRight = oValue();
        if (!sFault.empty())
            return nullptr;
        return [sField, sOp, oRight](const FnValue& v) {
            std::optional<std::string> o = v(sField);
            if (!o || !oRight)
                return sOp == "=" ? !o && !oRight : sOp == "!=" ? (!o) != (!oRight) : false;
            if (sOp == "LIKE")
                return s_bLike(*o, *oRight);
            int n = s_nCompare(*o, *oRight);
            return sOp == "=" ? n == 0 : sOp == "!=" ? n != 0 : sOp == "<" ? n < 0 : sOp == ">" ? n > 0
                 : sOp == "<=" ? n <= 0 : n >= 0;
        };
    }
};

} // namespace

// ---- records ---------------------------------------------------------------------------------

const std::string* CSalesforce::STRecord::pField(std::string_view svName) const {
    for (const auto& [k, v] : tabFields)
        if (CText::s_bIEquals(k, svName))
            return &v;
    return nullptr;
}
void CSalesforce::STRecord::Set(const std::string& sName, const std::string& sValue) {
    bool bFound = false;
    for (auto& [k, v] : tabFields)
        if (CText::s_bIEquals(k, sName)) {
            v = sValue;
            bFound = true;
        }
    if (!bFound)
        tabFields.emplace_back(sName, sValue);
    // A person's Name is the service's own compound of the two names.
    if ((sType == "Contact" || sType == "Lead") && (sName == "FirstName" || sName == "LastName")) {
        const std::string* pFirst = pField("FirstName");
        const std::string* pLast = pField("LastName");
        Set("Name", (pFirst && !pFirst->empty() ? *pFirst + " " : "") + (pLast ? *pLast : ""));
    }
}

std::unique_ptr<IService> CSalesforce::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CSalesforce>(emulator);
}

std::string CSalesforce::sNewId(const std::string& sType) {
    const STSchema* p = s_pSchema(sType);
    std::string s = std::to_string(m_nNextId++);
    return std::string(p ? p->pszPrefix : "000") + "5" + std::string(11 - s.size(), '0') + s + "AAA";
}

CSalesforce::STRecord* CSalesforce::pFind(std::string_view svId) {
    // A 15-character id names the same record as its 18-character form.
    for (STRecord& r : m_tabRecords)
        if (!r.bPurged && r.sId.compare(0, svId.size(), svId) == 0 && svId.size() >= 15)
            return &r;
    return nullptr;
}

void CSalesforce::vReset() {
    std::lock_guard lock(m_mtx);
    m_tabRecords.clear();
    m_mapLocators.clear();
    m_nNextId = 1;
    m_nNextLocator = 1;
    // "salesforce": {"records": [{"type": "Account", "ref": "acme", "Name": ...}], "leads": N}
    // A field whose value is "@ref" takes the id of the seeded record of that ref.
    const CJsonValue* pSection = m_Emulator.Seed().Document().pFind("salesforce");
    if (!pSection)
        return;
    std::map<std::string, std::string> mapRefs;
    if (const CJsonValue* pRecords = pSection->pFind("records"); pRecords && pRecords->bIsArray()) {
        for (const CJsonValue& v : pRecords->Items()) {
            STRecord r;
            r.sType = v.sText("type");
            r.sId = sNewId(r.sType);
            for (const auto& [k, x] : v.Members()) {
                if (k == "type" || k == "ref")
                    continue;
                std::string s = x.bIsString() ? x.sGetString() : x.sSerialize();
                if (!s.empty() && s[0] == '@')
                    s = mapRefs[s.substr(1)];
                r.Set(k, s);
            }
            r.Set("CreatedDate", "2026-01-15T09:00:00.000Z");
            mapRefs[v.sText("ref")] = r.sId;
            m_tabRecords.push_back(std::move(r));
        }
    }
    const CJsonValue* pLeads = pSection->pFind("leads");
    for (long long n = 1, nMax = pLeads ? pLeads->nGetInt() : 0; n <= nMax; ++n) {
        STRecord r;
        r.sType = "Lead";
        r.sId = sNewId("Lead");
        std::string s = std::to_string(n);
        s = std::string(4 - std::min<size_t>(4, s.size()), '0') + s;
        r.tabFields = {{"LastName", "Lead " + s}, {"Name", "Lead " + s}, {"Company", "Company " + s},
                       {"Status", "Open - Not Contacted"}, {"IsConverted", "false"},
                       {"CreatedDate", "2026-02-01T10:00:00.000Z"}};
        m_tabRecords.push_back(std::move(r));
    }
}

// ---- the exchange ------------------------------------------------------------------------------

void CSalesforce::vHandle(const STRequest& req, STResponse& res) {
    const bool bLoginHost = req.sHost != ms_pszInstance;
    if (req.sMethod != "POST" || req.sPath.rfind(s_pszSoapPath, 0) != 0) {
        res.SetBody(404, "text/html; charset=utf-8", "<html><body>Not Found</body></html>");
        return;
    }
    // The service's parser is strict where pugixml is lenient: a bare '&' is a fatal error.
    for (size_t n = req.sBody.find('&'); n != std::string::npos; n = req.sBody.find('&', n + 1)) {
        std::string_view sv = std::string_view(req.sBody).substr(n);
        size_t nEnd = sv.find(';');
        std::string_view svRef = sv.substr(1, nEnd == std::string_view::npos ? 0 : nEnd - 1);
        if (svRef != "amp" && svRef != "lt" && svRef != "gt" && svRef != "quot" && svRef != "apos" &&
            (svRef.empty() || svRef[0] != '#'))
            return s_Fault(res, "soapenv:Client", "The entity name must immediately follow the '&' "
                                                  "in the entity reference.");
    }
    pugi::xml_document doc;
    pugi::xml_parse_result r = doc.load_buffer(req.sBody.data(), req.sBody.size());
    pugi::xml_node env = doc.document_element();
    if (!r || std::strcmp(s_pszLocal(env.name()), "Envelope") != 0)
        return s_Fault(res, "soapenv:Client",
                       std::string("Unable to parse the envelope: ") +
                           (r ? "its root is not an Envelope" : r.description()));
    pugi::xml_node op;
    for (pugi::xml_node c = s_Child(env, "Body").first_child(); c && !op; c = c.next_sibling())
        if (c.type() == pugi::node_element)
            op = c;
    if (!op)
        return s_Fault(res, "soapenv:Client", "No operation in the Body");
    const std::string sOp = s_pszLocal(op.name());
    if (sOp == "login")
        return bLoginHost ? Login(op, res)
                          : s_Fault(res, "UNKNOWN_EXCEPTION", "login goes to the login server");
    if (bLoginHost)
        return s_Fault(res, "INVALID_SESSION_ID", "Invalid Session ID found in SessionHeader: "
                                                  "Illegal Session");
    const std::string sSession =
        s_Child(s_Child(s_Child(env, "Header"), "SessionHeader"), "sessionId").text().get();
    STGrant g;
    if (sSession.empty() ||
        m_Emulator.Tokens().eCheckAccess(sSession, s_pszLoginHost, g) != CTokenStore::eValid)
        return s_Fault(res, "INVALID_SESSION_ID",
                       "Invalid Session ID found in SessionHeader: Illegal Session");
    if (sOp == "logout") {
        m_Emulator.Tokens().bRevoke(sSession);
        return res.SetBody(200, "text/xml; charset=utf-8", s_sEnvelope("<logoutResponse/>"));
    }
    Call(sOp, op, g.sEmail, res);
}

void CSalesforce::Login(const pugi::xml_node& op, STResponse& res) {
    const std::string sUser = s_Child(op, "username").text().get();
    const std::string sPassword = s_Child(op, "password").text().get();
    const CJsonValue* pSection = m_Emulator.Seed().Document().pFind("salesforce");
    const CJsonValue* pUsers = pSection ? pSection->pFind("users") : nullptr;
    const CJsonValue* pUser = nullptr;
    for (size_t i = 0; pUsers && i < pUsers->Items().size(); ++i)
        if (CText::s_bIEquals(pUsers->Items()[i].sText("username"), sUser) &&
            pUsers->Items()[i].sText("password") == sPassword)
            pUser = &pUsers->Items()[i];
    if (!pUser)
        return s_Fault(res, "INVALID_LOGIN", "Invalid username, password, security token; or "
                                             "user locked out.");
    STGrant g;
    g.sProvider = s_pszLoginHost;
    g.sClientId = "partner";
    g.sUserId = pUser->sText("userId");
    g.sEmail = sUser;
    const std::string sSession = m_Emulator.Tokens().NewTokens(g, false, s_Style).sAccessToken;
    const std::string sServer = std::string("https://") + ms_pszInstance;
    std::string s = "<loginResponse><result><metadataServerUrl>" + sServer +
                    "/services/Soap/m/15.0/" + s_pszOrgId + "</metadataServerUrl>"
                    "<passwordExpired>false</passwordExpired><sandbox>false</sandbox><serverUrl>" +
                    sServer + s_pszSoapPath + "/" + s_pszOrgId + "</serverUrl><sessionId>" +
                    sSession + "</sessionId><userId>" + g.sUserId + "</userId><userInfo>";
    s += "<accessibilityMode>false</accessibilityMode><currencySymbol>€</currencySymbol>"
         "<orgDefaultCurrencyIsoCode>EUR</orgDefaultCurrencyIsoCode>"
         "<orgHasPersonAccounts>false</orgHasPersonAccounts><organizationId>" +
         std::string(s_pszOrgId) + "</organizationId><organizationMultiCurrency>false"
         "</organizationMultiCurrency><organizationName>" + s_sEscape(pUser->sText("organizationName")) +
         "</organizationName><profileId>00e500000000001AAA</profileId><roleId xsi:nil=\"true\"/>"
         "<userDefaultCurrencyIsoCode xsi:nil=\"true\"/><userEmail>" + s_sEscape(sUser) +
         "</userEmail><userFullName>" + s_sEscape(pUser->sText("fullName")) + "</userFullName><userId>" +
         g.sUserId + "</userId><userLanguage>fr</userLanguage><userLocale>fr_FR</userLocale>"
         "<userName>" + s_sEscape(sUser) + "</userName><userTimeZone>Europe/Paris</userTimeZone>"
         "<userType>Standard</userType><userUiSkin>Theme3</userUiSkin>";
    s += "</userInfo></result></loginResponse>";
    res.SetBody(200, "text/xml; charset=utf-8", s_sEnvelope(s));
}

// ---- the calls of a session ------------------------------------------------------------------

namespace {

// A record as the partner interface writes it: its type, its Id twice when Id was selected
// (the service does so), then the fields asked for, a relationship as a nested sObject.
using FnLookup = std::function<const CSalesforce::STRecord*(const std::string&)>;
std::string s_sRecord(const CSalesforce::STRecord& r, const std::vector<std::string>& tabFields,
                      const char* pszElement, const FnLookup& fnFind) {
    std::string s = std::string("<") + pszElement + " xsi:type=\"sf:sObject\"><sf:type>" + r.sType +
                    "</sf:type>";
    bool bId = std::any_of(tabFields.begin(), tabFields.end(),
                           [](const std::string& f) { return CText::s_bIEquals(f, "Id"); });
    s += bId ? "<sf:Id>" + r.sId + "</sf:Id>" : "<sf:Id xsi:nil=\"true\"/>";
    std::vector<std::string> tabDone;
    for (const std::string& f : tabFields) {
        if (size_t nDot = f.find('.'); nDot != std::string::npos) {
            std::string sRel = f.substr(0, nDot);
            if (std::find(tabDone.begin(), tabDone.end(), sRel) != tabDone.end())
                continue;
            tabDone.push_back(sRel);
            std::vector<std::string> tabSub;
            for (const std::string& g : tabFields)
                if (g.size() > nDot && CText::s_bIStartsWith(g, sRel + "."))
                    tabSub.push_back(g.substr(nDot + 1));
            const std::string* pRef = r.pField(sRel + "Id");
            const CSalesforce::STRecord* pParent = pRef ? fnFind(*pRef) : nullptr;
            s += pParent ? s_sRecord(*pParent, tabSub, ("sf:" + sRel).c_str(), fnFind)
                         : "<sf:" + sRel + " xsi:nil=\"true\"/>";
            continue;
        }
        const std::string* p = CText::s_bIEquals(f, "Id") ? &r.sId : r.pField(f);
        if (CText::s_bIEquals(f, "IsDeleted"))
            s += std::string("<sf:IsDeleted>") + (r.bDeleted ? "true" : "false") + "</sf:IsDeleted>";
        else
            s += p ? "<sf:" + f + ">" + s_sEscape(*p) + "</sf:" + f + ">"
                   : "<sf:" + f + " xsi:nil=\"true\"/>";
    }
    return s + "</" + pszElement + ">";
}

} // namespace

void CSalesforce::Call(const std::string& sOp, const pugi::xml_node& op, const std::string& sUser,
                       STResponse& res) {
    std::lock_guard lock(m_mtx);
    std::string sCode, sMessage, sResult;
    auto fnFind = [this](const std::string& sId) -> const STRecord* {
        const STRecord* p = pFind(sId);
        return p && !p->bDeleted ? p : nullptr;
    };
    if (sOp == "query" || sOp == "queryAll") {
        sResult = sQuery(s_Child(op, "queryString").text().get(), sOp == "queryAll", sCode, sMessage);
    } else if (sOp == "queryMore") {
        sResult = sPage(s_Child(op, "queryLocator").text().get(), sCode, sMessage);
    } else if (sOp == "search") {
        sResult = sSearch(s_Child(op, "searchString").text().get(), sCode, sMessage);
    } else if (sOp == "retrieve") {
        const std::string sType = s_Child(op, "sObjectType").text().get();
        const STSchema* pSchema = s_pSchema(sType);
        if (!pSchema)
            return s_Fault(res, "INVALID_TYPE", "sObject type '" + sType + "' is not supported.");
        std::vector<std::string> tabFields;
        std::string sList = s_Child(op, "fieldList").text().get();
        for (size_t i = 0; i <= sList.size();) {
            size_t j = std::min(sList.find(',', i), sList.size());
            std::string f(CText::s_svTrim(std::string_view(sList).substr(i, j - i)));
            if (s_sField(*pSchema, f).empty())
                return s_Fault(res, "INVALID_FIELD", "No such column '" + f + "' on entity '" +
                                                         pSchema->pszType + "'");
            tabFields.push_back(s_sField(*pSchema, f));
            i = j + 1;
        }
        for (const pugi::xml_node& n : s_Children(op, "ids")) {
            const STRecord* p = fnFind(n.text().get());
            sResult += p && p->sType == pSchema->pszType ? s_sRecord(*p, tabFields, "result", fnFind)
                                                         : "<result xsi:nil=\"true\"/>";
        }
    } else if (sOp == "create" || sOp == "update" || sOp == "upsert") {
        sResult = sSave(op, sOp);
    } else if (sOp == "delete" || sOp == "undelete" || sOp == "emptyRecycleBin") {
        for (const pugi::xml_node& n : s_Children(op, "ids")) {
            const std::string sId = n.text().get();
            STRecord* p = pFind(sId);
            std::string sErr;
            if (!p)
                sErr = s_sError("INVALID_CROSS_REFERENCE_KEY", "invalid cross reference id");
            else if (sOp == "delete" && p->bDeleted)
                sErr = s_sError("ENTITY_IS_DELETED", "entity is deleted");
            else if (sOp != "delete" && !p->bDeleted)
                sErr = s_sError(sOp == "undelete" ? "UNDELETE_FAILED" : "INVALID_ID_FIELD",
                                "Entity is not in the recycle bin");
            if (sErr.empty()) {
                p->bDeleted = sOp == "delete";
                p->bPurged = sOp == "emptyRecycleBin";
                p->sDeletedDate = p->bDeleted ? s_sNow() : "";
                p->Set("LastModifiedDate", s_sNow());
            }
            sResult += "<result>" + sErr + "<id>" + (p ? p->sId : sId) + "</id><success>" +
                       (sErr.empty() ? "true" : "false") + "</success></result>";
        }
    } else if (sOp == "convertLead") {
        sResult = sConvert(op);
    } else if (sOp == "getDeleted" || sOp == "getUpdated") {
        if (!s_pSchema(s_Child(op, "sObjectType").text().get()))
            return s_Fault(res, "INVALID_TYPE", std::string("sObject type '") +
                                                    s_Child(op, "sObjectType").text().get() +
                                                    "' is not supported.");
        sResult = sChanges(op, sOp == "getDeleted");
    } else if (sOp == "merge") {
        sResult = sMerge(op);
    } else if (sOp == "process") {
        // Every record has an approval process here: a submission or a work item answers pending.
        for (const pugi::xml_node& n : s_Children(op, "actions")) {
            std::string sEntity = s_Child(n, "objectId").text().get();
            if (sEntity.empty())
                sEntity = s_Child(n, "workitemId").text().get();
            const bool bKnown = !sEntity.empty() && pFind(sEntity);
            const std::string sInstance = std::to_string(m_nNextLocator++);
            const std::string sWorkitem = std::to_string(m_nNextLocator++);
            sResult += "<result><actorIds>005500000000001AAA</actorIds>";
            sResult += bKnown ? "" : s_sError("INVALID_CROSS_REFERENCE_KEY", "invalid cross reference id");
            sResult += "<entityId>" + s_sEscape(sEntity) + "</entityId><instanceId>04g5000000000" +
                       sInstance + "AAA</instanceId><instanceStatus>" +
                       (bKnown ? "Pending" : "") + "</instanceStatus><newWorkitemIds>04i500000000" +
                       sWorkitem + "AAA</newWorkitemIds><success>" +
                       (bKnown ? "true" : "false") + "</success></result>";
        }
    } else if (sOp == "invalidateSessions") {
        for (const pugi::xml_node& n : s_Children(op, "sessionIds")) {
            bool b = m_Emulator.Tokens().bRevoke(n.text().get());
            sResult += std::string("<result>") +
                       (b ? "" : s_sError("INVALID_SESSION_ID", "invalid session id")) +
                       "<success>" + (b ? "true" : "false") + "</success></result>";
        }
    } else if (sOp == "getUserInfo") {
        sResult = "<result><userEmail>" + s_sEscape(sUser) + "</userEmail><userName>" +
                  s_sEscape(sUser) + "</userName></result>";
    } else {
        return s_Fault(res, "soapenv:Client",
                       "No operation available for request {urn:partner.soap.sforce.com}" + sOp);
    }
    if (!sCode.empty())
        return s_Fault(res, sCode, sMessage);
    res.SetBody(200, "text/xml; charset=utf-8",
                s_sEnvelope("<" + sOp + "Response>" + sResult + "</" + sOp + "Response>"));
}

// getDeleted and getUpdated: the records of the kind deleted, or changed, between the two
// dates (compared to the second: the zone is the service's).
std::string CSalesforce::sChanges(const pugi::xml_node& op, bool bDeleted) {
    const std::string sType = s_pSchema(s_Child(op, "sObjectType").text().get())->pszType;
    const std::string sFrom = std::string(s_Child(op, "startDate").text().get()).substr(0, 19);
    const std::string sTo = std::string(s_Child(op, "endDate").text().get()).substr(0, 19);
    std::string s = "<result>";
    for (const STRecord& r : m_tabRecords) {
        const std::string* pModified = r.pField("LastModifiedDate");
        const std::string sWhen = bDeleted ? r.sDeletedDate : pModified ? *pModified : "";
        if (r.sType != sType || r.bDeleted != bDeleted || sWhen.empty() ||
            sWhen.substr(0, 19) < sFrom || sWhen.substr(0, 19) > sTo)
            continue;
        s += bDeleted ? "<deletedRecords><deletedDate>" + sWhen + "</deletedDate><id>" + r.sId +
                            "</id></deletedRecords>"
                      : "<ids>" + r.sId + "</ids>";
    }
    if (bDeleted)
        s += "<earliestDateAvailable>2026-01-01T00:00:00.000Z</earliestDateAvailable>";
    return s + "<latestDateCovered>" + sTo + ".000Z</latestDateCovered></result>";
}

// merge: the master takes the fields given, the others are deleted and their related records
// follow the master.
std::string CSalesforce::sMerge(const pugi::xml_node& op) {
    std::string s;
    for (const pugi::xml_node& n : s_Children(op, "request")) {
        pugi::xml_node master = s_Child(n, "masterRecord");
        STRecord* pMaster = pFind(s_Child(master, "Id").text().get());
        std::vector<std::string> tabMerged;
        for (const pugi::xml_node& m : s_Children(n, "recordToMergeIds"))
            tabMerged.push_back(m.text().get());
        std::string sErr;
        if (!pMaster || pMaster->bDeleted)
            sErr = s_sError("INVALID_CROSS_REFERENCE_KEY", "invalid cross reference id");
        for (const std::string& sId : tabMerged) {
            const STRecord* p = pFind(sId);
            if (sErr.empty() && (!p || p->bDeleted || p->sType != pMaster->sType || p == pMaster))
                sErr = s_sError("INVALID_ID_FIELD", "invalid record to merge: " + sId);
        }
        std::string sRelated;
        if (sErr.empty()) {
            for (pugi::xml_node c = master.first_child(); c; c = c.next_sibling()) {
                std::string sName = s_pszLocal(c.name());
                if (c.type() == pugi::node_element && sName != "type" && sName != "Id")
                    pMaster->Set(sName, c.text().get());
            }
            const std::string sMasterId = pMaster->sId, sRef = pMaster->sType + "Id";
            for (const std::string& sId : tabMerged) {
                STRecord* p = pFind(sId);
                p->bDeleted = true;
                p->sDeletedDate = s_sNow();
                for (STRecord& r : m_tabRecords)
                    if (r.pField(sRef) && *r.pField(sRef) == p->sId) {
                        r.Set(sRef, sMasterId);
                        sRelated += "<updatedRelatedIds>" + r.sId + "</updatedRelatedIds>";
                    }
            }
        }
        s += "<result>" + sErr + (sErr.empty() ? "<id>" + pMaster->sId + "</id>" : "<id xsi:nil=\"true\"/>");
        for (const std::string& sId : sErr.empty() ? tabMerged : std::vector<std::string>())
            s += "<mergedRecordIds>" + sId + "</mergedRecordIds>";
        s += std::string("<success>") + (sErr.empty() ? "true" : "false") + "</success>" + sRelated +
             "</result>";
    }
    return s;
}

std::string CSalesforce::sQuery(const std::string& sSoql, bool bAll, std::string& sCode,
                                std::string& sMessage) {
    std::optional<std::vector<STToken>> oTokens = s_oTokens(sSoql);
    if (!oTokens) {
        sCode = "MALFORMED_QUERY";
        sMessage = "unexpected character in '" + sSoql + "'";
        return {};
    }
    STParser p(*oTokens);
    if (!p.bWord("SELECT")) {
        sCode = "MALFORMED_QUERY";
        sMessage = "unexpected token: '" + p.Peek().s + "'";
        return {};
    }
    ++p.i;
    std::vector<std::string> tabFields;
    bool bCount = false;
    if (p.bWord("COUNT") && (*oTokens)[p.i + 1].s == "(" && (*oTokens)[p.i + 2].s == ")") {
        bCount = true;
        p.i += 3;
    } else {
        for (;;) {
            if (p.Peek().eKind != STToken::eWord || p.bWord("FROM"))
                return p.bFail("unexpected token: '" + p.Peek().s + "'"), sCode = p.sFault,
                       sMessage = p.sMessage, std::string();
            tabFields.push_back(p.tab[p.i++].s);
            if (!p.bSymbol(","))
                break;
            ++p.i;
        }
    }
    if (!p.bWord("FROM") || p.tab[p.i + 1].eKind != STToken::eWord) {
        sCode = "MALFORMED_QUERY";
        sMessage = "unexpected token: '" + p.Peek().s + "'";
        return {};
    }
    const STSchema* pSchema = s_pSchema(p.tab[p.i + 1].s);
    if (!pSchema) {
        sCode = "INVALID_TYPE";
        sMessage = "sObject type '" + p.tab[p.i + 1].s + "' is not supported.";
        return {};
    }
    p.i += 2;
    // A path is a field of the kind, or Parent.field with a ParentId field and a parent kind.
    std::function<std::string(const STSchema&, const std::string&)> fnPath =
        [&](const STSchema& s, const std::string& sPath) -> std::string {
        size_t nDot = sPath.find('.');
        if (nDot == std::string::npos)
            return s_sField(s, sPath);
        std::string sRel = sPath.substr(0, nDot);
        const STSchema* pParent = s_pSchema(sRel);
        std::string sRef = s_sField(s, sRel + "Id");
        if (!pParent || sRef.empty())
            return {};
        std::string sRest = fnPath(*pParent, sPath.substr(nDot + 1));
        return sRest.empty() ? std::string() : std::string(pParent->pszType) + "." + sRest;
    };
    p.fnKnown = [&](const std::string& f) { return !fnPath(*pSchema, f).empty(); };
    for (std::string& f : tabFields) {
        std::string s = fnPath(*pSchema, f);
        if (s.empty()) {
            sCode = "INVALID_FIELD";
            sMessage = "No such column '" + f + "' on entity '" + pSchema->pszType + "'";
            return {};
        }
        f = s;
    }
    FnCond fnWhere = [](const FnValue&) { return true; };
    if (p.bWord("WHERE")) {
        ++p.i;
        fnWhere = p.Or();
        if (!fnWhere) {
            sCode = p.sFault;
            sMessage = p.sMessage;
            return {};
        }
    }
    std::vector<std::pair<std::string, bool>> tabOrder;
    if (p.bWord("ORDER")) {
        ++p.i;
        if (!p.bWord("BY"))
            return sCode = "MALFORMED_QUERY", sMessage = "expecting BY", std::string();
        do {
            ++p.i;
            std::string f = p.tab[p.i++].s;
            bool bDesc = p.bWord("DESC");
            if (bDesc || p.bWord("ASC"))
                ++p.i;
            tabOrder.emplace_back(f, bDesc);
        } while (p.bSymbol(","));
    }
    long long nLimit = -1;
    if (p.bWord("LIMIT")) {
        nLimit = std::atoll(p.tab[p.i + 1].s.c_str());
        p.i += 2;
    }
    if (p.Peek().eKind != STToken::eEnd) {
        sCode = "MALFORMED_QUERY";
        sMessage = "unexpected token: '" + p.Peek().s + "'";
        return {};
    }

    auto fnFind = [this](const std::string& sId) -> const STRecord* {
        const STRecord* q = pFind(sId);
        return q && !q->bDeleted ? q : nullptr;
    };
    std::vector<const STRecord*> tabHits;
    for (const STRecord& r : m_tabRecords) {
        if (r.bPurged || r.sType != pSchema->pszType || (r.bDeleted && !bAll))
            continue;
        FnValue fnValue = [&](const std::string& sPath) -> std::optional<std::string> {
            const STRecord* q = &r;
            std::string s = sPath;
            for (size_t nDot; q && (nDot = s.find('.')) != std::string::npos; s = s.substr(nDot + 1)) {
                const std::string* pRef = q->pField(s.substr(0, nDot) + "Id");
                q = pRef ? fnFind(*pRef) : nullptr;
            }
            if (!q)
                return std::nullopt;
            if (CText::s_bIEquals(s, "Id"))
                return q->sId;
            if (CText::s_bIEquals(s, "IsDeleted"))
                return std::string(q->bDeleted ? "true" : "false");
            const std::string* pv = q->pField(s);
            return pv ? std::optional<std::string>(*pv) : std::nullopt;
        };
        if (fnWhere(fnValue))
            tabHits.push_back(&r);
    }
    if (!tabOrder.empty())
        std::stable_sort(tabHits.begin(), tabHits.end(), [&](const STRecord* a, const STRecord* b) {
            for (const auto& [f, bDesc] : tabOrder) {
                const std::string* pa = CText::s_bIEquals(f, "Id") ? &a->sId : a->pField(f);
                const std::string* pb = CText::s_bIEquals(f, "Id") ? &b->sId : b->pField(f);
                int n = s_nCompare(pa ? *pa : "", pb ? *pb : "");
                if (n)
                    return bDesc ? n > 0 : n < 0;
            }
            return false;
        });
    if (nLimit >= 0 && tabHits.size() > static_cast<size_t>(nLimit))
        tabHits.resize(static_cast<size_t>(nLimit));
    if (bCount)
        return "<result xsi:type=\"QueryResult\"><done>true</done><queryLocator xsi:nil=\"true\"/>"
               "<size>" + std::to_string(tabHits.size()) + "</size></result>";
    std::vector<std::string> tabRendered;
    for (const STRecord* r : tabHits)
        tabRendered.push_back(s_sRecord(*r, tabFields, "records", fnFind));
    std::string sLocator = "01g500000000" + std::to_string(m_nNextLocator++) + "AAA";
    m_mapLocators[sLocator] = {std::move(tabRendered), 0};
    return sPage(sLocator, sCode, sMessage);
}

// The next batch of a query: 500 records, and a locator "<query>-<next offset>" while more remain.
std::string CSalesforce::sPage(const std::string& sLocator, std::string& sCode,
                               std::string& sMessage) {
    std::string sKey = sLocator.substr(0, sLocator.find('-'));
    size_t nFrom = sLocator.find('-') == std::string::npos
                       ? 0
                       : std::strtoull(sLocator.c_str() + sLocator.find('-') + 1, nullptr, 10);
    auto it = m_mapLocators.find(sKey);
    if (it == m_mapLocators.end() || nFrom > it->second.first.size()) {
        sCode = "INVALID_QUERY_LOCATOR";
        sMessage = "invalid query locator";
        return {};
    }
    const std::vector<std::string>& tab = it->second.first;
    size_t nTo = std::min(tab.size(), nFrom + s_nBatch);
    std::string s = "<result xsi:type=\"QueryResult\"><done>";
    s += nTo == tab.size() ? "true</done><queryLocator xsi:nil=\"true\"/>"
                           : "false</done><queryLocator>" + sKey + "-" + std::to_string(nTo) +
                                 "</queryLocator>";
    for (size_t i = nFrom; i < nTo; ++i)
        s += tab[i];
    return s + "<size>" + std::to_string(tab.size()) + "</size></result>";
}

// FIND {text} [IN ALL FIELDS] RETURNING Type[(f, ...)], ...: records holding the text in a field.
std::string CSalesforce::sSearch(const std::string& sSosl, std::string& sCode,
                                 std::string& sMessage) {
    size_t nOpen = sSosl.find('{'), nClose = sSosl.find('}');
    size_t nRet = CText::s_sLower(sSosl).find("returning");
    if (!CText::s_bIStartsWith(CText::s_svTrim(sSosl), "FIND") || nOpen == std::string::npos ||
        nClose == std::string::npos || nClose < nOpen || nRet == std::string::npos || nRet < nClose) {
        sCode = "MALFORMED_SEARCH";
        sMessage = "No search term found. The search term must be enclosed in braces.";
        return {};
    }
    std::string sTerm = sSosl.substr(nOpen + 1, nClose - nOpen - 1);
    std::string sPattern = "%" + sTerm + "%";
    std::replace(sPattern.begin(), sPattern.end(), '*', '%');
    std::optional<std::vector<STToken>> oTokens = s_oTokens(sSosl.substr(nRet + 9));
    if (!oTokens) {
        sCode = "MALFORMED_SEARCH";
        sMessage = "unexpected character";
        return {};
    }
    auto fnFind = [this](const std::string& sId) -> const STRecord* {
        const STRecord* q = pFind(sId);
        return q && !q->bDeleted ? q : nullptr;
    };
    std::string s = "<result>";
    const std::vector<STToken>& t = *oTokens;
    for (size_t i = 0; t[i].eKind == STToken::eWord;) {
        const STSchema* pSchema = s_pSchema(t[i].s);
        if (!pSchema) {
            sCode = "INVALID_TYPE";
            sMessage = "sObject type '" + t[i].s + "' is not supported.";
            return {};
        }
        ++i;
        std::vector<std::string> tabFields = {"Id"};
        if (t[i].s == "(") {
            tabFields.clear();
            for (++i; t[i].eKind == STToken::eWord; ++i) {
                tabFields.push_back(s_sField(*pSchema, t[i].s));
                if (tabFields.back().empty()) {
                    sCode = "INVALID_FIELD";
                    sMessage = "No such column '" + t[i].s + "' on entity '" + pSchema->pszType + "'";
                    return {};
                }
                if (t[i + 1].s == ",")
                    ++i;
            }
            if (t[i].s != ")") {
                sCode = "MALFORMED_SEARCH";
                sMessage = "expecting ')'";
                return {};
            }
            ++i;
        }
        for (const STRecord& r : m_tabRecords) {
            if (r.bDeleted || r.bPurged || r.sType != pSchema->pszType)
                continue;
            if (std::any_of(r.tabFields.begin(), r.tabFields.end(),
                            [&](const auto& f) { return s_bLike(f.second, sPattern); }))
                s += "<searchRecords>" + s_sRecord(r, tabFields, "record", fnFind) + "</searchRecords>";
        }
        if (t[i].s == ",")
            ++i;
    }
    return s + "</result>";
}

// create, update and upsert: one result per sObjects, each checked on its own, so that one
// record's failure leaves the others written.
std::string CSalesforce::sSave(const pugi::xml_node& op, const std::string& sMode) {
    const std::string sExternal = s_Child(op, "externalIDFieldName").text().get();
    std::string s;
    for (const pugi::xml_node& n : s_Children(op, "sObjects")) {
        const std::string sType = s_Child(n, "type").text().get();
        const STSchema* pSchema = s_pSchema(sType);
        std::vector<std::pair<std::string, std::string>> tabValues;
        std::vector<std::string> tabNull;
        std::string sId, sErr;
        for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
            if (c.type() != pugi::node_element)
                continue;
            std::string sName = s_pszLocal(c.name());
            if (sName == "type")
                continue;
            if (sName == "Id") {
                sId = c.text().get();
                continue;
            }
            if (sName == "fieldsToNull") {
                tabNull.push_back(c.text().get());
                continue;
            }
            std::string sField = pSchema ? s_sField(*pSchema, sName) : sName;
            if (sField.empty() && sErr.empty())
                sErr = s_sError("INVALID_FIELD", "No such column '" + sName + "' on sobject of type " +
                                                     sType, {sName});
            tabValues.emplace_back(sField, c.text().get());
        }
        if (!pSchema)
            sErr = s_sError("INVALID_TYPE", "Must send a concrete entity type.");
        STRecord* pRecord = nullptr;
        bool bCreated = false;
        if (sErr.empty() && sMode == "upsert") {
            std::string sKey = s_sField(*pSchema, sExternal);
            const std::string* pKey = nullptr;
            for (const auto& [k, v] : tabValues)
                if (k == sKey)
                    pKey = &v;
            if (sKey.empty() || !pKey)
                sErr = s_sError("MISSING_ARGUMENT", sExternal + " not specified");
            for (STRecord& r : m_tabRecords)
                if (sErr.empty() && !r.bDeleted && !r.bPurged && r.sType == pSchema->pszType &&
                    r.pField(sKey) && *r.pField(sKey) == *pKey)
                    pRecord = &r;
            bCreated = sErr.empty() && !pRecord;
        } else if (sErr.empty() && sMode == "update") {
            pRecord = pFind(sId);
            if (sId.empty())
                sErr = s_sError("MISSING_ARGUMENT", "Id not specified in an update call");
            else if (!pRecord || pRecord->sType != pSchema->pszType)
                sErr = s_sError("INVALID_CROSS_REFERENCE_KEY", "invalid cross reference id");
            else if (pRecord->bDeleted)
                sErr = s_sError("ENTITY_IS_DELETED", "entity is deleted");
        } else {
            bCreated = true;
        }
        if (sErr.empty() && bCreated) {
            std::vector<std::string> tabMissing;
            for (const std::string& f : pSchema->tabFields)
                if (f[0] == '*' && std::none_of(tabValues.begin(), tabValues.end(), [&](const auto& v) {
                        return v.first == f.substr(1) && !v.second.empty();
                    }))
                    tabMissing.push_back(f.substr(1));
            if (!tabMissing.empty()) {
                std::string sList;
                for (const std::string& f : tabMissing)
                    sList += (sList.empty() ? "" : ", ") + f;
                sErr = s_sError("REQUIRED_FIELD_MISSING", "Required fields are missing: [" + sList + "]",
                                tabMissing);
            }
        }
        if (sErr.empty() && bCreated) {
            m_tabRecords.push_back({pSchema->pszType, sNewId(pSchema->pszType), {}, false, false, {}});
            pRecord = &m_tabRecords.back();
            pRecord->Set("CreatedDate", s_sNow());
        }
        if (sErr.empty()) {
            pRecord->Set("LastModifiedDate", s_sNow());
            for (const auto& [k, v] : tabValues)
                pRecord->Set(k, v);
            for (const std::string& f : tabNull)
                std::erase_if(pRecord->tabFields, [&](const auto& x) { return CText::s_bIEquals(x.first, f); });
        }
        s += "<result>";
        if (sMode == "upsert")
            s += std::string("<created>") + (bCreated && sErr.empty() ? "true" : "false") + "</created>";
        s += sErr + (pRecord && sErr.empty() ? "<id>" + pRecord->sId + "</id>" : "<id xsi:nil=\"true\"/>") +
             "<success>" + (sErr.empty() ? "true" : "false") + "</success></result>";
    }
    return s;
}

// convertLead: the lead's company becomes an account (or joins the one given), the person a
// contact, and an opportunity is made unless asked not to; the lead is marked converted.
std::string CSalesforce::sConvert(const pugi::xml_node& op) {
    std::string s;
    for (const pugi::xml_node& n : s_Children(op, "leadConverts")) {
        const std::string sLead = s_Child(n, "leadId").text().get();
        STRecord* pLead = pFind(sLead);
        std::string sErr;
        if (!pLead || pLead->sType != "Lead" || pLead->bDeleted)
            sErr = s_sError("INVALID_CROSS_REFERENCE_KEY", "invalid cross reference id");
        else if (pLead->pField("IsConverted") && *pLead->pField("IsConverted") == "true")
            sErr = s_sError("CANNOT_UPDATE_CONVERTED_LEAD", "This lead was already converted.");
        else if (std::string(s_Child(n, "convertedStatus").text().get()).empty())
            sErr = s_sError("REQUIRED_FIELD_MISSING", "Required fields are missing: [convertedStatus]",
                            {"convertedStatus"});
        if (!sErr.empty()) {
            s += "<result><accountId xsi:nil=\"true\"/><contactId xsi:nil=\"true\"/>" + sErr +
                 "<leadId>" + sLead + "</leadId><opportunityId xsi:nil=\"true\"/><success>false"
                 "</success></result>";
            continue;
        }
        auto fnField = [&](const char* psz) { return pLead->pField(psz) ? *pLead->pField(psz) : ""; };
        const std::string sCompany = fnField("Company"), sLast = fnField("LastName"),
                          sFirst = fnField("FirstName");
        std::string sAccount = s_Child(n, "accountId").text().get();
        if (sAccount.empty()) {
            m_tabRecords.push_back({"Account", sNewId("Account"), {{"Name", sCompany}}, false, false, {}});
            sAccount = m_tabRecords.back().sId;
        }
        m_tabRecords.push_back({"Contact", sNewId("Contact"), {{"AccountId", sAccount}}, false, false, {}});
        m_tabRecords.back().Set("FirstName", sFirst);
        m_tabRecords.back().Set("LastName", sLast);
        const std::string sContact = m_tabRecords.back().sId;
        std::string sOpportunity;
        // xsd:boolean: "1" says true as well.
        if (!s_Child(n, "doNotCreateOpportunity").text().as_bool()) {
            std::string sName = s_Child(n, "opportunityName").text().get();
            m_tabRecords.push_back({"Opportunity", sNewId("Opportunity"),
                                    {{"Name", sName.empty() ? sCompany + "-" : sName},
                                     {"StageName", "Prospecting"}, {"AccountId", sAccount}},
                                    false, false, {}});
            sOpportunity = m_tabRecords.back().sId;
        }
        pLead = pFind(sLead); // the pushes may have moved it
        pLead->Set("IsConverted", "true");
        pLead->Set("Status", s_Child(n, "convertedStatus").text().get());
        pLead->Set("ConvertedAccountId", sAccount);
        pLead->Set("ConvertedContactId", sContact);
        s += "<result><accountId>" + sAccount + "</accountId><contactId>" + sContact +
             "</contactId><leadId>" + pLead->sId + "</leadId>" +
             (sOpportunity.empty() ? "<opportunityId xsi:nil=\"true\"/>"
                                   : "<opportunityId>" + sOpportunity + "</opportunityId>") +
             "<success>true</success></result>";
    }
    return s;
}
