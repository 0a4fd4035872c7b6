// CXMLNode: a node of a host XML document that is not an attribute (element, text, comment,
// instruction), INoeudXML over a pugixml node. Holds its document. Children and attributes are
// reached by index: pugixml keeps them as linked lists, so the handle remembers the last index
// asked and its node, and a walk by rising index costs one step per index.
#pragma once
#include "Counted.h"
#include "Ref.h"
#include "XMLDocument.h"

#include <string>

class CXMLNode final : public CCounted<INoeudXML> {
public:
    CXMLNode(CXMLDocument* pclDocument, pugi::xml_node node);
    ~CXMLNode() override;

    eGENRENOEUDXML eGetGenre() override;
    const char* pszGetNom() override;
    const char* pszGetValeur() override;
    const char* pszGetAttribut(const char* pszNom) override;
    INoeudXML* piGetEnfant(int nIndice) override;
    INoeudXML* piGetAttribut(int nIndice) override;
    INamespaceXML* piGetNamespace() override;
    int bSetTexte(const wchar_t* pszTexte) override;
    int bSetValeurAttribut(const char* pszNom, const wchar_t* pszValeur) override;
    int bSetAttributUTF8(const char* pszNom, const char* pszValeur) override;
    int bAjouteEnfant(const char* pszNom, INoeudXML** ppiEnfant) override;
    void SupprimeNoeud() override;
    INoeudXML* piGetEnfantParNom(const char* pszNomLocal) override;
    INoeudXML* piGetSuivant(const char* pszNomLocal) override;

    pugi::xml_node node() const { return m_node; }

    // The namespace that applies to a name with that prefix ("" none) seen from the element:
    // the nearest xmlns declaration up the tree. Null when no prefix and no default namespace.
    static INamespaceXML* s_piResolveNamespace(pugi::xml_node element, const char* pszName,
                                               bool bDefaultApplies);

private:
    CRef<CXMLDocument> m_clDocument;
    pugi::xml_node m_node;
    // The child and the attribute last reached by index, valid for one generation.
    int m_nChildRank = -1;
    pugi::xml_node m_child;
    uint64_t m_nChildGeneration = 0;
    int m_nAttributeRank = -1;
    pugi::xml_attribute m_attribute;
    uint64_t m_nAttributeGeneration = 0;
    // An element's text when it has several pieces.
    std::string m_sText;
};
