#include "oauth/AuthTokenDINO.h"

#include "connection/InterfGGLCnx.h"
#include "foundation/KVBuffer.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"
#include "oauth/OAuth2ParametresDINO.h"

#include "Utf8.h"
#include "XError.h"

#include <string>
#include <string_view>

ITypeDescription* CAuthTokenDINO::ms_piType = nullptr;

namespace {

constexpr uint32_t knVersionSauvee = 1;
constexpr uint32_t knAvecJeton = 1;

CXYString<wchar_t> gsVide;

// A token answer's bytes as the buffer form takes them.
CRef<IAuthToken> s_clJetonDepuisReponse(const void* p, size_t n, IOAuth2Parametres* piParametres) {
    CSimpleBuffer clServeur;
    if (!clServeur.bAffecte(p, n))
        return {};
    _CXErrorModule60 clErreur;
    auto clToken = CRef<IAuthToken>::Retain(
        CAuthToken::s_pclCreateTokenOAuth2(clServeur, piParametres, &clErreur));
    // A token given straight in the browser's return was kept with that return, which is no
    // token answer: read it back from there, or it would come back without its access token.
    stInfoResHTTP stInfo;
    const std::string_view svTexte = clServeur.sv().substr(0, clServeur.sv().find('\0'));
    if (clToken && clToken->vpiGetOAuth2Token()->vczGetAccessToken().bVide() &&
        svTexte.starts_with("GET ") &&
        CInterfGGLCnx::s_bExtraitInfoResHTTP(KVUtf8::VersWide(svTexte).c_str(), stInfo) &&
        !stInfo.m_sAccessToken.bVide()) {
        const std::wstring sTexte = KVUtf8::VersWide(svTexte);
        clToken = CRef<IAuthToken>::Retain(CAuthToken::s_pclCreateTokenOAuth2(
            stInfo.m_sAccessToken, stInfo.m_sTokenType, sTexte.c_str(), piParametres, &clErreur));
    }
    return clToken;
}

} // namespace

CAuthTokenDINO::CAuthTokenDINO(COAuth2ParametresDINO* pclParametres,
                               const CXYString<char>& sTexte) {
    auto clParametres = CRef<IOAuth2Parametres>::Retain(
        pclParametres ? pclParametres->clGetParametres().vpiClone() : nullptr);
    // The text with its end byte, as the answers are kept.
    m_clToken =
        s_clJetonDepuisReponse(sTexte.pszGet(), sTexte.nLongueur() + 1, clParametres.pGet());
}

void CAuthTokenDINO::CopieObjet(CCtxInfo*, CXError*, CAuthTokenDINO* pclSource) {
    if (!pclSource || pclSource == this)
        return;
    IAuthToken* piCopie = pclSource->m_clToken ? pclSource->m_clToken->vpiClone() : nullptr;
    m_clToken = CRef<IAuthToken>::Retain(piCopie);
}

bool CAuthTokenDINO::GetValide(CCtxInfo*, CXError*) const {
    IOAuth2Token* piToken = _piGetOAuth2Token();
    return piToken && !piToken->vczGetAccessToken().bVide();
}

CXYString<wchar_t> CAuthTokenDINO::GetValeur(CCtxInfo*, CXError*) const {
    IOAuth2Token* piToken = _piGetOAuth2Token();
    return piToken ? piToken->vczGetAccessToken() : gsVide;
}

void CAuthTokenDINO::SetValeur(CCtxInfo*, CXError*, const CXYString<wchar_t>& sAccessToken) {
    if (IOAuth2Token* piToken = _piGetOAuth2Token()) {
        piToken->vSetAccessToken(sAccessToken);
        return;
    }
    if (sAccessToken.bVide())
        return;
    // A token the script brings from elsewhere: no answer, no provider.
    auto clToken = CRef<IOAuth2Token>::Retain(
        new COAuth2Token(sAccessToken, CXYString<wchar_t>(L"Bearer"), nullptr));
    m_clToken = CRef<IAuthToken>::Retain(new CAuthToken(CSimpleBuffer(), clToken.pGet()));
}

