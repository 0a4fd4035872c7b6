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
#include "Text.h"
#include "TokenStore.h"

namespace {
// Any of these opens the calendar list.
const std::initializer_list<std::string_view> s_tabListScopes = {
    "https://www.googleapis.com/auth/calendar",
    "https://www.googleapis.com/auth/calendar.readonly",
    "https://www.googleapis.com/auth/calendar.calendarlist",
    "https://www.googleapis.com/auth/calendar.calendarlist.readonly",
};
const std::initializer_list<std::string_view> s_tabEventReadScopes = {
    "https://www.googleapis.com/auth/calendar",
    "https://www.googleapis.com/auth/calendar.readonly",
    "https://www.googleapis.com/auth/calendar.events",
    "https://www.googleapis.com/auth/calendar.events.readonly",
};
const std::initializer_list<std::string_view> s_tabEventWriteScopes = {
    "https://www.googleapis.com/auth/calendar",
    "https://www.googleapis.com/auth/calendar.events",
};
const std::initializer_list<std::string_view> s_tabCalendarReadScopes = {
    "https://www.googleapis.com/auth/calendar",
    "https://www.googleapis.com/auth/calendar.readonly",
};
const std::initializer_list<std::string_view> s_tabCalendarScopes = {
    "https://www.googleapis.com/auth/calendar",
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
    const long long n = CText::s_nDecimal(sv, 9);
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
    std::lock_guard lock(m_mtx);
    m_tabCalendars = m_Emulator.Seed().Calendars();
    m_Events.Reset(m_Emulator.Seed().Document());
}

void CGoogleCalendar::vHandle(const STRequest& req, STResponse& res) {
    std::lock_guard lock(m_mtx);
    // The path's segments after /calendar/v3/, each decoded on its own so that an encoded
    // "/" stays inside its id; in a path '+' is itself, not a space as in a query.
    std::vector<std::string> tabSegments;
    std::string_view svRest = std::string_view(req.sPath).substr(std::string_view(ms_pszPrefix).size());
    while (true) {
        size_t n = svRest.find('/');
        std::string sRaw;
        for (char c : svRest.substr(0, n))
            sRaw += c == '+' ? std::string("%2B") : std::string(1, c);
        tabSegments.push_back(CForm::s_oDecode(sRaw, CForm::eLenient).value_or(sRaw));
        if (n == std::string_view::npos)
            break;
        svRest.remove_prefix(n + 1);
    }
    const size_t nSeg = tabSegments.size();
    auto Segment = [&](size_t i) { return i < nSeg ? std::string_view(tabSegments[i]) : std::string_view(); };
    const bool bRead = req.sMethod == "GET" || req.sMethod == "HEAD";

    if (nSeg >= 3 && nSeg <= 4 && Segment(0) == "users" && Segment(1) == "me" &&
        Segment(2) == "calendarList") {
        if (!bRead || (nSeg == 4 && Segment(3).empty()))
            return CGoogleApis::s_WriteNotFound(res);
        STGrant g;
        if (!CGoogleAccounts::s_bAuthorise(m_Emulator, req, res, s_tabListScopes, &g))
            return;
        return nSeg == 3 ? ListEntries(req, g, res) : GetEntry(Segment(3), g, res);
    }
    if (Segment(0) != "calendars" || nSeg > 4 || (nSeg >= 3 && Segment(2) != "events"))
        return CGoogleApis::s_WriteNotFound(res);

    // Reading needs one of the read scopes, writing events the events scope, writing
    // calendars the full one.
    STGrant g;
    const bool bEvents = nSeg >= 3;
    if (bRead && bEvents) {
        if (!CGoogleAccounts::s_bAuthorise(m_Emulator, req, res, s_tabEventReadScopes, &g))
            return;
    } else if (bEvents) {
        if (!CGoogleAccounts::s_bAuthorise(m_Emulator, req, res, s_tabEventWriteScopes, &g))
            return;
    } else if (!CGoogleAccounts::s_bAuthorise(m_Emulator, req, res,
                                              bRead ? s_tabCalendarReadScopes : s_tabCalendarScopes,
                                              &g)) {
        return;
    }
    if (!bEvents)
        return Calendars(req, nSeg == 2 ? Segment(1) : std::string_view(), g, res);
    STSeedCalendar* pCal = pEntry(Segment(1), g);
    if (!pCal || s_nRoleRank(pCal->sAccessRole) < s_nRoleRank("reader"))
        return CGoogleApis::s_WriteNotFound(res);
    Events(req, *pCal, nSeg == 4 ? Segment(3) : std::string_view(), g, res);
}

STSeedCalendar* CGoogleCalendar::pEntry(std::string_view svId, const STGrant& g) {
    for (STSeedCalendar& c : m_tabCalendars)
        if (c.sUser == g.sEmail && (c.sId == svId || (c.bPrimary && svId == "primary")))
            return &c;
    return nullptr;
}

void CGoogleCalendar::Calendars(const STRequest& req, std::string_view svId, const STGrant& g,
                                STResponse& res) {
    const bool bInsert = req.sMethod == "POST" && svId.empty();
    if (svId.empty() && !bInsert)
        return CGoogleApis::s_WriteNotFound(res);
    STSeedCalendar* pCal = bInsert ? nullptr : pEntry(svId, g);
    if (!bInsert && !pCal)
        return CGoogleApis::s_WriteNotFound(res);
    if (req.sMethod == "GET" || req.sMethod == "HEAD")
        return res.SetJson(200, s_Calendar(*pCal));

    std::optional<CJsonValue> oBody;
    if (req.sMethod != "DELETE") {
        std::string sError;
        oBody = CCalendarEvents::s_oParseLenient(req.sBody, &sError);
        if (!oBody || !oBody->bIsObject())
            return CGoogleAccounts::s_WriteError(res, 400, "INVALID_ARGUMENT", "Parse Error",
                                                 "parseError", {});
    }
    if (pCal && pCal->sAccessRole != "owner")
        return CGoogleAccounts::s_WriteError(res, 403, "PERMISSION_DENIED", "Forbidden",
                                             "forbidden", {});
    if (req.sMethod == "DELETE") {
        if (pCal->bPrimary)
            return CGoogleAccounts::s_WriteError(res, 400, "INVALID_ARGUMENT",
                                                 "Cannot delete primary calendar.",
                                                 "cannotDeletePrimaryCalendar", {});
        const std::string sId = pCal->sId;
        std::erase_if(m_tabCalendars, [&](const STSeedCalendar& c) { return c.sId == sId; });
        m_Events.DropCalendar(sId);
        return res.SetBody(204, "", "");
    }
    if (req.sMethod != "POST" && req.sMethod != "PATCH")
        return CGoogleApis::s_WriteNotFound(res);

    // The members a client writes; an empty text leaves the time zone as it was, as an
    // empty id asks for a new one.
    STSeedCalendar c = bInsert ? STSeedCalendar() : *pCal;
    const CJsonValue* pSummary = oBody->pFind("summary");
    if (pSummary && pSummary->bIsString())
        c.sSummary = pSummary->sGetString();
    if (const CJsonValue* p = oBody->pFind("description"); p && (p->bIsString() || p->bIsNull()))
        c.sDescription = p->bIsString() ? p->sGetString() : "";
    if (const CJsonValue* p = oBody->pFind("timeZone"); p && p->bIsString() && !p->sGetString().empty())
        c.sTimeZone = p->sGetString();
    if (c.sSummary.empty())
        return CGoogleAccounts::s_WriteError(res, 400, "INVALID_ARGUMENT", "Missing title.",
                                             "required", {});
    if (bInsert) {
        c.sUser = g.sEmail;
        c.sId = CText::s_sLower(CText::s_sRandomToken(26));
        std::replace_if(c.sId.begin(), c.sId.end(), [](char ch) { return ch == '_' || ch == '-'; }, '0');
        c.sId += "@group.calendar.google.com";
        if (c.sTimeZone.empty())
            c.sTimeZone = "UTC";
        c.sAccessRole = "owner";
        c.sColorId = "14";
        c.sBackgroundColor = "#9fe1e7";
        c.sForegroundColor = "#000000";
        m_tabCalendars.push_back(c);
    } else {
        // Every list that holds the calendar shows the change.
        for (STSeedCalendar& other : m_tabCalendars)
            if (other.sId == c.sId)
                other.sSummary = c.sSummary, other.sDescription = c.sDescription,
                other.sTimeZone = c.sTimeZone;
    }
    res.SetJson(200, s_Calendar(c));
}

void CGoogleCalendar::Events(const STRequest& req, const STSeedCalendar& c, std::string_view svEvent,
                             const STGrant& g, STResponse& res) {
    STCalendarInfo info{c.sId, c.sSummary, c.sTimeZone, c.sAccessRole, g.sEmail};
    const bool bRead = req.sMethod == "GET" || req.sMethod == "HEAD";
    if (bRead && svEvent.empty()) {
        CForm query = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr).value_or(CForm());
        return m_Events.List(info, query, res);
    }
    if (bRead)
        return m_Events.Get(c.sId, svEvent, res);
    const bool bInsert = req.sMethod == "POST" && svEvent.empty();
    const bool bPatch = req.sMethod == "PATCH" && !svEvent.empty();
    const bool bDelete = req.sMethod == "DELETE" && !svEvent.empty();
    if (!bInsert && !bPatch && !bDelete)
        return CGoogleApis::s_WriteNotFound(res);
    if (s_nRoleRank(c.sAccessRole) < s_nRoleRank("writer"))
        return CGoogleAccounts::s_WriteError(res, 403, "PERMISSION_DENIED",
                                             "You need to have writer access to this calendar.",
                                             "requiredAccessLevel", {});
    if (bDelete)
        return m_Events.Delete(c.sId, svEvent, res);
    std::string sError;
    std::optional<CJsonValue> oBody = CCalendarEvents::s_oParseLenient(req.sBody, &sError);
    if (!oBody || !oBody->bIsObject())
        return CGoogleAccounts::s_WriteError(res, 400, "INVALID_ARGUMENT", "Parse Error",
                                             "parseError", {});
    if (bInsert)
        m_Events.Insert(info, *oBody, res);
    else
        m_Events.Patch(info, svEvent, *oBody, res);
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

void CGoogleCalendar::GetEntry(std::string_view svId, const STGrant& g, STResponse& res) {
    if (const STSeedCalendar* p = pEntry(svId, g))
        return res.SetJson(200, s_Entry(*p));
    CGoogleApis::s_WriteNotFound(res);
}

// The members a calendar and its list entry share, in the order Google writes them; the tag
// comes last, over the rest.
CJsonValue CGoogleCalendar::s_Head(const STSeedCalendar& c, const char* pszKind) {
    CJsonValue v = CJsonValue::s_Object();
    v.Set("kind", CJsonValue::s_String(pszKind));
    v.Set("etag", CJsonValue());
    v.Set("id", CJsonValue::s_String(c.sId));
    v.Set("summary", CJsonValue::s_String(c.sSummary));
    if (!c.sDescription.empty())
        v.Set("description", CJsonValue::s_String(c.sDescription));
    v.Set("timeZone", CJsonValue::s_String(c.sTimeZone));
    return v;
}

CJsonValue CGoogleCalendar::s_Calendar(const STSeedCalendar& c) {
    CJsonValue v = s_Head(c, "calendar#calendar");
    return s_Tail(std::move(v));
}

CJsonValue CGoogleCalendar::s_Entry(const STSeedCalendar& c) {
    // Members in the order Google writes them; the optional ones only when they hold.
    CJsonValue v = s_Head(c, "calendar#calendarListEntry");
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
    return s_Tail(std::move(v));
}

// What ends both: the conference settings, then the tag, which covers the rest so that any
// change in the data changes it.
CJsonValue CGoogleCalendar::s_Tail(CJsonValue v) {
    CJsonValue conference = CJsonValue::s_Object();
    conference.Set("allowedConferenceSolutionTypes",
                   CJsonValue::s_Array().Push(CJsonValue::s_String("hangoutsMeet")));
    v.Set("conferenceProperties", std::move(conference));
    v.Set("etag", CJsonValue::s_String(CGoogleApis::s_sEtag(v.sSerialize())));
    return v;
}
