#include "connection/GoogleConnexion.h"

#include "connection/FctSetAccessToken.h"
#include "connection/GoogleEndpoints.h"
#include "connection/InterfGGLCnx.h"
#include "connection/VisitDeserialiseRefreshToken.h"
#include "connection/VisitJSONRefreshToken.h"
#include "foundation/KLANYArray.h"
#include "foundation/SimpleBuffer.h"
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"
#include "connection/OAuth2TokenBase.h"

#include "Any.h"
#include "HTTPService.h"
#include "JSONService.h"
#include "KVResult.h"
#include "Ref.h"
#include "Resources.h"
#include "Utf8.h"
#include "VM.h"
#include "XError.h"
#include "XMLService.h"

#include <algorithm>
#include <string>
#include <string_view>

ITypeDescription* CGoogleConnexion::ms_piType = nullptr;

const STIdServiceGoogle CGoogleConnexion::s_stTabIdServices[SERVICEGOOGLE_NB] = {
    {SERVICEGOOGLE_AUCUN, L"none"},
    {SERVICEGOOGLE_AGENDA, L"calendar"},
    {SERVICEGOOGLE_CONTACT, L"contact"},
    {SERVICEGOOGLE_DOCUMENTS, L"documentlist"},
    {SERVICEGOOGLE_STATICMAPS, L"staticmaps"},
    {SERVICEGOOGLE_PICASA, L"picasa"},
};

namespace {

// The script bits in the order logins and token stores walk them.
constexpr int gtabOrdreBits[] = {1, 2, 8, 4, 16};

// The scope each service asks at login, by eSERVICESGOOGLE value; static maps need none.
std::wstring s_sScope(eSERVICESGOOGLE eService) {
    switch (eService) {
    case SERVICEGOOGLE_AGENDA:
        return std::wstring(gszGoogleAPI) + L"/auth/calendar";
    case SERVICEGOOGLE_CONTACT:
        return std::wstring(gszGoogleFeeds) + L"/m8/feeds/";
    case SERVICEGOOGLE_DOCUMENTS:
        // Three URIs, one scope literal.
        return std::wstring(gszGoogleDocumentsFeeds) + L"/feeds/%20" + gszGoogleDocumentsContenu +
               L"/%20" + gszGoogleSpreadsheetsFeeds + L"/feeds/";
    case SERVICEGOOGLE_PICASA:
        return std::wstring(gszGooglePicasa) + L"/data/";
    default:
        return {};
    }
}

CKLANYArray s_tabUnService(int nService) {
    CKLANYArray tab(1, 1);
    CAny clValeur;
    clValeur.SetInt(nService);
    tab.bAjoute(clValeur);
    return tab;
}

} // namespace

CGoogleConnexion::CGoogleConnexion() {
    for (int i = 0; i < SERVICEGOOGLE_NB; ++i)
        m_tabToken.Ajoute(COAuthToken());
}

CGoogleConnexion* CGoogleConnexion::s_pclCreeObjet(CCtxInfo*, CXError*) {
    return new CGoogleConnexion;
}

void CGoogleConnexion::CopieObjet(CCtxInfo*, CXError*, CGoogleConnexion* pclSource) {
    if (!pclSource || pclSource == this)
        return;
    const size_t nNb = std::min(m_tabToken.nGetNbElement(), pclSource->m_tabToken.nGetNbElement());
    for (size_t i = 0; i < nNb; ++i)
        m_tabToken[i] = pclSource->m_tabToken[i];
    vCopieOAuthData(*pclSource);
}

void CGoogleConnexion::RAZObjet(CCtxInfo*, CXError*) {
    __RAZToken();
    vRAZOAuthData();
}

void CGoogleConnexion::__RAZToken() {
    for (COAuthToken& st : m_tabToken)
        st.Vide();
}

void CGoogleConnexion::__VideToken(eSERVICESGOOGLE eService) {
    const auto nIndice = static_cast<size_t>(eService);
    if (eService > SERVICEGOOGLE_AUCUN && nIndice < m_tabToken.nGetNbElement())
        m_tabToken[nIndice].Vide();
}

// ---- properties --------------------------------------------------------------------------

