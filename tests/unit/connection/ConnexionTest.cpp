// The road of one authorised call, against a host HTTP service that records the exact request
// records it is handed: the record per verb, the bearer on every request, the redirect roads
// the wire tests do not take, the statuses that pass, and each way the road stops early.
#include "HoteEssai.h"

#include "connection/ConnexionOAuthBase.h"
#include "foundation/SimpleBuffer.h"
#include "frame/InformationDLL.h"

#include "Resources.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>


namespace {

const wchar_t kszFormulaire[] = L"application/x-www-form-urlencoded";
const wchar_t kszJSON[] = L"application/json";

// A connection whose token is a plain field; it counts the token requests.
class CConnexionEssai final : public CConnexionOAuthBase {
public:
    int vbLogin(IVM*, const CKLANYArray&, CXError*) override { return 0; }
    int vbLogout(IVM*, const CKLANYArray&, CXError*) override { return 0; }
    int vbGetAccessToken(CHTTPRequete& clRequete, CXYString<wchar_t>& sToken) override {
        m_tabServices.push_back(clRequete.eGetService());
        sToken = CXYString<wchar_t>(m_sToken.c_str());
        return !m_sToken.empty();
    }
    std::wstring m_sToken = L"ya29.jeton";
    std::vector<int> m_tabServices;
};

class RouteOAuth : public testing::Test {
protected:
    void SetUp() override { CInformationDLL::ms_piLibShop = &m_clLibShop; }
    void TearDown() override { CInformationDLL::ms_piLibShop = nullptr; }

    CHTTPEssai& Hote() { return m_clLibShop.m_clHTTP; }
    const std::vector<STRequeteVue>& Vues() { return Hote().m_tabVues; }
    void Repond(STReponse st) { Hote().m_tabReponses.push_back(std::move(st)); }

    CLibShopEssai m_clLibShop;
    CVMEnregistreur m_clVM;
    CXError m_clErreur{&gstMyModuleInfo60};
};

// Every record starts from the same values, whatever the verb.
void VerifieValeursFixes(const STRequeteVue& st, IVM* piVM) {
    EXPECT_EQ(st.nVersion, 2);
    EXPECT_EQ(st.nOption, 16);
    EXPECT_EQ(st.piVM, piVM) << "the exchange is tied to the calling VM";
}

// ---- the record handed to the host, per verb

struct STCasRecord {
    const char* pszNom;
    int nMethode;
    eHTTPCONTENTTYPE eType;
    const wchar_t* pszTypeForce; // replaces the type's text when not null
    const wchar_t* pszURL;
    bool bParametres; // adds a=1 and q=x y&z
    const char* pszDonnees;
    // expected
    const wchar_t* pszURLVue;
    const char* pszCorpsVu;
    const wchar_t* pszTypeVu;
};

const STCasRecord gtabRecords[] = {
    {"GetAvecParametres", 1, HTTPCT_FORMULAIRE, nullptr, L"https://www.googleapis.com/c", true,
     "", L"https://www.googleapis.com/c?a=1&q=x%20y%26z", "", kszFormulaire},
    {"GetApresPointDInterrogation", 1, HTTPCT_JSON, nullptr, L"https://h/c?alt=json", true, "",
     L"https://h/c?alt=json&a=1&q=x%20y%26z", "", kszJSON},
    {"GetSansParametre", 1, HTTPCT_ATOM, nullptr, L"https://h/c?alt=json", false, "",
     L"https://h/c?alt=json", "", L"application/atom+xml"},
    {"GetSansTypePrendLeFormulaire", 1, HTTPCT_JSON, L"", L"https://h/c", false, "",
     L"https://h/c", "", kszFormulaire},
    {"DeleteSansCorps", 4, HTTPCT_JSON, nullptr, L"https://h/e/1", true, "{\"x\":1}",
     L"https://h/e/1?a=1&q=x%20y%26z", "", kszJSON},
    {"PostFormulaireDansLeCorps", 2, HTTPCT_FORMULAIRE, nullptr, L"https://h/token", true,
     "ignored", L"https://h/token", "a=1&q=x%20y%26z", kszFormulaire},
    {"PostFormulaireSansEgardALaCasse", 2, HTTPCT_FORMULAIRE,
     L"Application/X-WWW-Form-URLEncoded", L"https://h/token", true, "", L"https://h/token",
     "a=1&q=x%20y%26z", L"Application/X-WWW-Form-URLEncoded"},
    {"PostJSON", 2, HTTPCT_JSON, nullptr, L"https://h/c", true, "{\"summary\":\"\xC3\xA9\"}",
     L"https://h/c?a=1&q=x%20y%26z", "{\"summary\":\"\xC3\xA9\"}", kszJSON},
    {"PostSansTypeEnvoieLesDonnees", 2, HTTPCT_JSON, L"", L"https://h/c", true, "raw",
     L"https://h/c?a=1&q=x%20y%26z", "raw", kszFormulaire},
    {"PutJSONParametresDansLURL", 3, HTTPCT_JSON, nullptr, L"https://h/e/1", true, "{}",
     L"https://h/e/1?a=1&q=x%20y%26z", "{}", kszJSON},
    {"PutAtomSansDonnees", 3, HTTPCT_ATOM, nullptr, L"https://h/e/1", false, "",
     L"https://h/e/1", "", L"application/atom+xml"},
    {"Patch", 6, HTTPCT_JSON, nullptr, L"https://h/e/1", false, "{\"a\":2}", L"https://h/e/1",
     "{\"a\":2}", kszJSON},
};

void PrintTo(const STCasRecord& cas, std::ostream* os) { *os << cas.pszNom; }

class Record : public RouteOAuth, public testing::WithParamInterface<STCasRecord> {};

TEST_P(Record, ExactementCeQueLHoteRecoit) {
    const STCasRecord& cas = GetParam();
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, cas.pszURL, cas.eType);
    if (cas.pszTypeForce)
        clRequete.SetContentType(cas.pszTypeForce);
    if (cas.bParametres) {
        clRequete.AjouteParametre(L"a", L"1");
        clRequete.AjouteParametre(L"q", L"x y&z");
    }
    std::string sDonnees = cas.pszDonnees;
    if (!sDonnees.empty())
        clRequete.AjouteDonnees(reinterpret_cast<unsigned char*>(sDonnees.data()),
                                sDonnees.size());
    clRequete.AjouteHeader(L"GData-Version", L"3.0");
    clRequete.AjouteHeader(L"If-Match", L"*");

