#include "TokenStore.h"

#include "Base64.h"
#include "Sha256.h"

#include <chrono>

#include "Seed.h"
#include "Text.h"

namespace {
const long long s_nCodeLifetime = 600; // as long as a user may take on a consent page
}

bool STGrant::bHasScope(std::string_view svScope) const {
    for (const std::string& s : tabScopes)
        if (s == svScope)
            return true;
    return false;
}

std::string STGrant::sScope() const {
    std::string s;
    for (const std::string& x : tabScopes) {
        if (!s.empty())
            s += ' ';
        s += x;
    }
    return s;
}

std::vector<std::string> STGrant::s_tabSplitScopes(std::string_view svScope) {
    std::vector<std::string> tab;
    while (!svScope.empty()) {
        size_t n = svScope.find(' ');
        std::string_view sv = svScope.substr(0, n);
        if (!sv.empty()) {
            bool bSeen = false;
            for (const std::string& s : tab)
                bSeen = bSeen || s == sv;
            if (!bSeen)
                tab.emplace_back(sv);
        }
        svScope = n == std::string_view::npos ? std::string_view() : svScope.substr(n + 1);
    }
    return tab;
}

long long CTokenStore::s_nNow() {
    using namespace std::chrono;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

void CTokenStore::Reset(const CSeed& seed) {
    std::lock_guard lock(m_mtx);
    m_nLifetime = seed.nTokenLifetime();
    m_mapCodes.clear();
    m_mapAccess.clear();
    m_mapRefresh.clear();
    for (const STSeedGrant& sg : seed.Grants()) {
        const STUser* pUser = seed.pFindUser(sg.sUser);
        STGrant g{sg.sProvider, sg.sClientId, pUser ? pUser->sId : std::string(), sg.sUser,
                  STGrant::s_tabSplitScopes(sg.sScope)};
        if (!sg.sAccessToken.empty())
            m_mapAccess[sg.sAccessToken] = {g, s_nNow() + m_nLifetime};
        if (!sg.sRefreshToken.empty())
            m_mapRefresh[sg.sRefreshToken] = g;
    }
}

bool CTokenStore::s_bVerifierMatches(const STPkce& pkce, std::string_view svVerifier) {
    if (pkce.sChallenge.empty())
        return true;
    if (pkce.sMethod == "S256")
        return CBase64::s_sEncode(CSha256::s_sDigest(svVerifier), true) == pkce.sChallenge;
    return svVerifier == pkce.sChallenge;
}

std::string CTokenStore::sNewCode(const STGrant& g, const std::string& sRedirectUri,
                                  const STStyle& style, const STPkce& pkce) {
    std::string sCode = style.pszCode + CText::s_sRandomToken(40);
    std::lock_guard lock(m_mtx);
    m_mapCodes[sCode] = {g, sRedirectUri, s_nNow() + s_nCodeLifetime, false, {}, pkce};
    return sCode;
}

CTokenStore::STTokens CTokenStore::NewTokensLocked(const STGrant& g, bool bWithRefresh,
                                                   const STStyle& style) {
    STTokens t;
    t.sAccessToken = style.pszAccess + CText::s_sRandomToken(64);
    t.nExpiresIn = m_nLifetime;
    m_mapAccess[t.sAccessToken] = {g, s_nNow() + m_nLifetime};
    if (bWithRefresh) {
        t.sRefreshToken = style.pszRefresh + CText::s_sRandomToken(48);
        m_mapRefresh[t.sRefreshToken] = g;
    }
    return t;
}

CTokenStore::STTokens CTokenStore::NewTokens(const STGrant& g, bool bWithRefresh,
                                             const STStyle& style) {
    std::lock_guard lock(m_mtx);
    return NewTokensLocked(g, bWithRefresh, style);
}

CTokenStore::eVerdict CTokenStore::eRedeemCode(std::string_view svCode, std::string_view svProvider,
                                               std::string_view svClientId,
                                               std::string_view svRedirectUri,
                                               std::string_view svVerifier, const STStyle& style,
                                               STGrant& g, STTokens& tokens) {
    std::lock_guard lock(m_mtx);
    auto it = m_mapCodes.find(svCode);
    if (it == m_mapCodes.end() || it->second.grant.sProvider != svProvider)
        return eUnknown;
    STCode& code = it->second;
    if (code.grant.sClientId != svClientId)
        return eWrongClient;
    if (code.bUsed) {
        for (const std::string& s : code.tabGiven) {
            m_mapAccess.erase(s);
            m_mapRefresh.erase(s);
        }
        code.tabGiven.clear();
        return eUsed;
    }
    if (code.nExpires < s_nNow())
        return eExpired;
    if (code.sRedirectUri != svRedirectUri)
        return eWrongRedirect;
    if (!s_bVerifierMatches(code.pkce, svVerifier))
        return eWrongVerifier;
    code.bUsed = true;
    g = code.grant;
    tokens = NewTokensLocked(g, true, style);
    code.tabGiven = {tokens.sAccessToken, tokens.sRefreshToken};
    return eValid;
}

CTokenStore::eVerdict CTokenStore::eRefresh(std::string_view svRefreshToken,
                                            std::string_view svProvider,
                                            std::string_view svClientId,
                                            const std::vector<std::string>& tabNarrow,
                                            const STStyle& style, STGrant& g, STTokens& tokens) {
    std::lock_guard lock(m_mtx);
    auto it = m_mapRefresh.find(svRefreshToken);
    if (it == m_mapRefresh.end() || it->second.sProvider != svProvider)
        return eUnknown;
    if (it->second.sClientId != svClientId)
        return eWrongClient;
    for (const std::string& s : tabNarrow)
        if (!it->second.bHasScope(s))
            return eWrongScope;
    g = it->second;
    if (!tabNarrow.empty())
        g.tabScopes = tabNarrow;
    tokens = NewTokensLocked(g, false, style);
    return eValid;
}

CTokenStore::eVerdict CTokenStore::eCheckAccess(std::string_view svAccessToken,
                                                std::string_view svProvider, STGrant& g) const {
    std::lock_guard lock(m_mtx);
    auto it = m_mapAccess.find(svAccessToken);
    if (it == m_mapAccess.end() || it->second.grant.sProvider != svProvider)
        return eUnknown;
    if (it->second.nExpires <= s_nNow())
        return eExpired;
    g = it->second.grant;
    return eValid;
}

bool CTokenStore::bRevoke(std::string_view svToken) {
    std::lock_guard lock(m_mtx);
    auto itAccess = m_mapAccess.find(svToken);
    if (itAccess != m_mapAccess.end()) {
        m_mapAccess.erase(itAccess);
        return true;
    }
    auto itRefresh = m_mapRefresh.find(svToken);
    if (itRefresh == m_mapRefresh.end())
        return false;
    m_mapRefresh.erase(itRefresh);
    return true;
}

size_t CTokenStore::nExpireAccessTokens() {
    std::lock_guard lock(m_mtx);
    long long nPast = s_nNow() - 1;
    for (auto& [sToken, access] : m_mapAccess)
        access.nExpires = nPast;
    return m_mapAccess.size();
}
