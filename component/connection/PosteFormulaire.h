// One exchange and its answer, status and body, as the token roads make them: the POST of a
// form to a token endpoint (a code or a refresh token for tokens), or any prepared request.
#pragma once
#include "KLBIN.h"

#include <string_view>

class CParametresHTTPRequete;
class CXError;
class IHTTP;

struct STReponseFormulaire {
    int nStatut = 0;
    CKLBIN clCorps; // the body's bytes; empty when it was not binary
};

// Sends the request, not tied to the script's VM. False with the host's error copied into
// pclErreur when it could not be sent or its answer not read; any status is an answer.
bool bEchangeHTTP(IHTTP* piHTTP, CParametresHTTPRequete& clParametres,
                  STReponseFormulaire& stReponse, CXError* pclErreur);
// The form, its values as the caller wrote them, POSTed to pszURL through bEchangeHTTP.
bool bPosteFormulaire(IHTTP* piHTTP, const wchar_t* pszURL, std::wstring_view svCorps,
                      STReponseFormulaire& stReponse, CXError* pclErreur);