    CConnexionEssai cl;
    Repond(Reponse(200, "{}"));
    CSimpleBuffer clSortie;
    ASSERT_TRUE(cl.vbRequete(&m_clVM, clRequete, static_cast<HTTPMethod>(cas.nMethode),
                             &clSortie, &m_clErreur))
        << m_clErreur.pszGetUserMessage();
    EXPECT_EQ(clSortie.sv(), "{}");

    ASSERT_EQ(Vues().size(), 1u);
    const STRequeteVue& st = Vues()[0];
    VerifieValeursFixes(st, &m_clVM);
    EXPECT_EQ(st.nMethode, cas.nMethode);
    EXPECT_EQ(st.sURL, cas.pszURLVue);
    EXPECT_EQ(st.sCorps, cas.pszCorpsVu);
    EXPECT_EQ(st.sType, cas.pszTypeVu);
    EXPECT_EQ(st.tabEntetes, (Entetes{{L"GData-Version", L"3.0"},
                                      {L"If-Match", L"*"},
                                      {L"Authorization", L"Bearer ya29.jeton"}}))
        << "the request's headers in order, the bearer last";
    EXPECT_EQ(cl.m_tabServices, std::vector<int>{SERVICEGOOGLE_AGENDA})
        << "the token of the request's service";
    EXPECT_EQ(Hote().m_nEntetesCrees, 1);
}

INSTANTIATE_TEST_SUITE_P(RouteOAuth, Record, testing::ValuesIn(gtabRecords),
                         [](const auto& info) { return std::string(info.param.pszNom); });

