// What the tests of the HTTP service share: options for loopback, a request record filled the
// way the component fills it, and the error read back as UTF-8.
#pragma once
#include "Any.h"
#include "HTTPClient.h"
#include "KLBIN.h"
#include "KVResult.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <string>
#include <utility>
#include <vector>

// Quick timeouts; no progress line unless a test asks for one.
inline STHostOptions TestOptions() {
    STHostOptions st;
    st.nConnectTimeoutMs = 5000;
    st.nTimeoutMs = 10000;
    st.eProgress = HOSTPROGRESS_NEVER;
    return st;
}

inline CRef<CHTTPClient> NewClient(const STHostOptions& st = TestOptions()) {
    return CRef<CHTTPClient>::Adopt(new CHTTPClient(st));
}

using HeaderList = std::vector<std::pair<std::wstring, std::wstring>>;

inline void FillRequest(CHTTPClient& clClient, CParametresHTTPRequete& clRequest, int nMethod,
                        const std::string& sUrl, const std::string& sBody = {},
                        const wchar_t* pszType = L"", const HeaderList& tabHeaders = {}) {
    clRequest.m_sURL = CXYString<wchar_t>(KVUtf8::VersWide(sUrl));
    clRequest.m_clCorps = CKLBIN(sBody.data(), sBody.size());
    clRequest.m_sTypeContenu = CXYString<wchar_t>(pszType);
    clRequest.m_nMethode = nMethod;
    IEntetesHTTP* piHeaders = clClient.vpiCreeEntetes();
    for (const auto& [sName, sValue] : tabHeaders)
        piHeaders->vAjoute(sName.c_str(), sValue.c_str());
    clRequest.AdopteEntetes(piHeaders);
}

// One exchange; true when an answer arrived.
inline bool Execute(CHTTPClient& clClient, int nMethod, const std::string& sUrl,
                    const std::string& sBody = {}, const wchar_t* pszType = L"",
                    const HeaderList& tabHeaders = {}) {
    CParametresHTTPRequete clRequest;
    FillRequest(clClient, clRequest, nMethod, sUrl, sBody, pszType, tabHeaders);
    return clClient.vbExecute(clRequest, 0) != 0;
}

inline std::string ErrorText(CXError* pcl) {
    return KVUtf8::VersUtf8(pcl->pszGetUserMessage());
}

inline int StatusOf(CHTTPClient& clClient) {
    CAny cl;
    int n = -1;
    if (!clClient.vbDonneResultat(cl, RESULTAT_HTTP_CODE) || !KV_bSucces(cl.nGetINT(&n)))
        return -1;
    return n;
}

inline std::string BodyOf(CHTTPClient& clClient) {
    CAny cl;
    CKLBIN clBin;
    if (!clClient.vbDonneResultat(cl, RESULTAT_HTTP_MESSAGE) || cl.nGetType() != 28 ||
        !KV_bSucces(cl.nFillBinary(clBin)))
        return "<none>";
    return std::string(clBin.sv());
}
