#include "OAuthServer.h"

#include <algorithm>

#include <chrono>

#include "Base64.h"
#include "ConsentPage.h"
#include "Emulator.h"
#include "Form.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "Seed.h"
#include "Text.h"

namespace {
const long long s_nConsentLifetime = 600;
const size_t s_nMaxPending = 10000; // a page reloaded forever must not grow memory forever

long long s_nNow() {
    using namespace std::chrono;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

bool s_bIsGet(const STRequest& req) {
    return req.sMethod == "GET" || req.sMethod == "HEAD";
}
} // namespace

void COAuthServer::Reset() {
    std::lock_guard lock(m_mtx);
    m_mapPending.clear();
}

bool COAuthServer::bHandle(const STRequest& req, STResponse& res) {
    if (req.sPath == m_Profile.pszAuthorizePath)
        Authorize(req, res);
    else if (req.sPath == m_Profile.pszDecisionPath)
        Decide(req, res);
    else if (req.sPath == m_Profile.pszTokenPath)
        Token(req, res);
    else
        return false;
    return true;
}

// ---- pages and redirects

void COAuthServer::ErrorPage(int nStatus, std::string_view svError, std::string_view svDescription,
                             STResponse& res) const {
    res.SetBody(nStatus, "text/html; charset=utf-8",
                CConsentPage::s_sRenderError(m_Profile.pszTitle, svError, svDescription));
}

void COAuthServer::s_Redirect(const STPending& pending, std::string sParams, STResponse& res) {
    if (pending.bHasState)
        sParams += "&state=" + pending.sRawState;
    std::string sLocation = pending.sRedirectUri;
    if (pending.bFragment) {
        sLocation += '#'; // the token stays in the browser (RFC 6749, 4.2.2)
    } else {
        char cLast = sLocation.empty() ? '\0' : sLocation.back();
        if (sLocation.find('?') == std::string::npos)
            sLocation += '?';
        else if (cLast != '?' && cLast != '&')
            sLocation += '&';
    }
    res.SetRedirect(sLocation + sParams);
}

void COAuthServer::RedirectError(const STPending& pending, std::string_view svError,
                                 std::string_view svDescription, STResponse& res) const {
    std::string s = "error=" + std::string(svError);
    if (!svDescription.empty())
        s += "&error_description=" + CForm::s_sEncode(svDescription);
    s_Redirect(pending, std::move(s), res);
}

void COAuthServer::Approve(const STPending& pending, const STUser& user, STResponse& res) {
    STGrant g{m_Profile.pszHost, pending.sClientId, user.sId, user.sEmail, pending.tabScopes};
    CTokenStore& tokens = m_Emulator.Tokens();
    if (pending.bImplicit) {
        CTokenStore::STTokens t = tokens.NewTokens(g, false, m_Profile.style);
        std::string s = "access_token=" + CForm::s_sEncode(t.sAccessToken) +
                        "&token_type=Bearer&expires_in=" + std::to_string(t.nExpiresIn);
        if (!g.tabScopes.empty())
            s += "&scope=" + CForm::s_sEncode(g.sScope());
        s_Redirect(pending, std::move(s), res);
    } else {
        std::string sCode = tokens.sNewCode(g, pending.sRedirectUri, m_Profile.style, pending.pkce);
        s_Redirect(pending, "code=" + CForm::s_sEncode(sCode), res);
    }
}

// ---- the authorisation endpoint

void COAuthServer::Authorize(const STRequest& req, STResponse& res) {
    if (!s_bIsGet(req) && req.sMethod != "POST") {
        ErrorPage(405, "invalid_request", req.sMethod + " is not allowed here", res);
        res.AddHeader("Allow", "GET, HEAD, POST");
        return;
    }
    std::string sError;
    auto oForm = CForm::s_oParse(s_bIsGet(req) ? req.sQuery : req.sBody, CForm::eLenient, &sError);
    if (!oForm)
        return ErrorPage(400, "invalid_request", sError, res);
    const CForm& form = *oForm;
    const CSeed& seed = m_Emulator.Seed();

    // Until the client and its redirect address are known good, errors stay on this page:
    // sending them to an unchecked address would make an open redirector (RFC 6749, 4.1.2.1).
    std::string sClientId = form.sValue("client_id");
    if (sClientId.empty())
        return ErrorPage(400, "invalid_request", "Missing required parameter: client_id", res);
    const STClient* pClient = seed.pFindClient(m_Profile.pszHost, sClientId);
    if (!pClient)
        return ErrorPage(401, "invalid_client", "The OAuth client was not found.", res);
    STPending pending;
    pending.sClientId = sClientId;
    pending.sRedirectUri = form.sValue("redirect_uri");
    if (pending.sRedirectUri.empty())
        return ErrorPage(400, "invalid_request", "Missing required parameter: redirect_uri", res);
    if (!pClient->bAcceptsRedirect(pending.sRedirectUri))
        return ErrorPage(400, "redirect_uri_mismatch",
                         "The redirect URI in the request, " + pending.sRedirectUri +
                             ", does not match the ones authorized for the OAuth client.",
                         res);
    if (const CForm::STField* pState = form.pField("state")) {
        pending.bHasState = true;
        pending.sRawState = pState->sRaw;
    }
    std::string sType = form.sValue("response_type");
    std::string sScope = form.sValue("scope");
    if (m_Profile.eKind == STOAuthProfile::eFacebook) {
        // The dialogue answers with a code unless told otherwise, and lists scopes by commas.
        if (sType.empty())
            sType = "code";
        std::replace(sScope.begin(), sScope.end(), ',', ' ');
    }
    pending.bImplicit = sType == "token";
    // A client that cannot read a fragment (a loopback listener) asks for the query instead
    // (OAuth 2.0 Multiple Response Type Encoding Practices, response_mode).
    pending.bFragment = pending.bImplicit && form.sValue("response_mode") != "query";
    // PKCE (RFC 7636): a challenge sent is kept with the code; plain when no method is named.
    pending.pkce.sChallenge = form.sValue("code_challenge");
    if (!pending.pkce.sChallenge.empty())
        pending.pkce.sMethod = form.bHas("code_challenge_method")
                                   ? form.sValue("code_challenge_method")
                                   : std::string("plain");
    pending.tabScopes = STGrant::s_tabSplitScopes(sScope);

    const char* pszError = nullptr;
    std::string sDescription;
    if (sType.empty()) {
        pszError = "invalid_request";
        sDescription = "Missing required parameter: response_type";
    } else if (sType != "code" && sType != "token") {
        pszError = "unsupported_response_type";
        sDescription = "Unsupported response_type: " + sType;
    } else if (!pending.pkce.sChallenge.empty() && pending.pkce.sMethod != "S256" &&
               pending.pkce.sMethod != "plain") {
        pszError = "invalid_request";
        sDescription = "Transform algorithm not supported: " + pending.pkce.sMethod;
    } else if (bGoogle() && pending.tabScopes.empty()) {
        pszError = "invalid_request";
        sDescription = "Missing required parameter: scope";
    }
    if (pszError) {
        if (bGoogle())
            return ErrorPage(400, pszError, sDescription, res);
        return RedirectError(pending, pszError, sDescription, res);
    }

    const STUser* pUser = seed.pFindUser(form.sValue("login_hint"));
    const STUser& user = pUser ? *pUser : seed.DefaultUser();
    if (m_Emulator.Options().bAutoApprove)
        return Approve(pending, user, res);

    std::string sTransaction = CText::s_sRandomToken(32);
    {
        std::lock_guard lock(m_mtx);
        long long nNow = s_nNow();
        for (auto it = m_mapPending.begin(); it != m_mapPending.end();)
            it = it->second.nExpires < nNow ? m_mapPending.erase(it) : std::next(it);
        if (m_mapPending.size() >= s_nMaxPending)
            m_mapPending.erase(m_mapPending.begin());
        pending.nExpires = nNow + s_nConsentLifetime;
        m_mapPending[sTransaction] = pending;
    }
    STConsentView view;
    view.sProviderTitle = m_Profile.pszTitle;
    view.sClientName = pClient->sName;
    view.sRedirectUri = pending.sRedirectUri;
    view.sAction = req.sPrefix + m_Profile.pszDecisionPath;
    view.sTransaction = sTransaction;
    view.tabScopes = pending.tabScopes;
    view.pUsers = &seed.Users();
    view.sSelectedEmail = user.sEmail;
    res.SetBody(200, "text/html; charset=utf-8", CConsentPage::s_sRender(view));
    res.AddHeader("Cache-Control", "no-store");
}

// ---- the consent form's answer

void COAuthServer::Decide(const STRequest& req, STResponse& res) {
    if (req.sMethod != "GET" && req.sMethod != "POST") {
        ErrorPage(405, "invalid_request", req.sMethod + " is not allowed here", res);
        res.AddHeader("Allow", "GET, POST");
        return;
    }
    std::string sError;
    auto oForm =
        CForm::s_oParse(req.sMethod == "GET" ? req.sQuery : req.sBody, CForm::eStrict, &sError);
    if (!oForm)
        return ErrorPage(400, "invalid_request", sError, res);
    std::string sDecision = oForm->sValue("decision");
    if (sDecision != "approve" && sDecision != "deny")
        return ErrorPage(400, "invalid_request", "The decision must be approve or deny.", res);
    STPending pending;
    {
        std::lock_guard lock(m_mtx);
        auto it = m_mapPending.find(oForm->sValue("txn"));
        if (it == m_mapPending.end() || it->second.nExpires < s_nNow())
            return ErrorPage(400, "invalid_request",
                             "This sign-in request has expired or was already answered.", res);
        pending = std::move(it->second);
        m_mapPending.erase(it);
    }
    if (sDecision == "deny")
        return RedirectError(pending, "access_denied",
                             m_Profile.eKind == STOAuthProfile::eRFC6749
                                 ? "The resource owner denied the request."
                                 : "", res);
    const CSeed& seed = m_Emulator.Seed();
    const STUser* pUser = seed.pFindUser(oForm->sValue("user"));
    Approve(pending, pUser ? *pUser : seed.DefaultUser(), res);
}

// ---- the token endpoint

void COAuthServer::s_TokenError(STResponse& res, int nStatus, std::string_view svError,
                                std::string_view svDescription) {
    CJsonValue v = CJsonValue::s_Object();
    v.Set("error", CJsonValue::s_String(std::string(svError)));
    v.Set("error_description", CJsonValue::s_String(std::string(svDescription)));
    res.SetJson(nStatus, v);
    res.AddHeader("Cache-Control", "no-store");
    res.AddHeader("Pragma", "no-cache");
}

std::string COAuthServer::sIdToken(const STGrant& g, long long nExpiresIn) const {
    // Unsigned ("alg": "none"): the emulators hold no keys, and clients here read the claims.
    CJsonValue header = CJsonValue::s_Object();
    header.Set("alg", CJsonValue::s_String("none"));
    header.Set("typ", CJsonValue::s_String("JWT"));
    long long nNow = s_nNow();
    const STUser* pUser = m_Emulator.Seed().pFindUser(g.sEmail);
    CJsonValue claims = CJsonValue::s_Object();
    claims.Set("iss", CJsonValue::s_String(m_Profile.pszIdTokenIss));
    claims.Set("azp", CJsonValue::s_String(g.sClientId));
    claims.Set("aud", CJsonValue::s_String(g.sClientId));
    claims.Set("sub", CJsonValue::s_String(g.sUserId));
    claims.Set("email", CJsonValue::s_String(g.sEmail));
    claims.Set("email_verified", CJsonValue::s_Bool(true));
    if (pUser)
        claims.Set("name", CJsonValue::s_String(pUser->sName));
    claims.Set("iat", CJsonValue::s_Int(nNow));
    claims.Set("exp", CJsonValue::s_Int(nNow + nExpiresIn));
    return CBase64::s_sEncode(header.sSerialize(), true) + "." +
           CBase64::s_sEncode(claims.sSerialize(), true) + ".";
}

void COAuthServer::TokenAnswer(const STGrant& g, const CTokenStore::STTokens& t,
                               STResponse& res) const {
    CJsonValue v = CJsonValue::s_Object();
    v.Set("access_token", CJsonValue::s_String(t.sAccessToken));
    v.Set("expires_in", CJsonValue::s_Int(t.nExpiresIn));
    if (!t.sRefreshToken.empty())
        v.Set("refresh_token", CJsonValue::s_String(t.sRefreshToken));
    if (!g.tabScopes.empty())
        v.Set("scope", CJsonValue::s_String(g.sScope()));
    v.Set("token_type", CJsonValue::s_String("Bearer"));
    if (bGoogle() || g.bHasScope("openid"))
        v.Set("id_token", CJsonValue::s_String(sIdToken(g, t.nExpiresIn)));
    res.SetJson(200, v);
    res.AddHeader("Cache-Control", "no-store");
    res.AddHeader("Pragma", "no-cache");
}

void COAuthServer::Token(const STRequest& req, STResponse& res) {
    if (req.sMethod != "POST") {
        s_TokenError(res, 405, "invalid_request", "The token endpoint accepts POST only.");
        res.AddHeader("Allow", "POST");
        return;
    }
    std::string sType = req.sHeader("Content-Type");
    std::string_view svType = CText::s_svTrim(sType);
    if (!CText::s_bIStartsWith(svType, "application/x-www-form-urlencoded"))
        return s_TokenError(res, 400, "invalid_request",
                            "The body must be application/x-www-form-urlencoded.");
    std::string sError;
    auto oForm = CForm::s_oParse(req.sBody, CForm::eStrict, &sError);
    if (!oForm)
        return s_TokenError(res, 400, "invalid_request", "Malformed body: " + sError);
    const CForm& form = *oForm;

    std::string sGrantType = form.sValue("grant_type");
    if (sGrantType != "authorization_code" && sGrantType != "refresh_token") {
        if (sGrantType.empty() && !bGoogle())
            return s_TokenError(res, 400, "invalid_request",
                                "Missing required parameter: grant_type");
        return s_TokenError(res, 400, "unsupported_grant_type",
                            "Invalid grant_type: " + sGrantType);
    }

    // Client authentication: HTTP Basic (RFC 6749, 2.3.1) or the body, never both.
    std::string sClientId = form.sValue("client_id");
    std::string sSecret = form.sValue("client_secret");
    bool bBasic = false;
    std::string sAuthorization = req.sHeader("Authorization");
    std::string_view svAuth = CText::s_svTrim(sAuthorization);
    if (CText::s_bIStartsWith(svAuth, "Basic ")) {
        bBasic = true;
        auto oPair = CBase64::s_oDecode(CText::s_svTrim(svAuth.substr(6)));
        size_t nColon = oPair ? oPair->find(':') : std::string::npos;
        if (nColon == std::string::npos) {
            s_TokenError(res, 401, "invalid_client", "Malformed Basic credentials.");
            res.AddHeader("WWW-Authenticate",
                          std::string("Basic realm=\"") + m_Profile.pszHost + "\"");
            return;
        }
        std::string sBasicId =
            CForm::s_oDecode(oPair->substr(0, nColon), CForm::eLenient).value_or("");
        std::string sBasicSecret =
            CForm::s_oDecode(oPair->substr(nColon + 1), CForm::eLenient).value_or("");
        if (form.bHas("client_secret") || (form.bHas("client_id") && sClientId != sBasicId))
            return s_TokenError(res, 400, "invalid_request",
                                "The client authenticated in more than one way.");
        sClientId = sBasicId;
        sSecret = sBasicSecret;
    }
    if (sClientId.empty())
        return s_TokenError(res, 400, "invalid_request",
                            "Could not determine client ID from request.");
    const STClient* pClient = m_Emulator.Seed().pFindClient(m_Profile.pszHost, sClientId);
    if (!pClient || sSecret != pClient->sSecret) {
        s_TokenError(res, 401, "invalid_client",
                     pClient ? "Unauthorized" : "The OAuth client was not found.");
        if (bBasic)
            res.AddHeader("WWW-Authenticate",
                          std::string("Basic realm=\"") + m_Profile.pszHost + "\"");
        return;
    }
    if (!bCheckTokenParam(req, form, res))
        return;
    if (sGrantType == "authorization_code")
        GrantCode(form, *pClient, res);
    else
        GrantRefresh(form, *pClient, res);
}

bool COAuthServer::bCheckTokenParam(const STRequest& req, const CForm& form,
                                    STResponse& res) const {
    if (!m_Profile.pszTokenParam)
        return true;
    std::string_view svParam = m_Profile.pszTokenParam;
    std::string sName(svParam.substr(0, svParam.find('=')));
    std::string_view svExpected = svParam.substr(sName.size() + 1);
    auto oQuery = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr);
    std::string sValue = form.bHas(sName) ? form.sValue(sName)
                         : oQuery         ? oQuery->sValue(sName)
                                          : std::string();
    if (sValue.empty()) {
        s_TokenError(res, 400, "invalid_request", "Missing required parameter: " + sName);
        return false;
    }
    if (sValue != svExpected) {
        s_TokenError(res, 400, "invalid_request", "Unknown " + sName + ": " + sValue);
        return false;
    }
    return true;
}

