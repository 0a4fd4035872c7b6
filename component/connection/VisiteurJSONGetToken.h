// CVisiteurJSONGetToken: reads the answer of a token endpoint into an STOAuth2TokenBase. Keys
// match loosely (blanks around them, case and accents ignored), and the walk goes into every
// object, so a nested "message" of an error answer reaches the error text too.
#pragma once
#include "connection/OAuth2TokenBase.h"

#include "JSONService.h"
#include "XYString.h"

class CVisiteurJSONGetToken final : public IVisiteurJSON {
public:
    eVISITEJSON veVisiteValeur(CAny& clValeur) override;
    eVISITEJSON veVisiteObjet(IObjetJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON&) override;
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_DESCEND; }

    const STOAuth2TokenBase& stGetToken() const { return m_stToken; }

private:
    CXYString<wchar_t> m_sMembre;
    STOAuth2TokenBase m_stToken;
};
