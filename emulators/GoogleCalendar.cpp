#include "GoogleCalendar.h"

#include <algorithm>
#include <optional>

#include "Base64.h"
#include "Emulator.h"
#include "Form.h"
#include "GoogleAccounts.h"
#include "GoogleApis.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "TokenStore.h"

namespace {
const char s_szList[] = "/calendar/v3/users/me/calendarList";

// Any of these opens the calendar list.
const std::initializer_list<std::string_view> s_tabListScopes = {
    "https://www.googleapis.com/auth/calendar",
    "https://www.googleapis.com/auth/calendar.readonly",
    "https://www.googleapis.com/auth/calendar.calendarlist",
    "https://www.googleapis.com/auth/calendar.calendarlist.readonly",
};

// The access roles from least to most; minAccessRole keeps the entries at or above one.
int s_nRoleRank(std::string_view svRole) {
    const char* tab[] = {"freeBusyReader", "reader", "writer", "owner"};
    for (int i = 0; i < 4; ++i)
        if (svRole == tab[i])
            return i;
    return -1;
}

// A positive decimal number of at most nine digits, or -1.
long long s_nCount(std::string_view sv) {
    if (sv.empty() || sv.size() > 9)
        return -1;
    long long n = 0;
    for (char c : sv) {
        if (c < '0' || c > '9')
            return -1;
        n = n * 10 + (c - '0');
    }
    return n > 0 ? n : -1;
}

// The page tokens are opaque to the client; inside, the position of the next entry.
std::string s_sPageToken(size_t nOffset) {
    return CBase64::s_sEncode("calendarList:" + std::to_string(nOffset), true);
}

long long s_nPageOffset(std::string_view svToken) {
    auto o = CBase64::s_oDecode(svToken);
    std::string_view sv = o ? std::string_view(*o) : std::string_view();
    if (sv.substr(0, 13) != "calendarList:")
        return -1;
    return s_nCount(sv.substr(13));
}

// "true" or "false", as Google takes its booleans; null for anything else.
std::optional<bool> s_oFlag(const CForm& query, std::string_view svName) {
    const CForm::STField* p = query.pField(svName);
    if (!p || p->sValue == "false")
        return false;
    if (p->sValue == "true")
        return true;
    return std::nullopt;
}
} // namespace

std::unique_ptr<IService> CGoogleCalendar::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CGoogleCalendar>(emulator);
}

void CGoogleCalendar::vReset() {
    m_tabCalendars = m_Emulator.Seed().Calendars();
}

void CGoogleCalendar::vHandle(const STRequest& req, STResponse& res) {
    std::string_view svPath = req.sPath;
    bool bList = svPath == s_szList;
    std::string_view svId;
    if (!bList && svPath.starts_with(std::string(s_szList) + "/")) {
        svId = svPath.substr(sizeof(s_szList));
        if (svId.empty() || svId.find('/') != std::string_view::npos)
            return CGoogleApis::s_WriteNotFound(res);
    } else if (!bList) {
        return CGoogleApis::s_WriteNotFound(res);
    }
    // Only reading is emulated so far; another method finds nothing at that address.
    if (req.sMethod != "GET" && req.sMethod != "HEAD")
        return CGoogleApis::s_WriteNotFound(res);
    STGrant g;
    if (!CGoogleAccounts::s_bAuthorise(m_Emulator, req, res, s_tabListScopes, &g))
        return;
    if (bList)
        return ListEntries(req, g, res);
    // In a path '+' is itself, not a space as in a query.
    std::string sId;
    for (char c : svId)
        sId += c == '+' ? std::string("%2B") : std::string(1, c);
    GetEntry(CForm::s_oDecode(sId, CForm::eLenient).value_or(sId), g, res);
}

