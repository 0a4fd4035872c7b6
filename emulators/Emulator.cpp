#include "Emulator.h"

#include <chrono>

#include "Control.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "Service.h"
#include "ServiceTable.h"
#include "Text.h"

CEmulator::CEmulator(CSeed seed, STEmulatorOptions options)
    : m_Seed(std::move(seed)), m_Options(options), m_pControl(std::make_unique<CControl>(*this)) {
    for (const STServiceRow& row : CServiceTable::s_Rows())
        m_tabServices.push_back({&row, row.pfnCreate(*this)});
    Reset();
}

CEmulator::~CEmulator() = default;

std::string CEmulator::s_sHostName(std::string_view svHostHeader) {
    std::string_view sv = CText::s_svTrim(svHostHeader);
    if (!sv.empty() && sv.front() == '[') {
        size_t n = sv.find(']');
        sv = n == std::string_view::npos ? sv : sv.substr(0, n + 1);
    } else {
        sv = sv.substr(0, sv.find(':'));
    }
    if (!sv.empty() && sv.back() == '.')
        sv.remove_suffix(1); // "example.com." is the same host
    return CText::s_sLower(sv);
}

std::vector<std::string> CEmulator::tabHosts() const {
    std::vector<std::string> tab;
    for (const STMounted& m : m_tabServices) {
        bool bSeen = false;
        for (const std::string& s : tab)
            bSeen = bSeen || s == m.pRow->pszHost;
        if (!bSeen)
            tab.emplace_back(m.pRow->pszHost);
    }
    return tab;
}

bool CEmulator::bIsServiceHost(std::string_view svHost) const {
    for (const STMounted& m : m_tabServices)
        if (svHost == m.pRow->pszHost)
            return true;
    return false;
}

void CEmulator::Resolve(std::string_view svHostHeader, std::string_view svRawTarget,
                        STRequest& req) const {
    std::string_view svTarget = svRawTarget;
    std::string sHost = s_sHostName(svHostHeader);
    // A proxy-style absolute target names the origin itself.
    for (std::string_view svScheme : {"http://", "https://"}) {
        if (CText::s_bIStartsWith(svTarget, svScheme)) {
            std::string_view svRest = svTarget.substr(svScheme.size());
            size_t nEnd = svRest.find_first_of("/?");
            sHost = s_sHostName(svRest.substr(0, nEnd));
            svTarget = nEnd == std::string_view::npos ? std::string_view() : svRest.substr(nEnd);
            break;
        }
    }
    req.sPrefix.clear();
    if (!bIsServiceHost(sHost) && svTarget.size() > 1 && svTarget.front() == '/') {
        // The browser form: the origin host is the first path segment.
        size_t nEnd = svTarget.find_first_of("/?", 1);
        std::string_view svSegment =
            svTarget.substr(1, nEnd == std::string_view::npos ? nEnd : nEnd - 1);
        std::string sSegmentHost = s_sHostName(svSegment);
        if (bIsServiceHost(sSegmentHost)) {
            sHost = sSegmentHost;
            req.sPrefix = "/" + std::string(svSegment);
            svTarget = nEnd == std::string_view::npos ? std::string_view() : svTarget.substr(nEnd);
        }
    }
    req.sHost = std::move(sHost);
    req.sTarget = svTarget.empty() || svTarget.front() == '?' ? "/" + std::string(svTarget)
                                                              : std::string(svTarget);
    size_t nQuery = req.sTarget.find('?');
    req.sPath = req.sTarget.substr(0, nQuery);
    req.sQuery = nQuery == std::string::npos ? std::string() : req.sTarget.substr(nQuery + 1);
}

IService* CEmulator::pFindService(const STRequest& req) const {
    const STMounted* pBest = nullptr;
    size_t nBest = 0;
    for (const STMounted& m : m_tabServices) {
        std::string_view svPrefix = m.pRow->pszPathPrefix;
        if (req.sHost != m.pRow->pszHost || req.sPath.compare(0, svPrefix.size(), svPrefix) != 0)
            continue;
        if (!pBest || svPrefix.size() > nBest) {
            pBest = &m;
            nBest = svPrefix.size();
        }
    }
    return pBest ? pBest->pService.get() : nullptr;
}

void CEmulator::Dispatch(const STRequest& req, STResponse& res) {
    std::shared_lock lock(m_mtxReset);
    if (IService* pService = pFindService(req)) {
        pService->vHandle(req, res);
        return;
    }
    std::string sMessage;
    if (bIsServiceHost(req.sHost)) {
        sMessage = "No emulated service answers " + req.sPath + " on " + req.sHost;
    } else {
        sMessage = "No emulated service for host '" + req.sHost + "'; known hosts:";
        for (const std::string& s : tabHosts())
            sMessage += " " + s;
    }
    CJsonValue error = CJsonValue::s_Object();
    error.Set("code", CJsonValue::s_Int(404));
    error.Set("message", CJsonValue::s_String(sMessage));
    error.Set("status", CJsonValue::s_String("NOT_FOUND"));
    res.SetJson(404, CJsonValue::s_Object().Set("error", std::move(error)));
}

CEmulator::eOutcome CEmulator::eServe(std::string_view svHostHeader, std::string_view svRawTarget,
                                      STRequest& req, STResponse& res) {
    if (CControl::s_bIsControl(svRawTarget)) {
        req.sHost = s_sHostName(svHostHeader);
        req.sTarget = std::string(svRawTarget);
        size_t nQuery = req.sTarget.find('?');
        req.sPath = req.sTarget.substr(0, nQuery);
        req.sQuery = nQuery == std::string::npos ? std::string() : req.sTarget.substr(nQuery + 1);
        m_pControl->Handle(req, res);
        return eAnswer;
    }
    Resolve(svHostHeader, svRawTarget, req);
    m_Log.Append({req.sHost, req.sMethod, std::string(svRawTarget), req.tabHeaders, req.sBody});
    if (auto oFault = m_Faults.oTake(req.sHost, req.sMethod, req.sTarget)) {
        if (oFault->nDelayMs > 0 && !bWait(oFault->nDelayMs))
            return eDrop;
        if (oFault->bDrop)
            return eDrop;
        if (oFault->nStatus) {
            res.nStatus = oFault->nStatus;
            res.sBody = oFault->sBody;
            for (auto& [sName, sValue] : oFault->tabHeaders) {
                if (CText::s_bIEquals(sName, "Content-Type"))
                    res.sContentType = sValue;
                else
                    res.AddHeader(sName, sValue);
            }
            // Without a type of its own, a body that looks like JSON is sent as JSON.
            if (res.sContentType.empty() && !res.sBody.empty()) {
                char c = res.sBody.front();
                res.sContentType = c == '{' || c == '[' ? "application/json; charset=utf-8"
                                                        : "text/plain; charset=utf-8";
            }
            return eAnswer;
        }
    }
    Dispatch(req, res);
    return eAnswer;
}

void CEmulator::Reset() {
    std::unique_lock lock(m_mtxReset);
    m_Tokens.Reset(m_Seed);
    for (STMounted& m : m_tabServices)
        m.pService->vReset();
    m_Log.nClear();
    m_Faults.nClear();
}

void CEmulator::RequestStop() {
    {
        std::lock_guard lock(m_mtxStop);
        m_bStopping = true;
    }
    m_cvStop.notify_all();
}

bool CEmulator::bWait(long long nMs) {
    std::unique_lock lock(m_mtxStop);
    return !m_cvStop.wait_for(lock, std::chrono::milliseconds(nMs), [this] { return m_bStopping; });
}
