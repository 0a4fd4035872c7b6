// The calendar against a host that records each request record and answers canned replies, its
// VM a zone two hours east of UTC: the change marks of a plain write and what a commit sends
// from each mark, the bounds of a fill when dates are absent, and a timed event's local time
// and offset both ways.
#include "HoteEssai.h"

#include "calendar/DatesAgenda.h"
#include "calendar/GoogleAgenda.h"
#include "calendar/GoogleEvenement.h"
#include "connection/GoogleConnexion.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"

#include "Ref.h"

#include <gtest/gtest.h>

#include <string>


namespace {

const std::wstring ksAPI = L"https://www.googleapis.com/calendar/v3/calendars";

CDateTime Date(int a, int m, int j, int h = 0) {
    CDateTime cl;
    cl.bModifieAnnee(a), cl.bModifieMois(m), cl.bModifieJour(j), cl.bModifieHeure(h);
    return cl;
}

class Agenda : public testing::Test {
protected:
    void SetUp() override {
        m_piLibShopAvant = CInformationDLL::ms_piLibShop;
        CInformationDLL::ms_piLibShop = &m_clLibShop;
        m_clConnexion = CRef<CGoogleConnexion>::Retain(CGoogleConnexion::s_pclCreeObjet(nullptr, nullptr));
        m_clConnexion->tabGetToken()[SERVICEGOOGLE_AGENDA].m_sAccessToken = L"ya29.agenda";
        m_clAgenda = CRef<CGoogleAgenda>::Retain(CGoogleAgenda::s_pclCreeObjet(nullptr, nullptr));
    }
    void TearDown() override {
        m_clAgenda.Reset();
        m_clConnexion.Reset();
        CComposanteGGL().TermCompo();
        CInformationDLL::ms_piLibShop = m_piLibShopAvant;
    }
    // "METHOD URL" of each request, one a line.
    std::wstring Requetes() {
        std::wstring s;
        for (const STRequeteVue& st : m_clLibShop.m_clHTTP.m_tabVues)
            s += (s.empty() ? L"" : L"\n") + std::to_wstring(st.nMethode) + L" " + st.sURL;
        return s;
    }
    void Repond(int nStatut, std::string sCorps = {}) {
        m_clLibShop.m_clHTTP.m_tabReponses.push_back(Reponse(nStatut, std::move(sCorps)));
    }
    CGoogleEvenement* Evenement(const wchar_t* pszId, eEtatObjet eEtat) {
        CGoogleEvenement* p = CGoogleEvenement::s_pclCreeObjet(nullptr, nullptr);
        p->vAddRef();
        p->ForceIdentifiant(nullptr, nullptr, CXYString<wchar_t>(pszId));
        p->m_eEtatObjet = eEtat;
        return p;
    }

