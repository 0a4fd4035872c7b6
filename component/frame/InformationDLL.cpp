#include "InformationDLL.h"

IGlobalFactory* CInformationDLL::ms_piGlobalFactory = nullptr;
void* CInformationDLL::ms_piCollecteurTopo = nullptr;
void* CInformationDLL::ms_piInfoLocale = nullptr;
void* CInformationDLL::ms_piInformationComposante = nullptr;
int* CInformationDLL::ms_pbMultithread = nullptr;
pthread_t CInformationDLL::ms_IDThreadPrincipal = 0;
ILibShop* CInformationDLL::ms_piLibShop = nullptr;
int CInformationDLL::ms_nCodeProduitExecution = 0;
int CInformationDLL::ms_nCodeProduitReel = 0;
int CInformationDLL::ms_nLangueInterne = 12;
const wchar_t* CInformationDLL::ms_pszNomProduit = L"KORVEX";
uint64_t CInformationDLL::ms_dwOptions = 0;
uint32_t CInformationDLL::ms_dwVersionActive = 22;

void CInformationDLL::s_RAZ() {
    ms_piGlobalFactory = nullptr;
    ms_piCollecteurTopo = nullptr;
    ms_piInfoLocale = nullptr;
    ms_piInformationComposante = nullptr;
    ms_pbMultithread = nullptr;
    ms_IDThreadPrincipal = 0;
    ms_piLibShop = nullptr;
    ms_piStrMemAlloc = nullptr;
    ms_nCodeProduitExecution = 0;
    ms_nCodeProduitReel = 0;
    ms_nLangueInterne = 12;
    ms_pszNomProduit = L"KORVEX";
    ms_dwOptions = 0;
    ms_dwVersionActive = 22;
}
