#include "XMLNode.h"

#include "HostBarrier.h"
#include "Utf8.h"
#include "XMLAttribute.h"
#include "XMLNamespace.h"

#include <cstring>
#include <string>

namespace {

bool s_bText(pugi::xml_node node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

// Whether the element's name has that local name; any name for null.
bool s_bLocalNameIs(pugi::xml_node node, const char* pszLocalName) {
    return node.type() == pugi::node_element &&
           (!pszLocalName ||
            std::strcmp(CXMLDocument::s_pszLocalName(node.name()), pszLocalName) == 0);
}

} // namespace

CXMLNode::CXMLNode(CXMLDocument* pclDocument, pugi::xml_node node)
    : m_clDocument(CRef<CXMLDocument>::Retain(pclDocument)), m_node(node) {}

CXMLNode::~CXMLNode() = default;

eGENRENOEUDXML CXMLNode::eGetGenre() {
    switch (m_node.type()) {
    case pugi::node_element:
        return NOEUDXML_ELEMENT;
    case pugi::node_pcdata:
    case pugi::node_cdata:
        return NOEUDXML_TEXTE;
    case pugi::node_comment:
        return NOEUDXML_COMMENTAIRE;
    case pugi::node_pi:
    case pugi::node_declaration:
        return NOEUDXML_INSTRUCTION;
    default:
        return NOEUDXML_INCONNU;
    }
}

const char* CXMLNode::pszGetNom() {
    return CXMLDocument::s_pszLocalName(m_node.name());
}

const char* CXMLNode::pszGetValeur() {
    if (m_node.type() != pugi::node_element)
        return m_node.value();
    // The text of the children: most elements hold one piece, given as it stands.
    pugi::xml_node first;
    bool bSeveral = false;
    for (pugi::xml_node child = m_node.first_child(); child; child = child.next_sibling()) {
        if (!s_bText(child))
            continue;
        if (first) {
            bSeveral = true;
            break;
        }
        first = child;
    }
    if (!bSeveral)
        return first.value();
    m_sText.clear();
    for (pugi::xml_node child = m_node.first_child(); child; child = child.next_sibling())
        if (s_bText(child))
            m_sText += child.value();
    return m_sText.c_str();
}

const char* CXMLNode::pszGetAttribut(const char* pszNom) {
    if (!pszNom)
        return "";
    return m_node.attribute(pszNom).value();
}

INoeudXML* CXMLNode::piGetEnfant(int nIndice) {
    return KVHost::Guard(nullptr, static_cast<INoeudXML*>(nullptr), [&]() -> INoeudXML* {
        if (nIndice < 0)
            return nullptr;
        uint64_t nGeneration = m_clDocument->nGeneration();
        pugi::xml_node child;
        int nRank = 0;
        if (m_nChildRank >= 0 && m_nChildRank <= nIndice && m_nChildGeneration == nGeneration) {
            child = m_child;
            nRank = m_nChildRank;
        } else {
            child = m_node.first_child();
        }
        for (; child && nRank < nIndice; ++nRank)
            child = child.next_sibling();
        if (!child)
            return nullptr;
        m_child = child;
        m_nChildRank = nRank;
        m_nChildGeneration = nGeneration;
        return new CXMLNode(m_clDocument.pGet(), child);
    });
}

INoeudXML* CXMLNode::piGetAttribut(int nIndice) {
    return KVHost::Guard(nullptr, static_cast<INoeudXML*>(nullptr), [&]() -> INoeudXML* {
        if (nIndice < 0)
            return nullptr;
        uint64_t nGeneration = m_clDocument->nGeneration();
        pugi::xml_attribute attribute;
        int nRank = 0;
        if (m_nAttributeRank >= 0 && m_nAttributeRank <= nIndice &&
            m_nAttributeGeneration == nGeneration) {
            attribute = m_attribute;
            nRank = m_nAttributeRank;
        } else {
            attribute = m_node.first_attribute();
        }
        for (; attribute && nRank < nIndice; ++nRank)
            attribute = attribute.next_attribute();
        if (!attribute)
            return nullptr;
        m_attribute = attribute;
        m_nAttributeRank = nRank;
        m_nAttributeGeneration = nGeneration;
        return new CXMLAttribute(m_clDocument.pGet(), m_node, attribute);
    });
}

INamespaceXML* CXMLNode::s_piResolveNamespace(pugi::xml_node element, const char* pszName,
                                              bool bDefaultApplies) {
    const char* pszColon = std::strchr(pszName, ':');
    if (!pszColon && !bDefaultApplies)
        return nullptr;
    std::string sPrefix = pszColon ? std::string(pszName, pszColon) : std::string();
    if (sPrefix == "xml")
        return new CXMLNamespace(sPrefix, "http://www.w3.org/XML/1998/namespace");
    if (sPrefix == "xmlns")
        return new CXMLNamespace(sPrefix, "http://www.w3.org/2000/xmlns/");
    std::string sDeclaration = pszColon ? "xmlns:" + sPrefix : std::string("xmlns");
    for (pugi::xml_node node = element; node; node = node.parent()) {
        pugi::xml_attribute declaration = node.attribute(sDeclaration.c_str());
        if (!declaration)
            continue;
        // xmlns="" takes the default namespace away.
        if (!pszColon && !*declaration.value())
            return nullptr;
        return new CXMLNamespace(sPrefix, declaration.value());
    }
    // A prefix nobody declared is still the prefix as written.
    return pszColon ? new CXMLNamespace(sPrefix, "") : nullptr;
}

INamespaceXML* CXMLNode::piGetNamespace() {
    return KVHost::Guard(nullptr, static_cast<INamespaceXML*>(nullptr), [&]() -> INamespaceXML* {
        if (m_node.type() != pugi::node_element)
            return nullptr;
        return s_piResolveNamespace(m_node, m_node.name(), true);
    });
}

int CXMLNode::bSetTexte(const wchar_t* pszTexte) {
    return KVHost::Guard(nullptr, 0, [&]() -> int {
        std::string sUtf8 = KVUtf8::VersUtf8(pszTexte ? pszTexte : L"");
        switch (m_node.type()) {
        case pugi::node_element: {
            // The former children leave the tree but stay valid for whoever holds them.
            while (pugi::xml_node child = m_node.first_child()) {
                m_clDocument->Detach(child);
                if (m_node.first_child() == child)
                    return 0; // no memory for the holder: nothing more is changed
            }
            m_clDocument->Change();
            if (sUtf8.empty())
                return 1;
            return m_node.append_child(pugi::node_pcdata).set_value(sUtf8.c_str()) ? 1 : 0;
        }
        case pugi::node_pcdata:
        case pugi::node_cdata:
        case pugi::node_comment:
        case pugi::node_pi:
            return m_node.set_value(sUtf8.c_str()) ? 1 : 0;
        default:
            return 0;
        }
    });
}

int CXMLNode::bSetValeurAttribut(const char* pszNom, const wchar_t* pszValeur) {
    return KVHost::Guard(nullptr, 0, [&]() -> int {
        return bSetAttributUTF8(pszNom, KVUtf8::VersUtf8(pszValeur ? pszValeur : L"").c_str());
    });
}

int CXMLNode::bSetAttributUTF8(const char* pszNom, const char* pszValeur) {
    if (m_node.type() != pugi::node_element || !CXMLDocument::s_bValidName(pszNom))
        return 0;
    pugi::xml_attribute attribute = m_node.attribute(pszNom);
    if (!attribute) {
        attribute = m_node.append_attribute(pszNom);
        if (!attribute)
            return 0;
        m_clDocument->Change();
    }
    return attribute.set_value(pszValeur ? pszValeur : "") ? 1 : 0;
}

int CXMLNode::bAjouteEnfant(const char* pszNom, INoeudXML** ppiEnfant) {
    return KVHost::Guard(nullptr, 0, [&]() -> int {
        if (ppiEnfant)
            *ppiEnfant = nullptr;
        if (m_node.type() != pugi::node_element || !CXMLDocument::s_bValidName(pszNom))
            return 0;
        pugi::xml_node child = m_node.append_child(pszNom);
        if (!child)
            return 0;
        m_clDocument->Change();
        if (ppiEnfant)
            *ppiEnfant = new CXMLNode(m_clDocument.pGet(), child);
        return 1;
    });
}

void CXMLNode::SupprimeNoeud() {
    if (m_clDocument->bAttached(m_node))
        m_clDocument->Detach(m_node);
}

INoeudXML* CXMLNode::piGetEnfantParNom(const char* pszNomLocal) {
    return KVHost::Guard(nullptr, static_cast<INoeudXML*>(nullptr), [&]() -> INoeudXML* {
        for (pugi::xml_node child = m_node.first_child(); child; child = child.next_sibling())
            if (s_bLocalNameIs(child, pszNomLocal))
                return new CXMLNode(m_clDocument.pGet(), child);
        return nullptr;
    });
}

INoeudXML* CXMLNode::piGetSuivant(const char* pszNomLocal) {
    return KVHost::Guard(nullptr, static_cast<INoeudXML*>(nullptr), [&]() -> INoeudXML* {
        // A detached node has no siblings: the others under the holder are no kin of it.
        if (!m_clDocument->bAttached(m_node))
            return nullptr;
        for (pugi::xml_node next = m_node.next_sibling(); next; next = next.next_sibling())
            if (s_bLocalNameIs(next, pszNomLocal) && !m_clDocument->bHolder(next))
                return new CXMLNode(m_clDocument.pGet(), next);
        return nullptr;
    });
}
