#include "connection/VisiteurJSONGetToken.h"

#include "foundation/LooseCompare.h"

#include "Any.h"
#include "KVResult.h"

namespace {

// Keys holding text, with their field; "message" after "error", so that the later of the two
// in the answer is the one kept.
constexpr STCleJetonTexte gtabCleTexte[] = {
    {L"error", &STOAuth2TokenBase::m_sError},
    {L"message", &STOAuth2TokenBase::m_sError},
    {L"access_token", &STOAuth2TokenBase::m_sAccessToken},
    {L"refresh_token", &STOAuth2TokenBase::m_sRefreshToken},
    {L"id_token", &STOAuth2TokenBase::m_sIdToken},
};

} // namespace

CVisiteurJSONGetToken::CVisiteurJSONGetToken() : m_tabCles(gtabCleTexte) {}

eVISITEJSON CVisiteurJSONGetToken::veVisiteMembre(const CNomStandard& clNom, IElementJSON&) {
    m_sMembre = CXYString<wchar_t>(clNom.sv());
    return VISITE_DESCEND;
}

eVISITEJSON CVisiteurJSONGetToken::veVisiteValeur(CAny& clValeur) {
    if (STR_bEgalSoupleSansBlancs(m_sMembre.sv(), L"expires_in")) {
        int n = 0;
        if (KV_bSucces(clValeur.nGetINT(&n)))
            m_stToken.m_nExpires = n;
        return VISITE_SUIVANT;
    }
    for (const STCleJetonTexte& st : m_tabCles) {
        if (!STR_bEgalSoupleSansBlancs(m_sMembre.sv(), st.pszCle))
            continue;
        if (clValeur.nGetType() == KVTYPE_KLDSTRW)
            (void)clValeur.__nFillString(m_stToken.*st.pChamp);
        break;
    }
    return VISITE_SUIVANT;
}
