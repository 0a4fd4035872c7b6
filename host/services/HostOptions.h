// STHostOptions: the settings of the host's HTTP service and login dialogue, with documented
// defaults. The host reads them once from the environment; tests build them directly.
//
//   KVGGL_ROUTE            origins served elsewhere: "origin=host:port,..." or "*=host:port"
//                          (Routing.h); unset or empty: every request goes where its URL says
//   KVGGL_ROUTE_INSECURE   "1": routing may send to a target that is not this machine
//   KVGGL_CONNECT_TIMEOUT  seconds to connect, TLS handshake included; default 30
//   KVGGL_TIMEOUT          seconds for one whole exchange; default 300; 0: no limit
//   KVGGL_HTTP_MAX_BODY    bytes of an answer body kept at most; default 1073741824 (1 GiB),
//                          above which the exchange fails rather than exhaust memory
//   KVGGL_PROGRESS         "auto" (default): a progress line on stderr for transfers over
//                          1 MB when stderr is a terminal; "always"; "never"
//   KVGGL_BROWSER          the command that opens the login address, run through /bin/sh with
//                          the address as its last argument ("$1"); unset: xdg-open when
//                          DISPLAY or WAYLAND_DISPLAY is set, otherwise the address is printed
//                          on stderr; set and empty: printed
//   KVGGL_LOGIN_WAIT       seconds the login dialogue waits for the browser; default 300, and
//                          60 when no browser can be opened and no terminal is on standard
//                          input (nobody may see the printed address), unless set
//
// Durations accept decimals ("0.5"). A value that cannot be read keeps the default and is
// reported in the warnings.
#pragma once
#include <cstddef>
#include <functional>
#include <string>

enum eHOSTPROGRESS : int {
    HOSTPROGRESS_AUTO,
    HOSTPROGRESS_ALWAYS,
    HOSTPROGRESS_NEVER,
};

struct STHostOptions {
    static constexpr long knConnectTimeoutMs = 30000;
    static constexpr long knTimeoutMs = 300000;
    static constexpr size_t knMaxBody = size_t{1} << 30;
    static constexpr long knLoginWaitMs = 300000;
    static constexpr long knLoginWaitUnattendedMs = 60000;
    // Transfers above this size get the progress line.
    static constexpr long knProgressThreshold = 1 << 20;

    std::string sRoute;
    bool bRouteInsecure = false;
    long nConnectTimeoutMs = knConnectTimeoutMs;
    long nTimeoutMs = knTimeoutMs; // 0: no limit
    size_t nMaxBody = knMaxBody;
    eHOSTPROGRESS eProgress = HOSTPROGRESS_AUTO;
    bool bBrowserSet = false; // false: the default choice above
    std::string sBrowser;
    long nLoginWaitMs = knLoginWaitMs;
    bool bLoginWaitSet = false; // KVGGL_LOGIN_WAIT given: kept even when nobody is there

    // From a reader of variables (getenv in the host); what could not be read is described in
    // sWarnings, one line each.
    static STHostOptions s_stFromVariables(const std::function<const char*(const char*)>& fnGet,
                                           std::string& sWarnings);
    // From the process environment, the warnings printed on stderr.
    static STHostOptions s_stFromEnvironment();
};
