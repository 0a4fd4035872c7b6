#include "xmlobject/MapProprietes.h"

#include "xmlobject/XmlObjectListe.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

const uint32_t CMapProprietes::g__ToutPretToutChaud[] = {
    17u,        53u,        97u,        193u,       389u,        769u,       1543u,
    3079u,      6151u,      12289u,     24593u,     49157u,      98317u,     196613u,
    393241u,    786433u,    1572869u,   3145739u,   6291469u,    12582917u,  25165843u,
    50331653u,  100663319u, 201326611u, 402653189u, 805306457u,  1610612741u, 4294967291u,
};

uint32_t CMapProprietes::s_nHache(const char* psz) {
    uint32_t n = 5381;
    for (; *psz; ++psz)
        n = n * 33 + static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(*psz)));
    return n;
}

CXmlObjectListe* CMapProprietes::pclCherche(const char* pszNom) const {
    if (!pszNom || m_tabCellules.empty())
        return nullptr;
    const uint32_t nHache = s_nHache(pszNom);
    // The first table's few cells are searched in order, with no buckets to keep.
    if (m_tabSeaux.empty()) {
        for (const STCellule& st : m_tabCellules)
            if (st.nHache == nHache && std::strcmp(st.pszCle, pszNom) == 0)
                return st.pclListe;
        return nullptr;
    }
    for (int32_t i = m_tabSeaux[nHache % m_tabSeaux.size()]; i >= 0; i = m_tabCellules[i].nSuivante) {
        const STCellule& st = m_tabCellules[static_cast<size_t>(i)];
        if (st.nHache == nHache && std::strcmp(st.pszCle, pszNom) == 0)
            return st.pclListe;
    }
    return nullptr;
}

void CMapProprietes::_Redimensionne(size_t nPalier) {
    m_nPalier = nPalier;
    const uint32_t nSeaux = g__ToutPretToutChaud[nPalier];
    m_tabSeaux.assign(nSeaux, -1);
    m_tabCellules.reserve(nSeaux / 2);
    for (size_t i = 0; i < m_tabCellules.size(); ++i) {
        STCellule& st = m_tabCellules[i];
        int32_t& nTete = m_tabSeaux[st.nHache % nSeaux];
        st.nSuivante = nTete;
        nTete = static_cast<int32_t>(i);
    }
}

bool CMapProprietes::bInsere(CXmlObjectListe* pclListe) {
    try {
        const char* pszCle = pclListe->pszGetNom();
        const uint32_t nHache = s_nHache(pszCle);
        if (m_tabSeaux.empty() && m_tabCellules.size() < g__ToutPretToutChaud[0] / 2) {
            m_tabCellules.push_back({pszCle, pclListe, -1, nHache});
            return true;
        }
        if (m_tabCellules.size() >= g__ToutPretToutChaud[m_nPalier] / 2) {
            if (m_nPalier + 1 >= std::size(g__ToutPretToutChaud))
                return false;
            _Redimensionne(m_nPalier + 1);
        }
        int32_t& nTete = m_tabSeaux[nHache % m_tabSeaux.size()];
        m_tabCellules.push_back({pszCle, pclListe, nTete, nHache});
        nTete = static_cast<int32_t>(m_tabCellules.size() - 1);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool CMapProprietes::bRemplace(CXmlObjectListe* pclListe) {
    const char* pszCle = pclListe->pszGetNom();
    for (STCellule& st : m_tabCellules)
        if (std::strcmp(st.pszCle, pszCle) == 0) {
            CXmlObjectListe* pclAncienne = st.pclListe;
            st.pclListe = pclListe;
            st.pszCle = pszCle; // the key is the list's own name
            pclAncienne->vRelease();
            return true;
        }
    return bInsere(pclListe);
}

void CMapProprietes::Vide(int bGarde) {
    // The lists go first, then the cells: a list's name is its cell's key.
    for (STCellule& st : m_tabCellules)
        st.pclListe->vRelease();
    m_tabCellules.clear();
    if (bGarde && !m_tabSeaux.empty()) {
        std::fill(m_tabSeaux.begin(), m_tabSeaux.end(), -1);
        return;
    }
    m_tabSeaux.clear();
    m_tabSeaux.shrink_to_fit();
    m_nPalier = 0;
}
