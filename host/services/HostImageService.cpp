#include "HostImageService.h"

#include "ImageFactory.h"

CHostImageService::CHostImageService(size_t nMaxSize)
    : m_clFactory(CRef<CImageFactory>::Adopt(new CImageFactory(nMaxSize))) {}

CHostImageService::CHostImageService() : CHostImageService(CImageFactory::knDefaultMaxSize) {}

CHostImageService::~CHostImageService() = default;

IImageFactory* CHostImageService::vpiGetImageFactory(CXError*) {
    return CRef<CImageFactory>(m_clFactory).pDetach();
}
