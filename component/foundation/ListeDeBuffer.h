// CListeDeBuffer: an ordered list of owned byte chunks. A large body is kept as the chunks it
// was given in, and copied once when it is finally assembled.
#pragma once
#include "SimpleBuffer.h"

#include "Arrays.h"

#include <cstddef>

class CListeDeBuffer {
public:
    CListeDeBuffer() = default;
    CListeDeBuffer(const CListeDeBuffer&) = delete;
    CListeDeBuffer& operator=(const CListeDeBuffer&) = delete;
    ~CListeDeBuffer() { Vide(); }

    // Takes over the chunk, also when the list cannot grow (it is then deleted): false.
    bool bAjoute(CSimpleBuffer* pclBuffer);
    size_t nGetNbElement() const { return m_tab.nGetNbElement(); }
    // Chunk i, borrowed; null out of range.
    const CSimpleBuffer* pclGet(size_t i) const {
        return i < m_tab.nGetNbElement() ? m_tab[i] : nullptr;
    }
    // The sum of the chunk sizes.
    size_t nGetTailleTotale() const;
    void Vide();

private:
    CTTableau<CSimpleBuffer*> m_tab;
};
