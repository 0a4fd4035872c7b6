// CUpdatesManager: an entry's queue of pending operations. It owns one reference on each, and
// refuses a second operation of the same kind on the same object, so that calling a setter ten
// times queues one change.
#pragma once
#include "xmlobject/UpdateOperation.h"

#include <vector>

class CXmlObjectListe;

class CUpdatesManager {
public:
    CUpdatesManager() = default;
    CUpdatesManager(const CUpdatesManager&) = delete;
    CUpdatesManager& operator=(const CUpdatesManager&) = delete;
    ~CUpdatesManager() { ClearOps(); }

    // Takes a reference of its own; nothing for null or for a duplicate (same object, same id
    // exactly). bEnTete puts it at the head.
    void Ajoute(IUpdateOperation* piOperation, int bEnTete = 0);
    bool bHasOperations() const { return !m_tab.empty(); }
    // Some operation shares a bit with the mask.
    bool bHasOperations(int eMasque) const;
    IUpdateOperation* pclGetOperation(int eMasque, CXmlObjectMulti* pclObjet) const;
    int nGetNbOperation() const { return static_cast<int>(m_tab.size()); }
    IUpdateOperation* pclGetOperation(int i) const { return m_tab[static_cast<size_t>(i)]; }
    void ClearOps();
    void ClearOps(int eMasque);
    // Runs the queue in order and stops at the first failure: what failed and all that follow
    // stay, in order, for the next save; what went out is removed.
    void doOperations(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur);
    // Carries pclAncien's pending operations over to pclNouveau; operations on a member of
    // plAnciens go to the member at the same index of plNouveaux.
    void CopieOps(CXmlObjectMulti* pclAncien, CXmlObjectMulti* pclNouveau,
                  CXmlObjectListe* plAnciens, CXmlObjectListe* plNouveaux);

private:
    std::vector<IUpdateOperation*> m_tab;
};
