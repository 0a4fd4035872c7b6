#include "Resources.h"
#include "Tables.h"
#include "XError.h"

#include <gtest/gtest.h>
#include <netdb.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <set>
#include <string>

std::string KVTest_Pack(std::string_view sOctets); // ResourcesTest.cpp

namespace {

const STErrorDef s_tabErreur[] = {
    {600001, 5865, 0, 2}, {600002, 28308, 0, 3}, {600003, 5868, 7, 2}, // its text is empty
    {600004, 5869, 0, 3},                                              // its text is missing
    {600005, 5870, 0, 2},
};

int s_nGetRessource(STRessourceModule& st) {
    static const std::map<unsigned, std::string> s_map = {
        {5865, KVTest_Pack("Connexion impossible.")},
        {28308, KVTest_Pack("Chargement de %1 impossible.")},
        {5868, ""},
        {5870, KVTest_Pack("Erreur HTTP %1 : %2")},
        {6066, KVTest_Pack("Fichier <%1> introuvable (%2!u!).")},
    };
    auto it = s_map.find(st.nNumero);
    if (it == s_map.end())
        return 0;
    st.pbyTexte = reinterpret_cast<const unsigned char*>(it->second.data());
    st.nTaille = static_cast<uint32_t>(it->second.size());
    st.nEncodage = 1;
    st.nUtilisation = 0;
    return 1;
}

const _stMyModuleInfo s_stModule = [] {
    _stMyModuleInfo st{};
    st.pstErrorDef = s_tabErreur;
    st.nNbErrorDef = std::size(s_tabErreur);
    st.nNumeroModule = 77;
    st.pszNomModule = L"kvtest.so";
    st.pszVersionModule = L"1.2";
    st.pfnGetRessource = s_nGetRessource;
    return st;
}();

constexpr const wchar_t* kszSansDefinition =
    L"##(CXError)-Pas de definition d'erreur dans gstErrorDef pour l'identifiant <600017>##";

TEST(XError, CodeInconnu) {
    CXError e(&s_stModule);
    e.SetUserError(&s_stModule, 600017);
    EXPECT_EQ(e.nGetErrorLevel(), ELEVEL_GRAVE);
    EXPECT_EQ(e.nGetUserErrorCode(), 0u);
    EXPECT_STREQ(e.pszGetDebugMessage(), kszSansDefinition);
    EXPECT_STREQ(e.pszGetUserMessage(), L"");

    e.SetUserError(&s_stModule, 600001);
    e.ChangeUserError(&s_stModule, 600017);
    EXPECT_EQ(e.nGetErrorLevel(), ELEVEL_GRAVE);
    EXPECT_EQ(e.nGetUserErrorCode(), 600001u) << "the code in place stays";
    EXPECT_STREQ(e.pszGetUserMessage(), L"Connexion impossible.");
    EXPECT_STREQ(e.pszGetDebugMessage(), kszSansDefinition);

    CXError sansModule;
    sansModule.SetUserError(nullptr, 600001);
    EXPECT_EQ(sansModule.nGetErrorLevel(), ELEVEL_GRAVE);
}

TEST(XError, SetUserErrorParLigne) {
    struct {
        unsigned nCode;
        eERRORLEVEL eNiveau;
        const wchar_t* pszMessage;
        const wchar_t* pszDebug;
    } tabCas[] = {
        {600001, ELEVEL_ERREUR, L"Connexion impossible.", L""},
        {600002, ELEVEL_GRAVE, L"Chargement de x.so impossible.", L""},
        {600005, ELEVEL_ERREUR, L"Erreur HTTP x.so : 404", L""},
        {600004, ELEVEL_GRAVE, L"", L"##(CXError)-Ressource <5869> non chargée##"},
    };
    for (const auto& cas : tabCas) {
        SCOPED_TRACE(cas.nCode);
        CXError e(&s_stModule);
        e.AddDebugMessageNoFormat(L"effacé par SetUserError");
        e.SetUserError(&s_stModule, cas.nCode, L"x.so", L"404");
        EXPECT_EQ(e.nGetErrorLevel(), cas.eNiveau);
        EXPECT_EQ(e.nGetUserErrorCode(), cas.nCode) << "a missing text leaves the code set";
        EXPECT_STREQ(e.pszGetUserMessage(), cas.pszMessage);
        EXPECT_STREQ(e.pszGetDebugMessage(), cas.pszDebug);
        EXPECT_STREQ(e.pszGetModuleName(), L"kvtest.so");
    }
    CXError e;
    e.SetUserError(&s_stModule, 600003);
    EXPECT_EQ(e.dwGetDetail(), 7u);
    EXPECT_EQ(std::wstring(e.pszGetDebugMessage())
                  .rfind(L"##(CXError)-Ressource <5868> vide. LastError = <", 0),
              0u);
}

TEST(XError, MessagesJointsParCRLF) {
    CXError e(&s_stModule);
    e.AddUserMessage(&s_stModule, 6066, L"a.txt", 2u);
    EXPECT_TRUE(e.bEstPropre()) << "a message alone is no error";
    EXPECT_STREQ(e.pszGetUserMessage(), L"Fichier <a.txt> introuvable (2).");

    e.ChangeUserError(&s_stModule, 600002, L"b.so");
    EXPECT_EQ(e.nGetErrorLevel(), ELEVEL_GRAVE);
    e.AddUserMessage(&s_stModule, 5865);
    e.AddUserMessageFirst(&s_stModule, 5870, L"500", L"panne");
    e.AddUserMessage(L"100%% fini %1");
    e.AddUserMessageNoFormat(L"tel quel %%");
    e.AddUserMessageNoFormat(L"");
    EXPECT_STREQ(e.pszGetUserMessage(),
                 L"Erreur HTTP 500 : panne\r\nChargement de b.so impossible.\r\n"
                 L"Fichier <a.txt> introuvable (2).\r\nConnexion impossible.\r\n100% fini \r\n"
                 L"tel quel %%");
    const CTTableau<unsigned>& tabId = e.tabGetMessageId();
    ASSERT_EQ(tabId.nGetNbElement(), 4u);
    EXPECT_EQ(tabId[0], 6066u);
    EXPECT_EQ(tabId[1], 28308u);
    EXPECT_EQ(tabId[2], 5865u);
    EXPECT_EQ(tabId[3], 5870u);

    e.AddDebugMessagePrintf(L"##(IXStream)-A lire=<%u>, lu=<%u>##", 10u, 4u);
    e.AddDebugMessage(&s_stModule, 5865);
    e.AddDebugMessageFirst(&s_stModule, 28308, L"c");
    EXPECT_STREQ(e.pszGetDebugMessage(), L"Chargement de c impossible.\r\n"
                                         L"##(IXStream)-A lire=<10>, lu=<4>##\r\n"
                                         L"Connexion impossible.");
    EXPECT_EQ(e.tabGetMessageId().nGetNbElement(), 4u) << "debug texts are not message ids";
}

TEST(XError, MessageUtilisateurPret) {
    CXError e;
    e.SetUserErrorMessage(&s_stModule, 600001, L"texte prêt");
    EXPECT_EQ(e.nGetErrorLevel(), ELEVEL_ERREUR);
    EXPECT_EQ(e.nGetUserErrorCode(), 600001u);
    EXPECT_STREQ(e.pszGetUserMessage(), L"texte prêt");
    e.SetUserErrorMessage(&s_stModule, 123, L"autre");
    EXPECT_EQ(e.nGetErrorLevel(), ELEVEL_GRAVE);
    EXPECT_STREQ(e.pszGetUserMessage(), L"autre");

    EXPECT_EQ(CXError::nGetRessourceIdFromUserErrorCode(&s_stModule, 600005), 5870u);
    EXPECT_EQ(CXError::nGetRessourceIdFromUserErrorCode(&s_stModule, 600017), 0u);
    EXPECT_EQ(CXError::nGetRessourceIdFromUserErrorCode(nullptr, 600001), 0u);
}

// Fills every part of an error.
void Remplit(CXError& e, const wchar_t* pszFichier) {
    e.SetUserError(&s_stModule, 600002, pszFichier);
    e.AddDebugMessageNoFormat(L"##debug##");
    e.AddInfo(EIT_HELPFILE, pszFichier);
    e.AddInfo(EIT_CODEHTTP, L"404");
    e.SetSystemErrorParam(ENOENT, L"open", pszFichier);
    e.SetContexteVM(L"Projet", L"Fenetre", 12, 3);
    e.SetSyntaxe(2);
    CXError clCause(&s_stModule);
    clCause.SetUserError(&s_stModule, 600001);
    e.AddSubError(&clCause);
}

TEST(XError, RAZ) {
    CXError e(&s_stModule);
    Remplit(e, L"a.so");
    ASSERT_EQ(e.nGetNbSubError(), 1);
    e.RAZ();
    EXPECT_TRUE(e.bEstPropre());
    EXPECT_EQ(e.nGetUserErrorCode(), 0u);
    EXPECT_STREQ(e.pszGetUserMessage(), L"");
    EXPECT_STREQ(e.pszGetDebugMessage(), L"");
    EXPECT_STREQ(e.pszGetSystemMessage(), L"");
    EXPECT_STREQ(e.pszGetSystemFunction(), L"");
    EXPECT_EQ(e.nGetSystemErrorCode(), 0u);
    EXPECT_EQ(e.nGetNbInfo(), 0);
    EXPECT_EQ(e.nGetNbSubError(), 0);
    EXPECT_EQ(e.tabGetMessageId().nGetNbElement(), 0u);
    EXPECT_STREQ(e.pszGetLibelleVM(), L"");
    EXPECT_EQ(e.nGetSyntaxe(), 0);
    EXPECT_STREQ(e.pszGetModuleName(), L"kvtest.so") << "the error stays with its module";
}

TEST(XError, ErreurSysteme) {
    CXError e;
    e.SetSystemError(ENOENT, L"open");
    EXPECT_TRUE(e.bEstPropre());
    EXPECT_EQ(e.nGetSystemErrorCode(), static_cast<unsigned>(ENOENT));
    EXPECT_STREQ(e.pszGetSystemFunction(), L"open");
    std::wstring sTexte = e.pszGetSystemMessage();
    EXPECT_FALSE(sTexte.empty());
    e.SetSystemErrorParam(ENOENT, L"stat", L"/x");
    EXPECT_EQ(std::wstring(e.pszGetSystemMessage()), sTexte + L" </x>");
    e.SetSystemErrorMessagePrintf(L"code %d sur %ls", 5, L"sock");
    EXPECT_STREQ(e.pszGetSystemMessage(), L"code 5 sur sock");
    e.SetSystemErrorForGetHostBy(HOST_NOT_FOUND, L"gethostbyname");
    EXPECT_EQ(e.nGetSystemErrorCode(), 1u);
    EXPECT_STRNE(e.pszGetSystemMessage(), L"");
}

TEST(XError, CausesEtCopies) {
    CXError clSource(&s_stModule);
    Remplit(clSource, L"s.so");

    CXError e(&s_stModule);
    e.AddSubError(&clSource);
    e.AddSubErrorLight(&clSource);
    e.AddSubErrorNoUserMessage(&clSource);
    e.AddSubErrorLightNoUserMessage(&clSource);
    e.AddSubError(nullptr);
    ASSERT_EQ(e.nGetNbSubError(), 4);
    EXPECT_TRUE(e.bEstPropre()) << "causes do not raise the level";
    EXPECT_EQ(e.pclGetSubError(-1), nullptr);
    EXPECT_EQ(e.pclGetSubError(4), nullptr);

    clSource.RAZ(); // the causes are copies
    struct {
        bool bComplet, bMessage;
    } tabAttendu[] = {{true, true}, {false, true}, {true, false}, {false, false}};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const CXError* p = e.pclGetSubError(i);
        EXPECT_EQ(p->nGetUserErrorCode(), 600002u);
        EXPECT_EQ(p->nGetErrorLevel(), ELEVEL_GRAVE);
        EXPECT_STREQ(p->pszGetDebugMessage(), L"##debug##");
        EXPECT_STREQ(p->pszGetUserMessage(),
                     tabAttendu[i].bMessage ? L"Chargement de s.so impossible." : L"");
        EXPECT_EQ(p->nGetNbInfo(), tabAttendu[i].bComplet ? 2 : 0);
        EXPECT_EQ(p->nGetNbSubError(), tabAttendu[i].bComplet ? 1 : 0);
        EXPECT_EQ(p->nGetSystemErrorCode(), tabAttendu[i].bComplet ? unsigned(ENOENT) : 0u);
        EXPECT_EQ(p->nGetLigneVM(), tabAttendu[i].bComplet ? 12 : 0);
        EXPECT_EQ(p->nGetSyntaxe(), 2);
    }

