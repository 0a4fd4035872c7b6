#include "MapImage.h"

#include <gd.h>
#include <gdfonts.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr double s_dPi = 3.14159265358979323846;
constexpr double s_dTile = 256; // the world's width in pixels at zoom 0
constexpr uint32_t s_dwBackground = 0xF2EFE9;

// The point in world pixels at zoom 0: x from the longitude, y by the Mercator projection.
void s_World(const STLatLng& at, double& x, double& y) {
    double dSin = std::sin(std::clamp(at.dLat, -85.05112878, 85.05112878) * s_dPi / 180);
    x = (at.dLng + 180) / 360 * s_dTile;
    y = (0.5 - std::log((1 + dSin) / (1 - dSin)) / (4 * s_dPi)) * s_dTile;
}

struct STImageDeleter {
    void operator()(gdImage* p) const { gdImageDestroy(p); }
};
struct STBytesDeleter {
    void operator()(void* p) const { gdFree(p); }
};

int s_nColour(gdImage* p, uint32_t dw, uint8_t byAlpha = 255) {
    // gd's alpha runs the other way, from 0 opaque to 127 transparent.
    return gdImageColorAllocateAlpha(p, static_cast<int>(dw >> 16 & 0xFF),
                                     static_cast<int>(dw >> 8 & 0xFF), static_cast<int>(dw & 0xFF),
                                     127 - byAlpha * 127 / 255);
}

} // namespace

void CMapImage::s_Project(const STLatLng& center, int nZoom, double dScale, int nWidth,
                          int nHeight, const STLatLng& at, double& x, double& y) {
    double cx, cy;
    s_World(center, cx, cy);
    s_World(at, x, y);
    const double dFactor = std::ldexp(1.0, nZoom) * dScale;
    x = (x - cx) * dFactor + nWidth / 2.0;
    y = (y - cy) * dFactor + nHeight / 2.0;
}

bool CMapImage::s_bFrame(const std::vector<STLatLng>& tabPoints, int nWidth, int nHeight,
                         STLatLng& center, int& nZoom) {
    if (tabPoints.empty())
        return false;
    double x0 = 1e9, y0 = 1e9, x1 = -1e9, y1 = -1e9;
    for (const STLatLng& at : tabPoints) {
        double x, y;
        s_World(at, x, y);
        x0 = std::min(x0, x);
        x1 = std::max(x1, x);
        y0 = std::min(y0, y);
        y1 = std::max(y1, y);
    }
    // The centre of the bounds, back from world pixels.
    const double cx = (x0 + x1) / 2, cy = (y0 + y1) / 2;
    center.dLng = cx / s_dTile * 360 - 180;
    center.dLat = std::atan(std::sinh(s_dPi * (1 - 2 * cy / s_dTile))) * 180 / s_dPi;
    // 32 pixels of margin on each side, as markers stand above their points.
    const double dRoomX = std::max(1, nWidth - 64), dRoomY = std::max(1, nHeight - 64);
    nZoom = 21;
    while (nZoom > 0 && ((x1 - x0) * std::ldexp(1.0, nZoom) > dRoomX ||
                         (y1 - y0) * std::ldexp(1.0, nZoom) > dRoomY))
        --nZoom;
    return true;
}

std::optional<std::string> CMapImage::s_oDraw(const STLatLng& center, int nZoom, int nWidth,
                                              int nHeight, int nScale, std::string_view svFormat,
                                              const std::vector<STMapPath>& tabPaths,
                                              const std::vector<STMapMarker>& tabMarkers,
                                              std::string& sMime) {
    const int w = nWidth * nScale, h = nHeight * nScale;
    std::unique_ptr<gdImage, STImageDeleter> pImage(gdImageCreateTrueColor(w, h));
    if (!pImage)
        return std::nullopt;
    gdImage* p = pImage.get();
    gdImageAlphaBlending(p, 1);
    gdImageFilledRectangle(p, 0, 0, w - 1, h - 1, s_nColour(p, s_dwBackground));

    auto Project = [&](const STLatLng& at, int& x, int& y) {
        double dx, dy;
        s_Project(center, nZoom, nScale, w, h, at, dx, dy);
        x = static_cast<int>(std::lround(dx));
        y = static_cast<int>(std::lround(dy));
    };
    for (const STMapPath& path : tabPaths) {
        gdImageSetThickness(p, std::max(1, path.nWeight * nScale));
        const int nColour = s_nColour(p, path.dwColour, path.byAlpha);
        for (size_t i = 1; i < path.tabPoints.size(); ++i) {
            int xa, ya, xb, yb;
            Project(path.tabPoints[i - 1], xa, ya);
            Project(path.tabPoints[i], xb, yb);
            gdImageLine(p, xa, ya, xb, yb, nColour);
        }
    }
    gdImageSetThickness(p, 1);
    // A marker is a disc centred on its point, its label in the middle.
    gdFont* pFont = gdFontGetSmall();
    for (const STMapMarker& m : tabMarkers) {
        int x, y;
        Project(m.at, x, y);
        const int r = m.nRadius * nScale;
        gdImageFilledEllipse(p, x, y, 2 * r + 1, 2 * r + 1, s_nColour(p, m.dwColour));
        if (m.cLabel) {
            const uint32_t dwText = (m.dwColour >> 16 & 0xFF) + (m.dwColour >> 8 & 0xFF) +
                                                (m.dwColour & 0xFF) > 3 * 160
                                        ? 0x000000
                                        : 0xFFFFFF;
            gdImageChar(p, pFont, x - pFont->w / 2, y - pFont->h / 2,
                        static_cast<unsigned char>(m.cLabel), s_nColour(p, dwText));
        }
    }

    int nSize = 0;
    void* pBytes = nullptr;
    if (svFormat == "jpg" || svFormat == "jpg-baseline") {
        // Google's "jpg" is progressive; "jpg-baseline" is not.
        gdImageInterlace(p, svFormat == "jpg" ? 1 : 0);
        pBytes = gdImageJpegPtr(p, &nSize, 85);
        sMime = "image/jpeg";
    } else if (svFormat == "png32") {
        gdImageSaveAlpha(p, 1);
        pBytes = gdImagePngPtr(p, &nSize);
        sMime = "image/png";
    } else {
        // png8 and gif: a palette of at most 256 colours.
        if (!gdImageTrueColorToPalette(p, 0, 256))
            return std::nullopt;
        const bool bGif = svFormat == "gif";
        pBytes = bGif ? gdImageGifPtr(p, &nSize) : gdImagePngPtr(p, &nSize);
        sMime = bGif ? "image/gif" : "image/png";
    }
    std::unique_ptr<void, STBytesDeleter> pHeld(pBytes);
    if (!pBytes || nSize <= 0)
        return std::nullopt;
    return std::string(static_cast<const char*>(pBytes), static_cast<size_t>(nSize));
}