CXYString<wchar_t> CGoogleConnexion::GetRefreshTokens(CCtxInfo*, CXError*) const {
    std::wstring s = L"{";
    const size_t nNb = std::min<size_t>(m_tabToken.nGetNbElement(), SERVICEGOOGLE_NB);
    for (size_t i = 0; i < nNb; ++i) {
        if (i > 0)
            s += L',';
        s += L'"';
        s += s_stTabIdServices[i].pszCle;
        s += L"\":\"";
        s += m_tabToken[i].m_sRefreshToken.sv();
        s += L'"';
    }
    s += L'}';
    return CXYString<wchar_t>(std::wstring_view(s));
}

void CGoogleConnexion::ForceRefreshTokens(CCtxInfo*, CXError* pclErreur,
                                          const CXYString<wchar_t>& sJSON) {
    if (sJSON.bVide())
        return;
    _CXErrorModule60 clErreurLocale;
    CXError* pcl = pclErreur ? pclErreur : &clErreurLocale;
    const std::string sUtf8 = KVUtf8::VersUtf8(sJSON.sv());
    auto clRacine = CComposanteGGL::s_piGetJSON(sUtf8.c_str(), pcl);
    if (!clRacine) {
        // No JSON service says nothing by itself: the text must not vanish without a word.
        if (pcl->bEstPropre())
            pcl->SetUserError(&gstMyModuleInfo60, KVERR_INVALID_PARAMETER, 1);
        return;
    }
    CVisitDeserialiseRefreshToken clVisiteur(&m_tabToken);
    clRacine->vAccepte(clVisiteur);
}

// ---- services and bits -------------------------------------------------------------------

int CGoogleConnexion::__nGetServiceKL(eSERVICESGOOGLE eService) {
    switch (eService) {
    case SERVICEGOOGLE_AGENDA:
        return 1;
    case SERVICEGOOGLE_CONTACT:
        return 2;
    case SERVICEGOOGLE_DOCUMENTS:
        return 8;
    case SERVICEGOOGLE_STATICMAPS:
        return 4;
    case SERVICEGOOGLE_PICASA:
        return 16;
    default:
        return 0;
    }
}

eSERVICESGOOGLE CGoogleConnexion::__eGetServiceFromKL(int nBit) {
    switch (nBit) {
    case 1:
        return SERVICEGOOGLE_AGENDA;
    case 2:
        return SERVICEGOOGLE_CONTACT;
    case 4:
        return SERVICEGOOGLE_STATICMAPS;
    case 8:
        return SERVICEGOOGLE_DOCUMENTS;
    case 16:
        return SERVICEGOOGLE_PICASA;
    default:
        return SERVICEGOOGLE_AUCUN; // a combination names no one service
    }
}

CXYString<wchar_t> CGoogleConnexion::czGetScopes(int nBits) const {
    std::wstring s;
    for (int nBit : {1, 2, 8, 16}) {
        if (!(nBits & nBit))
            continue;
        if (!s.empty())
            s += L"%20";
        s += s_sScope(__eGetServiceFromKL(nBit));
    }
    return CXYString<wchar_t>(std::wstring_view(s));
}

// ---- login -------------------------------------------------------------------------------

int CGoogleConnexion::vbLogin(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) {
    if (tabParametres.nGetNbElement() != 1)
        return 0;
    int nService = 0;
    (void)tabParametres.pclAccesElement(0)->nGetINT(&nService);
    const int nBits = nService >= 1 && nService <= 5
                          ? __nGetServiceKL(static_cast<eSERVICESGOOGLE>(nService))
                          : 0;
    return bLoginMultiple(nBits, piVM, pclErreur);
}

int CGoogleConnexion::vbLogout(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) {
    if (tabParametres.nGetNbElement() != 1)
        return 0;
    int nService = 0;
    (void)tabParametres.pclAccesElement(0)->nGetINT(&nService);
    const int nBits = nService >= 1 && nService <= 5
                          ? __nGetServiceKL(static_cast<eSERVICESGOOGLE>(nService))
                          : 0;
    return bLogoutMultiple(nBits, piVM, pclErreur);
}

int CGoogleConnexion::vbGetAccessToken(CHTTPRequete& clRequete, CXYString<wchar_t>& sToken) {
    const auto nIndice = static_cast<size_t>(clRequete.eGetService());
    if (clRequete.eGetService() >= 0 && nIndice < m_tabToken.nGetNbElement())
        sToken = m_tabToken[nIndice].m_sAccessToken;
    else
        sToken.Vide();
    return 1;
}

