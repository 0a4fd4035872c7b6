#include "HTTPClient.h"

#include "HostBarrier.h"
#include "Any.h"
#include "HTTPHeaders.h"
#include "HostErrors.h"
#include "KVResult.h"
#include "ManipAUB.h"
#include "Pkce.h"
#include "Utf8.h"

#include <curl/curl.h>
#include <pugixml.hpp>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <strings.h>
#include <sys/mman.h>
#include <unistd.h>

#ifndef KVGGL_VERSION
#define KVGGL_VERSION "0"
#endif

// ---- one transfer: what the callbacks fill

struct STHTTPTransfer {
    size_t nMaxBody = 0;
    bool bTooLarge = false;
    bool bNoMemory = false;
    std::string sHead;
    CKLBIN clBody;

    bool bProgress = false;
    bool bProgressShown = false;
    std::string sProgressLabel; // "GET www.example.com"
    std::chrono::steady_clock::time_point tLastShown{};
    curl_off_t nLastNow = 0;
    curl_off_t nLastTotal = 0;
    bool bLastUpload = false;
    char szError[CURL_ERROR_SIZE] = {};
    CURL* pCurl = nullptr;   // the handle of the transfer, for what the callbacks ask of it
    bool bPrefilled = false; // clBody made at the announced length, filled up to nFilled
    size_t nFilled = 0;
};

