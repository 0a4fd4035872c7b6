#include "HostOptions.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// Seconds, decimals allowed, into milliseconds; false for anything else.
bool s_bReadSeconds(const char* psz, long& nMs) {
    if (!psz || !*psz)
        return false;
    char* pszEnd = nullptr;
    errno = 0;
    double r = std::strtod(psz, &pszEnd);
    if (errno != 0 || pszEnd == psz || *pszEnd != '\0' || !std::isfinite(r) || r < 0 ||
        r > 31536000.0) // a year is already no limit at all
        return false;
    nMs = static_cast<long>(std::llround(r * 1000.0));
    return true;
}

bool s_bReadBytes(const char* psz, size_t& n) {
    if (!psz || !*psz || *psz == '-')
        return false;
    char* pszEnd = nullptr;
    errno = 0;
    unsigned long long v = std::strtoull(psz, &pszEnd, 10);
    if (errno != 0 || *pszEnd != '\0' || v == 0)
        return false;
    n = static_cast<size_t>(v);
    return true;
}

void s_Warn(std::string& sWarnings, const char* pszName, const char* pszValue,
            const char* pszExpected) {
    sWarnings.append(pszName).append(": '").append(pszValue).append("' is not ");
    sWarnings.append(pszExpected).append("; the default is kept\n");
}

} // namespace

STHostOptions STHostOptions::s_stFromVariables(const std::function<const char*(const char*)>& fnGet,
                                               std::string& sWarnings) {
    STHostOptions st;
    if (const char* psz = fnGet("KVGGL_ROUTE"))
        st.sRoute = psz;
    if (const char* psz = fnGet("KVGGL_ROUTE_INSECURE"))
        st.bRouteInsecure = std::strcmp(psz, "1") == 0;

    struct STDuration {
        const char* pszName;
        long* pnMs;
    };
    const STDuration tabDurations[] = {
        {"KVGGL_CONNECT_TIMEOUT", &st.nConnectTimeoutMs},
        {"KVGGL_TIMEOUT", &st.nTimeoutMs},
        {"KVGGL_LOGIN_WAIT", &st.nLoginWaitMs},
    };
    for (const STDuration& d : tabDurations) {
        const char* psz = fnGet(d.pszName);
        if (psz && *psz && !s_bReadSeconds(psz, *d.pnMs))
            s_Warn(sWarnings, d.pszName, psz, "a number of seconds");
    }
    if (const char* psz = fnGet("KVGGL_LOGIN_WAIT"); psz && *psz)
        st.bLoginWaitSet = true;
    // A connect timeout of 0 would mean libcurl's own default, not "none": keep ours.
    if (st.nConnectTimeoutMs == 0)
        st.nConnectTimeoutMs = knConnectTimeoutMs;

    if (const char* psz = fnGet("KVGGL_HTTP_MAX_BODY");
        psz && *psz && !s_bReadBytes(psz, st.nMaxBody))
        s_Warn(sWarnings, "KVGGL_HTTP_MAX_BODY", psz, "a positive number of bytes");

    if (const char* psz = fnGet("KVGGL_PROGRESS"); psz && *psz) {
        if (std::strcmp(psz, "auto") == 0)
            st.eProgress = HOSTPROGRESS_AUTO;
        else if (std::strcmp(psz, "always") == 0)
            st.eProgress = HOSTPROGRESS_ALWAYS;
        else if (std::strcmp(psz, "never") == 0)
            st.eProgress = HOSTPROGRESS_NEVER;
        else
            s_Warn(sWarnings, "KVGGL_PROGRESS", psz, "auto, always or never");
    }

    if (const char* psz = fnGet("KVGGL_BROWSER")) {
        st.bBrowserSet = true;
        st.sBrowser = psz;
    }
    return st;
}

STHostOptions STHostOptions::s_stFromEnvironment() {
    std::string sWarnings;
    STHostOptions st =
        s_stFromVariables([](const char* psz) { return std::getenv(psz); }, sWarnings);
    if (!sWarnings.empty()) {
        // One "kvggl: " line per warning, as the rest of the host speaks on stderr.
        size_t nStart = 0;
        while (nStart < sWarnings.size()) {
            size_t nEnd = sWarnings.find('\n', nStart);
            std::fprintf(stderr, "kvggl: %.*s\n", static_cast<int>(nEnd - nStart),
                         sWarnings.c_str() + nStart);
            nStart = nEnd + 1;
        }
    }
    return st;
}
