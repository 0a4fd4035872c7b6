// CBase64: the standard and the URL-safe alphabets (RFC 4648), for logged bodies, Basic
// credentials and the unsigned ID tokens.
#pragma once
#include <optional>
#include <string>
#include <string_view>

class CBase64 {
public:
    static std::string s_sEncode(std::string_view sv, bool bUrl = false);
    // Accepts either alphabet, with or without padding; nothing else.
    static std::optional<std::string> s_oDecode(std::string_view sv);
};
