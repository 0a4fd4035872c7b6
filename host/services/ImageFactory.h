// CImageFactory: the image factory of the host's image service, IImageFactory: images from
// bytes or from a file, each over its own copy of the bytes.
#pragma once
#include "Counted.h"
#include "ImageService.h"
#include "XError.h"

#include <cstddef>

class CImageFactory final : public CCounted<IImageFactory> {
public:
    // Files past this many bytes are refused; a host option.
    static constexpr size_t knDefaultMaxSize = 256u << 20;

    explicit CImageFactory(size_t nMaxSize = knDefaultMaxSize);
    ~CImageFactory() override;

    IImage* vpiCreeImage(const void* pOctets, size_t nTaille, const wchar_t* pszNomFichier,
                         CXError* pclErreur) override;
    IImage* vpiChargeImage(const wchar_t* pszChemin, CXError* pclErreur) override;

private:
    size_t m_nMaxSize;
};