    CXError clCopie;
    clCopie.Copy(&e);
    ASSERT_EQ(clCopie.nGetNbSubError(), 4);
    EXPECT_EQ(clCopie.pclGetSubError(0)->pclGetSubError(0)->nGetUserErrorCode(), 600001u);
    EXPECT_NE(clCopie.pclGetSubError(0), e.pclGetSubError(0)) << "deep";

    // From one of its own causes: read before the old causes go.
    clCopie.Copy(clCopie.pclGetSubError(0));
    EXPECT_EQ(clCopie.nGetUserErrorCode(), 600002u);
    EXPECT_EQ(clCopie.nGetNbSubError(), 1);
    EXPECT_STREQ(clCopie.GetInfo(EIT_HELPFILE), L"s.so");
    clCopie.LightCopy(clCopie.pclGetSubError(0));
    EXPECT_EQ(clCopie.nGetUserErrorCode(), 600001u);
    EXPECT_EQ(clCopie.nGetNbSubError(), 0);
    EXPECT_EQ(clCopie.nGetNbInfo(), 0);
    clCopie.Copy(nullptr);
    EXPECT_TRUE(clCopie.bEstPropre());

    e.DeleteAllSubError();
    EXPECT_EQ(e.nGetNbSubError(), 0);
}

TEST(XError, InfosUneParType) {
    CXError e;
    e.AddInfo(EIT_USERNAME, L"lou");
    e.AddInfo(EIT_RECNUM, L"12");
    e.AddInfo(EIT_USERNAME, L"max");
    e.AddInfo(EIT_NB, L"hors table");
    EXPECT_EQ(e.nGetNbInfo(), 2);
    EXPECT_EQ(e.nNumInfo(EIT_USERNAME), 0);
    EXPECT_EQ(e.nNumInfo(EIT_RECNUM), 1);
    EXPECT_EQ(e.nNumInfo(EIT_HELPFILE), -1);
    EXPECT_STREQ(e.GetInfo(EIT_USERNAME), L"max");
    EXPECT_STREQ(e.GetInfo(EIT_HELPFILE), L"");
    CTString cl(L"x");
    EXPECT_FALSE(e.bGetInfo(EIT_HELPFILE, &cl));
    EXPECT_TRUE(cl.bEstVide());
    EXPECT_TRUE(e.bGetInfo(EIT_RECNUM, &cl));
    EXPECT_EQ(cl, L"12");
    e.DeleteInfo(EIT_USERNAME);
    EXPECT_FALSE(e.bHasInfo(EIT_USERNAME));
    EXPECT_EQ(e.nNumInfo(EIT_RECNUM), 0);
    e.DeleteInfo(EIT_USERNAME);
    EXPECT_EQ(e.nGetNbInfo(), 1);
}

