// CHostImageService: the host's "MainIMG", IMainIMG: hands out its one image factory.
#pragma once
#include "Counted.h"
#include "ImageService.h"
#include "Ref.h"
#include "XError.h"

#include <cstddef>

class CImageFactory;

class CHostImageService final : public CCounted<IMainIMG> {
public:
    // Images past this many bytes are refused; a host option.
    explicit CHostImageService(size_t nMaxSize);
    CHostImageService();
    ~CHostImageService() override;

    IImageFactory* vpiGetImageFactory(CXError* pclErreur) override;

private:
    CRef<CImageFactory> m_clFactory;
};
