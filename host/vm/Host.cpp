#include "Host.h"

#include "AnyTypes.h"
#include "ArgumentBlock.h"
#include "HostInformation.h"
#include "HostServices.h"
#include "KLLibraryInterface.h"
#include "ObjectSerializer.h"
#include "Any.h"
#include "ObjetValeur.h"
#include "SyntaxChooser.h"
#include "Utf8.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <map>

namespace {

std::string s_sQuote(const std::string& s) {
    return "'" + s + "'";
}

// Whether some syntax of the function has a handler.
bool s_bHandled(const CComponentTables::STFunction& stF) {
    for (const auto& stS : stF.tabSyntaxes)
        if (stS.bHandled())
            return true;
    return false;
}

} // namespace

CHost::CHost() = default;

CHost::~CHost() {
    Unload();
}

std::string CHost::s_sDefaultPath() {
    if (const char* psz = std::getenv("KVGGL_COMPONENT"); psz && *psz)
        return psz;
    Dl_info stInfo{};
    if (dladdr(reinterpret_cast<void*>(&CHost::s_sDefaultPath), &stInfo) && stInfo.dli_fname) {
        std::string s = stInfo.dli_fname;
        size_t n = s.rfind('/');
        return (n == std::string::npos ? std::string(".") : s.substr(0, n)) + "/kv220ggl.so";
    }
    return "./kv220ggl.so";
}

bool CHost::bLoad(const std::string& sPath, std::string& sError) {
    if (bLoaded()) {
        sError = "the component is already loaded";
        return false;
    }
    m_sWarnings.clear();
    CHostInformation::s_ReadSettings([](const char* psz) { return std::getenv(psz); }, m_sWarnings);
    CHostInformation::ms_piGlobalFactory = &m_clFactory;
    if (m_bServices) {
        m_clLibShop.Clear();
        CHostServices::s_Register(m_clLibShop, m_clVM, m_sWarnings);
    }
    return m_clLoader.bLoad(
        sPath, &m_clLibShop,
        [this](const CComponentTables& cl, std::string& s) { return _bTablesRead(cl, s); }, sError);
}

bool CHost::_bTablesRead(const CComponentTables& clTables, std::string&) {
    m_tabTypes.clear();
    for (size_t c = 0; c < clTables.tabClasses().size(); ++c) {
        const auto& st = clTables.tabClasses()[c];
        m_tabTypes.push_back(std::make_unique<CTypeDescription>(
            static_cast<int>(c), static_cast<int>(st.pst->nIdentifiant),
            KVUtf8::VersWide(st.sName)));
        // Each class keeps its description before it is first used.
        if (st.pst->pfnType)
            st.pst->pfnType(m_tabTypes.back().get());
    }
    return true;
}

void CHost::Unload() {
    if (!m_clLoader.bLoaded())
        return;
    // An object still alive would call into unmapped code when it goes.
    m_clLoader.Unload(m_clFactory.nLivePeers() > 0);
    m_tabTypes.clear();
    m_clLibShop.Clear();
    m_clVM.SetLogin({});
    CHostInformation::ms_piGlobalFactory = nullptr;
}

int CHost::nClassOf(IObjetBase* piObjet) const {
    IObjetComposante* pi = piObjet ? piObjet->vpiGetIObjetComposante() : nullptr;
    ITypeDescription* piType = pi ? pi->vpiGetTypeReel() : nullptr;
    for (const auto& p : m_tabTypes)
        if (p.get() == piType)
            return p->nClass();
    return -1;
}

ITypeDescription* CHost::piType(int nClass) const {
    if (nClass < 0 || static_cast<size_t>(nClass) >= m_tabTypes.size())
        return nullptr;
    return m_tabTypes[static_cast<size_t>(nClass)].get();
}

void* CHost::_pNative(IObjetBase* piObjet) const {
    IObjetComposante* pi = piObjet ? piObjet->vpiGetIObjetComposante() : nullptr;
    return pi ? pi->vpGetSafeObjetC(pi->vpiGetTypeReel()) : nullptr;
}

std::string CHost::_sClassName(int nClass) const {
    if (nClass < 0 || static_cast<size_t>(nClass) >= clTables().tabClasses().size())
        return "?";
    return clTables().tabClasses()[static_cast<size_t>(nClass)].sName;
}

