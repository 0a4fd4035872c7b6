#include "CalendarEvents.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "Base64.h"
#include "Form.h"
#include "GoogleAccounts.h"
#include "GoogleApis.h"
#include "Response.h"
#include "Text.h"

namespace {

constexpr long long knDay = 86400000LL;
constexpr long long knMaxResults = 2500;
constexpr long long knDefaultResults = 250;

void s_WriteBadRequest(STResponse& res, std::string_view svMessage, std::string_view svReason) {
    CGoogleAccounts::s_WriteError(res, 400, "INVALID_ARGUMENT", svMessage, svReason, {});
}

// Days from 1970-01-01 of a civil date (proleptic Gregorian).
long long s_nDays(long long y, unsigned m, unsigned d) {
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

void s_Civil(long long z, int& y, unsigned& m, unsigned& d) {
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y = static_cast<int>(static_cast<long long>(yoe) + era * 400 + (m <= 2));
}

// n digits at sv[i..], or -1.
int s_nDigits(std::string_view sv, size_t i, size_t n) {
    if (i + n > sv.size()) return -1;
    int v = 0;
    for (size_t k = i; k < i + n; ++k) {
        if (sv[k] < '0' || sv[k] > '9') return -1;
        v = v * 10 + (sv[k] - '0');
    }
    return v;
}

long long s_nNow() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

// "2024-02-20T14:03:12.356Z", as the service stamps its resources.
std::string s_sStamp(long long nMs) {
    std::string s = CCalendarEvents::s_sFormatTime(nMs, false, 0);
    char sz[8];
    std::snprintf(sz, sizeof sz, ".%03dZ", static_cast<int>(((nMs % 1000) + 1000) % 1000));
    return s.substr(0, s.size() - 1) + sz;
}

// Event ids are base32hex, lower case.
std::string s_sNewId() {
    static const char s_szAlphabet[] = "0123456789abcdefghijklmnopqrstuv";
    std::string s = CText::s_sRandomToken(26);
    for (char& c : s) c = s_szAlphabet[static_cast<unsigned char>(c) % 32];
    return s;
}

bool s_bValidId(std::string_view sv) {
    if (sv.size() < 5 || sv.size() > 1024) return false;
    for (char c : sv)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'v'))) return false;
    return true;
}

// The moment of a start or end member, and whether it is a date alone.
struct STWhen {
    long long nMs = 0;
    bool bDate = false;
    int nOffset = 0;
};
std::optional<STWhen> s_oWhen(const CJsonValue* p) {
    if (!p || !p->bIsObject()) return std::nullopt;
    STWhen w;
    if (const CJsonValue* pDate = p->pFind("date"); pDate && pDate->bIsString()) {
        auto o = CCalendarEvents::s_oParseTime(pDate->sGetString(), true);
        if (!o) return std::nullopt;
        w.nMs = *o, w.bDate = true;
        return w;
    }
    const CJsonValue* pTime = p->pFind("dateTime");
    if (!pTime || !pTime->bIsString()) return std::nullopt;
    auto o = CCalendarEvents::s_oParseTime(pTime->sGetString(), false, &w.nOffset);
    if (!o) return std::nullopt;
    w.nMs = *o;
    return w;
}

CJsonValue s_WhenValue(const STWhen& w, const CJsonValue* pOld) {
    CJsonValue v = CJsonValue::s_Object();
    v.Set(w.bDate ? "date" : "dateTime",
          CJsonValue::s_String(CCalendarEvents::s_sFormatTime(w.nMs, w.bDate, w.nOffset)));
    if (const CJsonValue* pZone = pOld ? pOld->pFind("timeZone") : nullptr)
        v.Set("timeZone", *pZone);
    return v;
}

// PATCH semantics: members given replace, objects merge member by member, null clears.
void s_Merge(CJsonValue& target, const CJsonValue& patch) {
    for (const auto& [sKey, value] : patch.Members()) {
        if (value.bIsNull()) {
            target.bErase(sKey);
        } else if (value.bIsObject()) {
            const CJsonValue* pOld = target.pFind(sKey);
            CJsonValue sub = pOld && pOld->bIsObject() ? *pOld : CJsonValue::s_Object();
            s_Merge(sub, value);
            target.Set(sKey, std::move(sub));
        } else {
            target.Set(sKey, value);
        }
    }
}