namespace {

// ---- the process-wide libcurl state: initialised once, one share for every service, so that
// a connection, a resolved name or a TLS session made for one connector serves the others.

std::once_flag gOnceCurl;
CURLSH* gpShare = nullptr;
std::mutex gtabLocks[CURL_LOCK_DATA_LAST];

void s_Lock(CURL*, curl_lock_data eData, curl_lock_access, void*) {
    gtabLocks[eData].lock();
}
void s_Unlock(CURL*, curl_lock_data eData, void*) {
    gtabLocks[eData].unlock();
}

void s_InitCurl() {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    gpShare = curl_share_init();
    if (!gpShare)
        return;
    curl_share_setopt(gpShare, CURLSHOPT_LOCKFUNC, s_Lock);
    curl_share_setopt(gpShare, CURLSHOPT_UNLOCKFUNC, s_Unlock);
    curl_share_setopt(gpShare, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
    curl_share_setopt(gpShare, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    curl_share_setopt(gpShare, CURLSHOPT_SHARE, CURL_LOCK_DATA_CONNECT);
}

// libcurl is C: an exception must not unwind through it, which would leave the handle and the
// shared connection cache half-way through a transfer. A callback that runs out of memory marks
// the transfer and stops it (a short count stops a write; non-zero stops progress).
template <class R, class F> R s_rNoThrow(STHTTPTransfer* pst, R rStop, F&& f) noexcept {
    try {
        return f();
    } catch (...) {
        pst->bNoMemory = true; // std::string and CKLBIN fail only for want of memory
        return rStop;
    }
}

size_t s_nAppendHeader(STHTTPTransfer* pst, char* p, size_t nBytes) {
    std::string_view sv(p, nBytes);
    // Each status line starts a head again: an interim 1xx or a proxy's answer to CONNECT
    // comes before the one that matters.
    if (sv.size() >= 5 && sv.substr(0, 5) == "HTTP/")
        pst->sHead.clear();
    while (!sv.empty() && (sv.back() == '\n' || sv.back() == '\r'))
        sv.remove_suffix(1);
    if (!sv.empty())
        pst->sHead.append(sv).append("\r\n");
    return nBytes;
}

size_t s_nOnHeader(char* p, size_t nSize, size_t nCount, void* pv) {
    auto* pst = static_cast<STHTTPTransfer*>(pv);
    return s_rNoThrow(pst, size_t{0}, [&] { return s_nAppendHeader(pst, p, nSize * nCount); });
}

// When the answer says its length (within the cap), the body's block is made that large at
// its first piece and filled in place: growing it piece by piece would hold the old block and
// the new one together at each step, half again the answer at peak.
void s_Prefill(STHTTPTransfer* pst) {
    curl_off_t nLength = -1;
    curl_easy_getinfo(pst->pCurl, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &nLength);
    if (nLength <= 0 || static_cast<size_t>(nLength) > pst->nMaxBody)
        return;
    // Copied from pages of zeros that the system maps without memory behind them.
    auto nSize = static_cast<size_t>(nLength);
    void* pZeros = ::mmap(nullptr, nSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pZeros == MAP_FAILED)
        return;
    pst->bPrefilled = KV_bSucces(pst->clBody.nAssign(pZeros, nSize));
    ::munmap(pZeros, nSize);
}

// The body as received so far, a block made larger at first cut to what came.
void s_EndBody(STHTTPTransfer* pst) {
    if (pst->bPrefilled)
        pst->clBody.Tronque(pst->nFilled);
    pst->bPrefilled = false;
}

size_t s_nOnBody(char* p, size_t nSize, size_t nCount, void* pv) {
    auto* pst = static_cast<STHTTPTransfer*>(pv);
    size_t nBytes = nSize * nCount;
    size_t nHeld = pst->bPrefilled ? pst->nFilled : pst->clBody.nGetTaille();
    if (nBytes > pst->nMaxBody - std::min(pst->nMaxBody, nHeld)) {
        pst->bTooLarge = true;
        return 0; // libcurl stops with CURLE_WRITE_ERROR
    }
    if (nHeld == 0 && !pst->bPrefilled)
        s_Prefill(pst);
    if (pst->bPrefilled && nBytes <= pst->clBody.nGetTaille() - pst->nFilled) {
        // The block is this transfer's alone (one reference): written in place.
        std::memcpy(const_cast<unsigned char*>(pst->clBody.pGetDonnees()) + pst->nFilled, p,
                    nBytes);
        pst->nFilled += nBytes;
        return nBytes;
    }
    s_EndBody(pst); // more than announced: appended from here on
    int nResult = pst->clBody.nConcat(p, nBytes);
    if (!KV_bSucces(nResult)) {
        (nResult == KV_ERR_MEMOIRE ? pst->bNoMemory : pst->bTooLarge) = true;
        return 0;
    }
    return nBytes;
}

// A Location resolved against the address it answered (not the routed one): absolute as it
// stands, "//host/p" with the scheme, "/p" on the origin, "p" beside the last path segment.
std::string s_sResolve(const std::string& sBase, const std::string& sLocation) {
    if (sLocation.empty() || sLocation.find("://") != std::string::npos)
        return sLocation;
    size_t nScheme = sBase.find("://");
    if (nScheme == std::string::npos)
        return sLocation;
    if (sLocation.rfind("//", 0) == 0)
        return sBase.substr(0, nScheme + 1) + sLocation;
    size_t nPath = sBase.find_first_of("/?#", nScheme + 3);
    std::string sOrigin = sBase.substr(0, nPath);
    if (sLocation.front() == '/')
        return sOrigin + sLocation;
    std::string sPath = nPath == std::string::npos ? "/" : sBase.substr(nPath);
    sPath = sPath.substr(0, sPath.find_first_of("?#"));
    return sOrigin + sPath.substr(0, sPath.rfind('/') + 1) + sLocation;
}

// The Location of a head as the server wrote it, blanks around it removed; "" when none.
std::string s_sLocation(std::string_view svHead) {
    constexpr std::string_view svName = "location:";
    for (size_t nPos = 0; nPos < svHead.size();) {
        size_t nEnd = svHead.find("\r\n", nPos);
        if (nEnd == std::string_view::npos)
            nEnd = svHead.size();
        std::string_view svLine = svHead.substr(nPos, nEnd - nPos);
        nPos = nEnd + 2;
        if (svLine.size() < svName.size() ||
            strncasecmp(svLine.data(), svName.data(), svName.size()) != 0)
            continue;
        svLine.remove_prefix(svName.size());
        while (!svLine.empty() && (svLine.front() == ' ' || svLine.front() == '\t'))
            svLine.remove_prefix(1);
        while (!svLine.empty() && (svLine.back() == ' ' || svLine.back() == '\t'))
            svLine.remove_suffix(1);
        return std::string(svLine);
    }
    return {};
}

std::string s_sMegabytes(curl_off_t n) {
    char sz[32];
    std::snprintf(sz, sizeof sz, "%.1f MB", static_cast<double>(n) / 1e6);
    return sz;
}

void s_ShowProgress(STHTTPTransfer& st, bool bEnd) {
    std::string sLine = "\rkvggl: " + st.sProgressLabel + ": " + (st.bLastUpload ? "sent " : "") +
                        s_sMegabytes(st.nLastNow);
    if (st.nLastTotal > 0) {
        sLine += " of " + s_sMegabytes(st.nLastTotal);
        char sz[16];
        std::snprintf(sz, sizeof sz, " (%d%%)",
                      static_cast<int>(st.nLastNow * 100 / std::max<curl_off_t>(st.nLastTotal, 1)));
        sLine += sz;
    }
    sLine += "   "; // wipes the tail of a longer line before
    if (bEnd)
        sLine += "\n";
    // One write, so that the line is not interleaved with another writer's bytes.
    ssize_t n = ::write(STDERR_FILENO, sLine.data(), sLine.size());
    (void)n;
}

int s_nShowProgress(STHTTPTransfer* pst, curl_off_t nDownTotal, curl_off_t nDown,
                    curl_off_t nUpTotal, curl_off_t nSent) {
    curl_off_t nLargest = std::max({nDownTotal, nDown, nUpTotal});
    if (nLargest <= STHostOptions::knProgressThreshold)
        return 0;
    pst->bLastUpload = nUpTotal > 0 && nSent < nUpTotal;
    pst->nLastNow = pst->bLastUpload ? nSent : nDown;
    pst->nLastTotal = pst->bLastUpload ? nUpTotal : nDownTotal;
    auto tNow = std::chrono::steady_clock::now();
    if (pst->bProgressShown && tNow - pst->tLastShown < std::chrono::milliseconds(250))
        return 0;
    pst->tLastShown = tNow;
    pst->bProgressShown = true;
    s_ShowProgress(*pst, false);
    return 0;
}

int s_nProgress(void* pv, curl_off_t nDownTotal, curl_off_t nDown, curl_off_t nUpTotal,
                curl_off_t nSent) {
    auto* pst = static_cast<STHTTPTransfer*>(pv);
    return s_rNoThrow(pst, 1,
                      [&] { return s_nShowProgress(pst, nDownTotal, nDown, nUpTotal, nSent); });
}

std::string s_sSeconds(long nMs) {
    char sz[32];
    if (nMs % 1000 == 0)
        std::snprintf(sz, sizeof sz, "%ld s", nMs / 1000);
    else
        std::snprintf(sz, sizeof sz, "%.3g s", static_cast<double>(nMs) / 1000.0);
    return sz;
}

// A header name is an HTTP token; a value holds no line break nor NUL, which would let a
// value smuggle headers of its own into the request.
bool s_bValidHeaderName(std::string_view sv) {
    if (sv.empty())
        return false;
    for (unsigned char c : sv) {
        if (c <= 32 || c >= 127 || std::strchr("()<>@,;:\\\"/[]?={}", c))
            return false;
    }
    return true;
}
bool s_bValidHeaderValue(std::string_view sv) {
    return sv.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

// "Name: value"; libcurl reads "Name:" as "remove the header", so an empty value is written
// "Name;", its form for "send it empty".
std::string s_sHeaderLine(std::string_view svName, std::string_view svValue) {
    std::string s(svName);
    if (svValue.empty())
        return s + ";";
    return s.append(": ").append(svValue);
}

bool s_bEqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

bool s_bHasHeader(const std::vector<std::string>& tab, std::string_view svName) {
    for (const std::string& s : tab) {
        size_t nEnd = s.find_first_of(":;");
        if (s_bEqualNoCase(std::string_view(s).substr(0, nEnd), svName))
            return true;
    }
    return false;
}

// ---- SOAP

const char* s_pszLocal(const char* pszNom) {
    const char* psz = std::strchr(pszNom, ':');
    return psz ? psz + 1 : pszNom;
}

pugi::xml_node s_ChildByLocalName(pugi::xml_node n, const char* pszLocal) {
    for (pugi::xml_node e = n.first_child(); e; e = e.next_sibling())
        if (e.type() == pugi::node_element && std::strcmp(s_pszLocal(e.name()), pszLocal) == 0)
            return e;
    return {};
}

std::string s_sTrimmedText(pugi::xml_node n) {
    std::string_view sv = n.text().get();
    while (!sv.empty() && std::isspace(static_cast<unsigned char>(sv.front())))
        sv.remove_prefix(1);
    while (!sv.empty() && std::isspace(static_cast<unsigned char>(sv.back())))
        sv.remove_suffix(1);
    return std::string(sv);
}

// True when the reply is an envelope whose Body holds a Fault, its two parts read.
bool s_bReadFault(std::string_view svReply, std::string& sCode, std::string& sMessage) {
    pugi::xml_document doc;
    if (!doc.load_buffer(svReply.data(), svReply.size(), pugi::parse_default, pugi::encoding_auto))
        return false;
    pugi::xml_node nEnvelope = doc.document_element();
    if (std::strcmp(s_pszLocal(nEnvelope.name()), "Envelope") != 0)
        return false;
    pugi::xml_node nFault = s_ChildByLocalName(s_ChildByLocalName(nEnvelope, "Body"), "Fault");
    if (!nFault)
        return false;
    pugi::xml_node n = s_ChildByLocalName(nFault, "faultcode");
    sCode = n ? s_sTrimmedText(n)
              : s_sTrimmedText(s_ChildByLocalName(s_ChildByLocalName(nFault, "Code"), "Value"));
    n = s_ChildByLocalName(nFault, "faultstring");
    sMessage = n ? s_sTrimmedText(n)
                 : s_sTrimmedText(s_ChildByLocalName(s_ChildByLocalName(nFault, "Reason"), "Text"));
    return true;
}

bool s_bValidXmlName(std::string_view sv) {
    if (sv.empty())
        return false;
    auto bStart = [](unsigned char c) { return std::isalpha(c) || c == '_' || c >= 0x80; };
    if (!bStart(static_cast<unsigned char>(sv.front())))
        return false;
    for (unsigned char c : sv)
        if (!bStart(c) && !std::isdigit(c) && c != '-' && c != '.' && c != ':')
            return false;
    return std::count(sv.begin(), sv.end(), ':') <= 1 && sv.back() != ':';
}

struct STStringWriter final : pugi::xml_writer {
    std::string s;
    void write(const void* p, size_t n) override { s.append(static_cast<const char*>(p), n); }
};

} // namespace

// ---------------------------------------------------------------------------------------------

CHTTPClient::CHTTPClient(const STHostOptions& stOptions) : m_stOptions(stOptions) {
    if (!m_clRouting.bParse(m_stOptions.sRoute, m_sRouteError, m_stOptions.bRouteInsecure) &&
        m_sRouteError.empty())
        m_sRouteError = "KVGGL_ROUTE cannot be read";
    // Routing sends requests elsewhere than their URL says: the user hears it once.
    static std::once_flag s_onceNotice;
    if (!m_clRouting.bEmpty())
        std::call_once(s_onceNotice, [this] {
            std::string s = "kvggl: routing is on (KVGGL_ROUTE): " + m_clRouting.sDescribe() + "\n";
            ssize_t n = ::write(STDERR_FILENO, s.data(), s.size());
            (void)n;
        });
    // Last, once nothing can throw: a constructor that throws runs no destructor.
    std::call_once(gOnceCurl, s_InitCurl);
    m_pCurl = curl_easy_init();
}

CHTTPClient::~CHTTPClient() {
    if (m_pCurl)
        curl_easy_cleanup(static_cast<CURL*>(m_pCurl));
}

void CHTTPClient::vAddRef() {
    m_nRef.fetch_add(1, std::memory_order_relaxed);
}

void CHTTPClient::vRelease() {
    if (m_nRef.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

CXError* CHTTPClient::vpiGetErreur() {
    return &m_clError;
}

void CHTTPClient::vSetVM(IVM* piVM, int /*nOption*/) {
    std::lock_guard guard(m_mutex);
    m_piVM = piVM;
}

IEntetesHTTP* CHTTPClient::vpiCreeEntetes() {
    return KVHost::Guard(&m_clError, static_cast<IEntetesHTTP*>(nullptr),
                         [&]() -> IEntetesHTTP* { return new CHTTPHeaders(); });
}

void CHTTPClient::_ClearAnswer() {
    m_bAnswer = false;
    m_nStatus = 0;
    m_sHead.clear();
    m_clBody = CKLBIN();
}

int CHTTPClient::vbDonneResultat(CAny& clValeur, int nGenre) {
    return KVHost::Guard(&m_clError, 0, [&]() -> int {
        std::lock_guard guard(m_mutex);
        if (!m_bAnswer) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_NO_ANSWER,
                             "No HTTP answer is held: the last exchange failed or none was made");
            return 0;
        }
        switch (nGenre) {
        case RESULTAT_HTTP_ENTETE: {
            CXYString<wchar_t> s;
            if (!KV_bSucces(KVUtf8::nVersWide(m_sHead, s))) {
                m_clError.SetErrorNoMemory();
                return 0;
            }
            clValeur.SetString(s);
            break;
        }
        case RESULTAT_HTTP_MESSAGE:
            clValeur.SetBinary(m_clBody);
            break;
        case RESULTAT_HTTP_CODE:
            clValeur.SetInt(static_cast<int>(m_nStatus));
            break;
        default:
            KVHost::SetError(m_clError, HOSTERROR_HTTP_NO_ANSWER,
                             "HTTP result kind " + std::to_string(nGenre) +
                                 " is not one the service gives (1 head, 2 body, 3 status)");
            return 0;
        }
        m_clError.RAZ();
        return 1;
    });
}

int CHTTPClient::vbExecute(CParametresHTTPRequete& clRequest, int /*nOption*/) {
    return KVHost::Guard(&m_clError, 0, [&]() -> int {
        std::lock_guard guard(m_mutex);
        m_clError.RAZ();
        _ClearAnswer();

        if (clRequest.m_nVersion != CParametresHTTPRequete::knVersion) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                             "The HTTP request record is of version " +
                                 std::to_string(clRequest.m_nVersion) +
                                 "; the service reads version " +
                                 std::to_string(CParametresHTTPRequete::knVersion));
            return 0;
        }
        STRequest st;
        bool bVerbHasBody = false;
        switch (clRequest.m_nMethode) {
        case METHODE_HTTP_GET:
            st.pszVerb = "GET";
            break;
        case METHODE_HTTP_POST:
            st.pszVerb = "POST";
            bVerbHasBody = true;
            break;
        case METHODE_HTTP_PUT:
            st.pszVerb = "PUT";
            bVerbHasBody = true;
            break;
        case METHODE_HTTP_DELETE:
            st.pszVerb = "DELETE";
            break;
        case METHODE_HTTP_PATCH:
            st.pszVerb = "PATCH";
            bVerbHasBody = true;
            break;
        default:
            KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                             "HTTP method " + std::to_string(clRequest.m_nMethode) +
                                 " is not one the service sends (1 GET, 2 POST, 3 PUT, 4 DELETE, "
                                 "6 PATCH)");
            return 0;
        }
        st.sUrl = KVUtf8::VersUtf8(clRequest.m_sURL.sv());

        if (IEntetesHTTP* piHeaders = clRequest.m_piEntetes) {
            int nCount = piHeaders->vnGetNbEntete();
            for (int i = 0; i < nCount; ++i) {
                std::string sName = KVUtf8::VersUtf8(piHeaders->vpszGetNom(i));
                std::string sValue = KVUtf8::VersUtf8(piHeaders->vpszGetValeur(i));
                if (!s_bValidHeaderName(sName) || !s_bValidHeaderValue(sValue)) {
                    KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                                     "The request header '" + sName.substr(0, 64) +
                                         "' cannot be sent: its name must be an HTTP token and its "
                                         "value may not hold a line break");
                    return 0;
                }
                st.tabHeaders.push_back(s_sHeaderLine(sName, sValue));
            }
        }

        st.pBody = clRequest.m_clCorps.pGetDonnees();
        st.nBody = clRequest.m_clCorps.nGetTaille();
        // The token request of a sign-in this host gave a proof key: its verifier goes along.
        std::string sWithVerifier;
        if (clRequest.m_nMethode == METHODE_HTTP_POST && st.nBody > 0 && st.nBody < 65536) {
            sWithVerifier.assign(static_cast<const char*>(st.pBody), st.nBody);
            if (KVPkce::bAddVerifier(sWithVerifier)) {
                st.pBody = sWithVerifier.data();
                st.nBody = sWithVerifier.size();
            }
        }
        st.bSendBody = bVerbHasBody || st.nBody > 0;
        if (st.bSendBody && !s_bHasHeader(st.tabHeaders, "Content-Type")) {
            std::string sType = KVUtf8::VersUtf8(clRequest.m_sTypeContenu.sv());
            if (!s_bValidHeaderValue(sType)) {
                KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                                 "The content type of the request holds a line break");
                return 0;
            }
            // An empty type removes the one libcurl would add for a body.
            st.tabHeaders.push_back(sType.empty() ? std::string("Content-Type:")
                                                  : "Content-Type: " + sType);
        }
        return _bExchange(st) ? 1 : 0;
    });
}

