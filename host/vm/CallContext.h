// CCallContext: the context the host gives every object stub (CCtxInfo), with the VM of the
// call and the place where the stub's result lands (IVM::bRetourneValeur). The VM recognises
// its own contexts by their mark, and ignores any other.
#pragma once
#include "HostValue.h"
#include "VM.h"

#include <cstdint>

class CCallContext : public CCtxInfo {
public:
    explicit CCallContext(IVM* piVM);
    CCallContext(const CCallContext&) = delete;
    CCallContext& operator=(const CCallContext&) = delete;

    bool bOurs() const { return m_pReserve1 == &ms_nMark; }

    CHostValue m_clResult;
    bool m_bReturned = false;   // the stub handed a value
    int m_nReturnType = 0;      // its type code
    bool m_bUnreadable = false; // of a type the host does not carry, or not taken (below)
    bool m_bNoMemory = false;   // the host had no memory to take the value

private:
    static const int ms_nMark;
};
