// The execution object: at most one per process, made at the host's first initialisation and
// destroyed when its count of initialisations falls back to zero.
#pragma once
#include "InformationDLL.h"

class CXError;
class IDumpMemoire;
class ILibShop;

class CBaseExecutionDLL : public CInformationDLL {
public:
    CBaseExecutionDLL() = default;
    CBaseExecutionDLL(const CBaseExecutionDLL&) = delete;
    CBaseExecutionDLL& operator=(const CBaseExecutionDLL&) = delete;

    virtual int vbInitialiseDLL() { return 1; }
    virtual void vSetUtilisation(unsigned, unsigned) {}
    virtual void vTermineDLL() {}
    virtual void vChangeLangue() {}
    virtual void vDesactiveApplication() {}
    virtual void vReactiveApplication() {}
    virtual int vbInitialiseTypeDINO(CXError*) { return 0; }
    virtual int vbDumpMemoire(IDumpMemoire*) { return 0; }
    // Gives back the memory of every recycler of the process.
    virtual ~CBaseExecutionDLL();

    // Connects to the host: its entry point, then the values of command 3053. False when the
    // host module has no entry point.
    int __bInitialiseInterne__INTERNE__(void* hVM, ILibShop* piLibShop);
    void __TermineDLLInterne__INTERNE__();

    void* m_hInstanceVM = nullptr;
    PFNExecution m_pfnExecutionHote = nullptr;
    int m_bTermine = 0;

    static int ms_nNbInitialisation;

    // The host's entry point, when the object exists and has it.
    static PFNExecution s_pfnHote();
    static uint64_t s_qwInfoHote(uint32_t nSelecteur);
    static void s_DebutThread();
    static void s_FinThread();
    static int s_bRemplitPileC(uint32_t nNumero, wchar_t* pszTampon, uint32_t nTaille,
                               uint32_t nOption);
    static int s_eGetModeSmartphone();
    static void* s_hGetHinstanceVM();
    static void s_DechargeDLL();
    // Reports to the host that the component goes, unless the host itself ended it.
    static void s_TermineDLL();
    // A component that starts on its own, without a host initialisation.
    static int s_bInitialiseMoiMeme(void* hVM);
    static void s_TermineMoiMeme();

private:
    int _s_InitialiseCommun(void* hVM);
};

class CDLLExecutionGGL final : public CBaseExecutionDLL {
public:
    void vTermineDLL() override {}
    int vbInitialiseTypeDINO(CXError*) override { return 1; }
};

// The one execution object of this library.
extern CBaseExecutionDLL* gpclExecutionDLL60;
