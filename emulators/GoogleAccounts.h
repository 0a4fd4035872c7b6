// CGoogleAccounts: accounts.google.com, the OAuth 2 side of every Google service: the consent
// page at /o/oauth2/auth and the token endpoint /o/oauth2/token. The Google API emulators
// check their bearer tokens through s_bAuthorise.
#pragma once
#include <initializer_list>
#include <memory>
#include <string_view>

#include "OAuthServer.h"
#include "Service.h"

class CEmulator;
struct STGrant;

class CGoogleAccounts : public IService {
public:
    static constexpr const char* ms_pszHost = "accounts.google.com";

    explicit CGoogleAccounts(CEmulator& emulator);
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);

    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

    // For the Google API emulators: true when the request carries a valid access token of
    // accounts.google.com holding at least one of the scopes (any scope when none is given).
    // Otherwise the answer is written, 401 or 403 in Google's JSON error format, and false
    // comes back.
    static bool s_bAuthorise(CEmulator& emulator, const STRequest& req, STResponse& res,
                             std::initializer_list<std::string_view> tabScopes,
                             STGrant* pGrant = nullptr);
    // Google's JSON error: {"error": {"code", "message", "errors": [...], "status"}}.
    static void s_WriteError(STResponse& res, int nCode, std::string_view svStatus,
                             std::string_view svMessage, std::string_view svReason,
                             std::string_view svDetail);

private:
    COAuthServer m_OAuth;
};
