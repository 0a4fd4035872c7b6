// The Google connection against a host that records every request record and runs a canned
// login dialogue: what the wire tests cannot reach (every scope and the account hint, each way
// a grant or the dialogue fails, the refresh tokens cleared before a dialogue, the logout
// pairs, the parsers' statuses) and the script functions through their rows of the function
// table. The exact grants, bearers, 600005 and 600013 are proven on the wire (tests/lua_wire).
#include "HoteEssai.h"

#include "connection/GoogleConnexion.h"
#include "connection/InterfGGLCnx.h"
#include "foundation/KLANYArray.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"
#include "frame/Tables.h"
#include "connection/OAuth2TokenBase.h"

#include "Ref.h"
#include "Resources.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>


namespace {

const wchar_t kszJetons[] = L"https://accounts.google.com/o/oauth2/token";
const wchar_t kszFormulaire[] = L"application/x-www-form-urlencoded";
const wchar_t kszAgenda[] = L"https://www.googleapis.com/calendar/v3/users/me/calendarList";
const wchar_t kszScopeAgenda[] = L"https://www.googleapis.com/auth/calendar";
const wchar_t kszScopeContacts[] = L"https://www.google.com/m8/feeds/";
const wchar_t kszScopeDocuments[] = L"https://docs.google.com/feeds/%20https://"
                                    L"docs.googleusercontent.com/%20https://"
                                    L"spreadsheets.google.com/feeds/";
const wchar_t kszScopePicasa[] = L"https://picasaweb.google.com/data/";

// The raw head the login service hands back: the browser's request to the redirect address.
std::wstring Retour(const std::wstring& sCible) {
    return L"GET " + sCible + L" HTTP/1.1\r\nHost: 127.0.0.1:4567\r\nAccept: */*\r\n";
}

std::wstring Message(unsigned nRessource, const wchar_t* pszArgument) {
    CTString s;
    EXPECT_TRUE(DLLRES_bFormatMessage(&gstMyModuleInfo60, nRessource, &s, pszArgument));
    return s.pszGet();
}

using TJetons = std::array<std::wstring, SERVICEGOOGLE_NB>;

class ConnexionGoogleHote : public testing::Test {
protected:
    void SetUp() override {
        m_piLibShopAvant = CInformationDLL::ms_piLibShop;
        m_nProduitAvant = CInformationDLL::ms_nCodeProduitExecution;
        CInformationDLL::ms_piLibShop = &m_clLibShop;
        CInformationDLL::ms_nCodeProduitExecution = 1;
        m_clVM.m_piAuthentification = &m_clLogin;
        m_clConnexion = clNouvelle();
    }
    void TearDown() override {
        m_clConnexion.Reset();
        m_clAutre.Reset();
        CComposanteGGL().TermCompo(); // gives the shared JSON service back
        CInformationDLL::ms_piLibShop = m_piLibShopAvant;
        CInformationDLL::ms_nCodeProduitExecution = m_nProduitAvant;
        EXPECT_EQ(m_clLibShop.m_clJSON.m_nRef, 0);
        EXPECT_EQ(m_clLibShop.m_clHTTP.m_nRef, 0) << "each connection gives its service back";
        EXPECT_EQ(m_clLogin.m_nRef, 0) << "the dialogue is given back after each login";
    }

