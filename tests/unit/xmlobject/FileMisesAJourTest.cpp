// The update queue on the wire: the verbs, addresses, headers and bodies each operation sends
// through the connection to a recording HTTP service, the errors each status gives, and what
// stays queued after a failure.
#include "HoteEssai.h"
#include "XmlEssai.h"

#include "connection/GoogleConnexion.h"
#include "frame/InformationDLL.h"
#include "updates/UpdateOps.h"

namespace {


const char ksEdit[] = "<link rel=\"edit\" href=\"https://feeds.test/e/1\"/>";
const std::string ksReponseEntree =
    "<entry xmlns=\"http://www.w3.org/2005/Atom\"><id>urn:new</id>"
    "<link rel=\"edit\" href=\"https://feeds.test/e/new\"/></entry>";

std::wstring Entete(const STRequeteVue& st, const wchar_t* pszNom) {
    for (const auto& [sNom, sValeur] : st.tabEntetes)
        if (sNom == pszNom)
            return sValeur;
    return L"(absent)";
}

class FileEssai : public XmlEssai {
protected:
    void SetUp() override {
        XmlEssai::SetUp();
        m_piLibShopAvant = CInformationDLL::ms_piLibShop;
        CInformationDLL::ms_piLibShop = &m_clLibShop;
        m_clConnexion = CRef<CGoogleConnexion>::Retain(CGoogleConnexion::s_pclCreeObjet(nullptr, nullptr));
        m_clConnexion->tabGetToken()[SERVICEGOOGLE_CONTACT].m_sAccessToken = L"ya29.t";
    }
    void TearDown() override {
        m_clConnexion = {};
        CComposanteGGL().TermCompo();
        CInformationDLL::ms_piLibShop = m_piLibShopAvant;
        XmlEssai::TearDown();
    }
    void Repond(int nStatut, std::string sCorps = {}) {
        m_clLibShop.m_clHTTP.m_tabReponses.push_back(Reponse(nStatut, std::move(sCorps)));
    }
    const std::vector<STRequeteVue>& Vues() { return m_clLibShop.m_clHTTP.m_tabVues; }
    void Execute(CUpdatesManager& clFile) { clFile.doOperations(m_clConnexion.pGet(), &m_clVM, &m_clErreur); }

