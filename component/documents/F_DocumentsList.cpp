// The documents' script functions: the Drive listing with its search expression, the upload
// in one resumable session, the download to a disk file, the delete.
#include "connection/GoogleConnexion.h"
#include "connection/GoogleEndpoints.h"
#include "connection/VisitJSONInstancieTableau.h"
#include "documents/GoogleDocument.h"
#include "foundation/SimpleBuffer.h"
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"

#include "Any.h"
#include "JSONService.h"
#include "KLBIN.h"
#include "ObjectInterfaces.h"
#include "Ref.h"
#include "Resources.h"
#include "Utf8.h"
#include "VM.h"
#include "XError.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace {

constexpr wchar_t s_szDocuments[] = L"/drive/v2/files";
constexpr wchar_t s_szEnvoi[] = L"/upload/drive/v2/files?uploadType=resumable";
constexpr wchar_t s_szDossier[] = L"application/vnd.google-apps.folder";

constexpr unsigned knFormatTelechargement = 7068;

// The kinds of the mask, in the order their filters are joined.
struct STFiltre {
    int nBit;
    const wchar_t* pszTexte;
};
constexpr STFiltre gtabFiltres[] = {
    {1, L"mimeType='application/vnd.google-apps.document' or "
        L"mimeType='application/vnd.oasis.opendocument.text' or "
        L"mimeType='application/vnd.openxmlformats-officedocument.wordprocessingml.document' or "
        L"mimeType='application/msword'"},
    {4, L"mimeType='application/vnd.google-apps.presentation' or "
        L"mimeType='application/vnd.oasis.opendocument.presentation' or "
        L"mimeType='application/vnd.ms-powerpoint' or "
        L"mimeType='application/vnd.openxmlformats-officedocument.presentationml.presentation'"},
    {2, L"mimeType='application/vnd.google-apps.spreadsheet' or "
        L"mimeType='application/vnd.oasis.opendocument.spreadsheet' or "
        L"mimeType='application/vnd.ms-excel' or "
        L"mimeType='application/vnd.openxmlformats-officedocument.spreadsheetml.sheet'"},
};
constexpr int knBitSuivi = 8;

std::wstring s_sAPI(std::wstring_view svChemin) {
    std::wstring s = gszGoogleAPI;
    s += svChemin;
    return s;
}

bool s_bVide(const wchar_t* psz) { return !psz || !*psz; }

using CVisiteDocuments = CVisitJSONInstancieTableau<CGoogleDocument>;

// The documents of a listing with this search expression, or null with the error.
std::unique_ptr<CVisiteDocuments> s_pclListe(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                                             CXError* pclErreur, const std::wstring& sExpression) {
    CHTTPRequete clRequete(SERVICEGOOGLE_DOCUMENTS, s_sAPI(s_szDocuments).c_str(), HTTPCT_JSON);
    clRequete.AjouteParametre(L"q", sExpression.c_str());
    CHTTPResponse clReponse =
        clConnexion.clExecuteRequeteCOM(CCtxInfo::s_piGetVM(pclCtx), clRequete, HTTPGET, pclErreur);
    if (!pclErreur->bEstPropre())
        return nullptr;
    auto clRacine = CGoogleConnexion::s_piParseJSONResponse(clReponse, pclErreur, HTTPOK);
    if (!clRacine)
        return nullptr;
    auto pclVisiteur = std::make_unique<CVisiteDocuments>(pclErreur, pclCtx);
    clRacine->vAccepte(*pclVisiteur);
    return pclVisiteur;
}

// The path of a string-or-buffer argument: narrow text is UTF-8, its last byte dropped when
// it is the terminator the host may leave there.
std::wstring s_sChemin(const STManipAUB& st) {
    if (st.nType != KVTYPE_KLDSTRA)
        return std::wstring(static_cast<const wchar_t*>(st.pGetDonnees()),
                            st.nGetTaille() / sizeof(wchar_t));
    std::string_view sv = st.svOctets();
    if (!sv.empty() && sv.back() == '\0')
        sv.remove_suffix(1);
    return KVUtf8::VersWide(sv);
}

} // namespace

