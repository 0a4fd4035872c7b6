// The connection as a script object: its properties read and written through the rows of the
// component's tables, and RefreshTokens written out and read back through the host's JSON
// service, as the host's save and rebuild do.
#include "VMEnregistreur.h"
#include "HoteEssai.h"

#include "DataServiceErrors.h"

#include "connection/GoogleConnexion.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"
#include "frame/ModuleInfo.h"

#include "Ref.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

constexpr unsigned knConnexion = 0;
CTypeEssai gclTypeConnexion(L"gglConnexion");

using TJetons = std::array<std::wstring, SERVICEGOOGLE_NB>;

class ConnexionGoogle : public testing::Test {
protected:
    void SetUp() override {
        stClasse().pfnType(&gclTypeConnexion);
        m_piLibShopAvant = CInformationDLL::ms_piLibShop;
        CInformationDLL::ms_piLibShop = &m_clLibShop;
        m_clConnexion = clNouvelle();
    }
    void TearDown() override {
        m_clConnexion.Reset();
        CComposanteGGL().TermCompo(); // gives the shared JSON service back
        CInformationDLL::ms_piLibShop = m_piLibShopAvant;
        stClasse().pfnType(nullptr);
        EXPECT_EQ(m_clLibShop.m_clJSON.m_nRef, 0) << "every reference to the service given back";
    }

    static const STKLOClasse& stClasse() { return stClasseEssai(knConnexion); }
    static const STKLPropriete& stLigne(const char* psz) {
        return stProprieteEssai(stClasse(), psz);
    }
    // A new connection as the host makes one.
    CRef<CGoogleConnexion> clNouvelle() {
        void* p = stClasse().pstConstructeur[0].pfnConstructeur(nullptr, &m_clCtx, &m_clErreur);
        auto* piBase = static_cast<IObjetBase*>(p);
        void* pNatif = piBase ? piBase->vpiGetIObjetComposante()->vpGetSafeObjetC(&gclTypeConnexion)
                              : nullptr;
        EXPECT_NE(pNatif, nullptr);
        return CRef<CGoogleConnexion>::Retain(static_cast<CGoogleConnexion*>(pNatif));
    }
    STRetourVM Lit(const char* psz, CGoogleConnexion* pcl = nullptr) {
        const size_t nAvant = m_clVM.m_tabRetour.size();
        stLigne(psz).pfnGet(pcl ? pcl : m_clConnexion.pGet(), &m_clCtx, &m_clErreur);
        EXPECT_EQ(m_clVM.m_tabRetour.size(), nAvant + 1) << psz;
        return m_clVM.m_tabRetour.empty() ? STRetourVM{} : m_clVM.m_tabRetour.back();
    }
    void EcritTexte(const char* psz, const wchar_t* pszValeur) {
        EcritEssai(stLigne(psz).pfnSet, m_clConnexion.pGet(), pszValeur, &m_clCtx, &m_clErreur);
    }
    void ForceRefreshTokens(const wchar_t* psz, CGoogleConnexion* pcl = nullptr) {
        CXYString<wchar_t> s(psz);
        EcritEssai(stLigne("RefreshTokens").pfnSetForce, pcl ? pcl : m_clConnexion.pGet(), s,
                   &m_clCtx, &m_clErreur);
    }
    TJetons tabRefresh(CGoogleConnexion& cl) const {
        TJetons tab;
        for (size_t i = 0; i < tab.size(); ++i)
            tab[i] = cl.tabGetToken()[i].m_sRefreshToken.pszGet();
        return tab;
    }
    void Remplit(const wchar_t* pszRefresh, const wchar_t* pszAcces) {
        for (COAuthToken& st : m_clConnexion->tabGetToken()) {
            st.m_sRefreshToken = pszRefresh;
            st.m_sAccessToken = pszAcces;
        }
    }

    CVMEnregistreur m_clVM;
    CCtxInfo m_clCtx{nullptr, nullptr, &m_clVM};
    CXError m_clErreur{&gstMyModuleInfo60};
    CLibShopEssai m_clLibShop;
    ILibShop* m_piLibShopAvant = nullptr;
    CRef<CGoogleConnexion> m_clConnexion;
};

class TextesConnexion : public ConnexionGoogle, public testing::WithParamInterface<const char*> {};
TEST_P(TextesConnexion, EcritsPuisRelus) {
    EXPECT_EQ(Lit(GetParam()).sTexte, L"") << "empty at first";
    EcritTexte(GetParam(), L"identifiant-é@exemple.org");
    const STRetourVM r = Lit(GetParam());
    EXPECT_EQ(r.nType, 122);
    EXPECT_EQ(r.sTexte, L"identifiant-é@exemple.org");
    EcritTexte(GetParam(), nullptr);
    EXPECT_EQ(Lit(GetParam()).sTexte, L"") << "a null text empties";
    EXPECT_TRUE(m_clErreur.bEstPropre());
}
INSTANTIATE_TEST_SUITE_P(GglConnexion, TextesConnexion,
                         testing::Values("Email", "ClientID", "ClientSecret"));

