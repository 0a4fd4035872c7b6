// CVisiteurJSONGetToken: reads the answer of a token endpoint into an STOAuth2TokenBase. Keys
// match loosely (blanks around them, case and accents ignored), and the walk goes into every
// object, so a nested "message" of an error answer reaches the error text too.
#pragma once
#include "connection/OAuth2TokenBase.h"

#include "JSONService.h"
#include "XYString.h"

#include <span>

// A text key of a token answer and the field it fills.
struct STCleJetonTexte {
    const wchar_t* pszCle;
    CXYString<wchar_t> STOAuth2TokenBase::*pChamp;
};

class CVisiteurJSONGetToken : public IVisiteurJSON {
public:
    CVisiteurJSONGetToken();
    eVISITEJSON veVisiteValeur(CAny& clValeur) override;
    eVISITEJSON veVisiteObjet(IObjetJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON&) override;
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_DESCEND; }

    const STOAuth2TokenBase& stGetToken() const { return m_stToken; }

protected:
    // Another provider's keys, tried in order; "expires_in" is always read.
    explicit CVisiteurJSONGetToken(std::span<const STCleJetonTexte> tabCles) : m_tabCles(tabCles) {}
    STOAuth2TokenBase& stToken() { return m_stToken; }

private:
    std::span<const STCleJetonTexte> m_tabCles;
    CXYString<wchar_t> m_sMembre;
    STOAuth2TokenBase m_stToken;
};
