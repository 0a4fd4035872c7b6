#include "KLLibrary.h"

#include "ModuleInfo.h"
#include "VM.h"
#include "XErrorModule60.h"

#include <cstdarg>

void* CKLLibrary::m_ghInstance = nullptr;

CKLLibrary::CKLLibrary() : m_pclError(new _CXErrorModule60), m_idThreadCreation(pthread_self()) {}

CKLLibrary::~CKLLibrary() {
    if (m_pclError) m_pclError->dwRelease();
    m_pclError = nullptr;
}

int CKLLibrary::Release() {
    delete this;
    return 0;
}

CXError* CKLLibrary::pclGetError() { return m_pclError; }

bool CKLLibrary::bInit(void* hInstance) {
    m_ghInstance = hInstance;
    return true;
}

uint64_t CKLLibrary::dwActionGenerique(unsigned nAction, unsigned long nValeur) {
    if (nAction != 1) return 0;
    m_idThreadCreation = static_cast<pthread_t>(nValeur);
    return 1;
}

uint64_t CKLLibrary::InfoComposante_OBSOLETE(unsigned nSelecteur, unsigned long nIndice) {
    return InfoComposante(nSelecteur, nIndice);
}

STKLAppel* CKLLibrary::ChangeContexteAppel(STKLAppel* pstAppel) {
    STKLAppel* pstAncien = m_pstAppel;
    m_pstAppel = pstAppel;
    m_idThreadAppel = pthread_self();
    return pstAncien;
}

void* CKLLibrary::pRecupereAdresseVariable(STKLAppel* pstAppel) {
    pthread_t idAncien = m_idThreadAppel;
    STKLAppel* pstAncien = ChangeContexteAppel(pstAppel);
    void* p = pGetVariableAdresse(pstAppel->nVariable);
    m_pstAppel = pstAncien;
    m_idThreadAppel = idAncien;
    return p;
}

int CKLLibrary::bSignaleEcritureVariable(STKLAppel* pstAppel) {
    pthread_t idAncien = m_idThreadAppel;
    STKLAppel* pstAncien = ChangeContexteAppel(pstAppel);
    EcritVariable(pstAppel->nVariable, pstAppel->nValeur);
    m_pstAppel = pstAncien;
    m_idThreadAppel = idAncien;
    return m_pclError->bEstPropre();
}

IVM* CKLLibrary::_piGetVM(IVM* piVM) const {
    if (m_pstAppel && m_pstAppel->piVM) return m_pstAppel->piVM;
    return piVM;
}

const wchar_t* CKLLibrary::pszGetLibelleTraitementCourant(IVM* piVM) {
    IVM* pi = _piGetVM(piVM);
    return pi ? reinterpret_cast<const wchar_t*>(pi->nInfoVM(INFOVM_TRAITEMENT_COURANT, INFOTRAITEMENT_LIBELLE))
              : nullptr;
}

const wchar_t* CKLLibrary::pszGetNomTraitementCourant(IVM* piVM) {
    IVM* pi = _piGetVM(piVM);
    return pi ? reinterpret_cast<const wchar_t*>(pi->nInfoVM(INFOVM_TRAITEMENT_COURANT, INFOTRAITEMENT_NOM))
              : nullptr;
}

int CKLLibrary::nGetLigneTraitementCourant(IVM* piVM) {
    IVM* pi = _piGetVM(piVM);
    return pi ? static_cast<int>(pi->nInfoVM(INFOVM_TRAITEMENT_COURANT, INFOTRAITEMENT_LIGNE)) : 0;
}

void CKLLibrary::RAZError() { m_pclError->RAZ(); }

void CKLLibrary::RaiseErrorCopy(const CXError* pclErreur) {
    if (pclErreur) m_pclError->Copy(pclErreur);
    else m_pclError->RAZ();
}

void CKLLibrary::RaiseError(CXError* pclErreur) {
    if (pclErreur) m_pclError->LightCopy(pclErreur);
    else m_pclError->RAZ();
}

void CKLLibrary::RaiseError(const _stMyModuleInfo* pstModule, unsigned nCode, ...) {
    va_list args;
    va_start(args, nCode);
    m_pclError->SetUserErrorList(pstModule, nCode, args);
    va_end(args);
}
