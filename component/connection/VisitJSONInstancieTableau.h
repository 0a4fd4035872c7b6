// CVisitJSONInstancieTableau<T>: makes one T for each element of the "items" array of a list
// reply, wherever that array stands, and lets the element fill it through the object's own
// CVisiteurJSONSetPropriete side. The visitor holds one reference on each object it made
// until it ends; a caller that keeps objects takes references of its own, or the whole array.
#pragma once
#include "connection/VisiteurJSONSetPropriete.h"

#include "Arrays.h"
#include "JSONService.h"
#include "Ref.h"
#include "XYString.h"

#include <string_view>

class CCtxInfo;
class CXError;

template <class T, class TArray = CXArray<T*>>
class CVisitJSONInstancieTableau final : public IVisiteurJSON {
public:
    CVisitJSONInstancieTableau(CXError* pclErreur, CCtxInfo* pclCtx)
        : m_pclErreur(pclErreur), m_pclCtx(pclCtx) {}
    CVisitJSONInstancieTableau(const CVisitJSONInstancieTableau&) = delete;
    CVisitJSONInstancieTableau& operator=(const CVisitJSONInstancieTableau&) = delete;
    ~CVisitJSONInstancieTableau() {
        for (T* p : m_tab) p->vRelease();
    }

    eVISITEJSON veVisiteValeur(CAny&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteObjet(IObjetJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON&) override {
        m_bItems = clNom.sv() == std::wstring_view(L"items", 5);
        return VISITE_DESCEND;
    }
    // Only the last member name counts: "items" nested in another object is taken too.
    eVISITEJSON veVisiteTableau(ITableauJSON& clTableau) override {
        if (!m_bItems) return VISITE_SUIVANT;
        const int nNb = clTableau.vnGetNbElement();
        for (int i = 0; i < nNb; ++i) {
            auto clElement = CRef<IElementJSON>::Adopt(clTableau.vpiGetElement(i));
            if (!clElement) continue;
            T* p = T::s_pclCreeObjet(m_pclCtx, m_pclErreur);
            if (!p) continue;
            p->vAddRef();
            clElement->vAccepte(static_cast<CVisiteurJSONSetPropriete&>(*p));
            m_tab.Ajoute(p);
        }
        return VISITE_SUIVANT;
    }

    TArray& tabGet() { return m_tab; }

private:
    CXError* m_pclErreur;
    CCtxInfo* m_pclCtx;
    TArray m_tab;
    bool m_bItems = false; // whether the member now visited is named "items"
};
