// The frame's own pieces, inside the component: the library object, the shared host services
// and their lifetimes, identifiers, and the memory given back at the end.
#include "frame/BaseExecutionDLL.h"
#include "frame/ComposanteGGL.h"
#include "frame/IdGenerator.h"
#include "frame/ModuleInfo.h"
#include "frame/RecycleurMemoire.h"

#include "Any.h"
#include "HTTPService.h"
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

// A counted object whose references a test can read.
template <class I> class CCompte : public I {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    int m_nRef = 1; // handed out with one reference
};

class CDocument final : public CCompte<IDocumentXML> {
public:
    void SetEncodage(const wchar_t*) override {}
    int bCreeRacine(const char*, INoeudXML**) override { return 0; }
    INoeudXML* piGetRacine(int) override { return nullptr; }
    int bImporteRacine(INoeudXML*, CXError*) override { return 0; }
    int bEcrit(IContenuXMLSortie&, eFORMATXML, CXError*) override { return 0; }
};

class CGestionXML final : public CCompte<IGestionnaireXML> {
public:
    IDocumentXML* vpiCreeDocument(CXError*) override { return ++m_nCrees, &m_clDoc; }
    IDocumentXML* vpiAnalyse(const CAny& clTexte, CXError*) override {
        m_nTypeRecu = clTexte.nGetType();
        const wchar_t* psz = nullptr;
        const_cast<CAny&>(clTexte).__nCastToString(&psz);
        m_sRecu = psz ? psz : L"";
        return &m_clDoc;
    }
    CDocument m_clDoc;
    int m_nCrees = 0;
    int m_nTypeRecu = 0;
    std::wstring m_sRecu;
};

class CElement final : public CCompte<IElementJSON> {
public:
    eGENREJSON veGetGenre() override { return eGENREJSON{}; }
    int vbGetValeur(CAny&) override { return 0; }
    IObjetJSON* vpiGetIObjetJSON() override { return nullptr; }
    ITableauJSON* vpiGetITableauJSON() override { return nullptr; }
    void vAccepte(IVisiteurJSON&) override {}
};

class CContenuJSON final : public CCompte<IContenuJSON> {
public:
    IElementJSON* vpiAnalyse(const char* p, size_t n, CXError*) override {
        m_sRecu.assign(p, n);
        return &m_clElement;
    }
    CElement m_clElement;
    std::string m_sRecu;
};

class CLibShop final : public ILibShop {
public:
    IInterfaceObjetBase* piGetInterface(int, int, const wchar_t* psz, CXError*) override {
        m_tabDemandes.emplace_back(psz);
        if (std::wcscmp(psz, L"ContenuJSON") != 0) return nullptr;
        m_clJSON.vAddRef();
        return &m_clJSON;
    }
    IInterfaceObjetBase* piGetInterfaceVM(IInterfaceObjetBase*, int, int, int, const wchar_t*,
                                          CXError*) override {
        return nullptr;
    }
    IInterfaceObjetBase* piGetInterfaceCompat(int, int, int, int, const wchar_t* psz, int,
                                              CXError*) override {
        m_tabDemandes.emplace_back(psz);
        if (std::wcscmp(psz, L"GestionnaireXML") != 0) return nullptr;
        m_clXML.vAddRef();
        return &m_clXML;
    }
    int nNbDemandes(const wchar_t* psz) const {
        int n = 0;
        for (auto& s : m_tabDemandes) n += s == psz;
        return n;
    }
    CGestionXML m_clXML;
    CContenuJSON m_clJSON;
    std::vector<std::wstring> m_tabDemandes;
};

class ServicesHote : public testing::Test {
protected:
    void SetUp() override {
        m_clXML0 = m_clLibShop.m_clXML.m_nRef;
        CInformationDLL::ms_piLibShop = &m_clLibShop;
    }
    void TearDown() override {
        CComposanteGGL().TermCompo();
        CInformationDLL::ms_piLibShop = nullptr;
    }
    CLibShop m_clLibShop;
    int m_clXML0 = 0;
};

TEST_F(ServicesHote, XMLPrisALaPremiereUtilisationEtRendusParTermCompo) {
    IDocumentXML* piVide = CComposanteGGL::s_piGetXMLDoc(nullptr);
    EXPECT_EQ(piVide, &m_clLibShop.m_clXML.m_clDoc);
    EXPECT_EQ(CComposanteGGL::s_piGetXMLDoc(L""), piVide);
    EXPECT_EQ(m_clLibShop.m_clXML.m_nCrees, 2) << "null and empty texts give new documents";

    EXPECT_NE(piGetXMLDoc(L"<a/>"), nullptr);
    EXPECT_EQ(m_clLibShop.m_clXML.m_nTypeRecu, 16) << "the text goes as a wide string value";
    EXPECT_EQ(m_clLibShop.m_clXML.m_sRecu, L"<a/>");
    EXPECT_EQ(m_clLibShop.nNbDemandes(L"GestionnaireXML"), 1) << "asked once, then kept";

    CComposanteGGL clAutre; // any library object ends the shared services
    clAutre.TermCompo();
    EXPECT_EQ(CComposanteGGL::ms_piGestionXML, nullptr);
    EXPECT_EQ(m_clLibShop.m_clXML.m_nRef, m_clXML0) << "its reference given back";
    CComposanteGGL::s_piGetXMLDoc(nullptr);
    EXPECT_EQ(m_clLibShop.nNbDemandes(L"GestionnaireXML"), 2) << "and taken again at next use";
}

