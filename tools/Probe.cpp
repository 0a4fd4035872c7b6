// kvggl-probe: loads the component as a host does and prints what it says of itself, read
// only through its exported entry points and records.
#include "Execution.h"
#include "StrMemAlloc.h"
#include "Tables.h"

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <dlfcn.h>

namespace {

template <class F> F* pfn(void* h, const char* pszNom) {
    auto* p = reinterpret_cast<F*>(dlsym(h, pszNom));
    if (!p) {
        std::fprintf(stderr, "kvggl-probe: the component does not export %s\n", pszNom);
        std::exit(1);
    }
    return p;
}

} // namespace

int main(int argc, char** argv) {
    const char* pszChemin = argc > 1 ? argv[1] : "./kv220ggl.so";
    void* h = dlopen(pszChemin, RTLD_NOW | RTLD_LOCAL);
    if (!h) {
        std::fprintf(stderr, "kvggl-probe: %s\n", dlerror());
        return 1;
    }
    auto* pstModule = static_cast<const _stMyModuleInfo*>(dlsym(h, "gstMyModuleInfo60"));
    auto pfnInfo = pfn<uint64_t(uint32_t, uint64_t)>(h, "InfoComposante");
    auto pfnCommande = pfn<uint64_t(uint64_t, uint64_t)>(h, "CommandeComposante");
    pfn<int(void*)>(h, "bExternalInitLibrary")(h);

    std::printf("component   %ls %ls, library %lu, version check %d\n",
                pstModule ? pstModule->pszNomModule : L"?",
                pstModule ? pstModule->pszVersionModule : L"?",
                static_cast<unsigned long>(pfnInfo(SELECTEUR_LIBRAIRIE, 0)),
                pfn<int()>(h, "CheckVersion")());
    std::printf("vocabulary  %lu functions, %lu constants, %lu types, %lu classes\n",
                static_cast<unsigned long>(pfnInfo(SELECTEUR_NB_FONCTIONS, 0)),
                static_cast<unsigned long>(pfnInfo(SELECTEUR_NB_CONSTANTES, 0)),
                static_cast<unsigned long>(pfnInfo(SELECTEUR_NB_TYPEREFS, 0)),
                static_cast<unsigned long>(pfnInfo(SELECTEUR_NB_CLASSES, 0)));
    if (pstModule) {
        std::printf("errors      %lu codes, each with its message:\n",
                    static_cast<unsigned long>(pstModule->nNbErrorDef));
        for (uint64_t i = 0; i < pstModule->nNbErrorDef; ++i) {
            const STErrorDef& st = pstModule->pstErrorDef[i];
            wchar_t sz[160];
            STChargeChaine stCharge{sizeof(STChargeChaine), st.nRessource, sz, 160, 0};
            pfnCommande(COMMANDE_CHARGE_CHAINE, reinterpret_cast<uint64_t>(&stCharge));
            for (wchar_t* p = sz; *p; ++p)
                if (*p == L'\r' || *p == L'\n') *p = L' ';
            std::printf("  %u (level %u)  %ls\n", st.nCodeUtilisateur, st.nSeverite, sz);
        }
    }
    pfn<void()>(h, "ExternalTermLibrary")();
    dlclose(h);
    return 0;
}
