// The C entry points of the component. They answer 0, 1 or 2 and never produce text: messages
// arise on the error objects of the library and of the services.
#include "BaseExecutionDLL.h"
#include "ComposanteGGL.h"
#include "IdGenerator.h"
#include "ModuleInfo.h"
#include "Resources.h"
#include "XYString.h"
#include "frame/KllBarriere.h"

#include "Execution.h"
#include "ObjectInterfaces.h"

#include <cstring>
#include <cwchar>
#include <dlfcn.h>

namespace {

// Library initialisations, counted apart from the host's (ms_nNbInitialisation).
int gnNbInit = 0;

uint64_t nInitialise(const STInitExecution* pstInit) {
    if (!pstInit) return 0;
    if (!gpclExecutionDLL60) {
        gpclExecutionDLL60 = new CDLLExecutionGGL;
        // A failed first attempt is left in place on purpose: the next initialisation finds the
        // object and counts as a success.
        ILibShop* piLibShop = pstInit->nTaille > 15 ? pstInit->piLibShop : nullptr;
        if (!gpclExecutionDLL60->__bInitialiseInterne__INTERNE__(pstInit->hInstanceVM, piLibShop))
            return 0;
    }
    gpclExecutionDLL60->vSetUtilisation(pstInit->nUtilisation1, pstInit->nUtilisation2);
    ++CBaseExecutionDLL::ms_nNbInitialisation;
    return 1;
}

uint64_t nTermine() {
    int& n = CBaseExecutionDLL::ms_nNbInitialisation;
    bool bDernier = n == 0 || --n == 0;
    if (bDernier && gpclExecutionDLL60) {
        gpclExecutionDLL60->__TermineDLLInterne__INTERNE__();
        delete gpclExecutionDLL60;
        gpclExecutionDLL60 = nullptr;
    }
    return 1;
}

uint64_t nInitialiseType(CXError* pclErreur) {
    IGlobalFactory* piFactory = CInformationDLL::ms_piGlobalFactory;
    // A factory of the old kind knows no component types: nothing to do.
    if (!piFactory || piFactory->vnGetVersion() <= 1) return 1;
    return gpclExecutionDLL60 && gpclExecutionDLL60->vbInitialiseTypeDINO(pclErreur) ? 1 : 2;
}

// The texts of the descriptor tables at an index: three empty strings, then the null end.
uint64_t nTexteIndexe(const wchar_t* const* ppsz, uint64_t nIndice) {
    return nIndice <= 3 ? reinterpret_cast<uint64_t>(ppsz[nIndice]) : 0;
}

uint64_t nPointeur(const void* p) { return reinterpret_cast<uint64_t>(p); }

} // namespace

KLL_EXPORT int CheckVersion() { return 22; }

static int bExternalInitLibraryNu(void* hInstance) {
    if (gnNbInit++ <= 0) {
        DLLRES_bInit(hInstance, 0);
        CKLLibrary::bInit(hInstance);
        gInitGenerator(ID_GENERATOR_GGL);
    }
    return 1;
}

static void ExternalTermLibraryNu() {
    if (--gnNbInit != 0) return;
    CBaseExecutionDLL::s_TermineDLL();
    CKLLibrary::Term();
    DLLRES_Term();
}

static uint64_t nExecutionNu(uint32_t nCode, uint64_t nArgument) {
    CBaseExecutionDLL* pcl = gpclExecutionDLL60;
    switch (nCode) {
    case EXECUTION_INITIALISE:
        return nInitialise(reinterpret_cast<const STInitExecution*>(nArgument));
    case EXECUTION_TERMINE:
        return nTermine();
    case EXECUTION_INFO_LOCALE:
        CInformationDLL::ms_piInfoLocale = reinterpret_cast<void*>(nArgument);
        return 1;
    case EXECUTION_CHANGE_LANGUE:
        if (pcl) pcl->vChangeLangue();
        return 1;
    case EXECUTION_INITIALISE_TYPE:
        return nInitialiseType(reinterpret_cast<CXError*>(nArgument));
    case EXECUTION_DUMP_MEMOIRE:
        return pcl && pcl->vbDumpMemoire(reinterpret_cast<IDumpMemoire*>(nArgument)) ? 1 : 0;
    case EXECUTION_DESACTIVE:
        if (pcl) pcl->vDesactiveApplication();
        return 1;
    case EXECUTION_REACTIVE:
        if (pcl) pcl->vReactiveApplication();
        return 1;
    default:
        return 0;
    }
}