bool CGoogleConnexion::bLoginMultiple(int nBits, IVM* piVM, CXError* pclErreur) {
    if (!piVM)
        return false;
    _CXErrorModule60 clErreurLocale;
    CXError& clErreur = pclErreur ? *pclErreur : clErreurLocale;

    // Silent only when every service asked holds the one same refresh token.
    bool bPremier = true;
    bool bUnique = false;
    CXYString<wchar_t> sRefresh;
    for (int nBit : gtabOrdreBits) {
        if (!(nBits & nBit))
            continue;
        const auto nIndice = static_cast<size_t>(__eGetServiceFromKL(nBit));
        const CXYString<wchar_t> s = nIndice < m_tabToken.nGetNbElement()
                                         ? m_tabToken[nIndice].m_sRefreshToken
                                         : CXYString<wchar_t>();
        if (bPremier) {
            sRefresh = s;
            bUnique = !s.bVide();
            bPremier = false;
        } else if (s.sv() != sRefresh.sv()) {
            bUnique = false;
        }
    }
    if (bUnique && __bRequestAccessFromRefreshToken(nBits, sRefresh, piVM))
        return true;

    bLogoutMultiple(nBits, piVM, pclErreur);
    CInterfGGLCnx clInterface(&clErreur, this, nBits);
    return CComposanteGGL::s_bAuthIdentifie(clInterface, piVM, 1, 1, clErreur);
}

bool CGoogleConnexion::__bRequestAccessFromRefreshToken(int nBits,
                                                        const CXYString<wchar_t>& sRefreshToken,
                                                        IVM* piVM) {
    // Nothing of this attempt reaches the caller: a refused token means a dialogue, not an
    // error.
    _CXErrorModule60 clErreur;
    IHTTP* piHTTP = piGetCOM(&clErreur);
    if (!piHTTP)
        return false;

    CParametresHTTPRequete clParametres;
    clParametres.m_sURL =
        CXYString<wchar_t>(std::wstring_view(std::wstring(gszGoogleAccounts) + L"/o/oauth2/token"));
    clParametres.m_sTypeContenu =
        CXYString<wchar_t>(CHTTPRequete::s_pszGetMIMEType(HTTPCT_FORMULAIRE));
    clParametres.m_nMethode = METHODE_HTTP_POST;
    std::wstring sCorps = L"refresh_token=";
    sCorps += sRefreshToken.sv();
    sCorps += L"&client_id=";
    sCorps += pszGetClientID();
    sCorps += L"&client_secret=";
    sCorps += pszGetClientSecret();
    sCorps += L"&grant_type=refresh_token";
    const std::string sUtf8 = KVUtf8::VersUtf8(sCorps);
    if (!KV_bSucces(clParametres.m_clCorps.nAssign(sUtf8.data(), sUtf8.size())))
        return false;

    // The token endpoint gets no bearer, and the exchange is not tied to the script's VM.
    if (!piHTTP->vbExecute(clParametres, 0))
        return false;
    CHTTPResponse clReponse = _clGetHTTPResponse(piVM, &clErreur);
    if (clReponse.eGetCodeRetour() != HTTPOK)
        return false;
    auto clRacine = s_piParseJSONResponse(clReponse, &clErreur, HTTPOK);
    if (!clRacine)
        return false;
    CVisitJSONRefreshToken clVisiteur;
    clRacine->vAccepte(clVisiteur);
    if (clVisiteur.sGetAccessToken().bVide())
        return false;

    // The refresh tokens stay as they were; the server's expiry is not kept.
    const FctSetAccessToken fctSet(&m_tabToken, clVisiteur.sGetAccessToken());
    for (int nBit : gtabOrdreBits)
        if (nBits & nBit)
            fctSet(__eGetServiceFromKL(nBit));
    return true;
}

void CGoogleConnexion::SetTokensConnexion(const STOAuth2TokenBase& stToken, int nBits) {
    for (int nBit : gtabOrdreBits) {
        if (!(nBits & nBit))
            continue;
        const auto nIndice = static_cast<size_t>(__eGetServiceFromKL(nBit));
        while (m_tabToken.nGetNbElement() <= nIndice)
            m_tabToken.Ajoute(COAuthToken());
        m_tabToken[nIndice].m_sAccessToken = stToken.m_sAccessToken;
        m_tabToken[nIndice].m_sRefreshToken = stToken.m_sRefreshToken;
    }
}

