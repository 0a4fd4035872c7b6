#include "HostXMLService.h"

#include "HostBarrier.h"
#include "Any.h"
#include "DataServiceErrors.h"
#include "KVResult.h"
#include "ManipAUB.h"
#include "XMLDocument.h"

#include <new>

CHostXMLService::CHostXMLService(size_t nMaxSize) : m_nMaxSize(nMaxSize) {}
CHostXMLService::~CHostXMLService() = default;

IDocumentXML* CHostXMLService::vpiCreeDocument(CXError* pclErreur) {
    return KVHost::Guard(pclErreur, static_cast<IDocumentXML*>(nullptr), [&]() -> IDocumentXML* {
        CXMLDocument* pclDocument = new (std::nothrow) CXMLDocument();
        if (!pclDocument && pclErreur)
            pclErreur->SetErrorNoMemory();
        return pclDocument;
    });
}

IDocumentXML* CHostXMLService::vpiAnalyse(const CAny& clTexte, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, static_cast<IDocumentXML*>(nullptr), [&]() -> IDocumentXML* {
        // Text of any other kind is read as wide text; the copy leaves the caller's value alone.
        CAny clCopie(clTexte);
        STManipAUB stTexte{};
        if (!KV_bSucces(clCopie.nGetManipAUB(&stTexte))) {
            KVDataService::Fail(pclErreur, DATASERVICE_XML_ARGUMENT,
                                L"XML is read from text or bytes; the value given is neither.");
            return nullptr;
        }
        pugi::xml_encoding eEncoding;
        switch (stTexte.nType) {
        case KVTYPE_KLDSTRW:
            eEncoding = pugi::encoding_wchar;
            break;
        case KVTYPE_KLDSTRA:
            eEncoding = pugi::encoding_utf8;
            break;
        default:
            eEncoding = pugi::encoding_auto;
            break;
        }
        return CXMLDocument::s_pclParse(stTexte.pGetDonnees(), stTexte.nGetTaille(), eEncoding,
                                        m_nMaxSize, pclErreur);
    });
}