void CGoogleCalendar::ListEntries(const STRequest& req, const STGrant& g, STResponse& res) const {
    CForm query = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr).value_or(CForm());
    long long nPage = ms_nDefaultPage;
    if (const CForm::STField* p = query.pField("maxResults")) {
        nPage = s_nCount(p->sValue);
        if (nPage < 0)
            return CGoogleApis::s_WriteInvalidParameter(res, "maxResults");
        nPage = std::min(nPage, ms_nMaxPage); // Google cuts larger pages silently
    }
    int nMinRank = 0;
    if (const CForm::STField* p = query.pField("minAccessRole")) {
        nMinRank = s_nRoleRank(p->sValue);
        if (nMinRank < 0)
            return CGoogleApis::s_WriteInvalidParameter(res, "minAccessRole");
    }
    std::optional<bool> oShowHidden = s_oFlag(query, "showHidden");
    if (!oShowHidden)
        return CGoogleApis::s_WriteInvalidParameter(res, "showHidden");
    if (!s_oFlag(query, "showDeleted")) // nothing is ever deleted here: checked, then moot
        return CGoogleApis::s_WriteInvalidParameter(res, "showDeleted");

    std::vector<const STSeedCalendar*> tabVisible;
    for (const STSeedCalendar& c : m_tabCalendars)
        if (c.sUser == g.sEmail && s_nRoleRank(c.sAccessRole) >= nMinRank &&
            (!c.bHidden || *oShowHidden))
            tabVisible.push_back(&c);

    size_t nFirst = 0;
    if (const CForm::STField* p = query.pField("pageToken")) {
        long long nOffset = s_nPageOffset(p->sValue);
        if (nOffset < 0 || static_cast<size_t>(nOffset) >= tabVisible.size())
            return CGoogleApis::s_WriteInvalidParameter(res, "pageToken");
        nFirst = static_cast<size_t>(nOffset);
    }
    size_t nEnd = std::min(tabVisible.size(), nFirst + static_cast<size_t>(nPage));

    CJsonValue items = CJsonValue::s_Array();
    std::string sTags;
    for (size_t i = nFirst; i < nEnd; ++i) {
        CJsonValue entry = s_Entry(*tabVisible[i]);
        sTags += entry.sText("etag");
        items.Push(std::move(entry));
    }
    CJsonValue list = CJsonValue::s_Object();
    list.Set("kind", CJsonValue::s_String("calendar#calendarList"));
    list.Set("etag", CJsonValue::s_String(CGoogleApis::s_sEtag(sTags)));
    if (nEnd < tabVisible.size())
        list.Set("nextPageToken", CJsonValue::s_String(s_sPageToken(nEnd)));
    list.Set("items", std::move(items));
    res.SetJson(200, list);
}

void CGoogleCalendar::GetEntry(std::string_view svId, const STGrant& g, STResponse& res) const {
    for (const STSeedCalendar& c : m_tabCalendars)
        if (c.sUser == g.sEmail && (c.sId == svId || (c.bPrimary && svId == "primary")))
            return res.SetJson(200, s_Entry(c));
    CGoogleApis::s_WriteNotFound(res);
}

CJsonValue CGoogleCalendar::s_Entry(const STSeedCalendar& c) {
    // Members in the order Google writes them; the optional ones only when they hold.
    CJsonValue v = CJsonValue::s_Object();
    v.Set("kind", CJsonValue::s_String("calendar#calendarListEntry"));
    v.Set("etag", CJsonValue());
    v.Set("id", CJsonValue::s_String(c.sId));
    v.Set("summary", CJsonValue::s_String(c.sSummary));
    if (!c.sDescription.empty())
        v.Set("description", CJsonValue::s_String(c.sDescription));
    v.Set("timeZone", CJsonValue::s_String(c.sTimeZone));
    v.Set("colorId", CJsonValue::s_String(c.sColorId));
    v.Set("backgroundColor", CJsonValue::s_String(c.sBackgroundColor));
    v.Set("foregroundColor", CJsonValue::s_String(c.sForegroundColor));
    if (c.bHidden)
        v.Set("hidden", CJsonValue::s_Bool(true));
    if (c.bSelected)
        v.Set("selected", CJsonValue::s_Bool(true));
    v.Set("accessRole", CJsonValue::s_String(c.sAccessRole));
    v.Set("defaultReminders", CJsonValue::s_Array());
    if (c.bPrimary)
        v.Set("primary", CJsonValue::s_Bool(true));
    CJsonValue conference = CJsonValue::s_Object();
    conference.Set("allowedConferenceSolutionTypes",
                   CJsonValue::s_Array().Push(CJsonValue::s_String("hangoutsMeet")));
    v.Set("conferenceProperties", std::move(conference));
    // The tag covers the rest of the entry, so that any change in the seed changes it.
    v.Set("etag", CJsonValue::s_String(CGoogleApis::s_sEtag(v.sSerialize())));
    return v;
}
