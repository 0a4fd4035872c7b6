#include "ObjectPeer.h"

CObjectPeer::CObjectPeer(IObjetBase* piObjet, std::function<void()> fnGone)
    : m_piObjet(piObjet), m_fnGone(std::move(fnGone)) {}

CObjectPeer::~CObjectPeer() {
    if (m_fnGone)
        m_fnGone();
}

int CObjectPeer::vbGetObjetC(void*& pObjet, ITypeDescription* piType, int, CXError*) {
    // The safe cast does not come back here, as vbGetObjetC would.
    IObjetComposante* pi = m_piObjet ? m_piObjet->vpiGetIObjetComposante() : nullptr;
    pObjet = pi && piType ? pi->vpGetSafeObjetC(piType) : nullptr;
    return pObjet != nullptr;
}

void CObjectPeer::vNotifieErreurInstance(IVM*, int, CXError*) {
    ++m_nErrorNotices;
}
