#include "connection/DinoGglBase.h"

#include "connection/ConnexionOAuthBase.h"
#include "connection/HTTPResponse.h"
#include "frame/ModuleInfo.h"

#include "Any.h"
#include "XError.h"

void CCDinoGglBase::_FormateErreurHTTP(const CHTTPResponse& clReponse, CXError* pclErreur) {
    if (!pclErreur || !pclErreur->bEstPropre()) return;
    if (clReponse.eGetCodeRetour() == HTTPConflict)
        pclErreur->SetUserError(&gstMyModuleInfo60, 600031);
    else
        clReponse.SetErreurStatut(pclErreur);
}

bool CCDinoGglBase::s_bEstTexte(const CAny& clValeur) {
    return clValeur.nGetType() == 16; // a string, not an array of them
}

void CCDinoGglBase::s_CopieTexte(CAny& clValeur, CXYString<wchar_t>& sChamp) {
    if (s_bEstTexte(clValeur)) (void)clValeur.__nFillString(sChamp);
}
