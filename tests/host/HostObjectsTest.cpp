// The component's objects through its tables only, as the Lua module uses them: types,
// properties, collections, copy and reset, the save/rebuild path, the choice of syntaxes, and
// the counting of references on both sides.
#include "Host.h"
#include "HostArray.h"
#include "SyntaxChooser.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <functional>
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
    static void Ecrit(const CHostValue& cl, const char* pszPropriete, CHostValue clValeur) {
        STHostOutcome st;
        EXPECT_TRUE(Host().bSet(cl.piGetObject(), pszPropriete, clValeur, st)) << st.sRefusal;
        EXPECT_FALSE(st.bError) << pszPropriete << ": " << st.sMessage;
    }
    static CRef<IObjetCollection> Collection(const CHostValue& cl, const char* pszNom) {
        CRef<IObjetCollection> clCollection;
        STHostOutcome st;
        EXPECT_TRUE(Host().bCollection(cl.piGetObject(), pszNom, clCollection, st)) << st.sRefusal;
        return clCollection;
    }
    static int Compte(IObjetCollection* pi) {
        STHostOutcome st;
        EXPECT_TRUE(Host().bCount(pi, st));
        return static_cast<int>(st.clValue.nGetInteger());
    }
    // The latitudes of the points of a collection, in order.
    static std::vector<double> Latitudes(IObjetCollection* pi) {
        std::vector<double> tab;
        for (int i = 0, n = Compte(pi); i < n; ++i) {
            STHostOutcome st;
            EXPECT_TRUE(Host().bElement(pi, i, st));
            tab.push_back(Lit(st.clValue, "Latitude").rGetNumber());
        }
        return tab;
    }
    static CHostValue Point(double rLatitude) {
        CHostValue cl = Nouveau("gglCoordonnée");
        Ecrit(cl, "Latitude", CHostValue::s_Real(rLatitude));
        return cl;
    }

    static inline CHost* ms_pclHost = nullptr;
};

// ---- Types and properties --------------------------------------------------------------------

struct STCasPropriete {
    const char* pszType;
    const char* pszPropriete;
    CHostValue clEcrit;
    CHostValue clLu; // what reads back
};

std::string s_sForme(const CHostValue& cl) {
    switch (cl.eKind()) {
    case CHostValue::KIND_NIL:
        return "nil";
    case CHostValue::KIND_BOOLEAN:
        return cl.bGetBoolean() ? "true" : "false";
    case CHostValue::KIND_INTEGER:
        return "int " + std::to_string(cl.nGetInteger());
    case CHostValue::KIND_REAL:
        return "real " + std::to_string(cl.rGetReal());
    case CHostValue::KIND_STRING:
        return "'" + cl.sGetString() + "'";
    default:
        return cl.pszKindName();
    }
}

const STCasPropriete gtabProprietes[] = {
    {"gglChemin", "Couleur", CHostValue::s_Integer(0x00FF00), CHostValue::s_Integer(0x00FF00)},
    {"gglChemin", "Opacite", CHostValue::s_Integer(80), CHostValue::s_Integer(80)},
    {"gglChemin", "Epaisseur", CHostValue::s_Integer(3), CHostValue::s_Integer(3)},
    {"gglCoordonnée", "Latitude", CHostValue::s_Real(48.8584), CHostValue::s_Real(48.8584)},
    {"gglCoordonnée", "Longitude", CHostValue::s_Integer(2), CHostValue::s_Real(2)},
    {"gglMarqueur", "Latitude", CHostValue::s_Real(-33.5), CHostValue::s_Real(-33.5)},
    {"gglMarqueur", "Longitude", CHostValue::s_Real(151.25), CHostValue::s_Real(151.25)},
    {"gglMarqueur", "Taille", CHostValue::s_String("small"), CHostValue::s_String("small")},
    {"gglMarqueur", "Couleur", CHostValue::s_Integer(0xFF0000), CHostValue::s_Integer(0xFF0000)},
    {"gglMarqueur", "Lettre", CHostValue::s_String("A"), CHostValue::s_String("A")},
    {"gglParamètreCarte", "Format", CHostValue::s_String("png8"), CHostValue::s_String("png8")},
    {"gglParamètreCarte", "Cadre", CHostValue::s_Boolean(true), CHostValue::s_Boolean(true)},
    {"gglParamètreCarte", "Langue", CHostValue::s_String("fr"), CHostValue::s_String("fr")},
    {"gglParamètreCarte", "Mobile", CHostValue::s_Boolean(true), CHostValue::s_Boolean(true)},
    {"gglParamètreCarte", "Echelle", CHostValue::s_Integer(2), CHostValue::s_Integer(2)},
    {"gglConnexion", "Email", CHostValue::s_String("anne@example.com"),
     CHostValue::s_String("anne@example.com")},
    {"gglConnexion", "ClientID", CHostValue::s_String("id-é"), CHostValue::s_String("id-é")},
    {"gglConnexion", "ClientSecret", CHostValue::s_String("s3cret"),
     CHostValue::s_String("s3cret")},
    // Kept for compatibility: they take what they are given and drop it.
    {"gglConnexion", "MotDePasse", CHostValue::s_String("hunter2"), CHostValue::s_String("")},
    {"gglConnexion", "NomApplication", CHostValue::s_String("app"), CHostValue::s_String("")},
};

