// The component's objects through its tables only, as the Lua module uses them: what the Lua
// tests cannot reach (types without a class or a handler, the choice of syntaxes, constants,
// the counting of peers, a host without HTTP). Properties, collections, copy, reset and the
// save/rebuild path are proven through the module (tests/lua).
#include "Host.h"
#include "SyntaxChooser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class Objets : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ms_pclHost = new CHost;
        std::string sErreur;
        ASSERT_TRUE(ms_pclHost->bLoad(KVGGL_SO_PATH, sErreur)) << sErreur;
    }
    static void TearDownTestSuite() {
        EXPECT_EQ(ms_pclHost->clFactory().nLivePeers(), 0) << "every object went";
        delete ms_pclHost;
        ms_pclHost = nullptr;
    }
    void TearDown() override {
        EXPECT_EQ(Host().clFactory().nLivePeers(), 0) << "an object outlived its test";
    }
    static CHost& Host() { return *ms_pclHost; }

    // A new object, or a failed test.
    static CHostValue Nouveau(const char* pszType) {
        STHostOutcome st;
        EXPECT_TRUE(Host().bNew(pszType, {}, st)) << st.sRefusal;
        EXPECT_FALSE(st.bError) << st.sMessage;
        EXPECT_EQ(st.clValue.eKind(), CHostValue::KIND_OBJECT) << pszType;
        return st.clValue;
    }
    static CHostValue Lit(const CHostValue& cl, const char* pszPropriete) {
        STHostOutcome st;
        EXPECT_TRUE(Host().bGet(cl.piGetObject(), pszPropriete, st)) << st.sRefusal;
        EXPECT_FALSE(st.bError) << pszPropriete << ": " << st.sMessage;
        return st.clValue;
    }

    static inline CHost* ms_pclHost = nullptr;
};

// ---- Types --------------------------------------------------------------------------------------

TEST_F(Objets, TypesSansClasseOuSansGestionnaire) {
    STHostOutcome st;
    EXPECT_FALSE(Host().bNew("gglAdWConnexion", {}, st));
    EXPECT_EQ(st.sRefusal, "type 'gglAdWConnexion' is declared by the component but has no class");
    EXPECT_FALSE(Host().bNew("gglNimporteQuoi", {}, st));
    EXPECT_FALSE(Host().bNew("gglChemin", {CHostValue::s_Integer(1)}, st));
    EXPECT_EQ(st.sRefusal, "wrong number of arguments to 'gglChemin' (at most 0 expected, got 1)");
    EXPECT_FALSE(Host().bCall("GglAdWListeCampagne", {Nouveau("gglConnexion")}, st));
    EXPECT_EQ(st.sRefusal, "'GglAdWListeCampagne' has no handler in this component");
    // Whatever classes have not landed yet: a clear refusal, never a crash.
    for (const auto& stC : Host().clTables().tabClasses()) {
        if (!stC.tabConstructors.empty() && stC.tabConstructors[0].bHandled())
            continue;
        EXPECT_FALSE(Host().bNew(stC.sName, {}, st));
        EXPECT_EQ(st.sRefusal, "type '" + stC.sName + "' has no constructor in this component");
    }
}

// ---- Functions: the choice of syntax ---------------------------------------------------------

TEST_F(Objets, LaSyntaxeSuitLesArguments) {
    const auto& clTables = Host().clTables();
    CSyntaxChooser clChooser(clTables, [](IObjetBase* pi) { return Host().nClassOf(pi); });
    const auto& stRequete =
        clTables.tabFunctions()[static_cast<size_t>(clTables.nFindFunction("GglRequete"))];
    std::vector<CSyntaxChooser::STCandidate> tabCandidats;
    for (const auto& stS : stRequete.tabSyntaxes)
        tabCandidats.push_back({stS.tabParameters, true});
    CHostValue clConnexion = Nouveau("gglConnexion");
    auto I = [](int64_t n) { return CHostValue::s_Integer(n); };
    auto S = [](const char* psz) { return CHostValue::s_String(psz); };
    struct {
        std::vector<CHostValue> tab;
        int nSyntaxe;
        std::string sMessage;
    } tabCas[] = {
        {{clConnexion, I(1), S("/x")}, 0, ""},
        {{clConnexion, I(1), S("/x"), I(5)}, 1, ""},
        {{clConnexion, I(1), S("/x"), S("{}")}, 2, ""},
        {{clConnexion, I(1), S("/x"), CHostValue::s_Real(5.0)}, 1, ""}, // converted, no text
        {{clConnexion, I(1), S("/x"), S("{}"), I(2)}, 3, ""},
        {{clConnexion, CHostValue::s_Array({}), S("/x")},
         -1,
         "bad argument #2 to 'GglRequete' (number expected, got table)"},
        {{clConnexion, I(1), S("/x"), CHostValue::s_Boolean(true)},
         -1,
         "bad argument #4 to 'GglRequete' (number or string expected, got boolean)"},
        {{Nouveau("gglChemin"), I(1), S("/x")},
         -1,
         "bad argument #1 to 'GglRequete' (gglConnexion expected, got gglChemin)"},
        {{CHostValue(), I(1), S("/x")},
         -1,
         "bad argument #1 to 'GglRequete' (gglConnexion expected, got nil)"},
        {{clConnexion}, -1, "wrong number of arguments to 'GglRequete' (3 to 5 expected, got 1)"},
    };
    for (auto& st : tabCas) {
        std::string sMessage;
        EXPECT_EQ(clChooser.nChoose("GglRequete", tabCandidats, st.tab, sMessage), st.nSyntaxe)
            << st.sMessage;
        EXPECT_EQ(sMessage, st.sMessage);
    }
}

