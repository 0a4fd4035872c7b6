#include "oauth/InterfGGLOAuth2.h"

#include "connection/HTTPResponse.h"
#include "connection/InterfGGLCnx.h"
#include "connection/PosteFormulaire.h"
#include "foundation/LooseCompare.h"
#include "frame/ComposanteGGL.h"
#include "frame/FctEntonnoir.h"
#include "frame/IdGenerator.h"
#include "frame/InformationDLL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"

#include "Utf8.h"
#include "XError.h"

#include <cwctype>
#include <string>

namespace {

// The one provider that wants the client secret in the authorisation address as well.
constexpr wchar_t gszPayPalTokenService[] =
    L"https://api.paypal.com/webapps/auth/protocol/openidconnect/v1/tokenservice";

bool s_bEgalSansCasse(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::towlower(static_cast<wint_t>(a[i])) != std::towlower(static_cast<wint_t>(b[i])))
            return false;
    return true;
}

std::wstring_view s_svSansBlancs(std::wstring_view sv) {
    while (!sv.empty() && std::iswspace(static_cast<wint_t>(sv.front())))
        sv.remove_prefix(1);
    while (!sv.empty() && std::iswspace(static_cast<wint_t>(sv.back())))
        sv.remove_suffix(1);
    return sv;
}

bool s_bCommencePar(std::wstring_view sv, std::wstring_view svDebut) {
    if (sv.size() < svDebut.size())
        return false;
    for (size_t i = 0; i < svDebut.size(); ++i)
        if (STR_nCompareCharSouple(sv[i], svDebut[i]) != 0)
            return false;
    return true;
}

// What a query keeps of a text it must carry whole: the host's encoding, then the three
// characters that encoding leaves and a query would split on.
std::wstring s_sEncodeValeur(IVM* piVM, const CXYString<wchar_t>& sTexte) {
    CXYString<wchar_t> sEncode;
    _CXErrorModule60 clErreur;
    std::wstring s(FctEntonnoir::bUrlEncode(piVM, &clErreur, sTexte, &sEncode) ? sEncode.sv()
                                                                               : sTexte.sv());
    std::wstring sSortie;
    for (wchar_t c : s) {
        if (c == L'&')
            sSortie += L"%26";
        else if (c == L'#')
            sSortie += L"%23";
        else if (c == L'@')
            sSortie += L"%40";
        else
            sSortie += c;
    }
    return sSortie;
}

int s_nHex(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

// The provider's error_description in the return, decoded, or empty.
std::wstring s_sDescriptionErreur(std::wstring_view svReponse) {
    svReponse = svReponse.substr(0, svReponse.find(L"\r\n"));
    constexpr std::wstring_view ksCle = L"error_description=";
    size_t n = svReponse.find(ksCle);
    if (n == std::wstring_view::npos ||
        (n > 0 && std::wstring_view(L"?#&").find(svReponse[n - 1]) == std::wstring_view::npos))
        return {};
    std::wstring_view sv = svReponse.substr(n + ksCle.size());
    sv = sv.substr(0, sv.find_first_of(L"& "));
    std::string sOctets;
    for (size_t i = 0; i < sv.size(); ++i) {
        if (sv[i] == L'%' && i + 2 < sv.size() && s_nHex(sv[i + 1]) >= 0 &&
            s_nHex(sv[i + 2]) >= 0) {
            sOctets += static_cast<char>(s_nHex(sv[i + 1]) * 16 + s_nHex(sv[i + 2]));
            i += 2;
        } else if (sv[i] == L'+') {
            sOctets += ' ';
        } else if (sv[i] < 0x80) {
            sOctets += static_cast<char>(sv[i]);
        }
    }
    return KVUtf8::VersWide(sOctets);
}

} // namespace

void CTableParametresOAuth2::Set(std::wstring_view svCle, std::wstring_view svValeur) {
    for (auto& [sCle, sValeur] : m_tab) {
        if (s_bEgalSansCasse(sCle, svCle)) {
            sValeur = svValeur;
            return;
        }
    }
    m_tab.emplace_back(svCle, svValeur);
}

std::wstring CTableParametresOAuth2::sJoint() const {
    std::wstring s;
    for (const auto& [sCle, sValeur] : m_tab) {
        if (sCle.empty())
            continue;
        if (!s.empty())
            s += L'&';
        s += sCle;
        if (!sValeur.empty()) {
            s += L'=';
            s += sValeur;
        }
    }
    return s;
}

void CInterfGGLOAuth2::__ExtraitParamsToHash(const CXYString<wchar_t>& sTexte,
                                             CTableParametresOAuth2& tab) const {
    std::wstring_view sv = sTexte.sv();
    while (!sv.empty()) {
        const size_t nEt = sv.find(L'&');
        const std::wstring_view svMorceau = sv.substr(0, nEt);
        const size_t nEgal = svMorceau.find(L'=');
        if (nEgal == std::wstring_view::npos)
            tab.Set(svMorceau, {});
        else
            tab.Set(svMorceau.substr(0, nEgal), svMorceau.substr(nEgal + 1));
        if (nEt == std::wstring_view::npos)
            break;
        sv.remove_prefix(nEt + 1);
    }
}