// ---- the listing -------------------------------------------------------------------------

// The folder part of the expression: every folder of that name as a parent, the folder itself
// (and any subfolder of the same name) left out; "" when no folder bears the name.
static std::wstring s_sDossiers(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                                CXError* pclErreur, const wchar_t* pszDossier) {
    // The name goes as it stands: a quote in it breaks the expression, and the server says so.
    std::wstring sRequete = L"mimeType='";
    sRequete += s_szDossier;
    sRequete += L"' and title='";
    sRequete += pszDossier;
    sRequete += L"'";
    std::unique_ptr<CVisiteDocuments> pclDossiers =
        s_pclListe(clConnexion, pclCtx, pclErreur, sRequete);
    std::wstring s;
    if (!pclDossiers)
        return s;
    for (CGoogleDocument* pcl : pclDossiers->tabGet()) {
        if (!s.empty())
            s += L" or ";
        s += L"'";
        s += pcl->sGetIdentifiant().sv();
        s += L"' in parents";
    }
    if (s.empty())
        return s;
    s.insert(0, L"(");
    s += L") and (mimeType!='";
    s += s_szDossier;
    s += L"' or title!='";
    s += pszDossier;
    s += L"')";
    return s;
}

IKLTableau* CGoogleConnexion::GglListeDocument(CCtxInfo* pclCtx, CXError* pclErreur, int nType,
                                               const wchar_t* pszDossier,
                                               const wchar_t* pszRequete) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    const auto Vide = [&] {
        return CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur,
                                                        CGoogleDocument::ms_piType);
    };
    if (!__bCheckAndLogService(SERVICEGOOGLE_DOCUMENTS, piVM, pclErreur))
        return Vide().pDetach();

    std::wstring sExpression;
    if (nType != 0 || !s_bVide(pszDossier)) {
        for (const STFiltre& st : gtabFiltres) {
            if (!(nType & st.nBit))
                continue;
            if (!sExpression.empty())
                sExpression += L" or ";
            sExpression += st.pszTexte;
        }
        if (!sExpression.empty())
            sExpression = L"(" + sExpression + L")";
        if (nType & knBitSuivi) {
            if (!sExpression.empty())
                sExpression += L" and ";
            sExpression += L"starred=true";
        }
        if (!s_bVide(pszDossier)) {
            const std::wstring sDossiers = s_sDossiers(*this, pclCtx, pclErreur, pszDossier);
            if (sDossiers.empty())
                return Vide().pDetach(); // no folder of that name: nothing more is asked
            if (!sExpression.empty())
                sExpression += L" and ";
            sExpression += L"(" + sDossiers + L")";
        }
    }
    if (!s_bVide(pszRequete)) {
        if (sExpression.empty())
            sExpression = pszRequete;
        else
            sExpression = L"(" + sExpression + L") and (" + pszRequete + L")";
    }
    if (!sExpression.empty())
        sExpression = L"(" + sExpression + L") and ";
    sExpression += L"trashed=false";

    std::unique_ptr<CVisiteDocuments> pclDocuments = s_pclListe(*this, pclCtx, pclErreur, sExpression);
    if (!pclDocuments)
        return nullptr;
    const CXArray<CGoogleDocument*>& tab = pclDocuments->tabGet();
    auto clTableau = Vide();
    if (!clTableau || !clTableau->vbRedimensionne(static_cast<int>(tab.nGetNbElement()), pclErreur))
        return nullptr;
    for (size_t i = 0; i < tab.nGetNbElement(); ++i) {
        CAny clValeur;
        clValeur.SetObjet(tab[i]->piGetObjetBase(), KVTYPE_KLDINO);
        if (!clTableau->vbSetElement(static_cast<int>(i), clValeur, pclErreur))
            return nullptr;
    }
    return clTableau.pDetach();
}

// ---- upload ------------------------------------------------------------------------------

