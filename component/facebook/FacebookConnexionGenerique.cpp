#include "facebook/FacebookConnexionGenerique.h"

#include "connection/InterfGGLCnx.h"
#include "connection/PersistanceConnexion.h"
#include "connection/PosteFormulaire.h"
#include "connection/VisiteurJSONGetToken.h"
#include "foundation/KLANYArray.h"
#include "foundation/LooseCompare.h"
#include "foundation/SimpleBuffer.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"

#include "Any.h"
#include "HTTPService.h"
#include "JSONService.h"
#include "KVResult.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <string>
#include <string_view>
#include <vector>

namespace {

// The kind of runtime that gives its redirect address whole and keeps the short-lived token.
constexpr int knProduitSansEchange = 30;
// The row of FBOuvreSession in the function table, whose name the dialogue shows.
constexpr int knFonctionOuvreSession = 96;

// The text of the members of given names (compared without regard to case) in the object
// whose element is walked; nested objects and arrays are passed over.
class CVisiteurMembres final : public IVisiteurJSON {
public:
    CVisiteurMembres(std::initializer_list<const wchar_t*> tabNoms) : m_tabNoms(tabNoms) {}
    eVISITEJSON veVisiteValeur(CAny& clValeur) override {
        if (m_nCourant >= 0) {
            CAny clCopie = clValeur;
            if (KV_bSucces(clCopie.__nCastTo(KVTYPE_KLDSTRW)))
                (void)clCopie.__nFillString(m_tabValeurs[static_cast<size_t>(m_nCourant)]);
        }
        return VISITE_SUIVANT;
    }
    eVISITEJSON veVisiteObjet(IObjetJSON&) override {
        return m_nProfondeur++ == 0 ? VISITE_DESCEND : VISITE_SUIVANT;
    }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON&) override {
        m_nCourant = -1;
        for (size_t i = 0; i < m_tabNoms.size(); ++i)
            if (STR_bEgalSoupleSansBlancs(clNom.sv(), m_tabNoms[i]))
                m_nCourant = static_cast<int>(i);
        return VISITE_DESCEND;
    }
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_DESCEND; }

    const CXYString<wchar_t>& sValeur(size_t i) const { return m_tabValeurs[i]; }

private:
    std::vector<const wchar_t*> m_tabNoms;
    CXYString<wchar_t> m_tabValeurs[2];
    int m_nCourant = -1;
    int m_nProfondeur = 0;
};

} // namespace

CConnexionOAuthBase* CFaceBookConnexionGenerique::s_pclNouvelle() {
    return new (std::nothrow) CFaceBookConnexionGenerique;
}

void CFaceBookConnexionGenerique::vRAZOAuthData() {
    CConnexionOAuthBase::vRAZOAuthData();
    m_sDernierMessage.Vide();
    m_sAccessToken.Vide();
    m_sPermissions.Vide();
    m_sPageID.Vide();
}

void CFaceBookConnexionGenerique::vCopieOAuthData(const CConnexionOAuthBase& clSource) {
    CConnexionOAuthBase::vCopieOAuthData(clSource);
    const auto* pcl = dynamic_cast<const CFaceBookConnexionGenerique*>(&clSource);
    if (!pcl)
        return;
    m_sDernierMessage = pcl->m_sDernierMessage;
    m_sAccessToken = pcl->m_sAccessToken;
    m_sPermissions = pcl->m_sPermissions;
    m_sPageID = pcl->m_sPageID;
}

CTString CFaceBookConnexionGenerique::vcszGetCleHash() {
    std::wstring s = pszGetClientID();
    s += m_sPageID.pszGet();
    s += m_sPermissions.pszGet();
    return CTString(s.c_str());
}

int CFaceBookConnexionGenerique::vbSerialise(CXYString<wchar_t>& sTexte) {
    std::wstring s(sTexte.sv());
    s += pszGetClientID();
    s += L';';
    s += m_sAccessToken.sv();
    s += L';';
    s += m_sPermissions.pszGet();
    s += L';';
    s += m_sPageID.pszGet();
    sTexte = CXYString<wchar_t>(std::wstring_view(s));
    return 1;
}

