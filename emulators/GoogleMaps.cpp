#include "GoogleMaps.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "Emulator.h"
#include "Form.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "Text.h"

namespace {

constexpr std::string_view s_svRejected = "The Google Maps Platform server rejected your request. ";
constexpr std::string_view s_svNoKey =
    "You must use an API key to authenticate each request to Google Maps Platform APIs. For "
    "additional information, please refer to http://g.co/dev/maps-no-account";
constexpr std::string_view s_svBadKey = "The provided API key is invalid. ";
constexpr std::string_view s_svOverQuota =
    "You have exceeded your daily request quota for this API. If you did not set a custom daily "
    "request quota, verify your project has an active billing account: "
    "http://g.co/dev/maps-no-account";

constexpr int s_nMaxSide = 640;
constexpr int s_nMaxZoom = 21;

// Latin letters with accents, U+00C0 to U+00FF, by their base letter ('*' for none).
constexpr char s_szLatin1[] = "aaaaaaaceeeeiiiidnooooo*ouuuuyts"
                              "aaaaaaaceeeeiiiidnooooo*ouuuuyty";

std::optional<double> s_oNumber(std::string_view sv) {
    sv = CText::s_svTrim(sv);
    double d = 0;
    auto [p, ec] = std::from_chars(sv.data(), sv.data() + sv.size(), d);
    if (ec != std::errc() || p != sv.data() + sv.size() || !std::isfinite(d))
        return std::nullopt;
    return d;
}

std::optional<int> s_oInteger(std::string_view sv) {
    int n = 0;
    auto [p, ec] = std::from_chars(sv.data(), sv.data() + sv.size(), n);
    if (ec != std::errc() || p != sv.data() + sv.size() || sv.empty())
        return std::nullopt;
    return n;
}

// "lat,lng" in range, or nothing (then the text is an address).
std::optional<STLatLng> s_oLatLng(std::string_view sv) {
    const size_t nComma = sv.find(',');
    if (nComma == std::string_view::npos)
        return std::nullopt;
    auto oLat = s_oNumber(sv.substr(0, nComma)), oLng = s_oNumber(sv.substr(nComma + 1));
    if (!oLat || !oLng || std::fabs(*oLat) > 90 || std::fabs(*oLng) > 180)
        return std::nullopt;
    return STLatLng{*oLat, *oLng};
}

std::vector<std::string_view> s_tabSplit(std::string_view sv, char c) {
    std::vector<std::string_view> tab;
    for (size_t n = 0;;) {
        size_t nNext = sv.find(c, n);
        tab.push_back(sv.substr(n, nNext == std::string_view::npos ? sv.npos : nNext - n));
        if (nNext == std::string_view::npos)
            return tab;
        n = nNext + 1;
    }
}

// A colour of the image service: a name, 0xRRGGBB or 0xRRGGBBAA; "" keeps the default.
bool s_bColour(std::string_view sv, uint32_t& dw, uint8_t* pbyAlpha) {
    static const std::pair<std::string_view, uint32_t> tabNames[] = {
        {"black", 0x000000},  {"brown", 0xA52A2A}, {"green", 0x00FF00}, {"purple", 0x800080},
        {"yellow", 0xFFFF00}, {"blue", 0x0000FF},  {"gray", 0x808080},  {"orange", 0xFFA500},
        {"red", 0xFF0000},    {"white", 0xFFFFFF},
    };
    if (sv.empty())
        return true;
    for (const auto& [svName, dwValue] : tabNames)
        if (CText::s_bIEquals(sv, svName)) {
            dw = dwValue;
            return true;
        }
    if (!CText::s_bIStartsWith(sv, "0x") || (sv.size() != 8 && sv.size() != 10))
        return false;
    uint32_t n = 0;
    auto [p, ec] = std::from_chars(sv.data() + 2, sv.data() + sv.size(), n, 16);
    if (ec != std::errc() || p != sv.data() + sv.size())
        return false;
    if (sv.size() == 10) {
        if (pbyAlpha)
            *pbyAlpha = static_cast<uint8_t>(n & 0xFF);
        n >>= 8;
    }
    dw = n;
    return true;
}

// A style item "key:value" of markers or a path, which a place is not (a place may hold a colon
// only as an address, never as coordinates).
bool s_bStyle(std::string_view sv, std::string_view& svKey, std::string_view& svValue) {
    const size_t nColon = sv.find(':');
    if (nColon == std::string_view::npos || s_oLatLng(sv))
        return false;
    svKey = sv.substr(0, nColon);
    svValue = sv.substr(nColon + 1);
    return true;
}

void s_WriteImageError(STResponse& res, int nStatus, std::string_view svWhy) {
    res.SetBody(nStatus, "text/plain; charset=UTF-8", std::string(s_svRejected) + std::string(svWhy));
}

void s_WriteGeocodeStatus(STResponse& res, int nStatus, std::string_view svStatus,
                          std::string_view svMessage) {
    // The service's members in its own order: alphabetical.
    CJsonValue v = CJsonValue::s_Object();
    if (!svMessage.empty())
        v.Set("error_message", CJsonValue::s_String(std::string(svMessage)));
    v.Set("results", CJsonValue::s_Array());
    v.Set("status", CJsonValue::s_String(std::string(svStatus)));
    res.SetJson(nStatus, v);
}

CJsonValue s_LatLng(double dLat, double dLng) {
    CJsonValue v = CJsonValue::s_Object();
    v.Set("lat", CJsonValue::s_Number(dLat));
    v.Set("lng", CJsonValue::s_Number(dLng));
    return v;
}

} // namespace

