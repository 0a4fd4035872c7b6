// CConnexionWebServiceSOAP: the base of connections that speak SOAP through the host's HTTP
// service. A call posts one envelope and keeps the reply as text; the reply is then read as
// an XML document, never parsed by hand. What a fault becomes is the derived class's choice.
#pragma once
#include "connection/ConnexionWebService.h"

#include "XYString.h"

class CXError;
class INoeudXML;

class CConnexionWebServiceSOAP : public CConnexionWebService {
public:
    ~CConnexionWebServiceSOAP() override = default;

protected:
    // Posts the envelope (FctEntonnoir::bSoapExecuteXML takes the six middle arguments as they
    // are) and gives the reply as wide text. A fault, or any failure that left the error clean,
    // goes to _vRaiseErrorSOAP.
    bool _bAppelSOAP(IHTTP* piHTTP, CXError* pclErreur, const wchar_t* pszURL,
                     const wchar_t* pszEntete, const char* pszAction, const wchar_t* pszCorps,
                     const wchar_t* pszNamespace, const wchar_t* pszAttributs,
                     CXYString<wchar_t>* psReponse);
    // The node "result" under Body/<operation>Response of the reply, with a reference of its
    // own; null with 600003 when the reply does not read or holds no result.
    INoeudXML* _pclGetResponseNode(const wchar_t* pszReponse, const char* pszOperation,
                                   CXError* pclErreur);
    virtual void _vRaiseErrorSOAP(CXError* pclErreur) = 0;
};
