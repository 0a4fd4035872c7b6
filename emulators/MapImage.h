// CMapImage: the picture a static map request asks for, drawn with libgd: a plain background,
// the paths, then the markers, each placed by the Web Mercator projection of the map's centre
// and zoom, and encoded in the requested format at the requested scale.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct STLatLng {
    double dLat = 0;
    double dLng = 0;
};

struct STMapMarker {
    uint32_t dwColour = 0xF44336; // 0xRRGGBB
    int nRadius = 11;             // in pixels at scale 1
    char cLabel = 0;              // 0 for none
    STLatLng at;
};

struct STMapPath {
    uint32_t dwColour = 0x0000FF;
    uint8_t byAlpha = 0xBF; // 0 transparent, 255 opaque
    int nWeight = 5;
    std::vector<STLatLng> tabPoints;
};

class CMapImage {
public:
    // The pixel of a point on a map of that centre, zoom and size in pixels (scale included).
    static void s_Project(const STLatLng& center, int nZoom, double dScale, int nWidth,
                          int nHeight, const STLatLng& at, double& x, double& y);
    // The largest zoom at which every point fits in the image, a margin kept; and the centre of
    // their bounds. False without points.
    static bool s_bFrame(const std::vector<STLatLng>& tabPoints, int nWidth, int nHeight,
                         STLatLng& center, int& nZoom);
    // The encoded image ("png8", "png32", "gif", "jpg", "jpg-baseline"), and its MIME type.
    static std::optional<std::string> s_oDraw(const STLatLng& center, int nZoom, int nWidth,
                                              int nHeight, int nScale, std::string_view svFormat,
                                              const std::vector<STMapPath>& tabPaths,
                                              const std::vector<STMapMarker>& tabMarkers,
                                              std::string& sMime);
};
