#include "Routing.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>

namespace {

std::string s_sLower(std::string_view sv) {
    std::string s(sv);
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

std::string_view s_svTrim(std::string_view sv) {
    while (!sv.empty() && std::isspace(static_cast<unsigned char>(sv.front())))
        sv.remove_prefix(1);
    while (!sv.empty() && std::isspace(static_cast<unsigned char>(sv.back())))
        sv.remove_suffix(1);
    return sv;
}

int s_nDefaultPort(std::string_view sScheme) {
    return sScheme == "https" ? 443 : sScheme == "http" ? 80 : 0;
}

// "host", "host:port", "[v6]" or "[v6]:port". nPort stays 0 when none is written.
bool s_bSplitAuthority(std::string_view sv, std::string& sHost, int& nPort) {
    nPort = 0;
    std::string_view svHost;
    std::string_view svPort;
    bool bPort = false;
    if (!sv.empty() && sv.front() == '[') {
        size_t nEnd = sv.find(']');
        if (nEnd == std::string_view::npos)
            return false;
        svHost = sv.substr(0, nEnd + 1);
        std::string_view svRest = sv.substr(nEnd + 1);
        if (!svRest.empty()) {
            if (svRest.front() != ':')
                return false;
            svPort = svRest.substr(1);
            bPort = true;
        }
    } else {
        size_t nColon = sv.find(':');
        svHost = sv.substr(0, nColon);
        if (nColon != std::string_view::npos) {
            svPort = sv.substr(nColon + 1);
            bPort = true;
        }
    }
    if (svHost.empty() || svHost == "[]")
        return false;
    for (char c : svHost)
        if (std::isspace(static_cast<unsigned char>(c)) || c == '/' || c == '@')
            return false;
    if (bPort && !svPort.empty()) {
        if (svPort.size() > 5 ||
            !std::all_of(svPort.begin(), svPort.end(), [](char c) { return c >= '0' && c <= '9'; }))
            return false;
        int n = std::stoi(std::string(svPort));
        if (n < 1 || n > 65535)
            return false;
        nPort = n;
    }
    sHost = std::string(svHost);
    return true;
}

// "http://host:port" of a route target.
std::string s_sTargetOrigin(const CRouting::STTarget& st) {
    std::string s = "http://";
    s.append(st.sHost).append(":").append(std::to_string(st.nPort));
    return s;
}

// A name or address of this machine: localhost, 127.0.0.0/8, ::1.
bool s_bLoopback(std::string_view svHost) {
    std::string sHost = s_sLower(svHost);
    if (sHost == "localhost" || sHost == "[::1]" || sHost == "::1")
        return true;
    in_addr st{};
    return inet_pton(AF_INET, sHost.c_str(), &st) == 1 && (ntohl(st.s_addr) >> 24) == 127;
}

} // namespace

std::string STUrlParts::sHostHeader() const {
    if (!bPortWritten || nPort == s_nDefaultPort(sScheme))
        return sHost;
    return sHost + ":" + std::to_string(nPort);
}

bool CRouting::s_bSplitUrl(std::string_view sUrl, STUrlParts& st) {
    size_t nSep = sUrl.find("://");
    if (nSep == std::string_view::npos)
        return false;
    st.sScheme = s_sLower(sUrl.substr(0, nSep));
    if (st.sScheme != "http" && st.sScheme != "https")
        return false;
    std::string_view svRest = sUrl.substr(nSep + 3);
    size_t nAuthorityEnd = svRest.find_first_of("/?#");
    std::string_view svAuthority = svRest.substr(0, nAuthorityEnd);
    if (size_t nAt = svAuthority.rfind('@'); nAt != std::string_view::npos)
        svAuthority.remove_prefix(nAt + 1);
    int nPort = 0;
    if (!s_bSplitAuthority(svAuthority, st.sHost, nPort))
        return false;
    st.bPortWritten = nPort != 0;
    st.nPort = nPort ? nPort : s_nDefaultPort(st.sScheme);
    std::string_view svPath =
        nAuthorityEnd == std::string_view::npos ? std::string_view{} : svRest.substr(nAuthorityEnd);
    svPath = svPath.substr(0, svPath.find('#'));
    // A query with no path asks for the root.
    const bool bRacine = svPath.empty() || svPath.front() != '/';
    st.sPathQuery.assign(bRacine ? 1 : 0, '/');
    st.sPathQuery.append(svPath.data(), svPath.size());
    return true;
}

bool CRouting::bParse(std::string_view sSetting, std::string& sError, bool bAnyTarget) {
    m_tabEntries.clear();
    std::vector<STEntry> tab;
    size_t nStart = 0;
    while (nStart <= sSetting.size()) {
        size_t nEnd = sSetting.find(',', nStart);
        std::string_view svEntry = s_svTrim(sSetting.substr(
            nStart, nEnd == std::string_view::npos ? std::string_view::npos : nEnd - nStart));
        nStart = nEnd == std::string_view::npos ? sSetting.size() + 1 : nEnd + 1;
        if (svEntry.empty())
            continue;
        auto Refuse = [&](const char* pszWhy) {
            sError = "KVGGL_ROUTE: entry '" + std::string(svEntry) + "' " + pszWhy +
                     " (expected origin=host:port, e.g. https://www.googleapis.com=127.0.0.1:8931"
                     " or *=127.0.0.1:8931)";
            return false;
        };
        size_t nEquals = svEntry.find('=');
        if (nEquals == std::string_view::npos)
            return Refuse("has no '='");
        std::string_view svOrigin = s_svTrim(svEntry.substr(0, nEquals));
        std::string_view svTarget = s_svTrim(svEntry.substr(nEquals + 1));
        STEntry st;
        st.sText = std::string(s_svTrim(svEntry));
        if (svOrigin == "*") {
            st.bAny = true;
        } else {
            size_t nSep = svOrigin.find("://");
            std::string_view svAuthority = svOrigin;
            if (nSep != std::string_view::npos) {
                st.sScheme = s_sLower(svOrigin.substr(0, nSep));
                if (st.sScheme != "http" && st.sScheme != "https")
                    return Refuse("names a scheme other than http or https");
                svAuthority = svOrigin.substr(nSep + 3);
            }
            while (!svAuthority.empty() && svAuthority.back() == '/')
                svAuthority.remove_suffix(1);
            if (!s_bSplitAuthority(svAuthority, st.sHost, st.nPort))
                return Refuse("has an origin that is not scheme://host[:port]");
            st.sHost = s_sLower(st.sHost);
            if (!st.sScheme.empty() && st.nPort == 0)
                st.nPort = s_nDefaultPort(st.sScheme);
        }
        if (!s_bSplitAuthority(svTarget, st.stTarget.sHost, st.stTarget.nPort) ||
            st.stTarget.nPort == 0)
            return Refuse("has a target that is not host:port");
        // Routed requests go over plain HTTP, bearer tokens and all: only to this machine,
        // unless the user says the network between is theirs.
        if (!bAnyTarget && !s_bLoopback(st.stTarget.sHost))
            return Refuse("sends requests over plain HTTP to another machine; give a loopback "
                          "target, or set KVGGL_ROUTE_INSECURE=1 to allow it");
        tab.push_back(std::move(st));
    }
    m_tabEntries = std::move(tab);
    return true;
}

std::string CRouting::sDescribe() const {
    std::string s;
    for (const STEntry& st : m_tabEntries)
        s.append(s.empty() ? "" : ", ").append(st.sText);
    return s;
}

namespace {

int s_nHex(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string s_sPercentDecode(std::string_view sv) {
    std::string s;
    for (size_t i = 0; i < sv.size(); ++i) {
        if (sv[i] == '%' && i + 2 < sv.size() && s_nHex(sv[i + 1]) >= 0 && s_nHex(sv[i + 2]) >= 0) {
            s += static_cast<char>(s_nHex(sv[i + 1]) * 16 + s_nHex(sv[i + 2]));
            i += 2;
        } else {
            s += sv[i] == '+' ? ' ' : sv[i];
        }
    }
    return s;
}

} // namespace

bool CRouting::s_bFormValue(std::string_view svForm, std::string_view svName, std::string& sValue) {
    while (!svForm.empty()) {
        size_t nAmp = svForm.find('&');
        std::string_view svPiece = svForm.substr(0, nAmp);
        svForm = nAmp == std::string_view::npos ? std::string_view{} : svForm.substr(nAmp + 1);
        size_t nEquals = svPiece.find('=');
        if (svPiece.substr(0, nEquals) == svName) {
            sValue = nEquals == std::string_view::npos
                         ? std::string()
                         : s_sPercentDecode(svPiece.substr(nEquals + 1));
            return true;
        }
    }
    return false;
}

bool CRouting::s_bQueryValue(std::string_view svUrl, std::string_view svName, std::string& sValue) {
    size_t nMark = svUrl.find('?');
    if (nMark == std::string_view::npos)
        return false;
    std::string_view svQuery = svUrl.substr(nMark + 1);
    return s_bFormValue(svQuery.substr(0, svQuery.find('#')), svName, sValue);
}

bool CRouting::bFind(const STUrlParts& stParts, STTarget& stTarget) const {
    std::string sHostLower = s_sLower(stParts.sHost);
    for (const STEntry& st : m_tabEntries) {
        bool bMatch = st.bAny;
        if (!bMatch && st.sHost == sHostLower) {
            bMatch = (st.sScheme.empty() || st.sScheme == stParts.sScheme) &&
                     (st.nPort == 0 || st.nPort == stParts.nPort);
        }
        if (bMatch) {
            stTarget = st.stTarget;
            return true;
        }
    }
    return false;
}

bool CRouting::bRouteRequest(std::string_view sUrl, std::string& sRoutedUrl,
                             std::string& sHostHeader) const {
    if (m_tabEntries.empty())
        return false;
    STUrlParts st;
    STTarget stTarget;
    if (!s_bSplitUrl(sUrl, st) || !bFind(st, stTarget))
        return false;
    sRoutedUrl = s_sTargetOrigin(stTarget) + st.sPathQuery;
    sHostHeader = st.sHostHeader();
    return true;
}

std::string CRouting::sBrowserForm(std::string_view sUrl) const {
    STUrlParts st;
    STTarget stTarget;
    if (m_tabEntries.empty() || !s_bSplitUrl(sUrl, st) || !bFind(st, stTarget))
        return std::string(sUrl);
    std::string s = s_sTargetOrigin(stTarget);
    s.append("/").append(st.sHost).append(st.sPathQuery);
    return s;
}