void CHost::_Adopt(CHostValue& cl) {
    if (cl.eKind() == CHostValue::KIND_OBJECT)
        m_clFactory.bEnsurePeer(cl.piGetObject());
    if (cl.eKind() == CHostValue::KIND_ARRAY)
        for (const CHostValue& clE : cl.tabGetArray())
            if (clE.eKind() == CHostValue::KIND_OBJECT)
                m_clFactory.bEnsurePeer(clE.piGetObject());
}

unsigned CHost::_nServedTypeRef(size_t nFunction) const {
    const auto& tabF = clTables().tabFunctions();
    auto Servi = [](const CComponentTables::STSyntax& st) {
        return st.bSigned && st.nKind == KLL_GENRE_METHODE && st.bHandled() &&
               !st.tabParameters.empty();
    };
    for (const auto& st : tabF[nFunction].tabSyntaxes)
        if (Servi(st))
            return st.tabParameters[0].nQualifier;
    // No signature says it: the class that serves the functions whose names share the longest
    // beginning with this one ("GglDeconnecte" is served as "GglConnecte" is).
    const std::string& sNom = tabF[nFunction].sName;
    size_t nMeilleur = 0;
    std::map<unsigned, int> mapVotes;
    for (const auto& stF : tabF) {
        size_t n = 0;
        while (n < sNom.size() && n < stF.sName.size() && sNom[n] == stF.sName[n])
            ++n;
        if (n == 0 || n < nMeilleur || &stF == &tabF[nFunction])
            continue;
        for (const auto& st : stF.tabSyntaxes) {
            if (!Servi(st))
                continue;
            if (n > nMeilleur)
                mapVotes.clear(), nMeilleur = n;
            ++mapVotes[st.tabParameters[0].nQualifier];
        }
    }
    unsigned nType = 0;
    int nVotes = 0;
    for (auto [n, v] : mapVotes)
        if (v > nVotes)
            nType = n, nVotes = v;
    return nType;
}

bool CHost::bCall(std::string_view svFunction, const std::vector<CHostValue>& tabArguments,
                  STHostOutcome& st) {
    st = {};
    int n = clTables().nFindFunction(svFunction);
    if (n < 0)
        return st.bRefuse("the component has no function '" + std::string(svFunction) + "'");
    return bCall(n, tabArguments, st);
}

bool CHost::bCall(int nFunction, const std::vector<CHostValue>& tabArguments, STHostOutcome& st) {
    st = {};
    if (!bLoaded())
        return st.bRefuse("the component is not loaded");
    if (nFunction < 0 || static_cast<size_t>(nFunction) >= clTables().tabFunctions().size())
        return st.bRefuse("no function " + std::to_string(nFunction));
    const auto& stF = clTables().tabFunctions()[static_cast<size_t>(nFunction)];
    if (!s_bHandled(stF))
        return st.bRefuse(s_sQuote(stF.sName) + " has no handler in this component");

    const std::vector<CSyntaxChooser::STCandidate> tabCandidats =
        _tabCandidates(static_cast<size_t>(nFunction));
    CSyntaxChooser clChooser(clTables(), [this](IObjetBase* pi) { return nClassOf(pi); });
    std::string sMessage;
    int k = clChooser.nChoose(stF.sName, tabCandidats, tabArguments, sMessage);
    if (k < 0)
        return st.bRefuse(sMessage);
    const auto& stS = stF.tabSyntaxes[static_cast<size_t>(k)];
    const auto& tabItems = tabCandidats[static_cast<size_t>(k)].tabItems;
    if (!stS.bHandled())
        return st.bRefuse(s_sQuote(stF.sName) + " has no handler in this component for " +
                          "these arguments (syntax " + std::to_string(k) + ")");

    void* pObjet = nullptr;
    const bool bMethode = stS.nKind == KLL_GENRE_METHODE;
    if (bMethode && !_bServedObject(stF, clChooser, tabItems[0], tabArguments[0], pObjet, st))
        return false;
    CArgumentBlock clArguments;
    if (!_bArguments(stF, tabItems, tabArguments, bMethode ? 1 : 0, clArguments, st))
        return false;
    return _bInvoke(stF, stS, pObjet, clArguments, st);
}

