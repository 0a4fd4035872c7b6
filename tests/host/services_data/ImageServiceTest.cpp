// The image service: the kind of bytes and files by signature, their size from the headers,
// the name as a hint, and bad input.
#include "DataServiceErrors.h"
#include "HostImageService.h"
#include "Image.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <ostream>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

void s_LE(Bytes& b, uint32_t n, int nBytes) {
    for (int i = 0; i < nBytes; ++i)
        b.push_back(static_cast<uint8_t>(n >> (8 * i)));
}
void s_BE(Bytes& b, uint32_t n, int nBytes) {
    for (int i = nBytes - 1; i >= 0; --i)
        b.push_back(static_cast<uint8_t>(n >> (8 * i)));
}
void s_Text(Bytes& b, const char* psz) {
    while (*psz)
        b.push_back(static_cast<uint8_t>(*psz++));
}

// The headers of each kind, as their formats lay them out, followed by a few bytes of body.
Bytes s_PNG(uint32_t w, uint32_t h) {
    Bytes b = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    s_BE(b, 13, 4);
    s_Text(b, "IHDR");
    s_BE(b, w, 4);
    s_BE(b, h, 4);
    b.insert(b.end(), {8, 6, 0, 0, 0, 0, 0, 0, 0});
    return b;
}
Bytes s_GIF(uint16_t w, uint16_t h) {
    Bytes b;
    s_Text(b, "GIF89a");
    s_LE(b, w, 2);
    s_LE(b, h, 2);
    b.insert(b.end(), {0xF7, 0, 0});
    return b;
}
Bytes s_BMP(int32_t w, int32_t h, uint32_t nHeader = 40) {
    Bytes b = {'B', 'M'};
    s_LE(b, 54 + 16, 4);
    s_LE(b, 0, 4);
    s_LE(b, 54, 4);
    s_LE(b, nHeader, 4);
    if (nHeader == 12) {
        s_LE(b, static_cast<uint32_t>(w), 2);
        s_LE(b, static_cast<uint32_t>(h), 2);
    } else {
        s_LE(b, static_cast<uint32_t>(w), 4);
        s_LE(b, static_cast<uint32_t>(h), 4);
    }
    b.resize(b.size() + 24);
    return b;
}
// A JPEG with an application segment, a table and fill bytes before the frame header.
Bytes s_JPEG(uint16_t w, uint16_t h, uint8_t nFrame = 0xC0) {
    Bytes b = {0xFF, 0xD8, 0xFF, 0xE0};
    s_BE(b, 16, 2);
    s_Text(b, "JFIF");
    b.insert(b.end(), {0, 1, 1, 0, 0, 1, 0, 1, 0, 0});
    b.insert(b.end(), {0xFF, 0xDB});
    s_BE(b, 5, 2);
    b.insert(b.end(), {0, 1, 2});
    b.insert(b.end(), {0xFF, 0xFF, nFrame});
    s_BE(b, 11, 2);
    b.push_back(8);
    s_BE(b, h, 2);
    s_BE(b, w, 2);
    b.insert(b.end(), {1, 1, 0x11, 0});
    b.insert(b.end(), {0xFF, 0xDA, 0, 2, 0xFF, 0xD9});
    return b;
}