TEST_F(ServicesHote, JSONAnalyseLeTexteUTF8) {
    CXError clErreur(&gstMyModuleInfo60);
    EXPECT_EQ(CComposanteGGL::s_piGetJSON("{\"a\":\"\xC3\xA9\"}", &clErreur),
              &m_clLibShop.m_clJSON.m_clElement);
    EXPECT_EQ(m_clLibShop.m_clJSON.m_sRecu, "{\"a\":\"\xC3\xA9\"}");
    CComposanteGGL::s_piGetJSON("[]", &clErreur);
    EXPECT_EQ(m_clLibShop.nNbDemandes(L"ContenuJSON"), 1);
}

TEST_F(ServicesHote, SansServiceRienNestFabrique) {
    CInformationDLL::ms_piLibShop = nullptr;
    CXError clErreur(&gstMyModuleInfo60);
    EXPECT_EQ(CComposanteGGL::s_piGetJSON("{}", &clErreur), nullptr);
    EXPECT_EQ(CComposanteGGL::s_piGetXMLDoc(L"<a/>"), nullptr);
    EXPECT_EQ(CComposanteGGL::s_piGetIMainIMG(), nullptr);
    // HTTP alone says why, and only on a clean error.
    EXPECT_EQ(CComposanteGGL::s_piQueryIHTTP(&clErreur), nullptr);
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600033u);
    EXPECT_EQ(clErreur.nGetErrorLevel(), 3);
    CXError clDeja(&gstMyModuleInfo60);
    clDeja.SetUserError(&gstMyModuleInfo60, 600005, L"401", L"no");
    CComposanteGGL::s_piQueryIHTTP(&clDeja);
    EXPECT_EQ(clDeja.nGetUserErrorCode(), 600005u) << "an earlier cause is kept";
}

TEST(ServicesHoteHTTP, UnHoteSansHTTPRefuseLaComposante) {
    CLibShop clLibShop;
    CInformationDLL::ms_piLibShop = &clLibShop;
    CComposanteGGL clLib;
    EXPECT_EQ(clLib.bFinInit(), 0);
    EXPECT_EQ(clLib.pclGetError()->nGetUserErrorCode(), 600033u);
    EXPECT_EQ(clLibShop.nNbDemandes(L"HTTP"), 1);
    CInformationDLL::ms_piLibShop = nullptr;
}

class CTableau final : public CCompte<IKLTableau> {
public:
    int vbInitialise(ITypeDescription* pi, int, int, IVM*, CXError*) override {
        m_piType = pi;
        return m_bAccepte;
    }
    int vnGetNbElement() override { return 0; }
    int vbRedimensionne(int, CXError*) override { return 0; }
    int vbGetElement(int, CAny&, CXError*) override { return 0; }
    int vbSetElement(int, const CAny&, CXError*) override { return 0; }
    int vbCopie(IKLTableau*, CXError*) override { return 0; }
    ITypeDescription* m_piType = nullptr;
    int m_bAccepte = 1;
};

class CVM final : public IVM {
public:
    intptr_t nInfoVM(int nInfo, int nSousCode) override {
        m_tabInfos.push_back(nInfo * 100 + nSousCode);
        if (nSousCode == 3) return 42;
        return reinterpret_cast<intptr_t>(nSousCode == 1 ? L"libellé" : L"nom");
    }
    int bEmpileAny(CAny*) override { return 0; }
    int bAppelleFonctionVM(int, int, int, int, CXError*) override { return 0; }
    IInterfaceObjetBase* piGetService(int, CXError*) override { return nullptr; }
    int bRetourneValeurAppel(int, const void*, int) override { return 0; }
    int bEmpileDateHeure(const CDateTime*) override { return 0; }
    int bRetourneValeur(CCtxInfo*, const void*, int) override { return 0; }
    IKLTableau* pclAlloueTableau(int nType, int nDim, CXError*) override {
        m_nTypeDemande = nType;
        m_nDimension = nDim;
        return &m_clTableau;
    }
    int bEmpileChaineA(const char*, int) override { return 0; }
    IAuthentification* piGetAuthentification(CXError*) override { return nullptr; }
    CTableau m_clTableau;
    int m_nTypeDemande = 0, m_nDimension = 0;
    std::vector<int> m_tabInfos;
};

TEST(TableauVide, InitialisePourLeTypeOuRelacheLeTableau) {
    CVM clVM;
    CXError clErreur(&gstMyModuleInfo60);
    auto* piType = reinterpret_cast<ITypeDescription*>(0x10);
    EXPECT_EQ(CComposanteGGL::s_pclAlloueTableauVMVide(&clVM, &clErreur, piType),
              &clVM.m_clTableau);
    EXPECT_EQ(clVM.m_nTypeDemande, 111);
    EXPECT_EQ(clVM.m_nDimension, 1);
    EXPECT_EQ(clVM.m_clTableau.m_piType, piType);
    EXPECT_EQ(clVM.m_clTableau.m_nRef, 1) << "the caller gets the one reference";

    clVM.m_clTableau.m_bAccepte = 0;
    EXPECT_EQ(CComposanteGGL::s_pclAlloueTableauVMVide(&clVM, &clErreur, nullptr), nullptr);
    EXPECT_EQ(clVM.m_nTypeDemande, 16);
    EXPECT_EQ(clVM.m_clTableau.m_nRef, 0) << "a refused array is released";
    EXPECT_EQ(CComposanteGGL::s_pclAlloueTableauVMVide(nullptr, &clErreur, nullptr), nullptr);
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
    CVM clVM;
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
    CVM clVMAppel, clVMDonnee;
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
