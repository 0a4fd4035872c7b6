#include "ConnexionOAuthBase.h"

#include "foundation/SimpleBuffer.h"
#include "frame/FctEntonnoir.h"
#include "frame/ModuleInfo.h"

#include "Any.h"
#include "HTTPService.h"
#include "KVResult.h"
#include "Resources.h"
#include "Utf8.h"
#include "XError.h"

#include <cwchar>
#include <string>

namespace {

const wchar_t* s_pszTypeFormulaire() { return CHTTPRequete::s_pszGetMIMEType(HTTPCT_FORMULAIRE); }

bool s_bEstFormulaire(const CHTTPRequete& clRequete) {
    return wcscasecmp(clRequete.pszGetContentType(), s_pszTypeFormulaire()) == 0;
}

// Only these two are followed; a 303 or 307 comes back to the caller as it is.
bool s_bEstRedirection(eHTTPCODE eCode) {
    return eCode == HTTPMovedTemporarily || eCode == HTTPMovedPermanently;
}

// The host's cause of its last failure, into the caller's error.
void s_CopieErreurHote(IHTTP* piHTTP, CXError* pclErreur) {
    CXError* pclHote = piHTTP->vpiGetErreur();
    if (pclHote && pclErreur)
        pclErreur->Copy(pclHote);
}

} // namespace

CConnexionOAuthBase::~CConnexionOAuthBase() = default;

void CConnexionOAuthBase::vRAZOAuthData() {
    m_sClientID.Vide();
    m_sLastError.Vide();
    m_sEmail.Vide();
    m_sClientSecret.Vide();
}

void CConnexionOAuthBase::vCopieOAuthData(const CConnexionOAuthBase& clSource) {
    m_sLastError = clSource.m_sLastError;
    m_sEmail = clSource.m_sEmail;
    m_sClientID = clSource.m_sClientID;
    m_sClientSecret = clSource.m_sClientSecret;
}

int CConnexionOAuthBase::veGetEtatConnexion(IVM*, const CKLANYArray&, CXError*) { return -1; }

CTString CConnexionOAuthBase::vcszGetCleHash() { return m_sClientID; }

int CConnexionOAuthBase::vbSerialise(CXYString<wchar_t>&) { return 0; }

int CConnexionOAuthBase::vbDeserialise(const wchar_t*) { return 0; }

CConnexionOAuthBase* CConnexionOAuthBase::vpclClone() { return nullptr; }

void CConnexionOAuthBase::_SetLastError(const wchar_t* pszErreur) { m_sLastError = pszErreur; }

int CConnexionOAuthBase::vbRequete(IVM* piVM, CHTTPRequete& clRequete, HTTPMethod eMethode,
                                   CSimpleBuffer* pclSortie, CXError* pclErreur) {
    if (!pclErreur)
        return 0;
    const CHTTPResponse clReponse = clExecuteRequeteCOM(piVM, clRequete, eMethode, pclErreur);
    if (!pclErreur->bEstPropre())
        return 0;

    CKLBIN clCorps;
    (void)clReponse.bGetMessage(clCorps);
    const eHTTPCODE eCode = clReponse.eGetCodeRetour();
    if (eCode == HTTPOK || eCode == HTTPCreated) {
        if (pclSortie && !pclSortie->bAffecte(clCorps.pGetDonnees(), clCorps.nGetTaille())) {
            pclErreur->SetErrorNoMemory();
            return 0;
        }
        return 1;
    }

    clReponse.SetErreurStatut(pclErreur);
    return 0;
}

CHTTPResponse CConnexionOAuthBase::clExecuteRequeteCOM(IVM* piVM, CHTTPRequete& clRequete,
                                                       HTTPMethod eMethode, CXError* pclErreur) {
    switch (eMethode) {
    case HTTPGET:
        return __GET(piVM, clRequete, pclErreur);
    case HTTPPOST:
        return __POST(piVM, clRequete, pclErreur);
    case HTTPPUT:
        return __PUT(piVM, clRequete, pclErreur);
    case HTTPDELETE:
        return __DELETE(piVM, clRequete, pclErreur);
    case HTTPPATCH:
        return __PATCH(piVM, clRequete, pclErreur);
    default:
        return CHTTPResponse();
    }
}

CHTTPResponse CConnexionOAuthBase::__GET(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur) {
    return __HTTPSansDonnes(piVM, clRequete, HTTPGET, pclErreur);
}

CHTTPResponse CConnexionOAuthBase::__DELETE(IVM* piVM, CHTTPRequete& clRequete,
                                            CXError* pclErreur) {
    return __HTTPSansDonnes(piVM, clRequete, HTTPDELETE, pclErreur);
}

CHTTPResponse CConnexionOAuthBase::__POST(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur) {
    return __HTTPAvecDonnees(piVM, clRequete, HTTPPOST, pclErreur);
}

