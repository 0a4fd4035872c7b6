// The functions of the host's own library that the component calls by number through the VM
// (IVM::bAppelleFonctionVM, component 8), and the character comparison of the locale service.
// Plain functions: the VM maps the numbers onto them.
#pragma once
#include "DateTime.h"

#include <string>
#include <string_view>

class CXError;

namespace KVHost {

// Function 297: URL encoding of UTF-8 text. Letters, digits and -._~:/?#[]@!$&'()*+,;= pass
// unchanged: the component joins "name=value" before encoding and escapes what it must
// afterwards. Every other byte, space and '%' included, becomes %XX in capitals.
std::string UrlEncode(std::string_view svUtf8);

// Function 334: a UTC date-time to the local time of the process (TZ), milliseconds kept.
// Function 335: a local date-time to UTC. A local time that a clock change skips is read with
// the offset before the change (02:30 on a spring-forward night is 01:30 UTC in Paris); one
// that occurs twice is the first occurrence (summer time).
// An absent date (CDateTimeBase::bEstRenseignee false) comes back as it is; a date that does
// not exist (31 April) fails with HOSTERROR_TIME_INVALID.
bool bUtcToLocal(const CDateTime& clUtc, CDateTime& clLocal, CXError* pclError);
bool bLocalToUtc(const CDateTime& clLocal, CDateTime& clUtc, CXError* pclError);

// The locale service's comparison of two characters blind to case and accents (its options 3):
// each side is decomposed, stripped of its combining marks and case-folded (utf8proc); <0, 0,
// >0 as the first orders before, with or after the second. A character may fold to several
// ('ß' to "ss"); the folded sequences are compared.
int nCompareCharLoose(wchar_t c1, wchar_t c2);
// The same over two texts, character by character, the shorter first when one begins the other.
int nCompareTextLoose(std::wstring_view sv1, std::wstring_view sv2);

} // namespace KVHost