std::unique_ptr<IService> CGoogleMaps::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CGoogleMaps>(emulator);
}

std::string CGoogleMaps::s_sFold(std::string_view sv) {
    std::string s;
    bool bBlank = false;
    auto Put = [&](char c) {
        if (c == ' ') {
            bBlank = !s.empty();
            return;
        }
        if (bBlank)
            s += ' ';
        bBlank = false;
        s += c;
    };
    for (size_t i = 0; i < sv.size(); ++i) {
        const auto c = static_cast<unsigned char>(sv[i]);
        if (c < 0x80) {
            Put(std::isalnum(c) ? static_cast<char>(std::tolower(c)) : ' ');
        } else if ((c == 0xC3) && i + 1 < sv.size()) {
            // U+00C0 to U+00FF: the base letter.
            const char cBase = s_szLatin1[(static_cast<unsigned char>(sv[++i]) & 0x3F)];
            Put(cBase == '*' ? ' ' : cBase);
        } else {
            s += static_cast<char>(c); // other letters as they are
        }
    }
    return s;
}

void CGoogleMaps::vReset() {
    m_tabKeys.clear();
    m_tabPlaces.clear();
    {
        std::lock_guard lock(m_mtx);
        m_mapUsed.clear();
    }
    const CJsonValue* pMaps = m_Emulator.Seed().Document().pFind("maps");
    if (!pMaps)
        return;
    if (const CJsonValue* p = pMaps->pFind("keys"))
        for (const CJsonValue& k : p->Items()) {
            STKey key;
            key.sKey = k.bIsString() ? k.sGetString() : k.sText("key");
            if (const CJsonValue* q = k.pFind("daily_quota"); q && q->bIsNumber())
                key.nQuota = q->nGetInt();
            m_tabKeys.push_back(std::move(key));
        }
    if (const CJsonValue* p = pMaps->pFind("places"))
        for (const CJsonValue& v : p->Items()) {
            STPlace place;
            place.sAddress = v.sText("formatted_address", v.sText("address"));
            place.tabNames.push_back(s_sFold(v.sText("address")));
            place.tabNames.push_back(s_sFold(place.sAddress));
            if (const CJsonValue* a = v.pFind("other_names"))
                for (const CJsonValue& n : a->Items())
                    place.tabNames.push_back(s_sFold(n.sGetString()));
            if (const CJsonValue* d = v.pFind("lat"))
                place.at.dLat = d->dGetNumber();
            if (const CJsonValue* d = v.pFind("lng"))
                place.at.dLng = d->dGetNumber();
            place.sPlaceId = v.sText("place_id");
            place.sPostalCode = v.sText("postal_code");
            place.sCountry = v.sText("country");
            place.sType = v.sText("type", "street_address");
            m_tabPlaces.push_back(std::move(place));
        }
}

