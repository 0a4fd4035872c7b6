#include "SimpleBuffer.h"

#include "StrMemAlloc.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

// Whether p points into the n bytes at pby: an append of a buffer's own bytes must copy them
// before the buffer moves.
bool s_bDedans(const void* p, const unsigned char* pby, size_t n) {
    const auto a = reinterpret_cast<uintptr_t>(p), d = reinterpret_cast<uintptr_t>(pby);
    return pby && a >= d && a < d + n;
}

} // namespace

CSimpleBuffer::CSimpleBuffer(const CSimpleBuffer& o) { (void)bAffecte(o.m_pby, o.m_nTaille); }

CSimpleBuffer& CSimpleBuffer::operator=(const CSimpleBuffer& o) {
    if (this != &o && !bAffecte(o.m_pby, o.m_nTaille))
        Vide();
    return *this;
}

CSimpleBuffer::CSimpleBuffer(CSimpleBuffer&& o) noexcept
    : m_pby(std::exchange(o.m_pby, nullptr)), m_nTaille(std::exchange(o.m_nTaille, 0)),
      m_nCapacite(std::exchange(o.m_nCapacite, 0)) {}

CSimpleBuffer& CSimpleBuffer::operator=(CSimpleBuffer&& o) noexcept {
    std::swap(m_pby, o.m_pby);
    std::swap(m_nTaille, o.m_nTaille);
    std::swap(m_nCapacite, o.m_nCapacite);
    return *this;
}

// The module's allocator: the host's once it has spoken, so that its limits and its fault
// hooks reach request bodies too.
CSimpleBuffer::~CSimpleBuffer() {
    if (m_pby)
        CInformationModule::s_Allocateur().vLibere(m_pby);
}

bool CSimpleBuffer::_bReserve(size_t nCapacite) {
    if (nCapacite <= m_nCapacite)
        return true;
    // Doubling keeps repeated appends linear.
    size_t nNouvelle = m_nCapacite * 2;
    if (nNouvelle < nCapacite)
        nNouvelle = nCapacite;
    IStrMemAlloc& clAlloc = CInformationModule::s_Allocateur();
    void* p = clAlloc.vpRealloue(m_pby, nNouvelle);
    if (!p && nNouvelle > nCapacite) {
        nNouvelle = nCapacite;
        p = clAlloc.vpRealloue(m_pby, nNouvelle);
    }
    if (!p)
        return false;
    m_pby = static_cast<unsigned char*>(p);
    m_nCapacite = nNouvelle;
    return true;
}

bool CSimpleBuffer::bSetTaille(size_t nTaille) {
    if (!_bReserve(nTaille))
        return false;
    if (nTaille > m_nTaille)
        std::memset(m_pby + m_nTaille, 0, nTaille - m_nTaille);
    m_nTaille = nTaille;
    return true;
}

bool CSimpleBuffer::bAffecte(const void* p, size_t nTaille) {
    if (!p && nTaille)
        return false;
    if (s_bDedans(p, m_pby, m_nTaille)) {
        CSimpleBuffer clCopie;
        return clCopie.bAffecte(p, nTaille) && (*this = std::move(clCopie), true);
    }
    if (!_bReserve(nTaille))
        return false;
    if (nTaille)
        std::memcpy(m_pby, p, nTaille);
    m_nTaille = nTaille;
    return true;
}

bool CSimpleBuffer::bAjoute(const void* p, size_t nTaille) {
    if (!nTaille)
        return true;
    if (!p || nTaille > static_cast<size_t>(-1) - m_nTaille)
        return false;
    if (s_bDedans(p, m_pby, m_nTaille)) {
        CSimpleBuffer clCopie;
        return clCopie.bAffecte(p, nTaille) && bAjoute(clCopie.m_pby, nTaille);
    }
    if (!_bReserve(m_nTaille + nTaille))
        return false;
    std::memcpy(m_pby + m_nTaille, p, nTaille);
    m_nTaille += nTaille;
    return true;
}