TEST_F(RouteOAuth, UnJetonVideDonneLeBearerNu) {
    CConnexionEssai cl;
    cl.m_sToken.clear();
    for (int nMethode : {1, 2}) {
        CHTTPRequete clRequete(SERVICEGOOGLE_CONTACT, L"https://h/m8/feeds/", HTTPCT_ATOM);
        Repond(Reponse(200));
        EXPECT_TRUE(cl.vbRequete(&m_clVM, clRequete, static_cast<HTTPMethod>(nMethode), nullptr,
                                 &m_clErreur));
    }
    ASSERT_EQ(Vues().size(), 2u);
    for (const STRequeteVue& st : Vues())
        EXPECT_EQ(st.tabEntetes, (Entetes{{L"Authorization", L"Bearer "}}));
}

TEST_F(RouteOAuth, LesNonVerbesNEnvoientRien) {
    CConnexionEssai cl;
    for (int nMethode : {0, 5, 7, 100, -1}) {
        CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
        const CHTTPResponse clReponse = cl.clExecuteRequeteCOM(
            &m_clVM, clRequete, static_cast<HTTPMethod>(nMethode), &m_clErreur);
        EXPECT_EQ(clReponse.eGetCodeRetour(), -1) << "method " << nMethode;
        EXPECT_TRUE(m_clErreur.bEstPropre()) << "and no error set";
    }
    EXPECT_TRUE(Vues().empty());
    EXPECT_EQ(m_clLibShop.nNbDemandes(gszServiceHTTP), 0) << "the service is not even asked for";

    // Through the full call the empty answer is an invalid status.
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
    EXPECT_FALSE(cl.vbRequete(&m_clVM, clRequete, static_cast<HTTPMethod>(5), nullptr,
                              &m_clErreur));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600005u);
    EXPECT_NE(std::wstring(m_clErreur.pszGetUserMessage()).find(L"Code HTTP Invalide"),
              std::wstring::npos);
}

// ---- redirects

struct STCasRedirection {
    const char* pszNom;
    int nMethode;
    eHTTPCONTENTTYPE eType;
    int nStatut;
    const wchar_t* pszLocation; // null: no Location line
    // the second request, when there is one
    bool bSuivie;
    int nMethodeSuite;
    const wchar_t* pszURLSuite;
    const char* pszCorpsSuite;
    const wchar_t* pszTypeSuite;
    bool bEntetesGardes;
};

const STCasRedirection gtabRedirections[] = {
    // No body: a GET of the new address, parameters and headers dropped, type kept. The
    // common cases (301 and 302 on each verb, 303 and 307) are proven on the wire.
    {"Get301SansLocation", 1, HTTPCT_JSON, 301, nullptr, true, 1, L"", "", kszJSON, false},
    {"Get308NonSuivie", 1, HTTPCT_JSON, 308, L"https://h/n", false, 0, nullptr, nullptr, nullptr,
     false},
    // With a body: the whole request again by POST, its parameters appended once more.
    {"Post302", 2, HTTPCT_JSON, 302, L"https://h/n?k=v", true, 2,
     L"https://h/n?k=v&a=1&q=x%20y%26z", "{\"b\":1}", kszJSON, true},
    {"Patch302DevientPost", 6, HTTPCT_JSON, 302, L"https://h/n", true, 2,
     L"https://h/n?a=1&q=x%20y%26z", "{\"b\":1}", kszJSON, true},
    {"PostFormulaire302", 2, HTTPCT_FORMULAIRE, 302, L"https://h/n", true, 2, L"https://h/n",
     "a=1&q=x%20y%26z", kszFormulaire, true},
    {"Post301SansLocation", 2, HTTPCT_JSON, 301, nullptr, true, 2, L"?a=1&q=x%20y%26z",
     "{\"b\":1}", kszJSON, true},
    {"Post303NonSuivie", 2, HTTPCT_JSON, 303, L"https://h/n", false, 0, nullptr, nullptr,
     nullptr, false},
};

void PrintTo(const STCasRedirection& cas, std::ostream* os) { *os << cas.pszNom; }

class Redirection : public RouteOAuth, public testing::WithParamInterface<STCasRedirection> {};

