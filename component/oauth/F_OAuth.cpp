// AuthIdentifie: a token from any OAuth 2 provider through the host's login dialogue. The
// script always gets an AuthToken object: on a failure it has no token (Valide false), or the
// provider's refusing answer when there was one.
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"
#include "oauth/AuthTokenDINO.h"
#include "oauth/InterfGGLOAuth2.h"
#include "oauth/OAuth2ParametresDINO.h"

#include "AnyTypes.h"
#include "HTTPService.h"
#include "Ref.h"
#include "VM.h"
#include "XError.h"

#include <cwctype>
#include <string_view>

namespace {

// Whether the text is an http or https address with a host: anything else could not reach a
// provider, and a browser opened on it would never come back.
bool s_bAdresseWeb(std::wstring_view sv) {
    for (std::wstring_view svSchema : {L"https://", L"http://"}) {
        if (sv.size() <= svSchema.size())
            continue;
        bool bEgal = true;
        for (size_t i = 0; i < svSchema.size() && bEgal; ++i)
            bEgal = std::towlower(static_cast<wint_t>(sv[i])) == static_cast<wint_t>(svSchema[i]);
        if (bEgal)
            return sv[svSchema.size()] != L'/' &&
                   !std::iswspace(static_cast<wint_t>(sv[svSchema.size()]));
    }
    return false;
}
// The row of AuthIdentifie in the function table, whose name the dialogue shows.
constexpr int knFonctionAuthIdentifie = 101;
} // namespace

CAuthTokenDINO* CComposanteGGL::AuthIdentifie(IVM* piVM, COAuth2ParametresDINO* pclParametres,
                                              CXError& clErreur) {
    if (!pclParametres) {
        clErreur.SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 1);
        return new CAuthTokenDINO;
    }
    const IOAuth2Parametres& clTextes = pclParametres->clGetParametres();
    const bool bAuth = s_bAdresseWeb(clTextes.vczGetURLAuth().sv());
    if (!bAuth ||
        (!clTextes.vczGetURLToken().bVide() && !s_bAdresseWeb(clTextes.vczGetURLToken().sv()))) {
        clErreur.SetUserError(&gstMyModuleInfo60, KVERR_INVALID_PARAMETER, 1);
        clErreur.AddDebugMessagePrintf(L"##%ls is not an http or https address##",
                                       bAuth ? L"URLToken" : L"URLAuth");
        return new CAuthTokenDINO;
    }
    auto clHTTP = s_piQueryIHTTP(&clErreur);
    if (!clHTTP)
        return new CAuthTokenDINO;
    // The token keeps the texts of this call, whatever the script changes afterwards.
    auto clCopie = CRef<IOAuth2Parametres>::Retain(pclParametres->clGetParametres().vpiClone());
    CInterfGGLOAuth2 clInterface(clCopie.pGet(), piVM, &clErreur, clHTTP.pGet());
    (void)s_bAuthIdentifie(clInterface, piVM, 0, knFonctionAuthIdentifie, clErreur);
    return clInterface.piGetResultat() ? new CAuthTokenDINO(clInterface.piGetResultat())
                                       : new CAuthTokenDINO;
}

// The script function: the library's error carries what went wrong.
void AuthIdentifie(STKLAppel* pstAppel, CComposanteGGL* pclLibrairie,
                   COAuth2ParametresDINO* pclParametres) {
    IVM* piVM = pstAppel ? pstAppel->piVM : nullptr;
    _CXErrorModule60 clErreur;
    auto clToken =
        CRef<CAuthTokenDINO>::Retain(CComposanteGGL::AuthIdentifie(piVM, pclParametres, clErreur));
    if (pclLibrairie && !clErreur.bEstPropre())
        pclLibrairie->RaiseErrorCopy(&clErreur);
    IObjetBase* piObjet = clToken->piGetObjetBase();
    if (piVM)
        piVM->bRetourneValeurAppel(pstAppel->nAppel, &piObjet, KVTYPE_KLDINO);
}

#define KLL_LIBRE_AuthIdentifie KLL_OUI
#include "frame/KllMethodStubs.h"
