// CKLMemoImage: a script image value as the host hands it to a function: either the encoded
// bytes in memory (bit 0 of the state set) or the path of an image file.
#pragma once
#include "KLBIN.h"
#include "XYString.h"

#include <cstdint>

class CKLMemoImage {
public:
    static constexpr uint32_t knEtatEnMemoire = 1;

    uint32_t nGetEtat() const { return m_nEtat; }
    // The bytes of an image in memory; empty for a file.
    const CKLBIN& pclGetBinDataEx() const { return m_clOctets; }
    // The path of an image file; null for none.
    const wchar_t* pszGetChemin() const { return m_sChemin.bVide() ? nullptr : m_sChemin.pszGet(); }

    void SetOctets(const CKLBIN& clOctets) {
        m_clOctets = clOctets;
        m_nEtat |= knEtatEnMemoire;
    }
    void SetChemin(const wchar_t* pszChemin) {
        m_sChemin = pszChemin;
        m_nEtat &= ~knEtatEnMemoire;
    }

private:
    uint32_t m_nEtat = 0;
    CKLBIN m_clOctets;
    CXYString<wchar_t> m_sChemin;
};