    CFuseauEssai m_clFuseau; // two hours east of UTC, summer or winter
    CLibShopEssai m_clLibShop;
    CVMEnregistreur m_clVM;
    CCtxInfo m_clCtx{nullptr, nullptr, &m_clVM};
    CXError m_clErreur{&gstMyModuleInfo60};
    CRef<CGoogleConnexion> m_clConnexion;
    CRef<CGoogleAgenda> m_clAgenda;
    ILibShop* m_piLibShopAvant = nullptr;
};

// Each mark of a calendar: what a plain write makes of it, what its commit sends (with one
// changed event under it), and the mark afterwards.
struct STCasEtat {
    eEtatObjet eEtat;
    eEtatObjet eApresEcriture;
    const wchar_t* pszRequetes; // 2 POST, 4 DELETE, 6 PATCH; "E" stands for the event's PATCH
    eEtatObjet eApresCommit;
};
const STCasEtat gtabEtats[] = {
    {ETAT_SYNCHRONISE, ETAT_MODIFIE, L"E", ETAT_SYNCHRONISE},
    {ETAT_MODIFIE, ETAT_MODIFIE, L"6 /c@x\nE", ETAT_SYNCHRONISE},
    {ETAT_A_CREER, ETAT_A_CREER, L"2 \nE", ETAT_SYNCHRONISE},
    {ETAT_A_SUPPRIMER, ETAT_A_SUPPRIMER, L"4 /c@x", ETAT_A_CREER},
    {ETAT_NEUF_ATTACHE, ETAT_A_CREER, L"", ETAT_NEUF_ATTACHE},
    {ETAT_NEUF, ETAT_A_CREER, L"E", ETAT_NEUF},
};
class EtatsAgenda : public Agenda, public testing::WithParamInterface<STCasEtat> {};
TEST_P(EtatsAgenda, EcritureEtCommit) {
    const STCasEtat& st = GetParam();
    CGoogleAgenda& cl = *m_clAgenda;
    cl.m_eEtatObjet = st.eEtat;
    cl.SetTitre(nullptr, nullptr, CXYString<wchar_t>(L"T"));
    EXPECT_EQ(cl.m_eEtatObjet, st.eApresEcriture) << "after a plain write";

    cl.m_eEtatObjet = st.eEtat;
    cl.ForceIdentifiant(nullptr, nullptr, CXYString<wchar_t>(L"c@x"));
    CXArray<CGoogleEvenement*> tab;
    tab.Ajoute(Evenement(L"e1", ETAT_MODIFIE));
    cl.DonneTableauEvenements(tab);
    for (int i = 0; i < 3; ++i) Repond(200, "{\"id\":\"c@x\"}");
    EXPECT_TRUE(m_clConnexion->GglEcrit(&m_clCtx, &m_clErreur, &cl)) << m_clErreur.pszGetUserMessage();
    std::wstring sAttendu = st.pszRequetes;
    for (size_t n; (n = sAttendu.find(L'E')) != std::wstring::npos;)
        sAttendu.replace(n, 1, L"6 " + ksAPI + L"/c@x/events/e1");
    for (size_t n = 0; (n = sAttendu.find(L" /", n)) != std::wstring::npos;)
        sAttendu.replace(n, 1, L" " + ksAPI), n += ksAPI.size();
    for (size_t n = 0; (n = sAttendu.find(L"2 \n", n)) != std::wstring::npos;)
        sAttendu.replace(n, 3, L"2 " + ksAPI + L"\n"), n += ksAPI.size();
    EXPECT_EQ(Requetes(), sAttendu);
    EXPECT_EQ(cl.m_eEtatObjet, st.eApresCommit) << "after the commit";
    EXPECT_EQ(cl.nGetNbEvenement(), 1u) << "a changed event stays";
}
INSTANTIATE_TEST_SUITE_P(Agenda, EtatsAgenda, testing::ValuesIn(gtabEtats));

// The bounds of a fill: an incomplete date is absent; with neither bound the events ahead.
struct STCasBornes {
    const char* pszNom;
    CDateTime dtDebut, dtFin;
    const wchar_t* pszBornes; // "" for the present moment as timeMin
};
const STCasBornes gtabBornes[] = {
    {"Aucune", {}, {}, L""},
    // The month as a host may hold it, out of range: its byte set directly.
    {"Mois13", [] { CDateTime c = Date(2030, 6, 3); reinterpret_cast<unsigned char*>(&c)[1] = 13; return c; }(),
     {}, L""},
    {"FinSeule", {}, Date(2030, 6, 10, 12), L"&timeMax=2030-06-10T10:00:00.000Z"},
    {"Les2", Date(2030, 6, 3), Date(2030, 6, 10), L"&timeMin=2030-06-02T22:00:00.000Z&timeMax=2030-06-09T22:00:00.000Z"},
};
class BornesAgenda : public Agenda, public testing::WithParamInterface<STCasBornes> {};
TEST_P(BornesAgenda, Requete) {
    const STCasBornes& st = GetParam();
    m_clAgenda->ForceIdentifiant(nullptr, nullptr, CXYString<wchar_t>(L"a#b@c"));
    Repond(200, "{\"items\":[{\"id\":\"e\"}]}");
    EXPECT_TRUE(m_clConnexion->GglRemplitAgenda(&m_clCtx, &m_clErreur, m_clAgenda.pGet(), st.dtDebut,
                                                st.dtFin, L""));
    ASSERT_EQ(m_clLibShop.m_clHTTP.m_tabVues.size(), 1u);
    const std::wstring sDebut =
        ksAPI + L"/a%23b%40c/events?singleEvents=true&orderBy=startTime&maxResults=2500";
    const std::wstring& sURL = m_clLibShop.m_clHTTP.m_tabVues[0].sURL;
    if (*st.pszBornes) {
        EXPECT_EQ(sURL, sDebut + st.pszBornes);
    } else {
        // One bound, the present moment in UTC, to the second or so.
        CDateTimeRFC3339 clMaintenant;
        static_cast<CDateTime&>(clMaintenant) = DatesAgenda::dtMaintenantUTC();
        const std::wstring sMaintenant(DatesAgenda::sTexte(clMaintenant).sv());
        EXPECT_EQ(sURL.substr(0, sDebut.size() + 9 + 16), sDebut + L"&timeMin=" + sMaintenant.substr(0, 16));
        EXPECT_EQ(sURL.size(), sDebut.size() + 9 + 24);
    }
    EXPECT_EQ(m_clAgenda->nGetNbEvenement(), 1u);
}
INSTANTIATE_TEST_SUITE_P(Agenda, BornesAgenda, testing::ValuesIn(gtabBornes),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// A timed event written two hours east of UTC carries the local time and "+02:00"; read back
// it gives the same local time; the same moment written again marks nothing.
TEST_F(Agenda, EvenementALHeureLocale) {
    CRef<CGoogleEvenement> cl = CRef<CGoogleEvenement>::Adopt(Evenement(L"", ETAT_NEUF));
    cl->SetTitre(nullptr, nullptr, CXYString<wchar_t>(L"Revue \"Q2\"\n"));
    cl->SetDateDebut(&m_clCtx, &m_clErreur, Date(2012, 6, 4, 10));
    cl->SetDateFin(&m_clCtx, &m_clErreur, Date(2012, 6, 4, 11));
    EXPECT_EQ(std::wstring(cl->__czToJSON().sv()),
              L"{\"kind\": \"calendar#event\", \"id\":\"\", \"summary\":\"Revue \\\"Q2\\\"\\n\", "
              L"\"description\":\"\", \"location\":\"\", \"attendees\":[], "
              L"\"start\":{\"dateTime\":\"2012-06-04T10:00:00.000+02:00\", date:null}, "
              L"\"end\":{\"dateTime\":\"2012-06-04T11:00:00.000+02:00\", date:null}}");
    EXPECT_EQ(cl->GetDateDebut(&m_clCtx, &m_clErreur), Date(2012, 6, 4, 10));
    cl->m_eEtatObjet = ETAT_SYNCHRONISE;
    cl->SetDateDebut(&m_clCtx, &m_clErreur, Date(2012, 6, 4, 10));
    EXPECT_EQ(cl->m_eEtatObjet, ETAT_SYNCHRONISE) << "the same moment";

    // From the server, in any zone: its UTC moment, then the local time; all-day dates as
    // written.
    m_clAgenda->ForceIdentifiant(nullptr, nullptr, CXYString<wchar_t>(L"c"));
    Repond(200, "{\"items\":[{\"start\":{\"dateTime\":\"2012-06-04T03:00:00-05:00\"},"
                "\"end\":{\"dateTime\":\"2012-06-04T04:00:00-05:00\"}},"
                "{\"start\":{\"date\":\"2012-06-04\"},\"end\":{\"date\":\"2012-06-05\"},\"summary\":7}]}");
    ASSERT_TRUE(m_clConnexion->GglRemplitAgenda(&m_clCtx, &m_clErreur, m_clAgenda.pGet(), Date(2012, 6, 1),
                                                Date(2012, 6, 9), nullptr));
    auto clVue = CRef<IObjetCollection>::Retain(
        static_cast<IObjetCollection*>(m_clAgenda->AccesseurEvenement(nullptr, nullptr)));
    auto Lu = [&](int i) {
        return static_cast<CGoogleEvenement*>(CObjetComposanteBase::s_pclDepuisObjetBase(
            clVue->vpiGetElementCollection(i, nullptr, nullptr)));
    };
    EXPECT_EQ(Lu(0)->GetDateDebut(&m_clCtx, &m_clErreur), Date(2012, 6, 4, 10));
    EXPECT_EQ(Lu(1)->GetJourneeEntiere(nullptr, nullptr), 1);
    EXPECT_EQ(Lu(1)->GetDateFin(&m_clCtx, &m_clErreur), Date(2012, 6, 5)) << "as the server wrote it";
    EXPECT_EQ(Lu(1)->m_eEtatObjet, ETAT_SYNCHRONISE) << "a number under summary changes no text";
    EXPECT_TRUE(Lu(1)->GetTitre(nullptr, nullptr).bVide());
}

} // namespace
