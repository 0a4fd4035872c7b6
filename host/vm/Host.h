// CHost: the reference host over the component's tables, for the Lua module and the tests.
// It loads the component (CComponentLoader), hands each class its type description, serves
// the VM (CHostVM), the peers (CGlobalFactory) and the registry (CHostLibShop, filled by
// CHostServices with the services that exist), and calls the component only through its
// tables, by script name or by row:
//
//   functions    the syntax chosen from the arguments (CSyntaxChooser), the arguments in the
//                forms their codes require (CArgumentBlock), the result read back from the
//                return value
//   types        the constructor without arguments (the others say nothing of what they
//                take); copy (_C), reset (_RAZ)
//   properties   getters (slot 40, or 48 for objects), setters (56), forced setters (64)
//   collections  the accessor's IObjetCollection, and its editable side
//   save/rebuild CObjectSerializer
//
// Every operation answers false when the host refused it (sRefusal of the outcome says why),
// true when it ran; what the component returned and the error it left are in the outcome.
//
// Counting. The host holds each object it hands out by one reference (CHostValue) and gives
// every such object a peer; the object holds its peer and releases it when it dies, so the
// factory's count of live peers tells the objects still alive. Collections are held by the
// reference the accessor gives.
//
// A component whose library object refused the host (600033 without "HTTP") stays loaded:
// objects, properties and methods work; the free functions, which need the library object,
// answer the refusal as their error.
#pragma once
#include "ComponentLoader.h"
#include "GlobalFactory.h"
#include "HostLibShop.h"
#include "HostOutcome.h"
#include "HostVM.h"
#include "SyntaxChooser.h"
#include "TypeDescription.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class CArgumentBlock;

class CHost {
public:
    CHost();
    CHost(const CHost&) = delete;
    CHost& operator=(const CHost&) = delete;
    ~CHost();

    // The component's path when none is given: KVGGL_COMPONENT, else kv220ggl.so beside the
    // module that holds this code.
    static std::string s_sDefaultPath();

    // Registers the services that exist (unless told not to), then loads. False with the
    // reason.
    bool bLoad(const std::string& sPath, std::string& sError);
    // Whether bLoad registers the host's services; on by default. Off, the registry starts
    // empty and whoever loads fills it (tests).
    void SetRegisterServices(bool b) { m_bServices = b; }
    // Every object should be released first; while some live, the code stays mapped.
    void Unload();
    bool bLoaded() const { return m_clLoader.bLoaded(); }
    // The library object's refusal, when it refused the host.
    bool bRefused() const { return m_clLoader.bRefused(); }
    const CXError& errRefusal() const { return m_clLoader.errRefusal(); }
    // Settings that could not be read, one line each.
    const std::string& sWarnings() const { return m_sWarnings; }

    const CComponentTables& clTables() const { return m_clLoader.clTables(); }
    CComponentLoader& clLoader() { return m_clLoader; }
    CHostLibShop& clLibShop() { return m_clLibShop; }
    CHostVM& clVM() { return m_clVM; }
    CGlobalFactory& clFactory() { return m_clFactory; }

    // The class of an object, -1 for one of no class the host knows.
    int nClassOf(IObjetBase* piObjet) const;
    ITypeDescription* piType(int nClass) const;

    bool bCall(int nFunction, const std::vector<CHostValue>& tabArguments, STHostOutcome& st);
    bool bCall(std::string_view svFunction, const std::vector<CHostValue>& tabArguments,
               STHostOutcome& st);
    CHostValue clConstant(int nConstant) const;

    bool bNew(int nClass, const std::vector<CHostValue>& tabArguments, STHostOutcome& st);
    bool bNew(std::string_view svType, const std::vector<CHostValue>& tabArguments,
              STHostOutcome& st);
    // A new object of the source's class, copied from it.
    bool bCopy(IObjetBase* piSource, STHostOutcome& st);
    bool bCopyInto(IObjetBase* piCible, IObjetBase* piSource, STHostOutcome& st);
    bool bReset(IObjetBase* piObjet, STHostOutcome& st);

    bool bGet(IObjetBase* piObjet, int nProperty, STHostOutcome& st);
    bool bGet(IObjetBase* piObjet, std::string_view svProperty, STHostOutcome& st);
    // bForce writes through the forced setter where the property has no setter.
    bool bSet(IObjetBase* piObjet, int nProperty, const CHostValue& clValeur, STHostOutcome& st,
              bool bForce = false);
    bool bSet(IObjetBase* piObjet, std::string_view svProperty, const CHostValue& clValeur,
              STHostOutcome& st);