class Proprietes : public Objets, public testing::WithParamInterface<STCasPropriete> {};

TEST_P(Proprietes, EcriteEtRelue) {
    const STCasPropriete& st = GetParam();
    CHostValue cl = Nouveau(st.pszType);
    Ecrit(cl, st.pszPropriete, st.clEcrit);
    EXPECT_EQ(s_sForme(Lit(cl, st.pszPropriete)), s_sForme(st.clLu));
}
INSTANTIATE_TEST_SUITE_P(Hote, Proprietes, testing::ValuesIn(gtabProprietes),
                         [](const testing::TestParamInfo<STCasPropriete>& st) {
                             std::string s = std::to_string(st.index) + "_";
                             for (const char* p : {st.param.pszType, st.param.pszPropriete})
                                 for (; *p; ++p)
                                     if (std::isalnum(static_cast<unsigned char>(*p)))
                                         s += *p;
                             return s;
                         });

TEST_F(Objets, ChaqueProprieteDesClassesArriveesSeLit) {
    for (const char* pszType :
         {"gglConnexion", "gglChemin", "gglCoordonnée", "gglMarqueur", "gglParamètreCarte"}) {
        CHostValue cl = Nouveau(pszType);
        int nClasse = Host().clTables().nFindClass(pszType);
        const auto& stC = Host().clTables().tabClasses()[static_cast<size_t>(nClasse)];
        for (size_t p = 0; p < stC.tabProperties.size(); ++p) {
            STHostOutcome st;
            EXPECT_TRUE(Host().bGet(cl.piGetObject(), static_cast<int>(p), st))
                << pszType << "." << stC.tabProperties[p].sName << ": " << st.sRefusal;
            EXPECT_FALSE(st.bError) << st.sMessage;
            if (stC.tabProperties[p].bObject()) {
                EXPECT_EQ(st.clValue.eKind(), CHostValue::KIND_OBJECT);
            }
        }
    }
}

TEST_F(Objets, LesNomsSansCasseNiAccents) {
    CHostValue cl = Nouveau("GGLPARAMETRECARTE");
    EXPECT_EQ(Host().nClassOf(cl.piGetObject()), Host().clTables().nFindClass("gglParamètreCarte"));
    Ecrit(cl, "éCHELLE", CHostValue::s_Integer(4));
    EXPECT_EQ(Lit(cl, "echelle").nGetInteger(), 4);
}

