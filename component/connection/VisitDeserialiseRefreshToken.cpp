#include "connection/VisitDeserialiseRefreshToken.h"

#include "connection/GoogleConnexion.h"

#include "Any.h"

void CVisitDeserialiseRefreshToken::_vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) {
    for (const STIdServiceGoogle& st : CGoogleConnexion::s_stTabIdServices) {
        if (svChemin != st.pszCle) continue;
        if (st.eService == SERVICEGOOGLE_AUCUN || !m_ptabToken) return;
        const auto nIndice = static_cast<size_t>(st.eService);
        while (m_ptabToken->nGetNbElement() <= nIndice) m_ptabToken->Ajoute(COAuthToken());
        CXYString<wchar_t> sToken;
        if (clValeur.nGetType() == KVTYPE_KLDSTRW)
            clValeur.__nFillString(sToken);
        (*m_ptabToken)[nIndice].m_sRefreshToken = std::move(sToken);
        return;
    }
}
