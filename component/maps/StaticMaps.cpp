// The two map functions of the connection: the Static Maps image and the address search of the
// Geocoding service. Both services take an API key in the query instead of a token: the key is
// the host process's setting KVGGL_GOOGLE_API_KEY, and a request goes out without one when it
// is not set (the service then refuses it).
#include "connection/GoogleConnexion.h"

#include "frame/FctEntonnoir.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"
#include "maps/GoogleParametre.h"
#include "maps/GooglePoint.h"

#include "Any.h"
#include "HTTPService.h"
#include "JSONService.h"
#include "KVResult.h"
#include "Ref.h"
#include "Resources.h"
#include "Utf8.h"
#include "VM.h"
#include "XError.h"

#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr wchar_t gszGoogleMaps[] = L"https://maps.googleapis.com";

// What the texts of this file's errors take: KVERR_MAP_UNAVAILABLE, the map service's refusal
// (%1 the status label, %2 what it said); KVERR_GEOCODING_FAILED, the geocoding service's (%1
// its status, %2 what it said); KVERR_ADDRESS_NOT_FOUND (%1 the address); KVERR_MAP_SIZE, a
// side out of 1 to 640 pixels (%1!d! the width, %2!d! the height); KVERR_ZOOM, out of 0 to 21
// (%1!d! the zoom); KVERR_MAP_PARAMETERS (%1 why).

constexpr int knTailleMax = 640;
constexpr int knZoomMax = 21;

CXError* s_pclErreur(CXError* pclErreur, CXError& clLocale) {
    return pclErreur ? pclErreur : &clLocale;
}

// The text URL-encoded by the host. The host keeps "&": a value encodes it too, so as not to
// cut the query; a text of whole parameters (bParametres) keeps it as their separator. An
// empty text stays empty.
bool s_bEncode(IVM* piVM, CXError* pclErreur, std::wstring_view svValeur, std::wstring& sOut,
               bool bParametres = false) {
    sOut.clear();
    if (svValeur.empty())
        return true;
    CXYString<wchar_t> sEncode;
    if (!FctEntonnoir::bUrlEncode(piVM, pclErreur, CXYString<wchar_t>(svValeur), &sEncode))
        return false;
    for (wchar_t c : sEncode.sv()) {
        if (c == L'&' && !bParametres)
            sOut += L"%26";
        else
            sOut += c;
    }
    return true;
}

// "&key=<key>" from the process's setting, "" without one.
bool s_bAjouteCle(IVM* piVM, CXError* pclErreur, std::wstring& sURL) {
    const char* pszCle = std::getenv("KVGGL_GOOGLE_API_KEY");
    if (!pszCle || !*pszCle)
        return true;
    std::wstring sCle;
    if (!s_bEncode(piVM, pclErreur, KVUtf8::VersWide(pszCle), sCle))
        return false;
    sURL += L"&key=";
    sURL += sCle;
    return true;
}

// One GET on the key road: no bearer goes to these services. The answer whatever its status;
// false with the host's cause when no exchange took place.
bool s_bEnvoie(CGoogleConnexion& clConnexion, IVM* piVM, const std::wstring& sURL,
               CHTTPResponse& clReponse, CXError* pclErreur) {
    IHTTP* piHTTP = clConnexion.piGetCOM(pclErreur);
    if (!piHTTP)
        return false;
    CParametresHTTPRequete clParametres;
    clParametres.m_sURL = CXYString<wchar_t>(std::wstring_view(sURL));
    clParametres.m_nMethode = METHODE_HTTP_GET;
    piHTTP->vSetVM(piVM, 0);
    if (!piHTTP->vbExecute(clParametres, 0)) {
        if (CXError* pclHote = piHTTP->vpiGetErreur())
            pclErreur->Copy(pclHote);
        return false;
    }
    clReponse = clConnexion._clGetHTTPResponse(piVM, pclErreur);
    return pclErreur->bEstPropre();
}