struct STImageCase {
    const char* pszName;
    Bytes tabBytes;
    const wchar_t* pszHint;
    IImageFactory::TYPEIMAGE eType;
    int nWidth, nHeight; // 0: no size known
};
// Cases go by their name in test listings.
void PrintTo(const STImageCase& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

Bytes s_Truncated(Bytes b, size_t n) {
    b.resize(n);
    return b;
}

const STImageCase gtabImages[] = {
    {"PNG", s_PNG(640, 480), nullptr, IImageFactory::TYPEIMAGE_PNG, 640, 480},
    {"PNGHintIgnored", s_PNG(1, 2), L".jpg", IImageFactory::TYPEIMAGE_PNG, 1, 2},
    {"GIF", s_GIF(320, 200), L".jpg", IImageFactory::TYPEIMAGE_GIF, 320, 200},
    {"BMP", s_BMP(800, 600), nullptr, IImageFactory::TYPEIMAGE_BMP, 800, 600},
    {"BMPTopDown", s_BMP(16, -9), nullptr, IImageFactory::TYPEIMAGE_BMP, 16, 9},
    {"BMPCoreHeader", s_BMP(31, 17, 12), nullptr, IImageFactory::TYPEIMAGE_BMP, 31, 17},
    {"JPEG", s_JPEG(1024, 768), nullptr, IImageFactory::TYPEIMAGE_JPEG, 1024, 768},
    {"JPEGProgressive", s_JPEG(7, 5, 0xC2), nullptr, IImageFactory::TYPEIMAGE_JPEG, 7, 5},
    {"JPEGBeforeFrame", s_Truncated(s_JPEG(7, 5), 30), nullptr, IImageFactory::TYPEIMAGE_JPEG, 0,
     0},
    {"PNGShort", s_Truncated(s_PNG(9, 9), 20), nullptr, IImageFactory::TYPEIMAGE_PNG, 0, 0},
    {"GIFShort", s_Truncated(s_GIF(9, 9), 8), nullptr, IImageFactory::TYPEIMAGE_GIF, 0, 0},
    {"PNGZeroWidth", s_PNG(0, 5), nullptr, IImageFactory::TYPEIMAGE_PNG, 0, 0},
    {"UnknownBytesNamed", Bytes{'h', 'e', 'l', 'l', 'o'}, L"photo.JPEG",
     IImageFactory::TYPEIMAGE_JPEG, 0, 0},
    {"UnknownBytesNamedPNG", Bytes{1, 2, 3}, L"/a.b/c.png", IImageFactory::TYPEIMAGE_PNG, 0, 0},
    {"UnknownBytes", Bytes{'h', 'e', 'l', 'l', 'o'}, nullptr, IImageFactory::TYPEIMAGE_INCONNU, 0,
     0},
    {"DotInDirectoryOnly", Bytes{1}, L"/a.png/file", IImageFactory::TYPEIMAGE_INCONNU, 0, 0},
    {"BMWithoutHeader", Bytes{'B', 'M', 'x', 'y', 'z'}, nullptr, IImageFactory::TYPEIMAGE_INCONNU,
     0, 0},
};

class ImageKind : public testing::TestWithParam<STImageCase> {};

TEST_P(ImageKind, FromBytesAndFromFile) {
    const STImageCase& stCase = GetParam();
    CRef<CHostImageService> clService = CRef<CHostImageService>::Adopt(new CHostImageService());
    CXError clError;
    CRef<IImageFactory> clFactory =
        CRef<IImageFactory>::Adopt(clService->vpiGetImageFactory(&clError));
    ASSERT_TRUE(clFactory);
    CRef<IImage> clImage = CRef<IImage>::Adopt(clFactory->vpiCreeImage(
        stCase.tabBytes.data(), stCase.tabBytes.size(), stCase.pszHint, &clError));
    ASSERT_TRUE(clImage) << KVUtf8::VersUtf8(clError.pszGetUserMessage());
    EXPECT_EQ(clImage->veGetTypeImage(), stCase.eType);
    int nWidth = -1, nHeight = -1;
    EXPECT_EQ(clImage->vbGetTaille(nWidth, nHeight) != 0, stCase.nWidth > 0);
    if (stCase.nWidth > 0) {
        EXPECT_EQ(nWidth, stCase.nWidth);
        EXPECT_EQ(nHeight, stCase.nHeight);
    }
    EXPECT_EQ(static_cast<CImage*>(clImage.pGet())->nGetByteSize(), stCase.tabBytes.size());
    if (stCase.pszHint)
        return;
    // The same bytes in a file read the same; the file's name is the hint there.
    std::string sPath = testing::TempDir() + "kvggl-image-" + stCase.pszName;
    FILE* pFile = std::fopen(sPath.c_str(), "wb");
    ASSERT_NE(pFile, nullptr);
    std::fwrite(stCase.tabBytes.data(), 1, stCase.tabBytes.size(), pFile);
    std::fclose(pFile);
    CRef<IImage> clLoaded =
        CRef<IImage>::Adopt(clFactory->vpiChargeImage(KVUtf8::VersWide(sPath).c_str(), &clError));
    std::remove(sPath.c_str());
    ASSERT_TRUE(clLoaded) << KVUtf8::VersUtf8(clError.pszGetUserMessage());
    EXPECT_EQ(clLoaded->veGetTypeImage(), stCase.eType);
    int nLoadedWidth = -1, nLoadedHeight = -1;
    EXPECT_EQ(clLoaded->vbGetTaille(nLoadedWidth, nLoadedHeight),
              clImage->vbGetTaille(nWidth, nHeight));
    EXPECT_EQ(nLoadedWidth, nWidth);
}

INSTANTIATE_TEST_SUITE_P(Signatures, ImageKind, testing::ValuesIn(gtabImages),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(ImageBadInput, ClearErrors) {
    CRef<IImageFactory> clFactory = CRef<IImageFactory>::Adopt(
        CRef<CHostImageService>::Adopt(new CHostImageService(64))->vpiGetImageFactory(nullptr));
    ASSERT_TRUE(clFactory) << "the factory outlives the service";
    struct {
        const char* pszName;
        std::function<IImage*(CXError*)> fnMake;
        eDATASERVICEERROR eCode;
    } tabCases[] = {
        {"NoBytes", [&](CXError* e) { return clFactory->vpiCreeImage(nullptr, 4, nullptr, e); },
         DATASERVICE_IMAGE_ARGUMENT},
        {"ZeroBytes", [&](CXError* e) { return clFactory->vpiCreeImage("x", 0, L"a.png", e); },
         DATASERVICE_IMAGE_ARGUMENT},
        {"OverLimit",
         [&](CXError* e) { return clFactory->vpiCreeImage(Bytes(65).data(), 65, nullptr, e); },
         DATASERVICE_IMAGE_TOO_LARGE},
        {"NoPath", [&](CXError* e) { return clFactory->vpiChargeImage(L"", e); },
         DATASERVICE_IMAGE_ARGUMENT},
        {"Missing",
         [&](CXError* e) { return clFactory->vpiChargeImage(L"/nonexistent/kvggl.png", e); },
         DATASERVICE_IMAGE_READ},
        {"Directory", [&](CXError* e) { return clFactory->vpiChargeImage(L"/tmp", e); },
         DATASERVICE_IMAGE_READ},
    };
    for (auto& stCase : tabCases) {
        CXError clError;
        EXPECT_EQ(stCase.fnMake(&clError), nullptr) << stCase.pszName;
        EXPECT_EQ(clError.nGetUserErrorCode(), static_cast<unsigned>(stCase.eCode))
            << stCase.pszName;
        EXPECT_EQ(clError.nGetErrorLevel(), ELEVEL_ERREUR) << stCase.pszName;
        EXPECT_EQ(stCase.fnMake(nullptr), nullptr) << stCase.pszName;
    }
    CXError clError;
    EXPECT_EQ(clFactory->vpiChargeImage(L"/nonexistent/kvggl.png", &clError), nullptr);
    EXPECT_NE(std::wstring(clError.pszGetUserMessage()).find(L"No such file"), std::wstring::npos);
}

} // namespace
