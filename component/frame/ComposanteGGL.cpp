#include "ComposanteGGL.h"

#include "frame/InterfAuthentification.h"
#include "frame/KllBarriere.h"

#include <utility>

#include "Any.h"
#include "HTTPService.h"
#include "InformationDLL.h"
#include "ImageService.h"
#include "JSONService.h"
#include "LibShop.h"
#include "LoginService.h"
#include "ModuleInfo.h"
#include "ObjectInterfaces.h"
#include "Ref.h"
#include "VM.h"
#include "XErrorModule60.h"
#include "XMLService.h"

#include <cstring>
#include <iterator>
#include <string>

IGestionnaireXML* CComposanteGGL::ms_piGestionXML = nullptr;
IContenuJSON* CComposanteGGL::ms_piContenuJSON = nullptr;

namespace {

// Version figures the requests were built for; the host's registry may hold them to its own.
enum eCOMPOSANTEHOTE : int {
    COMPOSANTE_HTTP = 105,
    COMPOSANTE_JSON = 563,
    COMPOSANTE_XML = 10,
    COMPOSANTE_IMAGE = 1,
};

// Every service is a counted interface derived from the root alone.
template <class I> I* piService(IInterfaceObjetBase* pi) { return static_cast<I*>(pi); }

// The shared services are fetched at first use and kept; a failed fetch is retried next time.
IGestionnaireXML* piGestionXML(CXError* pclErreur) {
    if (!CComposanteGGL::ms_piGestionXML && CInformationDLL::ms_piLibShop) {
        CComposanteGGL::ms_piGestionXML = piService<IGestionnaireXML>(
            CInformationDLL::ms_piLibShop->piGetInterfaceCompat(COMPOSANTE_XML, 4, 10, 1,
                                                                L"GestionnaireXML",
                                                                knLibrairieGGL, pclErreur));
    }
    return CComposanteGGL::ms_piGestionXML;
}

IContenuJSON* piContenuJSON(CXError* pclErreur) {
    if (!CComposanteGGL::ms_piContenuJSON && CInformationDLL::ms_piLibShop) {
        CComposanteGGL::ms_piContenuJSON = piService<IContenuJSON>(
            CInformationDLL::ms_piLibShop->piGetInterface(COMPOSANTE_JSON, 4, L"ContenuJSON",
                                                          pclErreur));
    }
    return CComposanteGGL::ms_piContenuJSON;
}

// The script names of the functions by row, as the name block gives them to the host.
constexpr const wchar_t* gtabNomFonction[] = {
#define KLL_FUNCTION(nNumero, Fonction, Famille) L## #Fonction,
#define KLL_FUNCTION_AGAIN(nNumero, Fonction, Famille) L## #Fonction,
#include "frame/Functions.def"
};

// The name of the function of row nFonction; "" out of the table.
const wchar_t* s_pszNomFonction(int nFonction) {
    return nFonction >= 0 && static_cast<size_t>(nFonction) < std::size(gtabNomFonction)
               ? gtabNomFonction[nFonction]
               : L"";
}

template <class I> void Libere(I*& pi) {
    if (pi) pi->vRelease();
    pi = nullptr;
}

} // namespace

CComposanteGGL::~CComposanteGGL() = default;

int CComposanteGGL::bFinInit() {
    m_clHTTP = s_piQueryIHTTP(pclGetError());
    return pclGetError()->bEstPropre();
}

namespace {
// What the layers above ask to run when the component ends, in the order they asked.
void (*gtabFinDeComposante[8])() = {};
} // namespace

void CComposanteGGL::s_AjouteFinDeComposante(void (*pfnFin)()) {
    for (auto& pfn : gtabFinDeComposante) {
        if (pfn == pfnFin)
            return;
        if (!pfn) {
            pfn = pfnFin;
            return;
        }
    }
}

void CComposanteGGL::TermCompo() {
    m_clHTTP.Reset();
    Libere(ms_piGestionXML);
    Libere(ms_piContenuJSON);
    for (auto& pfn : gtabFinDeComposante)
        if (auto pfnFin = std::exchange(pfn, nullptr))
            pfnFin();
}

CRef<IHTTP> CComposanteGGL::s_piQueryIHTTP(CXError* pclErreur) {
    CRef<IHTTP> clHTTP;
    if (CInformationDLL::ms_piLibShop) {
        clHTTP =
            CRef<IHTTP>::Adopt(piService<IHTTP>(CInformationDLL::ms_piLibShop->piGetInterfaceCompat(
                COMPOSANTE_HTTP, 10, 4, 1, L"HTTP", knLibrairieGGL, pclErreur)));
    }
    // A host too old for HTTP: the component cannot work.
    if (!clHTTP && pclErreur && pclErreur->bEstPropre())
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_NO_HTTP_SERVICE);
    return clHTTP;
}