int CFaceBookConnexionGenerique::vbDeserialise(const wchar_t* pszTexte) {
    std::wstring_view sv = pszTexte ? pszTexte : L"";
    const auto Suivant = [&sv](std::wstring& sMorceau) {
        if (sv.data() == nullptr)
            return false;
        const size_t n = sv.find(L';');
        sMorceau = sv.substr(0, n);
        sv = n == std::wstring_view::npos ? std::wstring_view() : sv.substr(n + 1);
        return true;
    };
    std::wstring s;
    if (Suivant(s))
        SetClientID(s.c_str());
    if (Suivant(s))
        m_sAccessToken = CXYString<wchar_t>(std::wstring_view(s));
    if (Suivant(s))
        m_sPermissions = s.c_str();
    if (Suivant(s))
        m_sPageID = s.c_str();
    return 1;
}

CConnexionOAuthBase* CFaceBookConnexionGenerique::vpclClone() {
    auto* pcl = new (std::nothrow) CFaceBookConnexionGenerique;
    if (pcl)
        pcl->vCopieOAuthData(*this);
    return pcl;
}

int CFaceBookConnexionGenerique::vbGetAccessToken(CHTTPRequete&, CXYString<wchar_t>& sToken) {
    sToken = m_sAccessToken;
    return !m_sAccessToken.bVide();
}

void CFaceBookConnexionGenerique::_CalculePermissionsEtPageID(const CKLANYArray& tabListe) {
    m_sPermissions.Vide();
    const int nNb = tabListe.nGetNbElement();
    if (nNb == 0)
        return;
    std::wstring sPermissions;
    const std::wstring_view svMarqueur = gszMarqueurPageFB;
    for (int i = 0; i < nNb; ++i) {
        CAny clCopie = *tabListe.pclAccesElement(i);
        CXYString<wchar_t> sTexte;
        if (!KV_bSucces(clCopie.__nCastTo(KVTYPE_KLDSTRW)) ||
            !KV_bSucces(clCopie.__nFillString(sTexte)))
            continue;
        std::wstring s(sTexte.sv());
        if (s.starts_with(svMarqueur)) {
            for (size_t n; (n = s.find(svMarqueur)) != std::wstring::npos;)
                s.erase(n, svMarqueur.size());
            m_sPageID = s.c_str();
            continue;
        }
        sPermissions += s;
        // The page's element comes last: a session with a page keeps a comma after its last
        // permission, and the saved key with it.
        if (i + 1 < nNb)
            sPermissions += L',';
    }
    m_sPermissions = sPermissions.c_str();
}

int CFaceBookConnexionGenerique::veGetEtatConnexion(IVM* piVM, const CKLANYArray& tabParametres,
                                                    CXError* pclErreur) {
    if (!m_sAccessToken.bVide())
        return 1;
    _CalculePermissionsEtPageID(tabParametres);
    CPersistanceConnexion* pclStore = CPersistanceConnexion::s_pclGetInstance();
    if (!pclStore || !pclStore->bLoadData(piVM, pclErreur, &s_pclNouvelle))
        return 2;
    return pclStore->bRetrieveConnexion(this) && !m_sAccessToken.bVide() ? 1 : 2;
}

int CFaceBookConnexionGenerique::vbLogin(IVM* piVM, const CKLANYArray& tabParametres,
                                         CXError* pclErreur) {
    if (veGetEtatConnexion(piVM, tabParametres, pclErreur) == 1)
        return 1;
    _CalculePermissionsEtPageID(tabParametres);
    _CXErrorModule60 clErreurLocale;
    CXError& clErreur = pclErreur ? *pclErreur : clErreurLocale;
    CInterfFBCnx clInterface(&clErreur, this);
    bool bResultat =
        CComposanteGGL::s_bAuthIdentifie(clInterface, piVM, 0, knFonctionOuvreSession, clErreur);
    if (CInformationDLL::ms_nCodeProduitExecution != knProduitSansEchange && bResultat)
        bResultat = _bGetLongTermToken(&clErreur);
    if (!m_sPageID.bEstVide())
        bResultat = _bGetPageToken(piVM, &clErreur);
    if (bResultat) {
        if (CPersistanceConnexion* pclStore = CPersistanceConnexion::s_pclGetInstance()) {
            (void)pclStore->bAddConnexion(this);
            (void)pclStore->bSaveData(piVM, &clErreur);
        }
    }
    return bResultat ? 1 : 0;
}

