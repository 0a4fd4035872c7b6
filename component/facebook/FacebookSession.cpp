#include "facebook/FacebookSession.h"

#include "foundation/KLANYArray.h"
#include "foundation/LooseCompare.h"
#include "foundation/SimpleBuffer.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"
#include "frame/ModuleInfo.h"

#include "Any.h"
#include "JSONService.h"
#include "KVResult.h"
#include "ObjectInterfaces.h"
#include "VM.h"
#include "XError.h"

#include <string>

namespace {

// The option of the host that forbids opening a session.
constexpr uint64_t kdwOptionSansOuverture = 0x200;
constexpr wchar_t gszNonDisponible[] = L"N/A";

const wchar_t* s_pszOuNonDisponible(const wchar_t* psz) {
    return psz && *psz ? psz : gszNonDisponible;
}

// The value of one member of the profile, as text. "location" holds an object: the walk goes
// into it, so that its members can be asked for by name.
class CRecupInfoUtilisateurJSON final : public IVisiteurJSON {
public:
    explicit CRecupInfoUtilisateurJSON(const wchar_t* pszNom) : m_svNom(pszNom ? pszNom : L"") {}
    eVISITEJSON veVisiteValeur(CAny& clValeur) override {
        if (m_bCible)
            m_clValeur = clValeur;
        return VISITE_SUIVANT;
    }
    eVISITEJSON veVisiteObjet(IObjetJSON&) override {
        return m_nProfondeur++ == 0 || m_bLieu ? VISITE_DESCEND : VISITE_SUIVANT;
    }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON&) override {
        m_bCible = STR_bEgalSoupleSansBlancs(clNom.sv(), m_svNom);
        m_bLieu = STR_bEgalSoupleSansBlancs(clNom.sv(), L"location");
        return VISITE_DESCEND;
    }
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_SUIVANT; }

    const CAny& clGetValeur() const { return m_clValeur; }

private:
    std::wstring_view m_svNom;
    CAny m_clValeur;
    bool m_bCible = false;
    bool m_bLieu = false;
    int m_nProfondeur = 0;
};

} // namespace

ITypeDescription* CFacebookSession::ms_piType = nullptr;

CFacebookSession::CFacebookSession()
    : m_pclConnexion(new (std::nothrow) CFaceBookConnexionGenerique) {}

CFacebookSession::~CFacebookSession() = default;

CFacebookSession* CFacebookSession::s_pclCreeObjet(CCtxInfo*, CXError*) {
    return new CFacebookSession;
}

void CFacebookSession::CopieObjet(CCtxInfo*, CXError*, CFacebookSession* pclSource) {
    if (!pclSource || pclSource == this)
        return;
    if (m_pclConnexion && pclSource->m_pclConnexion)
        m_pclConnexion->vCopieOAuthData(*pclSource->m_pclConnexion);
    m_clPermission = pclSource->m_clPermission;
    m_sPageID = pclSource->m_sPageID;
}

void CFacebookSession::RAZObjet(CCtxInfo*, CXError*) {
    if (m_pclConnexion)
        m_pclConnexion->vRAZOAuthData();
    m_clPermission = CRef<IKLTableau>();
    m_sPageID.Vide();
}

// ---- properties --------------------------------------------------------------------------

const wchar_t* CFacebookSession::GetAppID(CCtxInfo*, CXError*) const {
    return m_pclConnexion ? m_pclConnexion->pszGetClientID() : L"";
}
void CFacebookSession::SetAppID(CCtxInfo*, CXError*, const wchar_t* psz) {
    if (m_pclConnexion)
        m_pclConnexion->SetClientID(psz);
}
const wchar_t* CFacebookSession::GetAppSecret(CCtxInfo*, CXError*) const {
    return m_pclConnexion ? m_pclConnexion->pszGetClientSecret() : L"";
}
void CFacebookSession::SetAppSecret(CCtxInfo*, CXError*, const wchar_t* psz) {
    if (m_pclConnexion)
        m_pclConnexion->SetClientSecret(psz);
}
const wchar_t* CFacebookSession::GetEmail(CCtxInfo*, CXError*) const {
    return m_pclConnexion ? m_pclConnexion->pszGetEmail() : L"";
}
void CFacebookSession::SetEmail(CCtxInfo*, CXError*, const wchar_t* psz) {
    if (m_pclConnexion)
        m_pclConnexion->SetEmail(psz);
}
void CFacebookSession::SetPermission(CCtxInfo*, CXError*, IKLTableau* piTableau) {
    m_clPermission = CRef<IKLTableau>::Retain(piTableau);
}

// ---- script functions --------------------------------------------------------------------

void CFacebookSession::_ConstruitParamArray(CKLANYArray& tabListe) const {
    if (IKLTableau* pi = m_clPermission.pGet()) {
        const int nNb = pi->vnGetNbElement();
        for (int i = 0; i < nNb; ++i) {
            CAny clElement;
            if (!pi->vbGetElement(i, clElement, nullptr))
                continue;
            CXYString<wchar_t> sTexte;
            CAny clTexte;
            if (KV_bSucces(clElement.__nFillString(sTexte)))
                clTexte.SetString(sTexte);
            (void)tabListe.bAjoute(clTexte);
        }
    }
    if (!m_sPageID.bEstVide()) {
        CAny clPage;
        clPage.SetString(CXYString<wchar_t>((std::wstring(gszMarqueurPageFB) + m_sPageID.pszGet()).c_str()));
        (void)tabListe.bAjoute(clPage);
    }
}