    static CRef<CGoogleConnexion> clNouvelle() {
        auto cl =
            CRef<CGoogleConnexion>::Retain(CGoogleConnexion::s_pclCreeObjet(nullptr, nullptr));
        cl->SetClientID(L"id-client");
        cl->SetClientSecret(L"secret");
        return cl;
    }
    CGoogleConnexion& Cnx() { return *m_clConnexion; }
    const std::vector<STRequeteVue>& Vues() { return m_clLibShop.m_clHTTP.m_tabVues; }
    void Repond(STReponse st) { m_clLibShop.m_clHTTP.m_tabReponses.push_back(std::move(st)); }
    // The dialogue approves; the code exchange answers tokens.
    void Approuve(const std::string& sJetons = "{\"access_token\":\"ya29.dialogue\","
                                               "\"refresh_token\":\"1//dialogue\","
                                               "\"expires_in\":3599,\"token_type\":\"Bearer\"}") {
        m_clLogin.m_sReponse = Retour(L"/?state=f00d&code=4/code-x&scope=s");
        Repond(Reponse(200, sJetons));
    }
    void PoseRefresh(int nService, const wchar_t* psz) {
        Cnx().tabGetToken()[static_cast<size_t>(nService)].m_sRefreshToken = psz;
    }
    void PoseAcces(int nService, const wchar_t* psz) {
        Cnx().tabGetToken()[static_cast<size_t>(nService)].m_sAccessToken = psz;
    }
    TJetons Acces(CGoogleConnexion& cl) {
        TJetons tab;
        for (size_t i = 0; i < tab.size(); ++i)
            tab[i] = cl.tabGetToken()[i].m_sAccessToken.pszGet();
        return tab;
    }
    TJetons Refresh(CGoogleConnexion& cl) {
        TJetons tab;
        for (size_t i = 0; i < tab.size(); ++i)
            tab[i] = cl.tabGetToken()[i].m_sRefreshToken.pszGet();
        return tab;
    }
    // The token request of a grant: where, how, and with no bearer and no VM tied.
    void VerifieRequeteJeton(const STRequeteVue& st, const std::string& sCorps) {
        EXPECT_EQ(st.sURL, kszJetons);
        EXPECT_EQ(st.nMethode, 2);
        EXPECT_EQ(st.sType, kszFormulaire);
        EXPECT_EQ(st.sCorps, sCorps);
        EXPECT_FALSE(st.bEntetes) << "no header set: in particular no Authorization";
        EXPECT_EQ(st.piVM, nullptr) << "the grant is not tied to the script's VM";
        EXPECT_EQ(st.nVersion, 2);
        EXPECT_EQ(st.nOption, 16);
    }

    CLibShopEssai m_clLibShop;
    CAuthentificationEssai m_clLogin;
    CVMEnregistreur m_clVM;
    CCtxInfo m_clCtx{nullptr, nullptr, &m_clVM};
    CXError m_clErreur{&gstMyModuleInfo60};
    CRef<CGoogleConnexion> m_clConnexion;
    CRef<CGoogleConnexion> m_clAutre;
    ILibShop* m_piLibShopAvant = nullptr;
    int m_nProduitAvant = 0;
};

const std::string ksCorpsCode = "code=4/code-x&client_id=id-client&client_secret=secret&"
                                "redirect_uri=http://127.0.0.1:4567/&grant_type=authorization_code";

// ---- the dialogue and the authorization_code grant

TEST_F(ConnexionGoogleHote, LAdresseDonneLIndiceDeCompteEtTousLesScopes) {
    Cnx().SetEmail(L"moi@exemple.org");
    Approuve();
    EXPECT_TRUE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 31));
    ASSERT_EQ(m_clLogin.m_tabURL.size(), 1u);
    EXPECT_EQ(m_clLogin.m_tabURL[0],
              std::wstring(L"https://accounts.google.com/o/oauth2/auth?response_type=code&"
                           L"client_id=id-client&scope=") +
                  kszScopeAgenda + L"%20" + kszScopeContacts + L"%20" + kszScopeDocuments + L"%20" +
                  kszScopePicasa +
                  L"&include_granted_scopes=true&login_hint=moi@exemple.org"
                  L"&redirect_uri=http://127.0.0.1:4567/&state=[%STATE%]");
    EXPECT_EQ(Acces(Cnx()), (TJetons{L"", L"ya29.dialogue", L"ya29.dialogue", L"ya29.dialogue",
                                     L"ya29.dialogue", L"ya29.dialogue"}));
}

TEST_F(ConnexionGoogleHote, SansServiceLeDialogueDemandeUnScopeVide) {
    Approuve();
    EXPECT_TRUE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 0));
    ASSERT_EQ(m_clLogin.m_tabURL.size(), 1u);
    EXPECT_NE(m_clLogin.m_tabURL[0].find(L"&scope=&include_granted_scopes=true"),
              std::wstring::npos);
    EXPECT_EQ(Acces(Cnx()), TJetons{}) << "no service to give the tokens to";
}

