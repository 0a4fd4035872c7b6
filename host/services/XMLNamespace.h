// CXMLNamespace: the namespace of a node's name, INamespaceXML: the prefix as written and the
// URI its declaration binds, both copied, so it outlives the node and the document.
#pragma once
#include "Counted.h"
#include "XMLService.h"
#include "XError.h"

#include <string>

class CXMLNamespace final : public CCounted<INamespaceXML> {
public:
    CXMLNamespace(std::string sPrefix, std::string sURI);
    ~CXMLNamespace() override;

    const char* pszGetPrefixe() override { return m_sPrefix.c_str(); }
    const char* pszGetURI() override { return m_sURI.c_str(); }

private:
    std::string m_sPrefix;
    std::string m_sURI;
};
