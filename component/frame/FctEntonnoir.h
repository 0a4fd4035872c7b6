// FctEntonnoir: the places where the component has the host run one of its own script
// functions, so that no connector depends on a host function directly. Each stacks its
// parameter, names a local value as the receiver, calls the function of the VM's standard
// library and reads the receiver back. A failed call leaves its cause in the error, answers 0
// and leaves the output untouched.
//
// The SOAP funnels call the host's HTTP service instead; each copies the service's own error
// into the caller's on failure.
#pragma once
#include "HTTPService.h"
#include "TString.h"
#include "XYString.h"

class CAny;
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

// The envelope filled from its six fields (namespace declarations, header content, action,
// attributes of the action element, body, action), sent as UTF-8 to the URL with the action.
// True on a reply without fault; a fault answers false with the error still clean.
int bSoapExecuteXML(IHTTP* piHTTP, CXError* pclErreur, const wchar_t* pszURL,
                    const wchar_t* pszEntete, const char* pszAction, const wchar_t* pszCorps,
                    const wchar_t* pszNamespace, const wchar_t* pszAttributs);
// A header element for the next envelopes; the value goes as text.
int bSoapAjouteEntete(IHTTP* piHTTP, CXError* pclErreur, const wchar_t* pszNom, CAny& clValeur,
                      const wchar_t* pszNamespace, int bDoitComprendre);
int bSoapDonneResultat(IHTTP* piHTTP, CXError* pclErreur, CAny& clValeur, eSOAPResultat eResultat,
                       int nOption);
int bSoapErreur(IHTTP* piHTTP, CXError* pclErreur, eSOAPErreur eErreur, CTString& sTexte);

} // namespace FctEntonnoir