TEST_F(ConnexionGoogleHote, UnEchangeRefuseDonne600001AvecLErreurDuServeur) {
    m_clLogin.m_sReponse = Retour(L"/?code=4/code-x&state=f00d");
    Repond(Reponse(400, "{\"error\":\"invalid_grant\",\"error_description\":\"Bad Request\"}"));
    EXPECT_FALSE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 1));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600001u);
    EXPECT_EQ(std::wstring(m_clErreur.pszGetUserMessage()), Message(5865, L"invalid_grant"));
    ASSERT_EQ(Vues().size(), 1u);
    VerifieRequeteJeton(Vues()[0], ksCorpsCode);
    EXPECT_EQ(Acces(Cnx()), TJetons{});
}

TEST_F(ConnexionGoogleHote, UneReponseIlisibleDonne600003) {
    m_clLogin.m_sReponse = Retour(L"/?code=4/code-x");
    Repond(Reponse(200, "<html>not json</html>"));
    EXPECT_FALSE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 1));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600003u);
    EXPECT_EQ(Acces(Cnx()), TJetons{});
}

TEST_F(ConnexionGoogleHote, UnEchangeQuiNePartPasDonneLaCauseDeLHote) {
    m_clLogin.m_sReponse = Retour(L"/?code=4/code-x");
    Repond({L"", "", false});
    EXPECT_FALSE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 1));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), CHTTPEssai::knErreurTransport);
}

TEST_F(ConnexionGoogleHote, UnDialogueAbandonneGardeLaCauseDeLHote) {
    m_clLogin.m_eResultat = AUTHENTIFICATION_ANNULEE;
    EXPECT_FALSE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 1));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), CAuthentificationEssai::knErreurDialogue)
        << "the host's cause is kept, not covered by 600001";
    EXPECT_TRUE(Vues().empty());
}

TEST_F(ConnexionGoogleHote, UnHoteSansDialogueLaisseSaCause) {
    m_clVM.m_piAuthentification = nullptr;
    EXPECT_FALSE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 1));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600002u);
}

TEST_F(ConnexionGoogleHote, HorsDuRuntimeDeBureauLeDialogueEstRefuse) {
    for (int nProduit : {0, 6, 30}) {
        CInformationDLL::ms_nCodeProduitExecution = nProduit;
        CXError clErreur(&gstMyModuleInfo60);
        EXPECT_FALSE(Cnx().GglConnecte(&m_clCtx, &clErreur, 1)) << nProduit;
        EXPECT_EQ(clErreur.nGetUserErrorCode(), 600055u) << nProduit;
    }
    EXPECT_EQ(m_clVM.m_nDemandesLogin, 0) << "the gate comes before the host is asked";
    EXPECT_TRUE(m_clLogin.m_tabURL.empty());
}

TEST_F(ConnexionGoogleHote, LeNavigateurEstDemandeSelonLeProduit) {
    CInterfGGLCnx clInterface(&m_clErreur, m_clConnexion.pGet(), 1);
    CInformationDLL::ms_nCodeProduitExecution = 6;
    EXPECT_TRUE(clInterface.bGetParNavigateur());
    CInformationDLL::ms_nCodeProduitExecution = 1;
    EXPECT_FALSE(clInterface.bGetParNavigateur());
    EXPECT_STREQ(clInterface.sGetURLRedirection(), L"");
    EXPECT_STREQ(clInterface.sGetClientID(), L"id-client");
    EXPECT_STREQ(clInterface.sGetClientSecret(), L"secret");
}

// ---- the refresh_token grant

