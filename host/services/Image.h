// CImage: an image of the host's image service, IImage over a copy of its bytes. The kind comes
// from the bytes' signature (BMP, JPEG, GIF, PNG), else from the file name's extension; the
// size in pixels from the headers of the kinds the bytes show.
#pragma once
#include "Counted.h"
#include "ImageService.h"
#include "XError.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

class CImage final : public CCounted<IImage> {
public:
    // Reads the kind and size of the bytes; pszFileName (may be null) is the hint.
    CImage(std::vector<uint8_t> tabBytes, const wchar_t* pszFileName);
    ~CImage() override;

    IImageFactory::TYPEIMAGE veGetTypeImage() override { return m_eType; }
    int vbGetTaille(int& nLargeur, int& nHauteur) override;

    size_t nGetByteSize() const { return m_tabBytes.size(); }
    // Whether the bytes themselves told the kind (rather than the file name).
    bool bTypeFromBytes() const { return m_bTypeFromBytes; }

    // The kind and size the bytes show; false when they show no kind known here. A kind with
    // unreadable dimensions gives true with both sizes 0.
    static bool s_bReadHeader(const uint8_t* p, size_t n, IImageFactory::TYPEIMAGE& eType,
                              int& nWidth, int& nHeight);
    // The kind a file name's extension names, TYPEIMAGE_INCONNU for none.
    static IImageFactory::TYPEIMAGE s_eTypeFromName(std::wstring_view sName);

private:
    std::vector<uint8_t> m_tabBytes;
    IImageFactory::TYPEIMAGE m_eType = IImageFactory::TYPEIMAGE_INCONNU;
    bool m_bTypeFromBytes = false;
    int m_nWidth = 0;
    int m_nHeight = 0;
};