// Members a client may not write; the service keeps its own.
bool s_bReadOnly(std::string_view svKey) {
    for (std::string_view sv : {"kind", "etag", "id", "htmlLink", "created", "updated", "creator",
                                "organizer", "iCalUID", "sequence", "recurringEventId",
                                "originalStartTime"})
        if (svKey == sv) return true;
    return false;
}

CJsonValue s_Writable(const CJsonValue& body) {
    CJsonValue v = CJsonValue::s_Object();
    for (const auto& [sKey, value] : body.Members())
        if (!s_bReadOnly(sKey)) v.Append(sKey, value);
    return v;
}

// The rule of a recurrence this emulator expands: daily or weekly, with an interval, a count
// or an end. Any other rule leaves the series as one event.
struct STRule {
    long long nStep = 0;
    long long nCount = -1;
    long long nUntil = -1;
};
std::optional<STRule> s_oRule(const CJsonValue& v) {
    const CJsonValue* p = v.pFind("recurrence");
    if (!p || !p->bIsArray()) return std::nullopt;
    for (const CJsonValue& line : p->Items()) {
        if (!line.bIsString() || !line.sGetString().starts_with("RRULE:")) continue;
        STRule r;
        long long nInterval = 1;
        std::string_view sv = std::string_view(line.sGetString()).substr(6);
        while (!sv.empty()) {
            size_t n = sv.find(';');
            std::string_view svPart = sv.substr(0, n);
            sv = n == std::string_view::npos ? std::string_view() : sv.substr(n + 1);
            size_t e = svPart.find('=');
            if (e == std::string_view::npos) continue;
            std::string_view svName = svPart.substr(0, e), svValue = svPart.substr(e + 1);
            if (svName == "FREQ")
                r.nStep = svValue == "DAILY" ? knDay : svValue == "WEEKLY" ? 7 * knDay : -1;
            else if (svName == "INTERVAL")
                nInterval = std::max(1, std::atoi(std::string(svValue).c_str()));
            else if (svName == "COUNT")
                r.nCount = std::atoll(std::string(svValue).c_str());
            else if (svName == "UNTIL" && svValue.size() >= 8) {
                int y = s_nDigits(svValue, 0, 4), m = s_nDigits(svValue, 4, 2),
                    d = s_nDigits(svValue, 6, 2);
                if (y < 0 || m < 1 || d < 1) continue;
                r.nUntil = s_nDays(y, static_cast<unsigned>(m), static_cast<unsigned>(d)) * knDay;
                if (svValue.size() >= 15 && svValue[8] == 'T')
                    r.nUntil += s_nDigits(svValue, 9, 2) * 3600000LL +
                                s_nDigits(svValue, 11, 2) * 60000LL + s_nDigits(svValue, 13, 2) * 1000LL;
                else
                    r.nUntil += knDay - 1;
            }
        }
        if (r.nStep <= 0) return std::nullopt;
        r.nStep *= nInterval;
        return r;
    }
    return std::nullopt;
}

// Every word of the query in one of the searched fields, case ignored.
bool s_bMatches(const CJsonValue& v, const std::vector<std::string>& tabWords) {
    std::string sText;
    for (const char* psz : {"summary", "description", "location"}) sText += " " + v.sText(psz);
    if (const CJsonValue* p = v.pFind("attendees"); p && p->bIsArray())
        for (const CJsonValue& a : p->Items()) sText += " " + a.sText("email") + " " + a.sText("displayName");
    if (const CJsonValue* p = v.pFind("organizer")) sText += " " + p->sText("email") + " " + p->sText("displayName");
    sText = CText::s_sLower(sText);
    for (const std::string& w : tabWords)
        if (sText.find(w) == std::string::npos) return false;
    return true;
}

// "true" or "false"; absent is false; null for another text.
std::optional<bool> s_oFlag(const CForm& query, std::string_view svName) {
    const CForm::STField* p = query.pField(svName);
    if (!p || p->sValue == "false") return false;
    if (p->sValue == "true") return true;
    return std::nullopt;
}

} // namespace

// ---- times -------------------------------------------------------------------------------