TEST(XError, Dump) {
    CXError e(&s_stModule);
    e.SetUserError(&s_stModule, 600001);
    e.AddInfo(EIT_HELPFILE, L"aide.chm");
    e.AddInfo(EIT_EXCEPTION_CLASS_NAME, L"Écran");
    CXError clCause(&s_stModule);
    clCause.SetUserError(&s_stModule, 600002, L"x");
    clCause.AddInfo(EIT_CODEHTTP, L"404");
    clCause.AddSubError(&e);
    e.AddSubError(&clCause);

    CTString cl;
    e.DumpInfo(&cl);
    EXPECT_EQ(cl.s(), L"IE=600001.2\r\nModule=<kvtest.so>\r\nVersion=<1.2>\r\n"
                      L"EIT_HELPFILE : <aide.chm>\r\nEIT_EXCEPTION_CLASS_NAME : <Écran>\r\n"
                      L"IE1=600002.3\r\nModule=<kvtest.so>\r\nVersion=<1.2>\r\n"
                      L"EIT_CODEHTTP : <404>\r\n"
                      L"IE1.1=600001.2\r\nModule=<kvtest.so>\r\nVersion=<1.2>\r\n"
                      L"EIT_HELPFILE : <aide.chm>\r\nEIT_EXCEPTION_CLASS_NAME : <Écran>");
}