// The address an exchange goes to, after routing, and how messages name the other side.
struct CHTTPClient::STTarget {
    STUrlParts stParts;
    std::string sUrl;        // what libcurl asks: the routed address, or the request's own
    std::string sRequestUrl; // the request's own
    std::string sPeer;       // "host[:port]", with " (routed to ...)" when routed
    bool bRouted = false;
    std::vector<std::string> tabHeaders;
};

bool CHTTPClient::_bExchange(const STRequest& stRequest) {
    if (!m_sRouteError.empty()) {
        KVHost::SetError(m_clError, HOSTERROR_HTTP_ROUTE, m_sRouteError);
        return false;
    }
    if (!m_pCurl) {
        m_clError.SetErrorNoMemory();
        return false;
    }
    bool bNextHop = _bContinueOrEndChain(stRequest.sUrl);
    STRequest stSent = stRequest;
    // A relative Location goes where it points from the address that was redirected.
    if (bNextHop && stRequest.sUrl == m_sRedirectTarget &&
        stRequest.sUrl.find("://") == std::string::npos)
        stSent.sUrl = m_sRedirectResolved;
    STTarget stTarget;
    if (!_bRoute(stSent, stTarget))
        return false;
    if (bNextHop && !_bKeepCredentialsOnOrigin(stSent, stTarget))
        return false;
    STHTTPTransfer stTransfer;
    int nCode = CURLE_OK;
    if (!_bPerform(stSent, stTarget, stTransfer, nCode))
        return false;
    if (nCode != CURLE_OK) {
        m_nRedirects = 0;
        _SetTransportError(nCode, stRequest, stTarget, stTransfer);
        switch (m_clError.nGetUserErrorCode()) {
        case HOSTERROR_HTTP_RESOLVE:
        case HOSTERROR_HTTP_CONNECT:
        case HOSTERROR_HTTP_TLS:
        case HOSTERROR_HTTP_TIMEOUT:
            KVHost::NoteTransportFailure(stTarget.stParts.sHost,
                                         static_cast<eHOSTERROR>(m_clError.nGetUserErrorCode()),
                                         KVUtf8::VersUtf8(m_clError.pszGetUserMessage()));
            break;
        default:
            break;
        }
        return false;
    }
    KVHost::ClearTransportFailure(stTarget.stParts.sHost);
    return _bKeepAnswer(stTarget, stTransfer);
}

