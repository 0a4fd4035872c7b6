#include "connection/VisitJSONRefreshToken.h"

#include "Any.h"

eVISITEJSON CVisitJSONRefreshToken::veVisiteMembre(const CNomStandard& clNom, IElementJSON&) {
    if (m_bFini)
        return VISITE_ARRET;
    m_sMembre = CXYString<wchar_t>(clNom.sv());
    return VISITE_DESCEND;
}

eVISITEJSON CVisitJSONRefreshToken::veVisiteValeur(CAny& clValeur) {
    if (m_bFini)
        return VISITE_ARRET;
    if (m_sMembre.sv() != L"access_token")
        return VISITE_DESCEND;
    if (clValeur.nGetType() == KVTYPE_KLDSTRW)
        (void)clValeur.__nFillString(m_sAccessToken);
    m_bFini = true;
    return VISITE_ARRET;
}
