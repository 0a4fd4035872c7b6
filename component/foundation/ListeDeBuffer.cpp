#include "ListeDeBuffer.h"

bool CListeDeBuffer::bAjoute(CSimpleBuffer* pclBuffer) {
    if (!pclBuffer)
        return false;
    if (m_tab.bAjoute(pclBuffer))
        return true;
    delete pclBuffer;
    return false;
}

size_t CListeDeBuffer::nGetTailleTotale() const {
    size_t nTotal = 0;
    for (const CSimpleBuffer* pcl : m_tab)
        nTotal += pcl->nGetTaille();
    return nTotal;
}

void CListeDeBuffer::Vide() {
    for (CSimpleBuffer* pcl : m_tab)
        delete pcl;
    m_tab.Vide();
}
