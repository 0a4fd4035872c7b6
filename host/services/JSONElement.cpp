#include "JSONElement.h"

#include "HostBarrier.h"
#include "Any.h"
#include "JSONArray.h"
#include "JSONObject.h"
#include "JSONWalk.h"

CJSONElement::CJSONElement(CJSONDocument* pclDocument, uint32_t nIndex)
    : m_clDocument(CRef<CJSONDocument>::Retain(pclDocument)), m_nIndex(nIndex) {}

CJSONElement::~CJSONElement() = default;

void CJSONElement::RepointElsewhere(CJSONDocument* pclDocument, uint32_t nIndex) {
    if (pclDocument != m_clDocument.pGet())
        m_clDocument = CRef<CJSONDocument>::Retain(pclDocument);
    m_nIndex = nIndex;
    m_clObject.Reset();
    m_clArray.Reset();
}

eGENREJSON CJSONElement::veGetGenre() {
    switch (m_clDocument->nType(m_nIndex)) {
    case CJSONDocument::knObject:
        return GENRE_JSON_OBJET;
    case CJSONDocument::knArray:
        return GENRE_JSON_TABLEAU;
    case CJSONDocument::knString:
        return GENRE_JSON_CHAINE;
    case CJSONDocument::knInt64:
    case CJSONDocument::knUint64:
    case CJSONDocument::knDouble:
        return GENRE_JSON_NOMBRE;
    case CJSONDocument::knTrue:
    case CJSONDocument::knFalse:
        return GENRE_JSON_BOOLEEN;
    default:
        return GENRE_JSON_NUL;
    }
}

int CJSONElement::vbGetValeur(CAny& clValue) {
    return KVHost::Guard(
        nullptr, 0, [&]() -> int { return CJSONWalk::s_bValue(*m_clDocument, m_nIndex, clValue); });
}

IObjetJSON* CJSONElement::vpiGetIObjetJSON() {
    return KVHost::Guard(nullptr, static_cast<IObjetJSON*>(nullptr), [&]() -> IObjetJSON* {
        if (m_clDocument->nType(m_nIndex) != CJSONDocument::knObject)
            return nullptr;
        if (!m_clObject)
            m_clObject = CRef<CJSONObject>::Adopt(new CJSONObject(m_clDocument.pGet(), m_nIndex));
        return m_clObject.pGet();
    });
}

ITableauJSON* CJSONElement::vpiGetITableauJSON() {
    return KVHost::Guard(nullptr, static_cast<ITableauJSON*>(nullptr), [&]() -> ITableauJSON* {
        if (m_clDocument->nType(m_nIndex) != CJSONDocument::knArray)
            return nullptr;
        if (!m_clArray)
            m_clArray = CRef<CJSONArray>::Adopt(new CJSONArray(m_clDocument.pGet(), m_nIndex));
        return m_clArray.pGet();
    });
}

void CJSONElement::vAccepte(IVisiteurJSON& clVisiteur) {
    KVHost::Guard(nullptr, [&] {
        // Hold the tree for the length of the walk, whatever the visitor releases meanwhile.
        CRef<CJSONDocument> clDocument = m_clDocument;
        (void)CJSONWalk::s_rCurrent().bVisit(*clDocument, m_nIndex, clVisiteur);
    });
}
