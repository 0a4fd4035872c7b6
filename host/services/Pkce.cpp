#include "Pkce.h"

#include "Routing.h"

#include <openssl/sha.h>
#include <sys/random.h>

#include <cerrno>
#include <deque>
#include <mutex>
#include <string_view>
#include <utility>

namespace {

std::mutex gmutexCodes;
std::deque<std::pair<std::string, std::string>> gtabCodes; // code, verifier
constexpr size_t knMaxCodes = 16; // sign-ins whose token request has not come yet

std::string s_sBase64Url(const unsigned char* p, size_t n) {
    static const char kszAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string s;
    for (size_t i = 0; i < n; i += 3) {
        unsigned v = static_cast<unsigned>(p[i]) << 16;
        if (i + 1 < n)
            v |= static_cast<unsigned>(p[i + 1]) << 8;
        if (i + 2 < n)
            v |= p[i + 2];
        s += kszAlphabet[(v >> 18) & 63];
        s += kszAlphabet[(v >> 12) & 63];
        if (i + 1 < n)
            s += kszAlphabet[(v >> 6) & 63];
        if (i + 2 < n)
            s += kszAlphabet[v & 63];
    }
    return s; // unpadded, as PKCE wants it
}

} // namespace

namespace KVPkce {

bool bNew(std::string& sVerifier, std::string& sChallenge) {
    unsigned char aby[32];
    size_t nRead = 0;
    while (nRead < sizeof aby) {
        ssize_t n = ::getrandom(aby + nRead, sizeof aby - nRead, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        nRead += static_cast<size_t>(n);
    }
    sVerifier = s_sBase64Url(aby, sizeof aby);
    unsigned char abyDigest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char*>(sVerifier.data()), sVerifier.size(), abyDigest);
    sChallenge = s_sBase64Url(abyDigest, sizeof abyDigest);
    return true;
}

void Remember(const std::string& sCode, const std::string& sVerifier) {
    std::lock_guard guard(gmutexCodes);
    if (gtabCodes.size() >= knMaxCodes)
        gtabCodes.pop_front();
    gtabCodes.emplace_back(sCode, sVerifier);
}

bool bAddVerifier(std::string& sBody) {
    std::string sGrant, sCode, sOwn;
    if (!CRouting::s_bFormValue(sBody, "grant_type", sGrant) || sGrant != "authorization_code" ||
        !CRouting::s_bFormValue(sBody, "code", sCode) ||
        CRouting::s_bFormValue(sBody, "code_verifier", sOwn))
        return false;
    std::lock_guard guard(gmutexCodes);
    for (auto it = gtabCodes.begin(); it != gtabCodes.end(); ++it) {
        if (it->first != sCode)
            continue;
        sBody.append("&code_verifier=").append(it->second); // base64url: nothing to encode
        gtabCodes.erase(it);
        return true;
    }
    return false;
}

} // namespace KVPkce
