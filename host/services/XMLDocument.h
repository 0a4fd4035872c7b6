// CXMLDocument: one XML document of the host, IDocumentXML over a pugixml document. Every node
// handle keeps it alive. Nodes are never freed while it lives: a node taken out of the tree
// (SupprimeNoeud, a replaced root, the children bSetTexte replaces) moves under a hidden holder
// element, so that every handle on it stays valid, detached. The generation counts the changes
// of shape, so that the handles' remembered positions know when they went stale.
#pragma once
#include "Counted.h"
#include "XMLService.h"
#include "XError.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

class CXMLDocument final : public CCounted<IDocumentXML> {
public:
    // What bEcrit writes in.
    enum eENCODING : int {
        ENCODING_UTF8,
        ENCODING_LATIN1, // characters past U+00FF as character references
        ENCODING_UTF16LE,
        ENCODING_UTF16BE,
        ENCODING_UTF32LE,
        ENCODING_UTF32BE,
        ENCODING_UNKNOWN, // a name SetEncodage did not know: bEcrit refuses
    };

    CXMLDocument();
    ~CXMLDocument() override;

    // A document parsed from nBytes bytes in that encoding (pugixml's encoding_auto: the bytes'
    // mark or declaration tell); null with pugixml's description and the place in the error.
    static CXMLDocument* s_pclParse(const void* pBytes, size_t nBytes, pugi::xml_encoding eEncoding,
                                    size_t nMaxSize, CXError* pclErreur);

    void SetEncodage(const wchar_t* pszEncodage) override;
    int bCreeRacine(const char* pszNom, INoeudXML** ppiRacine) override;
    INoeudXML* piGetRacine(int nIndice) override;
    int bImporteRacine(INoeudXML* piNoeud, CXError* pclErreur) override;
    int bEcrit(IContenuXMLSortie& clSortie, eFORMATXML eFormat, CXError* pclErreur) override;

    // For the node handles.
    uint64_t nGeneration() const { return m_nGeneration; }
    void Change() { ++m_nGeneration; }
    // The root element: the first element at the top that is not the holder of detached nodes.
    pugi::xml_node root() const;
    // Moves the node under the holder.
    void Detach(pugi::xml_node node);
    // Whether the node hangs in the tree: its parent is neither nothing nor the holder.
    bool bAttached(pugi::xml_node node) const;
    // Whether the node is the holder itself, which no caller ever sees.
    bool bHolder(pugi::xml_node node) const { return node == m_detachedHolder; }
    // An XML name as a writer must accept it: a name start, name characters, at most one colon
    // and not at either end. Bytes from 0x80 are taken as name characters.
    static bool s_bValidName(const char* pszName);
    // The local name: what follows the prefix.
    static const char* s_pszLocalName(const char* pszName);

private:
    // The written UTF-8 text in the document's encoding; false, with the cause in the error,
    // for a character the encoding cannot carry where no reference may stand for it.
    bool bEncode(const std::string& sUtf8, std::string& sOut, CXError* pclErreur) const;

    pugi::xml_document m_clTree;
    pugi::xml_node m_detachedHolder; // made on the first detachment
    uint64_t m_nGeneration = 0;
    std::string m_sEncoding = "UTF-8";
    eENCODING m_eEncoding = ENCODING_UTF8;
};