CRef<IElementJSON> CComposanteGGL::s_piGetJSON(const char* pszTexte, CXError* pclErreur) {
    IContenuJSON* piJSON = piContenuJSON(pclErreur);
    if (!piJSON)
        return {};
    return CRef<IElementJSON>::Adopt(piJSON->vpiAnalyse(
        pszTexte ? pszTexte : "", pszTexte ? std::strlen(pszTexte) : 0, pclErreur));
}

CRef<IMainIMG> CComposanteGGL::s_piGetIMainIMG() {
    if (!CInformationDLL::ms_piLibShop)
        return {};
    _CXErrorModule60 clErreur; // the cause is of no use to the caller
    return CRef<IMainIMG>::Adopt(
        piService<IMainIMG>(CInformationDLL::ms_piLibShop->piGetInterfaceCompat(
            COMPOSANTE_IMAGE, 25, 2, 1, L"MainIMG", knLibrairieGGL, &clErreur)));
}

CRef<IDocumentXML> CComposanteGGL::s_piGetXMLDoc(const wchar_t* pszTexte) {
    _CXErrorModule60 clErreur;
    return s_piGetXMLDoc(pszTexte, clErreur);
}

CRef<IDocumentXML> CComposanteGGL::s_piGetXMLDoc(const wchar_t* pszTexte, CXError& clCause) {
    IGestionnaireXML* piXML = piGestionXML(&clCause);
    if (!piXML)
        return {};
    if (!pszTexte || !*pszTexte)
        return CRef<IDocumentXML>::Adopt(piXML->vpiCreeDocument(&clCause));
    CAny clTexte;
    clTexte.__nSetString(pszTexte);
    return CRef<IDocumentXML>::Adopt(piXML->vpiAnalyse(clTexte, &clCause));
}

CRef<IDocumentXML> piGetXMLDoc(const wchar_t* pszTexte) {
    return CComposanteGGL::s_piGetXMLDoc(pszTexte);
}

CRef<IKLTableau> CComposanteGGL::s_pclAlloueTableauVMVide(IVM* piVM, CXError* pclErreur,
                                                          ITypeDescription* piType) {
    if (!piVM)
        return {};
    // Arrays of objects when a class is given, else of texts.
    CRef<IKLTableau> clTableau = CRef<IKLTableau>::Adopt(
        piVM->pclAlloueTableau(piType ? KVTYPE_KLDINO : KVTYPE_KLDSTRW, 1, pclErreur));
    if (!clTableau || !clTableau->vbInitialise(piType, 0, 0, piVM, pclErreur))
        return {};
    return clTableau;
}

void CComposanteGGL::s_CWString2CTString(const CXYString<wchar_t>& sSource, CTString& sCible) {
    sCible = sSource.pszGet();
}

bool CComposanteGGL::s_bAuthIdentifie(IInterfGGLCnx& clInterface, IVM* piVM, int bParNavigateur,
                                      int nFonction, CXError& clErreur) {
    if (CInformationDLL::ms_nCodeProduitExecution != knProduitAvecDialogue) {
        clErreur.SetUserError(&gstMyModuleInfo60, KVERR_NO_LOGIN_DIALOGUE);
        return false;
    }
    if (!piVM)
        return false;
    auto clLogin = CRef<IAuthentification>::Adopt(piVM->piGetAuthentification(&clErreur));
    if (!clLogin)
        return false;
    CXYString<wchar_t> sRedirection;
    clLogin->vGetURLRedirection(bParNavigateur, sRedirection);

    // The redirect goes as it stands; the state is the host's to fill and to check.
    std::wstring sURL = clInterface.sGetURLLogin();
    sURL += L"&redirect_uri=";
    sURL += sRedirection.sv();
    sURL += L"&state=";
    sURL += gszMarqueurEtat;

    CXYString<wchar_t> sReponse;
    if (clLogin->veAuthentifie(sURL.c_str(), piVM, s_pszNomFonction(nFonction), sReponse,
                               &clErreur) != AUTHENTIFICATION_OK)
        return false;
    return clInterface.bProcessRedirectionHTTP(sReponse.pszGet(), sRedirection.pszGet());
}

extern "C" void* __KLL_COMPOSANTE_FACTORY_60() {
    return KllSousBarriere(nullptr, static_cast<IKLLibrary*>(nullptr),
                           [] { return static_cast<IKLLibrary*>(new CComposanteGGL); });
}
