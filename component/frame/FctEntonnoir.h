// FctEntonnoir: the places where the component has the host run one of its own script
// functions, so that no connector depends on a host function directly. Each stacks its
// parameter, names a local value as the receiver, calls the function of the VM's standard
// library and reads the receiver back. A failed call leaves its cause in the error, answers 0
// and leaves the output untouched.
#pragma once
#include "XYString.h"

class CDateTime;
class CXError;
class IVM;

namespace FctEntonnoir {

// The text, as UTF-8, URL-encoded by the host. A null VM or an empty text answers 0 at once,
// without calling the host; an empty result empties `psOut`.
int bUrlEncode(IVM* piVM, CXError* pclErreur, const CXYString<wchar_t>& sTexte,
               CXYString<wchar_t>* psOut);
// The date-time converted in place, from UTC to the local time and back.
int bDateHeureUTCVersLocale(IVM* piVM, CXError* pclErreur, CDateTime* pclDateHeure);
int bDateHeureLocaleVersUTC(IVM* piVM, CXError* pclErreur, CDateTime* pclDateHeure);

} // namespace FctEntonnoir
