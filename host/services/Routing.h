// CRouting: which origins the host serves from another address (KVGGL_ROUTE). The component
// keeps the real service addresses; a routed request goes over plain HTTP to the address given,
// with its path, query and headers unchanged and its original Host header, so that a local
// stand-in tells the services apart by Host and sees each request as the real service would.
//
// The setting is a comma-separated list of "origin=host:port" entries:
//   https://www.googleapis.com=127.0.0.1:8931   that scheme, host and port (default ports
//                                               implied)
//   www.googleapis.com=127.0.0.1:8931            that host under any scheme and port
//   *=127.0.0.1:8931                             every origin
// The first entry that matches wins. Targets are loopback addresses (localhost, 127.0.0.0/8,
// ::1) unless KVGGL_ROUTE_INSECURE=1: a routed request carries its credentials in clear. Host names
// compare without regard to case; an IPv6 address is written in brackets, on either side.
#pragma once
#include <string>
#include <string_view>
#include <vector>

// A URL cut into what routing needs. Lower-case scheme; host as written (IPv6 in brackets);
// the port as written or the scheme's default; path and query as written, without fragment.
struct STUrlParts {
    std::string sScheme;
    std::string sHost;
    int nPort = 0;
    bool bPortWritten = false;
    std::string sPathQuery; // "/" when the URL has none

    // "host" or "host:port", as a browser sends it in the Host header.
    std::string sHostHeader() const;
};

class CRouting {
public:
    struct STTarget {
        std::string sHost;
        int nPort = 0;
    };

    // Reads the setting, replacing what was held. False with the reason in sError (and then
    // nothing is routed): a routing that half works would send traffic to the real services.
    // Targets must be loopback addresses unless bAnyTarget (KVGGL_ROUTE_INSECURE=1).
    bool bParse(std::string_view sSetting, std::string& sError, bool bAnyTarget = false);
    // One line for the user: what goes where ("*=127.0.0.1:8931, ...").
    std::string sDescribe() const;
    bool bEmpty() const { return m_tabEntries.empty(); }

    // Splits an http or https URL; false for anything else.
    static bool s_bSplitUrl(std::string_view sUrl, STUrlParts& stParts);

    // The value of a field of a form ("a=1&b=2") or of the query of a URL or request target
    // (what follows "?", up to "#"), percent- and plus-decoded; false when it has none.
    static bool s_bFormValue(std::string_view svForm, std::string_view svName, std::string& sValue);
    static bool s_bQueryValue(std::string_view svUrl, std::string_view svName, std::string& sValue);

    // The address serving that origin; false when it is not routed.
    bool bFind(const STUrlParts& stParts, STTarget& stTarget) const;

    // For the HTTP service: the URL to ask instead ("http://target/path?query") and the Host
    // header to send; false when the URL is not routed.
    bool bRouteRequest(std::string_view sUrl, std::string& sRoutedUrl,
                       std::string& sHostHeader) const;

    // For the login dialogue, where a browser cannot keep a Host header:
    // "http://target/<origin host><path>?<query>"; the URL unchanged when it is not routed.
    std::string sBrowserForm(std::string_view sUrl) const;

private:
    struct STEntry {
        bool bAny = false;   // "*"
        std::string sScheme; // empty: any scheme and port
        std::string sHost;   // lower case
        int nPort = 0;
        STTarget stTarget;
        std::string sText; // as written
    };
    std::vector<STEntry> m_tabEntries;
};