TEST_F(Objets, CeQuiNeSEcritPasEstRefuse) {
    CHostValue clParametre = Nouveau("gglParamètreCarte");
    CHostValue clConnexion = Nouveau("gglConnexion");
    CHostValue clChemin = Nouveau("gglChemin");
    struct {
        const CHostValue* pcl;
        const char* pszPropriete;
        CHostValue clValeur;
        std::string sRefus;
    } tabCas[] = {
        {&clParametre, "Chemin", clChemin, "property 'Chemin' of gglParamètreCarte is read-only"},
        {&clConnexion, "RefreshTokens", CHostValue::s_String("{}"),
         "property 'RefreshTokens' of gglConnexion is read-only"},
        {&clChemin, "Couleur", CHostValue::s_String("rouge"),
         "bad value for property 'Couleur' of gglChemin (number expected, got string)"},
        {&clChemin, "Couleur", CHostValue::s_Real(1.5),
         "bad value for property 'Couleur' of gglChemin (number has no integer representation)"},
        {&clParametre, "Cadre", CHostValue::s_Integer(1),
         "bad value for property 'Cadre' of gglParamètreCarte (boolean expected, got number)"},
        {&clChemin, "Largeur", CHostValue::s_Integer(1), "gglChemin has no property 'Largeur'"},
    };
    for (auto& stC : tabCas) {
        STHostOutcome st;
        EXPECT_FALSE(Host().bSet(stC.pcl->piGetObject(), stC.pszPropriete, stC.clValeur, st));
        EXPECT_EQ(st.sRefusal, stC.sRefus);
    }
    // A format the component does not know is its own error; the format stays.
    STHostOutcome st;
    ASSERT_TRUE(Host().bSet(clParametre.piGetObject(), "Format", CHostValue::s_String("bmp"), st));
    EXPECT_TRUE(st.bError);
    EXPECT_EQ(st.nCode, 600018u);
    EXPECT_FALSE(st.sMessage.empty());
}

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

// ---- Collections ----------------------------------------------------------------------------

TEST_F(Objets, LesPointsDUnChemin) {
    CHostValue clChemin = Nouveau("gglChemin");
    CRef<IObjetCollection> cl = Collection(clChemin, "Point");
    ASSERT_TRUE(cl);
    STHostOutcome st;
    for (double r : {1.0, 2.0, 3.0}) {
        ASSERT_TRUE(Host().bAdd(cl.pGet(), Point(r), st)) << st.sRefusal;
        EXPECT_FALSE(st.bError) << st.sMessage;
        EXPECT_EQ(st.clValue.nGetInteger(), static_cast<int>(r) - 1) << "the position it went to";
    }
    ASSERT_TRUE(Host().bInsert(cl.pGet(), 0, Point(0), st));
    EXPECT_EQ(Latitudes(cl.pGet()), (std::vector<double>{0, 1, 2, 3}));
    ASSERT_TRUE(Host().bMove(cl.pGet(), 0, 3, st));
    EXPECT_EQ(Latitudes(cl.pGet()), (std::vector<double>{1, 2, 3, 0}));
    ASSERT_TRUE(Host().bSwap(cl.pGet(), 0, 2, st));
    EXPECT_EQ(Latitudes(cl.pGet()), (std::vector<double>{3, 2, 1, 0}));
    ASSERT_TRUE(Host().bRemove(cl.pGet(), 1, st));
    EXPECT_EQ(Latitudes(cl.pGet()), (std::vector<double>{3, 1, 0}));
    ASSERT_TRUE(Host().bAdd(cl.pGet(), CHostValue(), st)) << "a new empty point";
    EXPECT_EQ(Latitudes(cl.pGet()), (std::vector<double>{3, 1, 0, 0}));

    // The component's codes come back as its errors.
    struct {
        std::function<bool(STHostOutcome&)> fn;
        unsigned nCode;
    } tabRefus[] = {
        {[&](STHostOutcome& s) { return Host().bRemove(cl.pGet(), 9, s); }, 600006},
        {[&](STHostOutcome& s) { return Host().bMove(cl.pGet(), 0, -1, s); }, 600006},
        {[&](STHostOutcome& s) { return Host().bSwap(cl.pGet(), 4, 0, s); }, 600006},
        {[&](STHostOutcome& s) { return Host().bInsert(cl.pGet(), 6, Point(1), s); }, 600006},
        {[&](STHostOutcome& s) { return Host().bAdd(cl.pGet(), Nouveau("gglMarqueur"), s); },
         600004},
    };
    for (auto& stR : tabRefus) {
        STHostOutcome s;
        ASSERT_TRUE(stR.fn(s)) << s.sRefusal;
        EXPECT_TRUE(s.bError);
        EXPECT_EQ(s.nCode, stR.nCode);
    }
    EXPECT_EQ(Compte(cl.pGet()), 4) << "refused operations change nothing";
    STHostOutcome stHors;
    ASSERT_TRUE(Host().bElement(cl.pGet(), 4, stHors));
    EXPECT_TRUE(stHors.clValue.bNil()) << "past the end: nothing, and no error";
    EXPECT_FALSE(stHors.bError);
    ASSERT_TRUE(Host().bClear(cl.pGet(), st));
    EXPECT_EQ(Compte(cl.pGet()), 0);
}