TEST_P(Redirection, SelonLaRoute) {
    const STCasRedirection& cas = GetParam();
    CHTTPRequete clRequete(SERVICEGOOGLE_DOCUMENTS, L"https://h/depart", cas.eType);
    clRequete.AjouteParametre(L"a", L"1");
    clRequete.AjouteParametre(L"q", L"x y&z");
    clRequete.AjouteHeader(L"X-Suivi", L"1");
    std::string sDonnees = "{\"b\":1}";
    clRequete.AjouteDonnees(reinterpret_cast<unsigned char*>(sDonnees.data()), sDonnees.size());

    std::wstring sLocation;
    if (cas.pszLocation)
        sLocation = std::wstring(L"Location: ") + cas.pszLocation + L"\r\n";
    Repond(Reponse(cas.nStatut, "moved", sLocation));
    Repond(Reponse(200, "fin"));

    CConnexionEssai cl;
    const CHTTPResponse clReponse = cl.clExecuteRequeteCOM(
        &m_clVM, clRequete, static_cast<HTTPMethod>(cas.nMethode), &m_clErreur);
    EXPECT_TRUE(m_clErreur.bEstPropre());
    CKLBIN clCorps;
    clReponse.bGetMessage(clCorps);

    if (!cas.bSuivie) {
        ASSERT_EQ(Vues().size(), 1u);
        EXPECT_EQ(clReponse.eGetCodeRetour(), cas.nStatut) << "returned as it came";
        EXPECT_EQ(clCorps.sv(), "moved");
        return;
    }
    ASSERT_EQ(Vues().size(), 2u);
    EXPECT_EQ(clReponse.eGetCodeRetour(), 200) << "the second answer replaces the first";
    EXPECT_EQ(clCorps.sv(), "fin");
    const STRequeteVue& st = Vues()[1];
    VerifieValeursFixes(st, &m_clVM);
    EXPECT_EQ(st.nMethode, cas.nMethodeSuite);
    EXPECT_EQ(st.sURL, cas.pszURLSuite);
    EXPECT_EQ(st.sCorps, cas.pszCorpsSuite);
    EXPECT_EQ(st.sType, cas.pszTypeSuite);
    const Entetes tabAttendus =
        cas.bEntetesGardes
            ? Entetes{{L"X-Suivi", L"1"}, {L"Authorization", L"Bearer ya29.jeton"}}
            : Entetes{{L"Authorization", L"Bearer ya29.jeton"}};
    EXPECT_EQ(st.tabEntetes, tabAttendus) << "the bearer goes out again";
    EXPECT_EQ(cl.m_tabServices,
              (std::vector<int>{SERVICEGOOGLE_DOCUMENTS, SERVICEGOOGLE_DOCUMENTS}))
        << "the new request keeps the service";
}

INSTANTIATE_TEST_SUITE_P(RouteOAuth, Redirection, testing::ValuesIn(gtabRedirections),
                         [](const auto& info) { return std::string(info.param.pszNom); });

TEST_F(RouteOAuth, UneChaineDeRedirectionsEstSuivieJusquAuBout) {
    Repond(Reponse(302, "", L"Location: https://h/1\r\n"));
    Repond(Reponse(301, "", L"Location: https://h/2\r\n"));
    Repond(Reponse(201, "cree"));
    CConnexionEssai cl;
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/0", HTTPCT_JSON);
    CSimpleBuffer clSortie;
    EXPECT_TRUE(cl.vbRequete(&m_clVM, clRequete, HTTPGET, &clSortie, &m_clErreur));
    EXPECT_EQ(clSortie.sv(), "cree");
    ASSERT_EQ(Vues().size(), 3u);
    EXPECT_EQ(Vues()[2].sURL, L"https://h/2");
}

// ---- statuses and 600005

TEST_F(RouteOAuth, Seuls200Et201Passent) {
    CConnexionEssai cl;
    for (int nStatut : {200, 201, 202, 204, 206, 304, 400, 404, 500}) {
        CXError clErreur(&gstMyModuleInfo60);
        CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
        Repond(Reponse(nStatut, "corps"));
        CSimpleBuffer clSortie;
        clSortie.bAffecte("avant", 5);
        const bool bPasse = nStatut == 200 || nStatut == 201;
        EXPECT_EQ(cl.vbRequete(&m_clVM, clRequete, HTTPGET, &clSortie, &clErreur) != 0, bPasse)
            << nStatut;
        EXPECT_EQ(clSortie.sv(), bPasse ? "corps" : "avant") << "untouched on failure";
        EXPECT_EQ(clErreur.nGetUserErrorCode(), bPasse ? 0u : 600005u) << nStatut;
        EXPECT_EQ(clErreur.bEstPropre(), bPasse);
    }
}

