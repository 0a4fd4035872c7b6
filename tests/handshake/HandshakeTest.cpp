// The host's side of the handshake, played against the built kv220ggl.so: the library is
// loaded with dlopen and reached only through its exported entry points and records.
#include "Execution.h"
#include "HTTPClient.h"
#include "HTTPService.h"
#include "HostLibShop.h"
#include "KLLibraryInterface.h"
#include "LibShop.h"
#include "ObjectInterfaces.h"
#include "Ref.h"
#include "StrMemAlloc.h"
#include "Tables.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <dlfcn.h>
#include <map>
#include <string>
#include <vector>

#define HOST_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// What the host answers to command 3053, and what it was asked.
struct STHote {
    std::map<uint64_t, uint64_t> mapInfo;
    std::vector<std::pair<uint32_t, uint64_t>> tabAppels;
    std::vector<uint64_t> Selecteurs() const {
        std::vector<uint64_t> tab;
        for (auto& [nCode, nArg] : tabAppels)
            if (nCode == 3053) tab.push_back(nArg);
        return tab;
    }
    int nNbCommande(uint32_t nCode) const {
        int n = 0;
        for (auto& a : tabAppels) n += a.first == nCode;
        return n;
    }
};
STHote gstHote;

} // namespace

HOST_EXPORT uint64_t Execution(uint32_t nCode, uint64_t nArgument) {
    gstHote.tabAppels.emplace_back(nCode, nArgument);
    if (nCode != 3053) return 0;
    auto it = gstHote.mapInfo.find(nArgument);
    return it == gstHote.mapInfo.end() ? 0 : it->second;
}
HOST_EXPORT void* nConversionDepassementExt() { return nullptr; }
HOST_EXPORT void* FinConversion() { return nullptr; }

namespace {

class CFactoryModerne final : public IGlobalFactory {
public:
    int vnGetVersion() override { return 3; }
    IKLObjetComposante* vpiCreeKLObjetComposante(IObjetBase*, CXError*) override {
        return nullptr;
    }
};

class CAllocateurHote final : public IStrMemAlloc {
public:
    void* vpAlloue(size_t n) override { return ++m_nAlloue, std::malloc(n); }
    void* vpRealloue(void* p, size_t n) override { return std::realloc(p, n); }
    void vLibere(void* p) override { std::free(p); }
    int m_nAlloue = 0;
};

// The component, loaded once for the whole run as a host loads it.
class Composante : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ms_h = dlopen(KVGGL_SO_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(ms_h, nullptr) << dlerror();
        ms_hHote = dlopen(nullptr, RTLD_NOW);
    }
    static void TearDownTestSuite() {
        if (ms_h) dlclose(ms_h);
        if (ms_hHote) dlclose(ms_hHote);
    }
    void SetUp() override {
        gstHote = {};
        gstHote.mapInfo = {{1, 11}, {2, 7}, {3, reinterpret_cast<uint64_t>(L"TESTHOTE")},
                           {4, 0x40}, {5, 12}, {8, 26},
                           {9, reinterpret_cast<uint64_t>(static_cast<IGlobalFactory*>(&m_clFactory))},
                           {13, reinterpret_cast<uint64_t>(static_cast<IStrMemAlloc*>(&m_clAlloc))},
                           {7, reinterpret_cast<uint64_t>(static_cast<ILibShop*>(&m_clLibShop))}};
    }
    template <class F> static F* Fn(const char* pszNom) {
        void* p = dlsym(ms_h, pszNom);
        EXPECT_NE(p, nullptr) << pszNom;
        return reinterpret_cast<F*>(p);
    }
    static uint64_t Exec(uint32_t nCode, uint64_t nArg) {
        return Fn<uint64_t(uint32_t, uint64_t)>("Execution")(nCode, nArg);
    }
    static uint64_t Info(uint32_t nSel, uint64_t nIndice = 0) {
        return Fn<uint64_t(uint32_t, uint64_t)>("InfoComposante")(nSel, nIndice);
    }
    uint64_t Initialise(uint64_t nTaille = 32, void* hVM = ms_hHote, ILibShop* piLibShop = nullptr) {
        STInitExecution st{nTaille, hVM, 4, 0, piLibShop};
        return Exec(3985, reinterpret_cast<uint64_t>(&st));
    }
    // 1 while the execution object lives (its type initialisation answers), 2 when it is gone;
    // valid once a modern factory has been handed over.
    static uint64_t Sonde() { return Exec(4963, 0); }