    CLibShopEssai m_clLibShop;
    CVMEnregistreur m_clVM;
    CXError m_clErreur{&gstMyModuleInfo60};
    CCtxInfo m_clCtx{nullptr, nullptr, &m_clVM};
    CRef<CGoogleConnexion> m_clConnexion;
    ILibShop* m_piLibShopAvant = nullptr;
};

CXmlObjectMulti* Multi(const CRef<CXmlObject>& cl) { return cl->vpclGetXmlObjectMulti(); }

// One operation, one status: the request that went out and what the script sees.
struct STCasFil {
    const char* pszNom;
    const char* pszCorps; // the entry as read; "" for a new one
    void (*pfnNotifie)(CXmlObjectMulti*);
    int nStatut;
    int nMethode;
    const wchar_t* pszURL;
    const wchar_t* pszIfMatch;
    unsigned nErreur;
    int nResteEnFile;
};
void Modifie(CXmlObjectMulti* pcl) { pcl->vNotifieModif(); }
void Supprime(CXmlObjectMulti* pcl) { pcl->vNotifieSuppr(); }
void SupprimeSiInchange(CXmlObjectMulti* pcl) {
    pcl->vNotifieSuppr();
    static_cast<UpdateOps::CSuppr*>(pcl->clGetUpdates().pclGetOperation(0))->SetEntete(L"If-Match", L"*");
}
const STCasFil gtabFil[] = {
    {"ModifOK", "<id>urn:1</id>", Modifie, 200, 3, L"https://feeds.test/e/1", L"(absent)", 0, 0},
    {"ModifConflit", "<id>urn:1</id>", Modifie, 409, 3, L"https://feeds.test/e/1", L"(absent)", 600005, 1},
    {"SupprOK", "<id>urn:1</id>", Supprime, 200, 4, L"https://feeds.test/e/1", L"(absent)", 0, 0},
    {"SupprSansContenu", "<id>urn:1</id>", Supprime, 204, 4, L"https://feeds.test/e/1", L"(absent)", 600005, 1},
    {"SupprIfMatch", "<id>urn:1</id>", SupprimeSiInchange, 200, 4, L"https://feeds.test/e/1", L"*", 0, 0},
    {"AjoutOK", "", Modifie, 201, 2, L"https://feeds.test/entries", L"(absent)", 0, 0},
    {"AjoutConflit", "", Modifie, 409, 2, L"https://feeds.test/entries", L"(absent)", 600031, 1},
    {"AjoutRefuse", "", Modifie, 400, 2, L"https://feeds.test/entries", L"(absent)", 600005, 1},
};
class Fil : public FileEssai, public testing::WithParamInterface<STCasFil> {};
TEST_P(Fil, RequeteEtResultat) {
    const STCasFil& st = GetParam();
    auto cl = *st.pszCorps ? Lit(std::string(st.pszCorps) + ksEdit, " flag=\"true\"") : Lit("");
    if (!*st.pszCorps)
        Multi(cl)->SetPropriete("title", 0, L"Nouveau");
    st.pfnNotifie(Multi(cl));
    Repond(st.nStatut, st.nStatut == 201 ? ksReponseEntree : "<error/>");
    Execute(Multi(cl)->clGetUpdates());
    ASSERT_EQ(Vues().size(), 1u);
    const STRequeteVue& stVue = Vues()[0];
    EXPECT_EQ(stVue.nMethode, st.nMethode);
    EXPECT_EQ(stVue.sURL, st.pszURL);
    EXPECT_EQ(Entete(stVue, L"If-Match"), st.pszIfMatch);
    EXPECT_EQ(Entete(stVue, L"Authorization"), L"Bearer ya29.t");
    EXPECT_EQ(m_clErreur.bEstPropre() ? 0u : m_clErreur.nGetUserErrorCode(), st.nErreur);
    EXPECT_EQ(Multi(cl)->clGetUpdates().nGetNbOperation(), st.nResteEnFile);
    if (st.nMethode == 4) {
        EXPECT_EQ(stVue.sType, L"application/x-www-form-urlencoded");
    } else {
        EXPECT_EQ(stVue.sType, L"application/atom+xml");
        // The body is the entry with the feed namespaces: the retained node with the change
        // applied, or the new entry written from scratch.
        EXPECT_NE(stVue.sCorps.find("xmlns:gContact=\"http://schemas.google.com/contact/2008\""), std::string::npos);
        EXPECT_NE(stVue.sCorps.find(*st.pszCorps ? "flag=\"1\"" : "<title>Nouveau</title>"), std::string::npos)
            << stVue.sCorps;
    }
    if (st.nStatut == 201) {
        EXPECT_FALSE(Multi(cl)->vbIsNouvelObjet()) << "the answer's entry replaced the object";
        EXPECT_EQ(Multi(cl)->pclGetPropriete("title", 0), nullptr);
    }
    Multi(cl)->clGetUpdates().ClearOps();
}
INSTANTIATE_TEST_SUITE_P(File, Fil, testing::ValuesIn(gtabFil),
                         [](const auto& st) { return std::string(st.param.pszNom); });

// A change that changes nothing sends nothing and counts as done.
TEST_F(FileEssai, ModifSansEffetNEnvoieRien) {
    auto cl = Lit(std::string("<id>urn:1</id>") + ksEdit);
    Multi(cl)->vNotifieModif();
    Execute(Multi(cl)->clGetUpdates());
    EXPECT_TRUE(Vues().empty());
    EXPECT_FALSE(Multi(cl)->clGetUpdates().bHasOperations());
}

// Duplicates are refused by object and exact id, at the head as at the tail.
TEST_F(FileEssai, DoublonsRefuses) {
    auto cl = Lit("<id>urn:1</id>");
    CUpdatesManager clFile;
    auto Ajoute = [&](IUpdateOperation* pi, int bEnTete = 0) {
        clFile.Ajoute(pi, bEnTete);
        pi->vRelease();
    };
    Ajoute(new UpdateOps::CModif(SERVICEGOOGLE_CONTACT, Multi(cl)));
    Ajoute(new UpdateOps::CModif(SERVICEGOOGLE_CONTACT, Multi(cl)));
    Ajoute(new UpdateOps::CAjout(SERVICEGOOGLE_CONTACT, Multi(cl), Multi(cl)));
    Ajoute(new UpdateOps::CVoid, 1);
    Ajoute(new UpdateOps::CModif(SERVICEGOOGLE_CONTACT, Multi(cl)), 1);
    ASSERT_EQ(clFile.nGetNbOperation(), 3);
    EXPECT_EQ(clFile.pclGetOperation(0)->eGetOperationId(), UPDATEOPS_VOID);
    EXPECT_EQ(clFile.pclGetOperation(1)->eGetOperationId(), UPDATEOPS_MODIF);
    EXPECT_TRUE(clFile.bHasOperations(UPDATEOPS_AJOUT | UPDATEOPS_SUPPR));
    clFile.ClearOps(UPDATEOPS_AJOUT | UPDATEOPS_VOID);
    EXPECT_EQ(clFile.nGetNbOperation(), 1);
}

// A failure keeps the failed operation and all after it, in order; what went out is gone.
TEST_F(FileEssai, EchecGardeLaSuiteEnOrdre) {
    CRef<CXmlObject> tab[3] = {Lit(ksEdit, " flag=\"true\""), Lit(ksEdit, " flag=\"true\""),
                               Lit(ksEdit, " flag=\"true\"")};
    CUpdatesManager clFile;
    for (auto& cl : tab) {
        auto* pi = new UpdateOps::CModif(SERVICEGOOGLE_CONTACT, Multi(cl));
        clFile.Ajoute(pi);
        pi->vRelease();
    }
    Repond(200);
    Repond(500);
    Execute(clFile);
    EXPECT_EQ(Vues().size(), 2u);
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600005u);
    ASSERT_EQ(clFile.nGetNbOperation(), 2);
    EXPECT_EQ(clFile.pclGetOperation(0)->pclGetObjet(), Multi(tab[1]));
    EXPECT_EQ(clFile.pclGetOperation(1)->pclGetObjet(), Multi(tab[2]));
}