std::vector<CSyntaxChooser::STCandidate> CHost::_tabCandidates(size_t nFunction) const {
    // A syntax without signature is served by its class and takes integers after it.
    std::vector<CSyntaxChooser::STCandidate> tab;
    for (const auto& stS : clTables().tabFunctions()[nFunction].tabSyntaxes) {
        CSyntaxChooser::STCandidate stC;
        stC.bMethod = stS.nKind == KLL_GENRE_METHODE;
        if (stS.bSigned) {
            stC.tabItems = stS.tabParameters;
        } else if (stS.nParameters > 0) {
            stC.tabItems.push_back(
                {KVTYPE_KLDINO,
                 static_cast<uint16_t>(stC.bMethod ? _nServedTypeRef(nFunction) : 0)});
            stC.tabItems.resize(stS.nParameters, STSignatureItem{KVTYPE_KLI4, 0});
        }
        tab.push_back(std::move(stC));
    }
    return tab;
}

bool CHost::_bServedObject(const CComponentTables::STFunction& stF, const CSyntaxChooser& clChooser,
                           const STSignatureItem& stItem, const CHostValue& clArgument,
                           void*& pObjet, STHostOutcome& st) const {
    // Without a class to serve it, no native object can be chosen: casting on a guess would
    // hand the stub an object of another class.
    if (stItem.nQualifier == 0)
        return st.bRefuse("the host cannot tell which type serves " + s_sQuote(stF.sName));
    int nClasse = clTables().nClassOfTypeRef(stItem.nQualifier);
    IObjetComposante* pi = clArgument.piGetObject()->vpiGetIObjetComposante();
    pObjet = pi && nClasse >= 0 ? pi->vpGetSafeObjetC(piType(nClasse)) : nullptr;
    if (!pObjet)
        return st.bRefuse("bad argument #1 to " + s_sQuote(stF.sName) + " (" +
                          clChooser.sExpected(stItem) + " expected)");
    return true;
}

bool CHost::_bArguments(const CComponentTables::STFunction& stF,
                        const std::vector<STSignatureItem>& tabItems,
                        const std::vector<CHostValue>& tabArguments, size_t nPremier,
                        CArgumentBlock& clArguments, STHostOutcome& st) const {
    for (size_t i = nPremier; i < tabArguments.size(); ++i) {
        std::string sPourquoi;
        ITypeDescription* piClasse =
            tabItems[i].nBaseCode() == KVTYPE_KLDINO
                ? piType(clTables().nClassOfTypeRef(tabItems[i].nQualifier))
                : nullptr;
        if (!clArguments.bAdd(tabItems[i], tabArguments[i], piClasse, sPourquoi))
            return st.bRefuse("bad argument #" + std::to_string(i + 1) + " to " +
                              s_sQuote(stF.sName) + " (" + sPourquoi + ")");
    }
    return true;
}

bool CHost::_bInvoke(const CComponentTables::STFunction& stF, const CComponentTables::STSyntax& stS,
                     void* pObjet, CArgumentBlock& clArguments, STHostOutcome& st) {
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    IKLLibrary* piLib = m_clLoader.piLibrary();
    if (stS.nKind == KLL_GENRE_METHODE) {
        // The library knows the call it is in, for what it asks the VM of the running code.
        int nAppel = m_clVM.nBeginCall(&clCtx);
        STKLAppel stAppel{&m_clVM, 0, 0, 0, nAppel};
        STKLAppel* pstAvant = piLib ? piLib->ChangeContexteAppel(&stAppel) : nullptr;
        stS.pst->pfnMethode(pObjet, clArguments.ppArguments(), &clCtx, &clErreur);
        if (piLib)
            piLib->ChangeContexteAppel(pstAvant);
        m_clVM.EndCall(nAppel);
    } else if (stS.nKind == KLL_GENRE_LIBRE) {
        if (bRefused() || !piLib) {
            st.TakeError(errRefusal());
            return true;
        }
        // A free function reports through the library's own error.
        if (CXError* pcl = piLib->pclGetError())
            pcl->RAZ();
        int nAppel = m_clVM.nBeginCall(&clCtx);
        STKLAppel stAppel{&m_clVM, 0, 0, 0, nAppel};
        STKLAppel* pstAvant = piLib->ChangeContexteAppel(&stAppel);
        stS.pst->pfnLibre(&stAppel, piLib, clArguments.ppArguments());
        piLib->ChangeContexteAppel(pstAvant);
        m_clVM.EndCall(nAppel);
        if (CXError* pcl = piLib->pclGetError(); pcl && !pcl->bEstPropre())
            clErreur.Copy(pcl);
    } else {
        return st.bRefuse(s_sQuote(stF.sName) + " has a syntax of an unknown kind");
    }
    st.TakeError(clErreur);
    st.clValue = std::move(clCtx.m_clResult);
    _Adopt(st.clValue);
    if (clCtx.m_bUnreadable)
        return st.bRefuse(s_sQuote(stF.sName) + " returned a value of type " +
                          std::to_string(clCtx.m_nReturnType) + ", which this host cannot hold");
    return true;
}