std::optional<long long> CCalendarEvents::s_oParseTime(std::string_view sv, bool bDate,
                                                       int* pnOffset) {
    if (sv.size() < 10 || sv[4] != '-' || sv[7] != '-') return std::nullopt;
    int y = s_nDigits(sv, 0, 4), m = s_nDigits(sv, 5, 2), d = s_nDigits(sv, 8, 2);
    if (y < 0 || m < 1 || m > 12 || d < 1 || d > 31) return std::nullopt;
    int nDaysInMonth = m == 2 ? ((y % 4 == 0 && y % 100 != 0) || y % 400 == 0 ? 29 : 28)
                              : (m == 4 || m == 6 || m == 9 || m == 11 ? 30 : 31);
    if (d > nDaysInMonth) return std::nullopt;
    long long nMs = s_nDays(y, static_cast<unsigned>(m), static_cast<unsigned>(d)) * knDay;
    if (bDate) return sv.size() == 10 ? std::optional<long long>(nMs) : std::nullopt;
    if (sv.size() < 20 || sv[10] != 'T' || sv[13] != ':' || sv[16] != ':') return std::nullopt;
    int h = s_nDigits(sv, 11, 2), mi = s_nDigits(sv, 14, 2), s = s_nDigits(sv, 17, 2);
    if (h < 0 || h > 23 || mi < 0 || mi > 59 || s < 0 || s > 60) return std::nullopt;
    nMs += h * 3600000LL + mi * 60000LL + s * 1000LL;
    size_t i = 19;
    if (sv[i] == '.') {
        size_t nFirst = ++i;
        int nMilli = 0;
        for (; i < sv.size() && sv[i] >= '0' && sv[i] <= '9'; ++i)
            if (i - nFirst < 3) nMilli = nMilli * 10 + (sv[i] - '0');
        if (i == nFirst) return std::nullopt;
        for (size_t k = i - nFirst; k < 3; ++k) nMilli *= 10;
        nMs += nMilli;
    }
    int nOffset = 0;
    if (i < sv.size() && (sv[i] == 'Z' || sv[i] == 'z') && i + 1 == sv.size()) {
        nOffset = 0;
    } else if (i + 6 == sv.size() && (sv[i] == '+' || sv[i] == '-') && sv[i + 3] == ':') {
        int oh = s_nDigits(sv, i + 1, 2), om = s_nDigits(sv, i + 4, 2);
        if (oh < 0 || oh > 23 || om < 0 || om > 59) return std::nullopt;
        nOffset = (sv[i] == '-' ? -1 : 1) * (oh * 60 + om);
    } else {
        return std::nullopt; // a time with no zone names no moment
    }
    if (pnOffset) *pnOffset = nOffset;
    return nMs - nOffset * 60000LL;
}

std::string CCalendarEvents::s_sFormatTime(long long nMs, bool bDate, int nOffset) {
    long long nLocal = nMs + nOffset * 60000LL;
    long long nDay = nLocal >= 0 ? nLocal / knDay : (nLocal - knDay + 1) / knDay;
    long long nIn = nLocal - nDay * knDay;
    int y;
    unsigned m, d;
    s_Civil(nDay, y, m, d);
    char sz[40];
    if (bDate) {
        std::snprintf(sz, sizeof sz, "%04d-%02u-%02u", y, m, d);
        return sz;
    }
    int n = std::snprintf(sz, sizeof sz, "%04d-%02u-%02uT%02d:%02d:%02d", y, m, d,
                          static_cast<int>(nIn / 3600000), static_cast<int>(nIn / 60000 % 60),
                          static_cast<int>(nIn / 1000 % 60));
    if (nOffset == 0)
        std::snprintf(sz + n, sizeof sz - static_cast<size_t>(n), "Z");
    else
        std::snprintf(sz + n, sizeof sz - static_cast<size_t>(n), "%c%02d:%02d",
                      nOffset < 0 ? '-' : '+', std::abs(nOffset) / 60, std::abs(nOffset) % 60);
    return sz;
}