TEST_F(Objets, UnCheminRefuseSonCentUniemePoint) {
    CHostValue clChemin = Nouveau("gglChemin");
    CRef<IObjetCollection> cl = Collection(clChemin, "Point");
    STHostOutcome st;
    for (int i = 0; i < 100; ++i)
        ASSERT_TRUE(Host().bAdd(cl.pGet(), Point(i), st) && !st.bError);
    ASSERT_TRUE(Host().bAdd(cl.pGet(), Point(100), st));
    EXPECT_TRUE(st.bError);
    EXPECT_EQ(st.nCode, 600014u);
    EXPECT_EQ(Compte(cl.pGet()), 100);
}

TEST_F(Objets, LesMarqueursDesParametres) {
    CHostValue clParametre = Nouveau("gglParamètreCarte");
    CRef<IObjetCollection> cl = Collection(clParametre, "marqueur");
    STHostOutcome st;
    CHostValue clMarqueur = Nouveau("gglMarqueur");
    ASSERT_TRUE(Host().bAdd(cl.pGet(), clMarqueur, st));
    ASSERT_TRUE(Host().bElement(cl.pGet(), 0, st));
    EXPECT_TRUE(Host().clFactory().bEnsurePeer(st.clValue.piGetObject()));
    // The collection holds the element by reference: a change through one is seen by the other.
    Ecrit(clMarqueur, "Couleur", CHostValue::s_Integer(0x00FF00));
    EXPECT_EQ(Lit(st.clValue, "Couleur").nGetInteger(), 0x00FF00);
}

// ---- Copy, reset, save and rebuild ----------------------------------------------------------

TEST_F(Objets, CopieEtRemiseAZero) {
    CHostValue clChemin = Nouveau("gglChemin");
    Ecrit(clChemin, "Epaisseur", CHostValue::s_Integer(9));
    CRef<IObjetCollection> cl = Collection(clChemin, "Point");
    STHostOutcome st;
    ASSERT_TRUE(Host().bAdd(cl.pGet(), Point(5), st));
    ASSERT_TRUE(Host().bCopy(clChemin.piGetObject(), st)) << st.sRefusal;
    CHostValue clCopie = st.clValue;
    ASSERT_EQ(clCopie.eKind(), CHostValue::KIND_OBJECT);
    EXPECT_NE(clCopie.piGetObject(), clChemin.piGetObject());
    EXPECT_EQ(Lit(clCopie, "Epaisseur").nGetInteger(), 9);
    CRef<IObjetCollection> clPoints = Collection(clCopie, "Point");
    EXPECT_EQ(Latitudes(clPoints.pGet()), (std::vector<double>{5}));

    ASSERT_TRUE(Host().bReset(clChemin.piGetObject(), st));
    EXPECT_EQ(Lit(clChemin, "Epaisseur").nGetInteger(), 5);
    EXPECT_EQ(Compte(cl.pGet()), 0);
    EXPECT_EQ(Lit(clCopie, "Epaisseur").nGetInteger(), 9) << "the copy is its own";

    EXPECT_FALSE(Host().bCopyInto(clCopie.piGetObject(), Nouveau("gglMarqueur").piGetObject(), st));
}

