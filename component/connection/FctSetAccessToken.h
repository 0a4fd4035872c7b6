// FctSetAccessToken: stores one access token for each service it is called with, in the
// token array of a Google connection, growing the array when it is short. The refresh tokens
// stay as they are.
#pragma once
#include "connection/OAuthToken.h"
#include "connection/ServicesGoogle.h"

#include "Arrays.h"
#include "XYString.h"

class FctSetAccessToken {
public:
    FctSetAccessToken(CXArray<COAuthToken>* ptabToken, const CXYString<wchar_t>& sAccessToken)
        : m_ptabToken(ptabToken), m_sAccessToken(sAccessToken) {}

    void operator()(eSERVICESGOOGLE eService) const;

private:
    CXArray<COAuthToken>* m_ptabToken;
    CXYString<wchar_t> m_sAccessToken;
};