TEST_F(Objets, LesFonctionsLibresEtLeNomDesArguments) {
    CHostValue clConnexion = Nouveau("gglConnexion");
    STHostOutcome st;
    // A function of the table called with what no syntax takes is refused before it runs.
    EXPECT_FALSE(Host().bCall("GglListeAgenda", {CHostValue::s_Integer(1)}, st));
    EXPECT_FALSE(st.sRefusal.empty());
    EXPECT_FALSE(Host().bCall("PasUneFonction", {}, st));
    EXPECT_EQ(st.sRefusal, "the component has no function 'PasUneFonction'");
}

TEST_F(Objets, LesConstantes) {
    const auto& cl = Host().clTables();
    EXPECT_EQ(Host().clConstant(cl.nFindConstant("gglGIF")).sGetString(), "gif");
    EXPECT_EQ(Host().clConstant(cl.nFindConstant("GGLGRAND")).sGetString(), "");
    EXPECT_EQ(Host().clConstant(cl.nFindConstant("gglSansLimite")).nGetInteger(), -1);
    EXPECT_EQ(Host().clConstant(cl.nFindConstant("gglServicePicasa")).nGetInteger(), 16);
}

TEST_F(Objets, LesPairsVontAvecLeursObjets) {
    int nAvant = Host().clFactory().nLivePeers();
    {
        CHostValue cl = Nouveau("gglParamètreCarte");
        CHostValue clChemin = Lit(cl, "Chemin");
        EXPECT_EQ(Host().clFactory().nLivePeers(), nAvant + 2);
        CHostValue clMeme = Lit(cl, "Chemin");
        EXPECT_EQ(clMeme.piGetObject(), clChemin.piGetObject());
        EXPECT_EQ(Host().clFactory().nLivePeers(), nAvant + 2) << "one peer per object";
        // The object forwards its cast to its peer, which answers for the object's class.
        IObjetComposante* pi = clChemin.piGetObject()->vpiGetIObjetComposante();
        void* p = nullptr;
        EXPECT_TRUE(
            pi->vbGetObjetC(p, Host().piType(Host().nClassOf(clChemin.piGetObject())), 0, nullptr));
        EXPECT_NE(p, nullptr);
        EXPECT_FALSE(
            pi->vbGetObjetC(p, Host().piType(Host().nClassOf(cl.piGetObject())), 0, nullptr));
        EXPECT_EQ(p, nullptr);
    }
    EXPECT_EQ(Host().clFactory().nLivePeers(), nAvant);
}

// ---- Without HTTP ---------------------------------------------------------------------------

TEST(HoteSansHTTP, LaComposanteSeRefuseLesObjetsMarchent) {
    CHost clHost;
    clHost.SetRegisterServices(false);
    std::string sErreur;
    ASSERT_TRUE(clHost.bLoad(KVGGL_SO_PATH, sErreur)) << sErreur;
    EXPECT_TRUE(clHost.bRefused());
    EXPECT_EQ(clHost.errRefusal().nGetUserErrorCode(), 600033u);
    STHostOutcome st;
    ASSERT_TRUE(clHost.bNew("gglChemin", {}, st)) << st.sRefusal;
    CHostValue cl = st.clValue;
    ASSERT_TRUE(clHost.bSet(cl.piGetObject(), "Couleur", CHostValue::s_Integer(3), st));
    ASSERT_TRUE(clHost.bGet(cl.piGetObject(), "Couleur", st));
    EXPECT_EQ(st.clValue.nGetInteger(), 3);
    cl = CHostValue();
    EXPECT_EQ(clHost.clFactory().nLivePeers(), 0);
}

} // namespace
