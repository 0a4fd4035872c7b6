#include "connection/InterfGGLCnx.h"

#include "connection/GoogleConnexion.h"
#include "connection/GoogleEndpoints.h"
#include "connection/HTTPResponse.h"
#include "connection/PosteFormulaire.h"
#include "connection/VisiteurJSONGetToken.h"
#include "foundation/LooseCompare.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"

#include "Any.h"
#include "HTTPService.h"
#include "JSONService.h"
#include "KVResult.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <string>
#include <string_view>

namespace {

// The kind of host runtime that runs the dialogue in the user's browser.
constexpr int knProduitParNavigateur = 6;

// The keys of a redirect, in the order they are tried.
struct STCleRedirection {
    const wchar_t* pszCle;
    CXYString<wchar_t> stInfoResHTTP::*pChamp;
};
constexpr STCleRedirection gtabCleRedirection[] = {
    {L"error", &stInfoResHTTP::m_sError},
    {L"code", &stInfoResHTTP::m_sCode},
    {L"state", &stInfoResHTTP::m_sState},
    {L"access_token", &stInfoResHTTP::m_sAccessToken},
    {L"token_type", &stInfoResHTTP::m_sTokenType},
};

} // namespace

const wchar_t* CInterfGGLCnx::sGetClientID() const {
    return m_pclConnexion->pszGetClientID();
}

const wchar_t* CInterfGGLCnx::sGetClientSecret() const {
    return m_pclConnexion->pszGetClientSecret();
}

bool CInterfGGLCnx::bGetParNavigateur() const {
    return CInformationDLL::ms_nCodeProduitExecution == knProduitParNavigateur;
}

const wchar_t* CInterfGGLCnx::sGetURLLogin() const {
    // The texts go as they stand: the scopes are already joined by "%20", and the client id
    // and the hint hold nothing a query cannot carry.
    std::wstring s = gszGoogleAccounts;
    s += L"/o/oauth2/auth?response_type=code&client_id=";
    s += m_pclConnexion->pszGetClientID();
    s += L"&scope=";
    s += m_pclConnexion->czGetScopes(m_nServices).sv();
    s += L"&include_granted_scopes=true";
    const std::wstring_view svEmail = m_pclConnexion->pszGetEmail();
    if (!svEmail.empty()) {
        s += L"&login_hint=";
        s += svEmail;
    }
    m_sURL = CXYString<wchar_t>(std::wstring_view(s));
    return m_sURL.pszGet();
}

bool CInterfGGLCnx::s_bExtraitInfoResHTTP(const wchar_t* pszTexte, stInfoResHTTP& stInfo) {
    if (!pszTexte || !*pszTexte)
        return false;
    std::wstring_view sv(pszTexte);
    const size_t nFinLigne = sv.find(L"\r\n");
    if (nFinLigne == std::wstring_view::npos)
        return false;
    sv = sv.substr(0, nFinLigne);

    // A code comes in the query; a token given straight to the browser, in the fragment.
    size_t nDebut = sv.find(L'?');
    if (nDebut == std::wstring_view::npos)
        nDebut = sv.find(L'#');
    if (nDebut == std::wstring_view::npos)
        return false;
    std::wstring_view svRequete = sv.substr(nDebut + 1);
    // The request line ends with the protocol, after the last blank.
    const size_t nBlanc = svRequete.rfind(L' ');
    if (nBlanc != std::wstring_view::npos)
        svRequete = svRequete.substr(0, nBlanc);

    bool bResultat = false;
    const auto Lit = [&](std::wstring_view svMorceau) {
        const size_t nEgal = svMorceau.find(L'=');
        if (nEgal == std::wstring_view::npos)
            return;
        const std::wstring_view svCle = svMorceau.substr(0, nEgal);
        for (const STCleRedirection& st : gtabCleRedirection) {
            if (!STR_bEgalSoupleSansBlancs(svCle, st.pszCle))
                continue;
            CXYString<wchar_t>& sChamp = stInfo.*st.pChamp;
            sChamp = CXYString<wchar_t>(svMorceau.substr(nEgal + 1));
            // The last of these three decides; state and token_type say nothing.
            if (st.pChamp == &stInfoResHTTP::m_sError)
                bResultat = false;
            else if (st.pChamp == &stInfoResHTTP::m_sCode ||
                     st.pChamp == &stInfoResHTTP::m_sAccessToken)
                bResultat = !sChamp.bVide();
            return;
        }
    };
    for (size_t nPos = 0;;) {
        const size_t nEt = svRequete.find(L'&', nPos);
        if (nEt == std::wstring_view::npos) {
            Lit(svRequete.substr(nPos));
            break;
        }
        Lit(svRequete.substr(nPos, nEt - nPos));
        nPos = nEt + 1;
    }
    return bResultat;
}

bool CInterfGGLCnx::bProcessRedirectionHTTP(const wchar_t* pszReponse,
                                            const wchar_t* pszRedirection) {
    _CXErrorModule60 clErreurLocale;
    CXError* pclErreur = m_pclErreur ? m_pclErreur : &clErreurLocale;

    stInfoResHTTP stInfo;
    if (!s_bExtraitInfoResHTTP(pszReponse, stInfo)) {
        // The caller reports the provider's refusal with this text.
        m_pclConnexion->_SetLastError(stInfo.m_sError.pszGet());
        return false;
    }
    IHTTP* piHTTP = m_pclConnexion->piGetCOM(pclErreur);
    if (!piHTTP)
        return false;

    // The values go unencoded, the code as the provider wrote it in the redirect.
    std::wstring sCorps = L"code=";
    sCorps += stInfo.m_sCode.sv();
    sCorps += L"&client_id=";
    sCorps += sGetClientID();
    sCorps += L"&client_secret=";
    sCorps += sGetClientSecret();
    sCorps += L"&redirect_uri=";
    sCorps += pszRedirection ? pszRedirection : L"";
    sCorps += L"&grant_type=authorization_code";
    STReponseFormulaire stReponse;
    if (!bPosteFormulaire(piHTTP, (std::wstring(gszGoogleAccounts) + L"/o/oauth2/token").c_str(),
                          sCorps, stReponse, pclErreur))
        return false;
    const int nStatut = stReponse.nStatut;
    const std::string sTexte(stReponse.clCorps.sv());

    _CXErrorModule60 clErreurJSON;
    auto clRacine = CComposanteGGL::s_piGetJSON(sTexte.c_str(), &clErreurJSON);
    if (!clRacine) {
        // The parser's own cause goes along under the component's.
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_UNREADABLE_ANSWER);
        if (!clErreurJSON.bEstPropre())
            pclErreur->AddSubError(&clErreurJSON);
        return false;
    }
    CVisiteurJSONGetToken clVisiteur;
    clRacine->vAccepte(clVisiteur);

    if (nStatut == HTTPOK) {
        m_pclConnexion->SetTokensConnexion(clVisiteur.stGetToken(), m_nServices);
        return true;
    }
    m_pclConnexion->_SetLastError(clVisiteur.stGetToken().m_sError.pszGet());
    return false;
}
