// IKLLibrary: the library object the host makes through pQueryProxy(60) and drives through
// this vtable. The component implements it; the host calls it. Slot order is binding.
#pragma once
#include <cstdint>

class CXError;
class ILibShop;
class IDumpMemoire;
struct STKLAppel;

class IKLLibrary {
public:
    virtual int nGetVersion() = 0;
    virtual int nGetCompatSince() = 0;
    virtual int nGetDllNum() = 0;
    virtual void StdVersion_EmptySlot_1() {}
    virtual void StdVersion_EmptySlot_2() {}
    virtual void StdVersion_EmptySlot_3() {}
    // Destroys the object; the host's reference ends here.
    virtual int Release() = 0;
    virtual void* pQueryProxy(int n) = 0;
    virtual void AssertValid_INTERNE_OBSOLETE() {}
    virtual int nGetLibraryId_OBSOLETE() { return -1; }
    virtual int nGetVersionKL_OBSOLETE() { return -1; }
    virtual int nGetVersionKLCompat_OBSOLETE() { return -1; }
    virtual void GetResume_DEPRECATED(wchar_t*, unsigned long) {}
    virtual void GetDescription_DEPRECATED(wchar_t*, unsigned long) {}
    virtual const wchar_t* pzGetHelpFile_DEPRECATED() { return L""; }
    virtual CXError* pclGetError() = 0;
    virtual void SetLibShop_OBSOLETE(ILibShop* piLibShop) = 0;
    // The host's last step of loading: false refuses the component, the cause in pclGetError().
    virtual int bFinInitKLL() = 0;
    virtual void TermKLL() = 0;
    virtual uint64_t dwActionGenerique(unsigned nAction, unsigned long nValeur) = 0;
    virtual uint64_t InfoComposante_OBSOLETE(unsigned nSelecteur, unsigned long nIndice) = 0;
    virtual STKLAppel* ChangeContexteAppel(STKLAppel* pstAppel) = 0;
    virtual void* pRecupereAdresseVariable(STKLAppel* pstAppel) = 0;
    virtual int bSignaleEcritureVariable(STKLAppel* pstAppel) = 0;
    virtual void DumpMemoireInstance(IDumpMemoire* piDump) = 0;
    virtual void m977EmptyMethodKLLibrary() {}
    virtual void m978EmptyMethodKLLibrary() {}

protected:
    ~IKLLibrary() = default;
};