CKLBIN CAuthTokenDINO::GetReponseServeur(CCtxInfo*, CXError*) const {
    if (!m_clToken)
        return {};
    const CSimpleBuffer& cl = m_clToken->vclGetBufferServeur();
    return CKLBIN(cl.pGetDonnees(), cl.nGetTaille());
}

CKLBIN CAuthTokenDINO::Get__Serialisation__(CCtxInfo*, CXError*) const {
    CKVBuffer clBuffer;
    clBuffer.Set32(knVersionSauvee);
    // A token without one is saved as the version alone: it reads back as no token.
    clBuffer.Set32(knAvecJeton);
    if (IOAuth2Token* piToken = _piGetOAuth2Token()) {
        const size_t nMarque = CKVBufferMark::s_dwWriteBeginMark(clBuffer);
        const CSimpleBuffer& clServeur = m_clToken->vclGetBufferServeur();
        clBuffer.Set32(static_cast<uint32_t>(clServeur.nGetTaille()));
        clBuffer.Set(clServeur.pGetDonnees(), clServeur.nGetTaille());
        COAuth2Parametres clSansParametres;
        const IOAuth2Parametres* piParametres = piToken->vpiGetOAuth2Parametres();
        (piParametres ? piParametres : &clSansParametres)->vToBuffer(clBuffer);
        CKVBufferMark::s_WriteEndMark(clBuffer, nMarque);
    }
    return CKLBIN(clBuffer.pGetDonnees(), clBuffer.nGetTaille());
}

void CAuthTokenDINO::Force__Serialisation__(CCtxInfo*, CXError* pclErreur, const CKLBIN& clSauve) {
    const auto Refuse = [pclErreur] {
        if (pclErreur) {
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_INVALID_PARAMETER, 1);
            pclErreur->AddDebugMessageNoFormat(L"##the saved token is cut short or altered##");
        }
    };
    CKVBuffer clBuffer;
    if (!clBuffer.Set(clSauve.pGetDonnees(), clSauve.nGetTaille()))
        return;
    clBuffer.Seek(0, BUFFER_SEEK_DEBUT);
    uint32_t nVersion = 0, nJeton = 0;
    if (!clBuffer.bGet32(nVersion))
        return Refuse();
    // Another version is not ours to read: the token stays.
    if (nVersion != knVersionSauvee)
        return;
    if (!clBuffer.bGet32(nJeton))
        return Refuse();
    unsigned nLongueur = 0;
    const size_t nFin = nJeton == knAvecJeton && clBuffer.nReste()
                            ? CKVBufferMark::s_dwReadBeginMark(clBuffer, &nLongueur)
                            : 0;
    if (nLongueur == 0) {
        m_clToken = CRef<IAuthToken>::Retain(new CAuthTokenVide);
        return;
    }
    uint32_t nReponse = 0;
    if (nFin > clBuffer.nGetTaille() || !clBuffer.bGet32(nReponse) ||
        nReponse > nFin - clBuffer.nGetPosition())
        return Refuse();
    const size_t nDebutReponse = clBuffer.nGetPosition();
    clBuffer.Seek(nReponse, BUFFER_SEEK_COURANT);
    auto clParametres = CRef<COAuth2Parametres>::Retain(new COAuth2Parametres);
    if (!clParametres->vFromBuffer(clBuffer) || clBuffer.nGetPosition() > nFin)
        return Refuse();
    CRef<IAuthToken> clToken = s_clJetonDepuisReponse(clBuffer.pGetDonnees() + nDebutReponse,
                                                      nReponse, clParametres.pGet());
    if (clToken)
        m_clToken = clToken;
    CKVBufferMark::s_ReadEndMark(clBuffer, nFin);
}

#include "frame/KllStubs.h"

CAuthTokenDINO* CAuthTokenDINO::s_pclCreeObjet(CCtxInfo*, CXError*, unsigned char** ppArguments) {
    // A host that hands no arguments gets the empty token.
    if (!ppArguments || !ppArguments[0] || !ppArguments[1])
        return new CAuthTokenDINO;
    auto* pclParametres = KllArgObjet<COAuth2ParametresDINO>(ppArguments, 0);
    return new CAuthTokenDINO(pclParametres,
                              *reinterpret_cast<const CXYString<char>*>(ppArguments[1]));
}

#include "oauth/AuthTokenDINO.def"
