#include "RecycleurMemoire.h"

#include <cstdlib>

CRecycleurMemoire* CRecycleurMemoire::ms_pclListeRecycleur = nullptr;

CRecycleurMemoire::CRecycleurMemoire(size_t nTailleBloc)
    : m_nTailleBloc(nTailleBloc < sizeof(STBloc) ? sizeof(STBloc) : nTailleBloc),
      m_pclSuivant(ms_pclListeRecycleur) {
    ms_pclListeRecycleur = this;
}

CRecycleurMemoire::~CRecycleurMemoire() {
    Vide();
    for (CRecycleurMemoire** pp = &ms_pclListeRecycleur; *pp; pp = &(*pp)->m_pclSuivant) {
        if (*pp == this) {
            *pp = m_pclSuivant;
            break;
        }
    }
}

void* CRecycleurMemoire::pAlloue() {
    if (!m_pstLibre) return std::malloc(m_nTailleBloc);
    STBloc* p = m_pstLibre;
    m_pstLibre = p->pSuivant;
    --m_nNbBloc;
    return p;
}

void CRecycleurMemoire::Recycle(void* p) {
    if (!p) return;
    auto* pst = static_cast<STBloc*>(p);
    pst->pSuivant = m_pstLibre;
    m_pstLibre = pst;
    ++m_nNbBloc;
}

void CRecycleurMemoire::Vide() {
    // The count bounds the walk, so that a damaged chain cannot run on.
    while (m_pstLibre && m_nNbBloc > 0) {
        STBloc* p = m_pstLibre;
        m_pstLibre = p->pSuivant;
        std::free(p);
        --m_nNbBloc;
    }
    m_pstLibre = nullptr;
    m_nNbBloc = 0;
}

void CRecycleurMemoire::s_VideTout() {
    for (CRecycleurMemoire* p = ms_pclListeRecycleur; p; p = p->m_pclSuivant) p->Vide();
}