TEST(XError, ComptageEtMemoire) {
    auto* p = new CXError(&s_stModule);
    EXPECT_EQ(p->nGetRef(), 1) << "the creator owns the first reference";
    EXPECT_EQ(p->dwAddRef(), 2u);
    EXPECT_EQ(p->dwRelease(), 1u);
    Remplit(*p, L"z.so");
    EXPECT_EQ(p->dwRelease(), 0u); // deleted: the leak checker says whether all went

    static CXError* s_pclVu = nullptr;
    CXError::ms_pfnNoMemory = [](CXError* pcl) { s_pclVu = pcl; };
    CXError e;
    e.AddUserMessageNoFormat(L"avant");
    e.SetErrorNoMemory();
    CXError::ms_pfnNoMemory = nullptr;
    EXPECT_EQ(s_pclVu, &e);
    EXPECT_EQ(e.nGetUserErrorCode(), 100u);
    EXPECT_FALSE(e.bEstPropre());
    EXPECT_STREQ(e.pszGetUserMessage(), L"<No Memory>");
}

// An error whose strings come from its own pool, as a module-bound subclass has them: every
// string it holds must be made and freed through the virtual operations.
class CXErrorCompte : public CXError {
public:
    using CXError::CXError;
    ~CXErrorCompte() override { RAZ(); }

