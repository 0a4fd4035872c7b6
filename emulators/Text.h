// CText: the small text helpers every service needs (case, UTF-8, HTML, random tokens).
#pragma once
#include <string>
#include <string_view>

class CText {
public:
    static std::string s_sLower(std::string_view sv);
    static bool s_bIEquals(std::string_view a, std::string_view b);
    static bool s_bIStartsWith(std::string_view sv, std::string_view svPrefix);
    static std::string_view s_svTrim(std::string_view sv);
    // Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
    static bool s_bValidUtf8(std::string_view sv);
    static std::string s_sHtmlEscape(std::string_view sv);
    // A random token of nLength characters from [A-Za-z0-9_-], safe unencoded in any URL part.
    static std::string s_sRandomToken(size_t nLength);
    // A decimal number of digits alone, at most nMaxDigits of them; -1 for anything else.
    static long long s_nDecimal(std::string_view sv, size_t nMaxDigits);
};
