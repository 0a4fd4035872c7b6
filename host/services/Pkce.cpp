#include "Pkce.h"

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

int s_nHex(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string s_sDecode(std::string_view sv) {
    std::string s;
    for (size_t i = 0; i < sv.size(); ++i) {
        if (sv[i] == '%' && i + 2 < sv.size() && s_nHex(sv[i + 1]) >= 0 && s_nHex(sv[i + 2]) >= 0) {
            s += static_cast<char>(s_nHex(sv[i + 1]) * 16 + s_nHex(sv[i + 2]));
            i += 2;
        } else {
            s += sv[i] == '+' ? ' ' : sv[i];
        }
    }
    return s;
}

// The value of a form field, decoded; false when absent.
bool s_bField(std::string_view svBody, std::string_view svName, std::string& sValue) {
    while (!svBody.empty()) {
        size_t nAmp = svBody.find('&');
        std::string_view svPiece = svBody.substr(0, nAmp);
        svBody = nAmp == std::string_view::npos ? std::string_view{} : svBody.substr(nAmp + 1);
        size_t nEquals = svPiece.find('=');
        if (nEquals != std::string_view::npos && svPiece.substr(0, nEquals) == svName) {
            sValue = s_sDecode(svPiece.substr(nEquals + 1));
            return true;
        }
    }
    return false;
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
    if (!s_bField(sBody, "grant_type", sGrant) || sGrant != "authorization_code" ||
        !s_bField(sBody, "code", sCode) || s_bField(sBody, "code_verifier", sOwn))
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
