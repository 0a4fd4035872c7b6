#include "CountedBlock.h"

#include "KVResult.h"
#include "StrMemAlloc.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

class CAllocateurStandard final : public IStrMemAlloc {
public:
    void* vpAlloue(size_t nTaille) override { return std::malloc(nTaille); }
    void* vpRealloue(void* p, size_t nTaille) override { return std::realloc(p, nTaille); }
    void vLibere(void* p) override { std::free(p); }
};

CAllocateurStandard gclAllocateurStandard;

} // namespace

IStrMemAlloc* CInformationModule::ms_piStrMemAlloc = nullptr;

IStrMemAlloc& CInformationModule::s_AllocateurStandard() { return gclAllocateurStandard; }

IStrMemAlloc& CInformationModule::s_Allocateur() {
    return ms_piStrMemAlloc ? *ms_piStrMemAlloc : gclAllocateurStandard;
}

namespace KVBloc {

void* pAlloue(size_t nCapacite, size_t nTerminal) {
    if (nCapacite >= knTailleMax) return nullptr;
    void* pBloc =
        CInformationModule::s_Allocateur().vpAlloue(sizeof(STEnteteBloc) + nCapacite + nTerminal);
    if (!pBloc) return nullptr;
    auto* pEnt = new (pBloc) STEnteteBloc{};
    pEnt->nRef.store(1, std::memory_order_relaxed);
    pEnt->nCapacite = static_cast<uint32_t>(nCapacite);
    pEnt->nTaille = 0;
    char* pData = static_cast<char*>(pBloc) + sizeof(STEnteteBloc);
    std::memset(pData, 0, nTerminal);
    return pData;
}

void AddRef(void* p) {
    if (p) pEntete(p)->nRef.fetch_add(1, std::memory_order_relaxed);
}

void Release(void* p) {
    if (!p) return;
    STEnteteBloc* pEnt = pEntete(p);
    if (pEnt->nRef.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        pEnt->~STEnteteBloc();
        CInformationModule::s_Allocateur().vLibere(pEnt);
    }
}

int nPrepare(void*& p, size_t nTaille, size_t nGarde, size_t nTerminal) {
    if (nTaille >= knTailleMax) return KV_ERR_TROP_LONG;
    if (p && nRef(p) == 1 && nCapacite(p) >= nTaille) return KV_OK;
    // Grow by half again, so that repeated appends stay linear.
    size_t nNouvelle = nTaille;
    if (p && nTaille > nCapacite(p)) {
        size_t nCroissance = nCapacite(p) + nCapacite(p) / 2;
        if (nCroissance > nNouvelle) nNouvelle = nCroissance;
        if (nNouvelle >= knTailleMax) nNouvelle = knTailleMax - 1;
    }
    void* pNouveau = pAlloue(nNouvelle, nTerminal);
    if (!pNouveau) return KV_ERR_MEMOIRE;
    if (p) {
        size_t nCopie = nGarde < nTaille ? nGarde : nTaille;
        if (nCopie > KVBloc::nTaille(p)) nCopie = KVBloc::nTaille(p);
        std::memcpy(pNouveau, p, nCopie);
        FixeTaille(pNouveau, nCopie, nTerminal);
        Release(p);
    }
    p = pNouveau;
    return KV_OK;
}

void FixeTaille(void* p, size_t nTaille, size_t nTerminal) {
    pEntete(p)->nTaille = static_cast<uint32_t>(nTaille);
    std::memset(static_cast<char*>(p) + nTaille, 0, nTerminal);
}

} // namespace KVBloc
