// CVisiteurJSONSetPropriete: the walk of a JSON tree that hands each leaf to the subclass with
// its dotted path ("start.date" for the member date of the object start). Arrays are handed
// whole; a subclass that wants their elements walks them itself.
#pragma once
#include "JSONService.h"
#include "XYString.h"

class CVisiteurJSONSetPropriete : public IVisiteurJSON {
public:
    virtual ~CVisiteurJSONSetPropriete() = default;

    eVISITEJSON veVisiteValeur(CAny& clValeur) override;
    eVISITEJSON veVisiteObjet(IObjetJSON& clObjet) override;
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON& clValeur) override;
    eVISITEJSON veVisiteTableau(ITableauJSON& clTableau) override;
    eVISITEJSON veVisiteElement(IElementJSON& clElement) override;

protected:
    // A leaf at sChemin.
    virtual void _vSetProprieteFromJSON(const CXYString<wchar_t>& sChemin, CAny& clValeur) = 0;
    // An array at sChemin; ignored unless a subclass wants it.
    virtual void _vSetTableauFromJSON(const CXYString<wchar_t>& /*sChemin*/,
                                      ITableauJSON& /*clTableau*/) {}

private:
    // The path of the member now visited: the member alone at the top, "path.member" below.
    CXYString<wchar_t> _sCheminMembre() const;
    // Descends with the member appended to the path; path and member as they were after.
    template <class TNoeud> eVISITEJSON _eDescend(TNoeud& clNoeud);

    CXYString<wchar_t> m_sChemin;
    CXYString<wchar_t> m_sMembre;
};