CHostValue CHost::clConstant(int nConstant) const {
    if (nConstant < 0 || static_cast<size_t>(nConstant) >= clTables().tabConstants().size())
        return {};
    const STKLConstante* pst = clTables().tabConstants()[static_cast<size_t>(nConstant)].pst;
    switch (pst->nGetTypeCode()) {
    case KVTYPE_TEXT:
    case KVTYPE_KLDSTRW:
        return CHostValue::s_String(pst->pszValeur ? KVUtf8::VersUtf8(pst->pszValeur) : "");
    case KVTYPE_KLBOOL:
        return CHostValue::s_Boolean(pst->nValeur != 0);
    case KVTYPE_KLR8: {
        double r;
        std::memcpy(&r, &pst->nValeur, sizeof(r));
        return CHostValue::s_Real(r);
    }
    default: // integers: 32 bits in the row's word
        return CHostValue::s_Integer(
            pst->nGetTypeCode() == KVTYPE_KLI8 ? pst->nValeur : static_cast<int32_t>(pst->nValeur));
    }
}

bool CHost::bNew(std::string_view svType, const std::vector<CHostValue>& tabArguments,
                 STHostOutcome& st) {
    st = {};
    int n = clTables().nFindClass(svType);
    if (n < 0) {
        if (clTables().nFindTypeRef(svType) >= 0)
            return st.bRefuse("type '" + std::string(svType) +
                              "' is declared by the component but has no class");
        return st.bRefuse("the component has no type '" + std::string(svType) + "'");
    }
    return bNew(n, tabArguments, st);
}

bool CHost::bNew(int nClass, const std::vector<CHostValue>& tabArguments, STHostOutcome& st) {
    st = {};
    if (!bLoaded() || nClass < 0 || static_cast<size_t>(nClass) >= clTables().tabClasses().size())
        return st.bRefuse("no such type");
    const auto& stC = clTables().tabClasses()[static_cast<size_t>(nClass)];
    const size_t n = tabArguments.size();
    const CComponentTables::STSyntax* pstS = nullptr;
    // The first that fits: rows without a signature all count 0 parameters.
    for (const auto& stS : stC.tabConstructors)
        if (stS.nParameters == n) {
            pstS = &stS;
            break;
        }
    // Constructor syntaxes come without signatures: the k-th takes k arguments.
    if (!pstS && n < stC.tabConstructors.size())
        pstS = &stC.tabConstructors[n];
    if (!pstS)
        return st.bRefuse("wrong number of arguments to " + s_sQuote(stC.sName) + " (" +
                          (stC.tabConstructors.empty()
                               ? std::string("no constructor")
                               : "at most " + std::to_string(stC.tabConstructors.size() - 1)) +
                          " expected, got " + std::to_string(n) + ")");
    if (!pstS->bHandled())
        return st.bRefuse("type " + s_sQuote(stC.sName) + " has no constructor in this component");
    // Constructor rows carry no signature: a form guessed for an argument could be read by the
    // stub as another, so only the constructor without arguments is called.
    if (n > 0)
        return st.bRefuse("type " + s_sQuote(stC.sName) +
                          " is made without arguments by this host (its other constructors " +
                          "do not say what they take)");
    CArgumentBlock clArguments;
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    void* p = pstS->pst->pfnConstructeur(clArguments.ppArguments(), &clCtx, &clErreur);
    st.TakeError(clErreur);
    st.clValue = CHostValue::s_Object(static_cast<IObjetBase*>(p));
    _Adopt(st.clValue);
    if (!p && !st.bError) {
        st.bError = true;
        st.sMessage = "the constructor of " + stC.sName + " made no object";
    }
    return true;
}

bool CHost::bCopy(IObjetBase* piSource, STHostOutcome& st) {
    st = {};
    int nClasse = nClassOf(piSource);
    if (nClasse < 0)
        return st.bRefuse("copy of something that is not an object of the component");
    if (!bNew(nClasse, {}, st))
        return false;
    if (st.bError)
        return true;
    CHostValue clCopie = std::move(st.clValue);
    if (!bCopyInto(clCopie.piGetObject(), piSource, st))
        return false;
    st.clValue = std::move(clCopie);
    return true;
}