TEST_F(ConnexionGoogleHote, DesRefreshDifferentsVontAuDialogueEtSontEffaces) {
    PoseRefresh(SERVICEGOOGLE_AGENDA, L"1//a");
    PoseRefresh(SERVICEGOOGLE_CONTACT, L"1//b");
    PoseAcces(SERVICEGOOGLE_AGENDA, L"ya29.a");
    m_clLogin.m_eResultat = AUTHENTIFICATION_ANNULEE;
    EXPECT_FALSE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 1 | 2));
    EXPECT_TRUE(Vues().empty()) << "no refresh attempt";
    EXPECT_EQ(m_clLogin.m_tabURL.size(), 1u);
    EXPECT_EQ(Refresh(Cnx()), TJetons{}) << "cleared before the dialogue";
    EXPECT_EQ(Acces(Cnx()), TJetons{});
}

TEST_F(ConnexionGoogleHote, UnServiceSansRefreshEmpecheLeSilence) {
    PoseRefresh(SERVICEGOOGLE_CONTACT, L"1//b");
    Approuve();
    EXPECT_TRUE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 1 | 2)) << "calendar, first, has none";
    ASSERT_EQ(Vues().size(), 1u);
    VerifieRequeteJeton(Vues()[0], ksCorpsCode);
}

// Whatever makes the silent road fail, the dialogue follows, and nothing of the failure stays.
struct STCasRefreshRate {
    const char* pszNom;
    STReponse stReponse;
};
const STCasRefreshRate gtabRefreshRate[] = {
    {"Transport", {L"", "", false}},
    {"Statut201", Reponse(201, "{\"access_token\":\"x\"}")},
    {"PasDuJSON", Reponse(200, "access_token=x")},
    {"SansJeton", Reponse(200, "{\"token_type\":\"Bearer\"}")},
    {"JetonNumerique", Reponse(200, "{\"access_token\":42}")},
};
class RefreshRate : public ConnexionGoogleHote,
                    public testing::WithParamInterface<STCasRefreshRate> {};
TEST_P(RefreshRate, LeDialogueSuit) {
    PoseRefresh(SERVICEGOOGLE_DOCUMENTS, L"1//d");
    Repond(GetParam().stReponse);
    Approuve();
    EXPECT_TRUE(Cnx().GglConnecte(&m_clCtx, &m_clErreur, 8));
    EXPECT_TRUE(m_clErreur.bEstPropre()) << m_clErreur.pszGetUserMessage();
    EXPECT_EQ(m_clLogin.m_tabURL.size(), 1u);
    EXPECT_EQ(Acces(Cnx())[SERVICEGOOGLE_DOCUMENTS], L"ya29.dialogue");
}
INSTANTIATE_TEST_SUITE_P(GglConnexion, RefreshRate, testing::ValuesIn(gtabRefreshRate),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// ---- service calls

TEST_F(ConnexionGoogleHote, SansJetonLeServiceSeConnecteDAbord) {
    PoseRefresh(SERVICEGOOGLE_PICASA, L"1//p");
    Repond(Reponse(200, "{\"access_token\":\"ya29.p\"}"));
    Repond(Reponse(200, "<feed/>"));
    const CXYString<char> s = Cnx().GglRequete(
        &m_clCtx, &m_clErreur, 16, L"https://picasaweb.google.com/data/feed/api/user/default", 1);
    EXPECT_EQ(s.sv(), "<feed/>");
    ASSERT_EQ(Vues().size(), 2u);
    VerifieRequeteJeton(Vues()[0], "refresh_token=1//p&client_id=id-client&client_secret=secret&"
                                   "grant_type=refresh_token");
    EXPECT_EQ(Vues()[1].sEntete(L"Authorization"), L"Bearer ya29.p");
    EXPECT_EQ(Vues()[1].sType, L"application/atom+xml");
}

TEST_F(ConnexionGoogleHote, UnLoginRateSansCauseDonne600001) {
    // The service logs in through the dialogue, which the user refuses.
    m_clLogin.m_sReponse = Retour(L"/?error=access_denied");
    EXPECT_TRUE(Cnx()
                    .GglRequete(&m_clCtx, &m_clErreur, 2,
                                L"https://www.google.com/m8/feeds/"
                                L"contacts/default/full",
                                1)
                    .bVide());
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600001u);
    EXPECT_EQ(std::wstring(m_clErreur.pszGetUserMessage()), Message(5865, L"access_denied"));
    EXPECT_TRUE(Vues().empty());
}