    static inline void* ms_h = nullptr;
    static inline void* ms_hHote = nullptr;
    CFactoryModerne m_clFactory;
    CAllocateurHote m_clAlloc;
    CHostLibShop m_clLibShop; // the host's own registry and, below, its own HTTP service
};

TEST_F(Composante, VersionEtSelecteurs) {
    EXPECT_EQ(Fn<int()>("CheckVersion")(), 22);
    const std::pair<uint32_t, uint64_t> tabAttendu[] = {
        {0, 14}, {1, 60}, {2, 635}, {3, 427}, {14, 0}, {24, 79}, {26, 0}, {30, 52},
        {32, 49}, {34, 102}, {36, 0}, {38, 0}, {41, 16101}, {44, 2}, {46, 0}, {13, 0},
        {25, 0}, {35, 0}, {37, 0}};
    for (auto [nSel, nValeur] : tabAttendu) EXPECT_EQ(Info(nSel), nValeur) << "selector " << nSel;
    for (uint32_t nSel : {5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 15u, 16u, 17u, 18u, 19u, 20u, 21u,
                          22u, 27u, 28u, 42u, 43u, 200u})
        EXPECT_EQ(Info(nSel), 0u) << "selector " << nSel << " is not answered";
    EXPECT_EQ(Info(45), reinterpret_cast<uint64_t>(dlsym(ms_h, "__KLL_COMPOSANTE60")));
    EXPECT_EQ(Info(33), reinterpret_cast<uint64_t>(dlsym(ms_h, "__gstTabFonction_60")));
    EXPECT_EQ(Info(23), reinterpret_cast<uint64_t>(dlsym(ms_h, "__gstTabConstante_60")));
    EXPECT_EQ(Info(31), reinterpret_cast<uint64_t>(dlsym(ms_h, "__gstTabTypeRef_60")));
    EXPECT_EQ(Info(29), reinterpret_cast<uint64_t>(dlsym(ms_h, "__gpstTabClasse_60")));
    EXPECT_EQ(Info(40), reinterpret_cast<uint64_t>(dlsym(ms_h, "gbyBlocNom_60")));
    for (uint64_t i = 0; i < 3; ++i) {
        ASSERT_NE(Info(39, i), 0u);
        EXPECT_STREQ(reinterpret_cast<const wchar_t*>(Info(39, i)), L"");
        EXPECT_STREQ(reinterpret_cast<const wchar_t*>(Info(4, i)), L"");
    }
    EXPECT_EQ(Info(39, 3), 0u);
    EXPECT_EQ(Info(4, 9), 0u);
}

