// CJSONArray: an array of a parsed JSON text, as ITableauJSON. Elements are reached by index;
// the last one reached is remembered, so that reading them in rising order costs one step each.
#pragma once
#include "Counted.h"
#include "JSONDocument.h"
#include "JSONService.h"
#include "Ref.h"
#include "XError.h"

class CJSONArray final : public CCounted<ITableauJSON> {
public:
    CJSONArray(CJSONDocument* pclDocument, uint32_t nIndex);
    ~CJSONArray() override;

    int vnGetNbElement() override;
    IElementJSON* vpiGetElement(int nIndex) override;
    void vAccepte(IVisiteurJSON& clVisiteur) override;

    bool bFree() const { return nGetRef() == 1; }
    void Repoint(CJSONDocument* pclDocument, uint32_t nIndex);

private:
    CRef<CJSONDocument> m_clDocument;
    uint32_t m_nIndex;
    int m_nCount = -1; // counted on first demand
    // The element last reached: its rank and its place on the tape; -1 for none.
    int m_nLastRank = -1;
    uint32_t m_nLastIndex = 0;
};