bool CHost::bCopyInto(IObjetBase* piCible, IObjetBase* piSource, STHostOutcome& st) {
    st = {};
    int nClasse = nClassOf(piSource);
    if (nClasse < 0 || nClassOf(piCible) != nClasse)
        return st.bRefuse("copy between objects of different types");
    const auto* pst = clTables().tabClasses()[static_cast<size_t>(nClasse)].pst;
    if (!pst->pfnCopie)
        return st.bRefuse("type " + s_sQuote(_sClassName(nClasse)) +
                          " has no copy in this component");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    pst->pfnCopie(_pNative(piCible), _pNative(piSource), &clCtx, &clErreur);
    st.TakeError(clErreur);
    return true;
}

bool CHost::bReset(IObjetBase* piObjet, STHostOutcome& st) {
    st = {};
    int nClasse = nClassOf(piObjet);
    if (nClasse < 0)
        return st.bRefuse("reset of something that is not an object of the component");
    const auto* pst = clTables().tabClasses()[static_cast<size_t>(nClasse)].pst;
    if (!pst->pfnRAZ)
        return st.bRefuse("type " + s_sQuote(_sClassName(nClasse)) +
                          " has no reset in this component");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    pst->pfnRAZ(_pNative(piObjet), &clCtx, &clErreur);
    st.TakeError(clErreur);
    return true;
}

bool CHost::bGet(IObjetBase* piObjet, std::string_view svProperty, STHostOutcome& st) {
    st = {};
    int nClasse = nClassOf(piObjet);
    int n = clTables().nFindMember(nClasse, svProperty);
    if (n < 0)
        return st.bRefuse(_sClassName(nClasse) + " has no property '" + std::string(svProperty) +
                          "'");
    return bGet(piObjet, n, st);
}

bool CHost::bGet(IObjetBase* piObjet, int nProperty, STHostOutcome& st) {
    st = {};
    int nClasse = nClassOf(piObjet);
    if (nClasse < 0)
        return st.bRefuse("not an object of the component");
    const auto& stC = clTables().tabClasses()[static_cast<size_t>(nClasse)];
    if (nProperty < 0 || static_cast<size_t>(nProperty) >= stC.tabProperties.size())
        return st.bRefuse("no such property of " + stC.sName);
    const auto& stP = stC.tabProperties[static_cast<size_t>(nProperty)];
    PFNKLLGet pfn = stP.pfnGetter();
    if (!pfn)
        return st.bRefuse("property " + s_sQuote(stP.sName) + " of " + stC.sName +
                          " has no handler in this component");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    pfn(_pNative(piObjet), &clCtx, &clErreur);
    st.TakeError(clErreur);
    st.clValue = std::move(clCtx.m_clResult);
    _Adopt(st.clValue);
    if (clCtx.m_bUnreadable)
        return st.bRefuse("property " + s_sQuote(stP.sName) + " of " + stC.sName +
                          " holds a value of type " + std::to_string(clCtx.m_nReturnType) +
                          ", which this host cannot hold");
    return true;
}

bool CHost::bHasDynamic(IObjetBase* piObjet) const {
    return piObjet && piObjet->vpiGetIObjetValeur();
}

bool CHost::bGetDynamic(IObjetBase* piObjet, std::string_view svName, STHostOutcome& st) {
    st = {};
    IObjetValeur* pi = piObjet ? piObjet->vpiGetIObjetValeur() : nullptr;
    if (!pi)
        return st.bRefuse("the object has no members beyond its class");
    const std::wstring sNom = KVUtf8::VersWide(svName);
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    CAny clValeur;
    pi->veGetValeurAny(CNomStandard(sNom.c_str(), sNom.size()), &clValeur, 0, &clCtx, &clErreur);
    st.TakeError(clErreur);
    if (!st.bError && !CHostValue::s_bFromAny(clValeur, st.clValue))
        return st.bRefuse("member '" + std::string(svName) + "' holds a value this host cannot hold");
    return true;
}

