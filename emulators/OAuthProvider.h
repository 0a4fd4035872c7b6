// COAuthProvider: a generic OAuth 2 provider as RFC 6749 describes it, in two profiles.
// oauth.provider.test: /authorize (response_type code or token, PKCE when a challenge is sent),
// /token (authorization_code and refresh_token), and /userinfo as a protected resource that
// takes its bearer tokens (RFC 6750). login.tenant.test: the same under /oauth2/, serving
// several tenants, so that its token endpoint requires "tenant=kvggl" in its query or body.
#pragma once
#include <memory>

#include "OAuthServer.h"
#include "Service.h"

class CEmulator;

class COAuthProvider : public IService {
public:
    static constexpr const char* ms_pszHost = "oauth.provider.test";
    static constexpr const char* ms_pszHostTenant = "login.tenant.test";

    COAuthProvider(CEmulator& emulator, const STOAuthProfile& profile);
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);
    static std::unique_ptr<IService> s_pCreateTenant(CEmulator& emulator);

    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

private:
    void UserInfo(const STRequest& req, STResponse& res);

    CEmulator& m_Emulator;
    const STOAuthProfile& m_Profile;
    COAuthServer m_OAuth;
};
