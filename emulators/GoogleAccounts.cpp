#include "GoogleAccounts.h"

#include "Emulator.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "TokenStore.h"

namespace {
const STOAuthProfile s_Profile = {
    CGoogleAccounts::ms_pszHost, "Google Accounts",      "/o/oauth2/auth",
    "/o/oauth2/approval",        "/o/oauth2/token",      "https://accounts.google.com",
    STOAuthProfile::eGoogle,
    {"4/", "ya29.", "1//"}, // the shapes Google's codes and tokens have
    nullptr,
};

const char s_szRealm[] = "Bearer realm=\"https://accounts.google.com/\"";
} // namespace

CGoogleAccounts::CGoogleAccounts(CEmulator& emulator) : m_OAuth(emulator, s_Profile) {}

std::unique_ptr<IService> CGoogleAccounts::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CGoogleAccounts>(emulator);
}

void CGoogleAccounts::vReset() {
    m_OAuth.Reset();
}

void CGoogleAccounts::vHandle(const STRequest& req, STResponse& res) {
    if (m_OAuth.bHandle(req, res))
        return;
    s_WriteError(res, 404, "NOT_FOUND", "The requested URL " + req.sPath + " was not found.",
                 "notFound", {});
}

void CGoogleAccounts::s_WriteError(STResponse& res, int nCode, std::string_view svStatus,
                                   std::string_view svMessage, std::string_view svReason,
                                   std::string_view svDetail) {
    CJsonValue item = CJsonValue::s_Object();
    item.Set("message", CJsonValue::s_String(std::string(svDetail.empty() ? svMessage : svDetail)));
    item.Set("domain", CJsonValue::s_String("global"));
    item.Set("reason", CJsonValue::s_String(std::string(svReason)));
    if (nCode == 401) {
        item.Set("location", CJsonValue::s_String("Authorization"));
        item.Set("locationType", CJsonValue::s_String("header"));
    }
    CJsonValue error = CJsonValue::s_Object();
    error.Set("code", CJsonValue::s_Int(nCode));
    error.Set("message", CJsonValue::s_String(std::string(svMessage)));
    error.Set("errors", CJsonValue::s_Array().Push(std::move(item)));
    error.Set("status", CJsonValue::s_String(std::string(svStatus)));
    res.SetJson(nCode, CJsonValue::s_Object().Set("error", std::move(error)));
}

bool CGoogleAccounts::s_bAuthorise(CEmulator& emulator, const STRequest& req, STResponse& res,
                                   std::initializer_list<std::string_view> tabScopes,
                                   STGrant* pGrant) {
    switch (COAuthServer::s_eCheckBearer(emulator.Tokens(), ms_pszHost, req, tabScopes, pGrant)) {
    case COAuthServer::eBearerValid:
        return true;
    case COAuthServer::eBearerMissing:
        s_WriteError(res, 401, "UNAUTHENTICATED",
                     "Request is missing required authentication credential. Expected OAuth 2 "
                     "access token, login cookie or other valid authentication credential.",
                     "required", "Login Required.");
        res.AddHeader("WWW-Authenticate", s_szRealm);
        return false;
    case COAuthServer::eBearerInvalid:
        s_WriteError(res, 401, "UNAUTHENTICATED",
                     "Request had invalid authentication credentials. Expected OAuth 2 access "
                     "token, login cookie or other valid authentication credential.",
                     "authError", "Invalid Credentials");
        res.AddHeader("WWW-Authenticate", std::string(s_szRealm) + ", error=\"invalid_token\"");
        return false;
    case COAuthServer::eBearerScope: {
        std::string sScopes;
        for (std::string_view sv : tabScopes)
            sScopes += (sScopes.empty() ? "" : " ") + std::string(sv);
        s_WriteError(res, 403, "PERMISSION_DENIED",
                     "Request had insufficient authentication scopes.", "insufficientPermissions",
                     "Insufficient Permission");
        res.AddHeader("WWW-Authenticate", std::string(s_szRealm) +
                                              ", error=\"insufficient_scope\", scope=\"" + sScopes +
                                              "\"");
        return false;
    }
    }
    return false;
}