KLL_EXPORT uint64_t InfoComposante(uint32_t nSelecteur, uint64_t nIndice) {
    const STKLComposante& st = __KLL_COMPOSANTE60;
    switch (nSelecteur) {
    case SELECTEUR_NIVEAU: return 14; // the level of the protocol spoken here
    case SELECTEUR_LIBRAIRIE: return st.nLibrairie;
    case SELECTEUR_CHIFFRE1: return st.nChiffre1;
    case SELECTEUR_CHIFFRE2: return st.nChiffre2;
    case SELECTEUR_AIDE: return nTexteIndexe(st.ppszAide, nIndice);
    case SELECTEUR_RESERVE64: return nPointeur(st.pTableReserve64);
    case SELECTEUR_NB_RESERVE64: return st.nNbReserve64;
    case SELECTEUR_CONSTANTES: return nPointeur(st.pstConstante);
    case SELECTEUR_NB_CONSTANTES: return st.nNbConstante;
    case SELECTEUR_RESERVE48: return nPointeur(st.pTableReserve48);
    case SELECTEUR_NB_RESERVE48: return st.nNbReserve48;
    case SELECTEUR_CLASSES: return nPointeur(st.ppstClasse);
    case SELECTEUR_NB_CLASSES: return st.nNbClasse;
    case SELECTEUR_TYPEREFS: return nPointeur(st.ppszTypeRef);
    case SELECTEUR_NB_TYPEREFS: return st.nNbTypeRef;
    case SELECTEUR_FONCTIONS: return nPointeur(st.pstFonction);
    case SELECTEUR_NB_FONCTIONS: return st.nNbFonction;
    case SELECTEUR_RESERVE56: return nPointeur(st.pTableReserve56);
    case SELECTEUR_NB_RESERVE56: return st.nNbReserve56;
    case SELECTEUR_RESERVE72: return nPointeur(st.pTableReserve72);
    case SELECTEUR_NB_RESERVE72: return st.nNbReserve72;
    case SELECTEUR_DESCRIPTION: return nTexteIndexe(st.ppszDescription, nIndice);
    case SELECTEUR_BLOC_NOM: return nPointeur(st.pbyBlocNom);
    case SELECTEUR_TAILLE_BLOC_NOM: return st.nTailleBlocNom;
    case SELECTEUR_FORMAT: return st.nFormat;
    case SELECTEUR_DESCRIPTEUR: return nPointeur(&st);
    default: return 0;
    }
}

static uint64_t nCommandeComposanteNu(uint64_t nCommande, uint64_t nArgument) {
    switch (nCommande) {
    case COMMANDE_CHARGEUR_CHAINE:
        gpfnLoadStringKVM = reinterpret_cast<PFNLoadStringKVM>(nArgument);
        return 1;
    case COMMANDE_CHARGE_CHAINE: {
        auto* pst = reinterpret_cast<STChargeChaine*>(nArgument);
        if (!pst) return 0;
        int n = DLLRES_nLoadString(&gstMyModuleInfo60, pst->nNumero, pst->pszTampon,
                                   static_cast<int>(pst->nCapacite));
        pst->nResultat = n;
        return static_cast<uint64_t>(static_cast<int64_t>(n));
    }
    case COMMANDE_UTILISATION:
        return static_cast<uint64_t>(static_cast<int64_t>(
            DLLRES_nGetUtilisation(&gstMyModuleInfo60, static_cast<unsigned>(nArgument))));
    default:
        return 0;
    }
}

KLL_EXPORT void* pQueryProxy(int n) {
    return n == 60 ? __KLL_COMPOSANTE_FACTORY_60() : nullptr; // the factory keeps its own barrier
}

KLL_EXPORT void DeclareProxy(void* p1, void* p2, void* p3, void* p4) {
    // This component declares no proxy.
    if (p1) *static_cast<uint64_t*>(p1) = 0;
    if (p2) *static_cast<uint16_t*>(p2) = 0;
    if (p3) *static_cast<uint64_t*>(p3) = 0;
    if (p4) *static_cast<uint16_t*>(p4) = 0;
}