const wchar_t* CInterfGGLOAuth2::sGetURLLogin() const {
    const IOAuth2Parametres& cl = *m_clParametres.pGet();
    CTableParametresOAuth2 tab;
    if (!cl.vczGetClientID().bVide())
        tab.Set(L"client_id", s_sEncodeValeur(m_piVM, cl.vczGetClientID()));
    if (s_bCommencePar(s_svSansBlancs(cl.vczGetURLAuth().sv()), gszPayPalTokenService) &&
        !cl.vczGetClientSecret().bVide())
        tab.Set(L"client_secret", s_sEncodeValeur(m_piVM, cl.vczGetClientSecret()));
    if (!cl.vczGetScope().bVide())
        tab.Set(L"scope", cl.vczGetScope().sv());
    // Where the host runs the dialogue it fills and checks the state marker itself.
    m_sState.Vide();
    if (CInformationDLL::ms_nCodeProduitExecution != CComposanteGGL::knProduitAvecDialogue) {
        m_sState = CXYString<wchar_t>(std::to_wstring(gqwGenerateNewID()));
        tab.Set(L"state", m_sState.sv());
    }
    tab.Set(L"response_type", L"code");
    __ExtraitParamsToHash(cl.vczGetParamEnPlus(), tab);

    std::wstring sURL(cl.vczGetURLAuth().sv());
    const size_t nQuestion = sURL.find(L'?');
    if (nQuestion == std::wstring::npos) {
        sURL += L'?';
    } else {
        __ExtraitParamsToHash(CXYString<wchar_t>(std::wstring_view(sURL).substr(nQuestion + 1)),
                              tab);
        sURL.resize(nQuestion + 1);
    }
    sURL += tab.sJoint();
    m_sURL = CXYString<wchar_t>(std::wstring_view(sURL));
    return m_sURL.pszGet();
}

bool CInterfGGLOAuth2::_bErreur(unsigned nCode, const wchar_t* pszArgument) {
    if (m_pclErreur)
        m_pclErreur->SetUserError(&gstMyModuleInfo60, nCode, pszArgument);
    return false;
}

bool CInterfGGLOAuth2::bProcessRedirectionHTTP(const wchar_t* pszReponse,
                                               const wchar_t* pszRedirection) {
    stInfoResHTTP stInfo;
    if (!CInterfGGLCnx::s_bExtraitInfoResHTTP(pszReponse, stInfo)) {
        std::wstring s(stInfo.m_sError.sv());
        const std::wstring sDescription = s_sDescriptionErreur(pszReponse ? pszReponse : L"");
        if (!sDescription.empty())
            s += L": " + sDescription;
        if (s.empty())
            s = L"the provider's answer holds no code, no token and no error";
        return _bErreur(KVERR_LOGIN_FAILED, s.c_str());
    }
    if (!m_sState.bVide() && stInfo.m_sState.sv() != m_sState.sv())
        return _bErreur(KVERR_STATE_MISMATCH, nullptr);

    // A token given straight to the browser: nothing to exchange.
    if (!stInfo.m_sAccessToken.bVide()) {
        m_clResultat = CRef<IAuthToken>::Retain(
            CAuthToken::s_pclCreateTokenOAuth2(stInfo.m_sAccessToken, stInfo.m_sTokenType,
                                               pszReponse, m_clParametres.pGet(), m_pclErreur));
        return true;
    }

    CTableParametresOAuth2 tab;
    tab.Set(L"code", stInfo.m_sCode.sv());
    tab.Set(L"client_id", sGetClientID());
    tab.Set(L"client_secret", sGetClientSecret());
    tab.Set(L"redirect_uri", pszRedirection ? pszRedirection : L"");
    tab.Set(L"grant_type", L"authorization_code");
    // Some providers put fixed parameters in the token address: they go in the body.
    std::wstring sURL(m_clParametres->vczGetURLToken().sv());
    if (const size_t nQuestion = sURL.find(L'?'); nQuestion != std::wstring::npos) {
        __ExtraitParamsToHash(CXYString<wchar_t>(std::wstring_view(sURL).substr(nQuestion + 1)),
                              tab);
        sURL.resize(nQuestion);
    }

    _CXErrorModule60 clErreurLocale;
    CXError* pclErreur = m_pclErreur ? m_pclErreur : &clErreurLocale;
    STReponseFormulaire stReponse;
    if (!bPosteFormulaire(m_piHTTP, sURL.c_str(), tab.sJoint(), stReponse, pclErreur))
        return false;
    CSimpleBuffer clServeur;
    if (!clServeur.bAffecte(stReponse.clCorps.pGetDonnees(), stReponse.clCorps.nGetTaille())) {
        pclErreur->SetErrorNoMemory();
        return false;
    }
    m_clResultat = CRef<IAuthToken>::Retain(
        CAuthToken::s_pclCreateTokenOAuth2(clServeur, m_clParametres.pGet(), pclErreur));
    if (!pclErreur->bEstPropre())
        return false;
    const IOAuth2Token* piToken = m_clResultat->vpiGetOAuth2Token();
    if (stReponse.nStatut != HTTPOK)
        return _bErreur(KVERR_LOGIN_FAILED, piToken->vczGetError().pszGet());
    if (piToken->vczGetAccessToken().bVide()) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_UNREADABLE_ANSWER);
        pclErreur->AddDebugMessageNoFormat(L"##the token answer holds no access_token##");
        return false;
    }
    return true;
}
