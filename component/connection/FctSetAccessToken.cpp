#include "connection/FctSetAccessToken.h"

void FctSetAccessToken::operator()(eSERVICESGOOGLE eService) const {
    if (!m_ptabToken || eService < 0)
        return;
    const auto nIndice = static_cast<size_t>(eService);
    while (m_ptabToken->nGetNbElement() <= nIndice)
        m_ptabToken->Ajoute(COAuthToken());
    (*m_ptabToken)[nIndice].m_sAccessToken = m_sAccessToken;
}
