// CXMLAttribute: an attribute of a host XML document as a node of kind NOEUDXML_ATTRIBUT. The
// handle knows its element, which is never freed while the document lives; the attribute
// itself may be removed, so the handle checks, once per change of the document, that its
// element still carries it. A handle whose attribute was removed through it keeps its name and
// value, detached; one whose attribute went through another handle reads as empty.
#pragma once
#include "Counted.h"
#include "Ref.h"
#include "XMLDocument.h"

#include <string>

class CXMLAttribute final : public CCounted<INoeudXML> {
public:
    CXMLAttribute(CXMLDocument* pclDocument, pugi::xml_node element, pugi::xml_attribute attribute);
    ~CXMLAttribute() override;

    eGENRENOEUDXML eGetGenre() override { return NOEUDXML_ATTRIBUT; }
    const char* pszGetNom() override;
    const char* pszGetValeur() override;
    const char* pszGetAttribut(const char*) override { return ""; }
    INoeudXML* piGetEnfant(int) override { return nullptr; }
    INoeudXML* piGetAttribut(int) override { return nullptr; }
    INamespaceXML* piGetNamespace() override;
    int bSetTexte(const wchar_t* pszTexte) override;
    int bSetValeurAttribut(const char*, const wchar_t*) override { return 0; }
    int bSetAttributUTF8(const char*, const char*) override { return 0; }
    int bAjouteEnfant(const char*, INoeudXML** ppiEnfant) override;
    void SupprimeNoeud() override;
    INoeudXML* piGetEnfantParNom(const char*) override { return nullptr; }
    INoeudXML* piGetSuivant(const char*) override { return nullptr; }

private:
    // Whether the attribute is still on its element.
    bool bPresent();

    CRef<CXMLDocument> m_clDocument;
    pugi::xml_node m_element;
    pugi::xml_attribute m_attribute;
    uint64_t m_nGeneration;
    bool m_bDetached = false;
    // Name and value of a detached attribute.
    std::string m_sName;
    std::string m_sValue;
};
