// What the browser's return to the redirect address carries: the request line's query or
// fragment read key by key, and the verdict of the last key that decides.
#include "connection/InterfGGLCnx.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct STCasRetour {
    const char* pszNom;
    const wchar_t* pszTexte;
    bool bResultat;
    const wchar_t* pszErreur;
    const wchar_t* pszEtat;
    const wchar_t* pszCode;
    const wchar_t* pszAcces;
    const wchar_t* pszType;
};
const STCasRetour gtabRetour[] = {
    {"CodeEtEtat", L"GET /?code=abc&state=1 HTTP/1.1\r\nHost: 127.0.0.1\r\n", true, L"", L"1",
     L"abc", L"", L""},
    {"JetonDansLeFragment", L"GET /#access_token=x&token_type=Bearer HTTP/1.1\r\n", true, L"", L"",
     L"", L"x", L"Bearer"},
    {"ErreurEnDernier", L"GET /?code=abc&error=denied HTTP/1.1\r\n", false, L"denied", L"", L"abc",
     L"", L""},
    {"CodeEnDernier", L"GET /?error=denied&code=abc HTTP/1.1\r\n", true, L"denied", L"", L"abc",
     L"", L""},
    {"CleEntoureeDeBlancs", L"GET /?CODE =abc HTTP/1.1\r\n", true, L"", L"", L"abc", L"", L""},
    {"RefusDuConsentement",
     L"GET /?error=access_denied&state=0f3a HTTP/1.1\r\nHost: 127.0.0.1:4567\r\n", false,
     L"access_denied", L"0f3a", L"", L"", L""},
    {"NiQuestionNiDiese", L"GET / HTTP/1.1\r\n", false, L"", L"", L"", L"", L""},
    {"SansFinDeLigne", L"GET /?code=abc HTTP/1.1", false, L"", L"", L"", L"", L""},
    {"Vide", L"", false, L"", L"", L"", L"", L""},
    {"CodeVide", L"GET /?code=&state=1 HTTP/1.1\r\n", false, L"", L"1", L"", L"", L""},
    {"MorceauSansEgalSaute", L"GET /?flag&code=a=b HTTP/1.1\r\n", true, L"", L"", L"a=b", L"", L""},
    {"SeuleLaPremiereLigne", L"GET /?code=abc HTTP/1.1\r\nReferer: http://x/?error=no\r\n", true,
     L"", L"", L"abc", L"", L""},
    {"SansProtocole", L"GET /?code=abc&state=1\r\n", true, L"", L"1", L"abc", L"", L""},
    {"EtatNeDecidePas", L"GET /?code=abc&state=1 HTTP/1.1\r\n", true, L"", L"1", L"abc", L"", L""},
    {"JetonApresErreur", L"GET /?error=x&access_token=t HTTP/1.1\r\n", true, L"x", L"", L"", L"t",
     L""},
    {"ValeurNonDecodee", L"GET /?code=4%2F0Ab HTTP/1.1\r\n", true, L"", L"", L"4%2F0Ab", L"", L""},
    {"LaQuestionAvantLeDiese", L"GET /?code=q#access_token=f HTTP/1.1\r\n", true, L"", L"",
     L"q#access_token=f", L"", L""},
};
class RetourNavigateur : public testing::TestWithParam<STCasRetour> {};
TEST_P(RetourNavigateur, Extrait) {
    const STCasRetour& st = GetParam();
    stInfoResHTTP stInfo;
    EXPECT_EQ(CInterfGGLCnx::s_bExtraitInfoResHTTP(st.pszTexte, stInfo), st.bResultat);
    EXPECT_EQ(stInfo.m_sError.sv(), st.pszErreur);
    EXPECT_EQ(stInfo.m_sState.sv(), st.pszEtat);
    EXPECT_EQ(stInfo.m_sCode.sv(), st.pszCode);
    EXPECT_EQ(stInfo.m_sAccessToken.sv(), st.pszAcces);
    EXPECT_EQ(stInfo.m_sTokenType.sv(), st.pszType);
}
INSTANTIATE_TEST_SUITE_P(InterfGGLCnx, RetourNavigateur, testing::ValuesIn(gtabRetour),
                         [](const auto& i) { return std::string(i.param.pszNom); });

TEST(RetourNavigateurNul, Refuse) {
    stInfoResHTTP stInfo;
    EXPECT_FALSE(CInterfGGLCnx::s_bExtraitInfoResHTTP(nullptr, stInfo));
}

} // namespace
