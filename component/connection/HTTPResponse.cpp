#include "HTTPResponse.h"

#include "frame/ModuleInfo.h"

#include "AnyTypes.h"
#include "KVResult.h"
#include "Resources.h"
#include "XError.h"
#include "Utf8.h"

#include <cwchar>
#include <string>
#include <string_view>

namespace {

struct STLibelle {
    eHTTPCODE eCode;
    const wchar_t* pszLibelle;
};

// Users read these inside error messages; they are kept as they have always been spelt.
const STLibelle gtabLibelles[] = {
    {HTTPCodeInvalide, L"Code HTTP Invalide"},
    {HTTPContinue, L"HTTPContinue"},
    {HTTPSwitchingProtocols, L"HTTPSwitchingProtocols"},
    {HTTPOK, L"HTTPOK"},
    {HTTPCreated, L"HTTPCreated"},
    {HTTPAccepted, L"HTTPAccepted"},
    {HTTPNonAuthoritative, L"HTTPNonAuthoritative"},
    {HTTPNoContent, L"HTTPNoContent"},
    {HTTPResetContent, L"HTTPResetContent"},
    {HTTPPartielContent, L"HTTPPartielContent"},
    {HTTPMultipleChoices, L"HTTPMultipleChoices"},
    {HTTPMovedPermanently, L"HTTPMovedPermanently"},
    {HTTPMovedTemporarily, L"HTTPMovedTemporarily"},
    {HTTPSeeOther, L"HTTPSeeOther"},
    {HTTPNotModified, L"HTTPNotModified"},
    {HTTPUseProxy, L"HTTPUseProxy"},
    {HTTPTemporaryRedirect, L"HTTPTemporaryRedirect"},
    {HTTPResumeIncomplete, L"HTTPResumeIncomplete"},
    {HTTPBadRequest, L"HTTPBadRequest"},
    {HTTPUnauthorized, L"HTTPUnauthorized"},
    {HTTPPaymentRequired, L"HTTPPaymentRequired"},
    {HTTPForbidden, L"HTTPForbidden"},
    {HTTPNotFound, L"HTTPNotFound"},
    {HTTPMethodNotAllowed, L"HTTPMethodNotAllowed"},
    {HTTPNotAcceptable, L"HTTPNotAcceptable"},
    {HTTPProxyAuthRequired, L"HTTPProxyAuthRequired"},
    {HTTPRequestTimeOut, L"HTTPRequestTimeOut"},
    {HTTPConflict, L"HTTPConflict"},
    {HTTPGone, L"HTTPGone"},
    {HTTPLengthRequired, L"HTTPLengthRequired"},
    {HTTPPreconditionFailed, L"HTTPPreconditionFailed"},
    {HTTPRequestEntityTooLarge, L"HTTPRequestEntityTooLarge"},
    {HTTPRequestURITooLarge, L"HTTPRequestURITooLarge"},
    {HTTPUnsupportedMediaType, L"HTTPUnsupportedMediaType"},
    {HTTPRequestedRangeNotSatisfiable, L"HTTPRequestedRangeNotSatisfiable"},
    {HTTPExpactationFailed, L"HTTPExpactationFailed"},
    {HTTPInternalServerError, L"HTTPInternalServerError"},
    {HTTPNotImplemented, L"HTTPNotImplemented"},
    {HTTPBadGateway, L"HTTPBadGateway"},
    {HTTPServiceUnavailable, L"HTTPServiceUnavailable"},
    {HTTPGatewayTimeOut, L"HTTPGatewayTimeOut"},
    {HTTPVersionNotSupported, L"HTTPVersionNotSupported"},
};

// Field n (from 0) of the text cut at sSeparateur; the last field runs to the end. False when
// the text has fewer fields.
bool s_bExtraitChaine(std::wstring_view sTexte, size_t n, std::wstring_view sSeparateur,
                      std::wstring_view& sChamp) {
    size_t nDebut = 0;
    for (size_t i = 0; i < n; ++i) {
        const size_t nPos = sSeparateur.empty() ? sTexte.npos : sTexte.find(sSeparateur, nDebut);
        if (nPos == sTexte.npos)
            return false;
        nDebut = nPos + sSeparateur.size();
    }
    const size_t nFin = sSeparateur.empty() ? sTexte.npos : sTexte.find(sSeparateur, nDebut);
    sChamp = sTexte.substr(nDebut, nFin == sTexte.npos ? sTexte.npos : nFin - nDebut);
    return true;
}

} // namespace

