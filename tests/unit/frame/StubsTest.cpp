// The generated stubs, called as the host calls them: through the rows of a class record built
// from a .def the way the component's tables are built, with a VM that records what it is
// given.
#include "DateTime.h"
#include "ObjectInterfaces.h"
#include "VM.h"
#include "XYString.h"
#include "frame/KllRows.h"

#include "VMEnregistreur.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

class CStubSample;

namespace {

template <class T> T ValeurDe(const STRetourVM& st) { return st.Valeur<T>(); }

} // namespace

// One member per row; every operation notes that it ran, with what context and error.
class CStubSample final : public IObjetBase {
public:
    static ITypeDescription* ms_piType;
    static int ms_nConstruit;

    void vAddRef() override {}
    void vRelease() override {}

    std::wstring m_sTexte = L"texte";
    CXYString<wchar_t> m_sChaine = L"chaîne";
    int m_nEntier = 7;
    bool m_bActif = true;
    int64_t m_nGrand = 0x123456789LL;
    double m_dReel = 2.5;
    CDateTime m_dtDate{};
    char m_cLettre = 'k';
    int m_nLecture = 99;
    IObjetBase* m_piAuteur = nullptr;
    CXYString<wchar_t> m_sResume;
    void* m_pEnfant = nullptr;
    CCtxInfo* m_pclDernierCtx = nullptr;
    CXError* m_pclDerniereErreur = nullptr;
    int m_nRAZ = 0;
    CStubSample* m_pclSourceCopie = nullptr;

    const wchar_t* GetTexte(CCtxInfo* c, CXError* e) { return Note(c, e), m_sTexte.c_str(); }
    void SetTexte(CCtxInfo* c, CXError* e, const wchar_t* psz) { Note(c, e), m_sTexte = psz; }
    CXYString<wchar_t> GetChaine(CCtxInfo* c, CXError* e) { return Note(c, e), m_sChaine; }
    void ForceChaine(CCtxInfo* c, CXError* e, CXYString<wchar_t> s) { Note(c, e), m_sChaine = s; }
    int GetEntier(CCtxInfo* c, CXError* e) { return Note(c, e), m_nEntier; }
    void SetEntier(CCtxInfo* c, CXError* e, int n) { Note(c, e), m_nEntier = n; }
    bool GetActif(CCtxInfo* c, CXError* e) { return Note(c, e), m_bActif; }
    void SetActif(CCtxInfo* c, CXError* e, int n) { Note(c, e), m_bActif = n != 0; }
    int64_t GetGrand(CCtxInfo* c, CXError* e) { return Note(c, e), m_nGrand; }
    void ForceGrand(CCtxInfo* c, CXError* e, int64_t n) { Note(c, e), m_nGrand = n; }
    double GetReel(CCtxInfo* c, CXError* e) { return Note(c, e), m_dReel; }
    void SetReel(CCtxInfo* c, CXError* e, double d) { Note(c, e), m_dReel = d; }
    CDateTime GetDate(CCtxInfo* c, CXError* e) { return Note(c, e), m_dtDate; }
    void SetDate(CCtxInfo* c, CXError* e, CDateTime dt) { Note(c, e), m_dtDate = dt; }
    char GetLettre(CCtxInfo* c, CXError* e) { return Note(c, e), m_cLettre; }
    void SetLettre(CCtxInfo* c, CXError* e, char ch) { Note(c, e), m_cLettre = ch; }
    int GetLecture(CCtxInfo* c, CXError* e) { return Note(c, e), m_nLecture; }
    IObjetBase* GetAuteur(CCtxInfo* c, CXError* e) { return Note(c, e), m_piAuteur; }
    CXYString<wchar_t> GetResume(CCtxInfo* c, CXError* e) { return Note(c, e), m_sResume; }
    void SetResume(CCtxInfo* c, CXError* e, CXYString<wchar_t> s) { Note(c, e), m_sResume = s; }
    void* AccesseurEnfant(CCtxInfo* c, CXError* e) { return Note(c, e), m_pEnfant; }
    void* AccesseurEnfant_compat(CCtxInfo* c, CXError* e) { return Note(c, e), &m_nEntier; }