bool CHTTPClient::_bContinueOrEndChain(const std::string& sUrl) {
    // Only a request to where the last redirect pointed (as written, or resolved) continues
    // its chain: separate calls that each end on a redirect their caller does not follow (a
    // 303, a 307) are no loop.
    auto StartsWith = [&](const std::string& s) { return !s.empty() && sUrl.rfind(s, 0) == 0; };
    if (m_nRedirects > 0 && !StartsWith(m_sRedirectTarget) && !StartsWith(m_sRedirectResolved))
        m_nRedirects = 0;
    return m_nRedirects > 0;
}

// The next hop of a redirect chain keeps the bearer header and the body only on the origin
// (scheme, host, port) of the request that was redirected: whoever a Location names does not
// get the user's token. Leaving https for http is refused outright.
bool CHTTPClient::_bKeepCredentialsOnOrigin(STRequest& stRequest, STTarget& stTarget) {
    const STUrlParts& st = stTarget.stParts;
    std::string sOrigin = st.sScheme + "://" + st.sHostHeader();
    for (char& c : sOrigin)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (sOrigin == m_sRedirectOrigin)
        return true;
    if (m_sRedirectOrigin.rfind("https:", 0) == 0 && st.sScheme == "http") {
        m_nRedirects = 0;
        KVHost::SetError(m_clError, HOSTERROR_HTTP_REDIRECT_INSECURE,
                         "A redirect from " + m_sRedirectOrigin + " to plain http (" +
                             stRequest.sUrl.substr(0, 200) +
                             ") was refused: it would send the request in clear");
        return false;
    }
    std::erase_if(stTarget.tabHeaders, [](const std::string& sLine) {
        size_t nEnd = sLine.find_first_of(":;");
        return s_bEqualNoCase(std::string_view(sLine).substr(0, nEnd), "Authorization");
    });
    stRequest.pBody = nullptr;
    stRequest.nBody = 0;
    return true;
}

