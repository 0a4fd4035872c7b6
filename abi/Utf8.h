// UTF-8 and 32-bit wide text, the two encodings that cross the boundary. Invalid input never
// fails: each bad byte becomes U+FFFD, as a reader of untrusted text must tolerate.
#pragma once
#include "XYString.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace KVUtf8 {
std::wstring VersWide(std::string_view sUtf8);
std::string VersUtf8(std::wstring_view sWide);
// Into counted strings; the result word of the assignment.
int nVersWide(std::string_view sUtf8, CXYString<wchar_t>& sOut);
int nVersUtf8(std::wstring_view sWide, CXYString<char>& sOut);
} // namespace KVUtf8
