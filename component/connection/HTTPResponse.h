// CHTTPResponse: what came back from one exchange: the whole response head as text, status
// line first, and the body as the host gave it. The status codes and their labels, which
// reach users inside error messages.
#pragma once
#include "Any.h"
#include "KLBIN.h"
#include "XYString.h"

class CXError;

// The HTTP status as its plain number; -1 when the head gives none.
enum eHTTPCODE : int {
    HTTPCodeInvalide = -1,
    HTTPContinue = 100,
    HTTPSwitchingProtocols = 101,
    HTTPOK = 200,
    HTTPCreated = 201,
    HTTPAccepted = 202,
    HTTPNonAuthoritative = 203,
    HTTPNoContent = 204,
    HTTPResetContent = 205,
    HTTPPartielContent = 206,
    HTTPMultipleChoices = 300,
    HTTPMovedPermanently = 301,
    HTTPMovedTemporarily = 302,
    HTTPSeeOther = 303,
    HTTPNotModified = 304,
    HTTPUseProxy = 305,
    HTTPTemporaryRedirect = 307,
    HTTPResumeIncomplete = 308,
    HTTPBadRequest = 400,
    HTTPUnauthorized = 401,
    HTTPPaymentRequired = 402,
    HTTPForbidden = 403,
    HTTPNotFound = 404,
    HTTPMethodNotAllowed = 405,
    HTTPNotAcceptable = 406,
    HTTPProxyAuthRequired = 407,
    HTTPRequestTimeOut = 408,
    HTTPConflict = 409,
    HTTPGone = 410,
    HTTPLengthRequired = 411,
    HTTPPreconditionFailed = 412,
    HTTPRequestEntityTooLarge = 413,
    HTTPRequestURITooLarge = 414,
    HTTPUnsupportedMediaType = 415,
    HTTPRequestedRangeNotSatisfiable = 416,
    HTTPExpactationFailed = 417,
    HTTPInternalServerError = 500,
    HTTPNotImplemented = 501,
    HTTPBadGateway = 502,
    HTTPServiceUnavailable = 503,
    HTTPGatewayTimeOut = 504,
    HTTPVersionNotSupported = 505,
};

class CHTTPResponse {
public:
    CHTTPResponse() = default;
    CHTTPResponse(const CHTTPResponse&) = default;
    CHTTPResponse& operator=(const CHTTPResponse&) = default;
    virtual ~CHTTPResponse() = default;

    // The head as wide text; a value with no type leaves the text empty.
    void SetEntete(const CAny& clEntete);
    void SetMessage(const CAny& clMessage) { m_clMessage = clMessage; }

    bool bGetEntete(CXYString<wchar_t>& sEntete) const;
    // The number of the status line; -1 when it has no second word, 0 when that word is not a
    // number.
    eHTTPCODE eGetCodeRetour() const;
    // The value of the header line "name: value", name matched exactly with one blank after
    // the colon.
    bool bExtraitEntete(const wchar_t* pszNom, CXYString<wchar_t>& sValeur) const;
    // The value of the body line "name=value", as wide text.
    bool bExtraitMessage(const wchar_t* pszNom, CAny& clValeur) const;

    // False when the body has no type.
    bool bGetMessage(CAny& clMessage) const;
    // Only a binary body (type 28) gives its bytes.
    bool bGetMessage(CKLBIN& clMessage) const;
    // The body as narrow text, its bytes as they are.
    bool bGetMessage(CXYString<char>& sMessage) const;
    // The body read as UTF-8.
    bool bGetMessage(CXYString<wchar_t>& sMessage) const;

    // The label of a status, "" for numbers without one.
    static const wchar_t* s_pszGetLibelle(eHTTPCODE eCode);
    // Error 600005 for a status the caller did not expect: the status label, then what the
    // server said, so that the user sees both.
    void SetErreurStatut(CXError* pclErreur) const;

private:
    // Field 1 of the text cut at pszDebut, then field 0 of that cut at pszFin.
    static bool __bExtrait(const CXYString<wchar_t>& sTexte, const wchar_t* pszDebut,
                           const wchar_t* pszFin, CXYString<wchar_t>& sValeur);

    CXYString<wchar_t> m_sEntete;
    CAny m_clMessage;
};
