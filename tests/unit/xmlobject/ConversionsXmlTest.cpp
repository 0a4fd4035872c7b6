// The component's conversions around the XML objects: GglVersXML on each accepted type and
// its refusals, the CR LF text of a list both ways, an image file as bytes.
#include "XmlEssai.h"

#include "xmlobject/Author.h"

#include "frame/ModuleInfo.h"

#include "MemoImage.h"

#include <cstdio>

namespace {

class Conversions : public XmlEssai {
protected:
    void SetUp() override {
        XmlEssai::SetUp();
        CAuthor::ms_piType = &m_clTypeAuteur;
    }
    void TearDown() override {
        CAuthor::ms_piType = nullptr;
        XmlEssai::TearDown();
    }
    // GglVersXML on a value: the text, or "(600048:n)" for a refusal.
    std::string VersXML(const CAny* pcl) {
        CXError clErreur(&gstMyModuleInfo60);
        CXYString<char> cz = CComposanteGGL::GglVersXML(nullptr, &clErreur, pcl);
        if (!clErreur.bEstPropre())
            return "(" + std::to_string(clErreur.nGetUserErrorCode()) + ")";
        return std::string(cz.sv());
    }
    static CAny Objet(CXmlObject* pcl) {
        CAny cl;
        cl.SetObjet(pcl->vpiGetObjetBaseScript(), 111);
        return cl;
    }

    CTypeEssai m_clTypeAuteur{L"gglAuteur"};
};

TEST_F(Conversions, GglVersXML) {
    auto clNoeud = Racine("<author xmlns=\"http://www.w3.org/2005/Atom\"><name>A &amp; B</name>"
                          "<uri>u</uri></author>");
    auto clAuteur = CRef<CXmlObject>::Adopt(CAuthor::s_pclCreate(clNoeud.pGet(), XML_ELEMENT, nullptr, "author"));
    const CAny clAuteurValeur = Objet(clAuteur.pGet());
    EXPECT_EQ(VersXML(&clAuteurValeur),
              "<author xmlns=\"http://www.w3.org/2005/Atom\"><name>A &amp; B</name><uri>u</uri></author>")
        << "the retained node, members no table describes included";

    auto clNouvel = CRef<CXmlObject>::Retain(CAuthor::s_pclCreeObjet(nullptr, nullptr));
    CAny clTexte, clTableau;
    clTexte.__nSetString(L"<author/>");
    clTableau.SetTableau(clAuteur->vpiGetObjetBaseScript(), 111);
    const CAny clNouvelValeur = Objet(clNouvel.pGet());
    for (const CAny* pcl : {static_cast<const CAny*>(nullptr), static_cast<const CAny*>(&clTexte),
                            static_cast<const CAny*>(&clTableau), &clNouvelValeur})
        EXPECT_EQ(VersXML(pcl), "(600048)");
}

// One value a line, CR LF between; the separator goes by index, so an element 0 without a
// value still leaves one in front.
TEST_F(Conversions, ListeEnLignes) {
    CRef<CXmlObjectListe> clListe = CRef<CXmlObjectListe>::Retain(new CXmlObjectListe("gd:email"));
    CComposanteGGL::s_ChaineRC2Liste(CXYString<wchar_t>(L"a\r\nb\r\n"), clListe.pGet(),
                                     &XmlObject::Texte::s_pclCreate, XML_ELEMENT);
    ASSERT_EQ(clListe->nGetNbElement(), 3);
    CXYString<wchar_t> s;
    CComposanteGGL::s_Liste2ChaineRC(clListe.pGet(), s);
    EXPECT_EQ(s, L"a\r\nb\r\n");
    clListe->Insere(0, XmlObject::DateHeure::s_pclCreate(nullptr, XML_ELEMENT, nullptr, "d"));
    // A relation out of the table gives no value.
    CXmlObject* pclConstante = Ggl::CConstante::s_pclCreate(nullptr, XML_ELEMENT, nullptr, "c");
    static_cast<Ggl::CConstante*>(CCastor<Ggl::CConstante>(pclConstante).pGet())->SetValeur(17);
    clListe->Insere(0, pclConstante);
    CComposanteGGL::s_Liste2ChaineRC(clListe.pGet(), s);
    EXPECT_EQ(s, L"\r\n0000-00-00T00:00:00.000Z\r\na\r\nb\r\n");
}

// An image named by its file comes as the file's bytes; a file that cannot be opened is
// 600008.
TEST_F(Conversions, ImageFichier) {
    const std::string sChemin = testing::TempDir() + "image-essai.bin";
    FILE* pf = std::fopen(sChemin.c_str(), "wb");
    ASSERT_NE(pf, nullptr);
    std::fwrite("\x89PNG\r\n", 1, 6, pf);
    std::fclose(pf);
    CKLMemoImage clImage = CKLMemoImage::s_Fichier(std::wstring(sChemin.begin(), sChemin.end()));
    CKLBIN clOctets;
    CXError clErreur(&gstMyModuleInfo60);
    EXPECT_EQ(CComposanteGGL::s_bMEMOIMG2BIN(&clImage, clOctets, &clErreur, nullptr), 1);
    EXPECT_EQ(clOctets.sv(), std::string_view("\x89PNG\r\n", 6));
    clImage = CKLMemoImage::s_Fichier(L"/nonexistent/image.png");
    EXPECT_EQ(CComposanteGGL::s_bMEMOIMG2BIN(&clImage, clOctets, &clErreur, nullptr), 0);
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600008u);
    std::remove(sChemin.c_str());
}

} // namespace
