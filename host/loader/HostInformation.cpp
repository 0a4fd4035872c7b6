#include "HostInformation.h"

#include "AllocationFaults.h"
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

enum eHOSTCOMMAND : uint32_t {
    HOSTCOMMAND_UNLOAD = 3052,
    HOSTCOMMAND_INFO = 3053,
    HOSTCOMMAND_C_STACK = 3184,
    HOSTCOMMAND_THREAD_START = 3645,
    HOSTCOMMAND_THREAD_END = 3795,
};

// The record of command 3184: a number, a wide buffer, its size in characters, an option.
struct STCStackRequest {
    uint32_t nNumber;
    wchar_t* pszBuffer;
    uint32_t nSize;
    uint32_t nOption;
};

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
    case 1:
        return static_cast<uint64_t>(static_cast<int64_t>(ms_nProductCode));
    case 2:
        return knLanguage;
    case 3:
        return Pointer(kszProductName);
    case 4:
        return ms_qwOptions;
    case 5:
        return static_cast<uint64_t>(static_cast<int64_t>(ms_nRealProductCode));
    case 7:
        return Pointer(ms_piLibShop);
    case 8:
        return knVersion;
    case 9:
        return Pointer(ms_piGlobalFactory);
    case 13:
        return Pointer(ms_piStringAllocator);
    case 14:
        return Pointer(&ms_bMultithread);
    case 17:
        return ms_qwMainThread;
    default:
        return 0; // 6, 10, 11, 12, 15 and any other: nothing to give
    }
}

uint64_t CHostInformation::s_qwExecution(uint32_t nCode, uint64_t nArgument) {
    switch (nCode) {
    case HOSTCOMMAND_INFO:
        return s_qwInfo(nArgument);
    case HOSTCOMMAND_UNLOAD:
        ++ms_nUnloadNotices;
        return 1;
    case HOSTCOMMAND_THREAD_START:
        ++ms_nThreadsStarted;
        return 1;
    case HOSTCOMMAND_THREAD_END:
        ++ms_nThreadsEnded;
        return 1;
    case HOSTCOMMAND_C_STACK: {
        // The host keeps no C stack description: an empty text.
        auto* pst = reinterpret_cast<STCStackRequest*>(nArgument);
        if (pst && pst->pszBuffer && pst->nSize > 0)
            pst->pszBuffer[0] = L'\0';
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
