// CTokenStore: authorisation codes, access tokens and refresh tokens of every provider, with
// what each one grants. Shared by the providers that hand tokens out and the services that check
// them; safe to call from every server thread.
#pragma once
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

class CSeed;

struct STGrant {
    std::string sProvider; // host of the provider that gave it, e.g. accounts.google.com
    std::string sClientId;
    std::string sUserId;
    std::string sEmail;
    std::vector<std::string> tabScopes;

    bool bHasScope(std::string_view svScope) const;
    std::string sScope() const; // joined by spaces
    // Splits on spaces (a decoded "%20" or "+"), dropping empty pieces.
    static std::vector<std::string> s_tabSplitScopes(std::string_view svScope);
};

class CTokenStore {
public:
    enum eVerdict {
        eValid,
        eUnknown,
        eExpired,
        eUsed,
        eWrongClient,
        eWrongRedirect,
        eWrongScope,
        eWrongVerifier, // PKCE: the code_verifier does not match the code_challenge
    };
    // The PKCE challenge of an authorisation (RFC 7636); empty when the client sent none.
    struct STPkce {
        std::string sChallenge;
        std::string sMethod; // "S256" or "plain"
    };
    struct STTokens {
        std::string sAccessToken;
        std::string sRefreshToken; // empty when none was asked for
        long long nExpiresIn = 0;
    };
    // How a provider's tokens look; Google's have their own well-known prefixes.
    struct STStyle {
        const char* pszCode;
        const char* pszAccess;
        const char* pszRefresh;
    };

    // Back to the seed: everything handed out is forgotten, the seeded grants are installed.
    void Reset(const CSeed& seed);

    std::string sNewCode(const STGrant& g, const std::string& sRedirectUri, const STStyle& style,
                         const STPkce& pkce = {});
    // Single use: a second redemption fails and revokes what the first one obtained.
    eVerdict eRedeemCode(std::string_view svCode, std::string_view svProvider,
                         std::string_view svClientId, std::string_view svRedirectUri,
                         std::string_view svVerifier, const STStyle& style, STGrant& g,
                         STTokens& tokens);
    STTokens NewTokens(const STGrant& g, bool bWithRefresh, const STStyle& style);
    // tabNarrow, when not empty, asks for fewer scopes than the refresh token holds.
    eVerdict eRefresh(std::string_view svRefreshToken, std::string_view svProvider,
                      std::string_view svClientId, const std::vector<std::string>& tabNarrow,
                      const STStyle& style, STGrant& g, STTokens& tokens);
    eVerdict eCheckAccess(std::string_view svAccessToken, std::string_view svProvider,
                          STGrant& g) const;
    bool bRevoke(std::string_view svToken); // access or refresh token
    size_t nExpireAccessTokens();           // a test tool: every access token expires now

private:
    struct STAccess {
        STGrant grant;
        long long nExpires = 0; // seconds since the epoch
    };
    struct STCode {
        STGrant grant;
        std::string sRedirectUri;
        long long nExpires = 0;
        bool bUsed = false;
        std::vector<std::string> tabGiven; // tokens it was exchanged for, revoked on reuse
        STPkce pkce;
    };
    static long long s_nNow();
    // An exchange without a challenge passes; with one, the verifier must answer it.
    static bool s_bVerifierMatches(const STPkce& pkce, std::string_view svVerifier);
    STTokens NewTokensLocked(const STGrant& g, bool bWithRefresh, const STStyle& style);

    mutable std::mutex m_mtx;
    long long m_nLifetime = 3599;
    std::map<std::string, STCode, std::less<>> m_mapCodes;
    std::map<std::string, STAccess, std::less<>> m_mapAccess;
    std::map<std::string, STGrant, std::less<>> m_mapRefresh;
};
