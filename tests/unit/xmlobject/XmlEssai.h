// What the XML object tests share: the test host's registry, which hands the component the
// host's real XML service and the HTTP double, a small entry class with its own table (not a
// connector's), and XML text in and out.
#pragma once
#include "frame/ComposanteGGL.h"
#include "xmlobject/Email.h"
#include "xmlobject/GglElements.h"
#include "updates/XmlObjectAutonome.h"

#include "connection/ServicesGoogle.h"

#include "HoteEssai.h"

#include "Any.h"
#include "Ref.h"
#include "XMLService.h"

#include <gtest/gtest.h>

#include <string>

// A nested element: a value attribute and a note element.
class CNicheEssai final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CNicheEssai)
};

// An entry inside the test entry, deleted through its logical parent's queue.
class CSousEntreeEssai final : public CXmlObjectAutonome {
public:
    XML_OBJET_DECLARE(CSousEntreeEssai)
    CXmlObjectMulti* vpclGetParentLogique() override { return pclGetParent(); }
    bool vbIsNouvelObjet() override { return !pclGetPropriete("id", 0); }
    int veGetService() override { return SERVICEGOOGLE_CONTACT; }
};

// A root entry of the contacts service, new while it has no "id".
class CEntreeEssai final : public CXmlObjectAutonomeRacine {
public:
    XML_OBJET_DECLARE(CEntreeEssai)
    const wchar_t* vpszGetURLAjoutMoiMeme() override { return L"https://feeds.test/entries"; }
    bool vbIsNouvelObjet() override { return !pclGetPropriete("id", 0); }
    int veGetService() override { return SERVICEGOOGLE_CONTACT; }
};

#ifdef XML_ESSAI_DEFINITIONS
const stXmlPropriete CNicheEssai::s_m_stTabXmlDescription__[] = {
    XML_ROW("value", XmlObject::Texte, XML_ATTRIBUT) XML_ROW("note", XmlObject::Texte, XML_ELEMENT)};
XML_OBJET_DEFINE_SANS_VISITE(CNicheEssai, CXmlObjectMulti)

const stXmlPropriete CSousEntreeEssai::s_m_stTabXmlDescription__[] = {
    XML_ROW("id", XmlObject::Texte, XML_ELEMENT) XML_ROW("link", Ggl::CLink, XML_ELEMENT)
        XML_ROW("title", Ggl::CTitre, XML_ELEMENT)};
XML_OBJET_DEFINE_SANS_VISITE(CSousEntreeEssai, CXmlObjectAutonome)

const stXmlPropriete CEntreeEssai::s_m_stTabXmlDescription__[] = {
    XML_ROW("id", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("title", Ggl::CTitre, XML_ELEMENT)
    XML_ROW("link", Ggl::CLink, XML_ELEMENT)
    XML_ROW("gd:email", CEmail, XML_ELEMENT)
    XML_ROW("flag", XmlObject::Booleen, XML_ATTRIBUT)
    XML_ROW("ratio", XmlObject::Double, XML_ATTRIBUT)
    XML_ROW("updated", XmlObject::DateHeure, XML_ELEMENT)
    XML_ROW("gContact:groupMembershipInfo", Ggl::TexteOnHref, XML_ELEMENT)
    XML_ROW("item", CNicheEssai, XML_ELEMENT)
    XML_ROW("entry", CSousEntreeEssai, XML_ELEMENT)};
XML_OBJET_DEFINE_SANS_VISITE(CEntreeEssai, CXmlObjectAutonomeRacine)
#endif

// The test host's registry behind the component while a test runs.
class XmlEssai : public testing::Test {
protected:
    void SetUp() override {
        m_piLibShopAvant = CInformationDLL::ms_piLibShop;
        CInformationDLL::ms_piLibShop = &m_clLibShop;
    }
    void TearDown() override {
        CComposanteGGL().TermCompo(); // gives the shared services back
        CInformationDLL::ms_piLibShop = m_piLibShopAvant;
    }

    // The root element of the text.
    CRef<INoeudXML> Racine(const std::string& sXml) {
        CAny clTexte;
        clTexte.SetStringA(sXml.c_str(), static_cast<int>(sXml.size()));
        CXError clErreur;
        auto clDoc = CRef<IDocumentXML>::Adopt(m_clLibShop.m_clXML->vpiAnalyse(clTexte, &clErreur));
        EXPECT_TRUE(clDoc) << sXml;
        return clDoc ? CRef<INoeudXML>::Adopt(clDoc->piGetRacine(0)) : CRef<INoeudXML>();
    }
    // An entry read from "<entry ...>" + sCorps + "</entry>", with the feed namespaces.
    template <class T = CEntreeEssai>
    CRef<CXmlObject> Lit(const std::string& sCorps, const std::string& sAttributs = "") {
        auto clNoeud = Racine(std::string("<entry xmlns=\"http://www.w3.org/2005/Atom\" "
                                          "xmlns:gd=\"http://schemas.google.com/g/2005\" "
                                          "xmlns:gContact=\"http://schemas.google.com/contact/2008\"") +
                              sAttributs + ">" + sCorps + "</entry>");
        return CRef<CXmlObject>::Adopt(T::s_pclCreate(clNoeud.pGet(), XML_ELEMENT, nullptr, "entry"));
    }
    static std::string Texte(INoeudXML* piNoeud) {
        CXYString<char> cz;
        CComposanteGGL::s_GetChaineXml(piNoeud, cz, nullptr);
        return std::string(cz.sv());
    }
    // The object written from scratch into a new "entry".
    static std::string Ecrit(CXmlObject* pcl, CXError& clErreur) {
        auto clDoc = CComposanteGGL::s_piGetXMLDoc(nullptr);
        INoeudXML* piRacine = nullptr;
        clDoc->bCreeRacine("entry", &piRacine);
        auto clRacine = CRef<INoeudXML>::Adopt(piRacine);
        EXPECT_TRUE(pcl->vbCreateXml(piRacine, 0, clErreur));
        return Texte(piRacine);
    }

    CLibShopEssai m_clLibShop;
    ILibShop* m_piLibShopAvant = nullptr;
};
