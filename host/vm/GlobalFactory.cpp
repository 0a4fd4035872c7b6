#include "GlobalFactory.h"

#include "HostBarrier.h"
#include "ObjectPeer.h"
#include "Ref.h"

IKLObjetComposante* CGlobalFactory::vpiCreeKLObjetComposante(IObjetBase* piObjet,
                                                             CXError* pclErreur) {
    if (!piObjet)
        return nullptr;
    return KVHost::Guard(pclErreur, static_cast<IKLObjetComposante*>(nullptr), [&] {
        auto* pcl = new CObjectPeer(piObjet, [this] { --m_nLive; });
        ++m_nLive;
        return pcl;
    });
}

bool CGlobalFactory::bEnsurePeer(IObjetBase* piObjet) {
    IObjetComposante* pi = piObjet ? piObjet->vpiGetIObjetComposante() : nullptr;
    if (!pi)
        return false;
    if (pi->vpiGetKLObjetComposante())
        return true;
    // The object takes a reference of its own; ours goes at the end of the scope.
    CRef<IKLObjetComposante> clPeer =
        CRef<IKLObjetComposante>::Adopt(vpiCreeKLObjetComposante(piObjet, nullptr));
    pi->vSetKLObjetComposante(clPeer.pGet());
    return pi->vpiGetKLObjetComposante() != nullptr;
}