CGoogleMaps::eKEY CGoogleMaps::eCheckKey(std::string_view svKey) {
    if (svKey.empty())
        return eKeyMissing;
    auto it = std::find_if(m_tabKeys.begin(), m_tabKeys.end(),
                           [&](const STKey& k) { return k.sKey == svKey; });
    if (it == m_tabKeys.end())
        return eKeyInvalid;
    std::lock_guard lock(m_mtx);
    long long& nUsed = m_mapUsed[it->sKey];
    if (it->nQuota >= 0 && nUsed >= it->nQuota)
        return eKeyOverQuota;
    ++nUsed;
    return eKeyOk;
}

std::vector<const CGoogleMaps::STPlace*> CGoogleMaps::Find(std::string_view svAddress,
                                                           std::string_view svRegion) const {
    const std::string sFolded = s_sFold(svAddress);
    std::vector<const STPlace*> tab;
    if (sFolded.empty())
        return tab;
    for (const STPlace& place : m_tabPlaces)
        if (std::find(place.tabNames.begin(), place.tabNames.end(), sFolded) != place.tabNames.end())
            tab.push_back(&place);
    // A region biases: its places come first.
    std::stable_partition(tab.begin(), tab.end(), [&](const STPlace* p) {
        return !svRegion.empty() && CText::s_bIEquals(p->sCountry, svRegion);
    });
    return tab;
}

void CGoogleMaps::vHandle(const STRequest& req, STResponse& res) {
    if (req.sMethod != "GET" && req.sMethod != "HEAD")
        return res.SetBody(405, "text/plain; charset=UTF-8", "Method Not Allowed");
    if (req.sPath == "/maps/api/staticmap")
        return StaticMap(req, res);
    if (req.sPath == "/maps/api/geocode/json")
        return Geocode(req, res);
    res.SetBody(404, "text/html; charset=UTF-8",
                "<html><body><p>404. That's an error.</p><p>The requested URL " +
                    CText::s_sHtmlEscape(req.sPath) + " was not found on this server.</p></body></html>");
}

void CGoogleMaps::Geocode(const STRequest& req, STResponse& res) {
    const CForm query = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr).value_or(CForm());
    switch (eCheckKey(query.sValue("key"))) {
    case eKeyMissing:
        return s_WriteGeocodeStatus(res, 200, "REQUEST_DENIED", s_svNoKey);
    case eKeyInvalid:
        return s_WriteGeocodeStatus(res, 200, "REQUEST_DENIED", s_svBadKey);
    case eKeyOverQuota:
        return s_WriteGeocodeStatus(res, 200, "OVER_QUERY_LIMIT", s_svOverQuota);
    case eKeyOk:
        break;
    }
    if (query.sValue("address").empty())
        return s_WriteGeocodeStatus(
            res, 400, "INVALID_REQUEST",
            "Invalid request. Missing the 'address', 'components', 'latlng' or 'place_id' parameter.");
    const std::vector<const STPlace*> tabFound = Find(query.sValue("address"), query.sValue("region"));
    if (tabFound.empty())
        return s_WriteGeocodeStatus(res, 200, "ZERO_RESULTS", {});

    CJsonValue results = CJsonValue::s_Array();
    for (const STPlace* p : tabFound) {
        CJsonValue components = CJsonValue::s_Array();
        auto Component = [&](const std::string& sName, const char* pszType) {
            if (sName.empty())
                return;
            CJsonValue c = CJsonValue::s_Object();
            c.Set("long_name", CJsonValue::s_String(sName));
            c.Set("short_name", CJsonValue::s_String(sName));
            c.Set("types", CJsonValue::s_Array().Push(CJsonValue::s_String(pszType)));
            components.Push(std::move(c));
        };
        Component(p->sPostalCode, "postal_code");
        Component(p->sCountry, "country");
        CJsonValue viewport = CJsonValue::s_Object();
        viewport.Set("northeast", s_LatLng(p->at.dLat + 0.0013, p->at.dLng + 0.0013));
        viewport.Set("southwest", s_LatLng(p->at.dLat - 0.0013, p->at.dLng - 0.0013));
        CJsonValue geometry = CJsonValue::s_Object();
        geometry.Set("location", s_LatLng(p->at.dLat, p->at.dLng));
        geometry.Set("location_type", CJsonValue::s_String("ROOFTOP"));
        geometry.Set("viewport", std::move(viewport));
        CJsonValue r = CJsonValue::s_Object();
        r.Set("address_components", std::move(components));
        r.Set("formatted_address", CJsonValue::s_String(p->sAddress));
        r.Set("geometry", std::move(geometry));
        r.Set("place_id", CJsonValue::s_String(p->sPlaceId));
        r.Set("types", CJsonValue::s_Array().Push(CJsonValue::s_String(p->sType)));
        results.Push(std::move(r));
    }
    CJsonValue v = CJsonValue::s_Object();
    v.Set("results", std::move(results));
    v.Set("status", CJsonValue::s_String("OK"));
    res.SetJson(200, v);
}

