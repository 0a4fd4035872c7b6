#include "connection/PosteFormulaire.h"

#include "connection/HTTPRequete.h"
#include "connection/HTTPResponse.h"

#include "Any.h"
#include "HTTPService.h"
#include "KVResult.h"
#include "Utf8.h"
#include "XError.h"

#include <string>

namespace {
void s_CopieErreurHote(IHTTP* piHTTP, CXError* pclErreur) {
    if (CXError* pclHote = piHTTP->vpiGetErreur(); pclHote && pclErreur)
        pclErreur->Copy(pclHote);
}
} // namespace

bool bPosteFormulaire(IHTTP* piHTTP, const wchar_t* pszURL, std::wstring_view svCorps,
                      STReponseFormulaire& stReponse, CXError* pclErreur) {
    CParametresHTTPRequete clParametres;
    clParametres.m_sURL = CXYString<wchar_t>(pszURL);
    clParametres.m_sTypeContenu =
        CXYString<wchar_t>(CHTTPRequete::s_pszGetMIMEType(HTTPCT_FORMULAIRE));
    clParametres.m_nMethode = METHODE_HTTP_POST;
    const std::string sUtf8 = KVUtf8::VersUtf8(svCorps);
    if (!KV_bSucces(clParametres.m_clCorps.nAssign(sUtf8.data(), sUtf8.size()))) {
        if (pclErreur)
            pclErreur->SetErrorNoMemory();
        return false;
    }
    // The token endpoint gets no bearer.
    return bEchangeHTTP(piHTTP, clParametres, stReponse, pclErreur);
}

bool bEchangeHTTP(IHTTP* piHTTP, CParametresHTTPRequete& clParametres,
                  STReponseFormulaire& stReponse, CXError* pclErreur) {
    if (!piHTTP->vbExecute(clParametres, 0)) {
        s_CopieErreurHote(piHTTP, pclErreur);
        return false;
    }
    CAny clStatut;
    CAny clCorps;
    if (!piHTTP->vbDonneResultat(clStatut, RESULTAT_HTTP_CODE) ||
        !piHTTP->vbDonneResultat(clCorps, RESULTAT_HTTP_MESSAGE)) {
        s_CopieErreurHote(piHTTP, pclErreur);
        return false;
    }
    stReponse.nStatut = 0;
    (void)clStatut.nGetINT(&stReponse.nStatut);
    CHTTPResponse clReponse;
    clReponse.SetMessage(clCorps);
    stReponse.clCorps = CKLBIN();
    (void)clReponse.bGetMessage(stReponse.clCorps);
    return true;
}
