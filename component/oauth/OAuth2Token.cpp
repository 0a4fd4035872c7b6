#include "oauth/OAuth2Token.h"

#include "connection/PosteFormulaire.h"
#include "connection/VisiteurJSONGetToken.h"
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"
#include "oauth/AuthToken.h"

#include "HTTPService.h"
#include "JSONService.h"

#include <string>

namespace {

constexpr int knStatutOK = 200;

// The keys of a generic provider's answer: no "message", which only Google's errors carry.
constexpr STCleJetonTexte gtabClesOAuth2[] = {
    {L"error", &STOAuth2TokenBase::m_sError},
    {L"access_token", &STOAuth2TokenBase::m_sAccessToken},
    {L"refresh_token", &STOAuth2TokenBase::m_sRefreshToken},
    {L"id_token", &STOAuth2TokenBase::m_sIdToken},
    {L"token_type", &STOAuth2TokenBase::m_sTokenType},
};

class CVisiteurJSONTokenOAuth2 final : public CVisiteurJSONGetToken {
public:
    explicit CVisiteurJSONTokenOAuth2(STOAuth2TokenBase& stCible)
        : CVisiteurJSONGetToken(gtabClesOAuth2) {
        stToken() = stCible;
    }
};

} // namespace

COAuth2Token::COAuth2Token(const CXYString<wchar_t>& sAccessToken,
                           const CXYString<wchar_t>& sTokenType, IOAuth2Parametres* piParametres)
    : COAuth2Token(piParametres) {
    m_sAccessToken = sAccessToken;
    m_sTokenType = sTokenType;
}

IOAuth2Token* COAuth2Token::vpiClone() const {
    auto* pcl = new COAuth2Token(m_clParametres.pGet());
    static_cast<STOAuth2TokenBase&>(*pcl) = *this;
    return pcl;
}

bool COAuth2Token::bInitFromJSON(const char* pszTexte, CXError* pclErreur) {
    RAZ();
    _CXErrorModule60 clErreurJSON;
    auto clRacine = CComposanteGGL::s_piGetJSON(pszTexte ? pszTexte : "", &clErreurJSON);
    if (!clRacine) {
        if (pclErreur && pclErreur->bEstPropre()) {
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_UNREADABLE_ANSWER);
            if (!clErreurJSON.bEstPropre())
                pclErreur->AddSubError(&clErreurJSON);
        }
        return false;
    }
    m_sTokenType = CXYString<wchar_t>(L"Bearer");
    CVisiteurJSONTokenOAuth2 clVisiteur(*this);
    clRacine->vAccepte(clVisiteur);
    static_cast<STOAuth2TokenBase&>(*this) = clVisiteur.stGetToken();
    return true;
}

IAuthToken* COAuth2Token::vpiRequestRefreshToken() {
    if (m_sRefreshToken.bVide() || !m_clParametres)
        return nullptr;
    _CXErrorModule60 clErreur;
    auto clHTTP = CComposanteGGL::s_piQueryIHTTP(&clErreur);
    if (!clHTTP)
        return nullptr;
    // The values go unencoded, as every exchange of this flow sends them.
    std::wstring sCorps = L"refresh_token=";
    sCorps += m_sRefreshToken.sv();
    sCorps += L"&client_id=";
    sCorps += m_clParametres->vczGetClientID().sv();
    sCorps += L"&client_secret=";
    sCorps += m_clParametres->vczGetClientSecret().sv();
    sCorps += L"&grant_type=refresh_token";
    STReponseFormulaire stReponse;
    if (!bPosteFormulaire(clHTTP.pGet(), m_clParametres->vczGetURLToken().pszGet(), sCorps,
                          stReponse, &clErreur) ||
        stReponse.nStatut != knStatutOK || stReponse.clCorps.bVide())
        return nullptr;
    CSimpleBuffer clServeur;
    if (!clServeur.bAffecte(stReponse.clCorps.pGetDonnees(), stReponse.clCorps.nGetTaille()))
        return nullptr;
    return CAuthToken::s_pclCreateTokenOAuth2(clServeur, m_clParametres.pGet(), &clErreur);
}