// ---- the script functions, through their rows of the function table

const STKLFonction& stFonction(unsigned nNumero) {
    return __gstTabFonction_60[nNumero - 1];
}

struct STCasSyntaxe {
    const char* pszNom;
    unsigned k;
    int nBit;
    const wchar_t* pszCorps; // syntaxes 2 and 3
    int nMethode;            // syntaxes 1 and 3
    // expected
    int nMethodeVue;
    const char* pszCorpsVu;
    const wchar_t* pszTypeVu;
};
const STCasSyntaxe gtabSyntaxe[] = {
    {"S0AgendaGet", 0, 1, nullptr, 0, 1, "", L"application/json"},
    {"S1ContactsPost", 1, 2, nullptr, 2, 2, "", L"application/atom+xml"},
    {"S2DocumentsGetSansCorps", 2, 8, L"{\"ignore\":1}", 0, 1, "", L"application/json"},
    {"S3AgendaPut", 3, 1, L"{\"summary\":\"réunion\"}", 4, 3, "{\"summary\":\"r\xC3\xA9union\"}",
     L"application/json"},
    {"S3PicasaPostCorpsNul", 3, 16, nullptr, 2, 2, "", L"application/atom+xml"},
    {"S3CartesDelete", 3, 4, L"x", 8, 4, "", L"application/atom+xml"},
};
class SyntaxesGglRequete : public ConnexionGoogleHote,
                           public testing::WithParamInterface<STCasSyntaxe> {};
