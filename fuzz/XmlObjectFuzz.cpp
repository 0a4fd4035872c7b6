// XML objects over arbitrary bytes: a document that parses is loaded through a description
// table that holds every kind of member (leaves of each type, a relation, an attribute leaf,
// texts with attributes, nested elements and lists), changes are applied to the retained tree,
// a copy is written from scratch, and what is written must parse again.
#include "HostXMLService.h"

#include "frame/ComposanteGGL.h"
#include "xmlobject/Email.h"
#include "xmlobject/FctFind.h"
#include "xmlobject/GglElements.h"
#include "xmlobject/PhoneNumber.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

class CNicheFuzz final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CNicheFuzz)
};
class CEntreeFuzz final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CEntreeFuzz)
};

const stXmlPropriete CNicheFuzz::s_m_stTabXmlDescription__[] = {
    XML_ROW("v", XmlObject::Texte, XML_ATTRIBUT) XML_ROW("n", XmlObject::Entier, XML_ELEMENT)
        XML_ROW("gd:email", CEmail, XML_ELEMENT)};
XML_OBJET_DEFINE_SANS_VISITE(CNicheFuzz, CXmlObjectMulti)

const stXmlPropriete CEntreeFuzz::s_m_stTabXmlDescription__[] = {
    XML_ROW("id", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("a", XmlObject::Texte, XML_ATTRIBUT)
    XML_ROW("i", XmlObject::Entier, XML_ATTRIBUT)
    XML_ROW("b", XmlObject::Booleen, XML_ATTRIBUT)
    XML_ROW("l", XmlObject::Entier64, XML_ELEMENT)
    XML_ROW("d", XmlObject::Double, XML_ELEMENT)
    XML_ROW("updated", XmlObject::DateHeure, XML_ELEMENT)
    XML_ROW("rel", Ggl::CConstante, XML_ATTRIBUT)
    XML_ROW("g:href", Ggl::TexteOnHref, XML_ELEMENT)
    XML_ROW("title", Ggl::CTitre, XML_ELEMENT)
    XML_ROW("link", Ggl::CLink, XML_ELEMENT)
    XML_ROW("gd:when", Ggl::CWhen, XML_ELEMENT)
    XML_ROW("gd:phoneNumber", CPhoneNumber, XML_ELEMENT)
    XML_ROW("x", CNicheFuzz, XML_ELEMENT)
    XML_ROW("entry", CNicheFuzz, XML_ELEMENT)};
XML_OBJET_DEFINE_SANS_VISITE(CEntreeFuzz, CXmlObjectMulti)

class CSortie final : public IContenuXMLSortie {
public:
    std::string s;
    int vbContenuXML(const char* p, size_t n, CXError*) override {
        s.assign(p, n);
        return 1;
    }
};

IGestionnaireXML* piService() {
    if (!CComposanteGGL::ms_piGestionXML)
        CComposanteGGL::ms_piGestionXML = new CHostXMLService(1u << 20);
    return CComposanteGGL::ms_piGestionXML;
}

CRef<IDocumentXML> clAnalyse(const std::string& s) {
    CAny clTexte;
    clTexte.SetStringA(s.c_str(), static_cast<int>(s.size()));
    CXError clErreur;
    return CRef<IDocumentXML>::Adopt(piService()->vpiAnalyse(clTexte, &clErreur));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
    auto clDocument = clAnalyse(std::string(reinterpret_cast<const char*>(pData), nSize));
    if (!clDocument)
        return 0;
    auto clRacine = CRef<INoeudXML>::Adopt(clDocument->piGetRacine(0));
    if (!clRacine)
        return 0;
    auto clEntree = CRef<CXmlObject>::Adopt(CEntreeFuzz::s_pclCreate(clRacine.pGet(), XML_ELEMENT, nullptr, "entry"));
    CXmlObjectMulti* pclEntree = clEntree->vpclGetXmlObjectMulti();
    if (CXmlObjectListe* pclLiens = pclEntree->pclGetListe("link")) {
        FctFind::LinkEdit clEdit;
        (void)pclLiens->pclFind(&clEdit, 1);
    }
    pclEntree->SetPropriete("title", 0, L"t\u00e9 <&>");
    pclEntree->pclGetCreatePropriete("x", 3);
    CXError clErreur;
    (void)clEntree->vbApplyToXml(clErreur);
    CXYString<char> czRetenu;
    CComposanteGGL::s_GetChaineXml(clRacine.pGet(), czRetenu, &clErreur);

    // A copy written from scratch, then read back.
    auto clCopie = CRef<CXmlObject>::Adopt(clEntree->vpclClone(nullptr));
    auto clNouveau = CRef<IDocumentXML>::Adopt(CComposanteGGL::s_piGetXMLDoc(nullptr));
    INoeudXML* piRacine = nullptr;
    if (!clNouveau || !clNouveau->bCreeRacine("entry", &piRacine))
        std::abort();
    auto clNouvelleRacine = CRef<INoeudXML>::Adopt(piRacine);
    CComposanteGGL::s_AddNamespaceAttributes(piRacine);
    (void)clCopie->vbCreateXml(piRacine, 1, clErreur);
    CSortie clSortie;
    if (!clNouveau->bEcrit(clSortie, FORMATXML_DOCUMENT, &clErreur))
        std::abort();
    if (!clAnalyse(clSortie.s))
        std::abort(); // what the objects write must be XML
    return 0;
}
