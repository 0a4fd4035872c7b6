// The module's records, filled statically so that a reader of the file sees them whole; the
// one static initialiser links the descriptor into the list of components.
#include "ModuleInfo.h"

#include "ComposanteGGL.h"
#include "ResourceBlock.h"
#include "frame/Tables.h"

const STErrorDef gstErrorDef60[knNbErrorDef60] = {
#define KV_ERROR_DEF(Nom, nCode, nRessource, nSeverite) {nCode, nRessource, 0, nSeverite},
#include "ErrorDefs.def"
};

// Library files of the script side, carried opaque and only handed out on request. Their
// contents are not ours to know: each holds the magic and a short note of ours, then zeros to
// the size the host expects.
#define KV_NOTE_RESSOURCE "KRS\0kv220ggl: opaque library resource, contents not carried"
const unsigned char __tab_IDR_GGL_KVL_KV[359584] = KV_NOTE_RESSOURCE;
const unsigned char __tab_IDR_GGL_KVL_KM[24179] = KV_NOTE_RESSOURCE;
#undef KV_NOTE_RESSOURCE

const uint32_t DLLRES_n_NbResources60 = 2;
const STKVResource DLLRES_g_TabKVResources60[2] = {
    {8035, L"RT_KVL", __tab_IDR_GGL_KVL_KV, sizeof(__tab_IDR_GGL_KVL_KV)},
    {8153, L"RT_KVL", __tab_IDR_GGL_KVL_KM, sizeof(__tab_IDR_GGL_KVL_KM)},
};

_stMyModuleInfo gstMyModuleInfo60 = {
    gstErrorDef60,
    knNbErrorDef60,
    knLibrairieGGL,
    L"kv220ggl.so",
    L"22.0.44.0",
    bGetResAnsi60,
    bExternalInitLibrary,
    ExternalTermLibrary,
    1,
    pQueryProxy,
    nullptr,
    InfoComposante,
    Execution,
    DLLRES_g_TabKVResources60,
    2,
};

namespace {
const wchar_t* const gpszTabDescription60[4] = {L"", L"", L"", nullptr};
const wchar_t* const gpszTabAide60[4] = {L"", L"", L"", nullptr};
} // namespace

STKLComposante __KLL_COMPOSANTE60 = {
    sizeof(STKLComposante),
    nullptr,
    gpszTabDescription60,
    gpszTabAide60,
    __gstTabFonction_60,
    __gstTabConstante_60,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    __gstTabTypeRef_60,
    __gpstTabClasse_60,
    gbyBlocNom_60,
    nullptr,
    __KLL_COMPOSANTE_FACTORY_60,
    knLibrairieGGL,
    2,
    635,
    427,
    knKllNbFonction,
    knKllNbConstante,
    0,
    0,
    0,
    0,
    knKllNbTypeRef,
    knKllNbClasse,
    knKllTailleBlocNom,
    0,
};

STKLComposante* gpstListeComposante60 = nullptr;

namespace {
// Runs at load, before any entry point: the descriptor joins the list of components, and the
// module info takes the resource count.
struct CInitialiseurStatique {
    CInitialiseurStatique() {
        __KLL_COMPOSANTE60.pstSuivant = gpstListeComposante60;
        gpstListeComposante60 = &__KLL_COMPOSANTE60;
        gstMyModuleInfo60.nNbRessource = DLLRES_n_NbResources60;
    }
} gclInitialiseurStatique;
} // namespace
