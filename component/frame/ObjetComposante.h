// The bases of the component's script objects: the object and component sides the host holds,
// the host peer made at need through the global factory, and the reference count.
#pragma once
#include "ObjectInterfaces.h"

#include <atomic>
#include <cstdint>

class CXmlObject;

class CObjetComposanteBase : public CClasseVideInterface, public IObjetBase, public IObjetComposante {
public:
    CObjetComposanteBase() = default;
    CObjetComposanteBase(const CObjetComposanteBase&) = delete;
    CObjetComposanteBase& operator=(const CObjetComposanteBase&) = delete;

    // Both sides answer the same object.
    IObjetBase* vpiGetObjetBase() override { return this; }

    int veGetFamille() override { return 5; }
    int vnGetTypeAccesseur() override { return 0; }
    IObjetComposante* vpiGetIObjetComposante() override { return this; }
    // Identity: the other reference names this very object.
    int vbEgaliteObjet(IObjetBase* piAutre) override {
        return piAutre && piAutre->vpiGetIObjetComposante() == this;
    }
    int vbEgaliteObjet(IObjetComposante* piAutre) override { return piAutre == this; }
    IKLObjetComposante* vpiGetKLObjetComposante() override { return m_piKLObjetComposante; }
    void vSetKLObjetComposante(IKLObjetComposante* piKLObjet) override;
    IInterfaceObjetBase* vpiGetObjetSynchronisation() override { return nullptr; }
    void vNotifieLiberationExplicite() override {}
    int vbGetObjetC(void*& pObjet, ITypeDescription* piType, int nMode,
                    CXError* pclErreur) override;
    void* vpGetSafeObjetC(ITypeDescription* piType) override;
    int __vnGetTailleDonnee() override { return 0; }
    eRESULTATOBJET veDumpMemoire(const wchar_t*, IDumpMemoire*, void*&) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    void vNotifieErreurInstance(IVM* piVM, CXError* pclErreur, int nOption) override;
    void vNotifieInstanceOrpheline() override;

    // The pointer a script value holds: the object side.
    IObjetBase* piGetObjetBase() { return this; }
    // The native object behind an object side of this component, or null for another object.
    static CObjetComposanteBase* s_pclDepuisObjetBase(IObjetBase* pi);
    // The XML side of an object of the XML tree, null for the others.
    virtual CXmlObject* vpclGetXmlObjectScript() { return nullptr; }

protected:
    ~CObjetComposanteBase() override;

private:
    // The host peer, made from the global factory when there is none; null when none can be.
    IKLObjetComposante* _piAssurePair();
    IKLObjetComposante* m_piKLObjetComposante = nullptr;
};

// The object with a count of its own, for classes with no other root. A new object has count 0:
// the host's first vAddRef owns it.
class CObjetComposante : public CObjetComposanteBase {
public:
    void vAddRef() override { m_nRef.fetch_add(1, std::memory_order_relaxed); }
    void vRelease() override {
        if (m_nRef.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    int nGetRef() const { return m_nRef.load(std::memory_order_relaxed); }

protected:
    ~CObjetComposante() override = default;

private:
    std::atomic<int32_t> m_nRef{0};
};

// A vtable and a 32-bit count, shared by the small counted objects of the component.
class CAddRefReleaseNoCheck {
public:
    virtual ~CAddRefReleaseNoCheck() = default;
    int nGetRef() const { return m_nRef.load(std::memory_order_relaxed); }

protected:
    std::atomic<int32_t> m_nRef{0};
};
class CAddRefRelease : public CAddRefReleaseNoCheck {};

// Binds an interface I to the count of B: vAddRef, vRelease (deleting at zero) and a virtual
// destructor.
template <class I, class B = CAddRefRelease> class CImplInterfaceAddRefRelease : public I, public B {
public:
    void vAddRef() override { B::m_nRef.fetch_add(1, std::memory_order_relaxed); }
    void vRelease() override {
        if (B::m_nRef.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
};
