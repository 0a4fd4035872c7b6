// The POST of a form to a token endpoint, and its answer: the one exchange that every OAuth
// road makes (a code or a refresh token for tokens). The values go as the caller wrote them.
#pragma once
#include "KLBIN.h"

#include <string_view>

class CXError;
class IHTTP;

struct STReponseFormulaire {
    int nStatut = 0;
    CKLBIN clCorps; // the body's bytes; empty when it was not binary
};

// False with the host's error copied into pclErreur when the request could not be sent or its
// answer not read; any status is an answer.
bool bPosteFormulaire(IHTTP* piHTTP, const wchar_t* pszURL, std::wstring_view svCorps,
                      STReponseFormulaire& stReponse, CXError* pclErreur);
