#include "connection/VisiteurJSONSetPropriete.h"

void CVisiteurJSONSetPropriete::CTexte::Ajoute(std::wstring_view sv) {
    if (!m_bLong && m_n + sv.size() > knCourt) {
        m_sLong.assign(m_sz, m_n);
        m_bLong = true;
    }
    if (m_bLong) {
        m_sLong.resize(m_n);
        m_sLong += sv;
    } else {
        sv.copy(m_sz + m_n, sv.size());
    }
    m_n += sv.size();
}

template <class TNoeud> eVISITEJSON CVisiteurJSONSetPropriete::_eDescend(TNoeud& clNoeud) {
    // The member becomes part of the path, and is its tail again afterwards.
    const size_t nAvant = m_nChemin;
    m_nChemin = m_sTexte.size();
    clNoeud.vAccepte(*this);
    m_sTexte.resize(m_nChemin);
    m_nChemin = nAvant;
    return VISITE_SUIVANT;
}

eVISITEJSON CVisiteurJSONSetPropriete::veVisiteMembre(const CNomStandard& clNom, IElementJSON&) {
    m_sTexte.resize(m_nChemin);
    if (m_nChemin) m_sTexte.Ajoute(L".");
    m_sTexte.Ajoute(clNom.sv());
    return VISITE_DESCEND;
}

eVISITEJSON CVisiteurJSONSetPropriete::veVisiteValeur(CAny& clValeur) {
    _vSetProprieteFromJSON(_svCheminMembre(), clValeur);
    return VISITE_SUIVANT;
}

// The object's members are walked here, under the longer path: the walk itself goes on with
// the next node.
eVISITEJSON CVisiteurJSONSetPropriete::veVisiteObjet(IObjetJSON& clObjet) {
    return _eDescend(clObjet);
}

// An element has no member of its own: its path is the array's.
eVISITEJSON CVisiteurJSONSetPropriete::veVisiteElement(IElementJSON& clElement) {
    return _eDescend(clElement);
}

eVISITEJSON CVisiteurJSONSetPropriete::veVisiteTableau(ITableauJSON& clTableau) {
    _vSetTableauFromJSON(_svCheminMembre(), clTableau);
    return VISITE_SUIVANT;
}