bool CGoogleConnexion::bLogoutMultiple(int nBits, IVM*, CXError*) {
    // Bit 4 is left out on purpose: a login of other services keeps the static maps entry.
    for (int nBit : {1, 2, 8, 16})
        if (nBits & nBit)
            __VideToken(__eGetServiceFromKL(nBit));
    return true;
}

bool CGoogleConnexion::__bCheckAndLogService(eSERVICESGOOGLE eService, IVM* piVM,
                                             CXError* pclErreur) {
    // A token is used whatever its age: an expired one fails at the server, and the script
    // logs in again.
    const auto nIndice = static_cast<size_t>(eService);
    if (eService >= 0 && nIndice < m_tabToken.nGetNbElement() &&
        !m_tabToken[nIndice].m_sAccessToken.bVide())
        return true;
    const bool bResultat = vbLogin(piVM, s_tabUnService(eService), pclErreur) != 0;
    if (!bResultat && pclErreur && pclErreur->bEstPropre())
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_LOGIN_FAILED, pszGetLastError());
    return bResultat;
}

// ---- answers -----------------------------------------------------------------------------

CRef<IDocumentXML> CGoogleConnexion::s_piParseXMLResponse(CHTTPResponse& clReponse,
                                                          CXError* pclErreur, eHTTPCODE eAttendu) {
    _CXErrorModule60 clErreurLocale;
    CXError* pcl = pclErreur ? pclErreur : &clErreurLocale;
    if (clReponse.eGetCodeRetour() != eAttendu) {
        clReponse.SetErreurStatut(pcl);
        return {};
    }
    CXYString<wchar_t> sTexte;
    (void)clReponse.bGetMessage(sTexte);
    _CXErrorModule60 clCause;
    CRef<IDocumentXML> clDocument = CComposanteGGL::s_piGetXMLDoc(sTexte.pszGet(), clCause);
    if (!clDocument) {
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_UNREADABLE_ANSWER);
        // The parser's reason (where, and what it expected) goes along: as the cause, and in
        // the debug text that a report shows.
        if (!clCause.bEstPropre()) {
            pcl->AddSubError(&clCause);
            const wchar_t* pszRaison = *clCause.pszGetUserMessage() ? clCause.pszGetUserMessage()
                                                                    : clCause.pszGetDebugMessage();
            if (*pszRaison)
                pcl->AddDebugMessagePrintf(L"##%ls##", pszRaison);
        }
    }
    return clDocument;
}

CRef<IElementJSON> CGoogleConnexion::s_piParseJSONResponse(CHTTPResponse& clReponse,
                                                           CXError* pclErreur, eHTTPCODE eAttendu) {
    _CXErrorModule60 clErreurLocale;
    CXError* pcl = pclErreur ? pclErreur : &clErreurLocale;
    if (clReponse.eGetCodeRetour() != eAttendu) {
        clReponse.SetErreurStatut(pcl);
        return {};
    }
    CXYString<char> sTexte;
    (void)clReponse.bGetMessage(sTexte);
    CRef<IElementJSON> clRacine = CComposanteGGL::s_piGetJSON(sTexte.pszGet(), pcl);
    // The parser's own cause, when it gave one, is the more precise.
    if (!clRacine && pcl->bEstPropre())
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_UNREADABLE_ANSWER);
    return clRacine;
}

CXYString<wchar_t> CGoogleConnexion::s_czEscapeJSON(const CXYString<wchar_t>& sTexte) {
    // Whole-text passes in this order; the backslash first, so that the escapes the later
    // passes write are not doubled. Other control characters pass as they are.
    static constexpr std::pair<wchar_t, const wchar_t*> tabPasse[] = {
        {L'\\', L"\\\\"}, {L'\r', L"\\r"},       {L'\n', L"\\n"},       {L'\t', L"\\t"},
        {L'"', L"\\\""},  {L'\x04', L"\\u0004"}, {L'\x1B', L"\\u001B"}, {L'\xA0', L"\\u00A0"},
    };
    std::wstring s(sTexte.sv());
    for (const auto& [c, pszRemplacement] : tabPasse) {
        if (s.find(c) == std::wstring::npos)
            continue;
        std::wstring sPasse;
        sPasse.reserve(s.size() + 8);
        for (wchar_t x : s) {
            if (x == c)
                sPasse += pszRemplacement;
            else
                sPasse += x;
        }
        s = std::move(sPasse);
    }
    return CXYString<wchar_t>(std::wstring_view(s));
}

