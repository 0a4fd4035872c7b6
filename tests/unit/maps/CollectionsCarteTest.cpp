// The map objects as the host sees them: constructed, read, written, copied and reset through
// the rows of the component's tables, and their collections edited through the collection
// interfaces. Every object is made and released as the host would, so that ASan sees each
// reference given back.
#include "VMEnregistreur.h"

#include "maps/GestionMarqueurs.h"
#include "maps/GoogleChemin.h"
#include "maps/GoogleMarqueur.h"
#include "maps/GoogleParametre.h"
#include "maps/GooglePoint.h"

#include "frame/ModuleInfo.h"

#include "Ref.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

// Class numbers of the map types.
constexpr unsigned knChemin = 7, knPoint = 11, knMarqueur = 12, knParametre = 13;

CTypeEssai gclTypePoint(L"gglCoordonnée"), gclTypeMarqueur(L"gglMarqueur"),
    gclTypeChemin(L"gglChemin"), gclTypeParametre(L"gglParamètreCarte");

class ObjetsCarte : public testing::Test {
protected:
    void SetUp() override {
        stClasseEssai(knPoint).pfnType(&gclTypePoint);
        stClasseEssai(knMarqueur).pfnType(&gclTypeMarqueur);
        stClasseEssai(knChemin).pfnType(&gclTypeChemin);
        stClasseEssai(knParametre).pfnType(&gclTypeParametre);
    }
    void TearDown() override {
        for (unsigned n : {knPoint, knMarqueur, knChemin, knParametre})
            stClasseEssai(n).pfnType(nullptr);
    }

    // A new object as the host makes one: the constructor row, then the host's reference.
    template <class C> CRef<C> clNeuf(unsigned nClasse) {
        void* p = stClasseEssai(nClasse).pstConstructeur[0].pfnConstructeur(nullptr, &m_clCtx,
                                                                            &m_clErreur);
        EXPECT_NE(p, nullptr);
        auto* piBase = static_cast<IObjetBase*>(p);
        EXPECT_EQ(static_cast<CObjetComposante*>(piBase->vpiGetIObjetComposante())->nGetRef(), 0)
            << "a new object belongs to the host's first reference";
        void* pNatif = nullptr;
        piBase->vpiGetIObjetComposante()->vbGetObjetC(pNatif, C::ms_piType, 0, &m_clErreur);
        EXPECT_NE(pNatif, nullptr);
        return CRef<C>::Retain(static_cast<C*>(pNatif));
    }
    CRef<CGooglePoint> clPoint(double dLatitude) {
        auto cl = clNeuf<CGooglePoint>(knPoint);
        cl->SetLatitude(&m_clCtx, &m_clErreur, dLatitude);
        return cl;
    }
    // The latitudes of the path's points, as "1 2 3".
    static std::string sLatitudes(CGoogleChemin& cl) {
        std::string s;
        for (int i = 0; i < cl.vnGetNbElementCollection(nullptr, nullptr); ++i) {
            IObjetBase* pi = cl.vpiGetElementCollection(i, nullptr, nullptr);
            auto* pcl = static_cast<CGooglePoint*>(pi->vpiGetIObjetComposante()->vpGetObjetC());
            if (!s.empty()) s += ' ';
            s += std::to_string(static_cast<int>(pcl->dGetLatitude()));
        }
        return s;
    }
    void ExpectRefus(eRESULTATOBJET e, unsigned nCode) {
        EXPECT_EQ(e, keRefusCollection);
        EXPECT_EQ(m_clErreur.nGetUserErrorCode(), nCode);
        m_clErreur.RAZ();
    }

    CVMEnregistreur m_clVM;
    CCtxInfo m_clCtx{nullptr, nullptr, &m_clVM};
    CXError m_clErreur{&gstMyModuleInfo60};
};

