#include "GlobalFactory.h"

#include "ObjectPeer.h"
#include "Ref.h"

IKLObjetComposante* CGlobalFactory::vpiCreeKLObjetComposante(IObjetBase* piObjet, CXError*) {
    if (!piObjet)
        return nullptr;
    ++m_nLive;
    return new CObjectPeer(piObjet, [this] { --m_nLive; });
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