// The records as a reader of the file sees them: words at their offsets.
TEST_F(Composante, RecordsParOffset) {
    auto* pby = static_cast<const unsigned char*>(dlsym(ms_h, "__KLL_COMPOSANTE60"));
    ASSERT_NE(pby, nullptr);
    auto q = [pby](size_t n) { uint64_t v; std::memcpy(&v, pby + n, 8); return v; };
    auto d = [pby](size_t n) { uint32_t v; std::memcpy(&v, pby + n, 4); return v; };
    EXPECT_EQ(q(0), 176u);
    EXPECT_EQ(q(8), 0u) << "the list holds one component";
    EXPECT_EQ(q(32), reinterpret_cast<uint64_t>(dlsym(ms_h, "__gstTabFonction_60")));
    for (size_t n : {48u, 56u, 64u, 72u, 104u}) EXPECT_EQ(q(n), 0u) << n;
    EXPECT_NE(q(112), 0u) << "library factory";
    const uint32_t tabMots[][2] = {{120, 60}, {124, 2}, {128, 635}, {132, 427}, {136, 102},
                                   {140, 79}, {144, 0}, {148, 0}, {152, 0}, {156, 0},
                                   {160, 49}, {164, 52}, {168, 16101}, {172, 0}};
    for (auto& m : tabMots) EXPECT_EQ(d(m[0]), m[1]) << "offset " << m[0];
    EXPECT_EQ(*static_cast<void**>(dlsym(ms_h, "gpstListeComposante60")), pby);

    auto* pbyMod = static_cast<const unsigned char*>(dlsym(ms_h, "gstMyModuleInfo60"));
    ASSERT_NE(pbyMod, nullptr);
    auto m = [pbyMod](size_t n) { uint64_t v; std::memcpy(&v, pbyMod + n, 8); return v; };
    EXPECT_EQ(m(0), reinterpret_cast<uint64_t>(dlsym(ms_h, "gstErrorDef60")));
    EXPECT_EQ(m(8), 57u);
    EXPECT_EQ(m(16), 60u);
    EXPECT_STREQ(reinterpret_cast<const wchar_t*>(m(24)), L"kv220ggl.so");
    EXPECT_STREQ(reinterpret_cast<const wchar_t*>(m(32)), L"22.0.44.0");
    EXPECT_NE(m(40), 0u);
    EXPECT_EQ(m(48), reinterpret_cast<uint64_t>(dlsym(ms_h, "bExternalInitLibrary")));
    EXPECT_EQ(m(56), reinterpret_cast<uint64_t>(dlsym(ms_h, "ExternalTermLibrary")));
    EXPECT_EQ(m(64), 1u);
    EXPECT_EQ(m(72), reinterpret_cast<uint64_t>(dlsym(ms_h, "pQueryProxy")));
    EXPECT_EQ(m(80), 0u);
    EXPECT_EQ(m(88), reinterpret_cast<uint64_t>(dlsym(ms_h, "InfoComposante")));
    EXPECT_EQ(m(96), reinterpret_cast<uint64_t>(dlsym(ms_h, "Execution")))
        << "the module's own entry, never the host's";
    EXPECT_EQ(m(104), reinterpret_cast<uint64_t>(dlsym(ms_h, "DLLRES_g_TabKVResources60")));
    uint32_t nNbRes;
    std::memcpy(&nNbRes, pbyMod + 112, 4);
    EXPECT_EQ(nNbRes, 2u);

    auto* pstErreurs = static_cast<const STErrorDef*>(dlsym(ms_h, "gstErrorDef60"));
    EXPECT_EQ(pstErreurs[0].nCodeUtilisateur, 600001u);
    EXPECT_EQ(pstErreurs[4].nRessource, 5870u);
    EXPECT_EQ(pstErreurs[21].nCodeUtilisateur, 600054u);
    EXPECT_EQ(pstErreurs[56].nCodeUtilisateur, 600058u);
    for (int i = 0; i < 57; ++i) {
        EXPECT_NE(pstErreurs[i].nCodeUtilisateur, 600017u);
        EXPECT_EQ(pstErreurs[i].dwDetail, 0u);
        EXPECT_TRUE(pstErreurs[i].nSeverite == 2 || pstErreurs[i].nSeverite == 3);
    }
}