TEST_P(SyntaxesGglRequete, ParLaTableDesFonctions) {
    const STCasSyntaxe& st = GetParam();
    for (COAuthToken& stJeton : Cnx().tabGetToken())
        stJeton.m_sAccessToken = L"ya29.t";
    // Function 5 and its second registration, 75, serve the same syntaxes.
    for (unsigned nNumero : {5u, 75u}) {
        SCOPED_TRACE(nNumero);
        m_clLibShop.m_clHTTP.m_tabVues.clear();
        m_clVM.m_tabRetour.clear();
        Repond(Reponse(200, "réponse"));
        const STKLSyntaxe& stSyntaxe = stFonction(nNumero).pstSyntaxe[st.k];
        ASSERT_NE(stSyntaxe.pfnMethode, nullptr);

        int nBit = st.nBit;
        const wchar_t* pszURL = L"https://h/chemin?x=1";
        const wchar_t* pszCorps = st.pszCorps;
        int nMethode = st.nMethode;
        std::vector<unsigned char*> tabArguments = {reinterpret_cast<unsigned char*>(&nBit),
                                                    reinterpret_cast<unsigned char*>(&pszURL)};
        if (st.k >= 2)
            tabArguments.push_back(reinterpret_cast<unsigned char*>(&pszCorps));
        if (st.k == 1 || st.k == 3)
            tabArguments.push_back(reinterpret_cast<unsigned char*>(&nMethode));
        ASSERT_EQ(stSyntaxe.nGetNbParametre(), tabArguments.size() + 1);
        stSyntaxe.pfnMethode(m_clConnexion.pGet(), tabArguments.data(), &m_clCtx, &m_clErreur);

        EXPECT_TRUE(m_clErreur.bEstPropre()) << m_clErreur.pszGetUserMessage();
        ASSERT_EQ(Vues().size(), 1u);
        EXPECT_EQ(Vues()[0].nMethode, st.nMethodeVue);
        EXPECT_EQ(Vues()[0].sURL, L"https://h/chemin?x=1");
        EXPECT_EQ(Vues()[0].sCorps, st.pszCorpsVu);
        EXPECT_EQ(Vues()[0].sType, st.pszTypeVu);
        EXPECT_EQ(Vues()[0].sEntete(L"Authorization"), L"Bearer ya29.t");
        ASSERT_EQ(m_clVM.m_tabRetour.size(), 1u);
        EXPECT_EQ(m_clVM.m_tabRetour[0].nType, 19);
        EXPECT_EQ(m_clVM.m_tabRetour[0].sOctets, "r\xC3\xA9ponse") << "the bytes as they came";
    }
}
INSTANTIATE_TEST_SUITE_P(GglRequete, SyntaxesGglRequete, testing::ValuesIn(gtabSyntaxe),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// Which pairs each logout empties, from a connection whose every pair is full.
struct STCasDeconnexion {
    const char* pszNom;
    int nSyntaxe; // -1: bLogoutMultiple, else the GglDeconnecte stub
    int nBits;
    TJetons tabAttendu;
};
const STCasDeconnexion gtabDeconnexion[] = {
    {"ToutSansArgument", 0, 0, {L"", L"", L"", L"", L"", L""}},
    {"ScriptAvecCartes", 1, 4, {L"t", L"t", L"t", L"t", L"", L"t"}},
    {"ScriptPlusieurs", 1, 1 | 8 | 16, {L"t", L"", L"t", L"", L"t", L""}},
    {"ScriptTous", 1, 31, {L"t", L"", L"", L"", L"", L""}},
    {"MultipleGardeLesCartes", -1, 4, {L"t", L"t", L"t", L"t", L"t", L"t"}},
    {"MultipleTous", -1, 31, {L"t", L"", L"", L"", L"t", L""}},
};
class Deconnexion : public ConnexionGoogleHote,
                    public testing::WithParamInterface<STCasDeconnexion> {};
TEST_P(Deconnexion, VideLesBonnesPaires) {
    const STCasDeconnexion& st = GetParam();
    for (COAuthToken& stJeton : Cnx().tabGetToken()) {
        stJeton.m_sAccessToken = L"t";
        stJeton.m_sRefreshToken = L"t";
    }
    if (st.nSyntaxe < 0) {
        EXPECT_TRUE(Cnx().bLogoutMultiple(st.nBits, &m_clVM, &m_clErreur));
    } else {
        int nBits = st.nBits;
        unsigned char* tabArguments[] = {reinterpret_cast<unsigned char*>(&nBits)};
        const STKLSyntaxe& stSyntaxe = stFonction(96).pstSyntaxe[st.nSyntaxe];
        stSyntaxe.pfnMethode(m_clConnexion.pGet(), tabArguments, &m_clCtx, &m_clErreur);
        EXPECT_TRUE(m_clVM.m_tabRetour.empty()) << "no signature, no result";
    }
    EXPECT_EQ(Acces(Cnx()), st.tabAttendu);
    EXPECT_EQ(Refresh(Cnx()), st.tabAttendu);
    EXPECT_TRUE(m_clErreur.bEstPropre());
}
INSTANTIATE_TEST_SUITE_P(GglDeconnecte, Deconnexion, testing::ValuesIn(gtabDeconnexion),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// ---- the login operations the other connectors use

TEST_F(ConnexionGoogleHote, VbLoginVeutUnSeulNumeroDeService) {
    EXPECT_FALSE(Cnx().vbLogin(&m_clVM, CKLANYArray(), &m_clErreur));
    CKLANYArray tab;
    CAny cl;
    cl.SetInt(1);
    tab.bAjoute(cl);
    tab.bAjoute(cl);
    EXPECT_FALSE(Cnx().vbLogin(&m_clVM, tab, &m_clErreur));
    EXPECT_FALSE(Cnx().vbLogout(&m_clVM, tab, &m_clErreur));
    EXPECT_TRUE(m_clLogin.m_tabURL.empty());
    EXPECT_TRUE(m_clErreur.bEstPropre());

    // A number outside 1 to 5 names no service: the dialogue asks for nothing.
    Approuve();
    CKLANYArray tabSeul;
    cl.SetInt(9);
    tabSeul.bAjoute(cl);
    EXPECT_TRUE(Cnx().vbLogin(&m_clVM, tabSeul, &m_clErreur));
    ASSERT_EQ(m_clLogin.m_tabURL.size(), 1u);
    EXPECT_NE(m_clLogin.m_tabURL[0].find(L"&scope=&"), std::wstring::npos);
}

TEST_F(ConnexionGoogleHote, VbLoginPrendLeNumeroDuServicePasSonBit) {
    PoseRefresh(SERVICEGOOGLE_DOCUMENTS, L"1//d");
    Repond(Reponse(200, "{\"access_token\":\"ya29.d\"}"));
    CKLANYArray tab;
    CAny cl;
    cl.SetInt(SERVICEGOOGLE_DOCUMENTS);
    tab.bAjoute(cl);
    EXPECT_TRUE(Cnx().vbLogin(&m_clVM, tab, &m_clErreur));
    EXPECT_EQ(Acces(Cnx())[SERVICEGOOGLE_DOCUMENTS], L"ya29.d");
}

TEST_F(ConnexionGoogleHote, UnJetonPresentSuffitQuelQueSoitSonAge) {
    PoseAcces(SERVICEGOOGLE_STATICMAPS, L"vieux");
    EXPECT_TRUE(Cnx().__bCheckAndLogService(SERVICEGOOGLE_STATICMAPS, &m_clVM, &m_clErreur));
    EXPECT_TRUE(Vues().empty());
    EXPECT_TRUE(m_clLogin.m_tabURL.empty());
}

TEST_F(ConnexionGoogleHote, SetTokensConnexionSuitLesBits) {
    STOAuth2TokenBase st;
    st.m_sAccessToken = L"a";
    st.m_sRefreshToken = L"r";
    Cnx().SetTokensConnexion(st, 4 | 16);
    EXPECT_EQ(Acces(Cnx()), (TJetons{L"", L"", L"", L"", L"a", L"a"}));
    EXPECT_EQ(Refresh(Cnx()), (TJetons{L"", L"", L"", L"", L"r", L"r"}));
}

TEST_F(ConnexionGoogleHote, VbGetAccessTokenDonneLeJetonDuServiceDeLaRequete) {
    PoseAcces(SERVICEGOOGLE_CONTACT, L"ya29.c");
    CXYString<wchar_t> s(L"avant");
    CHTTPRequete clContacts(SERVICEGOOGLE_CONTACT, L"https://h/", HTTPCT_ATOM);
    EXPECT_TRUE(Cnx().vbGetAccessToken(clContacts, s));
    EXPECT_EQ(s.sv(), L"ya29.c");
    CHTTPRequete clAgenda(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
    EXPECT_TRUE(Cnx().vbGetAccessToken(clAgenda, s)) << "true even without a token";
    EXPECT_TRUE(s.bVide());
}

// ---- the answer parsers

TEST_F(ConnexionGoogleHote, LAnalyseJSONVeutLeStatutAttendu) {
    CHTTPResponse clReponse;
    CAny clEntete;
    clEntete.__nSetString(L"HTTP/1.1 404 Not Found\r\n\r\n");
    clReponse.SetEntete(clEntete);
    CAny clCorps;
    clCorps.SetBinary("{\"a\":1}", 7);
    clReponse.SetMessage(clCorps);
    EXPECT_FALSE(CGoogleConnexion::s_piParseJSONResponse(clReponse, &m_clErreur, HTTPOK));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600005u);
    EXPECT_NE(std::wstring(m_clErreur.pszGetUserMessage()).find(L"HTTPNotFound"),
              std::wstring::npos);
    EXPECT_TRUE(m_clLibShop.m_clJSON.m_tabRecu.empty()) << "not parsed";

    m_clErreur.RAZ();
    auto clRacine = CGoogleConnexion::s_piParseJSONResponse(clReponse, &m_clErreur, HTTPNotFound);
    EXPECT_TRUE(clRacine);
    EXPECT_TRUE(m_clErreur.bEstPropre());
}

TEST_F(ConnexionGoogleHote, SansServiceJSONLAnalyseDonne600003) {
    CInformationDLL::ms_piLibShop = nullptr;
    CHTTPResponse clReponse;
    CAny clEntete;
    clEntete.__nSetString(L"HTTP/1.1 200 OK\r\n\r\n");
    clReponse.SetEntete(clEntete);
    EXPECT_FALSE(CGoogleConnexion::s_piParseJSONResponse(clReponse, &m_clErreur, HTTPOK));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600003u);
}

TEST_F(ConnexionGoogleHote, LAnalyseXMLVeutLeStatutAttenduPuisUnDocument) {
    CHTTPResponse clReponse;
    CAny clEntete;
    clEntete.__nSetString(L"HTTP/1.1 403 Forbidden\r\n\r\n");
    clReponse.SetEntete(clEntete);
    CAny clCorps;
    clCorps.SetBinary("<feed/>", 7);
    clReponse.SetMessage(clCorps);
    EXPECT_FALSE(CGoogleConnexion::s_piParseXMLResponse(clReponse, &m_clErreur, HTTPOK));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600005u);
    EXPECT_NE(std::wstring(m_clErreur.pszGetUserMessage()).find(L"HTTPForbidden"),
              std::wstring::npos);

    // The expected status passes and the host's service makes the document.
    m_clErreur.RAZ();
    auto clDoc = CGoogleConnexion::s_piParseXMLResponse(clReponse, &m_clErreur, HTTPForbidden);
    EXPECT_TRUE(clDoc);
    EXPECT_TRUE(m_clErreur.bEstPropre());
}

