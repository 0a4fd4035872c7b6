// CHostXMLService: the host's "GestionnaireXML", IGestionnaireXML over pugixml: new documents,
// and documents parsed from wide text, UTF-8 text or bytes that tell their own encoding.
#pragma once
#include "Counted.h"
#include "XMLService.h"
#include "XError.h"

#include <cstddef>

class CHostXMLService final : public CCounted<IGestionnaireXML> {
public:
    // Texts past this many bytes are refused before parsing; a host option.
    static constexpr size_t knDefaultMaxSize = 256u << 20;

    explicit CHostXMLService(size_t nMaxSize = knDefaultMaxSize);
    ~CHostXMLService() override;

    IDocumentXML* vpiCreeDocument(CXError* pclErreur) override;
    IDocumentXML* vpiAnalyse(const CAny& clTexte, CXError* pclErreur) override;

private:
    size_t m_nMaxSize;
};
