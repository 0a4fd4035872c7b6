// CSha256: the SHA-256 digest (FIPS 180-4), for the S256 code challenges of PKCE (RFC 7636).
#pragma once
#include <string>
#include <string_view>

class CSha256 {
public:
    // The 32 bytes of the digest of the bytes given.
    static std::string s_sDigest(std::string_view svBytes);
};
