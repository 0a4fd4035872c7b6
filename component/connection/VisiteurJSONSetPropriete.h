// CVisiteurJSONSetPropriete: the walk of a JSON tree that hands each leaf to the subclass with
// its dotted path ("start.date" for the member date of the object start). Arrays are handed
// whole; a subclass that wants their elements walks them itself.
#pragma once
#include "JSONService.h"

#include <string>
#include <string_view>

class CVisiteurJSONSetPropriete : public IVisiteurJSON {
public:
    virtual ~CVisiteurJSONSetPropriete() = default;

    eVISITEJSON veVisiteValeur(CAny& clValeur) override;
    eVISITEJSON veVisiteObjet(IObjetJSON& clObjet) override;
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON& clValeur) override;
    eVISITEJSON veVisiteTableau(ITableauJSON& clTableau) override;
    eVISITEJSON veVisiteElement(IElementJSON& clElement) override;

protected:
    // A leaf at svChemin; the text is the walk's and lasts for the call only.
    virtual void _vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) = 0;
    // An array at svChemin; ignored unless a subclass wants it.
    virtual void _vSetTableauFromJSON(std::wstring_view /*svChemin*/, ITableauJSON& /*clTableau*/) {}

private:
    // Descends with the member appended to the path; path and member as they were after.
    template <class TNoeud> eVISITEJSON _eDescend(TNoeud& clNoeud);
    // The path and the member now visited, "path.member", in one text that every leaf reads
    // as it stands: no text is made per leaf.
    std::wstring_view _svCheminMembre() const { return m_sTexte; }

    std::wstring m_sTexte;
    size_t m_nChemin = 0; // the length of the path part of m_sTexte
};