std::optional<CJsonValue> CCalendarEvents::s_oParseLenient(std::string_view sv, std::string* pError) {
    // Quotes a bare key: letters, digits and '_' after '{' or ',' and before ':', outside strings.
    std::string s;
    s.reserve(sv.size() + 16);
    bool bInString = false;
    char cLast = 0; // the last significant character outside strings
    for (size_t i = 0; i < sv.size(); ++i) {
        char c = sv[i];
        if (bInString) {
            s += c;
            if (c == '\\' && i + 1 < sv.size())
                s += sv[++i];
            else if (c == '"')
                bInString = false, cLast = '"';
            continue;
        }
        bool bIdent = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
        if (bIdent && (cLast == '{' || cLast == ',')) {
            size_t j = i;
            while (j < sv.size() && ((sv[j] >= 'a' && sv[j] <= 'z') || (sv[j] >= 'A' && sv[j] <= 'Z') ||
                                     (sv[j] >= '0' && sv[j] <= '9') || sv[j] == '_'))
                ++j;
            size_t k = j;
            while (k < sv.size() && (sv[k] == ' ' || sv[k] == '\t' || sv[k] == '\r' || sv[k] == '\n'))
                ++k;
            if (k < sv.size() && sv[k] == ':') {
                s += '"';
                s.append(sv.substr(i, j - i));
                s += '"';
                i = j - 1;
                cLast = '"';
                continue;
            }
        }
        if (c == '"') bInString = true;
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n') cLast = c;
        s += c;
    }
    return CJsonValue::s_oParse(s, pError);
}

// ---- the store ---------------------------------------------------------------------------

void CCalendarEvents::Reset(const CJsonValue& seedDocument) {
    m_mapEvents.clear();
    const CJsonValue* pSection = seedDocument.pFind("calendar");
    const CJsonValue* pList = pSection ? pSection->pFind("events") : nullptr;
    if (!pList || !pList->bIsArray()) return;
    for (const CJsonValue& seed : pList->Items()) {
        if (!seed.bIsObject()) continue;
        const std::string sCalendar = seed.sText("calendarId");
        CJsonValue v = CJsonValue::s_Object();
        for (const auto& [sKey, value] : seed.Members())
            if (sKey != "calendarId") v.Append(sKey, value);
        if (!v.pFind("updated")) v.Set("updated", CJsonValue::s_String("2030-01-15T09:30:00.000Z"));
        if (!v.pFind("created")) v.Set("created", *v.pFind("updated"));
        STResponse ignored;
        if (!v.pFind("id") || !s_bValidate(v, ignored)) continue; // the seed's tests catch it
        m_mapEvents[sCalendar].push_back({std::move(v), false});
    }
}

CCalendarEvents::STEvent* CCalendarEvents::pFind(std::string_view svCalendar,
                                                 std::string_view svEvent) {
    auto it = m_mapEvents.find(std::string(svCalendar));
    if (it == m_mapEvents.end()) return nullptr;
    for (STEvent& e : it->second)
        if (e.v.sText("id") == svEvent) return &e;
    return nullptr;
}

bool CCalendarEvents::s_bValidate(CJsonValue& v, STResponse& res) {
    for (const char* psz : {"summary", "description", "location"}) {
        const CJsonValue* p = v.pFind(psz);
        if (!p) continue;
        if (!p->bIsString()) {
            s_WriteBadRequest(res, std::string("Invalid value for: ") + psz, "invalid");
            return false;
        }
        if (p->sGetString().empty()) v.bErase(psz); // the service does not keep empty texts
    }
    std::optional<STWhen> aWhen[2];
    const char* tabNames[2] = {"start", "end"};
    for (int i = 0; i < 2; ++i) {
        const CJsonValue* p = v.pFind(tabNames[i]);
        if (!p || !p->bIsObject() || (!p->pFind("date") && !p->pFind("dateTime"))) {
            s_WriteBadRequest(res, std::string("Missing ") + tabNames[i] + " time.", "required");
            return false;
        }
        if (p->pFind("date") && p->pFind("dateTime")) {
            s_WriteBadRequest(res, "Bad Request", "badRequest");
            return false;
        }
        aWhen[i] = s_oWhen(p);
        if (!aWhen[i]) {
            s_WriteBadRequest(res, std::string("Invalid ") + tabNames[i] + " time.", "invalid");
            return false;
        }
    }
    if (aWhen[0]->bDate != aWhen[1]->bDate) {
        s_WriteBadRequest(res, "Bad Request", "badRequest");
        return false;
    }
    if (aWhen[1]->nMs <= aWhen[0]->nMs) {
        s_WriteBadRequest(res, "The specified time range is empty.", "timeRangeEmpty");
        return false;
    }
    v.Set("start", s_WhenValue(*aWhen[0], v.pFind("start")));
    v.Set("end", s_WhenValue(*aWhen[1], v.pFind("end")));
    if (const CJsonValue* p = v.pFind("attendees")) {
        if (!p->bIsArray()) {
            s_WriteBadRequest(res, "Invalid value for: attendees", "invalid");
            return false;
        }
        CJsonValue out = CJsonValue::s_Array();
        for (const CJsonValue& a : p->Items()) {
            const std::string sEmail = a.sText("email");
            if (sEmail.empty()) {
                s_WriteBadRequest(res, "Missing attendee email.", "required");
                return false;
            }
            if (sEmail.find('@') == std::string::npos) {
                s_WriteBadRequest(res, "Invalid attendee email.", "invalid");
                return false;
            }
            CJsonValue n = CJsonValue::s_Object();
            n.Set("email", CJsonValue::s_String(sEmail));
            if (!a.sText("displayName").empty())
                n.Set("displayName", CJsonValue::s_String(a.sText("displayName")));
            n.Set("responseStatus", CJsonValue::s_String(a.sText("responseStatus", "needsAction")));
            out.Push(std::move(n));
        }
        if (out.Items().empty())
            v.bErase("attendees");
        else
            v.Set("attendees", std::move(out));
    }
    return true;
}

