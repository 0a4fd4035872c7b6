// The collection over an owner's JSON-backed objects: the view hides what is being deleted,
// and every change keeps the owner's array in step.
#include "frame/EnumerateurDinoGgl.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class CTypeElement final : public ITypeDescription {
public:
    const wchar_t* vpszGetNom() override { return L"element"; }
    int vnGetIdentifiant() override { return 7; }
} gclTypeElement, gclTypeAutre;

class CElement final : public CObjetComposante {
public:
    explicit CElement(char c) : m_c(c) {}
    ITypeDescription* vpiGetTypeReel() override { return &gclTypeElement; }
    void* vpGetObjetC() override { return this; }
    static CElement* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CElement('n'); }
    static inline ITypeDescription* ms_piType = &gclTypeElement;
    eEtatObjet m_eEtatObjet = ETAT_NEUF;
    char m_c;
};

class CAutre final : public CObjetComposante {
public:
    ITypeDescription* vpiGetTypeReel() override { return &gclTypeAutre; }
    void* vpGetObjetC() override { return this; }
};

class COwner final : public CObjetComposante {
public:
    ~COwner() override {
        for (CElement* p : m_tab) p->vRelease();
    }
    ITypeDescription* vpiGetTypeReel() override { return nullptr; }
    void* vpGetObjetC() override { return this; }
    CElement* Ajoute(char c, eEtatObjet e) {
        auto* p = new CElement(c);
        p->vAddRef();
        p->m_eEtatObjet = e;
        m_tab.Ajoute(p);
        return p;
    }
    std::string Lettres() const {
        std::string s;
        for (CElement* p : m_tab) s += p->m_c;
        return s;
    }
    CXArray<CElement*> m_tab;
};

using CCollection = CTEnumerateurDinoGgl<COwner, CElement>;

std::string Vue(CCollection& cl) {
    std::string s;
    for (int i = 0; i < cl.vnGetNbElementCollection(nullptr, nullptr); ++i)
        s += static_cast<CElement*>(CObjetComposanteBase::s_pclDepuisObjetBase(
                                        cl.vpiGetElementCollection(i, nullptr, nullptr)))
                 ->m_c;
    return s;
}

class Enumerateur : public testing::Test {
protected:
    void SetUp() override {
        m_pclOwner = new COwner;
        m_pclOwner->vAddRef();
        m_pclOwner->Ajoute('a', ETAT_SYNCHRONISE);
        m_pclOwner->Ajoute('x', ETAT_A_SUPPRIMER);
        m_pclOwner->Ajoute('b', ETAT_MODIFIE);
        m_pclOwner->Ajoute('c', ETAT_SYNCHRONISE);
        m_pclCollection = new CCollection(m_pclOwner, &m_pclOwner->m_tab);
        m_pclCollection->vAddRef();
    }
    void TearDown() override {
        m_pclCollection->vRelease();
        m_pclOwner->vRelease();
    }
    COwner* m_pclOwner = nullptr;
    CCollection* m_pclCollection = nullptr;
    CXError m_clErreur;
};

TEST_F(Enumerateur, LaVueCacheCeQuiEstASupprimer) {
    EXPECT_EQ(Vue(*m_pclCollection), "abc");
    EXPECT_EQ(m_pclCollection->vpiGetElementCollection(3, nullptr, &m_clErreur), nullptr);
    EXPECT_TRUE(m_clErreur.bEstPropre()) << "reading past the end is no error";
    EXPECT_EQ(m_pclCollection->vpiGetElementCollection(-1, nullptr, &m_clErreur), nullptr);
}

TEST_F(Enumerateur, AjoutMarqueLEtatEtSuitLesDeuxTableaux) {
    auto* pclNeuf = new CElement('d');
    pclNeuf->vAddRef();
    int nPos = -1;
    EXPECT_EQ(m_pclCollection->veAjouteElementCollection(pclNeuf, &nPos, nullptr, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(nPos, 3);
    EXPECT_EQ(pclNeuf->m_eEtatObjet, ETAT_NEUF_ATTACHE) << "a new empty object stays unsent";
    EXPECT_EQ(pclNeuf->nGetRef(), 3) << "one reference for each array";

    auto* pclLu = new CElement('e');
    pclLu->vAddRef();
    pclLu->m_eEtatObjet = ETAT_SYNCHRONISE;
    EXPECT_EQ(m_pclCollection->veInsereElementCollection(1, pclLu, nullptr, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(pclLu->m_eEtatObjet, ETAT_A_CREER);
    EXPECT_EQ(Vue(*m_pclCollection), "aebcd");
    EXPECT_EQ(m_pclOwner->Lettres(), "axebcd") << "inserted before its successor in the view";
    pclNeuf->vRelease();
    pclLu->vRelease();

    EXPECT_EQ(m_pclCollection->veAjouteElementCollectionVide(&nPos, nullptr, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(m_pclOwner->Lettres(), "axebcdn");
}

TEST_F(Enumerateur, RefuseUnAutreTypeEtLesIndicesHorsBornes) {
    auto* pclAutre = new CAutre;
    pclAutre->vAddRef();
    EXPECT_EQ(m_pclCollection->veAjouteElementCollection(pclAutre, nullptr, nullptr, &m_clErreur),
              RESULTAT_OBJET_ERREUR);
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600004u);
    pclAutre->vRelease();
    m_clErreur.RAZ();
    EXPECT_EQ(m_pclCollection->veSupprimeElementCollection(3, nullptr, &m_clErreur),
              RESULTAT_OBJET_ERREUR);
    EXPECT_EQ(m_clErreur.nGetUserErrorCode(), 600006u);
    EXPECT_EQ(m_pclOwner->Lettres(), "axbc") << "nothing changed";
}

TEST_F(Enumerateur, SuppressionEchangeDeplacement) {
    CElement* pclB = m_pclOwner->m_tab[2];
    pclB->vAddRef();
    EXPECT_EQ(m_pclCollection->veSupprimeElementCollection(1, nullptr, &m_clErreur),
              RESULTAT_OBJET_OK);
    EXPECT_EQ(pclB->nGetRef(), 2) << "the view gave its reference back, the owner keeps its";
    EXPECT_EQ(pclB->m_eEtatObjet, ETAT_A_SUPPRIMER) << "marked for the next commit";
    pclB->vRelease();
    EXPECT_EQ(m_pclOwner->Lettres(), "axbc");
    EXPECT_EQ(Vue(*m_pclCollection), "ac");

    m_pclOwner->Ajoute('d', ETAT_SYNCHRONISE);
    CCollection clVue2(m_pclOwner, &m_pclOwner->m_tab);
    EXPECT_EQ(clVue2.veEchangeElementCollection(0, 2, nullptr, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(Vue(clVue2), "dca");
    EXPECT_EQ(m_pclOwner->Lettres(), "dxbca");
    EXPECT_EQ(clVue2.veDeplaceElementCollection(0, 2, nullptr, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(Vue(clVue2), "cad");
    EXPECT_EQ(m_pclOwner->Lettres(), "xbcad");
    EXPECT_EQ(clVue2.veDeplaceElementCollection(2, 0, nullptr, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(m_pclOwner->Lettres(), "xbdca");
    EXPECT_EQ(clVue2.veSupprimeToutElementCollection(nullptr, &m_clErreur), RESULTAT_OBJET_OK);
    EXPECT_EQ(Vue(clVue2), "");
    EXPECT_EQ(m_pclOwner->Lettres(), "xbdca") << "every element stays for the commit";
}

} // namespace
