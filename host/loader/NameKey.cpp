#include "NameKey.h"

#include <utf8proc.h>

#include <cstdlib>

std::string CNameKey::s_sKey(std::string_view svNom) {
    bool bAscii = true;
    for (unsigned char c : svNom)
        bAscii = bAscii && c < 0x80;
    std::string s(svNom);
    if (!bAscii) {
        // Most names are ASCII; utf8proc is asked only for the others.
        utf8proc_uint8_t* pby = nullptr;
        auto n =
            utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(svNom.data()),
                         static_cast<utf8proc_ssize_t>(svNom.size()), &pby,
                         static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE |
                                                        UTF8PROC_STRIPMARK | UTF8PROC_CASEFOLD));
        if (n >= 0 && pby)
            s.assign(reinterpret_cast<const char*>(pby), static_cast<size_t>(n));
        std::free(pby);
        if (n >= 0)
            return s;
    }
    for (char& c : s)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return s;
}
