// The generic OAuth seam and token against a host that records each request: the
// authorisation address built from the script's texts, the state the component sends and
// checks where the host leaves it the state, the choice of road, the refresh grant, and the
// parameters' saved form skipped whole by a reader of another version.
#include "HoteEssai.h"

#include "foundation/KVBuffer.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"
#include "oauth/AuthToken.h"
#include "oauth/InterfGGLOAuth2.h"

#include "Ref.h"

#include <gtest/gtest.h>

#include <string>


namespace {

constexpr int knProduitSansMarqueur = 6; // a host kind whose state the component makes itself

class OAuthHote : public testing::Test {
protected:
    void SetUp() override {
        m_piLibShopAvant = std::exchange(CInformationDLL::ms_piLibShop, &m_clLibShop);
        m_nProduitAvant =
            std::exchange(CInformationDLL::ms_nCodeProduitExecution, knProduitSansMarqueur);
        m_clParametres->vSetClientID(L"id-client");
        m_clParametres->vSetClientSecret(L"secret");
        m_clParametres->vSetURLAuth(L"https://p.test/auth");
        m_clParametres->vSetURLToken(L"https://p.test/token?realm=r1");
    }
    void TearDown() override {
        CComposanteGGL().TermCompo();
        CInformationDLL::ms_piLibShop = m_piLibShopAvant;
        CInformationDLL::ms_nCodeProduitExecution = m_nProduitAvant;
        EXPECT_EQ(m_clLibShop.m_clHTTP.m_nRef, 0);
    }
    CInterfGGLOAuth2 Interface() {
        return CInterfGGLOAuth2(m_clParametres.pGet(), &m_clVM, &m_clErreur, &m_clLibShop.m_clHTTP);
    }
    const std::vector<STRequeteVue>& Vues() { return m_clLibShop.m_clHTTP.m_tabVues; }

