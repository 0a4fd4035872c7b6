// CKLLibrary: the library object of the frame. It owns the library's own error and keeps the
// context of the host call in progress.
#pragma once
#include "KLLibraryInterface.h"

#include <pthread.h>

class _CXErrorModule60;
struct _stMyModuleInfo;
class IVM;

class CKLLibrary : public IKLLibrary {
public:
    CKLLibrary();
    CKLLibrary(const CKLLibrary&) = delete;
    CKLLibrary& operator=(const CKLLibrary&) = delete;

    int nGetVersion() override { return 7; }
    int nGetCompatSince() override { return 2; }
    int nGetDllNum() override { return -1; }
    int Release() override;
    void* pQueryProxy(int) override { return nullptr; }
    CXError* pclGetError() override;
    void SetLibShop_OBSOLETE(ILibShop* piLibShop) override { m_piLibShop = piLibShop; }
    int bFinInitKLL() override { return bFinInit(); }
    void TermKLL() override { TermCompo(); }
    uint64_t dwActionGenerique(unsigned nAction, unsigned long nValeur) override;
    uint64_t InfoComposante_OBSOLETE(unsigned nSelecteur, unsigned long nIndice) override;
    STKLAppel* ChangeContexteAppel(STKLAppel* pstAppel) override;
    void* pRecupereAdresseVariable(STKLAppel* pstAppel) override;
    int bSignaleEcritureVariable(STKLAppel* pstAppel) override;
    void DumpMemoireInstance(IDumpMemoire* piDump) override { vDumpMemoireInstance(piDump); }

    virtual ~CKLLibrary();
    virtual int bFinInit() { return 1; }
    virtual void TermCompo() {}
    virtual void* pGetVariableAdresse(int) { return nullptr; }
    virtual void EcritVariable(int, int) {}
    virtual void vDumpMemoireInstance(IDumpMemoire*) {}

    // Label, name and line of the running script code, asked of the VM of the current call, or
    // of the one given when no call is in progress; null or 0 when there is neither.
    const wchar_t* pszGetLibelleTraitementCourant(IVM* piVM);
    const wchar_t* pszGetNomTraitementCourant(IVM* piVM);
    int nGetLigneTraitementCourant(IVM* piVM);

    void RAZError();
    void RaiseErrorCopy(const CXError* pclErreur);
    // Null clears the library's error; anything else is copied lightly into it.
    void RaiseError(CXError* pclErreur);
    void RaiseError(const _stMyModuleInfo* pstModule, unsigned nCode, ...);

    STKLAppel* pstGetAppel() const { return m_pstAppel; }

    static bool bInit(void* hInstance);
    static void Term() {}
    static void* m_ghInstance;

protected:
    STKLAppel* m_pstAppel = nullptr;
    _CXErrorModule60* m_pclError = nullptr;
    ILibShop* m_piLibShop = nullptr;
    pthread_t m_idThreadCreation;
    pthread_t m_idThreadAppel = 0;

private:
    IVM* _piGetVM(IVM* piVM) const;
};