// The queue of an entry that went out runs straight after it; its failure stops the outer
// queue only at the next step: the addition counts as done, and the next operation is run
// (the connection sends nothing while an error stands) and stays.
TEST_F(FileEssai, EchecDeLaFileImbriqueeVuAuPasSuivant) {
    auto clParent = Lit("<id>urn:p</id><link rel=\"alternate\" href=\"https://feeds.test/p\"/>");
    auto clAutre = Lit(ksEdit, " flag=\"true\"");
    CXmlObjectMulti* pclSous = Multi(clParent)->pclGetCreatePropriete("entry", 0)->vpclGetXmlObjectMulti();
    pclSous->vSetParent(Multi(clParent));
    pclSous->SetPropriete("title", 0, L"Photo");
    pclSous->vNotifieModif(); // a new nested entry: an addition on the parent
    CUpdatesManager& clFile = Multi(clParent)->clGetUpdates();
    auto* pi = new UpdateOps::CModif(SERVICEGOOGLE_CONTACT, Multi(clAutre));
    clFile.Ajoute(pi);
    pi->vRelease();
    // After its addition the entry is saved; its own change then fails.
    auto* piSous = new UpdateOps::CModif(SERVICEGOOGLE_CONTACT, pclSous);
    pclSous->clGetUpdates().Ajoute(piSous);
    piSous->vRelease();
    Repond(201, ksReponseEntree);
    Repond(500);
    Execute(clFile);
    ASSERT_EQ(Vues().size(), 2u);
    EXPECT_EQ(Vues()[0].sURL, L"https://feeds.test/p");
    EXPECT_EQ(Vues()[1].sURL, L"https://feeds.test/e/new");
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600005u);
    ASSERT_EQ(clFile.nGetNbOperation(), 1);
    EXPECT_EQ(clFile.pclGetOperation(0)->pclGetObjet(), Multi(clAutre));
    EXPECT_EQ(pclSous->clGetUpdates().nGetNbOperation(), 1);
}