CHTTPResponse CConnexionOAuthBase::__PUT(IVM* piVM, CHTTPRequete& clRequete, CXError* pclErreur) {
    return __HTTPAvecDonnees(piVM, clRequete, HTTPPUT, pclErreur);
}

CHTTPResponse CConnexionOAuthBase::__PATCH(IVM* piVM, CHTTPRequete& clRequete,
                                           CXError* pclErreur) {
    return __HTTPAvecDonnees(piVM, clRequete, HTTPPATCH, pclErreur);
}

// The record of an exchange, before its URL and body: the host's header set filled with the
// request's headers, and its content type. False when no exchange can be made.
bool CConnexionOAuthBase::_bPrepareRecord(IVM* piVM, CHTTPRequete& clRequete,
                                          CParametresHTTPRequete& clParametres,
                                          CXError* pclErreur) {
    if (!piVM || !pclErreur)
        return false;
    IHTTP* piHTTP = piGetCOM(pclErreur);
    if (!pclErreur->bEstPropre() || !piHTTP)
        return false;
    clParametres.AdopteEntetes(piHTTP->vpiCreeEntetes());
    clRequete.RemplitEntetesHTTP(clParametres.m_piEntetes);
    return true;
}

// Sends the record with the bearer and reads the answer. A connection without a token still
// sends the request, with a bare bearer.
bool CConnexionOAuthBase::_bEnvoie(IVM* piVM, CHTTPRequete& clRequete,
                                   CParametresHTTPRequete& clParametres, CHTTPResponse& clReponse,
                                   CXError* pclErreur) {
    CXYString<wchar_t> sToken;
    (void)vbGetAccessToken(clRequete, sToken);
    if (!__bHTTPRequete(piVM, clParametres, sToken, pclErreur))
        return false;
    clReponse = _clGetHTTPResponse(piVM, pclErreur);
    return true;
}

CHTTPResponse CConnexionOAuthBase::__HTTPSansDonnes(IVM* piVM, CHTTPRequete& clRequete,
                                                    HTTPMethod eMethode, CXError* pclErreur) {
    CHTTPResponse clReponse;
    CParametresHTTPRequete clParametres;
    if (!_bPrepareRecord(piVM, clRequete, clParametres, pclErreur))
        return clReponse;
    clParametres.m_sTypeContenu = CXYString<wchar_t>(clRequete.pszGetContentType());
    clParametres.m_sURL = __czConstruitURLAvecParametres(piVM, clRequete, pclErreur);
    clParametres.m_nMethode = eMethode;
    // A query the host could not encode is not sent half-built.
    if (!pclErreur->bEstPropre())
        return clReponse;

    if (!_bEnvoie(piVM, clRequete, clParametres, clReponse, pclErreur))
        return clReponse;

    if (s_bEstRedirection(clReponse.eGetCodeRetour())) {
        // The new address is fetched by GET, without the parameters and headers of the first
        // request; its bearer goes out again with it.
        CXYString<wchar_t> sAdresse;
        (void)clReponse.bExtraitEntete(L"Location", sAdresse);
        CHTTPRequete clSuite(clRequete.eGetService(), sAdresse.pszGet(), HTTPCT_GOOGLE_INCONNU);
        clSuite.SetContentType(clRequete.pszGetContentType());
        clReponse = __GET(piVM, clSuite, pclErreur);
    }
    return clReponse;
}

CHTTPResponse CConnexionOAuthBase::__HTTPAvecDonnees(IVM* piVM, CHTTPRequete& clRequete,
                                                     HTTPMethod eMethode, CXError* pclErreur) {
    CHTTPResponse clReponse;
    CParametresHTTPRequete clParametres;
    if (!_bPrepareRecord(piVM, clRequete, clParametres, pclErreur))
        return clReponse;
    clParametres.m_clCorps = __RecupDonnees(piVM, clRequete, pclErreur);
    clParametres.m_sTypeContenu = CXYString<wchar_t>(clRequete.pszGetContentType());
    // A form carries its parameters in the body; any other type carries them in the query.
    if (s_bEstFormulaire(clRequete))
        clParametres.m_sURL = CXYString<wchar_t>(clRequete.pszGetURL());
    else
        clParametres.m_sURL = __czConstruitURLAvecParametres(piVM, clRequete, pclErreur);
    clParametres.m_nMethode = eMethode;
    if (!pclErreur->bEstPropre())
        return clReponse;

    if (!_bEnvoie(piVM, clRequete, clParametres, clReponse, pclErreur))
        return clReponse;

    if (s_bEstRedirection(clReponse.eGetCodeRetour())) {
        // The whole request goes again, body, parameters and headers, and always by POST.
        CXYString<wchar_t> sAdresse;
        (void)clReponse.bExtraitEntete(L"Location", sAdresse);
        CHTTPRequete clSuite(clRequete);
        clSuite.SetURL(sAdresse.pszGet());
        clReponse = __POST(piVM, clSuite, pclErreur);
    }
    return clReponse;
}

