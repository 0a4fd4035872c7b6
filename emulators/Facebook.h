// Facebook: the login dialogue on www.facebook.com (/dialog/oauth, a profile of the OAuth
// server) and the Graph interface on graph.facebook.com: /oauth/access_token for a code and for
// a long-lived token (fb_exchange_token), /me, /me/accounts with the pages' own tokens,
// /me/picture, /me/permissions, and a page's feed. Paths may carry a version (/v2.8/me). Errors
// are Graph's JSON error objects; an unknown, expired or missing token is refused as Graph does.
#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "OAuthServer.h"
#include "Service.h"

class CEmulator;
class CJsonValue;
struct STGrant;

class CFacebookDialogue : public IService {
public:
    static constexpr const char* ms_pszHost = "www.facebook.com";
    explicit CFacebookDialogue(CEmulator& emulator);
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);
    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

private:
    COAuthServer m_OAuth;
};

class CFacebookGraph : public IService {
public:
    static constexpr const char* ms_pszHost = "graph.facebook.com";
    explicit CFacebookGraph(CEmulator& emulator) : m_Emulator(emulator) {}
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);
    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

    // {"error": {"message", "type", "code", "fbtrace_id"}} with the status Graph gives it.
    static void s_Error(STResponse& res, int nStatus, std::string_view svMessage,
                        std::string_view svType, int nCode, int nSubcode = 0);

private:
    struct STPage {
        std::string sId;
        std::string sName;
        std::string sCategory;
        std::string sUser; // e-mail of the seeded user who runs it
    };
    void AccessToken(const STRequest& req, STResponse& res);
    void Me(const STGrant& g, const std::string& sWhat, const std::string& sFieldsAsked,
            STResponse& res);
    void Feed(const STRequest& req, const STGrant& g, const std::string& sPage, STResponse& res);
    const STPage* pFindPage(std::string_view svId) const;

    CEmulator& m_Emulator;
    std::mutex m_mtx;
    std::vector<STPage> m_tabPages;
    std::map<std::string, std::vector<std::string>> m_mapFeeds; // page id -> messages
};
