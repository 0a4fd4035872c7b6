// CGoogleCalendar: version 3 of the Calendar API, www.googleapis.com/calendar/v3/. For now the
// user's calendar list, read only: GET users/me/calendarList (with maxResults, pageToken,
// minAccessRole, showHidden) and GET users/me/calendarList/ID, for a bearer token of
// accounts.google.com holding a calendar scope. Each user has the calendars of the seed.
#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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
    void GetEntry(std::string_view svId, const STGrant& g, STResponse& res) const;
    static CJsonValue s_Entry(const STSeedCalendar& c);

    CEmulator& m_Emulator;
    // Filled by vReset only, which never overlaps a request: the handlers read it unlocked.
    std::vector<STSeedCalendar> m_tabCalendars;
};
