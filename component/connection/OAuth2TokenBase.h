// STOAuth2TokenBase: what an OAuth 2 token endpoint answered, field by field. The texts are
// those of the answer as they came; the expiry is in seconds as the server sent it.
#pragma once
#include "XYString.h"

#include <cstdint>

struct STOAuth2TokenBase {
    CXYString<wchar_t> m_sError; // "error", or "message" when it came later
    CXYString<wchar_t> m_sAccessToken;
    CXYString<wchar_t> m_sRefreshToken;
    int32_t m_nExpires = 0;
    CXYString<wchar_t> m_sIdToken;
    CXYString<wchar_t> m_sTokenType;
};
