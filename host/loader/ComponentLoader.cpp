#include "ComponentLoader.h"

#include "Execution.h"
#include "HostInformation.h"
#include "StrMemAlloc.h"
#include "KLLibraryInterface.h"
#include "Tables.h"

#include <dlfcn.h>
#include <pthread.h>

namespace {

// What the host uses in the init record: the figures given to vSetUtilisation.
constexpr uint32_t knUsage1 = 0;
constexpr uint32_t knUsage2 = 0;

} // namespace

CComponentLoader::CComponentLoader() = default;

CComponentLoader::~CComponentLoader() {
    Unload();
}

void* CComponentLoader::pSymbol(const char* pszName) const {
    return m_hComponent ? dlsym(m_hComponent, pszName) : nullptr;
}

bool CComponentLoader::bLoad(
    const std::string& sPath, ILibShop* piLibShop,
    const std::function<bool(const CComponentTables&, std::string&)>& fnTablesRead,
    std::string& sError) {
    if (m_hComponent) {
        sError = "the component is already loaded";
        return false;
    }
    m_sPath = sPath;
    m_errRefusal.RAZ();
    auto Echec = [this, &sError](std::string s) {
        sError = std::move(s);
        Unload();
        return false;
    };

    // 1. The library; its entry points.
    m_hComponent = dlopen(sPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!m_hComponent) {
        const char* psz = dlerror();
        sError = "the component cannot be loaded: " + std::string(psz ? psz : sPath);
        return false;
    }
    auto pfnVersion = reinterpret_cast<int (*)()>(pSymbol("CheckVersion"));
    auto pfnInit = reinterpret_cast<int (*)(void*)>(pSymbol("bExternalInitLibrary"));
    auto pfnTerm = reinterpret_cast<void (*)()>(pSymbol("ExternalTermLibrary"));
    auto pfnExecution = reinterpret_cast<PFNExecution>(pSymbol("Execution"));
    auto pfnInfo = reinterpret_cast<CComponentTables::PFNInfo>(pSymbol("InfoComposante"));
    auto pfnProxy = reinterpret_cast<void* (*)(int)>(pSymbol("pQueryProxy"));
    if (!pfnVersion || !pfnInit || !pfnTerm || !pfnExecution || !pfnInfo || !pfnProxy)
        return Echec(sPath + " is not a component: an entry point is missing");

    // 2. The version.
    if (int n = pfnVersion(); n != knExpectedVersion)
        return Echec("the component answers version " + std::to_string(n) + ", the host needs " +
                     std::to_string(knExpectedVersion));

    // 3. The library starts.
    pfnInit(m_hComponent);
    m_pfnTermLibrary = pfnTerm;

    // 4. The host connects: its module (for its Execution) and its registry.
    m_hHost = CHostInformation::s_hOpenHostModule(sError);
    if (!m_hHost)
        return Echec(sError);
    CHostInformation::ms_piLibShop = piLibShop;
    CInformationModule::ms_piStrMemAlloc = CHostInformation::ms_piStringAllocator;
    CHostInformation::ms_qwMainThread = static_cast<uint64_t>(pthread_self());
    STInitExecution stInit{sizeof(STInitExecution), m_hHost, knUsage1, knUsage2, piLibShop};
    m_pfnExecution = pfnExecution;
    m_bExecutionInitialised = true; // even a failed attempt leaves an object to end
    if (pfnExecution(EXECUTION_INITIALISE, reinterpret_cast<uint64_t>(&stInit)) != 1)
        return Echec("the component refused the host's initialisation");

    // 5. The tables, then whatever the caller does with them.
    if (!m_clTables.bRead(pfnInfo, sError))
        return Echec("the component's tables: " + sError);
    if (m_clTables.nLibrary() != knLibraryNumber)
        return Echec("the component is library " + std::to_string(m_clTables.nLibrary()) +
                     ", the host expects " + std::to_string(knLibraryNumber));
    if (fnTablesRead && !fnTablesRead(m_clTables, sError))
        return Echec(sError);

    // 6. Types, the library object, its end of initialisation.
    CXError errType;
    m_qwInitType = pfnExecution(EXECUTION_INITIALISE_TYPE, reinterpret_cast<uint64_t>(&errType));
    m_piLibrary = static_cast<IKLLibrary*>(pfnProxy(knLibraryNumber));
    if (!m_piLibrary)
        return Echec("the component made no library object");
    if (!m_piLibrary->bFinInitKLL()) {
        if (CXError* pcl = m_piLibrary->pclGetError())
            m_errRefusal.Copy(pcl);
        if (m_errRefusal.bEstPropre())
            m_errRefusal.SetErrorLevel(ELEVEL_ERREUR);
    }
    return true;
}

void CComponentLoader::Unload(bool bKeepCode) {
    if (m_piLibrary) {
        m_piLibrary->TermKLL();
        m_piLibrary->Release();
        m_piLibrary = nullptr;
    }
    if (m_bExecutionInitialised && m_pfnExecution)
        m_pfnExecution(EXECUTION_TERMINE, 0);
    m_bExecutionInitialised = false;
    m_pfnExecution = nullptr;
    if (m_pfnTermLibrary)
        m_pfnTermLibrary();
    m_pfnTermLibrary = nullptr;
    m_clTables.Clear();
    m_errRefusal.RAZ();
    if (m_hComponent && !bKeepCode)
        dlclose(m_hComponent);
    m_hComponent = nullptr;
    if (m_hHost)
        dlclose(m_hHost);
    m_hHost = nullptr;
    CHostInformation::ms_piLibShop = nullptr;
}
