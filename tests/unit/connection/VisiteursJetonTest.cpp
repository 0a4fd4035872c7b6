// The small visitors that read tokens out of token endpoint answers, walked over trees of the
// test JSON service exactly as the host's would walk them; the function object that stores an
// access token; the loose key comparison they rest on.
#include "HoteEssai.h"

#include "connection/FctSetAccessToken.h"
#include "connection/VisitJSONRefreshToken.h"
#include "connection/VisiteurJSONGetToken.h"
#include "foundation/LooseCompare.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// ---- CVisitJSONRefreshToken: the exact key, the first one, and the walk stops there

struct STCasRefresh {
    const char* pszNom;
    const wchar_t* pszJSON;
    const wchar_t* pszAttendu;
};
const STCasRefresh gtabRefresh[] = {
    {"Simple", L"{\"access_token\":\"ya29.a\",\"expires_in\":3599}", L"ya29.a"},
    {"LePremierGagne", L"{\"access_token\":\"un\",\"access_token\":\"deux\"}", L"un"},
    {"NombreArreteEtLaisseVide", L"{\"access_token\":12,\"access_token\":\"deux\"}", L""},
    {"CasseRefusee", L"{\"Access_Token\":\"x\"}", L""},
    {"BlancsRefuses", L"{\" access_token \":\"x\"}", L""},
    {"ImbriqueTrouve", L"{\"data\":{\"access_token\":\"dedans\"}}", L"dedans"},
    {"DansUnTableau", L"[{\"a\":1},{\"access_token\":\"t\"}]", L"t"},
    {"Absent", L"{\"error\":\"invalid_grant\"}", L""},
};
class VisiteRefresh : public testing::TestWithParam<STCasRefresh> {};
TEST_P(VisiteRefresh, LitLeJeton) {
    auto clArbre = clArbreEssai(GetParam().pszJSON);
    ASSERT_TRUE(clArbre);
    CVisitJSONRefreshToken clVisiteur;
    clArbre->vAccepte(clVisiteur);
    EXPECT_EQ(clVisiteur.sGetAccessToken().sv(), GetParam().pszAttendu);
}
INSTANTIATE_TEST_SUITE_P(Jetons, VisiteRefresh, testing::ValuesIn(gtabRefresh),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// The walk ends at the first access_token: nothing after it is visited.
class CCompteur final : public IVisiteurJSON {
public:
    eVISITEJSON veVisiteValeur(CAny& cl) override {
        ++m_nValeurs;
        return m_clVisiteur.veVisiteValeur(cl);
    }
    eVISITEJSON veVisiteObjet(IObjetJSON& cl) override { return m_clVisiteur.veVisiteObjet(cl); }
    eVISITEJSON veVisiteMembre(const CNomStandard& cl, IElementJSON& e) override {
        return m_clVisiteur.veVisiteMembre(cl, e);
    }
    eVISITEJSON veVisiteTableau(ITableauJSON& cl) override {
        return m_clVisiteur.veVisiteTableau(cl);
    }
    eVISITEJSON veVisiteElement(IElementJSON& cl) override {
        return m_clVisiteur.veVisiteElement(cl);
    }
    CVisitJSONRefreshToken m_clVisiteur;
    int m_nValeurs = 0;
};
TEST(VisiteRefreshArret, RienNEstVisiteApresLeJeton) {
    auto clArbre = clArbreEssai(L"{\"a\":1,\"access_token\":\"t\",\"b\":2,\"c\":3}");
    CCompteur clCompteur;
    clArbre->vAccepte(clCompteur);
    EXPECT_EQ(clCompteur.m_nValeurs, 2);
    EXPECT_EQ(clCompteur.m_clVisiteur.sGetAccessToken().sv(), L"t");
}

// ---- CVisiteurJSONGetToken: loose keys, every field

struct STCasGetToken {
    const char* pszNom;
    const wchar_t* pszJSON;
    const wchar_t* pszErreur;
    const wchar_t* pszAcces;
    const wchar_t* pszRefresh;
    int nExpire;
    const wchar_t* pszIdToken;
};
const STCasGetToken gtabGetToken[] = {
    {"ReponseComplete",
     L"{\"access_token\":\"ya29\",\"expires_in\":3599,\"refresh_token\":\"1//r\","
     L"\"scope\":\"s\",\"token_type\":\"Bearer\",\"id_token\":\"eyJ\"}",
     L"", L"ya29", L"1//r", 3599, L"eyJ"},
    {"CasseEtBlancsAcceptes",
     L"{\"Access_Token\":\"a\",\" REFRESH_TOKEN \":\"r\",\"Expires_In\":7}", L"", L"a", L"r", 7,
     L""},
    {"AccentsIgnores", L"{\"accèss_tokén\":\"a\"}", L"", L"a", L"", 0, L""},
    {"MessageApresErreurGagne", L"{\"error\":\"invalid_grant\",\"message\":\"expired\"}",
     L"expired", L"", L"", 0, L""},
    {"ErreurApresMessageGagne", L"{\"message\":\"expired\",\"error\":\"invalid_grant\"}",
     L"invalid_grant", L"", L"", 0, L""},
    {"MessageImbrique", L"{\"error\":{\"code\":401,\"message\":\"Invalid Credentials\"}}",
     L"Invalid Credentials", L"", L"", 0, L""},
    {"TexteNonChaineIgnore", L"{\"access_token\":5,\"refresh_token\":null,\"error\":true}", L"",
     L"", L"", 0, L""},
    {"ExpiryNonEntierIgnore", L"{\"expires_in\":\"soon\"}", L"", L"", L"", 0, L""},
    {"CleVoisineIgnoree", L"{\"access_tokens\":\"a\",\"code\":\"c\"}", L"", L"", L"", 0, L""},
};
class VisiteGetToken : public testing::TestWithParam<STCasGetToken> {};
TEST_P(VisiteGetToken, RemplitLeJeton) {
    const STCasGetToken& st = GetParam();
    auto clArbre = clArbreEssai(st.pszJSON);
    ASSERT_TRUE(clArbre);
    CVisiteurJSONGetToken clVisiteur;
    clArbre->vAccepte(clVisiteur);
    const STOAuth2TokenBase& stJeton = clVisiteur.stGetToken();
    EXPECT_EQ(stJeton.m_sError.sv(), st.pszErreur);
    EXPECT_EQ(stJeton.m_sAccessToken.sv(), st.pszAcces);
    EXPECT_EQ(stJeton.m_sRefreshToken.sv(), st.pszRefresh);
    EXPECT_EQ(stJeton.m_nExpires, st.nExpire);
    EXPECT_EQ(stJeton.m_sIdToken.sv(), st.pszIdToken);
    EXPECT_TRUE(stJeton.m_sTokenType.bVide()) << "not a key of this visitor";
}
INSTANTIATE_TEST_SUITE_P(Jetons, VisiteGetToken, testing::ValuesIn(gtabGetToken),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// ---- FctSetAccessToken

TEST(FctSetAccessToken, PoseLAccesSansToucherAuRefresh) {
    CXArray<COAuthToken> tab;
    tab.Ajoute(COAuthToken());
    tab.Ajoute(COAuthToken());
    tab[1].m_sRefreshToken = L"1//r";
    tab[1].m_sAccessToken = L"ancien";
    const FctSetAccessToken fct(&tab, CXYString<wchar_t>(L"neuf"));
    fct(SERVICEGOOGLE_AGENDA);
    EXPECT_EQ(tab[1].m_sAccessToken.sv(), L"neuf");
    EXPECT_EQ(tab[1].m_sRefreshToken.sv(), L"1//r");
    EXPECT_TRUE(tab[0].m_sAccessToken.bVide());

    fct(SERVICEGOOGLE_PICASA);
    ASSERT_EQ(tab.nGetNbElement(), 6u) << "grown to reach the service";
    EXPECT_EQ(tab[5].m_sAccessToken.sv(), L"neuf");
    for (size_t i : {2u, 3u, 4u})
        EXPECT_TRUE(tab[i].m_sAccessToken.bVide()) << i;
}

// ---- the loose comparison

struct STCasSouple {
    const wchar_t* pszTexte;
    const wchar_t* pszCle;
    bool bEgal;
};
const STCasSouple gtabSouple[] = {
    {L"code", L"code", true},   {L"CODE", L"code", true},       {L" \tcode ", L"code", true},
    {L"códe", L"code", true},   {L"ÇODE", L"code", true},       {L"co de", L"code", false},
    {L"codes", L"code", false}, {L"", L"code", false},          {L"æ", L"Æ", true},
    {L"ß", L"s", false},        {L"\u0441ode", L"code", false}, // a Cyrillic letter
};
TEST(ComparaisonSouple, CasseEtAccents) {
    for (const STCasSouple& st : gtabSouple)
        EXPECT_EQ(STR_bEgalSoupleSansBlancs(st.pszTexte, st.pszCle), st.bEgal)
            << KVUtf8::VersUtf8(st.pszTexte);
}

} // namespace