CJsonValue CCalendarEvents::s_Output(const CJsonValue& v) {
    static const char* const s_tabOrder[] = {
        "id",      "status",    "htmlLink",   "created",          "updated",
        "summary", "description", "location", "creator",          "organizer",
        "start",   "end",       "recurrence", "recurringEventId", "originalStartTime",
        "iCalUID", "sequence",  "attendees",  "reminders",        "eventType"};
    CJsonValue out = CJsonValue::s_Object();
    out.Set("kind", CJsonValue::s_String("calendar#event"));
    out.Set("etag", CJsonValue());
    for (const char* psz : s_tabOrder)
        if (const CJsonValue* p = v.pFind(psz)) out.Set(psz, *p);
    for (const auto& [sKey, value] : v.Members())
        if (!out.pFind(sKey)) out.Set(sKey, value);
    out.Set("etag", CJsonValue::s_String(CGoogleApis::s_sEtag(v.sSerialize())));
    return out;
}

void CCalendarEvents::s_Expand(const CJsonValue& v, bool bSingle, long long nUntil,
                               std::vector<CJsonValue>& out) {
    std::optional<STRule> oRule = s_oRule(v);
    if (!oRule || !bSingle) {
        out.push_back(v);
        return;
    }
    const STWhen start = *s_oWhen(v.pFind("start")), end = *s_oWhen(v.pFind("end"));
    const std::string sId = v.sText("id");
    for (long long k = 0; k < 1000; ++k) {
        const long long nStart = start.nMs + k * oRule->nStep;
        if (oRule->nCount >= 0 && k >= oRule->nCount) break;
        if (oRule->nUntil >= 0 && nStart > oRule->nUntil) break;
        if (oRule->nCount < 0 && oRule->nUntil < 0 && nStart >= nUntil) break;
        CJsonValue i = v;
        i.bErase("recurrence");
        STWhen s = start, e = end;
        s.nMs = nStart, e.nMs = end.nMs + k * oRule->nStep;
        std::string sStamp = s_sFormatTime(nStart, start.bDate, 0);
        sStamp.erase(std::remove_if(sStamp.begin(), sStamp.end(),
                                    [](char c) { return c == '-' || c == ':'; }),
                     sStamp.end());
        i.Set("id", CJsonValue::s_String(sId + "_" + sStamp));
        i.Set("start", s_WhenValue(s, v.pFind("start")));
        i.Set("end", s_WhenValue(e, v.pFind("end")));
        i.Set("recurringEventId", CJsonValue::s_String(sId));
        i.Set("originalStartTime", s_WhenValue(s, v.pFind("start")));
        out.push_back(std::move(i));
    }
}

// ---- the operations ----------------------------------------------------------------------