KLL_EXPORT const void* DLLRES_pLoadResourceModule(const _stMyModuleInfo* pstModule,
                                                  uint32_t nNumero, const wchar_t* pszType,
                                                  uint32_t* pnTaille) {
    if (!pstModule) pstModule = &gstMyModuleInfo60;
    for (uint32_t i = 0; i < pstModule->nNbRessource; ++i) {
        const STKVResource& st = pstModule->pstRessource[i];
        if (st.nNumero == nNumero && pszType && std::wcscmp(st.pszType, pszType) == 0) {
            if (pnTaille) *pnTaille = st.nTaille;
            return st.pDonnees;
        }
    }
    return nullptr;
}

namespace {
using PFNConversion = void* (*)();
PFNConversion gpfnConvDepExt = nullptr;
PFNConversion gpfnFinConv = nullptr;
void* ghConvVM = nullptr;
int gnVersionConvVM = 0;
int gnVersionCompatConvVM = 0;
} // namespace

KLL_EXPORT int bInitKLConvFromVM(void* hVM, int nVersion, int nVersionCompat) {
    if (nVersionCompat > 2 || nVersion < 2 || !hVM) return 0;
    // A first symbol found stays stored even when the second is missing.
    gpfnConvDepExt = reinterpret_cast<PFNConversion>(dlsym(hVM, "nConversionDepassementExt"));
    if (!gpfnConvDepExt) return 0;
    gpfnFinConv = reinterpret_cast<PFNConversion>(dlsym(hVM, "FinConversion"));
    if (!gpfnFinConv) return 0;
    ghConvVM = hVM;
    gnVersionConvVM = nVersion;
    gnVersionCompatConvVM = nVersionCompat;
    return 1;
}

// Strings for the host: a counted copy of a text, a line of a text, a character of a text.
KLL_EXPORT wchar_t* STRG_pszCreate(const wchar_t* psz) {
    return KllSousBarriere(nullptr, static_cast<wchar_t*>(nullptr),
                           [&] { return CXYString<wchar_t>(psz).pDetach(); });
}

KLL_EXPORT int STRG_nGetLine(const wchar_t* pszTexte, int nLigne, wchar_t* pszTampon,
                             int nCapacite) {
    if (!pszTexte || nLigne < 0 || !pszTampon || nCapacite <= 0) return -1;
    const wchar_t* p = pszTexte;
    for (int i = 0; i < nLigne; ++i) {
        p = std::wcschr(p, L'\n');
        if (!p) return -1;
        ++p;
    }
    size_t n = std::wcscspn(p, L"\r\n");
    size_t nCopie = n < static_cast<size_t>(nCapacite - 1) ? n : static_cast<size_t>(nCapacite - 1);
    std::wmemcpy(pszTampon, p, nCopie);
    pszTampon[nCopie] = 0;
    return static_cast<int>(n);
}

KLL_EXPORT int STRG_nGetChar(const wchar_t* pszTexte, int nIndice) {
    if (!pszTexte || nIndice < 0) return -1;
    for (int i = 0; i < nIndice; ++i)
        if (!pszTexte[i]) return -1;
    return pszTexte[nIndice] ? static_cast<int>(pszTexte[nIndice]) : -1;
}

// The entry points whose work may allocate, behind the exception barrier: the host sees a
// failed answer, never an exception.
KLL_EXPORT int bExternalInitLibrary(void* hInstance) {
    return KllSousBarriere(nullptr, 0, [&] { return bExternalInitLibraryNu(hInstance); });
}

KLL_EXPORT void ExternalTermLibrary() {
    KllSousBarriere(nullptr, [] { ExternalTermLibraryNu(); });
}

KLL_EXPORT uint64_t Execution(uint32_t nCode, uint64_t nArgument) {
    return KllSousBarriere(nullptr, uint64_t{0}, [&] { return nExecutionNu(nCode, nArgument); });
}

KLL_EXPORT uint64_t CommandeComposante(uint64_t nCommande, uint64_t nArgument) {
    return KllSousBarriere(nullptr, uint64_t{0},
                           [&] { return nCommandeComposanteNu(nCommande, nArgument); });
}
