#include "oauth/AuthToken.h"

#include "Utf8.h"
#include "XError.h"

#include <string>

IAuthToken* CAuthToken::vpiClone() const {
    IOAuth2Token* piToken = m_clToken ? m_clToken->vpiClone() : nullptr;
    auto clToken = CRef<IOAuth2Token>::Retain(piToken);
    return new CAuthToken(m_clServeur, clToken.pGet());
}

CAuthToken* CAuthToken::s_pclCreateTokenOAuth2(const CXYString<wchar_t>& sAccessToken,
                                               const CXYString<wchar_t>& sTokenType,
                                               const wchar_t* pszTexte,
                                               IOAuth2Parametres* piParametres, CXError*) {
    auto clToken =
        CRef<IOAuth2Token>::Retain(new COAuth2Token(sAccessToken, sTokenType, piParametres));
    const std::string sUtf8 = KVUtf8::VersUtf8(pszTexte ? pszTexte : L"");
    CSimpleBuffer clServeur;
    (void)clServeur.bAffecte(sUtf8.c_str(), sUtf8.size() + 1);
    return new CAuthToken(std::move(clServeur), clToken.pGet());
}

CAuthToken* CAuthToken::s_pclCreateTokenOAuth2(const CSimpleBuffer& clServeur,
                                               IOAuth2Parametres* piParametres,
                                               CXError* pclErreur) {
    auto* pclToken = new COAuth2Token(piParametres);
    auto clToken = CRef<IOAuth2Token>::Retain(pclToken);
    // The parser reads up to a null: the bytes as received, then one.
    const std::string sTexte(clServeur.sv());
    if (!pclToken->bInitFromJSON(sTexte.c_str(), pclErreur) && pclErreur)
        pclErreur->SetErrorLevel(ELEVEL_ERREUR);
    return new CAuthToken(clServeur, clToken.pGet());
}
