// CKLBIN: the counted, shared byte block of the boundary, in the form of CXYString (one pointer
// to the bytes after a count, a capacity and a size), with the string operations on bytes.
#pragma once
#include "CountedBlock.h"
#include "XYString.h"

#include <cstddef>
#include <string_view>
#include <utility>

class CKLBIN {
public:
    static constexpr long knAbsent = -1;

    CKLBIN() noexcept = default;
    CKLBIN(const void* p, size_t n) { (void)nAssign(p, n, 0); }
    CKLBIN(const CKLBIN& o) noexcept : m_p(o.m_p) { KVBloc::AddRef(m_p); }
    CKLBIN(CKLBIN&& o) noexcept : m_p(std::exchange(o.m_p, nullptr)) {}
    CKLBIN& operator=(CKLBIN o) noexcept {
        std::swap(m_p, o.m_p);
        return *this;
    }
    ~CKLBIN() { KVBloc::Release(m_p); }

    static CKLBIN Adopt(unsigned char* p) noexcept {
        CKLBIN b;
        b.m_p = p;
        return b;
    }
    static CKLBIN Retain(unsigned char* p) noexcept {
        KVBloc::AddRef(p);
        return Adopt(p);
    }
    [[nodiscard]] unsigned char* pDetach() noexcept { return std::exchange(m_p, nullptr); }
    unsigned char* pGetBrut() const noexcept { return m_p; }

    const unsigned char* pGetDonnees() const noexcept { return m_p; }
    size_t nGetTaille() const noexcept { return KVBloc::nTaille(m_p); }
    bool bVide() const noexcept { return nGetTaille() == 0; }
    int nGetRef() const noexcept { return KVBloc::nRef(m_p); }
    std::string_view sv() const noexcept {
        return {reinterpret_cast<const char*>(m_p), nGetTaille()};
    }

    // Writers answer a result word and leave the block unchanged on failure. `dwFlags` is kept
    // for the host's form of the call; no flag changes the copy.
    int nAssign(const void* p, size_t n, unsigned dwFlags = 0);
    int nConcat(const void* p, size_t n);
    int nConcat(const CKLBIN& o) { return nConcat(o.m_p, o.nGetTaille()); }
    // First position of `motif` at or after `nDepart`, or knAbsent. An empty motif is found at
    // the start position when that lies within the block.
    long nPos(const void* pMotif, size_t nMotif, size_t nDepart = 0) const;
    // Byte order, then the shorter first: <0, 0 or >0.
    int nCompare(const CKLBIN& o) const;
    bool bCommencePar(const void* p, size_t n) const;
    bool bTerminePar(const void* p, size_t n) const;
    bool bContient(const void* p, size_t n) const { return nPos(p, n) != knAbsent; }
    // The bytes from `nDebut` (0-based), at most `nLongueur` of them, into `out`.
    int nMilieu(size_t nDebut, size_t nLongueur, CKLBIN& out) const;
    // Keeps the first `nTaille` bytes.
    void Tronque(size_t nTaille);
    // Replaces every occurrence of one byte sequence by another; the count replaced, or a
    // negative value when memory ran out (the block then unchanged).
    long Remplace(const void* pAncien, size_t nAncien, const void* pNouveau, size_t nNouveau);
    // This block becomes `source` repeated `nFois` times.
    int nRepete(const CKLBIN& source, size_t nFois);
    // Takes the block of `o`, which becomes empty.
    void Take(CKLBIN& o) noexcept {
        KVBloc::Release(m_p);
        m_p = std::exchange(o.m_p, nullptr);
    }
    // The bytes read as UTF-8 text into a wide string.
    int nAffecteToUNICODE(CXYString<wchar_t>& out) const;
    // The bytes copied as they are into a narrow string.
    int nAffecteToANSI(CXYString<char>& out) const;
    // The bytes up to the first zero byte, as a narrow string.
    int nAffecteANSIToANSI(CXYString<char>& out) const;

    friend bool operator==(const CKLBIN& a, const CKLBIN& b) { return a.sv() == b.sv(); }

private:
    unsigned char* m_p = nullptr;
};
static_assert(sizeof(CKLBIN) == sizeof(void*), "a byte block is one pointer");
