// The records that describe this module to the host and to the error and resource code.
#pragma once
#include "ErrorCodes.h"
#include "KLLExport.h"
#include <Tables.h> // the records of abi/

#include <cstdint>

inline constexpr uint32_t knLibrairieGGL = 60; // the figure that ends every table name

KLL_EXPORT const STErrorDef gstErrorDef60[knNbErrorDef60];
KLL_EXPORT _stMyModuleInfo gstMyModuleInfo60;
KLL_EXPORT const STKVResource DLLRES_g_TabKVResources60[2];
KLL_EXPORT const uint32_t DLLRES_n_NbResources60;
KLL_EXPORT STKLComposante __KLL_COMPOSANTE60;
KLL_EXPORT STKLComposante* gpstListeComposante60;
KLL_EXPORT const unsigned char __tab_IDR_GGL_KVL_KV[359584];
KLL_EXPORT const unsigned char __tab_IDR_GGL_KVL_KM[24179];

// The entry points, also reachable through the module info record.
KLL_EXPORT uint64_t Execution(uint32_t nCode, uint64_t nArgument);
KLL_EXPORT uint64_t InfoComposante(uint32_t nSelecteur, uint64_t nIndice);
KLL_EXPORT int bExternalInitLibrary(void* hInstance);
KLL_EXPORT void ExternalTermLibrary();
KLL_EXPORT void* pQueryProxy(int n);
