#include "JSONObject.h"

#include "HostBarrier.h"
#include "JSONWalk.h"

CJSONObject::CJSONObject(CJSONDocument* pclDocument, uint32_t nIndex)
    : m_clDocument(CRef<CJSONDocument>::Retain(pclDocument)), m_nIndex(nIndex) {}

CJSONObject::~CJSONObject() = default;

void CJSONObject::RepointElsewhere(CJSONDocument* pclDocument, uint32_t nIndex) {
    m_clDocument = CRef<CJSONDocument>::Retain(pclDocument);
    m_nIndex = nIndex;
}

int CJSONObject::vnGetNbMembre() {
    return static_cast<int>(m_clDocument->nCount(m_nIndex));
}

void CJSONObject::vAccepte(IVisiteurJSON& clVisiteur) {
    KVHost::Guard(nullptr, [&] {
        CRef<CJSONDocument> clDocument = m_clDocument;
        (void)CJSONWalk::s_rCurrent().bWalkObject(*clDocument, m_nIndex, clVisiteur);
    });
}
