#include "connection/VisiteurJSONSetPropriete.h"

#include <string>
#include <utility>

CXYString<wchar_t> CVisiteurJSONSetPropriete::_sCheminMembre() const {
    if (m_sChemin.bVide()) return m_sMembre;
    std::wstring s(m_sChemin.sv());
    s += L'.';
    s += m_sMembre.sv();
    return CXYString<wchar_t>(std::wstring_view(s));
}

template <class TNoeud> eVISITEJSON CVisiteurJSONSetPropriete::_eDescend(TNoeud& clNoeud) {
    CXYString<wchar_t> sCheminAvant = m_sChemin;
    CXYString<wchar_t> sMembreAvant = m_sMembre;
    std::wstring s(m_sChemin.sv());
    if (!s.empty()) s += L'.';
    s += m_sMembre.sv();
    m_sChemin = CXYString<wchar_t>(std::wstring_view(s));
    m_sMembre.Vide();
    clNoeud.vAccepte(*this);
    m_sChemin = std::move(sCheminAvant);
    m_sMembre = std::move(sMembreAvant);
    return VISITE_SUIVANT;
}

eVISITEJSON CVisiteurJSONSetPropriete::veVisiteMembre(const CNomStandard& clNom, IElementJSON&) {
    m_sMembre = CXYString<wchar_t>(clNom.sv());
    return VISITE_DESCEND;
}

eVISITEJSON CVisiteurJSONSetPropriete::veVisiteValeur(CAny& clValeur) {
    _vSetProprieteFromJSON(_sCheminMembre(), clValeur);
    return VISITE_SUIVANT;
}

// The object's members are walked here, under the longer path: the walk itself goes on with
// the next node.
eVISITEJSON CVisiteurJSONSetPropriete::veVisiteObjet(IObjetJSON& clObjet) {
    return _eDescend(clObjet);
}

eVISITEJSON CVisiteurJSONSetPropriete::veVisiteElement(IElementJSON& clElement) {
    return _eDescend(clElement);
}

eVISITEJSON CVisiteurJSONSetPropriete::veVisiteTableau(ITableauJSON& clTableau) {
    _vSetTableauFromJSON(_sCheminMembre(), clTableau);
    return VISITE_SUIVANT;
}
