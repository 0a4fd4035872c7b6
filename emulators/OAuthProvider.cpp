#include "OAuthProvider.h"

#include "Emulator.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "TokenStore.h"

namespace {
const STOAuthProfile s_Profile = {
    COAuthProvider::ms_pszHost,
    "OAuth Provider",
    "/authorize",
    "/authorize/decision",
    "/token",
    "https://oauth.provider.test",
    STOAuthProfile::eRFC6749,
    {"c-", "at-", "rt-"},
    nullptr,
};

const STOAuthProfile s_ProfileTenant = {
    COAuthProvider::ms_pszHostTenant,
    "Tenant Login",
    "/oauth2/authorize",
    "/oauth2/authorize/decision",
    "/oauth2/token",
    "https://login.tenant.test",
    STOAuthProfile::eRFC6749,
    {"tc-", "tat-", "trt-"},
    "tenant=kvggl",
};

void s_Error(STResponse& res, int nStatus, const char* pszError, const char* pszDescription) {
    CJsonValue v = CJsonValue::s_Object();
    v.Set("error", CJsonValue::s_String(pszError));
    v.Set("error_description", CJsonValue::s_String(pszDescription));
    res.SetJson(nStatus, v);
}
} // namespace

COAuthProvider::COAuthProvider(CEmulator& emulator, const STOAuthProfile& profile)
    : m_Emulator(emulator), m_Profile(profile), m_OAuth(emulator, profile) {}

std::unique_ptr<IService> COAuthProvider::s_pCreate(CEmulator& emulator) {
    return std::make_unique<COAuthProvider>(emulator, s_Profile);
}

std::unique_ptr<IService> COAuthProvider::s_pCreateTenant(CEmulator& emulator) {
    return std::make_unique<COAuthProvider>(emulator, s_ProfileTenant);
}

void COAuthProvider::vReset() {
    m_OAuth.Reset();
}

void COAuthProvider::vHandle(const STRequest& req, STResponse& res) {
    if (m_OAuth.bHandle(req, res))
        return;
    if (req.sPath == (m_Profile.pszTokenParam ? "/oauth2/userinfo" : "/userinfo"))
        return UserInfo(req, res);
    s_Error(res, 404, "not_found", "No such endpoint.");
}

void COAuthProvider::UserInfo(const STRequest& req, STResponse& res) {
    if (req.sMethod != "GET" && req.sMethod != "HEAD" && req.sMethod != "POST") {
        s_Error(res, 405, "invalid_request", "GET or POST only.");
        res.AddHeader("Allow", "GET, HEAD, POST");
        return;
    }
    STGrant g;
    std::string sRealm = std::string("Bearer realm=\"") + m_Profile.pszHost + "\"";
    switch (COAuthServer::s_eCheckBearer(m_Emulator.Tokens(), m_Profile.pszHost, req, {}, &g)) {
    case COAuthServer::eBearerMissing: // RFC 6750, 3.1: no error code when nothing was sent
        s_Error(res, 401, "invalid_request", "No access token.");
        res.AddHeader("WWW-Authenticate", sRealm);
        return;
    case COAuthServer::eBearerInvalid:
    case COAuthServer::eBearerScope:
        s_Error(res, 401, "invalid_token", "The access token is invalid or expired.");
        res.AddHeader("WWW-Authenticate", sRealm + ", error=\"invalid_token\"");
        return;
    case COAuthServer::eBearerValid:
        break;
    }
    const STUser* pUser = m_Emulator.Seed().pFindUser(g.sEmail);
    CJsonValue v = CJsonValue::s_Object();
    v.Set("sub", CJsonValue::s_String(g.sUserId));
    v.Set("email", CJsonValue::s_String(g.sEmail));
    v.Set("name", CJsonValue::s_String(pUser ? pUser->sName : g.sEmail));
    v.Set("scope", CJsonValue::s_String(g.sScope()));
    res.SetJson(200, v);
}