bool CGoogleConnexion::GglEnvoieDocument(CCtxInfo* pclCtx, CXError* pclErreur,
                                         STManipAUB stFichier, CXYString<wchar_t>,
                                         CXYString<wchar_t>) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_DOCUMENTS, piVM, pclErreur))
        return false;
    const std::wstring sChemin = s_sChemin(stFichier);
    const std::string sCheminUtf8 = KVUtf8::VersUtf8(sChemin);
    struct stat stInfo {};
    if (sChemin.empty() || ::stat(sCheminUtf8.c_str(), &stInfo) != 0) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_FILE_NOT_FOUND, sChemin.c_str());
        return false;
    }
    const std::filesystem::path clChemin(sCheminUtf8);
    const std::wstring sNom = KVUtf8::VersWide(clChemin.filename().string());
    const std::wstring sExtension = KVUtf8::VersWide(clChemin.extension().string());
    const eHTTPCONTENTTYPE eType = CHTTPRequete::s_eGetContentType(sExtension.c_str());
    if (eType == HTTPCT_GOOGLE_INCONNU) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_UNKNOWN_CONTENT_TYPE, sChemin.c_str());
        return false;
    }
    // The size is read as a signed 32-bit number: a directory, or a file past 2 GB, is refused
    // here, before any request.
    std::unique_ptr<FILE, int (*)(FILE*)> clFichier(std::fopen(sCheminUtf8.c_str(), "rb"),
                                                    &std::fclose);
    if (!clFichier || !S_ISREG(stInfo.st_mode) || stInfo.st_size > INT_MAX) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_FILE_NOT_READABLE, sChemin.c_str());
        return false;
    }
    const int nTaille = static_cast<int>(stInfo.st_size);
    CSimpleBuffer clOctets;
    if (!clOctets.bSetTaille(static_cast<size_t>(nTaille))) {
        pclErreur->SetErrorNoMemory();
        return false;
    }
    if (nTaille > 0 && std::fread(clOctets.pGetDonnees(), 1, static_cast<size_t>(nTaille),
                                  clFichier.get()) != static_cast<size_t>(nTaille)) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_FILE_NOT_READABLE, sChemin.c_str());
        return false;
    }
    clFichier.reset();
    const wchar_t* pszMIME = CHTTPRequete::s_pszGetMIMEType(eType);

    // The session: its start carries the title and announces the type and the length.
    CHTTPRequete clDebut(SERVICEGOOGLE_DOCUMENTS, s_sAPI(s_szEnvoi).c_str(), HTTPCT_JSON);
    clDebut.SetContentType(L"application/json; charset=UTF-8");
    clDebut.AjouteHeader(L"X-Upload-Content-Type", pszMIME);
    clDebut.AjouteHeader(L"X-Upload-Content-Length", std::to_wstring(nTaille).c_str());
    // The title is not escaped: a quote in the name makes a body the server refuses.
    const std::string sCorps = "{\"title\":\"" + KVUtf8::VersUtf8(sNom) + "\"}";
    clDebut.AjouteDonnees(reinterpret_cast<const unsigned char*>(sCorps.data()), sCorps.size());
    clDebut.AjouteHeader(L"Content-Length", std::to_wstring(sCorps.size()).c_str());
    CHTTPResponse clReponse = clExecuteRequeteCOM(piVM, clDebut, HTTPPOST, pclErreur);
    if (clReponse.eGetCodeRetour() != HTTPOK) {
        if (pclErreur->bEstPropre())
            clReponse.SetErreurStatut(pclErreur);
        return false;
    }
    CXYString<wchar_t> sSession;
    (void)clReponse.bExtraitEntete(L"Location", sSession);

    // The whole file in one PUT to the session's address.
    CHTTPRequete clDonnees(SERVICEGOOGLE_DOCUMENTS, sSession.pszGet(), eType);
    clDonnees.AjouteHeader(L"Content-Length", std::to_wstring(nTaille).c_str());
    clDonnees.AjouteHeader(L"Content-Type", pszMIME);
    if (nTaille > 0)
        clDonnees.AjouteDonnees(clOctets.pGetDonnees(), static_cast<unsigned long>(nTaille));
    clReponse = clExecuteRequeteCOM(piVM, clDonnees, HTTPPUT, pclErreur);
    const eHTTPCODE eCode = clReponse.eGetCodeRetour();
    if (eCode == HTTPOK || eCode == HTTPCreated)
        return true;
    // A 308 asks for the rest of a partial upload: nothing here resumes one.
    if (pclErreur->bEstPropre())
        clReponse.SetErreurStatut(pclErreur);
    return false;
}

