#include "CallContext.h"

const int CCallContext::ms_nMark = 0x4B56;

CCallContext::CCallContext(IVM* piVM) {
    m_pReserve1 = const_cast<int*>(&ms_nMark);
    m_pReserve2 = nullptr;
    m_piVM = piVM;
}
