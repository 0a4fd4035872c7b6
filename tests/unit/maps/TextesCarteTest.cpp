// The query texts of the static map objects, and the setters that refuse what the query
// cannot carry.
#include "maps/GestionMarqueurs.h"
#include "maps/GoogleChemin.h"
#include "maps/GoogleMarqueur.h"
#include "maps/GoogleParametre.h"
#include "maps/GooglePoint.h"

#include "frame/ModuleInfo.h"

#include "Ref.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <vector>

namespace {

struct STCoord {
    double dLatitude, dLongitude;
};

CRef<CGooglePoint> clPoint(STCoord st) {
    auto cl = CRef<CGooglePoint>::Retain(new CGooglePoint);
    cl->SetLatitude(nullptr, nullptr, st.dLatitude);
    cl->SetLongitude(nullptr, nullptr, st.dLongitude);
    return cl;
}

// A new point at the end of the path.
void AjoutePoint(CGoogleChemin& clChemin, STCoord st) {
    ASSERT_EQ(clChemin.veAjouteElementCollectionVide(nullptr, nullptr, nullptr), RESULTAT_OBJET_OK);
    CGooglePoint* pcl = clChemin.pclGetElement(clChemin.nGetNbElement() - 1);
    pcl->SetLatitude(nullptr, nullptr, st.dLatitude);
    pcl->SetLongitude(nullptr, nullptr, st.dLongitude);
}

// ---- A point ------------------------------------------------------------------------------

struct STCasPoint {
    const char* pszNom;
    STCoord st;
    const wchar_t* pszTexte;
};
const STCasPoint gtabPoint[] = {
    {"Origine", {0, 0}, L"0.000000,0.000000"},
    {"Paris", {48.8566, 2.3522}, L"48.856600,2.352200"},
    {"Negatifs", {-33.5, -70.25}, L"-33.500000,-70.250000"},
    {"ArrondiA6", {1.0000005, 0.1234564}, L"1.000001,0.123456"},
    {"Enorme", {1e20, -1e-9}, L"100000000000000000000.000000,-0.000000"},
};
class TextePoint : public testing::TestWithParam<STCasPoint> {};
TEST_P(TextePoint, LatitudeVirguleLongitude) {
    auto cl = clPoint(GetParam().st);
    EXPECT_STREQ(static_cast<const wchar_t*>(*cl), GetParam().pszTexte);
    EXPECT_TRUE(cl->bEstRenseigne());
}
INSTANTIATE_TEST_SUITE_P(Carte, TextePoint, testing::ValuesIn(gtabPoint),
                         [](const auto& i) { return std::string(i.param.pszNom); });

TEST(TextePoint, LaLocaleDuProcessusNeChangeRien) {
    // A host may set a locale whose decimal mark is a comma; the query wants a dot.
    const char* pszAvant = std::setlocale(LC_NUMERIC, nullptr);
    const std::string sAvant = pszAvant ? pszAvant : "C";
    if (!std::setlocale(LC_NUMERIC, "fr_FR.UTF-8") && !std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma installed";
    auto cl = clPoint({1.5, -2.25});
    const std::wstring s = static_cast<const wchar_t*>(*cl);
    std::setlocale(LC_NUMERIC, sAvant.c_str());
    EXPECT_EQ(s, L"1.500000,-2.250000");
}

// ---- A path -------------------------------------------------------------------------------

struct STCasChemin {
    const char* pszNom;
    int nCouleur, nOpacite, nEpaisseur;
    std::vector<STCoord> tabPoint;
    const wchar_t* pszTexte;
    int nOpaciteApres;
};
const STCasChemin gtabChemin[] = {
    // The defaults: red 255 is written red first, and opacity 50 is alpha 127.
    {"ParDefaut", 0xFF, 50, 5, {}, L"color:0xFF00007F|weight:5", 50},
    {"Opacite150Ramenee", 0xFF, 150, 5, {}, L"color:0xFF0000FF|weight:5", 100},
    {"Opacite100", 0xFF0000, 100, 2, {}, L"color:0x0000FFFF|weight:2", 100},
    {"Opacite0", 0x00FF00, 0, 1, {}, L"color:0x00FF0000|weight:1", 0},
    {"Opacite33", 0x00FF00, 33, 1, {}, L"color:0x00FF0054|weight:1", 33},
    // Capped above only: a negative opacity goes out as the integer arithmetic makes it.
    {"OpaciteNegative", 0, -20, 1, {}, L"color:0x000000FFFFFFCD|weight:1", -20},
    {"OctetsEchanges", 0x123456, 50, 5, {}, L"color:0x5634127F|weight:5", 50},
    {"OctetHautIgnore", 0x7F123456, 50, 5, {}, L"color:0x5634127F|weight:5", 50},
    {"DeuxPoints", 0x00FF00, 100, 3, {{1, 2}, {3.5, -4.25}},
     L"color:0x00FF00FF|weight:3|1.000000,2.000000|3.500000,-4.250000", 100},
};
class TexteChemin : public testing::TestWithParam<STCasChemin> {};
TEST_P(TexteChemin, CouleurAlphaEpaisseurPuisPoints) {
    const STCasChemin& c = GetParam();
    auto cl = CRef<CGoogleChemin>::Retain(new CGoogleChemin);
    cl->SetCouleur(nullptr, nullptr, c.nCouleur);
    cl->SetOpacite(nullptr, nullptr, c.nOpacite);
    cl->SetEpaisseur(nullptr, nullptr, c.nEpaisseur);
    for (const STCoord& st : c.tabPoint) AjoutePoint(*cl, st);
    EXPECT_STREQ(static_cast<const wchar_t*>(*cl), c.pszTexte);
    EXPECT_EQ(cl->GetOpacite(nullptr, nullptr), c.nOpaciteApres);
}
INSTANTIATE_TEST_SUITE_P(Carte, TexteChemin, testing::ValuesIn(gtabChemin),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// ---- A marker -----------------------------------------------------------------------------

struct STCasMarqueur {
    const char* pszNom;
    const wchar_t* pszTaille; // null: left at its default
    int nCouleur;             // -1: left at its default
    char cLettre;
    const wchar_t* pszStyle;
};
const STCasMarqueur gtabMarqueur[] = {
    {"ParDefaut", nullptr, -1, 0, L"size:|color:"},
    {"GrandAvecLettre", L"", 0xFF, 'a', L"size:|color:red|label:A"},
    {"MoyenAvecChiffre", L"mid", 0xFF0000, '7', L"size:mid|color:blue|label:7"},
    {"PetitSansEtiquette", L"small", 0x00FF00, 'B', L"size:small|color:green"},
    {"MiniSansEtiquette", L"tiny", 0x00FFFF, 'z', L"size:tiny|color:yellow"},
    {"SigneSansEtiquette", L"mid", 0xFFFFFF, '#', L"size:mid|color:white"},
    {"OctetAccentueSansEtiquette", L"mid", 0x40C0FF, '\xE9', L"size:mid|color:orange"},
    {"Gris", L"mid", 0xC0C0C0, 'Z', L"size:mid|color:gray|label:Z"},
    {"Violet", L"", 0xFF40C0, 0, L"size:|color:purple"},
    {"Noir", L"", 0, 0, L"size:|color:black"},
};
class StyleMarqueur : public testing::TestWithParam<STCasMarqueur> {};
TEST_P(StyleMarqueur, TailleCouleurEtiquette) {
    const STCasMarqueur& c = GetParam();
    auto cl = CRef<CGoogleMarqueur>::Retain(new CGoogleMarqueur);
    CXError clErreur(&gstMyModuleInfo60);
    if (c.pszTaille) cl->SetTaille(nullptr, &clErreur, c.pszTaille);
    if (c.nCouleur >= 0) cl->SetCouleur(nullptr, &clErreur, c.nCouleur);
    cl->SetLettre(nullptr, nullptr, c.cLettre);
    EXPECT_TRUE(clErreur.bEstPropre());
    EXPECT_STREQ(cl->pszGetStyle(), c.pszStyle);
}
INSTANTIATE_TEST_SUITE_P(Carte, StyleMarqueur, testing::ValuesIn(gtabMarqueur),
                         [](const auto& i) { return std::string(i.param.pszNom); });

TEST(MarqueurCarte, CoordonneesEtTexteSeul) {
    auto cl = CRef<CGoogleMarqueur>::Retain(new CGoogleMarqueur);
    cl->SetLatitude(nullptr, nullptr, 45.5);
    cl->SetLongitude(nullptr, nullptr, -73.25);
    cl->SetCouleur(nullptr, nullptr, 0xFF);
    EXPECT_STREQ(cl->pszGetCoordonnees(), L"45.500000,-73.250000");
    EXPECT_STREQ(static_cast<const wchar_t*>(*cl), L"markers=size:|color:red|45.500000,-73.250000");
}

// ---- The markers, grouped by style ----------------------------------------------------------

struct STMarqueurCas {
    const wchar_t* pszTaille;
    int nCouleur;
    char cLettre;
    STCoord st;
};
struct STCasGroupe {
    const char* pszNom;
    std::vector<STMarqueurCas> tabMarqueur;
    const wchar_t* pszTexte;
};
const STCasGroupe gtabGroupe[] = {
    {"Aucun", {}, L""},
    {"Un", {{L"mid", 0xFF, 0, {1, 2}}}, L"markers=size:mid|color:red|1.000000,2.000000"},
    {"DeuxDeMemeStyle",
     {{L"mid", 0xFF, 0, {1, 2}}, {L"mid", 0xFF, 0, {3, 4}}},
     L"markers=size:mid|color:red|1.000000,2.000000|3.000000,4.000000"},
    {"StylesAlternes",
     {{L"mid", 0xFF, 0, {1, 1}}, {L"small", 0xFF0000, 0, {2, 2}}, {L"mid", 0xFF, 0, {3, 3}},
      {L"small", 0xFF0000, 0, {4, 4}}},
     L"markers=size:mid|color:red|1.000000,1.000000|3.000000,3.000000"
     L"&markers=size:small|color:blue|2.000000,2.000000|4.000000,4.000000"},
    // The letter is part of the style: "a" and "A" label alike and go together.
    {"LettresDeCasseDifferente",
     {{L"", 0xFF, 'a', {1, 1}}, {L"", 0xFF, 'b', {2, 2}}, {L"", 0xFF, 'A', {3, 3}}},
     L"markers=size:|color:red|label:A|1.000000,1.000000|3.000000,3.000000"
     L"&markers=size:|color:red|label:B|2.000000,2.000000"},
    // On a small marker the letter is dropped, so that both are of one style.
    {"LettrePerdueMemeStyle",
     {{L"small", 0xFF, 'a', {1, 1}}, {L"small", 0xFF, 'b', {2, 2}}},
     L"markers=size:small|color:red|1.000000,1.000000|2.000000,2.000000"},
};
class GroupesMarqueurs : public testing::TestWithParam<STCasGroupe> {};
TEST_P(GroupesMarqueurs, UnGroupeParStyle) {
    auto cl = CRef<CGestionMarqueurs>::Retain(new CGestionMarqueurs);
    for (const STMarqueurCas& st : GetParam().tabMarqueur) {
        ASSERT_EQ(cl->veAjouteElementCollectionVide(nullptr, nullptr, nullptr), RESULTAT_OBJET_OK);
        CGoogleMarqueur* pcl = cl->pclGetElement(cl->nGetNbElement() - 1);
        pcl->SetTaille(nullptr, nullptr, st.pszTaille);
        pcl->SetCouleur(nullptr, nullptr, st.nCouleur);
        pcl->SetLettre(nullptr, nullptr, st.cLettre);
        pcl->SetLatitude(nullptr, nullptr, st.st.dLatitude);
        pcl->SetLongitude(nullptr, nullptr, st.st.dLongitude);
    }
    EXPECT_STREQ(static_cast<const wchar_t*>(*cl), GetParam().pszTexte);
}
INSTANTIATE_TEST_SUITE_P(Carte, GroupesMarqueurs, testing::ValuesIn(gtabGroupe),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// ---- The parameters -------------------------------------------------------------------------

struct STCasParametre {
    const char* pszNom;
    const wchar_t* pszFormat; // null: not set
    const wchar_t* pszLangue;
    bool bMobile;
    int nEchelle;
    std::vector<STCoord> tabPoint;
    std::vector<STCoord> tabMarqueur; // red, default size
    const wchar_t* pszTexte;
};
const STCasParametre gtabParametre[] = {
    {"RienDeRenseigne", nullptr, nullptr, false, 1, {}, {}, L""},
    {"EchelleDeux", nullptr, nullptr, false, 2, {}, {}, L"scale=2"},
    {"EchelleNegative", nullptr, nullptr, false, -3, {}, {}, L""},
    {"FormatSeul", L"png8", nullptr, false, 1, {}, {}, L"format=png8"},
    {"LangueEtMobile", nullptr, L"fr", true, 1, {}, {}, L"hl=fr&mobile=true"},
    {"CheminSansPointOmis", nullptr, nullptr, false, 1, {}, {{3, 4}},
     L"markers=size:|color:red|3.000000,4.000000"},
    {"Tout", L"jpg-baseline", L"de", true, 2, {{1, 2}}, {{3, 4}},
     L"format=jpg-baseline&hl=de&mobile=true&scale=2"
     L"&path=color:0xFF00007F|weight:5|1.000000,2.000000"
     L"&markers=size:|color:red|3.000000,4.000000"},
    {"CheminEnDernier", nullptr, nullptr, false, 1, {{1, 2}, {5, 6}}, {},
     L"path=color:0xFF00007F|weight:5|1.000000,2.000000|5.000000,6.000000"},
};
class TexteParametre : public testing::TestWithParam<STCasParametre> {};
TEST_P(TexteParametre, DansLOrdreSansEsperluetteFinale) {
    const STCasParametre& c = GetParam();
    auto cl = CRef<CGoogleParametre>::Retain(new CGoogleParametre);
    CXError clErreur(&gstMyModuleInfo60);
    if (c.pszFormat) cl->SetFormat(nullptr, &clErreur, c.pszFormat);
    if (c.pszLangue) cl->SetLangue(nullptr, &clErreur, c.pszLangue);
    cl->SetMobile(nullptr, &clErreur, c.bMobile);
    cl->SetEchelle(nullptr, &clErreur, c.nEchelle);
    for (const STCoord& st : c.tabPoint) AjoutePoint(cl->clGetChemin(), st);
    for (const STCoord& st : c.tabMarqueur) {
        cl->clGetMarqueurs().veAjouteElementCollectionVide(nullptr, nullptr, &clErreur);
        CGoogleMarqueur* pcl =
            cl->clGetMarqueurs().pclGetElement(cl->clGetMarqueurs().nGetNbElement() - 1);
        pcl->SetCouleur(nullptr, &clErreur, 0xFF);
        pcl->SetLatitude(nullptr, nullptr, st.dLatitude);
        pcl->SetLongitude(nullptr, nullptr, st.dLongitude);
    }
    ASSERT_TRUE(clErreur.bEstPropre());
    EXPECT_STREQ(static_cast<const wchar_t*>(*cl), c.pszTexte);
}
INSTANTIATE_TEST_SUITE_P(Carte, TexteParametre, testing::ValuesIn(gtabParametre),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// ---- The zone -------------------------------------------------------------------------------

struct STCasZone {
    const char* pszNom;
    bool bRenseigne;
    STCoord stDemi;
    bool bVisible;
    const wchar_t* pszTexte;
};
const STCasZone gtabZone[] = {
    {"NonRenseignee", false, {0, 0}, false, L"inchangé"},
    {"DemiEtendues", true, {0.5, 1}, true, L"9.500000,19.000000|10.500000,21.000000"},
    {"LatitudeNulle", true, {0, 1}, false, L"inchangé"},
    {"LongitudeNegative", true, {1, -1}, false, L"inchangé"},
};
class ZoneVisible : public testing::TestWithParam<STCasZone> {};
TEST_P(ZoneVisible, CoinsAutourDuCentre) {
    const STCasZone& c = GetParam();
    auto cl = CRef<CGoogleParametre>::Retain(new CGoogleParametre);
    if (c.bRenseigne) {
        cl->clGetZone().SetLatitude(nullptr, nullptr, c.stDemi.dLatitude);
        cl->clGetZone().SetLongitude(nullptr, nullptr, c.stDemi.dLongitude);
    }
    CTString s = L"inchangé";
    EXPECT_EQ(cl->bGetZoneVisible(10, 20, s), c.bVisible);
    EXPECT_EQ(s, c.pszTexte);
}
INSTANTIATE_TEST_SUITE_P(Carte, ZoneVisible, testing::ValuesIn(gtabZone),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// ---- Values the query cannot carry ----------------------------------------------------------

class CouleurRefusee : public testing::TestWithParam<int> {};
TEST_P(CouleurRefusee, Erreur600015EtPlusDeNom) {
    auto cl = CRef<CGoogleMarqueur>::Retain(new CGoogleMarqueur);
    cl->SetCouleur(nullptr, nullptr, 0xFF0000);
    CXError clErreur(&gstMyModuleInfo60);
    cl->SetCouleur(nullptr, &clErreur, GetParam());
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600015u);
    EXPECT_FALSE(clErreur.bEstPropre());
    EXPECT_EQ(cl->GetCouleur(nullptr, nullptr), GetParam());
    EXPECT_STREQ(cl->pszGetStyle(), L"size:|color:") << "the former name does not linger";
}
INSTANTIATE_TEST_SUITE_P(Carte, CouleurRefusee,
                         testing::Values(0x123456, 0xFE, -1, 0x010000FF, 0x01000000));

class TailleRefusee : public testing::TestWithParam<const wchar_t*> {};
TEST_P(TailleRefusee, Erreur600016EtTailleGardee) {
    auto cl = CRef<CGoogleMarqueur>::Retain(new CGoogleMarqueur);
    cl->SetTaille(nullptr, nullptr, L"tiny");
    CXError clErreur(&gstMyModuleInfo60);
    cl->SetTaille(nullptr, &clErreur, GetParam());
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600016u);
    EXPECT_STREQ(cl->GetTaille(nullptr, nullptr), L"tiny");
}
INSTANTIATE_TEST_SUITE_P(Carte, TailleRefusee,
                         testing::Values(L"large", L"Small", L" mid", L"tiny ", L"normal"));

TEST(MarqueurCarte, UneTailleNulleEstLaGrande) {
    auto cl = CRef<CGoogleMarqueur>::Retain(new CGoogleMarqueur);
    cl->SetTaille(nullptr, nullptr, L"mid");
    CXError clErreur(&gstMyModuleInfo60);
    cl->SetTaille(nullptr, &clErreur, nullptr);
    EXPECT_TRUE(clErreur.bEstPropre());
    EXPECT_STREQ(cl->GetTaille(nullptr, nullptr), L"");
}

class FormatRefuse : public testing::TestWithParam<const wchar_t*> {};
TEST_P(FormatRefuse, Erreur600018EtFormatGarde) {
    auto cl = CRef<CGoogleParametre>::Retain(new CGoogleParametre);
    cl->SetFormat(nullptr, nullptr, L"gif");
    CXError clErreur(&gstMyModuleInfo60);
    cl->SetFormat(nullptr, &clErreur, GetParam());
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600018u);
    EXPECT_STREQ(cl->GetFormat(nullptr, nullptr), L"gif");
    EXPECT_STREQ(static_cast<const wchar_t*>(*cl), L"format=gif");
}
INSTANTIATE_TEST_SUITE_P(Carte, FormatRefuse,
                         testing::Values(L"GIF", L"bmp", L"", nullptr, L"png", L"jpg "));

TEST(ErreursCarte, SansObjetErreurRienNeCasse) {
    auto clM = CRef<CGoogleMarqueur>::Retain(new CGoogleMarqueur);
    clM->SetCouleur(nullptr, nullptr, 0x42);
    clM->SetTaille(nullptr, nullptr, L"huge");
    auto clP = CRef<CGoogleParametre>::Retain(new CGoogleParametre);
    clP->SetFormat(nullptr, nullptr, L"tiff");
    EXPECT_EQ(clM->GetCouleur(nullptr, nullptr), 0x42);
    EXPECT_STREQ(clP->GetFormat(nullptr, nullptr), L"");
}

// ---- Reset ----------------------------------------------------------------------------------

TEST(RAZCarte, LesValeursParDefautReviennent) {
    auto cl = CRef<CGoogleParametre>::Retain(new CGoogleParametre);
    cl->SetFormat(nullptr, nullptr, L"png32");
    cl->SetLangue(nullptr, nullptr, L"it");
    cl->SetMobile(nullptr, nullptr, 1);
    cl->SetCadre(nullptr, nullptr, 1);
    cl->SetEchelle(nullptr, nullptr, 4);
    cl->clGetChemin().SetOpacite(nullptr, nullptr, 80);
    cl->clGetChemin().veAjouteElementCollectionVide(nullptr, nullptr, nullptr);
    cl->clGetMarqueurs().veAjouteElementCollectionVide(nullptr, nullptr, nullptr);
    cl->clGetZone().SetLatitude(nullptr, nullptr, 1);
    auto clAncienChemin = CRef<CGoogleChemin>::Retain(&cl->clGetChemin());
    auto clAnciensMarqueurs = CRef<CGestionMarqueurs>::Retain(&cl->clGetMarqueurs());

    cl->RAZ();
    EXPECT_STREQ(static_cast<const wchar_t*>(*cl), L"");
    EXPECT_FALSE(cl->GetCadre(nullptr, nullptr));
    EXPECT_EQ(cl->GetEchelle(nullptr, nullptr), 1);
    EXPECT_NE(&cl->clGetChemin(), clAncienChemin.pGet()) << "a new path";
    EXPECT_EQ(cl->clGetChemin().nGetNbElement(), 0u);
    EXPECT_EQ(cl->clGetChemin().GetOpacite(nullptr, nullptr), 50);
    EXPECT_NE(&cl->clGetMarqueurs(), clAnciensMarqueurs.pGet()) << "new markers";
    EXPECT_EQ(cl->clGetMarqueurs().nGetNbElement(), 0u);
    // What a script still holds is left as it was.
    EXPECT_EQ(clAncienChemin->nGetNbElement(), 1u);
    EXPECT_EQ(clAncienChemin->GetOpacite(nullptr, nullptr), 80);
    EXPECT_EQ(clAnciensMarqueurs->nGetNbElement(), 1u);
    EXPECT_FALSE(cl->clGetZone().bEstRenseigne());

    auto clM = CRef<CGoogleMarqueur>::Retain(new CGoogleMarqueur);
    clM->SetTaille(nullptr, nullptr, L"mid");
    clM->SetCouleur(nullptr, nullptr, 0);
    clM->SetLettre(nullptr, nullptr, 'q');
    clM->RAZ();
    EXPECT_STREQ(clM->pszGetStyle(), L"size:|color:");
    EXPECT_EQ(clM->GetCouleur(nullptr, nullptr), 0xFF);
}

} // namespace
