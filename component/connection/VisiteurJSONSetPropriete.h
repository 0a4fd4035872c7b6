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

    // Held inside the object up to knCourt characters, the usual depth of a reply, so that
    // the many small objects of a list make no allocation for their walk.
    class CTexte {
    public:
        static constexpr size_t knCourt = 40;
        size_t size() const { return m_n; }
        void resize(size_t n) { m_n = n; } // shorter only
        void Ajoute(std::wstring_view sv);
        operator std::wstring_view() const { return {m_bLong ? m_sLong.data() : m_sz, m_n}; }

    private:
        wchar_t m_sz[knCourt];
        std::wstring m_sLong;
        size_t m_n = 0;
        bool m_bLong = false;
    };
    CTexte m_sTexte;
    size_t m_nChemin = 0; // the length of the path part of m_sTexte
};