TEST_F(RouteOAuth, UnEchecDeTransportRendLaCauseDeLHote) {
    STReponse st = Reponse(200, "x");
    st.bTransport = false;
    Repond(st);
    CConnexionEssai cl;
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
    CSimpleBuffer clSortie;
    EXPECT_FALSE(cl.vbRequete(&m_clVM, clRequete, HTTPPOST, &clSortie, &m_clErreur));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), CHTTPEssai::knErreurTransport);
    EXPECT_EQ(clSortie.nGetTaille(), 0u);

    // The raw road gives an empty response with the same cause.
    CXError clErreur(&gstMyModuleInfo60);
    Repond(st);
    const CHTTPResponse clReponse = cl.clExecuteRequeteCOM(&m_clVM, clRequete, HTTPGET, &clErreur);
    EXPECT_EQ(clReponse.eGetCodeRetour(), -1);
    EXPECT_EQ(clErreur.nGetUserErrorCode(), CHTTPEssai::knErreurTransport);
}

TEST_F(RouteOAuth, UneReponseIlliblePorteLaCauseDeLHote) {
    Repond(Reponse(200, "x"));
    Hote().m_bDonneResultatEchoue = true;
    CConnexionEssai cl;
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
    EXPECT_FALSE(cl.vbRequete(&m_clVM, clRequete, HTTPGET, nullptr, &m_clErreur));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), CHTTPEssai::knErreurTransport);
}

TEST_F(RouteOAuth, LaRouteBruteRendToutStatut) {
    Repond(Reponse(204, "", L"ETag: \"e1\"\r\n"));
    CConnexionEssai cl;
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/e", HTTPCT_JSON);
    const CHTTPResponse clReponse = cl.clExecuteRequeteCOM(&m_clVM, clRequete, HTTPDELETE,
                                                           &m_clErreur);
    EXPECT_TRUE(m_clErreur.bEstPropre());
    EXPECT_EQ(clReponse.eGetCodeRetour(), 204);
    CXYString<wchar_t> sETag;
    EXPECT_TRUE(clReponse.bExtraitEntete(L"ETag", sETag));
    EXPECT_EQ(sETag, L"\"e1\"");
}

// ---- the service and the arguments

TEST_F(RouteOAuth, LeServiceEstDemandeUneFoisEtRenduALaFin) {
    {
        CConnexionEssai cl;
        for (int i = 0; i < 3; ++i) {
            CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
            Repond(Reponse(200));
            EXPECT_TRUE(cl.vbRequete(&m_clVM, clRequete, HTTPGET, nullptr, &m_clErreur));
        }
        EXPECT_EQ(m_clLibShop.nNbDemandes(gszServiceHTTP), 1);
        EXPECT_EQ(Hote().m_nRef, 1);
        EXPECT_EQ(cl.piGetCOM(&m_clErreur), &Hote());
    }
    EXPECT_EQ(Hote().m_nRef, 0) << "given back when the connection ends";
}

TEST_F(RouteOAuth, SansServiceHTTPRienNePart) {
    m_clLibShop.m_bSansHTTP = true;
    CConnexionEssai cl;
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
    EXPECT_FALSE(cl.vbRequete(&m_clVM, clRequete, HTTPPOST, nullptr, &m_clErreur));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600033u);
    EXPECT_TRUE(Vues().empty());
}

TEST_F(RouteOAuth, SansVMNiErreurRienNePart) {
    CConnexionEssai cl;
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
    Repond(Reponse(200));
    for (int nMethode : {1, 2, 3, 4, 6}) {
        EXPECT_EQ(cl.clExecuteRequeteCOM(nullptr, clRequete, static_cast<HTTPMethod>(nMethode),
                                         &m_clErreur)
                      .eGetCodeRetour(),
                  -1);
        EXPECT_EQ(cl.clExecuteRequeteCOM(&m_clVM, clRequete, static_cast<HTTPMethod>(nMethode),
                                         nullptr)
                      .eGetCodeRetour(),
                  -1);
    }
    EXPECT_FALSE(cl.vbRequete(&m_clVM, clRequete, HTTPGET, nullptr, nullptr));
    EXPECT_TRUE(Vues().empty());
    EXPECT_EQ(cl._clGetHTTPResponse(nullptr, &m_clErreur).eGetCodeRetour(), -1);
}