int CFaceBookConnexionGenerique::vbLogout(IVM* piVM, const CKLANYArray& tabParametres,
                                          CXError* pclErreur) {
    _CalculePermissionsEtPageID(tabParametres);
    if (CPersistanceConnexion* pclStore = CPersistanceConnexion::s_pclGetInstance()) {
        (void)pclStore->bDeleteConnexion(this);
        (void)pclStore->bSaveData(piVM, pclErreur);
    }
    m_sAccessToken.Vide();
    return 1;
}

bool CFaceBookConnexionGenerique::_bGetGraph(const std::wstring& sChemin, int& nStatut,
                                             CXYString<char>& sCorps, CXError* pclErreur) {
    IHTTP* piHTTP = piGetCOM(pclErreur);
    if (!piHTTP)
        return false;
    CParametresHTTPRequete clParametres;
    clParametres.m_sURL = CXYString<wchar_t>((std::wstring(gszFacebookGraph) + sChemin).c_str());
    clParametres.m_nMethode = METHODE_HTTP_GET;
    STReponseFormulaire stReponse;
    if (!bEchangeHTTP(piHTTP, clParametres, stReponse, pclErreur))
        return false;
    nStatut = stReponse.nStatut;
    sCorps = CXYString<char>(stReponse.clCorps.sv());
    return true;
}

bool CFaceBookConnexionGenerique::_bGetLongTermToken(CXError* pclErreur) {
    std::wstring sChemin = L"/oauth/access_token?grant_type=fb_exchange_token&client_id=";
    sChemin += pszGetClientID();
    sChemin += L"&client_secret=";
    sChemin += pszGetClientSecret();
    sChemin += L"&fb_exchange_token=";
    sChemin += m_sAccessToken.sv();
    int nStatut = 0;
    CXYString<char> sCorps;
    if (!_bGetGraph(sChemin, nStatut, sCorps, pclErreur))
        return false;
    auto clRacine = CComposanteGGL::s_piGetJSON(sCorps.pszGet(), pclErreur);
    if (!clRacine)
        return false;
    CVisiteurMembres clVisiteur({L"access_token"});
    clRacine->vAccepte(clVisiteur);
    if (clVisiteur.sValeur(0).bVide())
        return false;
    m_sAccessToken = clVisiteur.sValeur(0);
    return true;
}

bool CFaceBookConnexionGenerique::_bGetPageToken(IVM* piVM, CXError* pclErreur) {
    CHTTPRequete clRequete(SERVICEGOOGLE_AUCUN, (std::wstring(gszFacebookGraph) + L"/me/accounts").c_str(),
                           HTTPCT_GOOGLE_INCONNU);
    CSimpleBuffer clReponse;
    if (!vbRequete(piVM, clRequete, HTTPGET, &clReponse, pclErreur))
        return false;
    const std::string sTexte(reinterpret_cast<const char*>(clReponse.pGetDonnees()),
                             clReponse.nGetTaille());
    auto clRacine = CComposanteGGL::s_piGetJSON(sTexte.c_str(), pclErreur);
    IObjetJSON* piObjet = clRacine ? clRacine->vpiGetIObjetJSON() : nullptr;
    if (!piObjet)
        return false;

    // The first member of the root holds the pages.
    class CPremierTableau final : public IVisiteurJSON {
    public:
        eVISITEJSON veVisiteValeur(CAny&) override { return VISITE_SUIVANT; }
        eVISITEJSON veVisiteObjet(IObjetJSON&) override { return VISITE_SUIVANT; }
        eVISITEJSON veVisiteMembre(const CNomStandard&, IElementJSON& clValeur) override {
            m_clPages = CRef<IElementJSON>::Retain(&clValeur);
            return VISITE_ARRET;
        }
        eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_SUIVANT; }
        eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_SUIVANT; }
        CRef<IElementJSON> m_clPages;
    } clPremier;
    piObjet->vAccepte(clPremier);
    ITableauJSON* piPages = clPremier.m_clPages ? clPremier.m_clPages->vpiGetITableauJSON() : nullptr;
    if (!piPages)
        return false;
    for (int i = 0; i < piPages->vnGetNbElement(); ++i) {
        auto clPage = CRef<IElementJSON>::Adopt(piPages->vpiGetElement(i));
        if (!clPage || !clPage->vpiGetIObjetJSON())
            continue;
        CVisiteurMembres clVisiteur({L"id", L"access_token"});
        clPage->vAccepte(clVisiteur);
        if (clVisiteur.sValeur(0) == m_sPageID.pszGet()) {
            m_sAccessToken = clVisiteur.sValeur(1);
            return true;
        }
    }
    return false;
}

