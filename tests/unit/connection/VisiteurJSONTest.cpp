// The walk that hands each JSON leaf to a subclass with its dotted path.
#include "HoteEssai.h"

#include "connection/VisiteurJSONSetPropriete.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Notes "path=value" for each leaf and "path[]" for each array, in the order met.
class CVisiteurNote final : public CVisiteurJSONSetPropriete {
public:
    std::vector<std::wstring> m_tabNote;

protected:
    void _vSetProprieteFromJSON(std::wstring_view sChemin, CAny& clValeur) override {
        std::wstring s(sChemin);
        s += L'=';
        if (clValeur.nGetType() == 16) {
            CXYString<wchar_t> sValeur;
            clValeur.__nFillString(sValeur);
            s += sValeur.sv();
        } else if (clValeur.nGetType() == 9) {
            long n = 0;
            clValeur.nGetINT_64(&n);
            s += std::to_wstring(n);
        } else {
            s += L"type" + std::to_wstring(clValeur.nGetType());
        }
        m_tabNote.push_back(s);
    }
    void _vSetTableauFromJSON(std::wstring_view sChemin, ITableauJSON& cl) override {
        m_tabNote.push_back(std::wstring(sChemin) + L"[" +
                            std::to_wstring(cl.vnGetNbElement()) + L"]");
    }
};

struct STCasChemins {
    const char* pszNom;
    const wchar_t* pszTexte;
    std::vector<std::wstring> tabNote;
};
const STCasChemins gtabChemins[] = {
    {"Plat", L"{\"a\":\"x\",\"b\":2}", {L"a=x", L"b=2"}},
    {"Imbrique", L"{\"start\":{\"date\":\"d\",\"h\":{\"m\":1}},\"n\":2}",
     {L"start.date=d", L"start.h.m=1", L"n=2"}},
    {"TableauEntier", L"{\"t\":[1,2,3],\"u\":\"apres\"}", {L"t[3]", L"u=apres"}},
    {"TableauRacine", L"[1,{\"a\":1}]", {L"[2]"}},
    {"ValeurRacine", L"\"seul\"", {L"=seul"}},
    {"NullEtBooleen", L"{\"z\":null,\"v\":true}", {L"z=type0", L"v=type1"}},
    {"ObjetVidePuisSuite", L"{\"o\":{},\"p\":\"q\"}", {L"p=q"}},
};
class CheminsJSON : public testing::TestWithParam<STCasChemins> {};
TEST_P(CheminsJSON, ChaqueFeuilleAvecSonChemin) {
    CRef<IElementJSON> cl = clArbreEssai(GetParam().pszTexte);
    ASSERT_TRUE(cl);
    CVisiteurNote clVisiteur;
    cl->vAccepte(clVisiteur);
    EXPECT_EQ(clVisiteur.m_tabNote, GetParam().tabNote);
}
INSTANTIATE_TEST_SUITE_P(Visiteur, CheminsJSON, testing::ValuesIn(gtabChemins),
                         [](const auto& i) { return std::string(i.param.pszNom); });

// A subclass that walks an array itself gets each element under the array's path.
class CVisiteurElements final : public CVisiteurJSONSetPropriete {
public:
    std::vector<std::wstring> m_tabChemin;

protected:
    void _vSetProprieteFromJSON(std::wstring_view sChemin, CAny&) override {
        m_tabChemin.emplace_back(sChemin);
    }
    void _vSetTableauFromJSON(std::wstring_view, ITableauJSON& cl) override {
        cl.vAccepte(*this);
    }
};

TEST(VisiteurElements, LesElementsParcourusParLaSousClasse) {
    CRef<IElementJSON> cl = clArbreEssai(L"{\"liste\":[{\"nom\":\"a\"},{\"nom\":\"b\"}],\"fin\":1}");
    ASSERT_TRUE(cl);
    CVisiteurElements clVisiteur;
    cl->vAccepte(clVisiteur);
    // Each element goes down under "liste", and the path is whole again after the array.
    ASSERT_EQ(clVisiteur.m_tabChemin.size(), 3u);
    EXPECT_EQ(clVisiteur.m_tabChemin[0].substr(0, 6), L"liste.");
    EXPECT_EQ(clVisiteur.m_tabChemin[0].substr(clVisiteur.m_tabChemin[0].size() - 3), L"nom");
    EXPECT_EQ(clVisiteur.m_tabChemin[1], clVisiteur.m_tabChemin[0]);
    EXPECT_EQ(clVisiteur.m_tabChemin[2], L"fin");
}

} // namespace