// ---- download ----------------------------------------------------------------------------

bool CGoogleConnexion::GglRecupereDocument(CCtxInfo* pclCtx, CXError* pclErreur,
                                           CGoogleDocument* pclDocument,
                                           CXYString<wchar_t> sFichier) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_DOCUMENTS, piVM, pclErreur))
        return false;
    if (!pclDocument || pclDocument->sGetURLTelechargement().bVide()) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_NO_DOWNLOAD_ADDRESS);
        return false;
    }
    CHTTPRequete clRequete(SERVICEGOOGLE_DOCUMENTS, pclDocument->sGetURLTelechargement().pszGet(),
                           HTTPCT_TEXTE);
    CHTTPResponse clReponse = clExecuteRequeteCOM(piVM, clRequete, HTTPGET, pclErreur);
    if (!pclErreur->bEstPropre())
        return false;
    if (clReponse.eGetCodeRetour() != HTTPOK) {
        CXYString<wchar_t> sTexte;
        (void)clReponse.bGetMessage(sTexte);
        CTString sMessage;
        DLLRES_bFormatMessage(&gstMyModuleInfo60, knFormatTelechargement, &sMessage,
                              CHTTPResponse::s_pszGetLibelle(clReponse.eGetCodeRetour()),
                              sTexte.pszGet());
        pclErreur->SetUserErrorMessage(&gstMyModuleInfo60, KVERR_DOWNLOAD_REFUSED,
                                       sMessage.pszGet());
        return false;
    }
    CKLBIN clOctets;
    if (!clReponse.bGetMessage(clOctets))
        return false;

    // Written beside the target, then moved onto it: a failure leaves no short file that would
    // pass for the whole document.
    const std::filesystem::path clCible(KVUtf8::VersUtf8(sFichier.sv()));
    std::error_code ec;
    if (clCible.has_parent_path())
        std::filesystem::create_directories(clCible.parent_path(), ec);
    const std::string sTemporaire = clCible.string() + ".part";
    bool bEcrit = false;
    if (FILE* pf = std::fopen(sTemporaire.c_str(), "wb")) {
        bEcrit = std::fwrite(clOctets.pGetDonnees(), 1, clOctets.nGetTaille(), pf) ==
                 clOctets.nGetTaille();
        bEcrit = std::fclose(pf) == 0 && bEcrit;
        bEcrit = bEcrit && std::rename(sTemporaire.c_str(), clCible.c_str()) == 0;
        if (!bEcrit)
            std::remove(sTemporaire.c_str());
    }
    if (!bEcrit)
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_FILE_NOT_WRITTEN, sFichier.pszGet());
    return bEcrit;
}

// ---- delete ------------------------------------------------------------------------------

bool CGoogleConnexion::GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur,
                                   CGoogleDocument* pclDocument) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_DOCUMENTS, piVM, pclErreur))
        return false;
    if (!pclDocument || pclDocument->sGetIdentifiant().bVide()) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_EMPTY_ID, 2);
        return false;
    }
    std::wstring sURL = s_sAPI(s_szDocuments);
    sURL += L'/';
    sURL += pclDocument->sGetIdentifiant().sv();
    CHTTPRequete clRequete(SERVICEGOOGLE_DOCUMENTS, sURL.c_str(), HTTPCT_TEXTE);
    CHTTPResponse clReponse = clExecuteRequeteCOM(piVM, clRequete, HTTPDELETE, pclErreur);
    const eHTTPCODE eCode = clReponse.eGetCodeRetour();
    if (eCode == HTTPOK || eCode == HTTPNoContent)
        return true;
    if (pclErreur->bEstPropre())
        clReponse.SetErreurStatut(pclErreur);
    return false;
}

#define KLL_METHODES_CGoogleConnexion_GglListeDocument KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglEnvoieDocument KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglRecupereDocument KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglSupprime_4 KLL_OUI
#include "frame/KllMethodStubs.h"
