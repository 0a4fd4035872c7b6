// CTEnumerateurDinoGgl: the script's collection over a list of JSON-backed objects that its
// owner keeps. The owner's array holds every element, those marked for deletion included, so
// that the commit finds them; the collection's view holds the others, in the same order. Every
// change through the collection is made to both; a removal only marks the element, which the
// owner keeps until its commit has sent the deletion.
//
// TElement: a counted script object with an eEtatObjet m_eEtatObjet, a static ms_piType, and
// s_pclCreeObjet(CCtxInfo*, CXError*). TOwner: counted. TArray: CXArray<TElement*>, owning one
// reference on each element as a raw pointer; _InsereComplet hands it one.
#pragma once
#include "EtatObjet.h"
#include "ModuleInfo.h"
#include "ObjetComposante.h"

#include "Arrays.h"
#include "Ref.h"
#include "XError.h"

#include <algorithm>
#include <utility>

template <class TOwner, class TElement, class TArray = CXArray<TElement*>>
class CTEnumerateurDinoGgl final : public CImplInterfaceAddRefRelease<IObjetCollectionModifiable> {
public:
    CTEnumerateurDinoGgl(TOwner* pclOwner, TArray* ptabComplet)
        : m_clOwner(CRef<TOwner>::Retain(pclOwner)), m_ptabComplet(ptabComplet) {
        for (TElement* pcl : *m_ptabComplet) {
            if (pcl->m_eEtatObjet == ETAT_A_SUPPRIMER) continue;
            m_tabVue.Ajoute(CRef<TElement>::Retain(pcl));
        }
    }

    IObjetCollectionModifiable* vpiGetIObjetCollectionModifiable() override { return this; }

    int vnGetNbElementCollection(CCtxInfo*, CXError*) override {
        return static_cast<int>(m_tabVue.nGetNbElement());
    }
    IObjetBase* vpiGetElementCollection(int i, CCtxInfo*, CXError*) override {
        return bDansVue(i) ? m_tabVue[static_cast<size_t>(i)]->piGetObjetBase() : nullptr;
    }

