// CCalendarEvents: the events of every calendar of the Calendar v3 emulator, from the seed's
// "calendar": {"events": [...]} on. Lists with timeMin, timeMax, q, singleEvents (daily and
// weekly recurrences with COUNT, UNTIL or INTERVAL expanded into instances),
// orderBy=startTime and maxResults up to 2500; insert, get, patch with merge semantics (a
// null member clears the field), delete with 204 and 410 after. Answers and errors as the
// real service writes them. The caller locks.
#pragma once
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "JsonValue.h"

class CForm;
struct STResponse;

// What a list reply says of its calendar.
struct STCalendarInfo {
    std::string sId;
    std::string sSummary;
    std::string sTimeZone;
    std::string sAccessRole;
    std::string sOwnerEmail;
};

class CCalendarEvents {
public:
    void Reset(const CJsonValue& seedDocument);
    void List(const STCalendarInfo& cal, const CForm& query, STResponse& res) const;
    void Get(std::string_view svCalendar, std::string_view svEvent, STResponse& res) const;
    void Insert(const STCalendarInfo& cal, const CJsonValue& body, STResponse& res);
    void Patch(const STCalendarInfo& cal, std::string_view svEvent, const CJsonValue& body,
               STResponse& res);
    void Delete(std::string_view svCalendar, std::string_view svEvent, STResponse& res);
    void DropCalendar(std::string_view svCalendar) { m_mapEvents.erase(std::string(svCalendar)); }

    // The JSON the templates of old clients send: strict JSON, except that a key may stand
    // unquoted ({"date":"2030-06-04", dateTime:null}), as the service's reader took it.
    static std::optional<CJsonValue> s_oParseLenient(std::string_view sv, std::string* pError);
    // Milliseconds since 1970 of "2030-06-04T10:00:00.000+02:00" (a zone is required) and
    // the zone in minutes; of "2030-06-04" at midnight UTC when bDate.
    static std::optional<long long> s_oParseTime(std::string_view sv, bool bDate,
                                                 int* pnOffset = nullptr);
    static std::string s_sFormatTime(long long nMs, bool bDate, int nOffset);

private:
    struct STEvent {
        CJsonValue v;
        bool bDeleted = false;
    };
    STEvent* pFind(std::string_view svCalendar, std::string_view svEvent);
    // Checks and completes a resource after an insert or a patch; false with the error written.
    static bool s_bValidate(CJsonValue& v, STResponse& res);
    // The resource with its etag, members in the service's order.
    static CJsonValue s_Output(const CJsonValue& v);
    // The event itself, or its instances when it recurs and the list asks for single events.
    static void s_Expand(const CJsonValue& v, bool bSingle, long long nUntil,
                         std::vector<CJsonValue>& out);

    std::map<std::string, std::vector<STEvent>> m_mapEvents;
};
