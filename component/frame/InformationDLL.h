// The process-wide values the host hands the component, read once at initialisation through
// the host's own Execution entry (command 3053, one selector per value).
#pragma once
#include "StrMemAlloc.h"

#include <cstdint>
#include <pthread.h>

class ILibShop;
class IGlobalFactory;

// The host's entry point and ours share one shape.
using PFNExecution = uint64_t (*)(uint32_t nCode, uint64_t nArgument);

// Host commands the component sends.
enum eCOMMANDEHOTE : uint32_t {
    HOTE_DECHARGE_DLL = 3052,
    HOTE_INFO = 3053,
    HOTE_REMPLIT_PILE_C = 3184,
    HOTE_DEBUT_THREAD = 3645,
    HOTE_FIN_THREAD = 3795,
};

// Selectors of HOTE_INFO.
enum eINFOHOTE : uint32_t {
    INFO_CODE_PRODUIT_EXECUTION = 1,
    INFO_LANGUE_INTERNE = 2,
    INFO_NOM_PRODUIT = 3,
    INFO_OPTIONS = 4,
    INFO_CODE_PRODUIT_REEL = 5,
    INFO_RUNTIME_GERE = 6,
    INFO_LIBSHOP = 7,
    INFO_VERSION_ACTIVE = 8,
    INFO_GLOBAL_FACTORY = 9,
    INFO_COLLECTEUR_TOPO = 10,
    INFO_MODE_SMARTPHONE = 11,
    INFO_INFO_LOCALE = 12,
    INFO_ALLOCATEUR_CHAINE = 13,
    INFO_MULTITHREAD = 14,
    INFO_INFORMATION_COMPOSANTE = 15,
    INFO_THREAD_PRINCIPAL = 17,
};

class CInformationDLL : public CInformationModule {
public:
    static IGlobalFactory* ms_piGlobalFactory;
    static void* ms_piCollecteurTopo;
    static void* ms_piInfoLocale;
    static void* ms_piInformationComposante;
    static int* ms_pbMultithread;
    static pthread_t ms_IDThreadPrincipal;
    static ILibShop* ms_piLibShop;
    static int ms_nCodeProduitExecution;
    static int ms_nCodeProduitReel;
    static int ms_nLangueInterne;
    static const wchar_t* ms_pszNomProduit;
    static uint64_t ms_dwOptions;
    static uint32_t ms_dwVersionActive;

    // Back to the values before the host spoke; for a library that is unloaded and loaded again.
    static void s_RAZ();
};