    CLibShopEssai m_clLibShop;
    CVMEnregistreur m_clVM;
    CXError m_clErreur{&gstMyModuleInfo60};
    CRef<COAuth2Parametres> m_clParametres = CRef<COAuth2Parametres>::Retain(new COAuth2Parametres);
    ILibShop* m_piLibShopAvant = nullptr;
    int m_nProduitAvant = 0;
};

struct STCasURL {
    const wchar_t* pszClientID;
    const wchar_t* pszURLAuth;
    const wchar_t* pszEnPlus;
    std::wstring sAttendu; // "{state}" stands for the state sent
};

TEST_F(OAuthHote, AuthorisationAddress) {
    const STCasURL tabCas[] = {
        {L"id-client", L"https://p.test/auth", L"",
         L"https://p.test/auth?client_id=id-client&scope=s1%20s2&state={state}&response_type=code"},
        // The encoder keeps "@" and "&"; the component does not.
        {L"a@b&c#d%", L"https://p.test/auth", L"response_type=token&prompt",
         L"https://p.test/auth?client_id=a%40b%26c%23d%25&scope=s1%20s2&state={state}"
         L"&response_type=token&prompt"},
        {L"id-client", L"https://p.test/auth?audience=x&SCOPE=own", L"=ignored&",
         L"https://p.test/auth?client_id=id-client&scope=own&state={state}&response_type=code"
         L"&audience=x"},
        {L"id-client",
         L" https://api.paypal.com/webapps/auth/protocol/openidconnect/v1/tokenservice ", L"",
         L" https://api.paypal.com/webapps/auth/protocol/openidconnect/v1/tokenservice "
         L"?client_id=id-client"
         L"&client_secret=secret&scope=s1%20s2&state={state}&response_type=code"},
    };
    m_clParametres->vSetScope(L"s1%20s2");
    for (const STCasURL& st : tabCas) {
        m_clParametres->vSetClientID(st.pszClientID);
        m_clParametres->vSetURLAuth(st.pszURLAuth);
        m_clParametres->vSetParamEnPlus(st.pszEnPlus);
        CInterfGGLOAuth2 cl = Interface();
        std::wstring sURL = cl.sGetURLLogin();
        const std::wstring sEtat(cl.sGetState().sv());
        ASSERT_FALSE(sEtat.empty());
        std::wstring sAttendu = st.sAttendu;
        sAttendu.replace(sAttendu.find(L"{state}"), 7, sEtat);
        EXPECT_EQ(sURL, sAttendu) << Nom(st.pszClientID);
    }
    // Where the host fills the marker, the component sends no state of its own.
    CInformationDLL::ms_nCodeProduitExecution = CComposanteGGL::knProduitAvecDialogue;
    CInterfGGLOAuth2 cl = Interface();
    EXPECT_EQ(std::wstring(cl.sGetURLLogin()).find(L"state="), std::wstring::npos);
    EXPECT_TRUE(cl.sGetState().bVide());
}

TEST_F(OAuthHote, TheWayBack) {
    const std::string sJeton = R"({"access_token":"at-1","refresh_token":"rt-1","expires_in":60})";
    struct STCas {
        const char* pszQuoi;
        std::wstring sRetour; // "{state}": the state sent
        bool bResultat;
        unsigned nErreur;
        size_t nRequetes;
        const wchar_t* pszAcces;
    };
    const STCas tabCas[] = {
        {"code", L"/?code=c-1&state={state}", true, 0, 1, L"at-1"},
        {"another state", L"/?code=c-1&state=1{state}", false, 600058, 0, nullptr},
        {"no state", L"/?code=c-1", false, 600058, 0, nullptr},
        {"token and code", L"/?code=c-1&access_token=at-2&state={state}", true, 0, 0, L"at-2"},
        {"error", L"/?error=access_denied&error_description=No%20way&state={state}", false, 600001,
         0, nullptr},
        {"nothing", L"/?state={state}", false, 600001, 0, nullptr},
    };
    for (const STCas& st : tabCas) {
        m_clLibShop.m_clHTTP.m_tabVues.clear();
        m_clLibShop.m_clHTTP.m_tabReponses.push_back(Reponse(200, sJeton));
        m_clErreur.RAZ();
        CInterfGGLOAuth2 cl = Interface();
        (void)cl.sGetURLLogin();
        std::wstring sRetour = st.sRetour;
        if (size_t n = sRetour.find(L"{state}"); n != std::wstring::npos)
            sRetour.replace(n, 7, cl.sGetState().sv());
        EXPECT_EQ(
            cl.bProcessRedirectionHTTP((L"GET " + sRetour + L" HTTP/1.1\r\nHost: h\r\n").c_str(),
                                       L"http://127.0.0.1:4567/"),
            st.bResultat)
            << st.pszQuoi;
        EXPECT_EQ(m_clErreur.nGetUserErrorCode(), st.nErreur) << st.pszQuoi;
        ASSERT_EQ(Vues().size(), st.nRequetes) << st.pszQuoi;
        if (st.nRequetes) {
            EXPECT_EQ(Vues()[0].sURL, L"https://p.test/token");
            EXPECT_EQ(Vues()[0].sCorps, "code=c-1&client_id=id-client&client_secret=secret"
                                        "&redirect_uri=http://127.0.0.1:4567/"
                                        "&grant_type=authorization_code&realm=r1");
        }
        IOAuth2Token* piToken =
            cl.piGetResultat() ? cl.piGetResultat()->vpiGetOAuth2Token() : nullptr;
        EXPECT_EQ(std::wstring(piToken ? piToken->vczGetAccessToken().pszGet() : L"(none)"),
                  st.pszAcces ? st.pszAcces : L"(none)")
            << st.pszQuoi;
        if (piToken && st.nRequetes) {
            EXPECT_EQ(piToken->vczGetTokenType(), L"Bearer") << "the default type";
        }
    }
    m_clLibShop.m_clHTTP.m_tabReponses.clear();
    CInterfGGLOAuth2 cl = Interface();
    (void)cl.bProcessRedirectionHTTP(
        L"GET /?error=access_denied&error_description=No%20way HTTP/1.1\r\n", L"");
    EXPECT_NE(std::wstring(m_clErreur.pszGetUserMessage()).find(L"access_denied: No way"),
              std::wstring::npos)
        << Nom(m_clErreur.pszGetUserMessage());
}

TEST_F(OAuthHote, RefreshGrant) {
    auto clToken = CRef<COAuth2Token>::Retain(new COAuth2Token(m_clParametres.pGet()));
    EXPECT_EQ(clToken->vpiRequestRefreshToken(), nullptr);
    EXPECT_TRUE(Vues().empty()) << "no refresh token, no request";

    clToken->vSetRefreshToken(L"rt-1");
    m_clLibShop.m_clHTTP.m_tabReponses.push_back(Reponse(200, R"({"access_token":"at-9"})"));
    auto clNouveau = CRef<IAuthToken>::Retain(clToken->vpiRequestRefreshToken());
    ASSERT_TRUE(clNouveau);
    EXPECT_EQ(clNouveau->vpiGetOAuth2Token()->vczGetAccessToken(), L"at-9");
    ASSERT_EQ(Vues().size(), 1u);
    EXPECT_EQ(Vues()[0].sURL, L"https://p.test/token?realm=r1");
    EXPECT_EQ(
        Vues()[0].sCorps,
        "refresh_token=rt-1&client_id=id-client&client_secret=secret&grant_type=refresh_token");
    m_clLibShop.m_clHTTP.m_tabReponses.push_back(Reponse(400, R"({"error":"invalid_grant"})"));
    EXPECT_EQ(clToken->vpiRequestRefreshToken(), nullptr);
}

// A later writer's parameters are passed over whole: the fields stay, the next value reads.
TEST_F(OAuthHote, ParametersOfAnotherVersionAreSkipped) {
    CKVBuffer clBuffer;
    clBuffer.Set32(2);
    const size_t nMarque = CKVBufferMark::s_dwWriteBeginMark(clBuffer);
    clBuffer.SetString(L"someone else's");
    CKVBufferMark::s_WriteEndMark(clBuffer, nMarque);
    m_clParametres->vToBuffer(clBuffer);
    clBuffer.Seek(0, BUFFER_SEEK_DEBUT);

    COAuth2Parametres cl;
    cl.vSetClientID(L"kept");
    EXPECT_TRUE(cl.vFromBuffer(clBuffer));
    EXPECT_EQ(cl.vczGetClientID(), L"kept");
    EXPECT_TRUE(cl.vFromBuffer(clBuffer));
    EXPECT_EQ(cl.vczGetURLToken(), L"https://p.test/token?realm=r1");
    EXPECT_EQ(clBuffer.nReste(), 0u);
}

} // namespace