class TextesOublies : public ConnexionGoogle, public testing::WithParamInterface<const char*> {};
TEST_P(TextesOublies, LaValeurEstPerdue) {
    EcritTexte("Email", L"moi@exemple.org");
    EcritTexte("ClientID", L"id");
    EcritTexte(GetParam(), L"secret");
    const STRetourVM r = Lit(GetParam());
    EXPECT_EQ(r.nType, 122);
    EXPECT_EQ(r.sTexte, L"");
    EXPECT_EQ(Lit("Email").sTexte, L"moi@exemple.org");
    EXPECT_EQ(Lit("ClientID").sTexte, L"id");
    EXPECT_EQ(Lit("ClientSecret").sTexte, L"");
}
INSTANTIATE_TEST_SUITE_P(GglConnexion, TextesOublies, testing::Values("MotDePasse", "NomApplication"));

TEST_F(ConnexionGoogle, RefreshTokensDUneConnexionNeuve) {
    ASSERT_EQ(m_clConnexion->tabGetToken().nGetNbElement(), 6u);
    const STRetourVM r = Lit("RefreshTokens");
    EXPECT_EQ(r.nType, 16);
    EXPECT_EQ(r.sTexte, L"{\"none\":\"\",\"calendar\":\"\",\"contact\":\"\",\"documentlist\":\"\","
                        L"\"staticmaps\":\"\",\"picasa\":\"\"}");
}

TEST_F(ConnexionGoogle, RefreshTokensAllerRetour) {
    const TJetons tabJeton = {L"", L"1//agenda-é", L"1//contacts", L"1//docs", L"1//cartes",
                              L"1//photos"};
    for (size_t i = 0; i < tabJeton.size(); ++i) {
        m_clConnexion->tabGetToken()[i].m_sRefreshToken = tabJeton[i].c_str();
        m_clConnexion->tabGetToken()[i].m_sAccessToken = L"ya29.acces";
    }
    const STRetourVM r = Lit("RefreshTokens");
    EXPECT_EQ(r.sTexte, L"{\"none\":\"\",\"calendar\":\"1//agenda-é\",\"contact\":\"1//contacts\","
                        L"\"documentlist\":\"1//docs\",\"staticmaps\":\"1//cartes\","
                        L"\"picasa\":\"1//photos\"}");

    auto clCopie = clNouvelle();
    ForceRefreshTokens(r.sTexte.c_str(), clCopie.pGet());
    EXPECT_TRUE(m_clErreur.bEstPropre());
    EXPECT_EQ(tabRefresh(*clCopie), tabJeton);
    for (const COAuthToken& st : clCopie->tabGetToken())
        EXPECT_TRUE(st.m_sAccessToken.bVide()) << "access tokens are not part of the text";
    EXPECT_EQ(Lit("RefreshTokens", clCopie.pGet()).sTexte, r.sTexte);
    ASSERT_EQ(m_clLibShop.m_clJSON.m_tabRecu.size(), 1u);
    EXPECT_NE(m_clLibShop.m_clJSON.m_tabRecu[0].find("agenda-\xC3\xA9"), std::string::npos)
        << "the service is given UTF-8";
}