bool CHTTPClient::_bRoute(const STRequest& stRequest, STTarget& st) {
    if (!CRouting::s_bSplitUrl(stRequest.sUrl, st.stParts)) {
        KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                         "The address '" + stRequest.sUrl.substr(0, 200) +
                             "' is not an http or https URL");
        return false;
    }
    st.sUrl = stRequest.sUrl;
    st.sRequestUrl = stRequest.sUrl;
    st.sPeer = st.stParts.sHostHeader();
    st.tabHeaders = stRequest.tabHeaders;
    std::string sRouted, sHostHeader;
    if (m_clRouting.bRouteRequest(stRequest.sUrl, sRouted, sHostHeader)) {
        CRouting::STTarget stTo;
        m_clRouting.bFind(st.stParts, stTo);
        st.sPeer += " (routed to " + stTo.sHost + ":" + std::to_string(stTo.nPort) + ")";
        st.sUrl = std::move(sRouted);
        st.bRouted = true;
        if (!s_bHasHeader(st.tabHeaders, "Host"))
            st.tabHeaders.push_back("Host: " + sHostHeader);
    }
    // A body goes at once: waiting for "100 Continue" costs a round trip or a second.
    st.tabHeaders.emplace_back("Expect:");
    return true;
}

bool CHTTPClient::_bPerform(const STRequest& stRequest, const STTarget& stTarget,
                            STHTTPTransfer& stTransfer, int& nCode) {
    stTransfer.nMaxBody = m_stOptions.nMaxBody;
    stTransfer.pCurl = static_cast<CURL*>(m_pCurl);
    stTransfer.bProgress = m_stOptions.eProgress == HOSTPROGRESS_ALWAYS ||
                           (m_stOptions.eProgress == HOSTPROGRESS_AUTO && ::isatty(STDERR_FILENO));
    stTransfer.sProgressLabel = std::string(stRequest.pszVerb) + " " + stTarget.sPeer;

    curl_slist* pHeaderList = nullptr;
    for (const std::string& s : stTarget.tabHeaders) {
        curl_slist* p = curl_slist_append(pHeaderList, s.c_str());
        if (!p) {
            curl_slist_free_all(pHeaderList);
            m_clError.SetErrorNoMemory();
            return false;
        }
        pHeaderList = p;
    }
    CURL* pCurl = static_cast<CURL*>(m_pCurl);
    _Configure(stRequest, stTarget, stTransfer);
    curl_easy_setopt(pCurl, CURLOPT_HTTPHEADER, pHeaderList);
    nCode = curl_easy_perform(pCurl);
    s_EndBody(&stTransfer);
    if (stTransfer.bProgressShown)
        s_ShowProgress(stTransfer, true);
    curl_easy_setopt(pCurl, CURLOPT_HTTPHEADER, nullptr);
    curl_easy_setopt(pCurl, CURLOPT_ERRORBUFFER, nullptr);
    curl_slist_free_all(pHeaderList);
    return true;
}

