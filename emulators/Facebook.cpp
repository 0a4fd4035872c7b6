#include "Facebook.h"

#include <algorithm>
#include <cctype>

#include "Emulator.h"
#include "Form.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "Seed.h"
#include "Text.h"
#include "TokenStore.h"

namespace {

const STOAuthProfile s_Profile = {
    CFacebookDialogue::ms_pszHost,
    "Facebook",
    "/dialog/oauth",
    "/dialog/oauth/decision",
    "/dialog/oauth/token-unused", // codes are redeemed on the Graph host
    "https://www.facebook.com",
    STOAuthProfile::eFacebook,
    {"AQD", "EAAB", "rt-"},
    nullptr, // no parameter of its own at the token endpoint
};

// A 1x1 PNG: what /me/picture serves.
constexpr unsigned char s_abyPicture[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x02, 0x00, 0x00,
    0x00, 0x90, 0x77, 0x53, 0xDE, 0x00, 0x00, 0x00, 0x0C, 0x49, 0x44, 0x41, 0x54, 0x08,
    0xD7, 0x63, 0xF8, 0xCF, 0xC0, 0x00, 0x00, 0x03, 0x01, 0x01, 0x00, 0x18, 0xDD, 0x8D,
    0xB0, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};

// "/v2.8/me" -> "/me": Graph answers with or without a version.
std::string s_sSansVersion(const std::string& sPath) {
    if (sPath.size() > 3 && sPath[1] == 'v' && std::isdigit(static_cast<unsigned char>(sPath[2]))) {
        size_t n = sPath.find('/', 1);
        return n == std::string::npos ? "/" : sPath.substr(n);
    }
    return sPath;
}

// The token of a Graph call: the access_token parameter, or the bearer header.
std::string s_sToken(const STRequest& req, const CForm* pQuery, const CForm* pBody) {
    if (pQuery && pQuery->bHas("access_token"))
        return pQuery->sValue("access_token");
    if (pBody && pBody->bHas("access_token"))
        return pBody->sValue("access_token");
    return COAuthServer::s_sBearerToken(req);
}

} // namespace

// ---- the dialogue ------------------------------------------------------------------------

CFacebookDialogue::CFacebookDialogue(CEmulator& emulator) : m_OAuth(emulator, s_Profile) {}

std::unique_ptr<IService> CFacebookDialogue::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CFacebookDialogue>(emulator);
}

void CFacebookDialogue::vReset() { m_OAuth.Reset(); }

void CFacebookDialogue::vHandle(const STRequest& req, STResponse& res) {
    if (req.sPath != s_Profile.pszTokenPath && m_OAuth.bHandle(req, res))
        return;
    res.SetBody(404, "text/html; charset=utf-8", "<!DOCTYPE html><title>Page Not Found</title>");
}

// ---- the Graph interface -----------------------------------------------------------------

std::unique_ptr<IService> CFacebookGraph::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CFacebookGraph>(emulator);
}

void CFacebookGraph::vReset() {
    std::lock_guard lock(m_mtx);
    m_tabPages.clear();
    m_mapFeeds.clear();
    // "facebook": {"pages": [{"id", "name", "category", "user"}]}
    const CJsonValue* pSection = m_Emulator.Seed().Document().pFind("facebook");
    const CJsonValue* pPages = pSection ? pSection->pFind("pages") : nullptr;
    if (!pPages || !pPages->bIsArray())
        return;
    for (const CJsonValue& v : pPages->Items())
        m_tabPages.push_back({v.sText("id"), v.sText("name"), v.sText("category"), v.sText("user")});
}

const CFacebookGraph::STPage* CFacebookGraph::pFindPage(std::string_view svId) const {
    for (const STPage& p : m_tabPages)
        if (p.sId == svId)
            return &p;
    return nullptr;
}

void CFacebookGraph::s_Error(STResponse& res, int nStatus, std::string_view svMessage,
                             std::string_view svType, int nCode, int nSubcode) {
    CJsonValue e = CJsonValue::s_Object();
    e.Set("message", CJsonValue::s_String(std::string(svMessage)));
    e.Set("type", CJsonValue::s_String(std::string(svType)));
    e.Set("code", CJsonValue::s_Int(nCode));
    if (nSubcode)
        e.Set("error_subcode", CJsonValue::s_Int(nSubcode));
    e.Set("fbtrace_id", CJsonValue::s_String("A" + CText::s_sRandomToken(10)));
    res.SetJson(nStatus, CJsonValue::s_Object().Set("error", std::move(e)));
    res.AddHeader("WWW-Authenticate", "OAuth \"Facebook Platform\" \"invalid_token\" \"" +
                                          std::string(svMessage) + "\"");
}

