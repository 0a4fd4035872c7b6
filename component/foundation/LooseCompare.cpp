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

bool STR_bEgalSoupleSansBlancs(std::wstring_view svTexte, std::wstring_view svCle) {
    while (!svTexte.empty() && bBlanc(svTexte.front()))
        svTexte.remove_prefix(1);
    while (!svTexte.empty() && bBlanc(svTexte.back()))
        svTexte.remove_suffix(1);
    if (svTexte.size() != svCle.size())
        return false;
    for (size_t i = 0; i < svTexte.size(); ++i)
        if (STR_nCompareCharSouple(svTexte[i], svCle[i]) != 0)
            return false;
    return true;
}