    static CStubSample* s_pclCreeObjet(CCtxInfo*, CXError*) {
        ++ms_nConstruit;
        return new CStubSample;
    }
    // The second constructor takes an integer, as a constructor with a source would.
    static CStubSample* s_pclCreeObjet(CCtxInfo*, CXError*, unsigned char** ppArguments) {
        ++ms_nConstruit;
        auto* pcl = new CStubSample;
        std::memcpy(&pcl->m_nEntier, ppArguments[0], sizeof(int32_t));
        return pcl;
    }
    void CopieObjet(CCtxInfo* c, CXError* e, CStubSample* pclSource) {
        Note(c, e);
        m_pclSourceCopie = pclSource;
        m_nEntier = pclSource->m_nEntier;
    }
    void RAZObjet(CCtxInfo* c, CXError* e) {
        Note(c, e);
        ++m_nRAZ;
        m_nEntier = 0;
    }

private:
    void Note(CCtxInfo* c, CXError* e) {
        m_pclDernierCtx = c;
        m_pclDerniereErreur = e;
    }
};
ITypeDescription* CStubSample::ms_piType = nullptr;
int CStubSample::ms_nConstruit = 0;

// The stubs, generated.
#include "frame/KllStubs.h"
#include "StubSample.def"

namespace {

// The rows, built as frame/Tables.cpp builds the component's (identifier = position).
constexpr uint64_t kqwFlags = KLL_CF_GOOGLE;
const STKLPropriete gtabPropriete[] = {
#define KLL_PROPERTY(C, P, T, A) KLL_ROW_PROPERTY(C, P, T, A, 0, nKllHashNom(#P), kqwFlags),
#define KLL_PROPERTY_AS(C, P, T, A, pszNom)                                                        \
    KLL_ROW_PROPERTY(C, P, T, A, 0, nKllHashNom(pszNom), kqwFlags),
#include "StubSample.def"
};
const STKLAccesseur gtabAccesseur[] = {
#define KLL_ACCESSOR(C, N, TR, M) KLL_ROW_ACCESSOR(C, N, TR, M, 0, nKllHashNom(#N), kqwFlags),
#include "StubSample.def"
};
const STKLSyntaxe gtabConstructeur[] = {
#define KLL_CONSTRUCTOR(C, k) KLL_ROW_CONSTRUCTOR(C, k),
#include "StubSample.def"
};
const STKLOClasse gstClasse = KLL_ROW_CLASS(
    CStubSample, GOOGLE, 1, "essaiStub", gtabConstructeur, std::size(gtabConstructeur),
    gtabPropriete, std::size(gtabPropriete), gtabAccesseur, std::size(gtabAccesseur));

const STKLPropriete& Ligne(std::string_view svNom) {
    for (const STKLPropriete& st : gtabPropriete)
        if (st.qwHash == nKllHashNom(std::string(svNom).c_str()))
            return st;
    ADD_FAILURE() << "no row " << svNom;
    return gtabPropriete[0];
}

class Stubs : public testing::Test {
protected:
    CVMEnregistreur m_clVM;
    CCtxInfo m_clCtx{nullptr, nullptr, &m_clVM};
    CXError* m_pclErreur = reinterpret_cast<CXError*>(&m_nFausseErreur); // passed, never read
    CStubSample m_clObjet;
    int m_nFausseErreur = 0;

