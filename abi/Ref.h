// CRef<T>: the holder of one reference to a counted interface (vAddRef/vRelease). Adoption and
// retention are explicit, so that no raw pointer is taken over by accident.
#pragma once
#include <utility>

template <class T> class CRef {
public:
    CRef() = default;
    static CRef Adopt(T* p) {
        CRef r;
        r.m_p = p;
        return r;
    }
    static CRef Retain(T* p) {
        if (p) p->vAddRef();
        return Adopt(p);
    }
    CRef(const CRef& o) : m_p(o.m_p) {
        if (m_p) m_p->vAddRef();
    }
    CRef(CRef&& o) noexcept : m_p(std::exchange(o.m_p, nullptr)) {}
    CRef& operator=(CRef o) noexcept { // the old reference is released last
        std::swap(m_p, o.m_p);
        return *this;
    }
    ~CRef() {
        if (m_p) m_p->vRelease();
    }
    T* operator->() const { return m_p; }
    T& operator*() const { return *m_p; }
    T* pGet() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }
    [[nodiscard]] T* pDetach() { return std::exchange(m_p, nullptr); }
    void Reset() { CRef().Swap(*this); }
    void Swap(CRef& o) noexcept { std::swap(m_p, o.m_p); }

private:
    T* m_p = nullptr;
};
