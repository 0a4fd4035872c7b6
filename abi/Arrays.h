// The growing arrays of the boundary. CTTableau holds plain values in one buffer; CXArray holds
// objects with constructors; CXYStringArray holds counted strings, as a string-array parameter
// arrives. Indices are 0-based; an index out of range is refused, never read.
#pragma once
#include "XYString.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

// A buffer of fixed-size elements; the typed form above it gives the element type.
class CTableauDeBuffer {
public:
    explicit CTableauDeBuffer(size_t nTailleElement) : m_nTailleElement(nTailleElement) {}
    CTableauDeBuffer(const CTableauDeBuffer& o) : m_nTailleElement(o.m_nTailleElement) {
        *this = o;
    }
    CTableauDeBuffer& operator=(const CTableauDeBuffer& o) {
        if (this != &o && bReserve(o.m_nNb)) {
            if (o.m_nNb) std::memcpy(m_pby, o.m_pby, o.m_nNb * m_nTailleElement);
            m_nNb = o.m_nNb;
        }
        return *this;
    }
    ~CTableauDeBuffer() { std::free(m_pby); }

    size_t nGetNbElement() const { return m_nNb; }
    void Vide() { m_nNb = 0; }

protected:
    bool bReserve(size_t nNb) {
        if (nNb <= m_nCapacite) return true;
        size_t nNouvelle = m_nCapacite < 4 ? 4 : m_nCapacite * 2;
        if (nNouvelle < nNb) nNouvelle = nNb;
        void* p = std::realloc(m_pby, nNouvelle * m_nTailleElement);
        if (!p) return false;
        m_pby = static_cast<unsigned char*>(p);
        m_nCapacite = nNouvelle;
        return true;
    }
    unsigned char* pElement(size_t i) const { return m_pby + i * m_nTailleElement; }
    bool bInsere(size_t i, const void* p) {
        if (i > m_nNb || !bReserve(m_nNb + 1)) return false;
        std::memmove(pElement(i + 1), pElement(i), (m_nNb - i) * m_nTailleElement);
        std::memcpy(pElement(i), p, m_nTailleElement);
        ++m_nNb;
        return true;
    }
    bool bSupprime(size_t i) {
        if (i >= m_nNb) return false;
        std::memmove(pElement(i), pElement(i + 1), (m_nNb - i - 1) * m_nTailleElement);
        --m_nNb;
        return true;
    }

private:
    size_t m_nTailleElement;
    size_t m_nNb = 0;
    size_t m_nCapacite = 0;
    unsigned char* m_pby = nullptr;
};

template <class T> class CTTableau : public CTableauDeBuffer {
    static_assert(std::is_trivially_copyable_v<T>, "CTTableau holds plain values");

public:
    CTTableau() : CTableauDeBuffer(sizeof(T)) {}
    bool bAjoute(const T& x) { return bInsere(nGetNbElement(), &x); }
    bool bInsereA(size_t i, const T& x) { return bInsere(i, &x); }
    bool bSupprimeA(size_t i) { return bSupprime(i); }
    T& operator[](size_t i) { return *reinterpret_cast<T*>(pElement(i)); }
    const T& operator[](size_t i) const { return *reinterpret_cast<const T*>(pElement(i)); }
    T* begin() { return nGetNbElement() ? &(*this)[0] : nullptr; }
    T* end() { return begin() + nGetNbElement(); }
    const T* begin() const { return nGetNbElement() ? &(*this)[0] : nullptr; }
    const T* end() const { return begin() + nGetNbElement(); }
};

template <class T> class CXArray {
public:
    size_t nGetNbElement() const { return m_tab.size(); }
    void Ajoute(T x) { m_tab.push_back(std::move(x)); }
    bool bInsere(size_t i, T x) {
        if (i > m_tab.size()) return false;
        m_tab.insert(m_tab.begin() + static_cast<std::ptrdiff_t>(i), std::move(x));
        return true;
    }
    bool bSupprime(size_t i) {
        if (i >= m_tab.size()) return false;
        m_tab.erase(m_tab.begin() + static_cast<std::ptrdiff_t>(i));
        return true;
    }
    bool bEchange(size_t i, size_t j) {
        if (i >= m_tab.size() || j >= m_tab.size()) return false;
        std::swap(m_tab[i], m_tab[j]);
        return true;
    }
    // Moves element i so that it ends at position j.
    bool bDeplace(size_t i, size_t j) {
        if (i >= m_tab.size() || j >= m_tab.size()) return false;
        T x = std::move(m_tab[i]);
        m_tab.erase(m_tab.begin() + static_cast<std::ptrdiff_t>(i));
        m_tab.insert(m_tab.begin() + static_cast<std::ptrdiff_t>(j), std::move(x));
        return true;
    }
    void Vide() { m_tab.clear(); }
    T& operator[](size_t i) { return m_tab[i]; }
    const T& operator[](size_t i) const { return m_tab[i]; }
    auto begin() { return m_tab.begin(); }
    auto end() { return m_tab.end(); }
    auto begin() const { return m_tab.begin(); }
    auto end() const { return m_tab.end(); }

private:
    std::vector<T> m_tab;
};

template <class T> class CXYStringArray : public CXArray<CXYString<T>> {};