void CFacebookGraph::vHandle(const STRequest& req, STResponse& res) {
    const std::string sPath = s_sSansVersion(req.sPath);
    if (sPath == "/oauth/access_token")
        return AccessToken(req, res);

    auto oQuery = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr);
    auto oBody = req.sMethod == "POST" ? CForm::s_oParse(req.sBody, CForm::eLenient, nullptr)
                                       : std::optional<CForm>();
    const std::string sToken = s_sToken(req, oQuery ? &*oQuery : nullptr, oBody ? &*oBody : nullptr);
    if (sToken.empty())
        return s_Error(res, 400,
                       "An active access token must be used to query information about the "
                       "current user.",
                       "OAuthException", 2500);
    STGrant g;
    switch (m_Emulator.Tokens().eCheckAccess(sToken, CFacebookDialogue::ms_pszHost, g)) {
    case CTokenStore::eValid:
        break;
    case CTokenStore::eExpired:
        return s_Error(res, 400,
                       "Error validating access token: Session has expired. The current time is "
                       "after the time the token was valid.",
                       "OAuthException", 190, 463);
    default:
        return s_Error(res, 400, "Invalid OAuth access token - Cannot parse access token",
                       "OAuthException", 190);
    }

    if (sPath == "/me" || sPath == "/me/accounts" || sPath == "/me/picture" ||
        sPath == "/me/permissions")
        return Me(g, sPath.substr(3), oQuery ? oQuery->sValue("fields") : std::string(), res);
    // "/<page id>/feed"
    if (sPath.size() > 6 && sPath.ends_with("/feed"))
        return Feed(req, g, sPath.substr(1, sPath.size() - 6), res);
    s_Error(res, 400, "Unknown path components: " + sPath, "OAuthException", 2500);
}

void CFacebookGraph::AccessToken(const STRequest& req, STResponse& res) {
    auto oForm = CForm::s_oParse(req.sMethod == "POST" ? req.sBody : req.sQuery, CForm::eLenient,
                                 nullptr);
    if (!oForm)
        return s_Error(res, 400, "Malformed access token request", "OAuthException", 100);
    const CForm& form = *oForm;
    const std::string sClientId = form.sValue("client_id");
    const STClient* pClient = m_Emulator.Seed().pFindClient(CFacebookDialogue::ms_pszHost, sClientId);
    if (!pClient)
        return s_Error(res, 400, "Error validating application. Invalid application ID.",
                       "OAuthException", 101);
    if (form.sValue("client_secret") != pClient->sSecret)
        return s_Error(res, 400, "Error validating client secret.", "OAuthException", 1);

    CTokenStore& tokens = m_Emulator.Tokens();
    STGrant g;
    CTokenStore::STTokens t;
    if (form.sValue("grant_type") == "fb_exchange_token") {
        // A long-lived token for a valid short-lived one of the same application.
        if (tokens.eCheckAccess(form.sValue("fb_exchange_token"), CFacebookDialogue::ms_pszHost,
                                g) != CTokenStore::eValid ||
            g.sClientId != sClientId)
            return s_Error(res, 400, "Invalid OAuth access token - Cannot parse access token",
                           "OAuthException", 190);
        t = tokens.NewTokens(g, false, s_Profile.style);
    } else {
        const std::string sCode = form.sValue("code");
        if (sCode.empty())
            return s_Error(res, 400, "Missing authorization code", "OAuthException", 1);
        switch (tokens.eRedeemCode(sCode, CFacebookDialogue::ms_pszHost, sClientId,
                                   form.sValue("redirect_uri"), form.sValue("code_verifier"),
                                   s_Profile.style, g, t)) {
        case CTokenStore::eValid:
            break;
        case CTokenStore::eWrongRedirect:
            return s_Error(res, 400,
                           "Error validating verification code. Please make sure your "
                           "redirect_uri is identical to the one you used in the OAuth dialog "
                           "request",
                           "OAuthException", 100);
        case CTokenStore::eUsed:
            return s_Error(res, 400, "This authorization code has been used.", "OAuthException",
                           100);
        default:
            return s_Error(res, 400, "Invalid verification code format.", "OAuthException", 100);
        }
    }
    CJsonValue v = CJsonValue::s_Object();
    v.Set("access_token", CJsonValue::s_String(t.sAccessToken));
    v.Set("token_type", CJsonValue::s_String("bearer"));
    v.Set("expires_in", CJsonValue::s_Int(t.nExpiresIn));
    res.SetJson(200, v);
}