// A text written into a connection whose every token is "avant": what each service keeps.
struct STCasLecture {
    const char* pszNom;
    const wchar_t* pszTexte;
    TJetons tabAttendu;
};
const STCasLecture gtabLecture[] = {
    {"NoneIgnore", L"{\"calendar\":\"x\",\"none\":\"y\"}",
     {L"avant", L"x", L"avant", L"avant", L"avant", L"avant"}},
    {"ValeurNonTexteVide", L"{\"calendar\":5,\"picasa\":null,\"contact\":true}",
     {L"avant", L"", L"", L"avant", L"avant", L""}},
    {"CheminImbriqueIgnore", L"{\"a\":{\"calendar\":\"z\"},\"documentlist\":\"d\"}",
     {L"avant", L"avant", L"avant", L"d", L"avant", L"avant"}},
    {"CasseExacte", L"{\"Calendar\":\"c\",\"staticmaps\":\"s\",\" picasa\":\"p\"}",
     {L"avant", L"avant", L"avant", L"avant", L"s", L"avant"}},
    {"LeDernierGagne", L"{\"contact\":\"c1\",\"contact\":\"c2\"}",
     {L"avant", L"avant", L"c2", L"avant", L"avant", L"avant"}},
    {"TableauIgnore", L"[\"calendar\",{\"calendar\":\"t\"}]",
     {L"avant", L"avant", L"avant", L"avant", L"avant", L"avant"}},
    {"ObjetVide", L"{}", {L"avant", L"avant", L"avant", L"avant", L"avant", L"avant"}},
    {"TexteVideRienNeChange", L"", {L"avant", L"avant", L"avant", L"avant", L"avant", L"avant"}},
    {"TousLesServices",
     L"{\"calendar\":\"1\",\"contact\":\"2\",\"documentlist\":\"3\",\"staticmaps\":\"4\","
     L"\"picasa\":\"5\",\"inconnu\":\"6\"}",
     {L"avant", L"1", L"2", L"3", L"4", L"5"}},
};
class LectureRefreshTokens : public ConnexionGoogle, public testing::WithParamInterface<STCasLecture> {};
TEST_P(LectureRefreshTokens, ChaqueServiceNommeSeulement) {
    Remplit(L"avant", L"acces");
    ForceRefreshTokens(GetParam().pszTexte);
    EXPECT_TRUE(m_clErreur.bEstPropre());
    EXPECT_EQ(tabRefresh(*m_clConnexion), GetParam().tabAttendu);
    for (const COAuthToken& st : m_clConnexion->tabGetToken())
        EXPECT_EQ(st.m_sAccessToken, L"acces") << "access tokens are left alone";
}
INSTANTIATE_TEST_SUITE_P(GglConnexion, LectureRefreshTokens, testing::ValuesIn(gtabLecture),
                         [](const auto& i) { return std::string(i.param.pszNom); });

TEST_F(ConnexionGoogle, UnTexteQuiNEstPasDuJSONLaisseSaCause) {
    Remplit(L"avant", L"acces");
    ForceRefreshTokens(L"{\"calendar\":");
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), static_cast<unsigned>(DATASERVICE_JSON_SYNTAX))
        << "the service's own cause";
    EXPECT_EQ(tabRefresh(*m_clConnexion)[1], L"avant");
}

TEST_F(ConnexionGoogle, SansServiceJSONLeTexteNeDisparaitPasSansErreur) {
    CInformationDLL::ms_piLibShop = nullptr;
    Remplit(L"avant", L"acces");
    ForceRefreshTokens(L"{\"calendar\":\"x\"}");
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600048u);
    EXPECT_EQ(tabRefresh(*m_clConnexion)[1], L"avant");
}

TEST_F(ConnexionGoogle, SansObjetErreurRienNeCasse) {
    CXYString<wchar_t> s(L"not json");
    unsigned char* tabArguments[] = {reinterpret_cast<unsigned char*>(&s)};
    stLigne("RefreshTokens").pfnSetForce(m_clConnexion.pGet(), tabArguments, nullptr, nullptr);
    stLigne("Email").pfnGet(m_clConnexion.pGet(), nullptr, nullptr);
    EXPECT_TRUE(m_clVM.m_tabRetour.empty()) << "no context, no VM to return to";
}

TEST_F(ConnexionGoogle, CopieEtRAZParLeursLignes) {
    EcritTexte("Email", L"a@b.c");
    EcritTexte("ClientID", L"id");
    EcritTexte("ClientSecret", L"secret");
    Remplit(L"rt", L"at");
    auto clCopie = clNouvelle();
    stClasse().pfnCopie(clCopie.pGet(), m_clConnexion.pGet(), &m_clCtx, &m_clErreur);
    for (const char* psz : {"Email", "ClientID", "ClientSecret", "RefreshTokens"})
        EXPECT_EQ(Lit(psz, clCopie.pGet()).sTexte, Lit(psz).sTexte) << psz;
    EXPECT_EQ(clCopie->tabGetToken()[3].m_sAccessToken, L"at");

    stClasse().pfnRAZ(clCopie.pGet(), &m_clCtx, &m_clErreur);
    for (const char* psz : {"Email", "ClientID", "ClientSecret"})
        EXPECT_EQ(Lit(psz, clCopie.pGet()).sTexte, L"") << psz;
    EXPECT_EQ(clCopie->tabGetToken().nGetNbElement(), 6u);
    for (const COAuthToken& st : clCopie->tabGetToken()) {
        EXPECT_TRUE(st.m_sAccessToken.bVide());
        EXPECT_TRUE(st.m_sRefreshToken.bVide());
    }
    EXPECT_EQ(Lit("Email").sTexte, L"a@b.c") << "the source is untouched";
}

} // namespace
