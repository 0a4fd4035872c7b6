// COAuthProvider: oauth.provider.test, a generic OAuth 2 provider as RFC 6749 describes it:
// /authorize (response_type code or token), /token (authorization_code and refresh_token), and
// /userinfo as a protected resource that takes its bearer tokens (RFC 6750).
#pragma once
#include <memory>

#include "OAuthServer.h"
#include "Service.h"

class CEmulator;

class COAuthProvider : public IService {
public:
    static constexpr const char* ms_pszHost = "oauth.provider.test";

    explicit COAuthProvider(CEmulator& emulator);
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);

    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

private:
    void UserInfo(const STRequest& req, STResponse& res);

    CEmulator& m_Emulator;
    COAuthServer m_OAuth;
};
