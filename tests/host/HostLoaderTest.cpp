// The loader: what the host answers the component (command 3053), the registry, the lifecycle
// against the built plugin, and the tables and names it reads.
#include "ComponentLoader.h"
#include "GlobalFactory.h"
#include "HTTPClient.h"
#include "HTTPService.h"
#include "HostInformation.h"
#include "HostLibShop.h"
#include "KLLibraryInterface.h"
#include "NameKey.h"
#include "StrMemAlloc.h"

#include <gtest/gtest.h>

#include <cstring>
#include <dlfcn.h>
#include <map>
#include <string>

namespace {

// ---- Settings and answers ----------------------------------------------------------------

struct STCasReglage {
    const char* pszProduit;
    const char* pszReel;
    const char* pszOptions;
    int nProduit;
    int nReel;
    uint64_t qwOptions;
    bool bAvertit;
};
const STCasReglage gtabReglages[] = {
    {nullptr, nullptr, nullptr, 1, 1, 0, false},    // the documented defaults
    {"30", nullptr, "0x200", 30, 30, 0x200, false}, // the real code follows the code
    {"6", "12", "513", 6, 12, 513, false},
    {"abc", nullptr, "-1", 1, 1, 0, true},        // unreadable: defaults, and warnings
    {"99999999999", "7", nullptr, 1, 7, 0, true}, // out of range
    {"", "", "", 1, 1, 0, false},                 // empty is unset
};

class Reglages : public testing::TestWithParam<STCasReglage> {};

TEST_P(Reglages, LusDeLEnvironnement) {
    const STCasReglage& st = GetParam();
    std::map<std::string, const char*> mapEnv = {{"KVGGL_PRODUCT_CODE", st.pszProduit},
                                                 {"KVGGL_REAL_PRODUCT_CODE", st.pszReel},
                                                 {"KVGGL_OPTIONS", st.pszOptions}};
    std::string sAvertissements;
    CHostInformation::s_ReadSettings(
        [&](const char* psz) { return mapEnv.count(psz) ? mapEnv[psz] : nullptr; },
        sAvertissements);
    EXPECT_EQ(static_cast<int>(CHostInformation::s_qwInfo(1)), st.nProduit);
    EXPECT_EQ(static_cast<int>(CHostInformation::s_qwInfo(5)), st.nReel);
    EXPECT_EQ(CHostInformation::s_qwInfo(4), st.qwOptions);
    EXPECT_EQ(!sAvertissements.empty(), st.bAvertit) << sAvertissements;
    CHostInformation::s_ReadSettings([](const char*) { return nullptr; }, sAvertissements);
}
INSTANTIATE_TEST_SUITE_P(Hote, Reglages, testing::ValuesIn(gtabReglages),
                         [](const auto& st) { return "cas" + std::to_string(st.index); });

TEST(Hote, ReponsesAuxSelecteurs) {
    CGlobalFactory clFactory;
    CHostLibShop clLibShop;
    CHostInformation::ms_piGlobalFactory = &clFactory;
    CHostInformation::ms_piLibShop = &clLibShop;
    auto q = [](uint64_t n) { return CHostInformation::s_qwInfo(n); };
    EXPECT_EQ(q(2), 12u);
    EXPECT_STREQ(reinterpret_cast<const wchar_t*>(q(3)), L"KVGGL");
    EXPECT_EQ(q(7), reinterpret_cast<uint64_t>(static_cast<ILibShop*>(&clLibShop)));
    EXPECT_EQ(q(8), 22u);
    EXPECT_EQ(q(9), reinterpret_cast<uint64_t>(static_cast<IGlobalFactory*>(&clFactory)));
    auto* piAlloc = reinterpret_cast<IStrMemAlloc*>(q(13));
    ASSERT_NE(piAlloc, nullptr);
    void* p = piAlloc->vpAlloue(16);
    piAlloc->vLibere(p); // both sides free with the C library
    ASSERT_NE(q(14), 0u);
    EXPECT_EQ(*reinterpret_cast<const int*>(q(14)), 0) << "one script thread";
    for (uint64_t n : {0u, 6u, 10u, 11u, 12u, 15u, 16u, 18u, 3053u})
        EXPECT_EQ(q(n), 0u) << "selector " << n;
    CHostInformation::ms_piGlobalFactory = nullptr;
    CHostInformation::ms_piLibShop = nullptr;

    // The host's entry answers as the component calls it.
    EXPECT_EQ(Execution(3053, 8), 22u);
    int nAvant = CHostInformation::ms_nUnloadNotices;
    EXPECT_EQ(Execution(3052, 0), 1u);
    EXPECT_EQ(CHostInformation::ms_nUnloadNotices, nAvant + 1);
    wchar_t sz[8] = L"xyz";
    struct {
        uint32_t n;
        wchar_t* psz;
        uint32_t nTaille;
        uint32_t nOption;
    } stPile{1, sz, 8, 0};
    Execution(3184, reinterpret_cast<uint64_t>(&stPile));
    EXPECT_STREQ(sz, L"") << "no C stack to describe";
    EXPECT_EQ(Execution(9999, 0), 0u);
}

TEST(Hote, ModuleHoteExporteExecution) {
    std::string sErreur;
    void* h = CHostInformation::s_hOpenHostModule(sErreur);
    ASSERT_NE(h, nullptr) << sErreur;
    EXPECT_EQ(dlsym(h, "Execution"), reinterpret_cast<void*>(&Execution));
    dlclose(h);
}

// ---- The registry -------------------------------------------------------------------------

class CServiceCompte final : public IInterfaceObjetBase {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    int m_nRef = 1;
};

TEST(Registre, ServicesParNom) {
    CHostLibShop clLibShop;
    CServiceCompte clPartage, clFait;
    CXError clErreur;
    clLibShop.Register(L"ContenuJSON", CRef<IInterfaceObjetBase>::Retain(&clPartage));
    EXPECT_EQ(clPartage.m_nRef, 2) << "the registry keeps a reference";
    int nFaits = 0;
    clLibShop.RegisterMaker(L"MainIMG", [&](CXError*) {
        ++nFaits;
        clFait.vAddRef();
        return &clFait;
    });

    IInterfaceObjetBase* pi = clLibShop.piGetInterface(563, 4, L"ContenuJSON", &clErreur);
    EXPECT_EQ(pi, &clPartage);
    EXPECT_EQ(clPartage.m_nRef, 3) << "each caller gets a reference of its own";
    pi->vRelease();
    EXPECT_EQ(clLibShop.piGetInterfaceCompat(1, 25, 2, 1, L"MainIMG", 60, &clErreur), &clFait);
    EXPECT_EQ(clLibShop.piGetInterfaceVM(nullptr, 60, 1, 1, L"MainIMG", &clErreur), &clFait);
    EXPECT_EQ(nFaits, 2);
    clFait.m_nRef = 1;

    // What nothing serves answers null and leaves the error to the component.
    EXPECT_EQ(clLibShop.piGetInterfaceCompat(105, 10, 4, 1, L"HTTP", 60, &clErreur), nullptr);
    EXPECT_TRUE(clErreur.bEstPropre());
    EXPECT_EQ(clLibShop.piGetInterface(1, 1, L"contenujson", &clErreur), nullptr)
        << "names match exactly";
    EXPECT_EQ(clLibShop.tabRequests().size(), 5u);
    EXPECT_EQ(clLibShop.tabRequests()[3], L"HTTP");

    clLibShop.Unregister(L"ContenuJSON");
    EXPECT_EQ(clPartage.m_nRef, 1);
    EXPECT_FALSE(clLibShop.bServes(L"ContenuJSON"));
}

// ---- Names --------------------------------------------------------------------------------

struct STCasNom {
    const char* psz;
    const char* pszCle;
};
const STCasNom gtabNoms[] = {
    {"gglEvénement", "gglevenement"},
    {"GGLÉVÉNEMENT", "gglevenement"},
    {"gglEvenement", "gglevenement"},
    {"gglParamètreCarte", "gglparametrecarte"},
    {"sfRésultatExécuteRequête", "sfresultatexecuterequete"},
    {"gglSociété", "gglsociete"},
    {"Telephone_compat", "telephone_compat"},
    {"Abc\xff", "abc\xff"}, // not UTF-8: the ASCII letters alone fold
};
class Noms : public testing::TestWithParam<STCasNom> {};
TEST_P(Noms, SansCasseNiAccents) {
    EXPECT_EQ(CNameKey::s_sKey(GetParam().psz), GetParam().pszCle);
}
INSTANTIATE_TEST_SUITE_P(Hote, Noms, testing::ValuesIn(gtabNoms),
                         [](const auto& st) { return "cas" + std::to_string(st.index); });

// ---- The lifecycle against the plugin ------------------------------------------------------

class Chargeur : public testing::Test {
protected:
    void SetUp() override { CHostInformation::ms_piGlobalFactory = &m_clFactory; }
    void TearDown() override {
        m_clLoader.Unload();
        CHostInformation::ms_piGlobalFactory = nullptr;
    }
    CGlobalFactory m_clFactory;
    CHostLibShop m_clLibShop;
    CComponentLoader m_clLoader;
};

TEST_F(Chargeur, SansHTTPLaComposanteSeRefuseMaisResteChargee) {
    std::string sErreur;
    int nTypes = 0;
    ASSERT_TRUE(m_clLoader.bLoad(
        KVGGL_SO_PATH, &m_clLibShop,
        [&](const CComponentTables& cl, std::string&) {
            nTypes = static_cast<int>(cl.tabClasses().size());
            return true;
        },
        sErreur))
        << sErreur;
    EXPECT_EQ(nTypes, 52) << "the hook sees the tables before the types are initialised";
    EXPECT_EQ(m_clLoader.qwTypeInitialisation(), 1u) << "a modern factory and an execution object";
    ASSERT_NE(m_clLoader.piLibrary(), nullptr);
    EXPECT_TRUE(m_clLoader.bRefused());
    EXPECT_EQ(m_clLoader.errRefusal().nGetUserErrorCode(), 600033u);
    ASSERT_FALSE(m_clLibShop.tabRequests().empty());
    EXPECT_EQ(m_clLibShop.tabRequests().back(), L"HTTP");

    int nAvant = CHostInformation::ms_nUnloadNotices;
    m_clLoader.Unload();
    EXPECT_FALSE(m_clLoader.bLoaded());
    EXPECT_EQ(CHostInformation::ms_nUnloadNotices, nAvant)
        << "an end that came from the host is not reported back";
}

TEST_F(Chargeur, AvecHTTPLaLibrairieLePrendEtLeRend) {
    // The host's own service: a reference the library kept would leak it under the sanitizer.
    m_clLibShop.Register(L"HTTP",
                         CRef<IInterfaceObjetBase>::Adopt(new CHTTPClient(STHostOptions())));
    std::string sErreur;
    ASSERT_TRUE(m_clLoader.bLoad(KVGGL_SO_PATH, &m_clLibShop, {}, sErreur)) << sErreur;
    EXPECT_FALSE(m_clLoader.bRefused());
    m_clLoader.Unload();
    m_clLibShop.Clear();
}

TEST_F(Chargeur, LesTablesEtLeursNoms) {
    std::string sErreur;
    ASSERT_TRUE(m_clLoader.bLoad(KVGGL_SO_PATH, &m_clLibShop, {}, sErreur)) << sErreur;
    const CComponentTables& cl = m_clLoader.clTables();
    EXPECT_TRUE(cl.bNamed());
    EXPECT_EQ(cl.nLibrary(), 60u);
    EXPECT_EQ(cl.tabFunctions().size(), 99u) << "102 rows, three of them second registrations";
    EXPECT_EQ(cl.tabConstants().size(), 79u);
    EXPECT_EQ(cl.tabTypeRefs().size(), 49u);
    ASSERT_EQ(cl.tabClasses().size(), 52u);

    int nRequete = cl.nFindFunction("GGLREQUETE");
    ASSERT_GE(nRequete, 0);
    const auto& stRequete = cl.tabFunctions()[static_cast<size_t>(nRequete)];
    EXPECT_EQ(stRequete.sName, "GglRequete");
    EXPECT_EQ(stRequete.tabRows.size(), 2u) << "rows 5 and 75 bear one name";
    ASSERT_EQ(stRequete.tabSyntaxes.size(), 4u);
    EXPECT_EQ(cl.sSignatureTypeName(stRequete.tabSyntaxes[1].tabParameters[3]), "int");
    EXPECT_EQ(cl.sSignatureTypeName(stRequete.tabSyntaxes[1].tabParameters[0]), "gglConnexion");

    int nEvenement = cl.nFindClass("gglevenement");
    ASSERT_GE(nEvenement, 0);
    EXPECT_EQ(cl.tabClasses()[static_cast<size_t>(nEvenement)].sName, "gglEvénement");
    EXPECT_EQ(cl.nFindClass("GGLÉVÉNEMENT"), nEvenement);
    EXPECT_EQ(cl.nFindClass("gglAdWConnexion"), -1) << "a type reference without a class";
    EXPECT_GE(cl.nFindTypeRef("gglAdWConnexion"), 0);

    int nChemin = cl.nFindClass("gglChemin");
    ASSERT_GE(nChemin, 0);
    EXPECT_EQ(cl.nFindMember(nChemin, "opacité"), 1);
    EXPECT_EQ(cl.nFindMember(nChemin, "POINT"), -1) << "the first accessor";
    EXPECT_EQ(cl.nClassOfTypeRef(
                  cl.tabClasses()[static_cast<size_t>(nChemin)].tabAccessors[0].nTypeRef()),
              cl.nFindClass("gglCoordonnée"));

    int nGIF = cl.nFindConstant("gglgif");
    ASSERT_GE(nGIF, 0);
    EXPECT_STREQ(cl.tabConstants()[static_cast<size_t>(nGIF)].pst->pszValeur, L"gif");
}

TEST_F(Chargeur, CeQuiNEstPasUneComposanteEstRefuse) {
    std::string sErreur;
    EXPECT_FALSE(m_clLoader.bLoad("/nonexistent/kv220ggl.so", &m_clLibShop, {}, sErreur));
    EXPECT_NE(sErreur.find("cannot be loaded"), std::string::npos) << sErreur;
    EXPECT_FALSE(m_clLoader.bLoad("libm.so.6", &m_clLibShop, {}, sErreur));
    EXPECT_NE(sErreur.find("not a component"), std::string::npos) << sErreur;
    // A hook that refuses stops the load, and everything is undone.
    EXPECT_FALSE(m_clLoader.bLoad(
        KVGGL_SO_PATH, &m_clLibShop,
        [](const CComponentTables&, std::string& s) {
            s = "refused by the hook";
            return false;
        },
        sErreur));
    EXPECT_EQ(sErreur, "refused by the hook");
    EXPECT_FALSE(m_clLoader.bLoaded());
    std::string sEncore;
    EXPECT_TRUE(m_clLoader.bLoad(KVGGL_SO_PATH, &m_clLibShop, {}, sEncore)) << sEncore;
}

} // namespace
