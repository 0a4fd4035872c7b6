// CCounted<I>: the counting of a host object that implements the counted interface I
// (vAddRef/vRelease). The object starts with one reference, its creator's, and deletes itself
// when the last is released. CCounted<> counts an object that stands behind no interface.
#pragma once
#include <atomic>

class ICounted {
public:
    virtual void vAddRef() = 0;
    virtual void vRelease() = 0;

protected:
    ~ICounted() = default;
};

template <class I = ICounted> class CCounted : public I {
public:
    CCounted(const CCounted&) = delete;
    CCounted& operator=(const CCounted&) = delete;

    void vAddRef() override { m_nRef.fetch_add(1, std::memory_order_relaxed); }
    void vRelease() override {
        if (m_nRef.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }
    // The references held now; 1 when the creator's is the only one.
    int nGetRef() const { return m_nRef.load(std::memory_order_relaxed); }

protected:
    CCounted() = default;
    virtual ~CCounted() = default;

private:
    std::atomic<int> m_nRef{1};
};