    // The members beyond the class table, by name, of an object that offers them
    // (IObjetValeur); a refusal for any other object.
    bool bHasDynamic(IObjetBase* piObjet) const;
    bool bGetDynamic(IObjetBase* piObjet, std::string_view svName, STHostOutcome& st);
    bool bSetDynamic(IObjetBase* piObjet, std::string_view svName, const CHostValue& clValeur,
                     STHostOutcome& st);
    // Every member in the object's order, with its value.
    bool bListDynamic(IObjetBase* piObjet, std::vector<std::pair<std::string, CHostValue>>& tab,
                      STHostOutcome& st);

    bool bCollection(IObjetBase* piObjet, int nAccessor, CRef<IObjetCollection>& clCollection,
                     STHostOutcome& st);
    bool bCollection(IObjetBase* piObjet, std::string_view svAccessor,
                     CRef<IObjetCollection>& clCollection, STHostOutcome& st);
    // Indices start at 0 here; the value of an addition is the position it went to.
    bool bCount(IObjetCollection* pi, STHostOutcome& st);
    bool bElement(IObjetCollection* pi, int nIndice, STHostOutcome& st);
    // A nil element adds a new empty one, made by the collection.
    bool bAdd(IObjetCollection* pi, const CHostValue& clElement, STHostOutcome& st);
    bool bInsert(IObjetCollection* pi, int nIndice, const CHostValue& clElement, STHostOutcome& st);
    bool bRemove(IObjetCollection* pi, int nIndice, STHostOutcome& st);
    bool bClear(IObjetCollection* pi, STHostOutcome& st);
    bool bMove(IObjetCollection* pi, int nDepuis, int nVers, STHostOutcome& st);
    bool bSwap(IObjetCollection* pi, int nIndice1, int nIndice2, STHostOutcome& st);

    // The save/rebuild path (CObjectSerializer): the value is the saved text, and the object.
    bool bSave(IObjetBase* piObjet, STHostOutcome& st, bool bSecrets = true);
    bool bRebuild(std::string_view svType, std::string_view svSaved, STHostOutcome& st);

private:
    bool _bTablesRead(const CComponentTables& clTables, std::string& sError);
    // The native object behind a script object, as its own class.
    void* _pNative(IObjetBase* piObjet) const;
    std::string _sClassName(int nClass) const;
    // Every object of the value gets its peer.
    void _Adopt(CHostValue& cl);
    // The class that serves a method syntax left without signature.
    unsigned _nServedTypeRef(size_t nFunction) const;
    // The steps of bCall: the parameter items of each syntax; the native object a method
    // serves; the arguments from nPremier on, in the forms their items require; the call in its
    // context, and what it left.
    std::vector<CSyntaxChooser::STCandidate> _tabCandidates(size_t nFunction) const;
    bool _bServedObject(const CComponentTables::STFunction& stF, const CSyntaxChooser& clChooser,
                        const STSignatureItem& stItem, const CHostValue& clArgument, void*& pObjet,
                        STHostOutcome& st) const;
    bool _bArguments(const CComponentTables::STFunction& stF,
                     const std::vector<STSignatureItem>& tabItems,
                     const std::vector<CHostValue>& tabArguments, size_t nPremier,
                     CArgumentBlock& clArguments, STHostOutcome& st) const;
    bool _bInvoke(const CComponentTables::STFunction& stF, const CComponentTables::STSyntax& stS,
                  void* pObjet, CArgumentBlock& clArguments, STHostOutcome& st);
    bool _bRun(const char* pszOperation, eRESULTATOBJET e, CXError& clErreur, STHostOutcome& st);
    bool _bEdit(IObjetCollection* pi, const char* pszOperation, int n1, int n2,
                eRESULTATOBJET (*pfnEdition)(IObjetCollectionModifiable*, int, int, CCtxInfo*,
                                             CXError*),
                STHostOutcome& st);
    IObjetCollectionModifiable* _piEditable(IObjetCollection* pi, STHostOutcome& st);
    IObjetCollectionModifiable* _piEditableFor(IObjetCollection* pi, const CHostValue& clElement,
                                               int nArgument, const char* pszOperation,
                                               STHostOutcome& st);

    CComponentLoader m_clLoader;
    CHostLibShop m_clLibShop;
    CHostVM m_clVM;
    CGlobalFactory m_clFactory;
    std::vector<std::unique_ptr<CTypeDescription>> m_tabTypes;
    std::string m_sWarnings;
    bool m_bServices = true;
};
