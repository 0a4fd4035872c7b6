// CVisitDeserialiseRefreshToken: reads the text of RefreshTokens back into a connection's token
// array: each top-level member named after a service gives that service its refresh token.
#pragma once
#include "connection/OAuthToken.h"
#include "connection/VisiteurJSONSetPropriete.h"

#include "Arrays.h"

class CVisitDeserialiseRefreshToken final : public CVisiteurJSONSetPropriete {
public:
    explicit CVisitDeserialiseRefreshToken(CXArray<COAuthToken>* ptabToken)
        : m_ptabToken(ptabToken) {}

protected:
    // A path equal to a service key (not "none") sets that service's refresh token: the text of
    // a string value, empty for any other value. The access token is left as it is.
    void _vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) override;

private:
    CXArray<COAuthToken>* m_ptabToken;
};
