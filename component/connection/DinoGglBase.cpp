#include "connection/DinoGglBase.h"

#include "connection/ConnexionOAuthBase.h"
#include "connection/GoogleConnexion.h"
#include "connection/GoogleEndpoints.h"
#include "connection/HTTPRequete.h"
#include "connection/HTTPResponse.h"
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"

#include "Any.h"
#include "Ref.h"
#include "Utf8.h"
#include "VM.h"
#include "XError.h"

#include <string>

namespace {
std::wstring s_sAPI(std::wstring_view svChemin) {
    std::wstring s = gszGoogleAPI;
    s += svChemin;
    return s;
}
} // namespace

void CCDinoGglBase::_EcritJSON(CGoogleConnexion& clConnexion, HTTPMethod eMethode,
                               std::wstring_view svChemin, const CXYString<wchar_t>& sCorps,
                               CCtxInfo* pclCtx, CXError* pclErreur) {
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, s_sAPI(svChemin).c_str(), HTTPCT_TEXTE);
    std::string sUtf8 = KVUtf8::VersUtf8(sCorps.sv());
    clRequete.AjouteDonnees(reinterpret_cast<unsigned char*>(sUtf8.data()),
                            static_cast<unsigned long>(sUtf8.size()));
    clRequete.SetContentType(CHTTPRequete::s_pszGetMIMEType(HTTPCT_JSON));
    CHTTPResponse clReponse =
        clConnexion.clExecuteRequeteCOM(CCtxInfo::s_piGetVM(pclCtx), clRequete, eMethode, pclErreur);
    if (!pclErreur->bEstPropre() || clReponse.eGetCodeRetour() != HTTPOK) {
        _FormateErreurHTTP(clReponse, pclErreur);
        return;
    }
    CXYString<char> sTexte;
    if (!clReponse.bGetMessage(sTexte) || sTexte.bVide()) return;
    m_eEtatObjet = ETAT_SYNCHRONISE;
    auto clRacine = CComposanteGGL::s_piGetJSON(sTexte.pszGet(), pclErreur);
    if (clRacine) clRacine->vAccepte(static_cast<CVisiteurJSONSetPropriete&>(*this));
}

void CCDinoGglBase::_Supprime(CGoogleConnexion& clConnexion, std::wstring_view svChemin,
                              CCtxInfo* pclCtx, CXError* pclErreur) {
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, s_sAPI(svChemin).c_str(), HTTPCT_TEXTE);
    (void)clConnexion.clExecuteRequeteCOM(CCtxInfo::s_piGetVM(pclCtx), clRequete, HTTPDELETE,
                                          pclErreur);
    m_eEtatObjet = ETAT_A_CREER;
}

void CCDinoGglBase::_FormateErreurHTTP(const CHTTPResponse& clReponse, CXError* pclErreur) {
    if (!pclErreur || !pclErreur->bEstPropre()) return;
    if (clReponse.eGetCodeRetour() == HTTPConflict)
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_CONFLICT);
    else
        clReponse.SetErreurStatut(pclErreur);
}

bool CCDinoGglBase::s_bEstTexte(const CAny& clValeur) {
    return clValeur.nGetType() == KVTYPE_KLDSTRW; // a string, not an array of them
}

void CCDinoGglBase::s_CopieTexte(CAny& clValeur, CXYString<wchar_t>& sChamp) {
    if (s_bEstTexte(clValeur)) (void)clValeur.__nFillString(sChamp);
}
