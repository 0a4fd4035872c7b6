#include "BaseExecutionDLL.h"

#include "RecycleurMemoire.h"

#include <dlfcn.h>

CBaseExecutionDLL* gpclExecutionDLL60 = nullptr;
int CBaseExecutionDLL::ms_nNbInitialisation = 0;

CBaseExecutionDLL::~CBaseExecutionDLL() { CRecycleurMemoire::s_VideTout(); }

int CBaseExecutionDLL::_s_InitialiseCommun(void* hVM) {
    // The host exports an entry point of the same name as ours.
    auto pfnHote = reinterpret_cast<PFNExecution>(dlsym(hVM, "Execution"));
    if (!pfnHote) return 0;
    auto qwInfo = [pfnHote](eINFOHOTE e) { return pfnHote(HOTE_INFO, e); };
    ms_piGlobalFactory = reinterpret_cast<IGlobalFactory*>(qwInfo(INFO_GLOBAL_FACTORY));
    ms_piCollecteurTopo = reinterpret_cast<void*>(qwInfo(INFO_COLLECTEUR_TOPO));
    ms_piInfoLocale = reinterpret_cast<void*>(qwInfo(INFO_INFO_LOCALE));
    ms_piStrMemAlloc = reinterpret_cast<IStrMemAlloc*>(qwInfo(INFO_ALLOCATEUR_CHAINE));
    ms_piInformationComposante = reinterpret_cast<void*>(qwInfo(INFO_INFORMATION_COMPOSANTE));
    ms_pbMultithread = reinterpret_cast<int*>(qwInfo(INFO_MULTITHREAD));
    ms_IDThreadPrincipal = static_cast<pthread_t>(qwInfo(INFO_THREAD_PRINCIPAL));
    m_pfnExecutionHote = pfnHote;
    return 1;
}

int CBaseExecutionDLL::__bInitialiseInterne__INTERNE__(void* hVM, ILibShop* piLibShop) {
    if (!hVM) return vbInitialiseDLL();
    m_hInstanceVM = hVM;
    if (!_s_InitialiseCommun(hVM)) return 0;
    ms_piLibShop = piLibShop ? piLibShop
                             : reinterpret_cast<ILibShop*>(s_qwInfoHote(INFO_LIBSHOP));
    ms_nCodeProduitExecution = static_cast<int>(s_qwInfoHote(INFO_CODE_PRODUIT_EXECUTION));
    ms_nCodeProduitReel = static_cast<int>(s_qwInfoHote(INFO_CODE_PRODUIT_REEL));
    ms_nLangueInterne = static_cast<int>(s_qwInfoHote(INFO_LANGUE_INTERNE));
    if (auto* pszNom = reinterpret_cast<const wchar_t*>(s_qwInfoHote(INFO_NOM_PRODUIT)))
        ms_pszNomProduit = pszNom;
    ms_dwOptions = s_qwInfoHote(INFO_OPTIONS);
    // The active version only goes up: an older host keeps our figure.
    auto dwVersion = static_cast<uint32_t>(s_qwInfoHote(INFO_VERSION_ACTIVE));
    if (dwVersion > ms_dwVersionActive) ms_dwVersionActive = dwVersion;
    return vbInitialiseDLL();
}

void CBaseExecutionDLL::__TermineDLLInterne__INTERNE__() {
    m_bTermine = 1;
    vTermineDLL();
}

PFNExecution CBaseExecutionDLL::s_pfnHote() {
    return gpclExecutionDLL60 ? gpclExecutionDLL60->m_pfnExecutionHote : nullptr;
}

uint64_t CBaseExecutionDLL::s_qwInfoHote(uint32_t nSelecteur) {
    PFNExecution pfn = s_pfnHote();
    return pfn ? pfn(HOTE_INFO, nSelecteur) : 0;
}

void CBaseExecutionDLL::s_DebutThread() {
    if (PFNExecution pfn = s_pfnHote()) pfn(HOTE_DEBUT_THREAD, 0);
}

void CBaseExecutionDLL::s_FinThread() {
    if (PFNExecution pfn = s_pfnHote()) pfn(HOTE_FIN_THREAD, 0);
}

int CBaseExecutionDLL::s_bRemplitPileC(uint32_t nNumero, wchar_t* pszTampon, uint32_t nTaille,
                                       uint32_t nOption) {
    STPileC stPile{nNumero, pszTampon, nTaille, nOption};
    PFNExecution pfn = s_pfnHote();
    return pfn ? static_cast<int>(pfn(HOTE_REMPLIT_PILE_C, reinterpret_cast<uint64_t>(&stPile)))
               : 0;
}

int CBaseExecutionDLL::s_eGetModeSmartphone() {
    return static_cast<int>(s_qwInfoHote(INFO_MODE_SMARTPHONE));
}

void* CBaseExecutionDLL::s_hGetHinstanceVM() {
    return gpclExecutionDLL60 ? gpclExecutionDLL60->m_hInstanceVM : nullptr;
}

void CBaseExecutionDLL::s_DechargeDLL() {
    if (PFNExecution pfn = s_pfnHote()) pfn(HOTE_DECHARGE_DLL, 0);
}

void CBaseExecutionDLL::s_TermineDLL() {
    CBaseExecutionDLL* pcl = gpclExecutionDLL60;
    if (!pcl || pcl->m_bTermine || !pcl->m_pfnExecutionHote) return;
    pcl->m_pfnExecutionHote(HOTE_DECHARGE_DLL, 0);
    delete pcl;
    gpclExecutionDLL60 = nullptr;
}

int CBaseExecutionDLL::s_bInitialiseMoiMeme(void* hVM) {
    if (gpclExecutionDLL60) return 1;
    auto* pcl = new CDLLExecutionGGL;
    // Preset: this object was not started by the host, so it never reports back to it.
    pcl->m_bTermine = 1;
    gpclExecutionDLL60 = pcl;
    return pcl->__bInitialiseInterne__INTERNE__(hVM, nullptr);
}

void CBaseExecutionDLL::s_TermineMoiMeme() {
    delete gpclExecutionDLL60;
    gpclExecutionDLL60 = nullptr;
}