void CHTTPResponse::SetEntete(const CAny& clEntete) {
    m_sEntete.Vide();
    if (clEntete.nGetType() == KVTYPE_NONE)
        return;
    CAny clCopie(clEntete);
    if (KV_bSucces(clCopie.__nCastTo(KVTYPE_KLDSTRW)))
        (void)clCopie.__nFillString(m_sEntete);
}

bool CHTTPResponse::bGetEntete(CXYString<wchar_t>& sEntete) const {
    sEntete = m_sEntete;
    return true;
}

eHTTPCODE CHTTPResponse::eGetCodeRetour() const {
    std::wstring_view sMot;
    if (!s_bExtraitChaine(m_sEntete.sv(), 1, L" ", sMot))
        return HTTPCodeInvalide;
    // wcstol needs a terminated text; a word that is not a number reads as 0.
    const std::wstring sNombre(sMot);
    return static_cast<eHTTPCODE>(static_cast<int>(std::wcstol(sNombre.c_str(), nullptr, 10)));
}

bool CHTTPResponse::__bExtrait(const CXYString<wchar_t>& sTexte, const wchar_t* pszDebut,
                               const wchar_t* pszFin, CXYString<wchar_t>& sValeur) {
    std::wstring_view sSuite, sChamp;
    if (!s_bExtraitChaine(sTexte.sv(), 1, pszDebut, sSuite) ||
        !s_bExtraitChaine(sSuite, 0, pszFin, sChamp))
        return false;
    sValeur = CXYString<wchar_t>(sChamp);
    return true;
}

bool CHTTPResponse::bExtraitEntete(const wchar_t* pszNom, CXYString<wchar_t>& sValeur) const {
    if (m_sEntete.bVide())
        return false;
    std::wstring sCle = pszNom ? pszNom : L"";
    sCle += L": ";
    return __bExtrait(m_sEntete, sCle.c_str(), L"\r", sValeur);
}

bool CHTTPResponse::bExtraitMessage(const wchar_t* pszNom, CAny& clValeur) const {
    CXYString<wchar_t> sCorps;
    if (!bGetMessage(sCorps))
        return false;
    std::wstring sCle = pszNom ? pszNom : L"";
    sCle += L'=';
    CXYString<wchar_t> sValeur;
    if (!__bExtrait(sCorps, sCle.c_str(), L"\n", sValeur))
        return false;
    clValeur.SetString(sValeur);
    return true;
}

bool CHTTPResponse::bGetMessage(CAny& clMessage) const {
    if (m_clMessage.nGetType() == KVTYPE_NONE)
        return false;
    clMessage = m_clMessage;
    return true;
}

bool CHTTPResponse::bGetMessage(CKLBIN& clMessage) const {
    if (m_clMessage.nGetType() != KVTYPE_KLBIN)
        return false;
    return KV_bSucces(m_clMessage.nFillBinary(clMessage));
}

bool CHTTPResponse::bGetMessage(CXYString<char>& sMessage) const {
    if (m_clMessage.nGetType() == KVTYPE_NONE)
        return false;
    CAny clCopie(m_clMessage);
    return KV_bSucces(clCopie.__nCastTo(KVTYPE_KLDSTRA)) &&
           KV_bSucces(clCopie.__nFillString(sMessage));
}

bool CHTTPResponse::bGetMessage(CXYString<wchar_t>& sMessage) const {
    CXYString<char> sNarrow;
    if (!bGetMessage(sNarrow))
        return false;
    return KV_bSucces(KVUtf8::nVersWide(sNarrow.sv(), sMessage));
}

const wchar_t* CHTTPResponse::s_pszGetLibelle(eHTTPCODE eCode) {
    for (const STLibelle& st : gtabLibelles) {
        if (st.eCode == eCode)
            return st.pszLibelle;
    }
    return L"";
}

void CHTTPResponse::SetErreurStatut(CXError* pclErreur) const {
    if (!pclErreur)
        return;
    CXYString<wchar_t> sTexteServeur;
    (void)bGetMessage(sTexteServeur);
    CTString sMessage;
    DLLRES_bFormatMessage(&gstMyModuleInfo60, 5870, &sMessage, s_pszGetLibelle(eGetCodeRetour()),
                          sTexteServeur.pszGet());
    pclErreur->SetUserErrorMessage(&gstMyModuleInfo60, KVERR_HTTP_STATUS, sMessage.pszGet());
}
