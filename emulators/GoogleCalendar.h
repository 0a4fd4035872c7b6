// CGoogleCalendar: version 3 of the Calendar API, www.googleapis.com/calendar/v3/, for a bearer
// token of accounts.google.com holding a calendar scope that allows the call. The user's
// calendar list: GET users/me/calendarList (with maxResults, pageToken, minAccessRole,
// showHidden) and GET users/me/calendarList/ID. Calendars: POST calendars, GET, PATCH and
// DELETE calendars/ID, the list following. Events: calendars/ID/events and
// calendars/ID/events/EVENT, told in CalendarEvents.h. Each user has the calendars of the seed.
#pragma once
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "CalendarEvents.h"
#include "Seed.h"
#include "Service.h"

class CEmulator;
class CJsonValue;
struct STGrant;

class CGoogleCalendar : public IService {
public:
    static constexpr const char* ms_pszPrefix = "/calendar/v3/";

    explicit CGoogleCalendar(CEmulator& emulator) : m_Emulator(emulator) {}
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);

    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

    // The most entries one page of the list holds, whatever maxResults asks.
    static constexpr long long ms_nMaxPage = 250;
    static constexpr long long ms_nDefaultPage = 100;

private:
    void ListEntries(const STRequest& req, const STGrant& g, STResponse& res) const;
    void GetEntry(std::string_view svId, const STGrant& g, STResponse& res);
    static CJsonValue s_Entry(const STSeedCalendar& c);
    static CJsonValue s_Head(const STSeedCalendar& c, const char* pszKind);
    static CJsonValue s_Calendar(const STSeedCalendar& c);
    static CJsonValue s_Tail(CJsonValue v);
    // The user's entry for a calendar id ("primary" naming the user's own), or null.
    STSeedCalendar* pEntry(std::string_view svId, const STGrant& g);
    void Calendars(const STRequest& req, std::string_view svId, const STGrant& g, STResponse& res);
    void Events(const STRequest& req, const STSeedCalendar& c, std::string_view svEvent,
                const STGrant& g, STResponse& res);

    CEmulator& m_Emulator;
    std::mutex m_mtx; // the handlers run on several server threads
    std::vector<STSeedCalendar> m_tabCalendars;
    CCalendarEvents m_Events;
};
