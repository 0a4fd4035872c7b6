#include "Flow.h"

#include "JsonValue.h"

namespace {
std::string_view s_svPart(std::string_view svUrl, bool bFragment) {
    size_t nHash = svUrl.find('#');
    if (bFragment)
        return nHash == std::string_view::npos ? std::string_view() : svUrl.substr(nHash + 1);
    svUrl = svUrl.substr(0, nHash);
    size_t nQuery = svUrl.find('?');
    return nQuery == std::string_view::npos ? std::string_view() : svUrl.substr(nQuery + 1);
}
} // namespace

bool CFlow::s_bHasParam(std::string_view svUrl, std::string_view svName, bool bFragment) {
    std::string_view sv = s_svPart(svUrl, bFragment);
    while (!sv.empty()) {
        size_t nAmp = sv.find('&');
        std::string_view svPiece = sv.substr(0, nAmp);
        if (svPiece.substr(0, svPiece.find('=')) == svName)
            return true;
        sv = nAmp == std::string_view::npos ? std::string_view() : sv.substr(nAmp + 1);
    }
    return false;
}

std::string CFlow::s_sParam(std::string_view svUrl, std::string_view svName, bool bFragment) {
    std::string_view sv = s_svPart(svUrl, bFragment);
    while (!sv.empty()) {
        size_t nAmp = sv.find('&');
        std::string_view svPiece = sv.substr(0, nAmp);
        size_t nEq = svPiece.find('=');
        if (svPiece.substr(0, nEq) == svName)
            return nEq == std::string_view::npos ? std::string()
                                                 : std::string(svPiece.substr(nEq + 1));
        sv = nAmp == std::string_view::npos ? std::string_view() : sv.substr(nAmp + 1);
    }
    return {};
}

std::string CFlow::s_sJsonText(std::string_view svJson, std::string_view svKey) {
    auto o = CJsonValue::s_oParse(svJson, nullptr);
    return o ? o->sText(svKey) : std::string();
}