TEST_F(ObjetsCarte, UnCheminRefuseSon101ePoint) {
    auto clChemin = clNeuf<CGoogleChemin>(knChemin);
    for (int i = 0; i < 100; ++i) {
        auto clP = clPoint(i);
        int nPosition = -1;
        ASSERT_EQ(clChemin->veAjouteElementCollection(clP.pGet(), &nPosition, &m_clCtx,
                                                      &m_clErreur),
                  RESULTAT_OBJET_OK);
        EXPECT_EQ(nPosition, i);
    }
    auto clDeTrop = clPoint(100);
    const std::function<eRESULTATOBJET()> tabAjout[] = {
        [&] { return clChemin->veAjouteElementCollection(clDeTrop.pGet(), nullptr, &m_clCtx,
                                                         &m_clErreur); },
        [&] { return clChemin->veInsereElementCollection(0, clDeTrop.pGet(), &m_clCtx,
                                                         &m_clErreur); },
        [&] { return clChemin->veInsereElementCollectionVide(0, &m_clCtx, &m_clErreur); },
    };
    for (const auto& fn : tabAjout) {
        EXPECT_EQ(fn(), keRefusCollection);
        EXPECT_EQ(static_cast<uint32_t>(keRefusCollection), 0x80000001u);
        EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600014u);
        EXPECT_NE(std::wstring(m_clErreur.pszGetUserMessage()).find(L"100"), std::wstring::npos)
            << "the message names the maximum";
        m_clErreur.RAZ();
    }
    EXPECT_EQ(clChemin->nGetNbElement(), 100u);
    EXPECT_EQ(clDeTrop->nGetRef(), 1) << "a refused point is not kept";
    // The append of a new empty point is the one route the maximum leaves open.
    EXPECT_EQ(clChemin->veAjouteElementCollectionVide(nullptr, &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_TRUE(m_clErreur.bEstPropre());
    EXPECT_EQ(clChemin->nGetNbElement(), 101u);
    EXPECT_EQ(clChemin->veSupprimeElementCollection(100, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    // Room made, the path takes a point again.
    EXPECT_EQ(clChemin->veSupprimeElementCollection(99, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(clChemin->veAjouteElementCollection(clDeTrop.pGet(), nullptr, &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
}

TEST_F(ObjetsCarte, AjoutInsertionSuppressionDeplacementEchange) {
    auto clChemin = clNeuf<CGoogleChemin>(knChemin);
    CRef<CGooglePoint> tabP[] = {clPoint(1), clPoint(2), clPoint(3), clPoint(4), clPoint(5)};
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(clChemin->veAjouteElementCollection(tabP[i].pGet(), nullptr, &m_clCtx,
                                                      &m_clErreur),
                  RESULTAT_OBJET_OK);
    EXPECT_EQ(sLatitudes(*clChemin), "1 2 3");
    EXPECT_EQ(tabP[0]->nGetRef(), 2) << "the path holds a reference of its own";

    EXPECT_EQ(clChemin->veInsereElementCollection(0, tabP[3].pGet(), &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(clChemin->veInsereElementCollection(4, tabP[4].pGet(), &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(sLatitudes(*clChemin), "4 1 2 3 5");
    ExpectRefus(clChemin->veInsereElementCollection(6, tabP[0].pGet(), &m_clCtx, &m_clErreur),
                600006);
    ExpectRefus(clChemin->veInsereElementCollectionVide(-1, &m_clCtx, &m_clErreur), 600006);

    EXPECT_EQ(clChemin->veDeplaceElementCollection(0, 4, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(sLatitudes(*clChemin), "1 2 3 5 4");
    EXPECT_EQ(clChemin->veDeplaceElementCollection(3, 1, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(sLatitudes(*clChemin), "1 5 2 3 4");
    ExpectRefus(clChemin->veDeplaceElementCollection(0, 5, &m_clCtx, &m_clErreur), 600006);

    EXPECT_EQ(clChemin->veEchangeElementCollection(0, 4, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(sLatitudes(*clChemin), "4 5 2 3 1");
    ExpectRefus(clChemin->veEchangeElementCollection(1, 9, &m_clCtx, &m_clErreur), 600006);
    EXPECT_EQ(sLatitudes(*clChemin), "4 5 2 3 1") << "a refusal changes nothing";

    EXPECT_EQ(clChemin->veSupprimeElementCollection(1, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(sLatitudes(*clChemin), "4 2 3 1");
    EXPECT_EQ(tabP[4]->nGetRef(), 1) << "a removed point is given back";
    ExpectRefus(clChemin->veSupprimeElementCollection(4, &m_clCtx, &m_clErreur), 600006);

    int nPosition = -1;
    EXPECT_EQ(clChemin->veAjouteElementCollectionVide(&nPosition, &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(nPosition, 4);
    EXPECT_EQ(clChemin->veInsereElementCollectionVide(0, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(sLatitudes(*clChemin), "0 4 2 3 1 0");
    EXPECT_EQ(clChemin->veAjouteElementCollectionParametre(nullptr, &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_NON_SUPPORTE);

    EXPECT_EQ(clChemin->vpiGetElementCollection(6, &m_clCtx, &m_clErreur), nullptr);
    EXPECT_EQ(clChemin->vpiGetElementCollection(-1, &m_clCtx, &m_clErreur), nullptr);
    EXPECT_TRUE(m_clErreur.bEstPropre()) << "reading past the end is no error";

    EXPECT_EQ(clChemin->veSupprimeToutElementCollection(&m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(clChemin->vnGetNbElementCollection(&m_clCtx, &m_clErreur), 0);
    for (auto& cl : tabP) EXPECT_EQ(cl->nGetRef(), 1);
}

TEST_F(ObjetsCarte, UnElementDUneAutreClasseEstRefuse) {
    auto clChemin = clNeuf<CGoogleChemin>(knChemin);
    auto clMarqueur = clNeuf<CGoogleMarqueur>(knMarqueur);
    ExpectRefus(clChemin->veAjouteElementCollection(clMarqueur.pGet(), nullptr, &m_clCtx,
                                                    &m_clErreur),
                600004);
    ExpectRefus(clChemin->veAjouteElementCollection(nullptr, nullptr, &m_clCtx, &m_clErreur),
                600004);
    // Before the host described the class, nothing can be told apart: nothing is taken.
    auto clP = clPoint(1);
    stClasseEssai(knPoint).pfnType(nullptr);
    ExpectRefus(clChemin->veAjouteElementCollection(clP.pGet(), nullptr, &m_clCtx, &m_clErreur),
                600004);
    EXPECT_EQ(clChemin->nGetNbElement(), 0u);
}

TEST_F(ObjetsCarte, LeCheminEstSaPropreCollection) {
    auto clChemin = clNeuf<CGoogleChemin>(knChemin);
    const STKLAccesseur& st = stAccesseurEssai(stClasseEssai(knChemin), "Point");
    void* p = st.pfnAccesseur(clChemin.pGet(), &m_clCtx, &m_clErreur);
    auto* piCollection = static_cast<IObjetCollection*>(p);
    EXPECT_EQ(piCollection, static_cast<IObjetCollection*>(clChemin.pGet()));
    EXPECT_EQ(clChemin->piGetObjetBase()->vpiGetIObjetCollection(), piCollection);
    EXPECT_EQ(piCollection->vpiGetObjetBase(), clChemin->piGetObjetBase());
    // One count for every side.
    piCollection->vAddRef();
    EXPECT_EQ(clChemin->nGetRef(), 2);
    piCollection->vRelease();
    EXPECT_EQ(clChemin->nGetRef(), 1);

    IObjetCollectionModifiable* piModifiable = piCollection->vpiGetIObjetCollectionModifiable();
    ASSERT_NE(piModifiable, nullptr);
    auto clP = clPoint(7);
    EXPECT_EQ(piModifiable->veAjouteElementCollection(clP.pGet(), nullptr, &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(piCollection->vnGetNbElementCollection(&m_clCtx, &m_clErreur), 1);
    EXPECT_EQ(piCollection->vpiGetElementCollection(0, &m_clCtx, &m_clErreur),
              clP->piGetObjetBase());
}

TEST_F(ObjetsCarte, LesMarqueursDerriereLAccesseur) {
    auto clParam = clNeuf<CGoogleParametre>(knParametre);
    const STKLAccesseur& st = stAccesseurEssai(stClasseEssai(knParametre), "Marqueur");
    auto* piCollection = static_cast<IObjetCollection*>(
        st.pfnAccesseur(clParam.pGet(), &m_clCtx, &m_clErreur));
    ASSERT_EQ(piCollection, static_cast<IObjetCollection*>(&clParam->clGetMarqueurs()));
    IObjetCollectionModifiable* pi = piCollection->vpiGetIObjetCollectionModifiable();
    ASSERT_NE(pi, nullptr);

    auto clM1 = clNeuf<CGoogleMarqueur>(knMarqueur);
    auto clM2 = clNeuf<CGoogleMarqueur>(knMarqueur);
    clM1->SetLatitude(&m_clCtx, &m_clErreur, 1);
    clM2->SetLatitude(&m_clCtx, &m_clErreur, 2);
    clM2->SetCouleur(&m_clCtx, &m_clErreur, 0);
    EXPECT_EQ(pi->veAjouteElementCollection(clM1.pGet(), nullptr, &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(pi->veInsereElementCollection(0, clM2.pGet(), &m_clCtx, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(pi->veEchangeElementCollection(0, 1, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_STREQ(static_cast<const wchar_t*>(*clParam),
                 L"markers=size:|color:|1.000000,0.000000&markers=size:|color:black|2.000000,0.000000");
    EXPECT_EQ(pi->veDeplaceElementCollection(1, 0, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(piCollection->vpiGetElementCollection(0, &m_clCtx, &m_clErreur),
              clM2->piGetObjetBase());

    auto clPoint1 = clPoint(3);
    ExpectRefus(pi->veAjouteElementCollection(clPoint1.pGet(), nullptr, &m_clCtx, &m_clErreur),
                600004);
    // No limit on markers.
    for (int i = 0; i < 150; ++i)
        ASSERT_EQ(pi->veAjouteElementCollectionVide(nullptr, &m_clCtx, &m_clErreur),
                  RESULTAT_OBJET_OK);
    EXPECT_EQ(piCollection->vnGetNbElementCollection(&m_clCtx, &m_clErreur), 152);
    EXPECT_EQ(pi->veSupprimeElementCollection(0, &m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(clM2->nGetRef(), 1);
    EXPECT_EQ(pi->veSupprimeToutElementCollection(&m_clCtx, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(clM1->nGetRef(), 1);
}

TEST_F(ObjetsCarte, LaZoneEtLeCheminGardentLeursParametresEnVie) {
    const STKLOClasse& stParam = stClasseEssai(knParametre);
    auto clParam = clNeuf<CGoogleParametre>(knParametre);
    CGoogleParametre* pclParam = clParam.pGet();

    stProprieteEssai(stParam, "Zone").pfnGetObjet(pclParam, &m_clCtx, &m_clErreur);
    ASSERT_EQ(m_clVM.m_tabRetour.size(), 1u);
    EXPECT_EQ(m_clVM.m_tabRetour[0].nType, 111);
    auto clZone = CRef<IObjetBase>::Retain(m_clVM.m_tabRetour[0].Valeur<IObjetBase*>());
    EXPECT_EQ(clZone.pGet(), pclParam->clGetZone().piGetObjetBase());
    EXPECT_EQ(pclParam->nGetRef(), 2) << "the zone counts on its parameters";

    stProprieteEssai(stParam, "Chemin").pfnGetObjet(pclParam, &m_clCtx, &m_clErreur);
    auto clChemin = CRef<IObjetBase>::Retain(m_clVM.m_tabRetour[1].Valeur<IObjetBase*>());
    EXPECT_EQ(clChemin.pGet(), pclParam->clGetChemin().piGetObjetBase());
    EXPECT_EQ(m_clVM.m_tabRetour[1].nType, 111);

    clParam.Reset();
    EXPECT_EQ(pclParam->nGetRef(), 1);
    // The zone is written through its own class's rows, as a script would: params.Zone.Latitude.
    void* pZone = nullptr;
    ASSERT_TRUE(clZone->vpiGetIObjetComposante()->vbGetObjetC(pZone, &gclTypePoint, 0, &m_clErreur));
    const STKLOClasse& stPoint = stClasseEssai(knPoint);
    EcritEssai(stProprieteEssai(stPoint, "Latitude").pfnSet, pZone, 0.5, &m_clCtx, &m_clErreur);
    EcritEssai(stProprieteEssai(stPoint, "Longitude").pfnSet, pZone, 0.25, &m_clCtx, &m_clErreur);
    CTString s;
    EXPECT_TRUE(pclParam->bGetZoneVisible(1, 1, s));
    EXPECT_EQ(s, L"0.500000,0.750000|1.500000,1.250000");
    clZone.Reset(); // the parameters go with their zone's last reference
    // The path outlives its parameters while held.
    auto* pclChemin = static_cast<CGoogleChemin*>(clChemin->vpiGetIObjetComposante()->vpGetObjetC());
    EXPECT_EQ(pclChemin->nGetRef(), 1);
    EXPECT_STREQ(static_cast<const wchar_t*>(*pclChemin), L"color:0xFF00007F|weight:5");
}

TEST_F(ObjetsCarte, LaCopieEstProfonde) {
    const STKLOClasse& st = stClasseEssai(knParametre);
    auto clSource = clNeuf<CGoogleParametre>(knParametre);
    clSource->SetFormat(&m_clCtx, &m_clErreur, L"png32");
    clSource->SetLangue(&m_clCtx, &m_clErreur, L"es");
    clSource->SetEchelle(&m_clCtx, &m_clErreur, 2);
    clSource->SetCadre(&m_clCtx, &m_clErreur, 1);
    clSource->clGetZone().SetLatitude(&m_clCtx, &m_clErreur, 3);
    clSource->clGetZone().SetLongitude(&m_clCtx, &m_clErreur, 4);
    auto clP = clPoint(9);
    clSource->clGetChemin().veAjouteElementCollection(clP.pGet(), nullptr, &m_clCtx, &m_clErreur);
    clSource->clGetMarqueurs().veAjouteElementCollectionVide(nullptr, &m_clCtx, &m_clErreur);
    clSource->clGetMarqueurs().pclGetElement(0)->SetCouleur(&m_clCtx, &m_clErreur, 0xFF00);

    auto clCopie = clNeuf<CGoogleParametre>(knParametre);
    st.pfnCopie(clCopie.pGet(), clSource.pGet(), &m_clCtx, &m_clErreur);
    const std::wstring sSource = static_cast<const wchar_t*>(*clSource);
    EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(*clCopie)), sSource);
    EXPECT_TRUE(clCopie->GetCadre(&m_clCtx, &m_clErreur));
    CTString sZone;
    EXPECT_TRUE(clCopie->bGetZoneVisible(10, 10, sZone));
    EXPECT_NE(clCopie->clGetChemin().pclGetElement(0), clP.pGet()) << "a new point, not shared";
    EXPECT_NE(&clCopie->clGetChemin(), &clSource->clGetChemin());

    clP->SetLatitude(&m_clCtx, &m_clErreur, -1);
    clSource->clGetMarqueurs().pclGetElement(0)->SetCouleur(&m_clCtx, &m_clErreur, 0);
    EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(*clCopie)), sSource);

    st.pfnRAZ(clCopie.pGet(), &m_clCtx, &m_clErreur);
    EXPECT_STREQ(static_cast<const wchar_t*>(*clCopie), L"");
    EXPECT_TRUE(m_clErreur.bEstPropre());
}

} // namespace
