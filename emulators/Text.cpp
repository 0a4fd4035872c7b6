#include "Text.h"

#include <mutex>
#include <random>

std::string CText::s_sLower(std::string_view sv) {
    std::string s(sv);
    for (char& c : s)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return s;
}

bool CText::s_bIEquals(std::string_view a, std::string_view b) {
    return a.size() == b.size() && s_bIStartsWith(a, b);
}

bool CText::s_bIStartsWith(std::string_view sv, std::string_view svPrefix) {
    if (sv.size() < svPrefix.size())
        return false;
    for (size_t i = 0; i < svPrefix.size(); ++i) {
        char a = sv[i], b = svPrefix[i];
        if (a >= 'A' && a <= 'Z')
            a = static_cast<char>(a - 'A' + 'a');
        if (b >= 'A' && b <= 'Z')
            b = static_cast<char>(b - 'A' + 'a');
        if (a != b)
            return false;
    }
    return true;
}

std::string_view CText::s_svTrim(std::string_view sv) {
    while (!sv.empty() && (sv.front() == ' ' || sv.front() == '\t'))
        sv.remove_prefix(1);
    while (!sv.empty() && (sv.back() == ' ' || sv.back() == '\t'))
        sv.remove_suffix(1);
    return sv;
}

bool CText::s_bValidUtf8(std::string_view sv) {
    const auto* p = reinterpret_cast<const unsigned char*>(sv.data());
    const auto* pEnd = p + sv.size();
    while (p < pEnd) {
        unsigned c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        size_t nMore;
        unsigned nCode, nMin;
        if ((c & 0xE0) == 0xC0) {
            nMore = 1, nCode = c & 0x1F, nMin = 0x80;
        } else if ((c & 0xF0) == 0xE0) {
            nMore = 2, nCode = c & 0x0F, nMin = 0x800;
        } else if ((c & 0xF8) == 0xF0) {
            nMore = 3, nCode = c & 0x07, nMin = 0x10000;
        } else {
            return false;
        }
        if (static_cast<size_t>(pEnd - p) <= nMore)
            return false;
        for (size_t i = 1; i <= nMore; ++i) {
            if ((p[i] & 0xC0) != 0x80)
                return false;
            nCode = (nCode << 6) | (p[i] & 0x3F);
        }
        if (nCode < nMin || nCode > 0x10FFFF || (nCode >= 0xD800 && nCode <= 0xDFFF))
            return false;
        p += nMore + 1;
    }
    return true;
}

std::string CText::s_sHtmlEscape(std::string_view sv) {
    std::string s;
    s.reserve(sv.size());
    for (char c : sv) {
        switch (c) {
        case '&':
            s += "&amp;";
            break;
        case '<':
            s += "&lt;";
            break;
        case '>':
            s += "&gt;";
            break;
        case '"':
            s += "&quot;";
            break;
        case '\'':
            s += "&#39;";
            break;
        default:
            s += c;
        }
    }
    return s;
}

std::string CText::s_sRandomToken(size_t nLength) {
    static const char s_szAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
    static std::mutex s_mtx;
    static std::mt19937_64 s_rng{std::random_device{}()};
    std::lock_guard lock(s_mtx);
    std::string s(nLength, '\0');
    for (char& c : s)
        c = s_szAlphabet[s_rng() % 64];
    return s;
}

long long CText::s_nDecimal(std::string_view sv, size_t nMaxDigits) {
    if (sv.empty() || sv.size() > nMaxDigits)
        return -1;
    long long n = 0;
    for (char c : sv) {
        if (c < '0' || c > '9')
            return -1;
        n = n * 10 + (c - '0');
    }
    return n;
}