TEST_F(Objets, UneConnexionSurvitASaSauvegarde) {
    CHostValue cl = Nouveau("gglConnexion");
    Ecrit(cl, "Email", CHostValue::s_String("anne@example.com"));
    Ecrit(cl, "ClientID", CHostValue::s_String("client-1"));
    Ecrit(cl, "ClientSecret", CHostValue::s_String("secret-1"));
    // The rebuild's way in: the forced setter, which scripts cannot reach.
    STHostOutcome st;
    int nRefresh =
        Host().clTables().nFindMember(Host().nClassOf(cl.piGetObject()), "RefreshTokens");
    ASSERT_TRUE(Host().bSet(cl.piGetObject(), nRefresh,
                            CHostValue::s_String(R"({"calendar":"rt-cal","picasa":"rt-pic"})"), st,
                            true))
        << st.sRefusal;
    ASSERT_FALSE(st.bError) << st.sMessage;
    std::string sTokens = Lit(cl, "RefreshTokens").sGetString();
    EXPECT_NE(sTokens.find("\"calendar\":\"rt-cal\""), std::string::npos) << sTokens;

    ASSERT_TRUE(Host().bSave(cl.piGetObject(), st)) << st.sRefusal;
    ASSERT_FALSE(st.bError) << st.sMessage;
    std::string sSauve = st.clValue.sGetString();
    EXPECT_EQ(sSauve.find("hunter2"), std::string::npos);
    ASSERT_TRUE(Host().bRebuild("gglconnexion", sSauve, st)) << st.sRefusal;
    ASSERT_FALSE(st.bError) << st.sMessage;
    CHostValue clRefait = st.clValue;
    EXPECT_NE(clRefait.piGetObject(), cl.piGetObject());
    for (const char* psz : {"Email", "ClientID", "ClientSecret", "RefreshTokens"})
        EXPECT_EQ(Lit(clRefait, psz).sGetString(), Lit(cl, psz).sGetString()) << psz;
    ASSERT_TRUE(Host().bSave(clRefait.piGetObject(), st));
    EXPECT_EQ(st.clValue.sGetString(), sSauve) << "saved twice, the same text";

    EXPECT_FALSE(Host().bRebuild("gglChemin", sSauve, st));
    EXPECT_EQ(st.sRefusal, "the saved object is a gglConnexion, not a gglChemin");
    EXPECT_FALSE(Host().bRebuild("", "{pas du json", st));
}

TEST_F(Objets, DesParametresAvecLeursObjetsEtCollections) {
    CHostValue cl = Nouveau("gglParamètreCarte");
    Ecrit(cl, "Format", CHostValue::s_String("jpg"));
    Ecrit(cl, "Echelle", CHostValue::s_Integer(2));
    CHostValue clChemin = Lit(cl, "Chemin");
    Ecrit(clChemin, "Opacite", CHostValue::s_Integer(70));
    CRef<IObjetCollection> clPoints = Collection(clChemin, "Point");
    STHostOutcome st;
    for (double r : {10.5, 20.25})
        ASSERT_TRUE(Host().bAdd(clPoints.pGet(), Point(r), st));
    Ecrit(Lit(cl, "Zone"), "Longitude", CHostValue::s_Real(-1.5));
    CRef<IObjetCollection> clMarqueurs = Collection(cl, "Marqueur");
    CHostValue clMarqueur = Nouveau("gglMarqueur");
    Ecrit(clMarqueur, "Lettre", CHostValue::s_String("Z"));
    ASSERT_TRUE(Host().bAdd(clMarqueurs.pGet(), clMarqueur, st));

    ASSERT_TRUE(Host().bSave(cl.piGetObject(), st)) << st.sRefusal;
    std::string sSauve = st.clValue.sGetString();
    ASSERT_TRUE(Host().bRebuild("", sSauve, st)) << st.sRefusal;
    ASSERT_FALSE(st.bError) << st.sMessage;
    CHostValue clRefait = st.clValue;
    EXPECT_EQ(Lit(clRefait, "Format").sGetString(), "jpg");
    CHostValue clCheminRefait = Lit(clRefait, "Chemin");
    EXPECT_EQ(Lit(clCheminRefait, "Opacite").nGetInteger(), 70);
    CRef<IObjetCollection> clPointsRefaits = Collection(clCheminRefait, "Point");
    EXPECT_EQ(Latitudes(clPointsRefaits.pGet()), (std::vector<double>{10.5, 20.25}));
    EXPECT_EQ(Lit(Lit(clRefait, "Zone"), "Longitude").rGetNumber(), -1.5);
    CRef<IObjetCollection> clMarqueursRefaits = Collection(clRefait, "Marqueur");
    ASSERT_EQ(Compte(clMarqueursRefaits.pGet()), 1);
    ASSERT_TRUE(Host().bElement(clMarqueursRefaits.pGet(), 0, st));
    EXPECT_EQ(Lit(st.clValue, "Lettre").sGetString(), "Z");
    ASSERT_TRUE(Host().bSave(clRefait.piGetObject(), st));
    EXPECT_EQ(st.clValue.sGetString(), sSauve);
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
