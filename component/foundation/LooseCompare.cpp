#include "foundation/LooseCompare.h"

#include "frame/Kll.h"

namespace {

// The lower-case base letter of a character: A-Z and the Latin-1 letters fold; the Latin-1
// letters without a base letter (Æ, Ð, Ø, Þ) fold to their small form.
wchar_t cPlie(wchar_t c) {
    if (c >= L'A' && c <= L'Z')
        return static_cast<wchar_t>(c - L'A' + L'a');
    if (c >= 0xC0 && c <= 0xFF && c != 0xD7 && c != 0xF7) {
        const char cBase = cKllLettreDeBase(static_cast<unsigned char>(c));
        if (cBase)
            return static_cast<wchar_t>(cBase - 'A' + 'a');
        if (c <= 0xDE)
            return static_cast<wchar_t>(c + 0x20);
    }
    return c;
}

bool bBlanc(wchar_t c) {
    return c == L' ' || c == L'\t';
}

} // namespace

int STR_nCompareCharSouple(wchar_t c1, wchar_t c2) {
    return static_cast<int>(cPlie(c1)) - static_cast<int>(cPlie(c2));
}

namespace {

std::wstring_view svRogne(std::wstring_view sv, bool (*pfnRogne)(wchar_t)) {
    while (!sv.empty() && pfnRogne(sv.front()))
        sv.remove_prefix(1);
    while (!sv.empty() && pfnRogne(sv.back()))
        sv.remove_suffix(1);
    return sv;
}

bool bEgalSouple(std::wstring_view sv1, std::wstring_view sv2) {
    if (sv1.size() != sv2.size())
        return false;
    for (size_t i = 0; i < sv1.size(); ++i)
        if (STR_nCompareCharSouple(sv1[i], sv2[i]) != 0)
            return false;
    return true;
}

bool bEspace(wchar_t c) {
    return c == L' ';
}

} // namespace

bool STR_bEgalSoupleSansBlancs(std::wstring_view svTexte, std::wstring_view svCle) {
    return bEgalSouple(svRogne(svTexte, bBlanc), svCle);
}

bool STR_bEgalSoupleSansEspaces(std::wstring_view sv1, std::wstring_view sv2) {
    return bEgalSouple(svRogne(sv1, bEspace), svRogne(sv2, bEspace));
}