// ---- script functions --------------------------------------------------------------------

bool CGoogleConnexion::GglConnecte(CCtxInfo* pclCtx, CXError* pclErreur) {
    _CXErrorModule60 clErreurLocale;
    CXError* pcl = pclErreur ? pclErreur : &clErreurLocale;
    // The calendar alone, as the first scripts knew it.
    if (!vbLogin(CCtxInfo::s_piGetVM(pclCtx), s_tabUnService(SERVICEGOOGLE_AGENDA), pcl) &&
        pcl->bEstPropre())
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_LOGIN_FAILED, pszGetLastError());
    return pcl->bEstPropre();
}

bool CGoogleConnexion::GglConnecte(CCtxInfo* pclCtx, CXError* pclErreur, int nBits) {
    _CXErrorModule60 clErreurLocale;
    CXError* pcl = pclErreur ? pclErreur : &clErreurLocale;
    if (!bLoginMultiple(nBits, CCtxInfo::s_piGetVM(pclCtx), pcl) && pcl->bEstPropre())
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_LOGIN_FAILED, pszGetLastError());
    return pcl->bEstPropre();
}

void CGoogleConnexion::GglDeconnecte(CCtxInfo*, CXError*) {
    __RAZToken();
}

void CGoogleConnexion::GglDeconnecte(CCtxInfo*, CXError*, int nBits) {
    // The script's logout names static maps too.
    for (int nBit : gtabOrdreBits)
        if (nBits & nBit)
            __VideToken(__eGetServiceFromKL(nBit));
}

CXYString<char> CGoogleConnexion::GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                                             const wchar_t* pszURL, int nMethode) {
    return __GglRequete(pclCtx, pclErreur, nBit, pszURL, false, nullptr, nMethode);
}

CXYString<char> CGoogleConnexion::GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                                             const wchar_t* pszURL, const wchar_t* pszCorps,
                                             int nMethode) {
    return __GglRequete(pclCtx, pclErreur, nBit, pszURL, true, pszCorps, nMethode);
}

CXYString<char> CGoogleConnexion::__GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                                               const wchar_t* pszURL, bool bAvecCorps,
                                               const wchar_t* pszCorps, int nMethode) {
    _CXErrorModule60 clErreurLocale;
    CXError* pcl = pclErreur ? pclErreur : &clErreurLocale;
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);

    const eSERVICESGOOGLE eService = __eGetServiceFromKL(nBit);
    if (eService == SERVICEGOOGLE_AUCUN) {
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_INVALID_SERVICE, 2, nBit);
        return {};
    }
    if (!__bCheckAndLogService(eService, piVM, pcl))
        return {};

    // Calendar and Drive speak JSON; the feeds speak Atom.
    const bool bJSON = eService == SERVICEGOOGLE_AGENDA || eService == SERVICEGOOGLE_DOCUMENTS;
    CHTTPRequete clRequete(eService, pszURL ? pszURL : L"", bJSON ? HTTPCT_JSON : HTTPCT_ATOM);
    // The forms with a body always carry one, empty when the script gave none.
    if (bAvecCorps) {
        std::string sUtf8 = KVUtf8::VersUtf8(pszCorps ? pszCorps : L"");
        clRequete.AjouteDonnees(reinterpret_cast<unsigned char*>(sUtf8.data()),
                                static_cast<unsigned long>(sUtf8.size()));
    }

    HTTPMethod eMethode;
    switch (nMethode) {
    case 1:
        eMethode = HTTPGET;
        break;
    case 2:
        eMethode = HTTPPOST;
        break;
    case 4:
        eMethode = HTTPPUT;
        break;
    case 8:
        eMethode = HTTPDELETE;
        break;
    default:
        return {};
    }

    CSimpleBuffer clSortie;
    if (!vbRequete(piVM, clRequete, eMethode, &clSortie, pcl) || clSortie.nGetTaille() == 0)
        return {};
    CXYString<char> sResultat;
    if (!KV_bSucces(sResultat.nAffecte(reinterpret_cast<const char*>(clSortie.pGetDonnees()),
                                       clSortie.nGetTaille())))
        pcl->SetErrorNoMemory();
    return sResultat;
}

// The stubs that the rows of the class point at. The script functions have theirs in
// GoogleConnexionStubs.cpp.
#include "frame/KllStubs.h"
#include "connection/GoogleConnexion.def"