TEST_F(RouteOAuth, UneErreurDejaPresenteArreteTout) {
    m_clErreur.SetUserError(&gstMyModuleInfo60, 600001, L"avant");
    CConnexionEssai cl;
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_JSON);
    Repond(Reponse(200));
    EXPECT_FALSE(cl.vbRequete(&m_clVM, clRequete, HTTPGET, nullptr, &m_clErreur));
    EXPECT_TRUE(Vues().empty());
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600001u) << "the earlier cause is kept";
}

TEST_F(RouteOAuth, UnEncodeurEnEchecNEnvoiePasUneRequeteAMoitieFaite) {
    m_clVM.m_bEchoue = true;
    CConnexionEssai cl;
    for (int nMethode : {1, 2}) {
        CXError clErreur(&gstMyModuleInfo60);
        CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://h/", HTTPCT_FORMULAIRE);
        clRequete.AjouteParametre(L"a", L"1");
        Repond(Reponse(200));
        EXPECT_FALSE(cl.vbRequete(&m_clVM, clRequete, static_cast<HTTPMethod>(nMethode), nullptr,
                                  &clErreur));
        EXPECT_EQ(clErreur.nGetUserErrorCode(), 600003u) << "the encoder's cause";
    }
    EXPECT_TRUE(Vues().empty());
}

TEST_F(RouteOAuth, LaReponseDeLaDerniereEchange) {
    Repond(Reponse(200, "{\"access_token\":\"t\"}"));
    CConnexionEssai cl;
    IHTTP* piHTTP = cl.piGetCOM(&m_clErreur);
    ASSERT_EQ(piHTTP, &Hote());
    CParametresHTTPRequete clParametres;
    ASSERT_TRUE(piHTTP->vbExecute(clParametres, 0));
    const CHTTPResponse clReponse = cl._clGetHTTPResponse(&m_clVM, &m_clErreur);
    EXPECT_EQ(clReponse.eGetCodeRetour(), 200);
    CXYString<wchar_t> sCorps;
    ASSERT_TRUE(clReponse.bGetMessage(sCorps));
    EXPECT_EQ(sCorps, L"{\"access_token\":\"t\"}");
}

// ---- the OAuth texts

TEST(ConnexionOAuth, DonneesDuCompte) {
    CConnexionEssai cl;
    cl.SetClientID(L"id.apps");
    cl.SetClientSecret(L"secret");
    cl.SetEmail(L"a@b.c");
    cl._SetLastError(L"access_denied");
    EXPECT_EQ(cl.vcszGetCleHash(), L"id.apps");

    CConnexionEssai clCopie;
    clCopie.vCopieOAuthData(cl);
    EXPECT_STREQ(clCopie.pszGetClientID(), L"id.apps");
    EXPECT_STREQ(clCopie.pszGetClientSecret(), L"secret");
    EXPECT_STREQ(clCopie.pszGetEmail(), L"a@b.c");
    EXPECT_STREQ(clCopie.pszGetLastError(), L"access_denied");

    cl.vRAZOAuthData();
    EXPECT_STREQ(cl.pszGetClientID(), L"");
    EXPECT_STREQ(cl.pszGetClientSecret(), L"");
    EXPECT_STREQ(cl.pszGetEmail(), L"");
    EXPECT_STREQ(cl.pszGetLastError(), L"");
    EXPECT_STREQ(clCopie.pszGetClientID(), L"id.apps") << "the copy is its own";

    // The store's hooks do nothing in the base.
    CXYString<wchar_t> s;
    EXPECT_FALSE(cl.vbSerialise(s));
    EXPECT_FALSE(cl.vbDeserialise(L"{}"));
    EXPECT_EQ(cl.vpclClone(), nullptr);
    cl._SetLastError(nullptr);
    EXPECT_STREQ(cl.pszGetLastError(), L"");
}

} // namespace
