#include "connection/ConnexionWebServiceSOAP.h"

#include "frame/ComposanteGGL.h"
#include "frame/FctEntonnoir.h"
#include "frame/ModuleInfo.h"

#include "Any.h"
#include "KVResult.h"
#include "Ref.h"
#include "Utf8.h"
#include "XMLService.h"
#include "XError.h"

#include <string>

namespace {
constexpr unsigned knErreurReponseIllisible = 600003;
} // namespace

bool CConnexionWebServiceSOAP::_bAppelSOAP(IHTTP* piHTTP, CXError* pclErreur,
                                           const wchar_t* pszURL, const wchar_t* pszEntete,
                                           const char* pszAction, const wchar_t* pszCorps,
                                           const wchar_t* pszNamespace,
                                           const wchar_t* pszAttributs,
                                           CXYString<wchar_t>* psReponse) {
    if (FctEntonnoir::bSoapExecuteXML(piHTTP, pclErreur, pszURL, pszEntete, pszAction, pszCorps,
                                      pszNamespace, pszAttributs)) {
        CAny clReponse;
        if (!FctEntonnoir::bSoapDonneResultat(piHTTP, pclErreur, clReponse, SOAP_RESULTAT_REPONSE, 1))
            return false;
        const char* psz = nullptr;
        if (!KV_bSucces(clReponse.__nCastToString(&psz)))
            return false;
        if (psReponse)
            (void)KVUtf8::nVersWide(psz ? psz : "", *psReponse);
        return true;
    }
    if (pclErreur->bEstPropre())
        _vRaiseErrorSOAP(pclErreur);
    return false;
}

INoeudXML* CConnexionWebServiceSOAP::_pclGetResponseNode(const wchar_t* pszReponse,
                                                         const char* pszOperation,
                                                         CXError* pclErreur) {
    auto clDoc = CComposanteGGL::s_piGetXMLDoc(pszReponse);
    CRef<INoeudXML> clNoeud;
    if (clDoc) {
        const std::string sReponse = std::string(pszOperation) + "Response";
        auto clRacine = CRef<INoeudXML>::Adopt(clDoc->piGetRacine(0));
        auto clCorps = CRef<INoeudXML>::Adopt(clRacine ? clRacine->piGetEnfantParNom("Body") : nullptr);
        auto clOp = CRef<INoeudXML>::Adopt(clCorps ? clCorps->piGetEnfantParNom(sReponse.c_str())
                                                   : nullptr);
        clNoeud = CRef<INoeudXML>::Adopt(clOp ? clOp->piGetEnfantParNom("result") : nullptr);
    }
    if (!clNoeud)
        pclErreur->SetUserError(&gstMyModuleInfo60, knErreurReponseIllisible);
    return clNoeud.pDetach();
}