bool CHost::bSetDynamic(IObjetBase* piObjet, std::string_view svName, const CHostValue& clValeur,
                        STHostOutcome& st) {
    st = {};
    IObjetValeur* pi = piObjet ? piObjet->vpiGetIObjetValeur() : nullptr;
    if (!pi)
        return st.bRefuse("the object has no members beyond its class");
    CXError clErreur;
    CAny clAny;
    if (!clValeur.bToAny(clAny, &clErreur))
        return st.bRefuse("member '" + std::string(svName) + "' cannot take that value");
    const std::wstring sNom = KVUtf8::VersWide(svName);
    CCallContext clCtx(&m_clVM);
    pi->veSetValeurAny(CNomStandard(sNom.c_str(), sNom.size()), &clAny, 0, &clCtx, &clErreur);
    st.TakeError(clErreur);
    return true;
}

namespace {
class CListeMembres final : public IObjetValeur::IVisiteurValeur {
public:
    explicit CListeMembres(std::vector<std::pair<std::string, CHostValue>>& tab) : m_tab(tab) {}
    int veVisiteValeur(const CNomStandard& clNom, const CAny& clValeur) override {
        CHostValue cl;
        if (CHostValue::s_bFromAny(clValeur, cl))
            m_tab.emplace_back(KVUtf8::VersUtf8(clNom.sv()), std::move(cl));
        return 0;
    }

private:
    std::vector<std::pair<std::string, CHostValue>>& m_tab;
};
} // namespace

bool CHost::bListDynamic(IObjetBase* piObjet, std::vector<std::pair<std::string, CHostValue>>& tab,
                         STHostOutcome& st) {
    st = {};
    IObjetValeur* pi = piObjet ? piObjet->vpiGetIObjetValeur() : nullptr;
    if (!pi)
        return st.bRefuse("the object has no members beyond its class");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    CListeMembres clListe(tab);
    pi->veParcourtValeur(&clListe, &clCtx, &clErreur);
    st.TakeError(clErreur);
    return true;
}

bool CHost::bSet(IObjetBase* piObjet, std::string_view svProperty, const CHostValue& clValeur,
                 STHostOutcome& st) {
    st = {};
    int nClasse = nClassOf(piObjet);
    int n = clTables().nFindMember(nClasse, svProperty);
    if (n < 0)
        return st.bRefuse(_sClassName(nClasse) + " has no property '" + std::string(svProperty) +
                          "'");
    return bSet(piObjet, n, clValeur, st);
}

bool CHost::bSet(IObjetBase* piObjet, int nProperty, const CHostValue& clValeur, STHostOutcome& st,
                 bool bForce) {
    st = {};
    int nClasse = nClassOf(piObjet);
    if (nClasse < 0)
        return st.bRefuse("not an object of the component");
    const auto& stC = clTables().tabClasses()[static_cast<size_t>(nClasse)];
    if (nProperty < 0 || static_cast<size_t>(nProperty) >= stC.tabProperties.size())
        return st.bRefuse("no such property of " + stC.sName);
    const auto& stP = stC.tabProperties[static_cast<size_t>(nProperty)];
    PFNKLLSet pfn = stP.pst->pfnSet;
    if (!pfn && bForce)
        pfn = stP.pst->pfnSetForce;
    if (!pfn) {
        // A row with a forced setter, or marked read-only, is read-only to scripts; a writable
        // row without its setter is one the component does not serve yet.
        uint64_t nOption = stP.pst->qwOption & 0xFFFF;
        bool bLectureSeule = stP.pst->pfnSetForce || nOption == 0x2 || nOption == 0x402;
        return st.bRefuse("property " + s_sQuote(stP.sName) + " of " + stC.sName +
                          (bLectureSeule ? " is read-only" : " has no handler in this component"));
    }
    STSignatureItem stItem{stP.nType(), static_cast<uint16_t>(stP.nTypeRef())};
    CSyntaxChooser clChooser(clTables(), [this](IObjetBase* pi) { return nClassOf(pi); });
    CArgumentBlock clArguments;
    std::string sPourquoi;
    ITypeDescription* piClasse =
        stP.bObject() ? piType(clTables().nClassOfTypeRef(stP.nTypeRef())) : nullptr;
    if (clChooser.nScore(stItem, clValeur, false) < 0)
        sPourquoi = clChooser.sWhyNot(stItem, clValeur);
    if (!sPourquoi.empty() || !clArguments.bAdd(stItem, clValeur, piClasse, sPourquoi))
        return st.bRefuse("bad value for property " + s_sQuote(stP.sName) + " of " + stC.sName +
                          " (" + sPourquoi + ")");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    pfn(_pNative(piObjet), clArguments.ppArguments(), &clCtx, &clErreur);
    st.TakeError(clErreur);
    return true;
}