void CHTTPClient::_Configure(const STRequest& stRequest, const STTarget& stTarget,
                             STHTTPTransfer& stTransfer) {
    CURL* pCurl = static_cast<CURL*>(m_pCurl);
    curl_easy_reset(pCurl); // keeps the live connections and caches
    curl_easy_setopt(pCurl, CURLOPT_URL, stTarget.sUrl.c_str());
    curl_easy_setopt(pCurl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(pCurl, CURLOPT_PATH_AS_IS, 1L); // the path goes as the component wrote it
    // HTTP/1.1 even where HTTP/2 is offered: HTTP/2 gives header names in lower case, and the
    // component looks headers up ("Location: ") by their exact spelling.
    curl_easy_setopt(pCurl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(pCurl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(pCurl, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(pCurl, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(pCurl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(pCurl, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(pCurl, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(pCurl, CURLOPT_CONNECTTIMEOUT_MS, m_stOptions.nConnectTimeoutMs);
    curl_easy_setopt(pCurl, CURLOPT_TIMEOUT_MS, m_stOptions.nTimeoutMs);
    curl_easy_setopt(pCurl, CURLOPT_MAXFILESIZE_LARGE,
                     static_cast<curl_off_t>(m_stOptions.nMaxBody));
    curl_easy_setopt(pCurl, CURLOPT_USERAGENT, "kvggl-host/" KVGGL_VERSION);
    curl_easy_setopt(pCurl, CURLOPT_ERRORBUFFER, stTransfer.szError);
    curl_easy_setopt(pCurl, CURLOPT_HEADERFUNCTION, s_nOnHeader);
    curl_easy_setopt(pCurl, CURLOPT_HEADERDATA, &stTransfer);
    curl_easy_setopt(pCurl, CURLOPT_WRITEFUNCTION, s_nOnBody);
    curl_easy_setopt(pCurl, CURLOPT_WRITEDATA, &stTransfer);
    if (stTransfer.bProgress) {
        curl_easy_setopt(pCurl, CURLOPT_XFERINFOFUNCTION, s_nProgress);
        curl_easy_setopt(pCurl, CURLOPT_XFERINFODATA, &stTransfer);
        curl_easy_setopt(pCurl, CURLOPT_NOPROGRESS, 0L);
    }
    if (gpShare)
        curl_easy_setopt(pCurl, CURLOPT_SHARE, gpShare);

    if (stRequest.bSendBody) {
        if (std::strcmp(stRequest.pszVerb, "POST") == 0)
            curl_easy_setopt(pCurl, CURLOPT_POST, 1L);
        else
            curl_easy_setopt(pCurl, CURLOPT_CUSTOMREQUEST, stRequest.pszVerb);
        // Never a null pointer: libcurl would then read the body from its read callback.
        curl_easy_setopt(pCurl, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(stRequest.nBody));
        curl_easy_setopt(pCurl, CURLOPT_POSTFIELDS,
                         stRequest.pBody ? stRequest.pBody : static_cast<const void*>(""));
    } else {
        curl_easy_setopt(pCurl, CURLOPT_HTTPGET, 1L);
        if (std::strcmp(stRequest.pszVerb, "GET") != 0)
            curl_easy_setopt(pCurl, CURLOPT_CUSTOMREQUEST, stRequest.pszVerb);
    }
}

// One failed transfer into one host error: the cause in the user's words, libcurl's code and
// text and the address in the debug text.
void CHTTPClient::_SetTransportError(int nCode, const STRequest& stRequest,
                                     const STTarget& stTarget, const STHTTPTransfer& stTransfer) {
    if (stTransfer.bNoMemory) {
        m_clError.SetErrorNoMemory();
        return;
    }
    CURL* pCurl = static_cast<CURL*>(m_pCurl);
    auto eCode = static_cast<CURLcode>(nCode);
    const char* szError = stTransfer.szError;
    const std::string& sPeer = stTarget.sPeer;
    const std::string& sUrl = stTarget.sUrl;
    std::string sDetail = "curl error " + std::to_string(static_cast<int>(eCode)) + " (" +
                          curl_easy_strerror(eCode) + ")" +
                          (szError[0] ? std::string(": ") + szError : std::string()) + "; URL " +
                          sUrl.substr(0, 300);
    std::string sWhat = szError[0] ? szError : curl_easy_strerror(eCode);
    long nErrno = 0;
    curl_easy_getinfo(pCurl, CURLINFO_OS_ERRNO, &nErrno);
    const STRequest& st = stRequest;
    switch (eCode) {
    case CURLE_COULDNT_RESOLVE_HOST:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_RESOLVE,
                         "Cannot resolve the host name of " + sPeer + ": no such host is known",
                         sDetail);
        break;
    case CURLE_COULDNT_RESOLVE_PROXY:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_RESOLVE,
                         "Cannot resolve the name of the proxy (from the environment) to "
                         "reach " +
                             sPeer,
                         sDetail);
        break;
    case CURLE_COULDNT_CONNECT:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_CONNECT,
                         "Cannot connect to " + sPeer + ": " +
                             (nErrno ? std::strerror(static_cast<int>(nErrno)) : sWhat),
                         sDetail);
        break;
    case CURLE_OPERATION_TIMEDOUT: {
        curl_off_t nConnectTime = 0;
        curl_off_t nTlsTime = 0;
        curl_easy_getinfo(pCurl, CURLINFO_CONNECT_TIME_T, &nConnectTime);
        curl_easy_getinfo(pCurl, CURLINFO_APPCONNECT_TIME_T, &nTlsTime);
        // A kept-alive connection has no connect time either: what ran out is told by how
        // long the exchange lasted.
        curl_off_t nTotalUs = 0;
        curl_easy_getinfo(pCurl, CURLINFO_TOTAL_TIME_T, &nTotalUs);
        bool bWhole = m_stOptions.nTimeoutMs > 0 && nTotalUs / 1000 >= m_stOptions.nTimeoutMs;
        std::string sMessage;
        if (nConnectTime == 0 && !bWhole)
            sMessage = "Connecting to " + sPeer + " took longer than " +
                       s_sSeconds(m_stOptions.nConnectTimeoutMs) +
                       " (the host's connect timeout, KVGGL_CONNECT_TIMEOUT)";
        else if (stTarget.stParts.sScheme == "https" && !stTarget.bRouted && nTlsTime == 0)
            sMessage = "The secure handshake with " + sPeer + " did not finish in time";
        else
            sMessage = sPeer + " did not answer within " + s_sSeconds(m_stOptions.nTimeoutMs) +
                       " (the host's timeout for one exchange, KVGGL_TIMEOUT)";
        KVHost::SetError(m_clError, HOSTERROR_HTTP_TIMEOUT, sMessage, sDetail);
        break;
    }
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_USE_SSL_FAILED:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_TLS,
                         "The secure connection to " + sPeer + " failed: " + sWhat, sDetail);
        break;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_TLS,
                         "The certificate of " + sPeer + " was refused: " + sWhat, sDetail);
        break;
    case CURLE_PARTIAL_FILE: {
        curl_off_t nDown = 0;
        curl_off_t nAnnounced = -1;
        curl_easy_getinfo(pCurl, CURLINFO_SIZE_DOWNLOAD_T, &nDown);
        curl_easy_getinfo(pCurl, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &nAnnounced);
        std::string sMessage =
            "The answer from " + sPeer + " stopped after " + std::to_string(nDown) + " bytes";
        if (nAnnounced >= 0)
            sMessage += " of the " + std::to_string(nAnnounced) + " announced";
        KVHost::SetError(m_clError, HOSTERROR_HTTP_CONNECTION_LOST,
                         sMessage + ": the connection was closed", sDetail);
        break;
    }
    case CURLE_GOT_NOTHING:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_CONNECTION_LOST,
                         sPeer + " closed the connection without answering", sDetail);
        break;
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_CONNECTION_LOST,
                         "The connection to " + sPeer + " was lost: " + sWhat, sDetail);
        break;
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                         "The address '" + st.sUrl.substr(0, 200) + "' cannot be asked: " + sWhat,
                         sDetail);
        break;
    case CURLE_FILESIZE_EXCEEDED:
    case CURLE_WRITE_ERROR:
        if (stTransfer.bNoMemory) {
            m_clError.SetErrorNoMemory();
        } else if (stTransfer.bTooLarge || eCode == CURLE_FILESIZE_EXCEEDED) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_TOO_LARGE,
                             "The answer from " + sPeer +
                                 " is larger than the host's "
                                 "limit of " +
                                 std::to_string(m_stOptions.nMaxBody) +
                                 " bytes (KVGGL_HTTP_MAX_BODY)",
                             sDetail);
        } else {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_TRANSPORT,
                             "The exchange with " + sPeer + " failed: " + sWhat, sDetail);
        }
        break;
    case CURLE_OUT_OF_MEMORY:
        m_clError.SetErrorNoMemory();
        break;
    default:
        KVHost::SetError(m_clError, HOSTERROR_HTTP_TRANSPORT,
                         "The exchange with " + sPeer + " failed: " + sWhat, sDetail);
        break;
    }
}