// ---- texts

struct STCasScopes {
    int nBits;
    std::wstring sAttendu;
};
TEST(ScopesGoogle, DansLOrdreDesBits) {
    auto cl = CRef<CGoogleConnexion>::Retain(CGoogleConnexion::s_pclCreeObjet(nullptr, nullptr));
    const STCasScopes tabCas[] = {
        {0, L""},
        {4, L""},
        {1, kszScopeAgenda},
        {8, kszScopeDocuments},
        {16 | 1, std::wstring(kszScopeAgenda) + L"%20" + kszScopePicasa},
        {2 | 4 | 8, std::wstring(kszScopeContacts) + L"%20" + kszScopeDocuments},
        {64, L""},
    };
    for (const STCasScopes& st : tabCas)
        EXPECT_EQ(cl->czGetScopes(st.nBits).sv(), st.sAttendu) << st.nBits;
}

TEST(ServicesGoogle, BitsEtServices) {
    for (int i = 0; i <= 6; ++i) {
        const auto e = static_cast<eSERVICESGOOGLE>(i);
        const int nBit = CGoogleConnexion::__nGetServiceKL(e);
        if (i >= 1 && i <= 5)
            EXPECT_EQ(CGoogleConnexion::__eGetServiceFromKL(nBit), e) << i;
        else
            EXPECT_EQ(nBit, 0) << i;
    }
    EXPECT_EQ(CGoogleConnexion::__nGetServiceKL(SERVICEGOOGLE_STATICMAPS), 4);
    EXPECT_EQ(CGoogleConnexion::__nGetServiceKL(SERVICEGOOGLE_DOCUMENTS), 8);
    for (int n : {0, 3, 5, 7, 12, 17, 32, -4})
        EXPECT_EQ(CGoogleConnexion::__eGetServiceFromKL(n), SERVICEGOOGLE_AUCUN) << n;
}

struct STCasEchappe {
    const wchar_t* pszTexte;
    const wchar_t* pszAttendu;
};
const STCasEchappe gtabEchappe[] = {
    {L"simple", L"simple"},
    {L"a\\b", L"a\\\\b"},
    {L"\"cité\"", L"\\\"cité\\\""},
    {L"l1\r\nl2\tfin", L"l1\\r\\nl2\\tfin"},
    {L"\\n", L"\\\\n"}, // a backslash and an n stay two characters
    {L"\x04\x1B\xA0", L"\\u0004\\u001B\\u00A0"},
    {L"\x01\x1F", L"\x01\x1F"}, // other control characters pass
    {L"", L""},
};
TEST(EchappementJSON, HuitPasses) {
    for (const STCasEchappe& st : gtabEchappe)
        EXPECT_EQ(CGoogleConnexion::s_czEscapeJSON(CXYString<wchar_t>(st.pszTexte)).sv(),
                  st.pszAttendu)
            << KVUtf8::VersUtf8(st.pszTexte);
}

} // namespace
