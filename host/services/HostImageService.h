// CHostImageService: the host's "MainIMG", IMainIMG: hands out its one image factory.
#pragma once
#include "ImageService.h"
#include "Ref.h"
#include "XError.h"

#include <cstddef>

class CImageFactory;

class CHostImageService final : public IMainIMG, public CKVUnknown {
public:
    // Images past this many bytes are refused; a host option.
    explicit CHostImageService(size_t nMaxSize);
    CHostImageService();
    ~CHostImageService() override;

    void vAddRef() override { dwAddRef(); }
    void vRelease() override { dwRelease(); }

    IImageFactory* vpiGetImageFactory(CXError* pclErreur) override;

private:
    CRef<CImageFactory> m_clFactory;
};
