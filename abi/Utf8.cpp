#include "Utf8.h"

namespace KVUtf8 {

namespace {
constexpr char32_t kcRemplacement = 0xFFFD;

// Decodes one code point at s[i], advancing i; malformed sequences take one byte.
char32_t cDecode(std::string_view s, size_t& i) {
    auto b0 = static_cast<unsigned char>(s[i]);
    if (b0 < 0x80) {
        ++i;
        return b0;
    }
    int nSuite;
    char32_t c, cMin;
    if ((b0 & 0xE0) == 0xC0) nSuite = 1, c = b0 & 0x1F, cMin = 0x80;
    else if ((b0 & 0xF0) == 0xE0) nSuite = 2, c = b0 & 0x0F, cMin = 0x800;
    else if ((b0 & 0xF8) == 0xF0) nSuite = 3, c = b0 & 0x07, cMin = 0x10000;
    else {
        ++i;
        return kcRemplacement;
    }
    if (i + nSuite >= s.size()) {
        ++i;
        return kcRemplacement;
    }
    for (int k = 1; k <= nSuite; ++k) {
        auto b = static_cast<unsigned char>(s[i + k]);
        if ((b & 0xC0) != 0x80) {
            ++i;
            return kcRemplacement;
        }
        c = (c << 6) | (b & 0x3F);
    }
    if (c < cMin || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
        ++i;
        return kcRemplacement;
    }
    i += nSuite + 1;
    return c;
}

void Encode(char32_t c, std::string& s) {
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kcRemplacement;
    if (c < 0x80) {
        s += static_cast<char>(c);
    } else if (c < 0x800) {
        s += static_cast<char>(0xC0 | (c >> 6));
        s += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        s += static_cast<char>(0xE0 | (c >> 12));
        s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        s += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        s += static_cast<char>(0xF0 | (c >> 18));
        s += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        s += static_cast<char>(0x80 | (c & 0x3F));
    }
}
} // namespace

std::wstring VersWide(std::string_view s) {
    std::wstring w;
    w.reserve(s.size());
    for (size_t i = 0; i < s.size();) w += static_cast<wchar_t>(cDecode(s, i));
    return w;
}

std::string VersUtf8(std::wstring_view w) {
    std::string s;
    s.reserve(w.size());
    for (wchar_t c : w) Encode(static_cast<char32_t>(c), s);
    return s;
}

int nVersWide(std::string_view s, CXYString<wchar_t>& sOut) {
    std::wstring w = VersWide(s);
    return sOut.nAffecte(w.data(), w.size());
}

int nVersUtf8(std::wstring_view w, CXYString<char>& sOut) {
    std::string s = VersUtf8(w);
    return sOut.nAffecte(s.data(), s.size());
}

} // namespace KVUtf8