// A transfer that went through: the answer is kept, and a redirect counted in its chain.
bool CHTTPClient::_bKeepAnswer(const STTarget& stTarget, STHTTPTransfer& stTransfer) {
    CURL* pCurl = static_cast<CURL*>(m_pCurl);
    long nStatus = 0;
    curl_easy_getinfo(pCurl, CURLINFO_RESPONSE_CODE, &nStatus);
    if (nStatus >= 300 && nStatus < 400 && nStatus != 304) {
        m_sRedirectTarget = s_sLocation(stTransfer.sHead);
        m_sRedirectResolved = s_sResolve(stTarget.sRequestUrl, m_sRedirectTarget);
        const char* pszTarget = m_sRedirectResolved.c_str();
        if (m_nRedirects == 0) { // the origin the chain's credentials belong to
            m_sRedirectOrigin = stTarget.stParts.sScheme + "://" + stTarget.stParts.sHostHeader();
            for (char& c : m_sRedirectOrigin)
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
        if (++m_nRedirects > knMaxRedirects) {
            m_nRedirects = 0;
            KVHost::SetError(
                m_clError, HOSTERROR_HTTP_REDIRECT_LOOP,
                stTarget.sPeer + " answered " + std::to_string(knMaxRedirects + 1) +
                    " redirects in a row" +
                    (pszTarget ? std::string(" (to ") + pszTarget + ")" : std::string()) +
                    "; the chain was stopped",
                "URL " + stTarget.sUrl.substr(0, 300));
            return false;
        }
    } else {
        m_nRedirects = 0;
    }
    m_bAnswer = true;
    m_nStatus = nStatus;
    m_sHead = std::move(stTransfer.sHead);
    m_clBody.Take(stTransfer.clBody);
    return true;
}

// ---- SOAP

int CHTTPClient::vbSoapExecute(const wchar_t* pszURL, const STManipAUB& stEnveloppe,
                               const wchar_t* pszActionSOAP) {
    return KVHost::Guard(&m_clError, 0, [&]() -> int {
        std::lock_guard guard(m_mutex);
        m_clError.RAZ();
        _ClearAnswer();
        m_bSoapReply = false;
        m_clSoapReply = CKLBIN();
        m_bFault = false;
        m_sFaultCode.clear();
        m_sFaultString.clear();

        std::string sEnvelope;
        if (stEnveloppe.nType == 16) {
            sEnvelope = KVUtf8::VersUtf8(
                std::wstring_view(static_cast<const wchar_t*>(stEnveloppe.pGetDonnees()),
                                  stEnveloppe.nGetTaille() / sizeof(wchar_t)));
        } else if (stEnveloppe.nType == 19 || stEnveloppe.nType == 28) {
            sEnvelope.assign(stEnveloppe.svOctets());
        } else {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                             "The SOAP envelope is of type " + std::to_string(stEnveloppe.nType) +
                                 "; text (16, 19) or bytes (28) are expected");
            return 0;
        }
        if (stEnveloppe.nGetTaille() > 0 && !stEnveloppe.pGetDonnees()) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST, "The SOAP envelope is missing");
            return 0;
        }

        if (!m_tabSoapHeaders.empty()) {
            pugi::xml_document doc;
            pugi::xml_parse_result r =
                doc.load_buffer(sEnvelope.data(), sEnvelope.size(),
                                pugi::parse_default | pugi::parse_declaration |
                                    pugi::parse_comments | pugi::parse_pi | pugi::parse_ws_pcdata,
                                pugi::encoding_utf8);
            pugi::xml_node nEnvelope = doc.document_element();
            if (!r || std::strcmp(s_pszLocal(nEnvelope.name()), "Envelope") != 0) {
                KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                                 std::string("The SOAP envelope cannot take the added headers: ") +
                                     (r ? "its root is not an Envelope" : r.description()));
                return 0;
            }
            std::string sPrefix(nEnvelope.name(), static_cast<size_t>(s_pszLocal(nEnvelope.name()) -
                                                                      nEnvelope.name()));
            pugi::xml_node nHeader = s_ChildByLocalName(nEnvelope, "Header");
            if (!nHeader) {
                std::string sName = sPrefix + "Header";
                pugi::xml_node nBodyNode = s_ChildByLocalName(nEnvelope, "Body");
                nHeader = nBodyNode ? nEnvelope.insert_child_before(sName.c_str(), nBodyNode)
                                    : nEnvelope.append_child(sName.c_str());
            }
            for (const STSoapHeader& st : m_tabSoapHeaders) {
                pugi::xml_node n = nHeader.append_child(st.sName.c_str());
                if (!st.sNamespace.empty()) {
                    size_t nColon = st.sName.find(':');
                    std::string sAttribute = nColon == std::string::npos
                                                 ? "xmlns"
                                                 : "xmlns:" + st.sName.substr(0, nColon);
                    n.append_attribute(sAttribute.c_str()).set_value(st.sNamespace.c_str());
                }
                if (st.bMustUnderstand)
                    n.append_attribute((sPrefix + "mustUnderstand").c_str()).set_value("1");
                n.text().set(st.sValue.c_str());
            }
            STStringWriter clWriter;
            doc.save(clWriter, "", pugi::format_raw | pugi::format_no_declaration,
                     pugi::encoding_utf8);
            sEnvelope = std::move(clWriter.s);
        }

        std::string sAction = pszActionSOAP ? KVUtf8::VersUtf8(pszActionSOAP) : std::string();
        if (!s_bValidHeaderValue(sAction)) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                             "The SOAP action holds a line break");
            return 0;
        }
        if (sAction.size() < 2 || sAction.front() != '"' || sAction.back() != '"')
            sAction = "\"" + sAction + "\"";

        STRequest st;
        st.pszVerb = "POST";
        st.sUrl = pszURL ? KVUtf8::VersUtf8(pszURL) : std::string();
        st.tabHeaders = {"Content-Type: text/xml; charset=utf-8", "SOAPAction: " + sAction};
        st.pBody = sEnvelope.data();
        st.nBody = sEnvelope.size();
        st.bSendBody = true;
        if (!_bExchange(st))
            return 0;

        m_bSoapReply = true;
        m_clSoapReply = m_clBody;
        if (s_bReadFault(m_clBody.sv(), m_sFaultCode, m_sFaultString)) {
            m_bFault = true;
            return 0; // the error stays clean: the caller reads the fault
        }
        if (m_nStatus < 200 || m_nStatus > 299) {
            std::string sStatusLine;
            if (size_t nEnd = m_sHead.find("\r\n"); nEnd != std::string::npos)
                sStatusLine = m_sHead.substr(0, nEnd);
            KVHost::SetError(m_clError, HOSTERROR_SOAP_NOT_SOAP,
                             "The SOAP service answered '" + sStatusLine +
                                 "' without a SOAP fault");
            return 0;
        }
        return 1;
    });
}

