// CObjectPeer: the host's peer of a component object (IKLObjetComposante), made by the global
// factory. The object keeps the peer (vSetKLObjetComposante) and releases it when destroyed;
// the peer only borrows the object, so that neither keeps the other alive. Once an object has a
// peer it forwards its cast (vbGetObjetC) here, and the peer answers from the object's own
// class, as the host would among the classes it knows.
#pragma once
#include "Counted.h"
#include "ObjectInterfaces.h"

#include <functional>

class CObjectPeer final : public CCounted<IKLObjetComposante> {
public:
    // fnGone runs when the peer is destroyed (the factory counts its peers).
    CObjectPeer(IObjetBase* piObjet, std::function<void()> fnGone);

    IInterfaceObjetBase* vpiGetObjetBase() override { return m_piObjet; }
    int vnGetVersionIKLObjetComposante() override { return 1; }
    int vbGetObjetC(void*& pObjet, ITypeDescription* piType, int nMode,
                    CXError* pclErreur) override;
    void vNotifieInstanceOrpheline() override {}
    void vNotifieErreurInstance(IVM* piVM, int nOption, CXError* pclErreur) override;

    // How many errors the object was told to show.
    int nErrorNotices() const { return m_nErrorNotices; }

private:
    ~CObjectPeer() override;

    IObjetBase* m_piObjet;
    std::function<void()> m_fnGone;
    int m_nErrorNotices = 0;
};