void CCalendarEvents::List(const STCalendarInfo& cal, const CForm& query, STResponse& res) const {
    long long nMax = knDefaultResults;
    if (const CForm::STField* p = query.pField("maxResults")) {
        char* pEnd = nullptr;
        nMax = std::strtoll(p->sValue.c_str(), &pEnd, 10);
        if (p->sValue.empty() || *pEnd || nMax < 1)
            return CGoogleApis::s_WriteInvalidParameter(res, "maxResults");
        nMax = std::min(nMax, knMaxResults); // larger pages are cut silently
    }
    std::optional<bool> oSingle = s_oFlag(query, "singleEvents");
    if (!oSingle) return CGoogleApis::s_WriteInvalidParameter(res, "singleEvents");
    bool bByStart = false;
    if (const CForm::STField* p = query.pField("orderBy")) {
        if (p->sValue == "startTime") {
            if (!*oSingle)
                return s_WriteBadRequest(
                    res, "The requested ordering is not available for the particular query.",
                    "badRequest");
            bByStart = true;
        } else if (p->sValue != "updated") {
            return CGoogleApis::s_WriteInvalidParameter(res, "orderBy");
        }
    }
    long long nMin = -(1LL << 62), nMaxTime = 1LL << 62;
    for (auto [pszName, pBound] : {std::pair{"timeMin", &nMin}, std::pair{"timeMax", &nMaxTime}}) {
        const CForm::STField* p = query.pField(pszName);
        if (!p) continue;
        auto o = s_oParseTime(p->sValue, false);
        if (!o) return s_WriteBadRequest(res, "Bad Request", "badRequest");
        *pBound = *o;
    }
    if (query.pField("timeMin") && query.pField("timeMax") && nMaxTime <= nMin)
        return s_WriteBadRequest(res, "The specified time range is empty.", "timeRangeEmpty");
    std::vector<std::string> tabWords;
    if (const CForm::STField* p = query.pField("q")) {
        std::string sQ = CText::s_sLower(p->sValue);
        for (size_t i = 0; i < sQ.size();) {
            size_t j = sQ.find(' ', i);
            if (j == std::string::npos) j = sQ.size();
            if (j > i) tabWords.push_back(sQ.substr(i, j - i));
            i = j + 1;
        }
    }

    // A series with no end is expanded two years past the window's start at most.
    const long long nExpandUntil =
        query.pField("timeMax") ? nMaxTime : std::max(nMin, s_nNow()) + 730 * knDay;
    std::vector<CJsonValue> tabItems;
    auto it = m_mapEvents.find(cal.sId);
    if (it != m_mapEvents.end()) {
        for (const STEvent& e : it->second) {
            if (e.bDeleted) continue;
            std::vector<CJsonValue> tab;
            s_Expand(e.v, *oSingle, nExpandUntil, tab);
            for (CJsonValue& v : tab) {
                std::optional<STWhen> s = s_oWhen(v.pFind("start")), f = s_oWhen(v.pFind("end"));
                // A series listed whole counts from its first start to its last end: kept.
                bool bSeries = !*oSingle && s_oRule(v);
                if (!s || !f || (!bSeries && (f->nMs <= nMin || s->nMs >= nMaxTime))) continue;
                if (!tabWords.empty() && !s_bMatches(v, tabWords)) continue;
                tabItems.push_back(std::move(v));
            }
        }
    }
    if (bByStart)
        std::stable_sort(tabItems.begin(), tabItems.end(), [](const CJsonValue& a, const CJsonValue& b) {
            return s_oWhen(a.pFind("start"))->nMs < s_oWhen(b.pFind("start"))->nMs;
        });
    else if (query.pField("orderBy"))
        std::stable_sort(tabItems.begin(), tabItems.end(), [](const CJsonValue& a, const CJsonValue& b) {
            return a.sText("updated") < b.sText("updated");
        });

    CJsonValue items = CJsonValue::s_Array();
    std::string sTags, sUpdated = "2030-01-01T00:00:00.000Z";
    const size_t nCount = std::min(tabItems.size(), static_cast<size_t>(nMax));
    for (size_t i = 0; i < nCount; ++i) {
        CJsonValue out = s_Output(tabItems[i]);
        sTags += out.sText("etag");
        sUpdated = std::max(sUpdated, out.sText("updated"));
        items.Push(std::move(out));
    }
    CJsonValue list = CJsonValue::s_Object();
    list.Set("kind", CJsonValue::s_String("calendar#events"));
    list.Set("etag", CJsonValue::s_String(CGoogleApis::s_sEtag(sTags)));
    list.Set("summary", CJsonValue::s_String(cal.sSummary));
    list.Set("updated", CJsonValue::s_String(sUpdated));
    list.Set("timeZone", CJsonValue::s_String(cal.sTimeZone));
    list.Set("accessRole", CJsonValue::s_String(cal.sAccessRole));
    list.Set("defaultReminders", CJsonValue::s_Array());
    if (nCount < tabItems.size())
        list.Set("nextPageToken", CJsonValue::s_String(CBase64::s_sEncode("events:" + std::to_string(nCount), true)));
    list.Set("items", std::move(items));
    res.SetJson(200, list);
}

