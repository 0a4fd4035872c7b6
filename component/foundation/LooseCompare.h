// The loose comparison of the connectors: characters equal when they differ only by case or
// by accent, as the keys of an OAuth answer or of a login redirect are matched.
#pragma once
#include <string_view>

// 0 when the two characters are equal ignoring case and accents, else the difference of their
// folded forms. Folding covers ASCII and Latin-1, the letters the keys and names use; any
// other character compares as it is.
int STR_nCompareCharSouple(wchar_t c1, wchar_t c2);
inline int STR_nCompareCharSoupleW(wchar_t c1, wchar_t c2) {
    return STR_nCompareCharSouple(c1, c2);
}

// svTexte, blanks (space, tab) taken off both ends, against svCle character by character
// with STR_nCompareCharSouple; the lengths must agree.
bool STR_bEgalSoupleSansBlancs(std::wstring_view svTexte, std::wstring_view svCle);

// Both texts with spaces (code 32 only) taken off their ends, then compared as above. Two
// empty texts are equal.
bool STR_bEgalSoupleSansEspaces(std::wstring_view sv1, std::wstring_view sv2);