void COAuthServer::GrantCode(const CForm& form, const STClient& client, STResponse& res) {
    std::string sCode = form.sValue("code");
    if (sCode.empty())
        return s_TokenError(res, 400, "invalid_request", "Missing required parameter: code");
    if (!form.bHas("redirect_uri"))
        return s_TokenError(res, 400, "invalid_request",
                            "Missing required parameter: redirect_uri");
    STGrant g;
    CTokenStore::STTokens t;
    CTokenStore::eVerdict e = m_Emulator.Tokens().eRedeemCode(
        sCode, m_Profile.pszHost, client.sId, form.sValue("redirect_uri"),
        form.sValue("code_verifier"), m_Profile.style, g, t);
    switch (e) {
    case CTokenStore::eValid:
        return TokenAnswer(g, t, res);
    case CTokenStore::eWrongRedirect:
        if (bGoogle())
            return s_TokenError(res, 400, "redirect_uri_mismatch", "Bad Request");
        return s_TokenError(res, 400, "invalid_grant",
                            "redirect_uri differs from the one of the authorization request.");
    case CTokenStore::eWrongVerifier:
        return s_TokenError(res, 400, "invalid_grant", "PKCE verification failed.");
    case CTokenStore::eUsed:
        return s_TokenError(res, 400, "invalid_grant",
                            bGoogle() ? "Bad Request" : "The authorization code was already used.");
    default:
        return s_TokenError(res, 400, "invalid_grant",
                            bGoogle() ? "Bad Request"
                                      : "The authorization code is invalid or expired.");
    }
}

