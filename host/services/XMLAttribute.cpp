#include "XMLAttribute.h"

#include "HostBarrier.h"
#include "Utf8.h"
#include "XMLNode.h"

CXMLAttribute::CXMLAttribute(CXMLDocument* pclDocument, pugi::xml_node element,
                             pugi::xml_attribute attribute)
    : m_clDocument(CRef<CXMLDocument>::Retain(pclDocument)), m_element(element),
      m_attribute(attribute), m_nGeneration(pclDocument->nGeneration()) {}

CXMLAttribute::~CXMLAttribute() = default;

bool CXMLAttribute::bPresent() {
    if (m_bDetached)
        return false;
    uint64_t nGeneration = m_clDocument->nGeneration();
    if (m_nGeneration == nGeneration)
        return true;
    // The document changed shape: compare handles only, never read the attribute, which may
    // be gone.
    for (pugi::xml_attribute attribute = m_element.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        if (attribute == m_attribute) {
            m_nGeneration = nGeneration;
            return true;
        }
    }
    m_bDetached = true;
    m_attribute = pugi::xml_attribute();
    return false;
}

const char* CXMLAttribute::pszGetNom() {
    return CXMLDocument::s_pszLocalName(bPresent() ? m_attribute.name() : m_sName.c_str());
}

const char* CXMLAttribute::pszGetValeur() {
    return bPresent() ? m_attribute.value() : m_sValue.c_str();
}

INamespaceXML* CXMLAttribute::piGetNamespace() {
    return KVHost::Guard(nullptr, static_cast<INamespaceXML*>(nullptr), [&]() -> INamespaceXML* {
        // A name without prefix is in no namespace, whatever the default of its element.
        if (bPresent())
            return CXMLNode::s_piResolveNamespace(m_element, m_attribute.name(), false);
        return CXMLNode::s_piResolveNamespace(pugi::xml_node(), m_sName.c_str(), false);
    });
}

int CXMLAttribute::bSetTexte(const wchar_t* pszTexte) {
    return KVHost::Guard(nullptr, 0, [&]() -> int {
        std::string sUtf8 = KVUtf8::VersUtf8(pszTexte ? pszTexte : L"");
        if (!bPresent()) {
            m_sValue = std::move(sUtf8);
            return 1;
        }
        return m_attribute.set_value(sUtf8.c_str()) ? 1 : 0;
    });
}

int CXMLAttribute::bAjouteEnfant(const char*, INoeudXML** ppiEnfant) {
    return KVHost::Guard(nullptr, 0, [&]() -> int {
        if (ppiEnfant)
            *ppiEnfant = nullptr;
        return 0;
    });
}

void CXMLAttribute::SupprimeNoeud() {
    if (!bPresent())
        return;
    m_sName = m_attribute.name();
    m_sValue = m_attribute.value();
    m_element.remove_attribute(m_attribute);
    m_attribute = pugi::xml_attribute();
    m_bDetached = true;
    m_clDocument->Change();
}
