// CKLMemoImage: a script image as it crosses the boundary (type code 30): either its bytes in
// memory (bit 0 of the state word) or the path of the file that holds it. A value of type 30
// is handed over as the address of one of these, valid for the length of the call; the
// receiver copies what it keeps.
#pragma once
#include "KLBIN.h"
#include "XYString.h"

#include <cstdint>
#include <string_view>

class CKLMemoImage {
public:
    static constexpr uint32_t knEnMemoire = 1;

    CKLMemoImage() = default;
    static CKLMemoImage s_Octets(CKLBIN clOctets) {
        CKLMemoImage cl;
        cl.m_dwEtat = knEnMemoire;
        cl.m_clOctets = std::move(clOctets);
        return cl;
    }
    static CKLMemoImage s_Fichier(std::wstring_view svChemin) {
        CKLMemoImage cl;
        cl.m_sChemin = CXYString<wchar_t>(svChemin);
        return cl;
    }

    bool bEnMemoire() const { return (m_dwEtat & knEnMemoire) != 0; }
    // The bytes of an image in memory; an empty block for an image held in a file.
    const CKLBIN* pclGetBinDataEx() const { return &m_clOctets; }
    // The file of an image that is not in memory; "" when it names none.
    const wchar_t* pszGetChemin() const { return m_sChemin.pszGet(); }

private:
    uint32_t m_dwEtat = 0;
    CKLBIN m_clOctets;
    CXYString<wchar_t> m_sChemin;
};