    const STRetourVM& Lit(std::string_view svNom) {
        const STKLPropriete& st = Ligne(svNom);
        PFNKLLGet pfn = st.pfnGet ? st.pfnGet : st.pfnGetObjet;
        const size_t nAvant = m_clVM.m_tabRetour.size();
        pfn(&m_clObjet, &m_clCtx, m_pclErreur);
        EXPECT_EQ(m_clVM.m_tabRetour.size(), nAvant + 1) << svNom;
        EXPECT_EQ(m_clObjet.m_pclDernierCtx, &m_clCtx);
        EXPECT_EQ(m_clObjet.m_pclDerniereErreur, m_pclErreur);
        EXPECT_EQ(m_clVM.m_tabRetour.back().pclCtx, &m_clCtx);
        return m_clVM.m_tabRetour.back();
    }
    // A writer called with one argument slot pointing at `valeur`.
    template <class T> void Ecrit(PFNKLLSet pfn, T valeur) {
        ASSERT_NE(pfn, nullptr);
        unsigned char* tabArguments[] = {reinterpret_cast<unsigned char*>(&valeur)};
        pfn(&m_clObjet, tabArguments, &m_clCtx, m_pclErreur);
        EXPECT_EQ(m_clObjet.m_pclDernierCtx, &m_clCtx);
    }
};

// The shape of each row follows its type and access, by the rules of the tables: the getter
// of an object in the second slot; a setter only on RW, a forced setter only on RF; options
// 0x202 for a value that can be written back, 0x2 for one that cannot, 0x402 for an object.
struct STCasForme {
    const char* pszNom;
    uint64_t qwType;
    bool bObjet, bSetter, bForce, bCompat;
    uint64_t qwOption;
};
const STCasForme gtabForme[] = {
    {"Texte", 122, false, true, false, false, 0x202},
    {"Chaine", 16, false, false, true, false, 0x202},
    {"Entier", 8, false, true, false, false, 0x202},
    {"Actif", 1, false, true, false, true, 0x202},
    {"Grand", 9, false, false, true, true, 0x202},
    {"Reel", 12, false, true, false, false, 0x202},
    {"Date", 26, false, true, false, false, 0x202},
    {"Lettre", 17, false, true, false, false, 0x202},
    {"Lecture", 8, false, false, false, false, 0x2},
    {"Auteur", 111 | (28u << 16), true, false, false, false, 0x402},
    {"Description", 16, false, true, false, false, 0x202},
};
void PrintTo(const STCasForme& c, std::ostream* os) {
    *os << c.pszNom;
}
class FormeDesLignes : public testing::TestWithParam<STCasForme> {};
TEST_P(FormeDesLignes, SuitTypeEtAcces) {
    const STCasForme& c = GetParam();
    const STKLPropriete& st = Ligne(c.pszNom);
    EXPECT_EQ(st.qwType, c.qwType);
    EXPECT_EQ(st.pfnGet != nullptr, !c.bObjet);
    EXPECT_EQ(st.pfnGetObjet != nullptr, c.bObjet);
    EXPECT_EQ(st.pfnSet != nullptr, c.bSetter);
    EXPECT_EQ(st.pfnSetForce != nullptr, c.bForce);
    EXPECT_EQ(st.qwFlags, c.bCompat ? (kqwFlags | 1) : kqwFlags);
    EXPECT_EQ(st.qwOption, c.qwOption);
}
INSTANTIATE_TEST_SUITE_P(Stubs, FormeDesLignes, testing::ValuesIn(gtabForme),
                         [](const auto& info) { return std::string(info.param.pszNom); });

TEST_F(Stubs, LesGettersRendentLaValeurSousSonCode) {
    m_clObjet.m_dtDate.bModifieAnnee(2024);
    m_clObjet.m_dtDate.bModifieMois(2);
    m_clObjet.m_dtDate.bModifieJour(29);

    EXPECT_EQ(Lit("Texte").nType, 122);
    EXPECT_EQ(m_clVM.m_tabRetour.back().sTexte, L"texte");
    EXPECT_EQ(Lit("Chaine").nType, 16);
    EXPECT_EQ(m_clVM.m_tabRetour.back().sTexte, L"chaîne");
    EXPECT_EQ(Lit("Entier").nType, 8);
    EXPECT_EQ(ValeurDe<int32_t>(m_clVM.m_tabRetour.back()), 7);
    EXPECT_EQ(Lit("Actif").nType, 1);
    EXPECT_EQ(ValeurDe<int32_t>(m_clVM.m_tabRetour.back()), 1);
    EXPECT_EQ(Lit("Grand").nType, 9);
    EXPECT_EQ(ValeurDe<int64_t>(m_clVM.m_tabRetour.back()), 0x123456789LL);
    EXPECT_EQ(Lit("Reel").nType, 12);
    EXPECT_EQ(ValeurDe<double>(m_clVM.m_tabRetour.back()), 2.5);
    EXPECT_EQ(Lit("Date").nType, 26);
    EXPECT_EQ(ValeurDe<CDateTime>(m_clVM.m_tabRetour.back()), m_clObjet.m_dtDate);
    EXPECT_EQ(Lit("Lettre").nType, 17);
    EXPECT_EQ(ValeurDe<char>(m_clVM.m_tabRetour.back()), 'k');
    EXPECT_EQ(Lit("Lecture").nType, 8);
    EXPECT_EQ(ValeurDe<int32_t>(m_clVM.m_tabRetour.back()), 99);
}

TEST_F(Stubs, UnBooleenPartEnZeroOuUn) {
    m_clObjet.m_bActif = false;
    EXPECT_EQ(ValeurDe<int32_t>(Lit("Actif")), 0);
}

TEST_F(Stubs, UnObjetPartParSonCoteIObjetBase) {
    CStubSample clAuteur;
    m_clObjet.m_piAuteur = &clAuteur;
    const STRetourVM& st = Lit("Auteur");
    EXPECT_EQ(st.nType, 111);
    EXPECT_EQ(ValeurDe<IObjetBase*>(st), static_cast<IObjetBase*>(&clAuteur));
    m_clObjet.m_piAuteur = nullptr;
    EXPECT_EQ(ValeurDe<IObjetBase*>(Lit("Auteur")), nullptr);
}

TEST_F(Stubs, LesSettersEcriventLeMembre) {
    Ecrit(Ligne("Texte").pfnSet, static_cast<const wchar_t*>(L"neuf"));
    EXPECT_EQ(m_clObjet.m_sTexte, L"neuf");
    Ecrit(Ligne("Entier").pfnSet, int32_t{-42});
    EXPECT_EQ(m_clObjet.m_nEntier, -42);
    Ecrit(Ligne("Actif").pfnSet, int32_t{0});
    EXPECT_FALSE(m_clObjet.m_bActif);
    Ecrit(Ligne("Reel").pfnSet, -0.125);
    EXPECT_EQ(m_clObjet.m_dReel, -0.125);
    Ecrit(Ligne("Lettre").pfnSet, 'Z');
    EXPECT_EQ(m_clObjet.m_cLettre, 'Z');
    CDateTime dt{};
    dt.bModifieAnnee(1999);
    dt.bModifieMois(12);
    dt.bModifieJour(31);
    Ecrit(Ligne("Date").pfnSet, dt);
    EXPECT_EQ(m_clObjet.m_dtDate, dt);
}

TEST_F(Stubs, UnSetterDeChaineGardeSaPropreReference) {
    CXYString<wchar_t> s(L"résumé");
    Ecrit(Ligne("Description").pfnSet, s);
    EXPECT_EQ(m_clObjet.m_sResume, L"résumé");
    EXPECT_EQ(s.nGetRef(), 2) << "the object shares the text; the call's own reference is gone";
}

TEST_F(Stubs, LesSettersForcesEcriventLesLignesEnLecture) {
    CXYString<wchar_t> s(L"forcé");
    Ecrit(Ligne("Chaine").pfnSetForce, s);
    EXPECT_EQ(m_clObjet.m_sChaine, L"forcé");
    Ecrit(Ligne("Grand").pfnSetForce, int64_t{-5000000000LL});
    EXPECT_EQ(m_clObjet.m_nGrand, -5000000000LL);
}

TEST_F(Stubs, UnGetterDeChaineRelacheSaReference) {
    const int nAvant = m_clObjet.m_sChaine.nGetRef();
    Lit("Chaine");
    EXPECT_EQ(m_clObjet.m_sChaine.nGetRef(), nAvant);
}

TEST_F(Stubs, SansContexteNiVMRienNestRenduEtRienNeCasse) {
    CCtxInfo clSansVM{nullptr, nullptr, nullptr};
    for (const STKLPropriete& st : gtabPropriete) {
        PFNKLLGet pfn = st.pfnGet ? st.pfnGet : st.pfnGetObjet;
        pfn(&m_clObjet, nullptr, m_pclErreur);
        EXPECT_EQ(m_clObjet.m_pclDernierCtx, nullptr);
        pfn(&m_clObjet, &clSansVM, m_pclErreur);
        EXPECT_EQ(m_clObjet.m_pclDernierCtx, &clSansVM);
    }
    EXPECT_TRUE(m_clVM.m_tabRetour.empty());
}

TEST_F(Stubs, LesConstructeursRendentLeCoteIObjetBase) {
    ASSERT_EQ(gstClasse.nNbConstructeur, 2u);
    const int nAvant = CStubSample::ms_nConstruit;
    void* p = gstClasse.pstConstructeur[0].pfnConstructeur(nullptr, &m_clCtx, m_pclErreur);
    ASSERT_NE(p, nullptr);
    auto* pclNeuf = static_cast<CStubSample*>(static_cast<IObjetBase*>(p));
    EXPECT_EQ(pclNeuf->m_nEntier, 7);
    delete pclNeuf;

    int32_t nSource = 31;
    unsigned char* tabArguments[] = {reinterpret_cast<unsigned char*>(&nSource)};
    p = gstClasse.pstConstructeur[1].pfnConstructeur(tabArguments, &m_clCtx, m_pclErreur);
    ASSERT_NE(p, nullptr);
    pclNeuf = static_cast<CStubSample*>(static_cast<IObjetBase*>(p));
    EXPECT_EQ(pclNeuf->m_nEntier, 31);
    delete pclNeuf;
    EXPECT_EQ(CStubSample::ms_nConstruit, nAvant + 2);
    for (size_t i = 0; i < gstClasse.nNbConstructeur; ++i) {
        EXPECT_EQ(gstClasse.pstConstructeur[i].qwOption, 0x200u);
        EXPECT_EQ(gstClasse.pstConstructeur[i].pbySignature[0], 0);
    }
}

TEST_F(Stubs, TypeObjetGlobalRAZEtCopie) {
    auto* piType = reinterpret_cast<ITypeDescription*>(&m_nFausseErreur);
    gstClasse.pfnType(piType);
    EXPECT_EQ(CStubSample::ms_piType, piType);
    gstClasse.pfnType(nullptr);
    EXPECT_EQ(CStubSample::ms_piType, nullptr);

    EXPECT_EQ(gstClasse.pfnObjetGlobal(&m_clCtx, m_pclErreur), nullptr);

    gstClasse.pfnRAZ(&m_clObjet, &m_clCtx, m_pclErreur);
    EXPECT_EQ(m_clObjet.m_nRAZ, 1);
    EXPECT_EQ(m_clObjet.m_nEntier, 0);
    EXPECT_EQ(m_clObjet.m_pclDernierCtx, &m_clCtx);

    CStubSample clSource;
    clSource.m_nEntier = 1234;
    gstClasse.pfnCopie(&m_clObjet, &clSource, &m_clCtx, m_pclErreur);
    EXPECT_EQ(m_clObjet.m_pclSourceCopie, &clSource);
    EXPECT_EQ(m_clObjet.m_nEntier, 1234);
    EXPECT_TRUE(m_clVM.m_tabRetour.empty()) << "none of these returns through the VM";
}

TEST_F(Stubs, LesAccesseursRendentLaCollection) {
    ASSERT_EQ(gstClasse.nNbAccesseur, 2u);
    int nCollection = 0;
    m_clObjet.m_pEnfant = &nCollection;
    const STKLAccesseur& st = gstClasse.pstAccesseur[0];
    EXPECT_EQ(st.pfnAccesseur(&m_clObjet, &m_clCtx, m_pclErreur), &nCollection);
    EXPECT_EQ(st.qwType, 111u | (30u << 16));
    EXPECT_EQ(st.qwOption, 0x20204u);
    EXPECT_EQ(st.qwFlags, kqwFlags);
    const STKLAccesseur& stCompat = gstClasse.pstAccesseur[1];
    EXPECT_EQ(stCompat.pfnAccesseur(&m_clObjet, &m_clCtx, m_pclErreur), &m_clObjet.m_nEntier);
    EXPECT_EQ(stCompat.qwOption, 0x204u);
    EXPECT_EQ(stCompat.qwFlags, kqwFlags | 1);
}

TEST(StubsClasse, LeRecordPointeSesTables) {
    EXPECT_EQ(gstClasse.nNbPropriete, std::size(gtabPropriete));
    EXPECT_EQ(gstClasse.pstPropriete, gtabPropriete);
    EXPECT_EQ(gstClasse.qwFlags, kqwFlags);
    EXPECT_EQ(gstClasse.qwDeux, 2u);
    EXPECT_STREQ(gstClasse.pszType, "essaiStub");
}

} // namespace
