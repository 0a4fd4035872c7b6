// The frame's own pieces, inside the component: the library object, the shared host services
// and their lifetimes, identifiers, and the memory given back at the end.
#include "HoteEssai.h"

#include "frame/BaseExecutionDLL.h"
#include "frame/ComposanteGGL.h"
#include "frame/IdGenerator.h"
#include "frame/ModuleInfo.h"
#include "frame/RecycleurMemoire.h"

#include "Any.h"
#include "HTTPService.h"
#include "ImageService.h"
#include "JSONService.h"
#include "LibShop.h"
#include "ObjectInterfaces.h"
#include "VM.h"
#include "XError.h"
#include "XMLService.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <vector>

namespace {

class ServicesHote : public testing::Test {
protected:
    void SetUp() override { CInformationDLL::ms_piLibShop = &m_clLibShop; }
    void TearDown() override {
        CComposanteGGL().TermCompo();
        CInformationDLL::ms_piLibShop = nullptr;
        EXPECT_EQ(m_clLibShop.m_clXML->nGetRef(), 1) << "every reference given back";
        EXPECT_EQ(m_clLibShop.m_clJSON.m_nRef, 0);
    }
    CLibShopEssai m_clLibShop;
};

TEST_F(ServicesHote, XMLPrisALaPremiereUtilisationEtRendusParTermCompo) {
    auto clVide = CComposanteGGL::s_piGetXMLDoc(nullptr);
    ASSERT_TRUE(clVide);
    EXPECT_EQ(clVide->piGetRacine(0), nullptr) << "null and empty texts give new documents";
    auto clVide2 = CComposanteGGL::s_piGetXMLDoc(L"");
    EXPECT_TRUE(clVide2 && clVide2.pGet() != clVide.pGet());

    auto clDoc = piGetXMLDoc(L"<a>é</a>");
    ASSERT_TRUE(clDoc);
    auto clRacine = CRef<INoeudXML>::Adopt(clDoc->piGetRacine(0));
    ASSERT_TRUE(clRacine);
    EXPECT_EQ(m_clLibShop.nNbDemandes(gszServiceXML), 1) << "asked once, then kept";

    CComposanteGGL clAutre; // any library object ends the shared services
    clAutre.TermCompo();
    EXPECT_EQ(CComposanteGGL::ms_piGestionXML, nullptr);
    CComposanteGGL::s_piGetXMLDoc(nullptr);
    EXPECT_EQ(m_clLibShop.nNbDemandes(gszServiceXML), 2) << "and taken again at next use";
}

TEST_F(ServicesHote, JSONAnalyseLeTexteUTF8) {
    CXError clErreur(&gstMyModuleInfo60);
    auto clRacine = CComposanteGGL::s_piGetJSON("{\"a\":\"\xC3\xA9\"}", &clErreur);
    ASSERT_TRUE(clRacine);
    EXPECT_EQ(clRacine->veGetGenre(), GENRE_JSON_OBJET);
    EXPECT_EQ(m_clLibShop.m_clJSON.m_tabRecu, std::vector<std::string>{"{\"a\":\"\xC3\xA9\"}"});
    CComposanteGGL::s_piGetJSON("[]", &clErreur);
    EXPECT_EQ(m_clLibShop.nNbDemandes(gszServiceJSON), 1);
}

TEST_F(ServicesHote, SansServiceRienNestFabrique) {
    CInformationDLL::ms_piLibShop = nullptr;
    CXError clErreur(&gstMyModuleInfo60);
    EXPECT_FALSE(CComposanteGGL::s_piGetJSON("{}", &clErreur));
    EXPECT_FALSE(CComposanteGGL::s_piGetXMLDoc(L"<a/>"));
    EXPECT_FALSE(CComposanteGGL::s_piGetIMainIMG());
    // HTTP alone says why, and only on a clean error.
    EXPECT_FALSE(CComposanteGGL::s_piQueryIHTTP(&clErreur));
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600033u);
    EXPECT_EQ(clErreur.nGetErrorLevel(), 3);
    CXError clDeja(&gstMyModuleInfo60);
    clDeja.SetUserError(&gstMyModuleInfo60, 600005, L"401", L"no");
    CComposanteGGL::s_piQueryIHTTP(&clDeja);
    EXPECT_EQ(clDeja.nGetUserErrorCode(), 600005u) << "an earlier cause is kept";
}