int CHTTPClient::vbSoapAjouteEntete(const wchar_t* pszNom, const CAny& clValeur,
                                    const wchar_t* pszEspaceNoms, int bDoitComprendre) {
    return KVHost::Guard(&m_clError, 0, [&]() -> int {
        std::lock_guard guard(m_mutex);
        m_clError.RAZ();
        STSoapHeader st;
        st.sName = pszNom ? KVUtf8::VersUtf8(pszNom) : std::string();
        if (!s_bValidXmlName(st.sName)) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                             "'" + st.sName.substr(0, 64) + "' is not an XML element name");
            return 0;
        }
        CXYString<wchar_t> sValue;
        if (!KV_bSucces(clValeur.__nFillString(sValue))) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_BAD_REQUEST,
                             "The value of the SOAP header '" + st.sName +
                                 "' cannot be read as text");
            return 0;
        }
        st.sValue = KVUtf8::VersUtf8(sValue.sv());
        st.sNamespace = pszEspaceNoms ? KVUtf8::VersUtf8(pszEspaceNoms) : std::string();
        st.bMustUnderstand = bDoitComprendre != 0;
        m_tabSoapHeaders.push_back(std::move(st));
        return 1;
    });
}

int CHTTPClient::vbSoapDonneResultat(CAny& clValeur, eSOAPResultat eResultat, int nOption) {
    return KVHost::Guard(&m_clError, 0, [&]() -> int {
        std::lock_guard guard(m_mutex);
        if (eResultat != SOAP_RESULTAT_REPONSE) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_NO_ANSWER,
                             "SOAP result kind " + std::to_string(static_cast<int>(eResultat)) +
                                 " is not one the service gives (1 the reply)");
            return 0;
        }
        if (!m_bSoapReply) {
            KVHost::SetError(m_clError, HOSTERROR_HTTP_NO_ANSWER,
                             "No SOAP reply is held: the last call failed or none was made");
            return 0;
        }
        if (nOption == 1) {
            if (!KV_bSucces(
                    clValeur.SetStringA(reinterpret_cast<const char*>(m_clSoapReply.pGetDonnees()),
                                        static_cast<int>(m_clSoapReply.nGetTaille())))) {
                m_clError.SetErrorNoMemory();
                return 0;
            }
        } else {
            clValeur.SetBinary(m_clSoapReply);
        }
        m_clError.RAZ();
        return 1;
    });
}

int CHTTPClient::vbSoapErreur(eSOAPErreur eErreur, CXYString<wchar_t>& sTexte) {
    return KVHost::Guard(&m_clError, 0, [&]() -> int {
        std::lock_guard guard(m_mutex);
        if (!m_bFault) {
            KVHost::SetError(m_clError, HOSTERROR_SOAP_NO_FAULT,
                             "The last SOAP reply held no fault");
            return 0;
        }
        const std::string* ps = eErreur == SOAP_ERREUR_CODE      ? &m_sFaultCode
                                : eErreur == SOAP_ERREUR_MESSAGE ? &m_sFaultString
                                                                 : nullptr;
        if (!ps) {
            KVHost::SetError(m_clError, HOSTERROR_SOAP_NO_FAULT,
                             "SOAP fault part " + std::to_string(static_cast<int>(eErreur)) +
                                 " does not exist (1 faultcode, 2 faultstring)");
            return 0;
        }
        if (!KV_bSucces(KVUtf8::nVersWide(*ps, sTexte))) {
            m_clError.SetErrorNoMemory();
            return 0;
        }
        m_clError.RAZ();
        return 1;
    });
}
