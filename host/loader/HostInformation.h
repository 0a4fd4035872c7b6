// CHostInformation: what the host tells the component, and the host's own Execution entry that
// tells it. The component finds that entry by dlsym in the host module (the handle handed over
// in the init record) and asks command 3053 one selector at a time:
//
//   1  product code at execution   KVGGL_PRODUCT_CODE, default 1
//   2  internal language           12
//   3  product name                "KVGGL"
//   4  options                     KVGGL_OPTIONS (decimal or 0x hex), default 0
//   5  real product code           KVGGL_REAL_PRODUCT_CODE, default the product code
//   6  managed runtime             0: none
//   7  ILibShop*                   the registry of services
//   8  active version              22
//   9  global factory              the maker of object peers
//   10 topology collector          none (0)
//   11 smartphone mode             0
//   12 locale information          none (0)
//   13 string allocator            the C library's behind the fault counter (AllocationFaults.h),
//                                  shared by both sides and used by the host's own strings
//   14 multithread flag            the address of the host's flag (0: one script thread)
//   15 component information       none (0)
//   17 main thread                 the thread that loaded the component
// Any other selector answers 0. The other commands: 3052 (the component asks to be unloaded,
// or says it goes) is counted; 3645 and 3795 (threads of the component) are counted; 3184
// (describe the C call stack) leaves an empty text. Unknown commands answer 0.
#pragma once
#include <cstdint>
#include <functional>
#include <string>

class IGlobalFactory;
class ILibShop;
class IStrMemAlloc;

class CHostInformation {
public:
    static constexpr int knDefaultProductCode = 1;
    static constexpr uint64_t knDefaultOptions = 0;
    static constexpr int knLanguage = 12;
    static constexpr int knVersion = 22;

    // The settings, read from variables (getenv in the host); a value that cannot be read keeps
    // the default and is described in sWarnings, one line each.
    static void s_ReadSettings(const std::function<const char*(const char*)>& fnGet,
                               std::string& sWarnings);

    static int ms_nProductCode;
    static int ms_nRealProductCode;
    static uint64_t ms_qwOptions;
    static IGlobalFactory* ms_piGlobalFactory;
    static ILibShop* ms_piLibShop;
    static IStrMemAlloc* ms_piStringAllocator;
    static uint64_t ms_qwMainThread;
    static int ms_bMultithread;

    // What the component said through the host's entry.
    static int ms_nUnloadNotices;  // command 3052
    static int ms_nThreadsStarted; // command 3645
    static int ms_nThreadsEnded;   // command 3795

    // The answer to one command; the body of the exported Execution.
    static uint64_t s_qwExecution(uint32_t nCode, uint64_t nArgument);
    static uint64_t s_qwInfo(uint64_t nSelector);

    // The handle of the module that exports the host's Execution, as the component must get it
    // in the init record: the shared object this code is linked into, or the program itself.
    // Null with the reason in sError when that module does not export the entry (an executable
    // must be linked with -rdynamic). The caller dlcloses the handle.
    static void* s_hOpenHostModule(std::string& sError);
};

// The host's entry, exported under the name the component looks for.
extern "C" __attribute__((visibility("default"))) uint64_t Execution(uint32_t nCode,
                                                                     uint64_t nArgument);