// The refusal of a service, with the status label and its text.
void s_ErreurService(unsigned nCode, const wchar_t* pszStatut, const CHTTPResponse& clReponse,
                     CXError* pclErreur) {
    CXYString<wchar_t> sTexte;
    (void)clReponse.bGetMessage(sTexte);
    pclErreur->SetUserError(&gstMyModuleInfo60, nCode, pszStatut, sTexte.pszGet());
}

// ---- the map ----------------------------------------------------------------------------

struct STCarte {
    STCarte(int nLargeurImage, int nHauteurImage, int nZoomCarte, CGoogleParametre* pcl)
        : nLargeur(nLargeurImage), nHauteur(nHauteurImage), nZoom(nZoomCarte), pclParametres(pcl) {}

    std::wstring sCentre; // already encoded; empty: framed by the parameters
    const CGooglePoint* pclCentre = nullptr; // a centre with coordinates, for the visible zone
    int nLargeur;
    int nHauteur;
    int nZoom;
    CGoogleParametre* pclParametres;
};

CKLMemoImage s_clCarte(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx, CXError* pclErreur,
                       const STCarte& st) {
    if (st.nLargeur < 1 || st.nLargeur > knTailleMax || st.nHauteur < 1 ||
        st.nHauteur > knTailleMax) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_MAP_SIZE, st.nLargeur, st.nHauteur);
        return {};
    }
    const bool bSansZoom = st.sCentre.empty() && st.nZoom == CGoogleConnexion::knZoomCarteAucun;
    if (!bSansZoom && (st.nZoom < 0 || st.nZoom > knZoomMax)) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_ZOOM, st.nZoom);
        return {};
    }
    // Without a centre, the markers and the path are what the service frames.
    if (st.sCentre.empty() && st.pclParametres->clGetMarqueurs().nGetNbElement() == 0 &&
        st.pclParametres->clGetChemin().nGetNbElement() == 0) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_MAP_PARAMETERS,
                                L"without a centre, the map needs a marker or a path to frame");
        return {};
    }

    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    std::wstring sURL = std::wstring(gszGoogleMaps) + L"/maps/api/staticmap?";
    if (!st.sCentre.empty())
        sURL += L"center=" + st.sCentre + L"&";
    if (!bSansZoom)
        sURL += L"zoom=" + std::to_wstring(st.nZoom) + L"&";
    sURL += L"size=" + std::to_wstring(st.nLargeur) + L"x" + std::to_wstring(st.nHauteur);
    // No argument names another map type: the plan.
    sURL += L"&maptype=roadmap";
    if (st.pclParametres) {
        std::wstring s;
        if (!s_bEncode(piVM, pclErreur, static_cast<const wchar_t*>(*st.pclParametres), s, true))
            return {};
        if (!s.empty())
            sURL += L"&" + s;
        CTString sZone;
        if (st.pclCentre &&
            st.pclParametres->bGetZoneVisible(st.pclCentre->dGetLatitude(),
                                              st.pclCentre->dGetLongitude(), sZone)) {
            if (!s_bEncode(piVM, pclErreur, sZone.sv(), s))
                return {};
            sURL += L"&visible=" + s;
        }
    }
    if (!s_bAjouteCle(piVM, pclErreur, sURL))
        return {};

    CHTTPResponse clReponse;
    if (!s_bEnvoie(clConnexion, piVM, sURL, clReponse, pclErreur))
        return {};
    const eHTTPCODE eCode = clReponse.eGetCodeRetour();
    if (eCode == HTTPOK) {
        CKLBIN clOctets;
        (void)clReponse.bGetMessage(clOctets);
        return CKLMemoImage::s_Octets(std::move(clOctets));
    }
    if (eCode == HTTPBadRequest) {
        CXYString<wchar_t> sTexte;
        (void)clReponse.bGetMessage(sTexte);
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_MAP_PARAMETERS, sTexte.pszGet());
    } else {
        s_ErreurService(KVERR_MAP_UNAVAILABLE, CHTTPResponse::s_pszGetLibelle(eCode), clReponse,
                        pclErreur);
    }
    return {};
}

