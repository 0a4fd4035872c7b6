// CSeed: the data the emulators start from and go back to on reset: users, OAuth clients,
// tokens granted beforehand, the calendars, and each service's own section of the same JSON
// document.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "JsonValue.h"

struct STUser {
    std::string sId;
    std::string sEmail;
    std::string sName;
};

struct STClient {
    std::string sId;
    std::string sSecret;
    std::string sName;
    std::vector<std::string> tabRedirectUris; // matched exactly
    bool bLoopback = false;                   // any http://127.0.0.1:PORT/... and the like
    std::vector<std::string> tabProviders;    // hosts that know the client; empty: all of them

    bool bKnownTo(std::string_view svProvider) const;
    bool bAcceptsRedirect(std::string_view svUri) const;
    // http://127.0.0.1, http://localhost or http://[::1], any port, any path, no fragment.
    static bool s_bIsLoopback(std::string_view svUri);
};

struct STSeedGrant {
    std::string sProvider;
    std::string sClientId;
    std::string sUser;  // e-mail
    std::string sScope; // scopes joined by spaces
    std::string sAccessToken;
    std::string sRefreshToken;
};

// One entry of a user's calendar list, from the seed's "calendar" section.
struct STSeedCalendar {
    std::string sUser; // e-mail of the seeded user whose list holds it
    std::string sId;
    std::string sSummary;
    std::string sDescription; // "" when it has none
    std::string sTimeZone;
    std::string sAccessRole; // freeBusyReader, reader, writer or owner
    std::string sColorId;
    std::string sBackgroundColor;
    std::string sForegroundColor;
    bool bPrimary = false;
    bool bHidden = false;
    bool bSelected = true;
};

class CSeed {
public:
    static std::optional<CSeed> s_oParse(std::string_view svText, std::string* pError);
    static std::optional<CSeed> s_oLoadFile(const std::string& sPath, std::string* pError);
    // The repository's emulators/seed.json, built into the program.
    static std::string_view s_svDefault();

    const std::vector<STUser>& Users() const { return m_tabUsers; }
    const STUser* pFindUser(std::string_view svEmailOrId) const;
    const STUser& DefaultUser() const { return m_tabUsers.front(); }
    const STClient* pFindClient(std::string_view svProvider, std::string_view svId) const;
    const std::vector<STClient>& Clients() const { return m_tabClients; }
    const std::vector<STSeedGrant>& Grants() const { return m_tabGrants; }
    const std::vector<STSeedCalendar>& Calendars() const { return m_tabCalendars; }
    long long nTokenLifetime() const { return m_nTokenLifetime; }
    // The whole document: each service reads its own section from it.
    const CJsonValue& Document() const { return m_Document; }

private:
    static bool s_bParseCalendars(const CJsonValue& doc, CSeed& seed, std::string* pError);

    CJsonValue m_Document;
    std::vector<STUser> m_tabUsers;
    std::vector<STClient> m_tabClients;
    std::vector<STSeedGrant> m_tabGrants;
    std::vector<STSeedCalendar> m_tabCalendars;
    long long m_nTokenLifetime = 3599;
};
