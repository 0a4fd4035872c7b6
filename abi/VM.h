// IVM: the script virtual machine as the component sees it during a call. The host implements
// it; the component calls it from its stubs, its funnels and its services. It is reached through
// the two call contexts below, CCtxInfo (object stubs) and STKLAppel (free functions), and is
// borrowed: it lives as long as the call. Slot order and the offsets of the contexts are binding.
#pragma once
#include <cstddef>
#include <cstdint>

class CAny;
class CDateTime;
class CXError;
class IAuthentification;
class IInterfaceObjetBase;
class IKLTableau;
class IVM;

// The context the host gives every object stub. Stubs read only the VM; the first two words are
// the host's, which may also derive from this class to keep more after them.
class CCtxInfo {
public:
    void* m_pReserve1;
    void* m_pReserve2;
    IVM* m_piVM;

    // A stub called without a context has no VM to return to.
    static IVM* s_piGetVM(const CCtxInfo* pclCtx) { return pclCtx ? pclCtx->m_piVM : nullptr; }
};
static_assert(offsetof(CCtxInfo, m_piVM) == 16, "the VM is the third word of the context");

// The context of a free-function call and of the variable notices of IKLLibrary.
struct STKLAppel {
    IVM* piVM;
    uint32_t dwReserve;
    int32_t nVariable; // the variable that pRecupereAdresseVariable / bSignaleEcritureVariable name
    int32_t nValeur;   // the value that bSignaleEcritureVariable reports
    int32_t nAppel;    // the call number that bRetourneValeurAppel answers
};
static_assert(offsetof(STKLAppel, piVM) == 0 && offsetof(STKLAppel, nVariable) == 12);
static_assert(offsetof(STKLAppel, nValeur) == 16 && offsetof(STKLAppel, nAppel) == 20);
static_assert(sizeof(STKLAppel) == 24);

// nInfoVM: information 13 tells the running script code; its sub-codes 1 and 2 give the address
// of a wide text that the VM keeps until that code changes (label, name), 3 the line number.
enum eINFOVM : int {
    INFOVM_TRAITEMENT_COURANT = 13,
};
enum eINFOTRAITEMENT : int {
    INFOTRAITEMENT_LIBELLE = 1,
    INFOTRAITEMENT_NOM = 2,
    INFOTRAITEMENT_LIGNE = 3,
};

// piGetService: the component object of the VM, which ILibShop::piGetInterfaceVM takes.
enum eSERVICEVM : int {
    SERVICEVM_COMPOSANTE = 8,
};

// bAppelleFonctionVM: the functions of the VM's standard library (component 8) that the funnels
// call. Each takes one parameter and gives one result.
enum eFONCTIONVM : int {
    FONCTIONVM_COMPOSANTE = 8,
    FONCTIONVM_URL_ENCODE = 297,      // UTF-8 narrow text -> the text URL-encoded
    FONCTIONVM_UTC_VERS_LOCALE = 334, // date-time -> wide text of the local date-time
    FONCTIONVM_LOCALE_VERS_UTC = 335, // date-time -> wide text of the UTC date-time
};

// Returning a value (bRetourneValeur, bRetourneValeurAppel): pValeur is the address of the value
// in the form its type code says, and what the VM does with it:
//   1    int, 0 or 1                      copied
//   19   CXYString<char>                  the VM takes a reference of its own
//   28   CKLBIN                           the VM takes a reference of its own
//   31   CAny                             copied
//   111  IObjetBase*, null for none       borrowed: the VM takes a reference of its own (a new
//                                         object, at count 0, is so owned by the VM's first)
//   112  IKLTableau*, null for none       the VM takes over one reference
//   122  const wchar_t*, null for ""      copied
class IVM {
public:
    virtual intptr_t nInfoVM(int nInfo, int nSousCode) = 0;
    // Names the value that receives the result of the next bAppelleFonctionVM; borrowed until
    // that call returns.
    virtual int bEmpileAny(CAny* pclRecepteur) = 0;
    // Runs a function of a library of the VM on the nNbParametre parameters stacked before, in
    // stacking order; nOption is 0. The stack is empty afterwards, whatever the outcome.
    virtual int bAppelleFonctionVM(int nComposante, int nFonction, int nOption, int nNbParametre,
                                   CXError* pclErreur) = 0;
    virtual IInterfaceObjetBase* piGetService(int nService, CXError* pclErreur) = 0;
    // The result of the free-function call nAppel (STKLAppel::nAppel).
    virtual int bRetourneValeurAppel(int nAppel, const void* pValeur, int nType) = 0;
    virtual int bEmpileDateHeure(const CDateTime* pclDateHeure) = 0;
    // The result of the object or method stub that got pclCtx.
    virtual int bRetourneValeur(CCtxInfo* pclCtx, const void* pValeur, int nType) = 0;
    // A new empty array of nNbDimension dimensions whose elements have the type code
    // nTypeElement (16 text, 111 objects); its vbInitialise must run before any other use.
    virtual IKLTableau* pclAlloueTableau(int nTypeElement, int nNbDimension,
                                         CXError* pclErreur) = 0;
    // Stacks a narrow text of nLongueur bytes; 0 takes it up to its terminating zero.
    virtual int bEmpileChaineA(const char* psz, int nLongueur) = 0;
    // The host's login dialogue (LoginService.h); null with the cause in the error when the host
    // has none.
    virtual IAuthentification* piGetAuthentification(CXError* pclErreur) = 0;

protected:
    ~IVM() = default;
};
