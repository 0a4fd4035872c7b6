// CJSONObject: an object of a parsed JSON text, as IObjetJSON: its members, in document order.
#pragma once
#include "Counted.h"
#include "JSONDocument.h"
#include "JSONService.h"
#include "Ref.h"
#include "XError.h"

class CJSONObject final : public CCounted<IObjetJSON> {
public:
    CJSONObject(CJSONDocument* pclDocument, uint32_t nIndex);
    ~CJSONObject() override;

    int vnGetNbMembre() override;
    void vAccepte(IVisiteurJSON& clVisiteur) override;

    bool bFree() const { return nGetRef() == 1; }
    void Repoint(CJSONDocument* pclDocument, uint32_t nIndex) {
        if (pclDocument == m_clDocument.pGet())
            m_nIndex = nIndex; // the walk's common case, kept inline
        else
            RepointElsewhere(pclDocument, nIndex);
    }

private:
    void RepointElsewhere(CJSONDocument* pclDocument, uint32_t nIndex);

    CRef<CJSONDocument> m_clDocument;
    uint32_t m_nIndex;
};
