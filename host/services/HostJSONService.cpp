#include "HostJSONService.h"

#include "HostBarrier.h"
#include "JSONDocument.h"
#include "JSONElement.h"
#include "Ref.h"

CHostJSONService::CHostJSONService(size_t nMaxSize) : m_nMaxSize(nMaxSize) {}
CHostJSONService::~CHostJSONService() = default;

IElementJSON* CHostJSONService::vpiAnalyse(const char* pText, size_t nSize, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, static_cast<IElementJSON*>(nullptr), [&]() -> IElementJSON* {
        CRef<CJSONDocument> clDocument = CRef<CJSONDocument>::Adopt(
            CJSONDocument::s_pclParse(pText, nSize, m_nMaxSize, pclErreur));
        if (!clDocument)
            return nullptr;
        return new CJSONElement(clDocument.pGet(), CJSONDocument::knRootIndex);
    });
}
