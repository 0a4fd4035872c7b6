// The object bases as the host sees them: identity, the cast to the native object, the peer
// made through the global factory, and counting.
#include "frame/InformationDLL.h"
#include "frame/ObjetComposante.h"

#include "XError.h"

#include <gtest/gtest.h>

namespace {

class CType final : public ITypeDescription {
public:
    const wchar_t* vpszGetNom() override { return L"test"; }
    int vnGetIdentifiant() override { return 1; }
};
CType gclTypeA, gclTypeB;

class CObjet final : public CObjetComposante {
public:
    explicit CObjet(bool* pbDetruit = nullptr) : m_pbDetruit(pbDetruit) {}
    ~CObjet() override {
        if (m_pbDetruit) *m_pbDetruit = true;
    }
    ITypeDescription* vpiGetTypeReel() override { return &gclTypeA; }
    void* vpGetObjetC() override { return this; }

private:
    bool* m_pbDetruit;
};

class CPair final : public IKLObjetComposante {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    int vnGetVersionIKLObjetComposante() override { return 1; }
    int vbGetObjetC(void*& p, ITypeDescription*, int, CXError*) override {
        p = &m_nRef;
        return 1;
    }
    void vNotifieInstanceOrpheline() override { ++m_nOrphelin; }
    void vNotifieErreurInstance(IVM*, int, CXError* pclErreur) override { m_pclErreur = pclErreur; }
    int m_nRef = 1, m_nOrphelin = 0;
    CXError* m_pclErreur = nullptr;
};

class CFactory final : public IGlobalFactory {
public:
    int vnGetVersion() override { return 2; }
    IKLObjetComposante* vpiCreeKLObjetComposante(IObjetBase* pi, CXError*) override {
        m_piDemande = pi;
        ++m_nCrees;
        return &m_clPair;
    }
    CPair m_clPair;
    IObjetBase* m_piDemande = nullptr;
    int m_nCrees = 0;
};

TEST(ObjetComposante, IdentiteEtConversion) {
    CObjet* pcl = new CObjet;
    pcl->vAddRef();
    IObjetBase* piBase = pcl->piGetObjetBase();
    EXPECT_EQ(piBase->veGetFamille(), 5);
    EXPECT_EQ(piBase->vbEgaliteObjet(static_cast<IObjetBase*>(nullptr)), 0);
    EXPECT_EQ(piBase->vbEgaliteObjet(piBase), 1);
    CObjet* pclAutre = new CObjet;
    pclAutre->vAddRef();
    EXPECT_EQ(piBase->vbEgaliteObjet(pclAutre->piGetObjetBase()), 0) << "identity, not value";
    EXPECT_EQ(CObjetComposanteBase::s_pclDepuisObjetBase(piBase), pcl);

    void* p = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(pcl->vbGetObjetC(p, &gclTypeA, 0, nullptr), 1);
    EXPECT_EQ(p, pcl);
    p = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(pcl->vbGetObjetC(p, &gclTypeB, 0, nullptr), 0);
    EXPECT_EQ(p, nullptr) << "another class's type clears the result";
    EXPECT_EQ(pcl->vpGetSafeObjetC(&gclTypeB), nullptr);
    EXPECT_EQ(pcl->vpGetSafeObjetC(&gclTypeA), pcl);
    pcl->vRelease();
    pclAutre->vRelease();
}

TEST(ObjetComposante, ComptageDepuisZero) {
    bool bDetruit = false;
    CObjet* pcl = new CObjet(&bDetruit);
    EXPECT_EQ(pcl->nGetRef(), 0) << "a new object is owned by the first reference taken";
    pcl->vAddRef();
    static_cast<IObjetComposante*>(pcl)->vAddRef(); // both sides share the count
    EXPECT_EQ(pcl->nGetRef(), 2);
    pcl->vRelease();
    EXPECT_FALSE(bDetruit);
    static_cast<IObjetComposante*>(pcl)->vRelease();
    EXPECT_TRUE(bDetruit);
}

TEST(ObjetComposante, NoticesParLePairDeLaFactory) {
    CFactory clFactory;
    CInformationDLL::ms_piGlobalFactory = nullptr;
    {
        CObjet* pcl = new CObjet;
        pcl->vAddRef();
        pcl->vNotifieInstanceOrpheline(); // no factory: the notice is dropped
        EXPECT_EQ(pcl->vpiGetKLObjetComposante(), nullptr);

        CInformationDLL::ms_piGlobalFactory = &clFactory;
        CXError clErreur;
        pcl->vNotifieErreurInstance(nullptr, &clErreur, 0);
        EXPECT_EQ(clFactory.m_piDemande, pcl->piGetObjetBase());
        EXPECT_EQ(clFactory.m_clPair.m_pclErreur, &clErreur);
        pcl->vNotifieInstanceOrpheline();
        EXPECT_EQ(clFactory.m_nCrees, 1) << "one peer, made at first need";
        EXPECT_EQ(clFactory.m_clPair.m_nOrphelin, 1);

        void* p = nullptr;
        EXPECT_EQ(pcl->vbGetObjetC(p, &gclTypeB, 0, nullptr), 1) << "a peer answers the cast";
        EXPECT_EQ(p, &clFactory.m_clPair.m_nRef);
        pcl->vRelease();
    }
    EXPECT_EQ(clFactory.m_clPair.m_nRef, 0) << "the object released its peer";
    CInformationDLL::ms_piGlobalFactory = nullptr;
}

TEST(ObjetComposante, PairDonneParLHote) {
    CPair clPair, clAutre;
    CObjet* pcl = new CObjet;
    pcl->vAddRef();
    pcl->vSetKLObjetComposante(&clPair);
    EXPECT_EQ(clPair.m_nRef, 2);
    pcl->vSetKLObjetComposante(&clAutre);
    EXPECT_EQ(clPair.m_nRef, 1) << "the former peer is released";
    EXPECT_EQ(pcl->vpiGetKLObjetComposante(), &clAutre);
    pcl->vRelease();
    EXPECT_EQ(clAutre.m_nRef, 1);
}

struct ICompte : IInterfaceObjetBase {};
class CCompte final : public CImplInterfaceAddRefRelease<ICompte> {
public:
    explicit CCompte(bool& b) : m_b(b) {}
    ~CCompte() override { m_b = true; }
    bool& m_b;
};

TEST(ImplInterfaceAddRefRelease, DetruitAZero) {
    bool bDetruit = false;
    auto* pcl = new CCompte(bDetruit);
    pcl->vAddRef();
    pcl->vAddRef();
    EXPECT_EQ(pcl->nGetRef(), 2);
    pcl->vRelease();
    EXPECT_FALSE(bDetruit);
    pcl->vRelease();
    EXPECT_TRUE(bDetruit);
}

} // namespace