    eRESULTATOBJET veAjouteElementCollection(IObjetComposante* piElement, int* pnPosition,
                                             CCtxInfo* pclCtx, CXError* pclErreur) override {
        return _eInsere(nNbVue(), pclElementDe(piElement, pclErreur), pnPosition, pclCtx,
                        pclErreur);
    }
    eRESULTATOBJET veAjouteElementCollectionVide(int* pnPosition, CCtxInfo* pclCtx,
                                                 CXError* pclErreur) override {
        return _eInsereNeuf(nNbVue(), pnPosition, pclCtx, pclErreur);
    }
    eRESULTATOBJET veAjouteElementCollectionParametre(int*, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    eRESULTATOBJET veInsereElementCollection(int i, IObjetComposante* piElement, CCtxInfo* pclCtx,
                                             CXError* pclErreur) override {
        if (!bIndiceValide(i, nNbVue() + 1, pclErreur)) return RESULTAT_OBJET_ERREUR;
        return _eInsere(i, pclElementDe(piElement, pclErreur), nullptr, pclCtx, pclErreur);
    }
    eRESULTATOBJET veInsereElementCollectionVide(int i, CCtxInfo* pclCtx,
                                                 CXError* pclErreur) override {
        if (!bIndiceValide(i, nNbVue() + 1, pclErreur)) return RESULTAT_OBJET_ERREUR;
        return _eInsereNeuf(i, nullptr, pclCtx, pclErreur);
    }
    eRESULTATOBJET veInsereElementCollectionParametre(int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    eRESULTATOBJET veSupprimeElementCollection(int i, CCtxInfo*, CXError* pclErreur) override {
        if (!bIndiceValide(i, nNbVue(), pclErreur)) return RESULTAT_OBJET_ERREUR;
        // The owner keeps it, marked, so that the next commit sends its deletion; the view's
        // reference goes with its slot.
        m_tabVue[static_cast<size_t>(i)]->m_eEtatObjet = ETAT_A_SUPPRIMER;
        m_tabVue.bSupprime(static_cast<size_t>(i));
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veSupprimeToutElementCollection(CCtxInfo* pclCtx, CXError* pclErreur) override {
        while (nNbVue() > 0) veSupprimeElementCollection(nNbVue() - 1, pclCtx, pclErreur);
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veEchangeElementCollection(int i, int j, CCtxInfo*, CXError* pclErreur) override {
        if (!bIndiceValide(i, nNbVue(), pclErreur) || !bIndiceValide(j, nNbVue(), pclErreur))
            return RESULTAT_OBJET_ERREUR;
        m_ptabComplet->bEchange(nPositionComplete(m_tabVue[static_cast<size_t>(i)].pGet()),
                                nPositionComplete(m_tabVue[static_cast<size_t>(j)].pGet()));
        m_tabVue.bEchange(static_cast<size_t>(i), static_cast<size_t>(j));
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veDeplaceElementCollection(int nDepuis, int nVers, CCtxInfo*,
                                              CXError* pclErreur) override {
        if (!bIndiceValide(nDepuis, nNbVue(), pclErreur) || !bIndiceValide(nVers, nNbVue(), pclErreur))
            return RESULTAT_OBJET_ERREUR;
        TElement* pcl = m_tabVue[static_cast<size_t>(nDepuis)].pGet();
        m_tabVue.bDeplace(static_cast<size_t>(nDepuis), static_cast<size_t>(nVers));
        // In the owner's array the element goes before its new successor in the view, or after
        // its new predecessor when it ends the view.
        m_ptabComplet->bSupprime(nPositionComplete(pcl));
        size_t nVue = static_cast<size_t>(nVers);
        size_t nPos = nVue + 1 < m_tabVue.nGetNbElement()
                          ? nPositionComplete(m_tabVue[nVue + 1].pGet())
                          : (nVue == 0 ? 0 : nPositionComplete(m_tabVue[nVue - 1].pGet()) + 1);
        m_ptabComplet->bInsere(nPos, pcl);
        return RESULTAT_OBJET_OK;
    }

private:
    int nNbVue() const { return static_cast<int>(m_tabVue.nGetNbElement()); }
    bool bDansVue(int i) const { return i >= 0 && i < nNbVue(); }
    static bool bIndiceValide(int i, int nBorne, CXError* pclErreur) {
        if (i >= 0 && i < nBorne) return true;
        if (pclErreur)
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OUT_OF_RANGE, 1);
        return false;
    }
    size_t nPositionComplete(TElement* pcl) const {
        auto it = std::find(m_ptabComplet->begin(), m_ptabComplet->end(), pcl);
        return static_cast<size_t>(it - m_ptabComplet->begin());
    }
    void _InsereComplet(size_t nPos, CRef<TElement> cl) {
        m_ptabComplet->bInsere(nPos, cl.pDetach());
    }
    // The element behind a script object, if it is of the collection's class.
    static TElement* pclElementDe(IObjetComposante* piElement, CXError* pclErreur) {
        void* p = nullptr;
        if (!piElement || !piElement->vbGetObjetC(p, TElement::ms_piType, 0, pclErreur) || !p) {
            if (pclErreur && pclErreur->bEstPropre())
                pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 1);
            return nullptr;
        }
        return static_cast<TElement*>(p);
    }
    eRESULTATOBJET _eInsere(int i, TElement* pcl, int* pnPosition, CCtxInfo*, CXError*) {
        if (!pcl) return RESULTAT_OBJET_ERREUR;
        pcl->m_eEtatObjet = pcl->m_eEtatObjet == ETAT_NEUF ? ETAT_NEUF_ATTACHE : ETAT_A_CREER;
        size_t nVue = static_cast<size_t>(i);
        size_t nPos = nVue < m_tabVue.nGetNbElement() ? nPositionComplete(m_tabVue[nVue].pGet())
                                                      : m_ptabComplet->nGetNbElement();
        auto cl = CRef<TElement>::Retain(pcl);
        _InsereComplet(nPos, cl);
        m_tabVue.bInsere(nVue, std::move(cl));
        if (pnPosition) *pnPosition = i;
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET _eInsereNeuf(int i, int* pnPosition, CCtxInfo* pclCtx, CXError* pclErreur) {
        // A new object is owned by the first reference taken: this one, until inserted.
        auto cl = CRef<TElement>::Retain(TElement::s_pclCreeObjet(pclCtx, pclErreur));
        if (!cl) return RESULTAT_OBJET_ERREUR;
        return _eInsere(i, cl.pGet(), pnPosition, pclCtx, pclErreur);
    }

    CRef<TOwner> m_clOwner; // released last
    TArray* m_ptabComplet;
    CXArray<CRef<TElement>> m_tabVue;
};