// ---- the address search ------------------------------------------------------------------

// The members of one JSON object, each held, without walking into them.
class CVisitJSONMembres final : public IVisiteurJSON {
public:
    // The member of that name of the object pi, null when pi is no object or has none.
    static CRef<IElementJSON> s_Membre(IElementJSON* pi, std::wstring_view svNom) {
        IObjetJSON* piObjet = pi ? pi->vpiGetIObjetJSON() : nullptr;
        if (!piObjet)
            return {};
        CVisitJSONMembres clVisiteur;
        piObjet->vAccepte(clVisiteur);
        for (auto& [sNom, clValeur] : clVisiteur.m_tabMembres)
            if (sNom == svNom)
                return clValeur;
        return {};
    }

    eVISITEJSON veVisiteValeur(CAny&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteObjet(IObjetJSON&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON& clValeur) override {
        m_tabMembres.emplace_back(std::wstring(clNom.sv()), CRef<IElementJSON>::Retain(&clValeur));
        return VISITE_SUIVANT;
    }
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_SUIVANT; }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_SUIVANT; }

private:
    std::vector<std::pair<std::wstring, CRef<IElementJSON>>> m_tabMembres;
};

std::wstring s_sTexte(IElementJSON* pi) {
    CAny clValeur;
    CXYString<wchar_t> s;
    if (pi && pi->vbGetValeur(clValeur) && clValeur.nGetType() == KVTYPE_KLDSTRW)
        (void)clValeur.__nFillString(s);
    return std::wstring(s.sv());
}

bool s_bReel(IElementJSON* pi, double& d) {
    CAny clValeur;
    return pi && pi->vbGetValeur(clValeur) &&
           (clValeur.nGetType() == KVTYPE_KLI8 || clValeur.nGetType() == KVTYPE_KLR8) &&
           KV_bSucces(clValeur.nGetREAL(&d));
}

} // namespace

CKLMemoImage CGoogleConnexion::GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur,
                                                CGooglePoint* pclCentre, int nLargeur,
                                                int nHauteur, int nZoom,
                                                CGoogleParametre* pclParametres) {
    _CXErrorModule60 clLocale;
    CXError* pcl = s_pclErreur(pclErreur, clLocale);
    if (!pclCentre) {
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 2);
        return {};
    }
    STCarte st(nLargeur, nHauteur, nZoom, pclParametres);
    st.sCentre = static_cast<const wchar_t*>(*pclCentre); // digits, a dot, a comma
    st.pclCentre = pclCentre;
    return s_clCarte(*this, pclCtx, pcl, st);
}

CKLMemoImage CGoogleConnexion::GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur,
                                                const wchar_t* pszAdresse, int nLargeur,
                                                int nHauteur, int nZoom,
                                                CGoogleParametre* pclParametres) {
    _CXErrorModule60 clLocale;
    CXError* pcl = s_pclErreur(pclErreur, clLocale);
    STCarte st(nLargeur, nHauteur, nZoom, pclParametres);
    if (!pszAdresse || !*pszAdresse) {
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_ADDRESS_NOT_FOUND, L"");
        return {};
    }
    if (!s_bEncode(CCtxInfo::s_piGetVM(pclCtx), pcl, pszAdresse, st.sCentre))
        return {};
    return s_clCarte(*this, pclCtx, pcl, st);
}

CKLMemoImage CGoogleConnexion::GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur,
                                                int nLargeur, int nHauteur, int nZoom,
                                                CGoogleParametre* pclParametres) {
    _CXErrorModule60 clLocale;
    CXError* pcl = s_pclErreur(pclErreur, clLocale);
    if (!pclParametres) {
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED,
                          nZoom == knZoomCarteAucun ? 4 : 5);
        return {};
    }
    return s_clCarte(*this, pclCtx, pcl, STCarte(nLargeur, nHauteur, nZoom, pclParametres));
}