bool CHost::bCollection(IObjetBase* piObjet, std::string_view svAccessor,
                        CRef<IObjetCollection>& clCollection, STHostOutcome& st) {
    st = {};
    int nClasse = nClassOf(piObjet);
    int n = clTables().nFindMember(nClasse, svAccessor);
    if (n >= 0 || n == INT32_MIN)
        return st.bRefuse(_sClassName(nClasse) + " has no collection '" + std::string(svAccessor) +
                          "'");
    return bCollection(piObjet, -1 - n, clCollection, st);
}

bool CHost::bCollection(IObjetBase* piObjet, int nAccessor, CRef<IObjetCollection>& clCollection,
                        STHostOutcome& st) {
    st = {};
    clCollection.Reset();
    int nClasse = nClassOf(piObjet);
    if (nClasse < 0)
        return st.bRefuse("not an object of the component");
    const auto& stC = clTables().tabClasses()[static_cast<size_t>(nClasse)];
    if (nAccessor < 0 || static_cast<size_t>(nAccessor) >= stC.tabAccessors.size())
        return st.bRefuse("no such collection of " + stC.sName);
    const auto& stA = stC.tabAccessors[static_cast<size_t>(nAccessor)];
    if (!stA.pst->pfnAccesseur)
        return st.bRefuse("collection " + s_sQuote(stA.sName) + " of " + stC.sName +
                          " has no handler in this component");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    // The accessor gives the collection side without a reference for the caller (a list made
    // for the call starts at 0, a list the object is, or holds, is borrowed): the host takes
    // its own.
    void* p = stA.pst->pfnAccesseur(_pNative(piObjet), &clCtx, &clErreur);
    clCollection = CRef<IObjetCollection>::Retain(static_cast<IObjetCollection*>(p));
    st.TakeError(clErreur);
    if (!p && !st.bError)
        return st.bRefuse("collection " + s_sQuote(stA.sName) + " of " + stC.sName +
                          " gave nothing");
    return true;
}

bool CHost::bCount(IObjetCollection* pi, STHostOutcome& st) {
    st = {};
    if (!pi)
        return st.bRefuse("no collection");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    int n = pi->vnGetNbElementCollection(&clCtx, &clErreur);
    st.TakeError(clErreur);
    st.clValue = CHostValue::s_Integer(n);
    return true;
}

bool CHost::bElement(IObjetCollection* pi, int nIndice, STHostOutcome& st) {
    st = {};
    if (!pi)
        return st.bRefuse("no collection");
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    IObjetBase* piElement = pi->vpiGetElementCollection(nIndice, &clCtx, &clErreur);
    st.TakeError(clErreur);
    st.clValue = CHostValue::s_Object(piElement);
    _Adopt(st.clValue);
    return true;
}

IObjetCollectionModifiable* CHost::_piEditable(IObjetCollection* pi, STHostOutcome& st) {
    IObjetCollectionModifiable* piM = pi ? pi->vpiGetIObjetCollectionModifiable() : nullptr;
    if (!piM)
        st.bRefuse(pi ? "the collection cannot be changed" : "no collection");
    return piM;
}

bool CHost::_bRun(const char* pszOperation, eRESULTATOBJET e, CXError& clErreur,
                  STHostOutcome& st) {
    st.TakeError(clErreur);
    if (e == RESULTAT_OBJET_NON_SUPPORTE && !st.bError)
        return st.bRefuse(std::string("the collection does not support ") + pszOperation);
    if (e != RESULTAT_OBJET_OK && !st.bError) {
        st.bError = true;
        st.nLevel = ELEVEL_ERREUR;
        st.sMessage = std::string("the collection refused to ") + pszOperation;
    }
    return true;
}

// The editable side, and a check of the element the script gives (nil asks for a new one).
IObjetCollectionModifiable* CHost::_piEditableFor(IObjetCollection* pi, const CHostValue& clElement,
                                                  int nArgument, const char* pszOperation,
                                                  STHostOutcome& st) {
    st = {};
    IObjetCollectionModifiable* piM = _piEditable(pi, st);
    if (piM && !clElement.bNil() && clElement.eKind() != CHostValue::KIND_OBJECT) {
        st.bRefuse("bad argument #" + std::to_string(nArgument) + " to '" + pszOperation +
                   "' (object expected, got " + clElement.pszKindName() + ")");
        return nullptr;
    }
    return piM;
}

