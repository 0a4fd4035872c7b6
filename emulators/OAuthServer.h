// COAuthServer: the authorisation and token endpoints of an OAuth 2 provider (RFC 6749), with
// its consent page. Google accounts and the generic provider are each one profile of it; they
// differ in the paths, in where authorisation errors go, and in the wording of the errors.
#pragma once
#include <initializer_list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "TokenStore.h"

class CEmulator;
class CForm;
struct STClient;
struct STRequest;
struct STResponse;
struct STUser;

struct STOAuthProfile {
    enum eDialect {
        eGoogle,  // errors of the authorisation request on a page, scope required, id_token always
        eRFC6749, // errors sent back to the redirect address, id_token with the "openid" scope
        eFacebook, // as eRFC6749, with a code when no response_type is given, scopes by commas
    };
    const char* pszHost;
    const char* pszTitle; // shown on the pages
    const char* pszAuthorizePath;
    const char* pszDecisionPath; // where the consent form answers
    const char* pszTokenPath;
    const char* pszIdTokenIss; // "iss" of the ID tokens
    eDialect eKind;
    CTokenStore::STStyle style;
    // A parameter "name=value" that the token endpoint requires, in its query or its body, as
    // providers that serve several tenants from one host do; null for none.
    const char* pszTokenParam;
};

class COAuthServer {
public:
    COAuthServer(CEmulator& emulator, const STOAuthProfile& profile)
        : m_Emulator(emulator), m_Profile(profile) {}

    void Reset(); // pending consents are forgotten
    // True when the request was for one of the OAuth endpoints, which then answered it.
    bool bHandle(const STRequest& req, STResponse& res);

    enum eBearer { eBearerValid, eBearerMissing, eBearerInvalid, eBearerScope };
    // Checks "Authorization: Bearer ..." (or an access_token query parameter) against the
    // tokens of one provider; with scopes, the token must hold at least one of them.
    static eBearer s_eCheckBearer(const CTokenStore& tokens, std::string_view svProvider,
                                  const STRequest& req,
                                  std::initializer_list<std::string_view> tabScopes,
                                  STGrant* pGrant);
    static std::string s_sBearerToken(const STRequest& req);

private:
    struct STPending {
        std::string sClientId;
        std::string sRedirectUri;
        bool bHasState = false;
        std::string sRawState; // echoed exactly as received
        std::vector<std::string> tabScopes;
        bool bImplicit = false;
        bool bFragment = false; // the answer after "#": the implicit flow unless response_mode=query
        long long nExpires = 0;
        CTokenStore::STPkce pkce;
    };

    void Authorize(const STRequest& req, STResponse& res);
    void Decide(const STRequest& req, STResponse& res);
    void Token(const STRequest& req, STResponse& res);
    // False, with the error answered, when the profile's token parameter is missing or wrong.
    bool bCheckTokenParam(const STRequest& req, const CForm& form, STResponse& res) const;
    void GrantCode(const CForm& form, const STClient& client, STResponse& res);
    void GrantRefresh(const CForm& form, const STClient& client, STResponse& res);

    // Sends the browser back to the client with the code or the token, or with a denial.
    void Approve(const STPending& pending, const STUser& user, STResponse& res);
    static void s_Redirect(const STPending& pending, std::string sParams, STResponse& res);
    void RedirectError(const STPending& pending, std::string_view svError,
                       std::string_view svDescription, STResponse& res) const;
    void ErrorPage(int nStatus, std::string_view svError, std::string_view svDescription,
                   STResponse& res) const;
    void TokenAnswer(const STGrant& g, const CTokenStore::STTokens& t, STResponse& res) const;
    std::string sIdToken(const STGrant& g, long long nExpiresIn) const;
    static void s_TokenError(STResponse& res, int nStatus, std::string_view svError,
                             std::string_view svDescription);
    bool bGoogle() const { return m_Profile.eKind == STOAuthProfile::eGoogle; }

    CEmulator& m_Emulator;
    const STOAuthProfile& m_Profile;
    std::mutex m_mtx;
    std::map<std::string, STPending, std::less<>> m_mapPending;
};
