#include "Base64.h"

namespace {
const char s_szStandard[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const char s_szUrl[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

int s_nValue(char c) {
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+' || c == '-')
        return 62;
    if (c == '/' || c == '_')
        return 63;
    return -1;
}
} // namespace

std::string CBase64::s_sEncode(std::string_view sv, bool bUrl) {
    const char* pszAlphabet = bUrl ? s_szUrl : s_szStandard;
    std::string s;
    s.reserve((sv.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 3 <= sv.size(); i += 3) {
        unsigned n = (static_cast<unsigned char>(sv[i]) << 16) |
                     (static_cast<unsigned char>(sv[i + 1]) << 8) |
                     static_cast<unsigned char>(sv[i + 2]);
        s += pszAlphabet[(n >> 18) & 63];
        s += pszAlphabet[(n >> 12) & 63];
        s += pszAlphabet[(n >> 6) & 63];
        s += pszAlphabet[n & 63];
    }
    size_t nRest = sv.size() - i;
    if (nRest > 0) {
        unsigned n = static_cast<unsigned char>(sv[i]) << 16;
        if (nRest == 2)
            n |= static_cast<unsigned char>(sv[i + 1]) << 8;
        s += pszAlphabet[(n >> 18) & 63];
        s += pszAlphabet[(n >> 12) & 63];
        if (nRest == 2)
            s += pszAlphabet[(n >> 6) & 63];
        if (!bUrl)
            s.append(3 - nRest, '=');
    }
    return s;
}

std::optional<std::string> CBase64::s_oDecode(std::string_view sv) {
    while (!sv.empty() && sv.back() == '=')
        sv.remove_suffix(1);
    if (sv.size() % 4 == 1)
        return std::nullopt;
    std::string s;
    s.reserve(sv.size() * 3 / 4);
    unsigned nBits = 0;
    int nCount = 0;
    for (char c : sv) {
        int n = s_nValue(c);
        if (n < 0)
            return std::nullopt;
        nBits = (nBits << 6) | static_cast<unsigned>(n);
        nCount += 6;
        if (nCount >= 8) {
            nCount -= 8;
            s += static_cast<char>((nBits >> nCount) & 0xFF);
        }
    }
    return s;
}
