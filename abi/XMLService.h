// The host's XML service, registry name "GestionnaireXML": IGestionnaireXML makes and parses
// documents, IDocumentXML and INoeudXML are a DOM over them, INamespaceXML tells a node's
// prefix. The host implements them; the component reads feeds and SOAP replies with them, edits
// the retained nodes in place and writes documents out. IContenuXMLSortie is the component's
// sink for written text: the component implements it, the host calls it. Slot order is binding.
//
// Nodes are counted and keep their document alive: a caller may release the document and go on
// with a node. Children and attributes are reached by index from 0, in document order, in
// constant time for a sequential walk. Names are UTF-8 and carry their prefix as written
// ("gd:email"); pszGetNom gives the local name. Texts that nodes give are never null ("" for
// none) and live until the node is changed or released.
#pragma once
#include "ObjectInterfaces.h"

#include <cstddef>

class CAny;
class CXError;
class INoeudXML;
class INamespaceXML;
class IDocumentXML;

inline constexpr wchar_t gszServiceXML[] = L"GestionnaireXML";

// Kinds of node; single bits, so that a set of kinds is a mask. Attributes and text carry
// character data.
enum eGENRENOEUDXML : int {
    NOEUDXML_INCONNU = 0,
    NOEUDXML_ELEMENT = 1,
    NOEUDXML_ATTRIBUT = 2,
    NOEUDXML_TEXTE = 4, // text and CDATA sections
    NOEUDXML_COMMENTAIRE = 8,
    NOEUDXML_INSTRUCTION = 16,
};

// How IDocumentXML::bEcrit writes.
enum eFORMATXML : int {
    FORMATXML_DOCUMENT = 1,         // XML declaration with the encoding, then the root
    FORMATXML_SANS_DECLARATION = 2, // the root element alone, as one piece for embedding
};

// The component's receiver of written text.
class IContenuXMLSortie {
public:
    // The text, in the document's encoding. The host gives the whole text in one call; a sink
    // called again keeps the last call's text.
    virtual int vbContenuXML(const char* pTexte, size_t nTaille, CXError* pclErreur) = 0;

protected:
    ~IContenuXMLSortie() = default;
};

class INamespaceXML : public IInterfaceObjetBase {
public:
    // The prefix as written; "" for the default namespace.
    virtual const char* pszGetPrefixe() = 0;
    virtual const char* pszGetURI() = 0;

protected:
    ~INamespaceXML() = default;
};

// A node. An attribute is a node of kind NOEUDXML_ATTRIBUT: its name, namespace and value.
class INoeudXML : public IInterfaceObjetBase {
public:
    virtual eGENRENOEUDXML eGetGenre() = 0;
    // The local name, without prefix.
    virtual const char* pszGetNom() = 0;
    // Attribute and text: their character data; element: the text of its children.
    virtual const char* pszGetValeur() = 0;
    // The value of the attribute of that name (with its prefix, as written).
    virtual const char* pszGetAttribut(const char* pszNom) = 0;
    // A new reference to the child (every kind but attributes); null past the end.
    virtual INoeudXML* piGetEnfant(int nIndice) = 0;
    // A new reference to the attribute node; null past the end.
    virtual INoeudXML* piGetAttribut(int nIndice) = 0;
    // A new reference to the node's namespace; null when its name has no prefix and no default
    // namespace applies.
    virtual INamespaceXML* piGetNamespace() = 0;
    // Replaces the children of an element by one text, or the value of an attribute or a text.
    virtual int bSetTexte(const wchar_t* pszTexte) = 0;
    // Sets or creates the attribute.
    virtual int bSetValeurAttribut(const char* pszNom, const wchar_t* pszValeur) = 0;
    virtual int bSetAttributUTF8(const char* pszNom, const char* pszValeur) = 0;
    // Appends a child element; a new reference to it in *ppiEnfant.
    virtual int bAjouteEnfant(const char* pszNom, INoeudXML** ppiEnfant) = 0;
    // Takes the node out of its parent; the node stays valid, detached.
    virtual void SupprimeNoeud() = 0;
    // A new reference to the first child element of that local name, or null.
    virtual INoeudXML* piGetEnfantParNom(const char* pszNomLocal) = 0;
    // A new reference to the next sibling element of that local name (any, for null), or null.
    virtual INoeudXML* piGetSuivant(const char* pszNomLocal) = 0;

protected:
    ~INoeudXML() = default;
};

class IDocumentXML : public IInterfaceObjetBase {
public:
    // The encoding that bEcrit declares and writes in ("UTF-8").
    virtual void SetEncodage(const wchar_t* pszEncodage) = 0;
    // Makes the root element; a new reference to it in *ppiRacine.
    virtual int bCreeRacine(const char* pszNom, INoeudXML** ppiRacine) = 0;
    // A new reference to a top-level node: 0 is the root element; null past the end.
    virtual INoeudXML* piGetRacine(int nIndice) = 0;
    // A copy of the node and everything under it, from any document, becomes the root; the node
    // itself is not changed.
    virtual int bImporteRacine(INoeudXML* piNoeud, CXError* pclErreur) = 0;
    // Writes the document into the sink.
    virtual int bEcrit(IContenuXMLSortie& clSortie, eFORMATXML eFormat, CXError* pclErreur) = 0;

protected:
    ~IDocumentXML() = default;
};

// The service.
class IGestionnaireXML : public IInterfaceObjetBase {
public:
    // A new empty document.
    virtual IDocumentXML* vpiCreeDocument(CXError* pclErreur) = 0;
    // A new document parsed from text: wide (16) or UTF-8 (19) text, or bytes (28) whose
    // declaration tells the encoding. Null with the cause in the error when it is not XML.
    virtual IDocumentXML* vpiAnalyse(const CAny& clTexte, CXError* pclErreur) = 0;

protected:
    ~IGestionnaireXML() = default;
};
