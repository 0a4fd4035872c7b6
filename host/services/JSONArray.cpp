#include "JSONArray.h"

#include "HostBarrier.h"
#include "JSONElement.h"
#include "JSONWalk.h"

CJSONArray::CJSONArray(CJSONDocument* pclDocument, uint32_t nIndex)
    : m_clDocument(CRef<CJSONDocument>::Retain(pclDocument)), m_nIndex(nIndex) {}

CJSONArray::~CJSONArray() = default;

void CJSONArray::Repoint(CJSONDocument* pclDocument, uint32_t nIndex) {
    if (pclDocument != m_clDocument.pGet())
        m_clDocument = CRef<CJSONDocument>::Retain(pclDocument);
    m_nIndex = nIndex;
    m_nCount = -1;
    m_nLastRank = -1;
}

int CJSONArray::vnGetNbElement() {
    if (m_nCount < 0)
        m_nCount = static_cast<int>(m_clDocument->nCount(m_nIndex));
    return m_nCount;
}

IElementJSON* CJSONArray::vpiGetElement(int nIndex) {
    return KVHost::Guard(nullptr, static_cast<IElementJSON*>(nullptr), [&]() -> IElementJSON* {
        if (nIndex < 0 || nIndex >= vnGetNbElement())
            return nullptr;
        const CJSONDocument& rDocument = *m_clDocument;
        int nRank = 0;
        uint32_t i = m_nIndex + 1;
        if (m_nLastRank >= 0 && m_nLastRank <= nIndex) {
            nRank = m_nLastRank;
            i = m_nLastIndex;
        }
        for (; nRank < nIndex; ++nRank)
            i = rDocument.nNext(i);
        m_nLastRank = nRank;
        m_nLastIndex = i;
        return new CJSONElement(m_clDocument.pGet(), i);
    });
}

void CJSONArray::vAccepte(IVisiteurJSON& clVisiteur) {
    KVHost::Guard(nullptr, [&] {
        CRef<CJSONDocument> clDocument = m_clDocument;
        (void)CJSONWalk::s_rCurrent().bWalkArray(*clDocument, m_nIndex, clVisiteur);
    });
}
