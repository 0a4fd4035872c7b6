// CTCollectionCarte: the script's editable list of map objects of one class (a path's points,
// the parameters' markers). The list owns one reference on each element; the same object may
// stand in it twice. The class that mixes it in supplies the count (vAddRef, vRelease).
//
// TElement: a counted script object with a static ms_piType, s_pclCreeObjet(CCtxInfo*, CXError*)
// and CopieObjet(CCtxInfo*, CXError*, TElement*).
//
// Refusals answer the host's collection code for a refused operation, with the cause in the
// error: 600006 for an index out of range (argument 1 or 2), 600004 for an element that is not
// of the list's class, 600014 for a list already at its maximum, which the addition of an
// element and the two insertions check (the append of a new empty element does not).
#pragma once
#include "frame/ModuleInfo.h"
#include "frame/ObjetComposante.h"

#include "Arrays.h"
#include "Ref.h"
#include "XError.h"

#include <cstddef>
#include <cstdint>
#include <utility>

// The host's code for a collection operation it must not count as done.
inline constexpr eRESULTATOBJET keRefusCollection =
    static_cast<eRESULTATOBJET>(static_cast<int32_t>(0x80000001u));

template <class TElement> class CTCollectionCarte : public IObjetCollectionModifiable {
public:
    // nMaximum 0: no limit.
    explicit CTCollectionCarte(size_t nMaximum = 0) : m_nMaximum(nMaximum) {}
    ~CTCollectionCarte() override { Vide(); }
    CTCollectionCarte(const CTCollectionCarte&) = delete;
    CTCollectionCarte& operator=(const CTCollectionCarte&) = delete;

    size_t nGetNbElement() const { return m_tabElement.nGetNbElement(); }
    TElement* pclGetElement(size_t i) const { return m_tabElement[i].pGet(); }

    // Every element released.
    void Vide() { m_tabElement.Vide(); }
    // This list becomes a list of new copies of the source's elements.
    void CopieElements(const CTCollectionCarte& clSource, CCtxInfo* pclCtx, CXError* pclErreur) {
        if (&clSource == this) return;
        Vide();
        for (const CRef<TElement>& clSource : clSource.m_tabElement) {
            auto cl = CRef<TElement>::Retain(TElement::s_pclCreeObjet(pclCtx, pclErreur));
            if (!cl) return;
            cl->CopieObjet(pclCtx, pclErreur, clSource.pGet());
            m_tabElement.Ajoute(std::move(cl));
        }
    }

    // ---- IObjetCollection
    IObjetCollectionModifiable* vpiGetIObjetCollectionModifiable() override { return this; }
    int vnGetNbElementCollection(CCtxInfo*, CXError*) override {
        return static_cast<int>(nGetNbElement());
    }
    IObjetBase* vpiGetElementCollection(int i, CCtxInfo*, CXError*) override {
        if (i < 0 || static_cast<size_t>(i) >= nGetNbElement()) return nullptr;
        return m_tabElement[static_cast<size_t>(i)]->piGetObjetBase();
    }

    // ---- IObjetCollectionModifiable
    eRESULTATOBJET veAjouteElementCollection(IObjetComposante* piElement, int* pnPosition,
                                             CCtxInfo*, CXError* pclErreur) override {
        return _eInsere(nGetNbElement(), piElement, pnPosition, pclErreur);
    }
    // The one route the maximum does not guard: a new empty element appended.
    eRESULTATOBJET veAjouteElementCollectionVide(int* pnPosition, CCtxInfo* pclCtx,
                                                 CXError* pclErreur) override {
        return _eInsereNeuf(nGetNbElement(), pnPosition, pclCtx, pclErreur, false);
    }
    eRESULTATOBJET veAjouteElementCollectionParametre(int*, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    // Insertion goes before element i; i equal to the count appends.
    eRESULTATOBJET veInsereElementCollection(int i, IObjetComposante* piElement, CCtxInfo*,
                                             CXError* pclErreur) override {
        if (!bIndiceValide(i, nGetNbElement() + 1, 1, pclErreur)) return keRefusCollection;
        return _eInsere(static_cast<size_t>(i), piElement, nullptr, pclErreur);
    }
    eRESULTATOBJET veInsereElementCollectionVide(int i, CCtxInfo* pclCtx,
                                                 CXError* pclErreur) override {
        if (!bIndiceValide(i, nGetNbElement() + 1, 1, pclErreur)) return keRefusCollection;
        return _eInsereNeuf(static_cast<size_t>(i), nullptr, pclCtx, pclErreur, true);
    }
    eRESULTATOBJET veInsereElementCollectionParametre(int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    eRESULTATOBJET veSupprimeElementCollection(int i, CCtxInfo*, CXError* pclErreur) override {
        if (!bIndiceValide(i, nGetNbElement(), 1, pclErreur)) return keRefusCollection;
        m_tabElement.bSupprime(static_cast<size_t>(i));
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veSupprimeToutElementCollection(CCtxInfo*, CXError*) override {
        Vide();
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veEchangeElementCollection(int i, int j, CCtxInfo*, CXError* pclErreur) override {
        if (!bIndiceValide(i, nGetNbElement(), 1, pclErreur) ||
            !bIndiceValide(j, nGetNbElement(), 2, pclErreur))
            return keRefusCollection;
        m_tabElement.bEchange(static_cast<size_t>(i), static_cast<size_t>(j));
        return RESULTAT_OBJET_OK;
    }
    // Element nDepuis ends at position nVers.
    eRESULTATOBJET veDeplaceElementCollection(int nDepuis, int nVers, CCtxInfo*,
                                              CXError* pclErreur) override {
        if (!bIndiceValide(nDepuis, nGetNbElement(), 1, pclErreur) ||
            !bIndiceValide(nVers, nGetNbElement(), 2, pclErreur))
            return keRefusCollection;
        m_tabElement.bDeplace(static_cast<size_t>(nDepuis), static_cast<size_t>(nVers));
        return RESULTAT_OBJET_OK;
    }

private:
    static bool bIndiceValide(int i, size_t nBorne, int nArgument, CXError* pclErreur) {
        if (i >= 0 && static_cast<size_t>(i) < nBorne) return true;
        if (pclErreur)
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OUT_OF_RANGE, nArgument);
        return false;
    }
    // The element behind a script object when it is of the list's class. A class the host has
    // not described yet matches nothing: no cast is made on a guess.
    static TElement* pclElementDe(IObjetComposante* piElement, CXError* pclErreur) {
        void* p = nullptr;
        if (!piElement || !TElement::ms_piType ||
            !piElement->vbGetObjetC(p, TElement::ms_piType, 0, pclErreur) || !p) {
            if (pclErreur && pclErreur->bEstPropre())
                pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 1);
            return nullptr;
        }
        return static_cast<TElement*>(p);
    }
    bool bPlein(CXError* pclErreur) const {
        if (m_nMaximum == 0 || nGetNbElement() < m_nMaximum) return false;
        if (pclErreur)
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_PATH_FULL,
                                    static_cast<int>(m_nMaximum));
        return true;
    }
    // A full list refuses before the element is looked at.
    eRESULTATOBJET _eInsere(size_t i, IObjetComposante* piElement, int* pnPosition,
                            CXError* pclErreur) {
        if (bPlein(pclErreur)) return keRefusCollection;
        TElement* pcl = pclElementDe(piElement, pclErreur);
        if (!pcl) return keRefusCollection;
        return _eRange(i, CRef<TElement>::Retain(pcl), pnPosition);
    }
    eRESULTATOBJET _eInsereNeuf(size_t i, int* pnPosition, CCtxInfo* pclCtx, CXError* pclErreur,
                                bool bGarde) {
        if (bGarde && bPlein(pclErreur)) return keRefusCollection;
        auto cl = CRef<TElement>::Retain(TElement::s_pclCreeObjet(pclCtx, pclErreur));
        if (!cl) return keRefusCollection;
        return _eRange(i, std::move(cl), pnPosition);
    }
    eRESULTATOBJET _eRange(size_t i, CRef<TElement> cl, int* pnPosition) {
        m_tabElement.bInsere(i, std::move(cl));
        if (pnPosition) *pnPosition = static_cast<int>(i);
        return RESULTAT_OBJET_OK;
    }

    size_t m_nMaximum;
    CXArray<CRef<TElement>> m_tabElement;
};