TEST(ServicesHoteHTTP, UnHoteSansHTTPRefuseLaComposante) {
    CLibShopEssai clLibShop;
    clLibShop.m_bSansHTTP = true;
    CInformationDLL::ms_piLibShop = &clLibShop;
    CComposanteGGL clLib;
    EXPECT_EQ(clLib.bFinInit(), 0);
    EXPECT_EQ(clLib.pclGetError()->nGetUserErrorCode(), 600033u);
    EXPECT_EQ(clLibShop.nNbDemandes(gszServiceHTTP), 1);
    CInformationDLL::ms_piLibShop = nullptr;
}

class CTableau final : public IKLTableau {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    int vbInitialise(ITypeDescription* pi, int, int, IVM*, CXError*) override {
        m_piType = pi;
        return m_bAccepte;
    }
    int vnGetNbElement() override { return 0; }
    int vbRedimensionne(int, CXError*) override { return 0; }
    int vbGetElement(int, CAny&, CXError*) override { return 0; }
    int vbSetElement(int, const CAny&, CXError*) override { return 0; }
    int vbCopie(IKLTableau*, CXError*) override { return 0; }
    int m_nRef = 0;
    ITypeDescription* m_piType = nullptr;
    int m_bAccepte = 1;
};

TEST(TableauVide, InitialisePourLeTypeOuRelacheLeTableau) {
    CVMEnregistreur clVM;
    CTableau clTableau;
    clVM.m_piTableau = &clTableau;
    CXError clErreur(&gstMyModuleInfo60);
    auto* piType = reinterpret_cast<ITypeDescription*>(0x10);
    auto clAlloue = CComposanteGGL::s_pclAlloueTableauVMVide(&clVM, &clErreur, piType);
    EXPECT_EQ(clAlloue.pGet(), &clTableau);
    EXPECT_EQ(clVM.m_nTypeTableau, 111);
    EXPECT_EQ(clVM.m_nDimensionTableau, 1);
    EXPECT_EQ(clTableau.m_piType, piType);
    EXPECT_EQ(clTableau.m_nRef, 1) << "the caller gets the one reference";

    clAlloue.Reset();
    clTableau.m_bAccepte = 0;
    EXPECT_FALSE(CComposanteGGL::s_pclAlloueTableauVMVide(&clVM, &clErreur, nullptr));
    EXPECT_EQ(clVM.m_nTypeTableau, 16);
    EXPECT_EQ(clTableau.m_nRef, 0) << "a refused array is released";
    EXPECT_FALSE(CComposanteGGL::s_pclAlloueTableauVMVide(nullptr, &clErreur, nullptr));
}

class CLibrairieVariables final : public CComposanteGGL {
public:
    void* pGetVariableAdresse(int n) override {
        m_pstVu = pstGetAppel();
        return reinterpret_cast<void*>(static_cast<intptr_t>(n * 8));
    }
    void EcritVariable(int n, int v) override {
        m_pstVu = pstGetAppel();
        m_nEcrit = n * 1000 + v;
        if (v < 0) RaiseError(&gstMyModuleInfo60, 600006, 2);
    }
    STKLAppel* m_pstVu = nullptr;
    int m_nEcrit = 0;
};

