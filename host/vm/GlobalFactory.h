// CGlobalFactory: the host's maker of object peers (IGlobalFactory), handed to the component
// by command 3053 selector 9. A modern factory (version 3): the component initialises its types.
// It counts the peers alive, that is the component objects the host has seen and that still
// live: zero once every object has been released.
#pragma once
#include "ObjectInterfaces.h"

#include <atomic>

class CGlobalFactory final : public IGlobalFactory {
public:
    static constexpr int knVersion = 3;

    CGlobalFactory() = default;
    CGlobalFactory(const CGlobalFactory&) = delete;
    CGlobalFactory& operator=(const CGlobalFactory&) = delete;
    ~CGlobalFactory() = default;

    int vnGetVersion() override { return knVersion; }
    IKLObjetComposante* vpiCreeKLObjetComposante(IObjetBase* piObjet, CXError* pclErreur) override;

    // Gives the object a peer when it has none; true when it has one afterwards.
    bool bEnsurePeer(IObjetBase* piObjet);
    int nLivePeers() const { return m_nLive.load(); }

private:
    std::atomic<int> m_nLive{0};
};
