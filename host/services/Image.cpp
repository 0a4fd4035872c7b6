#include "Image.h"

#include <climits>
#include <cstring>
#include <cwctype>
#include <string>

namespace {

uint32_t s_nLE16(const uint8_t* p) {
    return static_cast<uint32_t>(p[0] | (p[1] << 8));
}
uint32_t s_nBE16(const uint8_t* p) {
    return static_cast<uint32_t>((p[0] << 8) | p[1]);
}
uint32_t s_nLE32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
           (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}
uint32_t s_nBE32(const uint8_t* p) {
    return (static_cast<uint32_t>(p[0]) << 24) | (static_cast<uint32_t>(p[1]) << 16) |
           (static_cast<uint32_t>(p[2]) << 8) | static_cast<uint32_t>(p[3]);
}

// Sizes beyond an int are not sizes any header of these kinds can mean.
void s_SetSize(int64_t nWidth, int64_t nHeight, int& nOutWidth, int& nOutHeight) {
    if (nWidth <= 0 || nHeight <= 0 || nWidth > INT_MAX || nHeight > INT_MAX)
        return;
    nOutWidth = static_cast<int>(nWidth);
    nOutHeight = static_cast<int>(nHeight);
}

// The frame header of a JPEG: the markers from the start of the image, each with its length,
// until a start-of-frame (any C0 to CF but C4 huffman tables, C8 reserved, CC arithmetic
// conditioning). Scans stop at the start of scan: a frame header comes before it.
void s_JPEGSize(const uint8_t* p, size_t n, int& nWidth, int& nHeight) {
    size_t i = 2;
    while (i + 1 < n) {
        if (p[i] != 0xFF)
            return;
        uint8_t nMarker = p[i + 1];
        if (nMarker == 0xFF) { // fill byte
            ++i;
            continue;
        }
        i += 2;
        if (nMarker == 0x01 || (nMarker >= 0xD0 && nMarker <= 0xD8))
            continue; // no length
        if (nMarker == 0xD9 || nMarker == 0xDA || i + 2 > n)
            return;
        uint32_t nLength = s_nBE16(p + i);
        if (nLength < 2)
            return;
        bool bFrame = nMarker >= 0xC0 && nMarker <= 0xCF && nMarker != 0xC4 && nMarker != 0xC8 &&
                      nMarker != 0xCC;
        if (bFrame) {
            if (nLength < 7 || i + 7 > n)
                return;
            s_SetSize(s_nBE16(p + i + 5), s_nBE16(p + i + 3), nWidth, nHeight);
            return;
        }
        i += nLength;
    }
}

} // namespace

bool CImage::s_bReadHeader(const uint8_t* p, size_t n, IImageFactory::TYPEIMAGE& eType, int& nWidth,
                           int& nHeight) {
    nWidth = nHeight = 0;
    static const uint8_t s_abyPNG[8] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    if (n >= 8 && std::memcmp(p, s_abyPNG, 8) == 0) {
        eType = IImageFactory::TYPEIMAGE_PNG;
        // The first chunk is the header: its length, "IHDR", width and height.
        if (n >= 24 && std::memcmp(p + 12, "IHDR", 4) == 0)
            s_SetSize(s_nBE32(p + 16), s_nBE32(p + 20), nWidth, nHeight);
        return true;
    }
    if (n >= 3 && p[0] == 0xFF && p[1] == 0xD8 && p[2] == 0xFF) {
        eType = IImageFactory::TYPEIMAGE_JPEG;
        s_JPEGSize(p, n, nWidth, nHeight);
        return true;
    }
    if (n >= 6 && (std::memcmp(p, "GIF87a", 6) == 0 || std::memcmp(p, "GIF89a", 6) == 0)) {
        eType = IImageFactory::TYPEIMAGE_GIF;
        if (n >= 10)
            s_SetSize(s_nLE16(p + 6), s_nLE16(p + 8), nWidth, nHeight);
        return true;
    }
    if (n >= 2 && p[0] == 'B' && p[1] == 'M') {
        // "BM" alone is too weak a mark: the info header must have a size a BMP can have.
        if (n < 18)
            return false;
        uint32_t nHeader = s_nLE32(p + 14);
        if (nHeader != 12 && nHeader != 16 && nHeader != 40 && nHeader != 52 && nHeader != 56 &&
            nHeader != 64 && nHeader != 108 && nHeader != 124)
            return false;
        eType = IImageFactory::TYPEIMAGE_BMP;
        if (nHeader == 12) {
            if (n >= 22)
                s_SetSize(s_nLE16(p + 18), s_nLE16(p + 20), nWidth, nHeight);
        } else if (n >= 26) {
            // A negative height is a picture stored top row first.
            int64_t nH = static_cast<int32_t>(s_nLE32(p + 22));
            s_SetSize(static_cast<int32_t>(s_nLE32(p + 18)), nH < 0 ? -nH : nH, nWidth, nHeight);
        }
        return true;
    }
    return false;
}

IImageFactory::TYPEIMAGE CImage::s_eTypeFromName(std::wstring_view sName) {
    size_t nDot = sName.find_last_of(L'.');
    if (nDot == std::wstring_view::npos || sName.find_first_of(L'/', nDot) != sName.npos)
        return IImageFactory::TYPEIMAGE_INCONNU;
    std::wstring sExtension;
    for (wchar_t c : sName.substr(nDot + 1))
        sExtension += static_cast<wchar_t>(std::towlower(c));
    if (sExtension == L"bmp" || sExtension == L"dib")
        return IImageFactory::TYPEIMAGE_BMP;
    if (sExtension == L"jpg" || sExtension == L"jpeg" || sExtension == L"jpe" ||
        sExtension == L"jfif")
        return IImageFactory::TYPEIMAGE_JPEG;
    if (sExtension == L"gif")
        return IImageFactory::TYPEIMAGE_GIF;
    if (sExtension == L"png")
        return IImageFactory::TYPEIMAGE_PNG;
    return IImageFactory::TYPEIMAGE_INCONNU;
}

CImage::CImage(std::vector<uint8_t> tabBytes, const wchar_t* pszFileName)
    : m_tabBytes(std::move(tabBytes)) {
    m_bTypeFromBytes =
        s_bReadHeader(m_tabBytes.data(), m_tabBytes.size(), m_eType, m_nWidth, m_nHeight);
    if (!m_bTypeFromBytes && pszFileName)
        m_eType = s_eTypeFromName(pszFileName);
}

CImage::~CImage() = default;

int CImage::vbGetTaille(int& nLargeur, int& nHauteur) {
    if (m_nWidth <= 0)
        return 0;
    nLargeur = m_nWidth;
    nHauteur = m_nHeight;
    return 1;
}