void CCalendarEvents::Get(std::string_view svCalendar, std::string_view svEvent,
                          STResponse& res) const {
    STEvent* p = const_cast<CCalendarEvents*>(this)->pFind(svCalendar, svEvent);
    if (!p || p->bDeleted) return CGoogleApis::s_WriteNotFound(res);
    res.SetJson(200, s_Output(p->v));
}

void CCalendarEvents::Insert(const STCalendarInfo& cal, const CJsonValue& body, STResponse& res) {
    std::string sId = body.sText("id");
    if (!sId.empty()) {
        if (!s_bValidId(sId)) return s_WriteBadRequest(res, "Invalid resource id value.", "invalid");
        if (pFind(cal.sId, sId))
            return CGoogleAccounts::s_WriteError(res, 409, "ALREADY_EXISTS",
                                                 "The requested identifier already exists.",
                                                 "duplicate", {});
    } else {
        sId = s_sNewId(); // an empty id, as old clients send it, asks for a new one
    }
    const std::string sNow = s_sStamp(s_nNow());
    CJsonValue v = CJsonValue::s_Object();
    v.Set("id", CJsonValue::s_String(sId));
    v.Set("status", CJsonValue::s_String("confirmed"));
    v.Set("htmlLink", CJsonValue::s_String("https://www.google.com/calendar/event?eid=" +
                                           CBase64::s_sEncode(sId + " " + cal.sId, true)));
    v.Set("created", CJsonValue::s_String(sNow));
    v.Set("updated", CJsonValue::s_String(sNow));
    CJsonValue creator = CJsonValue::s_Object();
    creator.Set("email", CJsonValue::s_String(cal.sOwnerEmail));
    creator.Set("self", CJsonValue::s_Bool(true));
    v.Set("creator", creator);
    CJsonValue organizer = CJsonValue::s_Object();
    organizer.Set("email", CJsonValue::s_String(cal.sId));
    if (cal.sId != cal.sOwnerEmail) organizer.Set("displayName", CJsonValue::s_String(cal.sSummary));
    organizer.Set("self", CJsonValue::s_Bool(true));
    v.Set("organizer", organizer);
    s_Merge(v, s_Writable(body));
    v.Set("iCalUID", CJsonValue::s_String(sId + "@google.com"));
    v.Set("sequence", CJsonValue::s_Int(0));
    if (!v.pFind("reminders"))
        v.Set("reminders", CJsonValue::s_Object().Set("useDefault", CJsonValue::s_Bool(true)));
    v.Set("eventType", CJsonValue::s_String("default"));
    if (!s_bValidate(v, res)) return;
    res.SetJson(200, s_Output(v));
    m_mapEvents[cal.sId].push_back({std::move(v), false});
}

void CCalendarEvents::Patch(const STCalendarInfo& cal, std::string_view svEvent,
                            const CJsonValue& body, STResponse& res) {
    STEvent* p = pFind(cal.sId, svEvent);
    if (!p || p->bDeleted) return CGoogleApis::s_WriteNotFound(res);
    CJsonValue v = p->v;
    s_Merge(v, s_Writable(body));
    if (!s_bValidate(v, res)) return; // the stored event stays as it was
    if (v.pFind("start")->sSerialize() != p->v.pFind("start")->sSerialize() ||
        v.pFind("end")->sSerialize() != p->v.pFind("end")->sSerialize())
        v.Set("sequence", CJsonValue::s_Int(p->v.pFind("sequence") ? p->v.pFind("sequence")->nGetInt() + 1 : 1));
    v.Set("updated", CJsonValue::s_String(s_sStamp(s_nNow())));
    p->v = std::move(v);
    res.SetJson(200, s_Output(p->v));
}

void CCalendarEvents::Delete(std::string_view svCalendar, std::string_view svEvent,
                             STResponse& res) {
    STEvent* p = pFind(svCalendar, svEvent);
    if (!p) return CGoogleApis::s_WriteNotFound(res);
    if (p->bDeleted)
        return CGoogleAccounts::s_WriteError(res, 410, "NOT_FOUND", "Resource has been deleted",
                                             "deleted", {});
    p->bDeleted = true;
    res.SetBody(204, "", "");
}
