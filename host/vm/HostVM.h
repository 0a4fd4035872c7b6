// CHostVM: the script virtual machine as the component sees it during a call (IVM).
//
//   bRetourneValeur        the result of an object or method stub, into the CCallContext the
//                          stub was given; the forms of abi/VM.h: 1, 8, 9, 11, 12, 16, 17, 19,
//                          26, 28, 30 (an image, read as its bytes), 31, 111 (the VM takes a
//                          reference of its own), 112 (the VM takes over the reference given),
//                          122. Any other code (a font) is noted as a value the host does not
//                          carry.
//   bRetourneValeurAppel   the same for the free-function call of that number
//   pclAlloueTableau       a new CHostArray
//   bEmpileAny, bEmpileDateHeure, bEmpileChaineA, bAppelleFonctionVM
//                          the host functions of library 8 the funnels call: 297 URL encoding,
//                          334 UTC to local time, 335 local time to UTC (the services' host
//                          functions); without them, "not available" (708001)
//   piGetService(8)        the VM's component object, which the registry takes for services
//                          tied to the VM
//   piGetAuthentification  the login dialogue, when one was given
//   nInfoVM(13, 1|2|3)     label, name and line of the running script code, as the caller of
//                          the host set them
#pragma once
#include "CallContext.h"
#include "VM.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

class CAny;

class CHostVM final : public IVM {
public:
    using FNLogin = std::function<IAuthentification*(CXError*)>;

    CHostVM();
    CHostVM(const CHostVM&) = delete;
    CHostVM& operator=(const CHostVM&) = delete;
    ~CHostVM();

    intptr_t nInfoVM(int nInfo, int nSousCode) override;
    int bEmpileAny(CAny* pclRecepteur) override;
    int bAppelleFonctionVM(int nComposante, int nFonction, int nOption, int nNbParametre,
                           CXError* pclErreur) override;
    IInterfaceObjetBase* piGetService(int nService, CXError* pclErreur) override;
    int bRetourneValeurAppel(int nAppel, const void* pValeur, int nType) override;
    int bEmpileDateHeure(const CDateTime* pclDateHeure) override;
    int bRetourneValeur(CCtxInfo* pclCtx, const void* pValeur, int nType) override;
    IKLTableau* pclAlloueTableau(int nTypeElement, int nNbDimension, CXError* pclErreur) override;
    int bEmpileChaineA(const char* psz, int nLongueur) override;
    IAuthentification* piGetAuthentification(CXError* pclErreur) override;

    // Where the script stands, for nInfoVM(13).
    void SetPosition(std::wstring sLabel, std::wstring sName, int nLine);
    // The login dialogue's maker: a new reference, or null with the cause in the error.
    void SetLogin(FNLogin fnLogin) { m_fnLogin = std::move(fnLogin); }
    // Free-function calls: the number the call's STKLAppel carries, and its end.
    int nBeginCall(CCallContext* pclCtx);
    void EndCall(int nAppel);
    // Host functions run so far, by number (the tests count them).
    int nFunctionCalls(int nFonction) const;
    // Whether the host functions of library 8 are here.
    static bool s_bHasHostFunctions();

    // A returned value, read from its form; false for a form the host does not carry.
    static bool s_bReadValue(const void* pValeur, int nType, CHostValue& clOut);

private:
    void _Return(CCallContext* pclCtx, const void* pValeur, int nType);

    std::wstring m_sLabel, m_sName;
    int m_nLine = 0;
    CAny* m_pclReceiver = nullptr;
    std::vector<CAny> m_tabStack;
    std::map<int, CCallContext*> m_mapCalls;
    int m_nNextCall = 1;
    std::map<int, int> m_mapFunctionCalls;
    FNLogin m_fnLogin;
};
