// The process-wide values the host hands the component, read once at initialisation through
// the host's own Execution entry (command 3053, one selector per value).
#pragma once
#include "Execution.h"
#include "StrMemAlloc.h"

#include <cstdint>
#include <pthread.h>

class ILibShop;
class IGlobalFactory;

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
