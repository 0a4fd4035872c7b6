// COAuthToken: the token pair a connection keeps for one service.
#pragma once
#include "XYString.h"

class COAuthToken {
public:
    void Vide() {
        m_sAccessToken.Vide();
        m_sRefreshToken.Vide();
    }

    CXYString<wchar_t> m_sAccessToken;
    CXYString<wchar_t> m_sRefreshToken;
};
