// CJSONElement: any node of a parsed JSON text, as IElementJSON. A handle: the document, kept
// alive, and the node's place on its tape. The walk reuses a handle for the next node when
// nobody else holds it, so that walking a large reply makes no allocation per node.
#pragma once
#include "Counted.h"
#include "JSONDocument.h"
#include "JSONService.h"
#include "Ref.h"
#include "XError.h"

class CJSONObject;
class CJSONArray;

class CJSONElement final : public CCounted<IElementJSON> {
public:
    CJSONElement(CJSONDocument* pclDocument, uint32_t nIndex);
    ~CJSONElement() override;

    eGENREJSON veGetGenre() override;
    int vbGetValeur(CAny& clValue) override;
    IObjetJSON* vpiGetIObjetJSON() override;
    ITableauJSON* vpiGetITableauJSON() override;
    void vAccepte(IVisiteurJSON& clVisiteur) override;

    // Whether the walk may point this handle elsewhere: nobody but the walk holds it.
    bool bFree() const { return nGetRef() == 1; }
    void Repoint(CJSONDocument* pclDocument, uint32_t nIndex) {
        if (pclDocument == m_clDocument.pGet() && !m_clObject && !m_clArray)
            m_nIndex = nIndex; // the walk's common case, kept inline
        else
            RepointElsewhere(pclDocument, nIndex);
    }

private:
    void RepointElsewhere(CJSONDocument* pclDocument, uint32_t nIndex);

    CRef<CJSONDocument> m_clDocument;
    uint32_t m_nIndex;
    // The casts, made on first demand and owned here: the pointers they give are borrowed.
    CRef<CJSONObject> m_clObject;
    CRef<CJSONArray> m_clArray;
};