void CGoogleMaps::StaticMap(const STRequest& req, STResponse& res) {
    const CForm query = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr).value_or(CForm());
    switch (eCheckKey(query.sValue("key"))) {
    case eKeyMissing:
        return s_WriteImageError(res, 403, s_svNoKey);
    case eKeyInvalid:
        return s_WriteImageError(res, 403, s_svBadKey);
    case eKeyOverQuota:
        return s_WriteImageError(res, 403, s_svOverQuota);
    case eKeyOk:
        break;
    }
    auto Invalid = [&](std::string_view svName) {
        s_WriteImageError(res, 400, "Invalid request. Invalid '" + std::string(svName) + "' parameter.");
    };
    // A location: coordinates, or an address the geocoder knows.
    auto Locate = [&](std::string_view sv) -> std::optional<STLatLng> {
        if (auto o = s_oLatLng(sv))
            return o;
        std::vector<const STPlace*> tab = Find(sv, {});
        if (tab.empty())
            return std::nullopt;
        return tab.front()->at;
    };

    int nWidth = 0, nHeight = 0;
    {
        const std::string sSize = query.sValue("size");
        if (sSize.empty())
            return s_WriteImageError(res, 400, "Invalid request. Missing the 'size' parameter.");
        const size_t nX = sSize.find('x');
        auto oW = s_oInteger(std::string_view(sSize).substr(0, nX));
        auto oH = nX == std::string::npos ? std::nullopt
                                          : s_oInteger(std::string_view(sSize).substr(nX + 1));
        if (!oW || !oH || *oW < 1 || *oH < 1 || *oW > s_nMaxSide || *oH > s_nMaxSide)
            return Invalid("size");
        nWidth = *oW;
        nHeight = *oH;
    }
    int nScale = 1;
    if (query.bHas("scale")) {
        auto o = s_oInteger(query.sValue("scale"));
        if (!o || (*o != 1 && *o != 2))
            return Invalid("scale");
        nScale = *o;
    }
    std::string sFormat = query.bHas("format") ? query.sValue("format") : "png8";
    if (sFormat == "png")
        sFormat = "png8";
    if (sFormat != "png8" && sFormat != "png32" && sFormat != "gif" && sFormat != "jpg" &&
        sFormat != "jpg-baseline")
        return Invalid("format");
    if (query.bHas("maptype")) {
        const std::string s = query.sValue("maptype");
        if (s != "roadmap" && s != "satellite" && s != "terrain" && s != "hybrid")
            return Invalid("maptype");
    }
    std::optional<int> oZoom;
    if (query.bHas("zoom")) {
        oZoom = s_oInteger(query.sValue("zoom"));
        if (!oZoom || *oZoom < 0 || *oZoom > s_nMaxZoom)
            return Invalid("zoom");
    }
    std::optional<STLatLng> oCenter;
    if (query.bHas("center")) {
        oCenter = Locate(query.sValue("center"));
        if (!oCenter)
            return Invalid("center");
    }

    std::vector<STMapMarker> tabMarkers;
    std::vector<STMapPath> tabPaths;
    std::vector<STLatLng> tabFrame, tabVisible;
    for (const CForm::STField& f : query.Fields()) {
        if (f.sName == "markers") {
            STMapMarker style;
            for (std::string_view sv : s_tabSplit(f.sValue, '|')) {
                std::string_view svKey, svValue;
                if (s_bStyle(sv, svKey, svValue)) {
                    if (svKey == "size") {
                        static const std::pair<std::string_view, int> tabSizes[] = {
                            {"", 12}, {"normal", 12}, {"mid", 9}, {"small", 7}, {"tiny", 4}};
                        auto it = std::find_if(std::begin(tabSizes), std::end(tabSizes),
                                               [&](const auto& p) { return p.first == svValue; });
                        if (it == std::end(tabSizes))
                            return Invalid("markers");
                        style.nRadius = it->second;
                    } else if (svKey == "color") {
                        if (!s_bColour(svValue, style.dwColour, nullptr))
                            return Invalid("markers");
                    } else if (svKey == "label") {
                        if (svValue.size() != 1 || !std::isalnum(static_cast<unsigned char>(svValue[0])))
                            return Invalid("markers");
                        style.cLabel = static_cast<char>(std::toupper(static_cast<unsigned char>(svValue[0])));
                    }
                    continue;
                }
                if (sv.empty())
                    continue;
                // A place the service cannot find is left out, as the real one does.
                if (auto o = Locate(sv)) {
                    STMapMarker m = style;
                    m.at = *o;
                    tabMarkers.push_back(m);
                    tabFrame.push_back(*o);
                }
            }
        } else if (f.sName == "path") {
            STMapPath path;
            for (std::string_view sv : s_tabSplit(f.sValue, '|')) {
                std::string_view svKey, svValue;
                if (s_bStyle(sv, svKey, svValue)) {
                    if (svKey == "color") {
                        if (!s_bColour(svValue, path.dwColour, &path.byAlpha))
                            return Invalid("path");
                    } else if (svKey == "weight") {
                        auto o = s_oInteger(svValue);
                        if (!o || *o < 0)
                            return Invalid("path");
                        path.nWeight = *o;
                    }
                    continue;
                }
                if (auto o = Locate(sv)) {
                    path.tabPoints.push_back(*o);
                    tabFrame.push_back(*o);
                }
            }
            tabPaths.push_back(std::move(path));
        } else if (f.sName == "visible") {
            for (std::string_view sv : s_tabSplit(f.sValue, '|'))
                if (auto o = Locate(sv))
                    tabVisible.push_back(*o);
        }
    }
    tabFrame.insert(tabFrame.end(), tabVisible.begin(), tabVisible.end());

    // The view: a centre and a zoom given; or what the markers, paths and visible places frame.
    STLatLng center;
    int nZoom = 0;
    if (oCenter && oZoom) {
        center = *oCenter;
        nZoom = *oZoom;
        STLatLng ignored;
        int nFit = 0;
        // Visible places widen the view when the zoom would cut them.
        if (CMapImage::s_bFrame(tabVisible, nWidth, nHeight, ignored, nFit))
            nZoom = std::min(nZoom, nFit);
    } else if (!tabFrame.empty()) {
        if (oCenter)
            tabFrame.push_back(*oCenter);
        CMapImage::s_bFrame(tabFrame, nWidth, nHeight, center, nZoom);
        if (oCenter)
            center = *oCenter;
        if (oZoom)
            nZoom = *oZoom;
    } else {
        return s_WriteImageError(res, 400, oCenter ? "Invalid request. Missing the 'zoom' parameter."
                                                   : "Invalid request. Missing the 'center' parameter.");
    }

    std::string sMime;
    auto oImage = CMapImage::s_oDraw(center, nZoom, nWidth, nHeight, nScale, sFormat, tabPaths,
                                     tabMarkers, sMime);
    if (!oImage)
        return res.SetBody(500, "text/plain; charset=UTF-8", "Server Error");
    res.SetBody(200, sMime, std::move(*oImage));
}