bool CHost::bAdd(IObjetCollection* pi, const CHostValue& clElement, STHostOutcome& st) {
    IObjetCollectionModifiable* piM = _piEditableFor(pi, clElement, 1, "add", st);
    if (!piM)
        return false;
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    int nPosition = -1;
    eRESULTATOBJET e =
        clElement.bNil()
            ? piM->veAjouteElementCollectionVide(&nPosition, &clCtx, &clErreur)
            : piM->veAjouteElementCollection(clElement.piGetObject()->vpiGetIObjetComposante(),
                                             &nPosition, &clCtx, &clErreur);
    if (e == RESULTAT_OBJET_OK)
        st.clValue = CHostValue::s_Integer(nPosition);
    return _bRun("add", e, clErreur, st);
}

bool CHost::bInsert(IObjetCollection* pi, int nIndice, const CHostValue& clElement,
                    STHostOutcome& st) {
    IObjetCollectionModifiable* piM = _piEditableFor(pi, clElement, 2, "insert", st);
    if (!piM)
        return false;
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    eRESULTATOBJET e =
        clElement.bNil()
            ? piM->veInsereElementCollectionVide(nIndice, &clCtx, &clErreur)
            : piM->veInsereElementCollection(
                  nIndice, clElement.piGetObject()->vpiGetIObjetComposante(), &clCtx, &clErreur);
    return _bRun("insert", e, clErreur, st);
}

namespace {
using PFNEdition = eRESULTATOBJET (*)(IObjetCollectionModifiable*, int, int, CCtxInfo*, CXError*);
} // namespace

// One edit of a collection by index: the editable side, a call context, the outcome.
bool CHost::_bEdit(IObjetCollection* pi, const char* pszOperation, int n1, int n2,
                   PFNEdition pfnEdition, STHostOutcome& st) {
    st = {};
    IObjetCollectionModifiable* piM = _piEditable(pi, st);
    if (!piM)
        return false;
    CCallContext clCtx(&m_clVM);
    CXError clErreur;
    return _bRun(pszOperation, pfnEdition(piM, n1, n2, &clCtx, &clErreur), clErreur, st);
}

bool CHost::bRemove(IObjetCollection* pi, int nIndice, STHostOutcome& st) {
    return _bEdit(
        pi, "remove", nIndice, 0,
        [](IObjetCollectionModifiable* piM, int n, int, CCtxInfo* pclCtx, CXError* pclErreur) {
            return piM->veSupprimeElementCollection(n, pclCtx, pclErreur);
        },
        st);
}

bool CHost::bClear(IObjetCollection* pi, STHostOutcome& st) {
    return _bEdit(
        pi, "clear", 0, 0,
        [](IObjetCollectionModifiable* piM, int, int, CCtxInfo* pclCtx, CXError* pclErreur) {
            return piM->veSupprimeToutElementCollection(pclCtx, pclErreur);
        },
        st);
}

bool CHost::bMove(IObjetCollection* pi, int nDepuis, int nVers, STHostOutcome& st) {
    return _bEdit(
        pi, "move", nDepuis, nVers,
        [](IObjetCollectionModifiable* piM, int n1, int n2, CCtxInfo* pclCtx, CXError* pclErreur) {
            return piM->veDeplaceElementCollection(n1, n2, pclCtx, pclErreur);
        },
        st);
}

bool CHost::bSwap(IObjetCollection* pi, int nIndice1, int nIndice2, STHostOutcome& st) {
    return _bEdit(
        pi, "swap", nIndice1, nIndice2,
        [](IObjetCollectionModifiable* piM, int n1, int n2, CCtxInfo* pclCtx, CXError* pclErreur) {
            return piM->veEchangeElementCollection(n1, n2, pclCtx, pclErreur);
        },
        st);
}

bool CHost::bSave(IObjetBase* piObjet, STHostOutcome& st, bool bSecrets) {
    st = {};
    return CObjectSerializer(*this).bSave(piObjet, st, bSecrets);
}

bool CHost::bRebuild(std::string_view svType, std::string_view svSaved, STHostOutcome& st) {
    st = {};
    return CObjectSerializer(*this).bRebuild(svType, svSaved, st);
}
