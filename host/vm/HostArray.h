// CHostArray: the host's script array (IKLTableau), made by IVM::pclAlloueTableau or by the
// host itself for an array argument. Its elements are CAny values of one element type:
// texts (16), objects (111, of the class given to vbInitialise when one is given), or any
// other code the values convert to. Counted; the creator holds the first reference.
#pragma once
#include "Any.h"
#include "Counted.h"
#include "ObjectInterfaces.h"

#include <atomic>
#include <cstdint>
#include <vector>

class CHostArray final : public CCounted<IKLTableau> {
public:
    // A new array with one reference, the caller's.
    static CHostArray* s_pclNew(uint16_t nElementType);

    int vbInitialise(ITypeDescription* piTypeElement, int nReserve1, int nReserve2, IVM* piVM,
                     CXError* pclErreur) override;
    int vnGetNbElement() override;
    int vbRedimensionne(int nNbElement, CXError* pclErreur) override;
    int vbGetElement(int nIndice, CAny& clValeur, CXError* pclErreur) override;
    int vbSetElement(int nIndice, const CAny& clValeur, CXError* pclErreur) override;
    int vbCopie(IKLTableau* piSource, CXError* pclErreur) override;

    uint16_t nElementType() const { return m_nElementType; }
    ITypeDescription* piElementClass() const { return m_piElementClass; }
    // Appends, converting as vbSetElement does.
    bool bAppend(const CAny& clValeur, CXError* pclErreur);

    // Arrays alive in the process, for the tests of counting.
    static int s_nLive() { return ms_nLive.load(); }

private:
    explicit CHostArray(uint16_t nElementType);
    ~CHostArray() override;
    // The value converted to the element type; false with the cause in the error.
    bool _bConvert(const CAny& clValeur, CAny& clOut, CXError* pclErreur) const;
    bool _bIndex(int nIndice, CXError* pclErreur) const;

    uint16_t m_nElementType;
    ITypeDescription* m_piElementClass = nullptr;
    std::vector<CAny> m_tabElements;
    static std::atomic<int> ms_nLive;
};
