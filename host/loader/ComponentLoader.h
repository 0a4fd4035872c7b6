// CComponentLoader: the component's life in the host, in the order the component requires.
//
// Loading:
//   1. dlopen the library (its static initialisers fill its records)
//   2. CheckVersion() must answer 22
//   3. bExternalInitLibrary(handle)
//   4. Execution(EXECUTION_INITIALISE 3985) with the init record: the host module's handle
//      (whose Execution answers command 3053) and the registry of services
//   5. the tables, read through InfoComposante; then the caller's hook (the VM hands each class
//      its type description there)
//   6. Execution(EXECUTION_INITIALISE_TYPE 4963) with an error, pQueryProxy(60) for the library
//      object, and its bFinInitKLL()
// Unloading runs the reverse: TermKLL(), Release(), Execution(EXECUTION_TERMINE 4875),
// ExternalTermLibrary(), dlclose.
//
// A library object that refuses itself in bFinInitKLL (600033 when the registry has no "HTTP")
// does not stop the load: the refusal is kept (errRefusal) and the library object stays, so
// that objects and properties still work; what needs a working library reports the refusal.
#pragma once
#include "ComponentTables.h"
#include "Execution.h"
#include "XError.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class IKLLibrary;
class ILibShop;

class CComponentLoader {
public:
    static constexpr int knExpectedVersion = 22;
    static constexpr int knLibraryNumber = 60;

    CComponentLoader();
    CComponentLoader(const CComponentLoader&) = delete;
    CComponentLoader& operator=(const CComponentLoader&) = delete;
    ~CComponentLoader();

    // Runs steps 1 to 6; on failure everything done is undone and sError says why.
    // fnTablesRead runs after step 5; false there stops the load with its sError.
    bool bLoad(const std::string& sPath, ILibShop* piLibShop,
               const std::function<bool(const CComponentTables&, std::string&)>& fnTablesRead,
               std::string& sError);
    // The reverse; dlclose is skipped when bKeepCode (objects of the component may outlive it).
    void Unload(bool bKeepCode = false);
    bool bLoaded() const { return m_hComponent != nullptr; }

    const CComponentTables& clTables() const { return m_clTables; }
    IKLLibrary* piLibrary() const { return m_piLibrary; }
    // The cause of a refusal at bFinInitKLL; clean when the library accepted the host.
    const CXError& errRefusal() const { return m_errRefusal; }
    bool bRefused() const { return !m_errRefusal.bEstPropre(); }
    // What EXECUTION_INITIALISE_TYPE answered (1, or 2 without an execution object).
    uint64_t qwTypeInitialisation() const { return m_qwInitType; }
    const std::string& sPath() const { return m_sPath; }
    // An entry point of the loaded component, null when it has none.
    void* pSymbol(const char* pszName) const;

private:
    void* m_hComponent = nullptr;
    void* m_hHost = nullptr;
    PFNExecution m_pfnExecution = nullptr;
    void (*m_pfnTermLibrary)() = nullptr;
    bool m_bExecutionInitialised = false;
    IKLLibrary* m_piLibrary = nullptr;
    CComponentTables m_clTables;
    CXError m_errRefusal;
    uint64_t m_qwInitType = 0;
    std::string m_sPath;
};