TEST_F(Composante, ComptageDesInitialisations) {
    ASSERT_EQ(Fn<int(void*)>("bExternalInitLibrary")(ms_h), 1);
    // Before the host speaks there is no factory: nothing to initialise.
    EXPECT_EQ(Exec(4963, 0), 1u);

    ASSERT_EQ(Initialise(), 1u);
    ASSERT_EQ(Initialise(), 1u);
    EXPECT_EQ(Sonde(), 1u);
    EXPECT_EQ(Exec(4875, 0), 1u);
    EXPECT_EQ(Sonde(), 1u) << "two initialisations and one end leave the object";
    EXPECT_EQ(Exec(4875, 0), 1u);
    EXPECT_EQ(Sonde(), 2u) << "the second end removes it";
    EXPECT_EQ(Exec(4875, 0), 1u) << "an end without object is a no-op";
    EXPECT_EQ(gstHote.nNbCommande(3052), 0) << "an end from the host is never reported back";

    Fn<void()>("ExternalTermLibrary")();
}

TEST_F(Composante, PremiereInitialisationRateeResteEnPlace) {
    Fn<int(void*)>("bExternalInitLibrary")(ms_h);
    Initialise(); // hands the modern factory over, for the probe
    Exec(4875, 0);
    ASSERT_EQ(Sonde(), 2u);

    // A host module without an entry point: the first initialisation fails...
    void* hSansExecution = dlopen("libm.so.6", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(hSansExecution, nullptr);
    EXPECT_EQ(Initialise(32, hSansExecution), 0u);
    EXPECT_EQ(Sonde(), 1u) << "the half-made object stays";
    // ...and the counter at 0 with the object present: an end tears it down.
    EXPECT_EQ(Exec(4875, 0), 1u);
    EXPECT_EQ(Sonde(), 2u);

    // The failed attempt is not rolled back: the next initialisation finds the object.
    EXPECT_EQ(Initialise(32, hSansExecution), 0u);
    EXPECT_EQ(Initialise(32, hSansExecution), 1u);
    EXPECT_EQ(Exec(4875, 0), 1u);
    EXPECT_EQ(Sonde(), 2u);
    dlclose(hSansExecution);
    Fn<void()>("ExternalTermLibrary")();
}

TEST_F(Composante, SelecteursDemandesDansLOrdre) {
    Fn<int(void*)>("bExternalInitLibrary")(ms_h);
    ASSERT_EQ(Initialise(32, ms_hHote, &m_clLibShop), 1u);
    EXPECT_EQ(gstHote.Selecteurs(),
              (std::vector<uint64_t>{9, 10, 12, 13, 15, 14, 17, 1, 5, 2, 3, 4, 8}))
        << "an ILibShop in the record is not asked for";
    Exec(4875, 0);

    gstHote.tabAppels.clear();
    // A record of 15 bytes or less has no ILibShop field: the host is asked (selector 7).
    ASSERT_EQ(Initialise(15, ms_hHote, reinterpret_cast<ILibShop*>(0x1)), 1u);
    EXPECT_EQ(gstHote.Selecteurs(),
              (std::vector<uint64_t>{9, 10, 12, 13, 15, 14, 17, 7, 1, 5, 2, 3, 4, 8}));

    // The string allocator handed over by selector 13 serves the component's strings.
    int nAvant = m_clAlloc.m_nAlloue;
    wchar_t* psz = Fn<wchar_t*(const wchar_t*)>("STRG_pszCreate")(L"abc");
    EXPECT_EQ(m_clAlloc.m_nAlloue, nAvant + 1);
    EXPECT_STREQ(psz, L"abc");
    CXYString<wchar_t>::Adopt(psz); // the host's allocator frees it here
    Exec(4875, 0);
    Fn<void()>("ExternalTermLibrary")();
}

TEST_F(Composante, FinDeLibrairieSignaleeALHote) {
    auto pfnInit = Fn<int(void*)>("bExternalInitLibrary");
    auto pfnTerm = Fn<void()>("ExternalTermLibrary");
    pfnInit(ms_h);
    pfnInit(ms_h);
    ASSERT_EQ(Initialise(), 1u);
    pfnTerm();
    EXPECT_EQ(gstHote.nNbCommande(3052), 0) << "one library initialisation remains";
    pfnTerm();
    EXPECT_EQ(gstHote.nNbCommande(3052), 1) << "the component tells the host it goes";
    EXPECT_EQ(Sonde(), 2u) << "and destroys its execution object";
    Exec(4875, 0); // the host's own end then finds nothing
}

TEST_F(Composante, ObjetLibrairieEtHTTP) {
    Fn<int(void*)>("bExternalInitLibrary")(ms_h);
    ASSERT_EQ(Initialise(32, ms_hHote, &m_clLibShop), 1u);
    auto pfnProxy = Fn<void*(int)>("pQueryProxy");
    EXPECT_EQ(pfnProxy(61), nullptr);

    auto* piLib = static_cast<IKLLibrary*>(pfnProxy(60));
    ASSERT_NE(piLib, nullptr);
    EXPECT_EQ(piLib->nGetVersion(), 7);
    EXPECT_EQ(piLib->nGetCompatSince(), 2);
    EXPECT_EQ(piLib->nGetDllNum(), -1);
    EXPECT_EQ(piLib->dwActionGenerique(1, 42), 1u);
    EXPECT_EQ(piLib->dwActionGenerique(2, 42), 0u);
    EXPECT_EQ(piLib->InfoComposante_OBSOLETE(0, 0), 14u);
    // No HTTP service: the component is refused with 600033.
    EXPECT_EQ(piLib->bFinInitKLL(), 0);
    CXError* pclErreur = piLib->pclGetError();
    EXPECT_EQ(pclErreur->nGetUserErrorCode(), 600033u);
    EXPECT_EQ(pclErreur->nGetErrorLevel(), 3);
    EXPECT_GT(std::wcslen(pclErreur->pszGetUserMessage()), 0u);
    EXPECT_EQ(m_clLibShop.tabRequests().back(), L"HTTP");
    EXPECT_EQ(piLib->Release(), 0);

    // The library's reference is given back at the end, or the sanitizer reports the service.
    m_clLibShop.Register(gszServiceHTTP, CRef<IInterfaceObjetBase>::Adopt(
                                             new CHTTPClient(STHostOptions())));
    piLib = static_cast<IKLLibrary*>(pfnProxy(60));
    EXPECT_EQ(piLib->bFinInitKLL(), 1);
    EXPECT_TRUE(piLib->pclGetError()->bEstPropre());
    piLib->TermKLL();
    m_clLibShop.Clear();
    piLib->Release();

    Exec(4875, 0);
    Fn<void()>("ExternalTermLibrary")();
}

TEST_F(Composante, MessagesParCommandeComposante) {
    auto pfnCommande = Fn<uint64_t(uint64_t, uint64_t)>("CommandeComposante");
    auto* pstErreurs = static_cast<const STErrorDef*>(dlsym(ms_h, "gstErrorDef60"));
    wchar_t sz[512];
    for (int i = 0; i < 57; ++i) {
        STChargeChaine st{0, pstErreurs[i].nRessource, sz, 512, -7};
        auto n = static_cast<int64_t>(pfnCommande(3, reinterpret_cast<uint64_t>(&st)));
        EXPECT_GT(n, 0) << "code " << pstErreurs[i].nCodeUtilisateur;
        EXPECT_EQ(st.nResultat, n);
        EXPECT_EQ(std::wcslen(sz), static_cast<size_t>(n));
        EXPECT_EQ(static_cast<int64_t>(pfnCommande(4, pstErreurs[i].nRessource)), 0);
    }
    STChargeChaine stAbsent{0, 4242, sz, 512, -7};
    EXPECT_EQ(pfnCommande(3, reinterpret_cast<uint64_t>(&stAbsent)), 0u);
    EXPECT_EQ(static_cast<int64_t>(pfnCommande(4, 4242)), -1);
    EXPECT_EQ(static_cast<int64_t>(pfnCommande(4, 0x0101)), -1) << "the marks are no messages";
    EXPECT_EQ(pfnCommande(9, 0), 0u);

    // The host's loader, once given, is asked first.
    long (*pfnChargeur)(unsigned, wchar_t*, int) = [](unsigned n, wchar_t* p, int) -> long {
        if (n != 5870) return 0;
        std::wcscpy(p, L"du chargeur");
        return 11;
    };
    EXPECT_EQ(pfnCommande(2, reinterpret_cast<uint64_t>(pfnChargeur)), 1u);
    STChargeChaine st{0, 5870, sz, 512, 0};
    EXPECT_EQ(pfnCommande(3, reinterpret_cast<uint64_t>(&st)), 11u);
    EXPECT_STREQ(sz, L"du chargeur");
    pfnCommande(2, 0);
}

TEST_F(Composante, RessourcesProxyEtConversions) {
    uint64_t q1 = ~0ull, q3 = ~0ull;
    uint16_t w2 = 0xFFFF, w4 = 0xFFFF;
    Fn<void(void*, void*, void*, void*)>("DeclareProxy")(&q1, &w2, &q3, &w4);
    EXPECT_EQ(q1 | q3 | w2 | w4, 0u);

    auto pfnRes = Fn<const void*(const void*, uint32_t, const wchar_t*, uint32_t*)>(
        "DLLRES_pLoadResourceModule");
    const void* pModule = dlsym(ms_h, "gstMyModuleInfo60");
    uint32_t nTaille = 0;
    auto* pby = static_cast<const char*>(pfnRes(pModule, 8035, L"RT_KVL", &nTaille));
    ASSERT_NE(pby, nullptr);
    EXPECT_EQ(std::memcmp(pby, "KRS\0", 4), 0);
    EXPECT_EQ(nTaille, 359584u);
    ASSERT_NE(pfnRes(pModule, 8153, L"RT_KVL", &nTaille), nullptr);
    EXPECT_EQ(nTaille, 24179u);
    EXPECT_EQ(pfnRes(pModule, 8153, L"RT_AUTRE", &nTaille), nullptr);
    EXPECT_EQ(pfnRes(pModule, 1, L"RT_KVL", nullptr), nullptr);

    auto pfnConv = Fn<int(void*, int, int)>("bInitKLConvFromVM");
    EXPECT_EQ(pfnConv(ms_hHote, 2, 3), 0) << "too recent a compatibility";
    EXPECT_EQ(pfnConv(ms_hHote, 1, 2), 0) << "too old a version";
    void* hSans = dlopen("libm.so.6", RTLD_NOW | RTLD_LOCAL);
    EXPECT_EQ(pfnConv(hSans, 2, 2), 0) << "the host's conversions are required";
    dlclose(hSans);
    EXPECT_EQ(pfnConv(ms_hHote, 3, 1), 1);
}

TEST_F(Composante, ChainesPourLHote) {
    auto pfnLigne = Fn<int(const wchar_t*, int, wchar_t*, int)>("STRG_nGetLine");
    wchar_t sz[8];
    EXPECT_EQ(pfnLigne(L"un\r\ndeux\ntroisieme", 1, sz, 8), 4);
    EXPECT_STREQ(sz, L"deux");
    EXPECT_EQ(pfnLigne(L"un\r\ndeux\ntroisieme", 2, sz, 8), 9) << "the whole length, cut copy";
    EXPECT_STREQ(sz, L"troisie");
    EXPECT_EQ(pfnLigne(L"un", 3, sz, 8), -1);
    auto pfnCar = Fn<int(const wchar_t*, int)>("STRG_nGetChar");
    EXPECT_EQ(pfnCar(L"abc", 2), L'c');
    EXPECT_EQ(pfnCar(L"abc", 3), -1);
    EXPECT_EQ(pfnCar(L"abc", 9), -1) << "never reads past the end";
}

} // namespace
