// CXYString<T>: the counted shared string of the boundary. The object is one pointer to the
// text (null for the empty string), preceded by the header of CountedBlock.h. Copies share the
// text; writers unshare first. Memory comes from the host's string allocator.
#pragma once
#include "CountedBlock.h"

#include <cstddef>
#include <string_view>
#include <utility>

template <class T> class CXYString {
public:
    CXYString() noexcept = default;
    CXYString(const T* psz); // NOLINT: implicit from text, as the boundary passes it
    CXYString(const T* p, size_t nLongueur);
    CXYString(std::basic_string_view<T> sv) : CXYString(sv.data(), sv.size()) {}
    CXYString(const CXYString& o) noexcept : m_p(o.m_p) { KVBloc::AddRef(m_p); }
    CXYString(CXYString&& o) noexcept : m_p(std::exchange(o.m_p, nullptr)) {}
    CXYString& operator=(CXYString o) noexcept {
        std::swap(m_p, o.m_p);
        return *this;
    }
    ~CXYString() { KVBloc::Release(m_p); }

    // The raw pointer as it crosses the boundary: Adopt takes over one reference, Retain adds one.
    static CXYString Adopt(T* p) noexcept {
        CXYString s;
        s.m_p = p;
        return s;
    }
    static CXYString Retain(T* p) noexcept {
        KVBloc::AddRef(p);
        return Adopt(p);
    }
    [[nodiscard]] T* pDetach() noexcept { return std::exchange(m_p, nullptr); }
    T* pGetBrut() const noexcept { return m_p; }

    // Never null: the empty string reads as "".
    const T* pszGet() const noexcept { return m_p ? m_p : s_pszVide(); }
    size_t nLongueur() const noexcept { return KVBloc::nTaille(m_p) / sizeof(T); }
    size_t nTailleOctets() const noexcept { return KVBloc::nTaille(m_p); }
    size_t nCapacite() const noexcept { return KVBloc::nCapacite(m_p) / sizeof(T); }
    bool bVide() const noexcept { return nLongueur() == 0; }
    int nGetRef() const noexcept { return KVBloc::nRef(m_p); }
    std::basic_string_view<T> sv() const noexcept { return {pszGet(), nLongueur()}; }

    // Writers answer a result word (KVResult.h); the string is unchanged on failure.
    int nAffecte(const T* p, size_t nLongueur);
    int nAffecte(const T* psz);
    int nConcatene(const T* p, size_t nLongueur);
    int nConcatene(std::basic_string_view<T> sv) { return nConcatene(sv.data(), sv.size()); }
    int nReserve(size_t nLongueur);
    // Makes this string the only owner of its text.
    int nUnshare();
    // Writable text, for a unique string (after nUnshare or nReserve); null when empty.
    T* pGetTampon() noexcept { return m_p; }
    // Fixes the length after writing into pGetTampon(); must not pass the capacity.
    void FixeLongueur(size_t nLongueur);
    void Vide() noexcept { KVBloc::Release(std::exchange(m_p, nullptr)); }

    friend bool operator==(const CXYString& a, const CXYString& b) { return a.sv() == b.sv(); }
    friend bool operator==(const CXYString& a, const T* b) {
        return a.sv() == std::basic_string_view<T>(b ? b : s_pszVide());
    }

private:
    static const T* s_pszVide() noexcept;
    T* m_p = nullptr;
};
static_assert(sizeof(CXYString<wchar_t>) == sizeof(void*), "a counted string is one pointer");

extern template class CXYString<wchar_t>;
extern template class CXYString<char>;
