#include "xmlobject/UpdatesManager.h"

#include "xmlobject/XmlObjectMulti.h"

#include <algorithm>

void CUpdatesManager::Ajoute(IUpdateOperation* piOperation, int bEnTete) {
    if (!piOperation)
        return;
    // Same object and the very same id: a second change of one entry is the first one.
    for (IUpdateOperation* pi : m_tab)
        if (pi->pclGetObjet() == piOperation->pclGetObjet() &&
            pi->eGetOperationId() == piOperation->eGetOperationId())
            return;
    piOperation->vAddRef();
    m_tab.insert(bEnTete ? m_tab.begin() : m_tab.end(), piOperation);
}

bool CUpdatesManager::bHasOperations(int eMasque) const {
    return std::any_of(m_tab.begin(), m_tab.end(),
                       [eMasque](IUpdateOperation* pi) { return (pi->eGetOperationId() & eMasque) != 0; });
}

IUpdateOperation* CUpdatesManager::pclGetOperation(int eMasque, CXmlObjectMulti* pclObjet) const {
    for (IUpdateOperation* pi : m_tab)
        if ((pi->eGetOperationId() & eMasque) != 0 && pi->pclGetObjet() == pclObjet)
            return pi;
    return nullptr;
}

void CUpdatesManager::ClearOps() {
    std::vector<IUpdateOperation*> tab;
    tab.swap(m_tab);
    for (IUpdateOperation* pi : tab)
        pi->vRelease();
}

void CUpdatesManager::ClearOps(int eMasque) {
    std::vector<IUpdateOperation*> tabRetires;
    auto it = std::stable_partition(m_tab.begin(), m_tab.end(), [eMasque](IUpdateOperation* pi) {
        return (pi->eGetOperationId() & eMasque) == 0;
    });
    tabRetires.assign(it, m_tab.end());
    m_tab.erase(it, m_tab.end());
    for (IUpdateOperation* pi : tabRetires)
        pi->vRelease();
}

void CUpdatesManager::doOperations(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) {
    if (!pclConnexion || !piVM || !pclErreur || !pclErreur->bEstPropre() || m_tab.empty())
        return;
    const size_t nTotal = m_tab.size();
    long nDernier = -1;
    for (size_t i = 0; i < nTotal && i < m_tab.size(); ++i) {
        IUpdateOperation* pi = m_tab[i];
        pi->vAddRef();
        (*pi)(pclConnexion, piVM, pclErreur);
        if (!pclErreur->bEstPropre()) {
            pi->vRelease();
            break;
        }
        // The entry that went out may have its own queue: it runs straight after, and its
        // failure is seen at the next step of this loop.
        if (pi->vbRecursif() && pi->pclGetObjet())
            pi->pclGetObjet()->clGetUpdates().doOperations(pclConnexion, piVM, pclErreur);
        pi->vRelease();
        nDernier = static_cast<long>(i);
    }
    if (nDernier < 0)
        return;
    // When operations were added meanwhile, only the finished ones go.
    if (nDernier == static_cast<long>(m_tab.size()) - 1) {
        ClearOps();
        return;
    }
    std::vector<IUpdateOperation*> tabFinies(m_tab.begin(), m_tab.begin() + nDernier + 1);
    m_tab.erase(m_tab.begin(), m_tab.begin() + nDernier + 1);
    for (IUpdateOperation* pi : tabFinies)
        pi->vRelease();
}

void CUpdatesManager::CopieOps(CXmlObjectMulti* pclAncien, CXmlObjectMulti* pclNouveau,
                               CXmlObjectListe* plAnciens, CXmlObjectListe* plNouveaux) {
    if (!pclAncien)
        return;
    CUpdatesManager& clAncienne = pclAncien->clGetUpdates();
    for (int i = 0; i < clAncienne.nGetNbOperation(); ++i) {
        IUpdateOperation* pi = clAncienne.pclGetOperation(i);
        IUpdateOperation* piCopie = nullptr;
        if (pi->pclGetObjet() == pclAncien) {
            piCopie = pi->vpclCopie(pclNouveau, nullptr);
        } else if (plAnciens && plNouveaux && pi->pclGetObjet()) {
            int n = plAnciens->nCompareXmlObjectPtr(pi->pclGetObjet()->vpclGetXmlObject());
            CXmlObject* pclMembre = n >= 0 ? plNouveaux->pclGetElement(n) : nullptr;
            if (pclMembre && pclMembre->vpclGetXmlObjectMulti())
                piCopie = pi->vpclCopie(pclNouveau, pclMembre->vpclGetXmlObjectMulti());
        }
        if (piCopie) {
            Ajoute(piCopie);
            piCopie->vRelease();
        }
    }
}
