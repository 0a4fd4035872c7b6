// CSimpleBuffer: one owned block of bytes that grows on demand. Writers answer false when
// memory runs out and leave the buffer as it was, so that no allocation failure throws.
#pragma once
#include <cstddef>
#include <string_view>

class CSimpleBuffer {
public:
    CSimpleBuffer() = default;
    // Deep copies; a copy that cannot get its memory is empty.
    CSimpleBuffer(const CSimpleBuffer& o);
    CSimpleBuffer& operator=(const CSimpleBuffer& o);
    CSimpleBuffer(CSimpleBuffer&& o) noexcept;
    CSimpleBuffer& operator=(CSimpleBuffer&& o) noexcept;
    ~CSimpleBuffer();

    // Sets the size in bytes, keeping the bytes that fit; bytes added are zero.
    bool bSetTaille(size_t nTaille);
    bool bAffecte(const void* p, size_t nTaille);
    bool bAjoute(const void* p, size_t nTaille);
    // Size 0; the memory is kept for the next fill.
    void Vide() { m_nTaille = 0; }

    unsigned char* pGetDonnees() { return m_pby; }
    const unsigned char* pGetDonnees() const { return m_pby; }
    size_t nGetTaille() const { return m_nTaille; }
    std::string_view sv() const {
        return {reinterpret_cast<const char*>(m_pby), m_pby ? m_nTaille : 0};
    }

private:
    bool _bReserve(size_t nCapacite);

    unsigned char* m_pby = nullptr;
    size_t m_nTaille = 0;
    size_t m_nCapacite = 0;
};