    wchar_t* __vpszAllocString(wchar_t** ppsz, const wchar_t* psz) override {
        wchar_t* p = CXError::__vpszAllocString(ppsz, psz);
        m_setVivant.insert(p);
        ++m_nAlloue;
        return p;
    }
    wchar_t* __vpszReallocString(wchar_t** ppsz, const wchar_t* psz) override {
        return CXError::__vpszReallocString(ppsz, psz);
    }
    wchar_t* __vpszReallocString(wchar_t** ppsz, unsigned long n) override {
        if (*ppsz) {
            EXPECT_EQ(m_setVivant.erase(*ppsz), 1u) << "a string from another pool";
        }
        wchar_t* p = CXError::__vpszReallocString(ppsz, n);
        m_setVivant.insert(*ppsz);
        return p;
    }
    void __vDeleteString(wchar_t** ppsz) override {
        if (*ppsz) {
            EXPECT_EQ(m_setVivant.erase(*ppsz), 1u) << "a string from another pool";
        }
        CXError::__vDeleteString(ppsz);
    }

    std::set<wchar_t*> m_setVivant;
    int m_nAlloue = 0;
};

TEST(XError, ChainesParLesOperationsVirtuelles) {
    CXErrorCompte e(&s_stModule);
    Remplit(e, L"v.so");
    e.AddUserMessage(&s_stModule, 5865);
    e.AddUserMessageFirst(&s_stModule, 5865);
    e.AddDebugMessagePrintf(L"%d", 1);
    e.AddInfo(EIT_HELPFILE, L"remplacé");
    e.DeleteInfo(EIT_CODEHTTP);
    CXError clSource(&s_stModule);
    Remplit(clSource, L"w.so");
    e.LightCopy(&clSource);
    e.SetUserError(&s_stModule, 600005, L"a", L"b");
    e.SetErrorNoMemory();
    EXPECT_GT(e.m_nAlloue, 5);
    EXPECT_FALSE(e.m_setVivant.empty());
    e.Copy(&clSource);
    e.RAZ();
    EXPECT_TRUE(e.m_setVivant.empty()) << "RAZ frees every string it holds";
}

} // namespace
