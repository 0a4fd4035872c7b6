#include "XMLNamespace.h"

#include <utility>

CXMLNamespace::CXMLNamespace(std::string sPrefix, std::string sURI)
    : m_sPrefix(std::move(sPrefix)), m_sURI(std::move(sURI)) {}

CXMLNamespace::~CXMLNamespace() = default;