TEST(LibrairieContexte, LesAppelsDeVariableRestaurentLeContexte) {
    CLibrairieVariables clLib;
    CVMEnregistreur clVM;
    STKLAppel stExterieur{&clVM, 0, 0, 0, 0};
    STKLAppel stAppel{&clVM, 0, 5, 7, 0};
    EXPECT_EQ(clLib.ChangeContexteAppel(&stExterieur), nullptr);
    EXPECT_EQ(clLib.pRecupereAdresseVariable(&stAppel), reinterpret_cast<void*>(40));
    EXPECT_EQ(clLib.m_pstVu, &stAppel) << "the variable is read within its call";
    EXPECT_EQ(clLib.pstGetAppel(), &stExterieur) << "and the outer call comes back";
    EXPECT_EQ(clLib.bSignaleEcritureVariable(&stAppel), 1);
    EXPECT_EQ(clLib.m_nEcrit, 5007);
    stAppel.nValeur = -1;
    EXPECT_EQ(clLib.bSignaleEcritureVariable(&stAppel), 0) << "an error left says so";
    EXPECT_EQ(clLib.pclGetError()->nGetUserErrorCode(), 600006u);
    clLib.RaiseError(nullptr);
    EXPECT_TRUE(clLib.pclGetError()->bEstPropre());
    EXPECT_EQ(clLib.ChangeContexteAppel(nullptr), &stExterieur);
}

TEST(LibrairieContexte, TraitementCourantDemandeALaVMDeLAppel) {
    CComposanteGGL clLib;
    CVMEnregistreur clVMAppel, clVMDonnee;
    EXPECT_EQ(clLib.pszGetLibelleTraitementCourant(nullptr), nullptr);
    EXPECT_EQ(clLib.nGetLigneTraitementCourant(nullptr), 0);
    EXPECT_STREQ(clLib.pszGetNomTraitementCourant(&clVMDonnee), L"nom");
    STKLAppel stAppel{&clVMAppel, 0, 0, 0, 0};
    clLib.ChangeContexteAppel(&stAppel);
    EXPECT_STREQ(clLib.pszGetLibelleTraitementCourant(&clVMDonnee), L"libellé");
    EXPECT_EQ(clLib.nGetLigneTraitementCourant(&clVMDonnee), 42);
    EXPECT_EQ(clVMAppel.m_tabInfos, (std::vector<int>{1301, 1303}))
        << "the VM of the call is asked, information 13";
    clLib.ChangeContexteAppel(nullptr);
}

TEST(Identifiants, HautTempsPlusGenerateurBasCompteur) {
    gInitGenerator(ID_GENERATOR_GGL);
    uint64_t q1 = gqwGenerateNewID();
    uint64_t q2 = gqwGenerateNewID();
    uint32_t nHaut = static_cast<uint32_t>(q1 >> 32) - ID_GENERATOR_GGL;
    EXPECT_LE(nHaut, 0x0FFFFFFFu);
    EXPECT_LE(static_cast<uint32_t>(time(nullptr) & 0x0FFFFFFF) - nHaut, 2u);
    EXPECT_EQ(static_cast<uint16_t>((q2 >> 16) - (q1 >> 16)), 1) << "the counter moves by one";
    EXPECT_NE(q1, q2);
}

TEST(Recycleurs, LaFinDeLExecutionRendLaMemoire) {
    CRecycleurMemoire clA(24), clB(3);
    void* p1 = clA.pAlloue();
    void* p2 = clA.pAlloue();
    clA.Recycle(p1);
    clA.Recycle(p2);
    EXPECT_EQ(clA.pAlloue(), p2) << "the last block given back is reused first";
    clA.Recycle(p2);
    clB.Recycle(clB.pAlloue());
    ASSERT_EQ(clA.nGetNbBlocLibre(), 2u);
    delete new CDLLExecutionGGL; // its destructor empties every recycler
    EXPECT_EQ(clA.nGetNbBlocLibre(), 0u);
    EXPECT_EQ(clB.nGetNbBlocLibre(), 0u);
}

} // namespace