IObjetBase* CGoogleConnexion::GglAdresseVersCoordonnees(CCtxInfo* pclCtx, CXError* pclErreur,
                                                        const wchar_t* pszAdresse,
                                                        const wchar_t* pszRegion) {
    _CXErrorModule60 clLocale;
    CXError* pcl = s_pclErreur(pclErreur, clLocale);
    const std::wstring_view svAdresse = pszAdresse ? pszAdresse : L"";
    if (svAdresse.empty()) {
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_ADDRESS_NOT_FOUND, L"");
        return nullptr;
    }
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    std::wstring sURL = std::wstring(gszGoogleMaps) + L"/maps/api/geocode/json?address=";
    std::wstring s;
    if (!s_bEncode(piVM, pcl, svAdresse, s))
        return nullptr;
    sURL += s;
    if (pszRegion && *pszRegion) {
        if (!s_bEncode(piVM, pcl, pszRegion, s))
            return nullptr;
        sURL += L"&region=" + s;
    }
    if (!s_bAjouteCle(piVM, pcl, sURL))
        return nullptr;

    CHTTPResponse clReponse;
    if (!s_bEnvoie(*this, piVM, sURL, clReponse, pcl))
        return nullptr;
    if (clReponse.eGetCodeRetour() != HTTPOK) {
        s_ErreurService(KVERR_GEOCODING_FAILED,
                        CHTTPResponse::s_pszGetLibelle(clReponse.eGetCodeRetour()), clReponse, pcl);
        return nullptr;
    }
    auto clRacine = s_piParseJSONResponse(clReponse, pcl, HTTPOK);
    if (!clRacine)
        return nullptr;

    // The service answers 200 whatever it found; its status says the rest.
    const std::wstring sStatut =
        s_sTexte(CVisitJSONMembres::s_Membre(clRacine.pGet(), L"status").pGet());
    if (sStatut == L"ZERO_RESULTS") {
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_ADDRESS_NOT_FOUND, pszAdresse);
        return nullptr;
    }
    CRef<IElementJSON> clPremier;
    if (auto clResultats = CVisitJSONMembres::s_Membre(clRacine.pGet(), L"results")) {
        if (ITableauJSON* piTableau = clResultats->vpiGetITableauJSON())
            clPremier = CRef<IElementJSON>::Adopt(piTableau->vpiGetElement(0));
    }
    const auto clLieu = CVisitJSONMembres::s_Membre(
        CVisitJSONMembres::s_Membre(clPremier.pGet(), L"geometry").pGet(), L"location");
    double dLatitude = 0, dLongitude = 0;
    if (sStatut != L"OK" ||
        !s_bReel(CVisitJSONMembres::s_Membre(clLieu.pGet(), L"lat").pGet(), dLatitude) ||
        !s_bReel(CVisitJSONMembres::s_Membre(clLieu.pGet(), L"lng").pGet(), dLongitude)) {
        const std::wstring sMessage =
            s_sTexte(CVisitJSONMembres::s_Membre(clRacine.pGet(), L"error_message").pGet());
        pcl->SetUserError(&gstMyModuleInfo60, KVERR_GEOCODING_FAILED,
                          sStatut.empty() ? L"?" : sStatut.c_str(), sMessage.c_str());
        return nullptr;
    }
    CGooglePoint* pclPoint = CGooglePoint::s_pclCreeObjet(pclCtx, pcl);
    if (!pclPoint)
        return nullptr;
    pclPoint->SetLatitude(pclCtx, pcl, dLatitude);
    pclPoint->SetLongitude(pclCtx, pcl, dLongitude);
    // The VM takes the first reference.
    return pclPoint->piGetObjetBase();
}
