#include "HostInformation.h"

#include "AllocationFaults.h"
#include "Execution.h"
#include "StrMemAlloc.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>

int CHostInformation::ms_nProductCode = knDefaultProductCode;
int CHostInformation::ms_nRealProductCode = knDefaultProductCode;
uint64_t CHostInformation::ms_qwOptions = knDefaultOptions;
IGlobalFactory* CHostInformation::ms_piGlobalFactory = nullptr;
ILibShop* CHostInformation::ms_piLibShop = nullptr;
// The C library's allocator behind the fault counter, which costs nothing until a test arms it.
IStrMemAlloc* CHostInformation::ms_piStringAllocator = &KVAllocationFaults::StringAllocator();
uint64_t CHostInformation::ms_qwMainThread = 0;
int CHostInformation::ms_bMultithread = 0;
int CHostInformation::ms_nUnloadNotices = 0;
int CHostInformation::ms_nThreadsStarted = 0;
int CHostInformation::ms_nThreadsEnded = 0;

namespace {

constexpr wchar_t kszProductName[] = L"KVGGL";

bool s_bReadInteger(const char* psz, int64_t nMin, int64_t nMax, int64_t& nValue) {
    if (!psz || !*psz)
        return false;
    errno = 0;
    char* pszEnd = nullptr;
    long long n = std::strtoll(psz, &pszEnd, 0);
    if (errno || *pszEnd || n < nMin || n > nMax)
        return false;
    nValue = n;
    return true;
}

bool s_bReadWord(const char* psz, uint64_t& qwValue) {
    if (!psz || !*psz || *psz == '-')
        return false;
    errno = 0;
    char* pszEnd = nullptr;
    unsigned long long q = std::strtoull(psz, &pszEnd, 0);
    if (errno || *pszEnd)
        return false;
    qwValue = q;
    return true;
}

} // namespace

void CHostInformation::s_ReadSettings(const std::function<const char*(const char*)>& fnGet,
                                      std::string& sWarnings) {
    auto Warn = [&sWarnings](const char* pszName, const char* pszValue) {
        sWarnings.append(pszName).append("=\"").append(pszValue).append(
            "\" cannot be read; the default stays\n");
    };
    ms_nProductCode = knDefaultProductCode;
    ms_qwOptions = knDefaultOptions;
    int64_t n = 0;
    if (const char* psz = fnGet("KVGGL_PRODUCT_CODE"); psz && *psz) {
        if (s_bReadInteger(psz, INT32_MIN, INT32_MAX, n))
            ms_nProductCode = static_cast<int>(n);
        else
            Warn("KVGGL_PRODUCT_CODE", psz);
    }
    ms_nRealProductCode = ms_nProductCode;
    if (const char* psz = fnGet("KVGGL_REAL_PRODUCT_CODE"); psz && *psz) {
        if (s_bReadInteger(psz, INT32_MIN, INT32_MAX, n))
            ms_nRealProductCode = static_cast<int>(n);
        else
            Warn("KVGGL_REAL_PRODUCT_CODE", psz);
    }
    if (const char* psz = fnGet("KVGGL_OPTIONS"); psz && *psz) {
        uint64_t q = 0;
        if (s_bReadWord(psz, q))
            ms_qwOptions = q;
        else
            Warn("KVGGL_OPTIONS", psz);
    }
}

uint64_t CHostInformation::s_qwInfo(uint64_t nSelector) {
    auto Pointer = [](const void* p) { return reinterpret_cast<uint64_t>(p); };
    switch (nSelector) {
    case INFO_CODE_PRODUIT_EXECUTION:
        return static_cast<uint64_t>(static_cast<int64_t>(ms_nProductCode));
    case INFO_LANGUE_INTERNE:
        return knLanguage;
    case INFO_NOM_PRODUIT:
        return Pointer(kszProductName);
    case INFO_OPTIONS:
        return ms_qwOptions;
    case INFO_CODE_PRODUIT_REEL:
        return static_cast<uint64_t>(static_cast<int64_t>(ms_nRealProductCode));
    case INFO_LIBSHOP:
        return Pointer(ms_piLibShop);
    case INFO_VERSION_ACTIVE:
        return knVersion;
    case INFO_GLOBAL_FACTORY:
        return Pointer(ms_piGlobalFactory);
    case INFO_ALLOCATEUR_CHAINE:
        return Pointer(ms_piStringAllocator);
    case INFO_MULTITHREAD:
        return Pointer(&ms_bMultithread);
    case INFO_THREAD_PRINCIPAL:
        return ms_qwMainThread;
    default:
        return 0; // the managed runtime, the topology collector, the smartphone mode, the
                  // locale, the component information and any other: nothing to give
    }
}

uint64_t CHostInformation::s_qwExecution(uint32_t nCode, uint64_t nArgument) {
    switch (nCode) {
    case HOTE_INFO:
        return s_qwInfo(nArgument);
    case HOTE_DECHARGE_DLL:
        ++ms_nUnloadNotices;
        return 1;
    case HOTE_DEBUT_THREAD:
        ++ms_nThreadsStarted;
        return 1;
    case HOTE_FIN_THREAD:
        ++ms_nThreadsEnded;
        return 1;
    case HOTE_REMPLIT_PILE_C: {
        // The host keeps no C stack description: an empty text.
        auto* pst = reinterpret_cast<STPileC*>(nArgument);
        if (pst && pst->pszTampon && pst->nTaille > 0)
            pst->pszTampon[0] = L'\0';
        return 0;
    }
    default:
        return 0;
    }
}

void* CHostInformation::s_hOpenHostModule(std::string& sError) {
    Dl_info stInfo{};
    void* h = nullptr;
    if (dladdr(reinterpret_cast<void*>(&Execution), &stInfo) && stInfo.dli_fname &&
        *stInfo.dli_fname)
        h = dlopen(stInfo.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    // The program itself is not found by its path: its handle is the null name's.
    if (!h)
        h = dlopen(nullptr, RTLD_NOW);
    if (!h) {
        sError = std::string("the host module cannot be opened: ") + dlerror();
        return nullptr;
    }
    if (dlsym(h, "Execution") != reinterpret_cast<void*>(&Execution)) {
        dlclose(h);
        sError = "the host module does not export its Execution entry (link the program "
                 "with -rdynamic)";
        return nullptr;
    }
    return h;
}

extern "C" uint64_t Execution(uint32_t nCode, uint64_t nArgument) {
    return CHostInformation::s_qwExecution(nCode, nArgument);
}