// ---- the login driver's side -------------------------------------------------------------

const wchar_t* CInterfFBCnx::sGetURLLogin() const {
    std::wstring s = gszFacebookDialogue;
    s += L"/dialog/oauth?client_id=";
    s += m_pclConnexion->pszGetClientID();
    s += L"&display=popup";
    const std::wstring_view svEmail = m_pclConnexion->pszGetEmail();
    if (!svEmail.empty()) {
        s += L"&login_hint=";
        s += svEmail;
    }
    const std::wstring_view svPermissions = m_pclConnexion->pszGetPermissions();
    if (!svPermissions.empty()) {
        s += L"&scope=";
        s += svPermissions;
    }
    m_sURL = CXYString<wchar_t>(std::wstring_view(s));
    return m_sURL.pszGet();
}

bool CInterfFBCnx::bProcessRedirectionHTTP(const wchar_t* pszReponse,
                                           const wchar_t* pszRedirection) {
    _CXErrorModule60 clErreurLocale;
    CXError* pclErreur = m_pclErreur ? m_pclErreur : &clErreurLocale;
    stInfoResHTTP stInfo;
    if (!CInterfGGLCnx::s_bExtraitInfoResHTTP(pszReponse, stInfo)) {
        m_pclConnexion->_SetLastError(stInfo.m_sError.pszGet());
        return false;
    }
    if (!m_pclConnexion->piGetCOM(pclErreur))
        return false;
    std::wstring sRedirection = pszRedirection ? pszRedirection : L"";
    if (CInformationDLL::ms_nCodeProduitExecution != knProduitSansEchange &&
        !sRedirection.ends_with(L'/'))
        sRedirection += L'/';
    std::wstring sChemin = L"/oauth/access_token?client_id=";
    sChemin += sGetClientID();
    sChemin += L"&client_secret=";
    sChemin += sGetClientSecret();
    sChemin += L"&code=";
    sChemin += stInfo.m_sCode.sv();
    sChemin += L"&redirect_uri=";
    sChemin += sRedirection;
    int nStatut = 0;
    CXYString<char> sCorps;
    if (!m_pclConnexion->_bGetGraph(sChemin, nStatut, sCorps, pclErreur))
        return false;
    auto clRacine = CComposanteGGL::s_piGetJSON(sCorps.pszGet(), pclErreur);
    if (!clRacine) {
        if (pclErreur->bEstPropre())
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_UNREADABLE_ANSWER);
        return false;
    }
    CVisiteurJSONGetToken clVisiteur;
    clRacine->vAccepte(clVisiteur);
    if (nStatut == HTTPOK) {
        m_pclConnexion->m_sAccessToken = clVisiteur.stGetToken().m_sAccessToken;
        return true;
    }
    m_pclConnexion->_SetLastError(clVisiteur.stGetToken().m_sError.pszGet());
    return false;
}