void COAuthServer::GrantRefresh(const CForm& form, const STClient& client, STResponse& res) {
    std::string sToken = form.sValue("refresh_token");
    if (sToken.empty())
        return s_TokenError(res, 400, "invalid_request",
                            "Missing required parameter: refresh_token");
    STGrant g;
    CTokenStore::STTokens t;
    CTokenStore::eVerdict e = m_Emulator.Tokens().eRefresh(
        sToken, m_Profile.pszHost, client.sId, STGrant::s_tabSplitScopes(form.sValue("scope")),
        m_Profile.style, g, t);
    if (e == CTokenStore::eWrongScope)
        return s_TokenError(res, 400, "invalid_scope",
                            "The requested scope exceeds the scope granted by the resource owner.");
    if (e != CTokenStore::eValid)
        return s_TokenError(res, 400, "invalid_grant",
                            bGoogle() ? "Token has been expired or revoked."
                                      : "The refresh token is invalid or revoked.");
    TokenAnswer(g, t, res);
}

// ---- bearer tokens at the resource servers

std::string COAuthServer::s_sBearerToken(const STRequest& req) {
    if (const std::string* p = req.pHeader("Authorization")) {
        std::string_view sv = CText::s_svTrim(*p);
        // "OAuth" is the scheme the older feed APIs took; the token is the same.
        for (std::string_view svScheme : {"Bearer ", "OAuth "})
            if (CText::s_bIStartsWith(sv, svScheme))
                return std::string(CText::s_svTrim(sv.substr(svScheme.size())));
        return {};
    }
    auto oQuery = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr);
    return oQuery ? oQuery->sValue("access_token") : std::string();
}

COAuthServer::eBearer
COAuthServer::s_eCheckBearer(const CTokenStore& tokens, std::string_view svProvider,
                             const STRequest& req,
                             std::initializer_list<std::string_view> tabScopes, STGrant* pGrant) {
    std::string sToken = s_sBearerToken(req);
    if (sToken.empty())
        return eBearerMissing;
    STGrant g;
    if (tokens.eCheckAccess(sToken, svProvider, g) != CTokenStore::eValid)
        return eBearerInvalid;
    bool bScope = tabScopes.size() == 0;
    for (std::string_view sv : tabScopes)
        bScope = bScope || g.bHasScope(sv);
    if (pGrant)
        *pGrant = std::move(g);
    return bScope ? eBearerValid : eBearerScope;
}