bool CFacebookSession::FBOuvreSession(CCtxInfo* pclCtx, CXError* pclErreur) {
    if (!m_pclConnexion)
        return false;
    if (CInformationDLL::ms_dwOptions & kdwOptionSansOuverture) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_SESSION_DISABLED);
        return false;
    }
    CKLANYArray tabListe(10, 10);
    _ConstruitParamArray(tabListe);
    const int bResultat = m_pclConnexion->vbLogin(CCtxInfo::s_piGetVM(pclCtx), tabListe, pclErreur);
    if (!bResultat && pclErreur->bEstPropre())
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_LOGIN_FAILED,
                                s_pszOuNonDisponible(m_pclConnexion->pszGetDernierMessage()));
    return bResultat != 0;
}

void CFacebookSession::FBFermeSession(CCtxInfo* pclCtx, CXError* pclErreur) {
    if (!m_pclConnexion)
        return;
    CKLANYArray tabListe(10, 10);
    _ConstruitParamArray(tabListe);
    (void)m_pclConnexion->vbLogout(CCtxInfo::s_piGetVM(pclCtx), tabListe, pclErreur);
}

int CFacebookSession::FBEtatSession(CCtxInfo* pclCtx, CXError* pclErreur) {
    if (!m_pclConnexion)
        return -1;
    CKLANYArray tabListe(10, 10);
    _ConstruitParamArray(tabListe);
    return m_pclConnexion->veGetEtatConnexion(CCtxInfo::s_piGetVM(pclCtx), tabListe, pclErreur);
}

bool CFacebookSession::_bVerifieConnecte(IVM* piVM, CXError* pclErreur) {
    CKLANYArray tabListe(10, 10);
    _ConstruitParamArray(tabListe);
    if (m_pclConnexion->veGetEtatConnexion(piVM, tabListe, pclErreur) == 1)
        return true;
    if (pclErreur->bEstPropre())
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_NO_SESSION,
                                s_pszOuNonDisponible(m_pclConnexion->pszGetDernierMessage()));
    return false;
}

CKLBIN CFacebookSession::FBRequete(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszURL,
                                   int nVerbe, CKLBIN clDonnees) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!m_pclConnexion || !_bVerifieConnecte(piVM, pclErreur))
        return CKLBIN();
    CHTTPRequete clRequete(SERVICEGOOGLE_AUCUN, pszURL, HTTPCT_TEXTE);
    if (clDonnees.nGetTaille())
        clRequete.AjouteDonnees(clDonnees.pGetDonnees(), clDonnees.nGetTaille());
    CSimpleBuffer clReponse;
    if (!m_pclConnexion->vbRequete(piVM, clRequete, static_cast<HTTPMethod>(nVerbe), &clReponse,
                                   pclErreur))
        return CKLBIN();
    return CKLBIN(clReponse.pGetDonnees(), clReponse.nGetTaille());
}

CAny CFacebookSession::FBRecupereInformationUtilisateur(CCtxInfo* pclCtx, CXError* pclErreur,
                                                        const wchar_t* pszNom) {
    CAny clResultat;
    if (!m_pclConnexion || !_bVerifieConnecte(CCtxInfo::s_piGetVM(pclCtx), pclErreur))
        return clResultat;
    const std::wstring sGraph = gszFacebookGraph;
    if (STR_bEgalSoupleSansBlancs(pszNom ? pszNom : L"", L"picture")) {
        clResultat.SetBinary(FBRequete(pclCtx, pclErreur, (sGraph + L"/me/picture").c_str()));
        return clResultat;
    }
    const CKLBIN clCorps = FBRequete(pclCtx, pclErreur, (sGraph + L"/me").c_str());
    if (!clCorps.nGetTaille()) {
        clResultat.SetString(CXYString<wchar_t>());
        return clResultat;
    }
    const std::string sTexte(reinterpret_cast<const char*>(clCorps.pGetDonnees()),
                             clCorps.nGetTaille());
    auto clRacine = CComposanteGGL::s_piGetJSON(sTexte.c_str(), pclErreur);
    if (!clRacine)
        return clResultat;
    CRecupInfoUtilisateurJSON clVisiteur(pszNom);
    clRacine->vAccepte(clVisiteur);
    // The value as text, owned by the result: the visitor's copy ends with this call.
    CXYString<wchar_t> sValeur;
    if (KV_bSucces(clVisiteur.clGetValeur().__nFillString(sValeur)))
        clResultat.SetString(sValeur);
    return clResultat;
}

#include "frame/KllStubs.h"
#include "facebook/FacebookSession.def"

#define KLL_METHODES_CFacebookSession_FBOuvreSession KLL_OUI
#define KLL_METHODES_CFacebookSession_FBFermeSession KLL_OUI
#define KLL_METHODES_CFacebookSession_FBEtatSession KLL_OUI
#define KLL_METHODES_CFacebookSession_FBRequete KLL_OUI
#define KLL_METHODES_CFacebookSession_FBRecupereInformationUtilisateur KLL_OUI
#include "frame/KllMethodStubs.h"
