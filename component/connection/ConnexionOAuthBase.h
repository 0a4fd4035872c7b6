// CConnexionOAuthBase: a connection to a service that authorises its calls with an OAuth
// bearer token. It holds the account's client data and runs the whole road of one authorised
// REST call: request record, bearer header, exchange, answer, simple redirects. Tokens live
// in the subclasses, which say how to get one for a request.
//
// A connection never renews a token by itself: a rejected token comes back as an error of the
// call, and the script logs in again.
#pragma once
#include "ConnexionWebService.h"
#include "HTTPRequete.h"
#include "HTTPResponse.h"

#include "TString.h"
#include "XYString.h"

class CKLANYArray;
class CParametresHTTPRequete;
class CSimpleBuffer;
class CXError;
class IVM;

class CConnexionOAuthBase : public CConnexionWebService {
public:
    CConnexionOAuthBase() = default;
    ~CConnexionOAuthBase() override;

    virtual int vbLogin(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) = 0;
    virtual int vbLogout(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) = 0;
    // The full call: true only on status 200 or 201, the body then copied into pclSortie when
    // given; any other status sets 600005 with the status label and the server's text.
    virtual int vbRequete(IVM* piVM, CHTTPRequete& clRequete, HTTPMethod eMethode,
                          CSimpleBuffer* pclSortie, CXError* pclErreur);
    // The token to send with the request; a connection without one gives "" and false.
    virtual int vbGetAccessToken(CHTTPRequete& clRequete, CXYString<wchar_t>& sToken) = 0;
    virtual void vRAZOAuthData();
    virtual void vCopieOAuthData(const CConnexionOAuthBase& clSource);
    virtual int veGetEtatConnexion(IVM* piVM, const CKLANYArray& tabParametres,
                                   CXError* pclErreur);
    // The hooks of the store of saved connections: the key, the record text and a copy.
    virtual CTString vcszGetCleHash();
    virtual int vbSerialise(CXYString<wchar_t>& sTexte);
    virtual int vbDeserialise(const wchar_t* pszTexte);
    virtual CConnexionOAuthBase* vpclClone();
    // Records a service's error text for a later message.
    virtual void _SetLastError(const wchar_t* pszErreur);

    // The exchange whatever its status, for callers that read statuses themselves. An unknown
    // method sends nothing and gives an empty response, with no error.
    CHTTPResponse clExecuteRequeteCOM(IVM* piVM, CHTTPRequete& clRequete, HTTPMethod eMethode,
                                      CXError* pclErreur);
    // 600005 with the label of the answer's status and the text the server sent.
    static void s_ErreurStatutHTTP(const CHTTPResponse& clReponse, CXError* pclErreur);
    // The head and body of the last exchange of this connection's HTTP service.
    CHTTPResponse _clGetHTTPResponse(IVM* piVM, CXError* pclErreur);

    const wchar_t* pszGetClientID() const { return m_sClientID.pszGet(); }
    void SetClientID(const wchar_t* psz) { m_sClientID = psz; }
    const wchar_t* pszGetClientSecret() const { return m_sClientSecret.pszGet(); }
    void SetClientSecret(const wchar_t* psz) { m_sClientSecret = psz; }
    const wchar_t* pszGetEmail() const { return m_sEmail.pszGet(); }
    void SetEmail(const wchar_t* psz) { m_sEmail = psz; }
    const wchar_t* pszGetLastError() const { return m_sLastError.pszGet(); }

protected:
    CTString m_sClientID;
    CTString m_sClientSecret;
    CTString m_sEmail;      // the account hint
    CTString m_sLastError;  // a text that the service sent back

private:
    CHTTPResponse __GET(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur);
    CHTTPResponse __POST(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur);
    CHTTPResponse __PUT(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur);
    CHTTPResponse __PATCH(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur);
    CHTTPResponse __DELETE(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur);
    CHTTPResponse __HTTPSansDonnes(IVM* piVM, CHTTPRequete& clRequete, HTTPMethod eMethode,
                                   CXError* pclErreur);
    CHTTPResponse __HTTPAvecDonnees(IVM* piVM, CHTTPRequete& clRequete, HTTPMethod eMethode,
                                    CXError* pclErreur);
    bool _bPrepareRecord(IVM* piVM, CHTTPRequete& clRequete, CParametresHTTPRequete& clParametres,
                         CXError* pclErreur);
    bool _bEnvoie(IVM* piVM, CHTTPRequete& clRequete, CParametresHTTPRequete& clParametres,
                  CHTTPResponse& clReponse, CXError* pclErreur);
    // The bytes to send: the encoded parameters for a form, else the request's data.
    CKLBIN __RecupDonnees(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur);
    CXYString<wchar_t> __czConstruitURLAvecParametres(IVM* piVM, CHTTPRequete& clRequete,
                                                      CXError* pclErreur);
    // Sends the record with the bearer header; false with the host's cause.
    int __bHTTPRequete(IVM* piVM, CParametresHTTPRequete& clParametres,
                       const CXYString<wchar_t>& sToken, CXError* pclErreur);
    int __nHTTPDonneResultatEntete(IHTTP* piHTTP, CHTTPResponse& clReponse, CXError* pclErreur);
    int __nHTTPDonneResultatMessage(IHTTP* piHTTP, CHTTPResponse& clReponse, CXError* pclErreur);
};
