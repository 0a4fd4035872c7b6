// CHTTPClient: the host's HTTP and SOAP service (IHTTP, registry name "HTTP") over libcurl.
//
// What it does with an exchange:
//   - HTTP/1.1, so that header names reach the component spelt as the server wrote them;
//   - TLS is verified (peer and host name) against the system's certificate store;
//   - connections are kept alive and reused, within one service and across services of the
//     process (one libcurl share for connections, names and TLS sessions);
//   - answers may come compressed (every encoding libcurl knows is offered) and are kept as
//     received once decompressed;
//   - connect and total timeouts, the body limit and routing come from STHostOptions; proxies
//     come from the environment (http_proxy, https_proxy, no_proxy) as libcurl reads them;
//   - redirects are never followed: a 3xx is an answer like any other, so that the
//     component's own redirect rules run. The 21st 3xx (304 aside) in a row on one service
//     is refused with HOSTERROR_HTTP_REDIRECT_LOOP, so that no loop can exhaust the caller;
//     any other answer starts the count again, and so does a request whose URL does not
//     begin with the Location of the last 3xx, as written or resolved (a new call, not the
//     next hop);
//   - the next hop of a redirect chain sends the bearer header and the body only to the origin
//     (scheme, host, port) of the chain's first request; a hop from https to http is refused
//     with HOSTERROR_HTTP_REDIRECT_INSECURE;
//   - a progress line on stderr for transfers over 1 MB (KVGGL_PROGRESS).
// Failures are HostErrors.h codes with an English message naming the host and the cause.
//
// The request record: the verb of m_nMethode, the URL, the headers of the set in their order,
// the body, and m_sTypeContenu as Content-Type when the verb carries a body (POST, PUT, PATCH)
// or a body is given, unless the set already names a Content-Type. GET and DELETE send no
// Content-Type without a body; POST, PUT and PATCH with an empty body send Content-Length: 0.
//
// SOAP: the envelope goes by POST as "text/xml; charset=utf-8" with SOAPAction set to the action
// in double quotes (SOAP 1.1; "" for none, an action already quoted as it stands). Elements
// added with vbSoapAjouteEntete go into the Header of every later envelope. The reply body is
// kept whatever its status; a reply whose Body holds a Fault is a fault (parts 1 and 2:
// faultcode and faultstring, or in SOAP 1.2 Code/Value and Reason/Text); a failure status
// without a fault is HOSTERROR_SOAP_NOT_SOAP; a success status is a reply.
//
// One exchange at a time: every operation holds the service's lock.
#pragma once
#include "HTTPService.h"
#include "HostOptions.h"
#include "KLBIN.h"
#include "Routing.h"
#include "XError.h"

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

struct STHTTPTransfer; // what one transfer's callbacks fill

class CHTTPClient final : public IHTTP {
public:
    // Redirects allowed in a row; the next one is refused.
    static constexpr int knMaxRedirects = 20;

    // The count starts at 1, the creator's reference.
    explicit CHTTPClient(const STHostOptions& stOptions);

    void vAddRef() override;
    void vRelease() override;

    CXError* vpiGetErreur() override;
    int vbDonneResultat(CAny& clValeur, int nGenre) override;
    void vSetVM(IVM* piVM, int nOption) override;
    IEntetesHTTP* vpiCreeEntetes() override;
    int vbExecute(CParametresHTTPRequete& clRequest, int nOption) override;

    int vbSoapExecute(const wchar_t* pszURL, const STManipAUB& stEnveloppe,
                      const wchar_t* pszActionSOAP) override;
    int vbSoapAjouteEntete(const wchar_t* pszNom, const CAny& clValeur,
                           const wchar_t* pszEspaceNoms, int bDoitComprendre) override;
    int vbSoapDonneResultat(CAny& clValeur, eSOAPResultat eResultat, int nOption) override;
    int vbSoapErreur(eSOAPErreur eErreur, CXYString<wchar_t>& sTexte) override;

private:
    ~CHTTPClient();

    // One request as the exchange sends it.
    struct STRequest {
        const char* pszVerb = "GET";
        std::string sUrl;
        std::vector<std::string> tabHeaders; // "Name: value"
        const void* pBody = nullptr;
        size_t nBody = 0;
        bool bSendBody = false;
    };
    struct STSoapHeader {
        std::string sName;
        std::string sValue;
        std::string sNamespace;
        bool bMustUnderstand = false;
    };

    struct STTarget;

    // Sends the request and keeps the answer; false with the cause in m_clError. The steps:
    bool _bExchange(const STRequest& stRequest);
    // a request that does not go where the last redirect pointed starts a new chain (true:
    // it is the next hop of one);
    bool _bContinueOrEndChain(const std::string& sUrl);
    // a next hop keeps the bearer header and the body on the chain's origin;
    bool _bKeepCredentialsOnOrigin(STRequest& stRequest, STTarget& stTarget);
    // the address asked after routing, the headers with the routed Host;
    bool _bRoute(const STRequest& stRequest, STTarget& stTarget);
    // the transfer (false only when it could not start), configured by _Configure;
    bool _bPerform(const STRequest& stRequest, const STTarget& stTarget, STHTTPTransfer& stTransfer,
                   int& nCurlCode);
    void _Configure(const STRequest& stRequest, const STTarget& stTarget,
                    STHTTPTransfer& stTransfer);
    // a failed transfer as one host error;
    void _SetTransportError(int nCurlCode, const STRequest& stRequest, const STTarget& stTarget,
                            const STHTTPTransfer& stTransfer);
    // the answer kept, a redirect counted in its chain (the 21st refused).
    bool _bKeepAnswer(const STTarget& stTarget, STHTTPTransfer& stTransfer);
    void _ClearAnswer();

    std::atomic<int> m_nRef{1};
    std::mutex m_mutex;
    STHostOptions m_stOptions;
    CRouting m_clRouting;
    std::string m_sRouteError; // why KVGGL_ROUTE could not be read; every exchange then fails
    void* m_pCurl = nullptr;   // the libcurl easy handle, kept for its live connections
    CXError m_clError;
    IVM* m_piVM = nullptr; // borrowed, for the calls that follow vSetVM
    int m_nRedirects = 0;  // 3xx answers in a row, each request going where the last pointed
    std::string m_sRedirectTarget;   // the Location of the last of them, as written
    std::string m_sRedirectResolved; // and as resolved against the address it came from
    std::string m_sRedirectOrigin;   // scheme://host[:port] of the chain's first request

    bool m_bAnswer = false;
    long m_nStatus = 0;
    std::string m_sHead; // UTF-8 as received, lines ended by CR LF
    CKLBIN m_clBody;

    std::vector<STSoapHeader> m_tabSoapHeaders;
    bool m_bSoapReply = false;
    CKLBIN m_clSoapReply;
    bool m_bFault = false;
    std::string m_sFaultCode;
    std::string m_sFaultString;
};
