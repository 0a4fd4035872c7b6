#include "ConnexionWebService.h"

#include "frame/ComposanteGGL.h"

CConnexionWebService::~CConnexionWebService() = default;

IHTTP* CConnexionWebService::piGetCOM(CXError* pclErreur) {
    // A failed query is asked again at the next use.
    if (!m_clHTTP)
        m_clHTTP = CComposanteGGL::s_piQueryIHTTP(pclErreur);
    return m_clHTTP.pGet();
}
