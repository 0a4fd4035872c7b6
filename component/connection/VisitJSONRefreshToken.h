// CVisitJSONRefreshToken: reads the access token out of the answer to a refresh-token grant.
// The key is matched exactly, and the walk ends at the first "access_token", whatever its
// value: a token that is not text leaves the result empty.
#pragma once
#include "JSONService.h"
#include "XYString.h"

class CVisitJSONRefreshToken final : public IVisiteurJSON {
public:
    eVISITEJSON veVisiteValeur(CAny& clValeur) override;
    eVISITEJSON veVisiteObjet(IObjetJSON&) override { return eSuite(); }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON&) override;
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return eSuite(); }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return eSuite(); }

    const CXYString<wchar_t>& sGetAccessToken() const { return m_sAccessToken; }

private:
    // Once the token is read every node answers a stop, so that the walk ends even where a
    // walker stops only the level that was told.
    eVISITEJSON eSuite() const { return m_bFini ? VISITE_ARRET : VISITE_DESCEND; }

    bool m_bFini = false;
    CXYString<wchar_t> m_sMembre;
    CXYString<wchar_t> m_sAccessToken;
};
