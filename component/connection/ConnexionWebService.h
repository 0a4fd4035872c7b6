// CConnexionWebService: the root of every connection, owner of its link to the host's HTTP
// service. The link is asked for at first use and kept until the connection ends.
#pragma once
#include "HTTPService.h"
#include "Ref.h"

class CXError;

class CConnexionWebService {
public:
    CConnexionWebService() = default;
    CConnexionWebService(const CConnexionWebService&) = delete;
    CConnexionWebService& operator=(const CConnexionWebService&) = delete;
    virtual ~CConnexionWebService();

    // The host's HTTP service, borrowed; null with 600033 in the error when the host has none.
    IHTTP* piGetCOM(CXError* pclErreur);

    // Kept for callers that trace their exchanges; nothing is traced.
    void TraceCommunication(const wchar_t*, int) {}

private:
    CRef<IHTTP> m_clHTTP;
};