// An operation that queues another while the queue runs: only the finished ones go.
class CAjouteEnCours final : public IUpdateOperation {
public:
    CAjouteEnCours(CXmlObjectMulti* pcl, CXmlObjectMulti* pclAutre) : m_pcl(pcl), m_pclAutre(pclAutre) {}
    void operator()(CGoogleConnexion*, IVM*, CXError*) override {
        auto* pi = new UpdateOps::CModif(SERVICEGOOGLE_CONTACT, m_pclAutre);
        m_pcl->clGetUpdates().Ajoute(pi);
        pi->vRelease();
    }
    CXmlObjectMulti* pclGetObjet() override { return m_pcl; }
    eUPDATEOPS eGetOperationId() override { return UPDATEOPS_MODIF; }
    IUpdateOperation* vpclCopie(CXmlObjectMulti*, CXmlObjectMulti*) override { return nullptr; }
    bool vbRecursif() override { return false; }
    void vRemplace(IUpdateOperation*) override {}

private:
    CXmlObjectMulti* m_pcl;
    CXmlObjectMulti* m_pclAutre;
};
TEST_F(FileEssai, AjoutPendantLExecution) {
    auto cl = Lit("<id>urn:1</id>");
    auto clAutre = Lit("<id>urn:2</id>");
    auto* pi = new CAjouteEnCours(Multi(cl), Multi(clAutre));
    Multi(cl)->clGetUpdates().Ajoute(pi);
    pi->vRelease();
    Execute(Multi(cl)->clGetUpdates());
    ASSERT_EQ(Multi(cl)->clGetUpdates().nGetNbOperation(), 1);
    EXPECT_EQ(Multi(cl)->clGetUpdates().pclGetOperation(0)->pclGetObjet(), Multi(clAutre));
    Multi(cl)->clGetUpdates().ClearOps();
}

// A deletion asked by the script: sent at once; an entry that queues none is refused.
TEST_F(FileEssai, SuppressionDirecte) {
    auto cl = Lit(std::string("<id>urn:1</id>") + ksEdit);
    Multi(cl)->vNotifieModif();
    Repond(200);
    EXPECT_TRUE(m_clConnexion->_bGglSupprime(&m_clCtx, &m_clErreur, Multi(cl)));
    ASSERT_EQ(Vues().size(), 1u) << "the pending change was dropped";
    EXPECT_EQ(Vues()[0].nMethode, 4);
    auto clSeule = Lit<CSousEntreeEssai>("<id>urn:2</id>");
    EXPECT_FALSE(m_clConnexion->_bGglSupprime(&m_clCtx, &m_clErreur, Multi(clSeule)));
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600028u);
}

// A new version of an entry: its links are those of the version read from its "self" link,
// the rest as it was.
TEST_F(FileEssai, NouvelleVersionDesLiens) {
    auto cl = Lit(std::string("<id>urn:1</id><link rel=\"self\" href=\"https://feeds.test/s/1\"/>") + ksEdit);
    Repond(200, "<entry xmlns=\"http://www.w3.org/2005/Atom\"><id>urn:1</id>"
                "<link rel=\"edit\" href=\"https://feeds.test/e/1v2\"/></entry>");
    m_clConnexion->UpdateVersionXmlObjectMulti(&m_clVM, &m_clErreur, Multi(cl));
    ASSERT_EQ(Vues().size(), 1u);
    EXPECT_EQ(Vues()[0].nMethode, 1);
    EXPECT_EQ(Vues()[0].sURL, L"https://feeds.test/s/1");
    CXmlObjectListe* pclLiens = Multi(cl)->pclGetListe("link");
    ASSERT_EQ(pclLiens->nGetNbElement(), 1);
    EXPECT_EQ(pclLiens->pclGetElement(0)->pclGetParent(), Multi(cl));
    CXYString<wchar_t> s;
    pclLiens->pclGetElement(0)->pclGetPropriete("href", 0)->vbGet(s, m_clErreur);
    EXPECT_EQ(s, L"https://feeds.test/e/1v2");
    EXPECT_NE(Multi(cl)->pclGetPropriete("id", 0), nullptr);
}

} // namespace