CKLBIN CConnexionOAuthBase::__RecupDonnees(IVM* piVM, CHTTPRequete& clRequete,
                                           CXError* pclErreur) {
    CKLBIN clCorps;
    std::string sUtf8;
    const void* pDonnees = nullptr;
    unsigned long nTaille = 0;
    bool bEntier = true;
    if (s_bEstFormulaire(clRequete)) {
        sUtf8 = KVUtf8::VersUtf8(clRequete.csGetParametres(1, piVM, pclErreur).sv());
        pDonnees = sUtf8.data();
        nTaille = sUtf8.size();
    } else {
        pDonnees = clRequete.pGetDonnees(&nTaille);
        bEntier = clRequete.bDonneesIntactes() && nTaille == clRequete.nGetTailleDonnees();
    }
    // A body that could not be kept or copied is an error of the call: the request must not
    // go out with an empty or partial body in its place.
    if (!bEntier || (nTaille && !KV_bSucces(clCorps.nAssign(pDonnees, nTaille)))) {
        if (pclErreur)
            pclErreur->SetErrorNoMemory();
        return CKLBIN();
    }
    return clCorps;
}

CXYString<wchar_t> CConnexionOAuthBase::__czConstruitURLAvecParametres(IVM* piVM,
                                                                      CHTTPRequete& clRequete,
                                                                      CXError* pclErreur) {
    std::wstring sURL = clRequete.pszGetURL();
    if (clRequete.nGetNbParametre() == 0)
        return CXYString<wchar_t>(std::wstring_view(sURL));
    sURL += sURL.find(L'?') != std::wstring::npos ? L'&' : L'?';
    sURL += clRequete.csGetParametres(1, piVM, pclErreur).sv();
    return CXYString<wchar_t>(std::wstring_view(sURL));
}

int CConnexionOAuthBase::__bHTTPRequete(IVM* piVM, CParametresHTTPRequete& clParametres,
                                        const CXYString<wchar_t>& sToken, CXError* pclErreur) {
    if (!piVM || !pclErreur)
        return 0;
    IHTTP* piHTTP = piGetCOM(pclErreur);
    if (!pclErreur->bEstPropre() || !piHTTP)
        return 0;
    piHTTP->vSetVM(piVM, 0);
    if (clParametres.m_sTypeContenu.bVide())
        clParametres.m_sTypeContenu = CXYString<wchar_t>(s_pszTypeFormulaire());
    if (!clParametres.m_piEntetes)
        clParametres.AdopteEntetes(piHTTP->vpiCreeEntetes());
    if (!clParametres.m_piEntetes) {
        s_CopieErreurHote(piHTTP, pclErreur);
        return 0;
    }
    // Every request of this road carries the header, "Bearer " alone when there is no token.
    std::wstring sAutorisation = L"Bearer ";
    sAutorisation += sToken.sv();
    clParametres.m_piEntetes->vAjoute(L"Authorization", sAutorisation.c_str());

    const int bResultat = piHTTP->vbExecute(clParametres, 0);
    if (!bResultat)
        s_CopieErreurHote(piHTTP, pclErreur);
    return bResultat;
}

CHTTPResponse CConnexionOAuthBase::_clGetHTTPResponse(IVM* piVM, CXError* pclErreur) {
    CHTTPResponse clReponse;
    if (!piVM)
        return clReponse;
    IHTTP* piHTTP = piGetCOM(pclErreur);
    if (!piHTTP)
        return clReponse;
    __nHTTPDonneResultatEntete(piHTTP, clReponse, pclErreur);
    __nHTTPDonneResultatMessage(piHTTP, clReponse, pclErreur);
    return clReponse;
}

int CConnexionOAuthBase::__nHTTPDonneResultatEntete(IHTTP* piHTTP, CHTTPResponse& clReponse,
                                                    CXError* pclErreur) {
    CAny clEntete;
    if (!piHTTP->vbDonneResultat(clEntete, RESULTAT_HTTP_ENTETE)) {
        s_CopieErreurHote(piHTTP, pclErreur);
        return 0;
    }
    clReponse.SetEntete(clEntete);
    return 1;
}

int CConnexionOAuthBase::__nHTTPDonneResultatMessage(IHTTP* piHTTP, CHTTPResponse& clReponse,
                                                     CXError* pclErreur) {
    CAny clMessage;
    if (!piHTTP->vbDonneResultat(clMessage, RESULTAT_HTTP_MESSAGE)) {
        s_CopieErreurHote(piHTTP, pclErreur);
        return 0;
    }
    clReponse.SetMessage(clMessage);
    return 1;
}