void CFacebookGraph::Me(const STGrant& g, const std::string& sWhat,
                        const std::string& sFieldsAsked, STResponse& res) {
    std::lock_guard lock(m_mtx);
    const STPage* pPage = pFindPage(g.sUserId); // a page's token speaks for the page
    if (sWhat.empty()) {
        CJsonValue v = CJsonValue::s_Object();
        if (pPage) {
            v.Set("name", CJsonValue::s_String(pPage->sName));
            v.Set("id", CJsonValue::s_String(pPage->sId));
        } else {
            // The default fields are the name and the id; others when "fields" asks for them.
            const STUser* pUser = m_Emulator.Seed().pFindUser(g.sEmail);
            const std::string sFields = "," + sFieldsAsked + ",";
            v.Set("name", CJsonValue::s_String(pUser ? pUser->sName : ""));
            if (sFields.find(",email,") != std::string::npos && g.bHasScope("email"))
                v.Set("email", CJsonValue::s_String(g.sEmail));
            if (sFields.find(",location,") != std::string::npos)
                v.Set("location", CJsonValue::s_Object()
                                      .Set("id", CJsonValue::s_String("110774245616525"))
                                      .Set("name", CJsonValue::s_String("Paris, France")));
            v.Set("id", CJsonValue::s_String(g.sUserId));
        }
        return res.SetJson(200, v);
    }
    if (sWhat == "/picture")
        return res.SetBody(200, "image/png",
                           std::string(reinterpret_cast<const char*>(s_abyPicture),
                                       sizeof(s_abyPicture)));
    if (sWhat == "/permissions") {
        CJsonValue data = CJsonValue::s_Array();
        data.Push(CJsonValue::s_Object()
                      .Set("permission", CJsonValue::s_String("public_profile"))
                      .Set("status", CJsonValue::s_String("granted")));
        for (const std::string& s : g.tabScopes)
            if (s != "public_profile")
                data.Push(CJsonValue::s_Object()
                              .Set("permission", CJsonValue::s_String(s))
                              .Set("status", CJsonValue::s_String("granted")));
        return res.SetJson(200, CJsonValue::s_Object().Set("data", std::move(data)));
    }
    // /me/accounts: the user's pages, each with a token of its own.
    CJsonValue data = CJsonValue::s_Array();
    for (const STPage& p : m_tabPages) {
        if (p.sUser != g.sEmail || pPage)
            continue;
        STGrant gPage = g;
        gPage.sUserId = p.sId;
        const CTokenStore::STTokens t = m_Emulator.Tokens().NewTokens(gPage, false, s_Profile.style);
        data.Push(CJsonValue::s_Object()
                      .Set("access_token", CJsonValue::s_String(t.sAccessToken))
                      .Set("category", CJsonValue::s_String(p.sCategory))
                      .Set("name", CJsonValue::s_String(p.sName))
                      .Set("id", CJsonValue::s_String(p.sId))
                      .Set("tasks", CJsonValue::s_Array().Push(CJsonValue::s_String("CREATE_CONTENT"))));
    }
    res.SetJson(200, CJsonValue::s_Object()
                         .Set("data", std::move(data))
                         .Set("paging", CJsonValue::s_Object().Set(
                                            "cursors", CJsonValue::s_Object()
                                                           .Set("before", CJsonValue::s_String("MAZDZD"))
                                                           .Set("after", CJsonValue::s_String("MAZDZD")))));
}

void CFacebookGraph::Feed(const STRequest& req, const STGrant& g, const std::string& sPage,
                          STResponse& res) {
    std::lock_guard lock(m_mtx);
    if (!pFindPage(sPage))
        return s_Error(res, 404,
                       "Unsupported get request. Object with ID '" + sPage +
                           "' does not exist, cannot be loaded due to missing permissions, or "
                           "does not support this operation.",
                       "GraphMethodException", 100, 33);
    std::vector<std::string>& tabFeed = m_mapFeeds[sPage];
    if (req.sMethod == "POST") {
        if (g.sUserId != sPage)
            return s_Error(res, 403,
                           "(#200) If posting to a page, requires both pages_read_engagement "
                           "and pages_manage_posts as an admin with sufficient administrative "
                           "permission",
                           "OAuthException", 200);
        auto oBody = CForm::s_oParse(req.sBody, CForm::eLenient, nullptr);
        std::string sMessage = oBody ? oBody->sValue("message") : std::string();
        if (sMessage.empty())
            return s_Error(res, 400, "(#100) Invalid parameter", "OAuthException", 100);
        tabFeed.push_back(std::move(sMessage));
        return res.SetJson(200, CJsonValue::s_Object().Set(
                                    "id", CJsonValue::s_String(sPage + "_" +
                                                               std::to_string(tabFeed.size()))));
    }
    CJsonValue data = CJsonValue::s_Array();
    for (size_t i = tabFeed.size(); i-- > 0;)
        data.Push(CJsonValue::s_Object()
                      .Set("message", CJsonValue::s_String(tabFeed[i]))
                      .Set("id", CJsonValue::s_String(sPage + "_" + std::to_string(i + 1))));
    res.SetJson(200, CJsonValue::s_Object().Set("data", std::move(data)));
}
