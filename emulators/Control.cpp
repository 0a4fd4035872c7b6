#include "Control.h"

#include "Emulator.h"
#include "Form.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"

namespace {
const char s_szRoot[] = "/_emulator";

void s_Error(STResponse& res, int nStatus, std::string sMessage) {
    res.SetJson(nStatus,
                CJsonValue::s_Object().Set("error", CJsonValue::s_String(std::move(sMessage))));
}

// True when the method is one of those allowed; otherwise answers 405 with Allow.
bool s_bMethod(const STRequest& req, STResponse& res, std::initializer_list<std::string_view> tab,
               const char* pszAllow) {
    for (std::string_view sv : tab)
        if (req.sMethod == sv || (sv == "GET" && req.sMethod == "HEAD"))
            return true;
    s_Error(res, 405, req.sMethod + " is not allowed on " + req.sPath);
    res.AddHeader("Allow", pszAllow);
    return false;
}

CJsonValue s_Count(const char* pszName, size_t n) {
    return CJsonValue::s_Object().Set(pszName, CJsonValue::s_Int(static_cast<long long>(n)));
}
} // namespace

bool CControl::s_bIsControl(std::string_view svRawTarget) {
    std::string_view sv = svRawTarget.substr(0, svRawTarget.find('?'));
    return sv.substr(0, sizeof s_szRoot - 1) == s_szRoot &&
           (sv.size() == sizeof s_szRoot - 1 || sv[sizeof s_szRoot - 1] == '/');
}

void CControl::Handle(const STRequest& req, STResponse& res) {
    std::string_view svPath = req.sPath;
    svPath.remove_prefix(sizeof s_szRoot - 1);
    if (svPath.size() > 1 && svPath.back() == '/')
        svPath.remove_suffix(1);

    if (svPath.empty() || svPath == "/") {
        if (!s_bMethod(req, res, {"GET"}, "GET, HEAD"))
            return;
        CJsonValue hosts = CJsonValue::s_Array();
        for (std::string& s : m_Emulator.tabHosts())
            hosts.Push(CJsonValue::s_String(std::move(s)));
        CJsonValue v = CJsonValue::s_Object();
        v.Set("services", std::move(hosts));
        v.Set("auto_approve", CJsonValue::s_Bool(m_Emulator.Options().bAutoApprove));
        v.Set("requests", CJsonValue::s_Int(static_cast<long long>(m_Emulator.Log().nCount())));
        res.SetJson(200, v);
    } else if (svPath == "/requests") {
        if (!s_bMethod(req, res, {"GET", "DELETE"}, "GET, HEAD, DELETE"))
            return;
        if (req.sMethod == "DELETE") {
            res.SetJson(200, s_Count("deleted", m_Emulator.Log().nClear()));
            return;
        }
        std::string sError;
        auto oQuery = CForm::s_oParse(req.sQuery, CForm::eStrict, &sError);
        if (!oQuery)
            return s_Error(res, 400, sError);
        res.SetBody(200, "application/json; charset=utf-8",
                    m_Emulator.Log().sToJson(oQuery->sValue("host")));
    } else if (svPath == "/faults") {
        if (!s_bMethod(req, res, {"GET", "POST", "DELETE"}, "GET, HEAD, POST, DELETE"))
            return;
        if (req.sMethod == "DELETE") {
            res.SetJson(200, s_Count("deleted", m_Emulator.Faults().nClear()));
        } else if (req.sMethod == "POST") {
            std::string sError;
            auto oFault = CJsonValue::s_oParse(req.sBody, &sError);
            if (!oFault)
                return s_Error(res, 400, "the fault is not JSON: " + sError);
            if (!m_Emulator.Faults().bAdd(*oFault, &sError))
                return s_Error(res, 400, sError);
            res.SetBody(201, "application/json; charset=utf-8", m_Emulator.Faults().sToJson());
        } else {
            res.SetBody(200, "application/json; charset=utf-8", m_Emulator.Faults().sToJson());
        }
    } else if (svPath == "/reset") {
        if (!s_bMethod(req, res, {"POST"}, "POST"))
            return;
        m_Emulator.Reset();
        res.SetJson(200, CJsonValue::s_Object().Set("reset", CJsonValue::s_Bool(true)));
    } else if (svPath == "/expire") {
        if (!s_bMethod(req, res, {"POST"}, "POST"))
            return;
        res.SetJson(200, s_Count("expired", m_Emulator.Tokens().nExpireAccessTokens()));
    } else {
        s_Error(res, 404,
                "no control " + req.sPath +
                    "; see /_emulator/requests, "
                    "/_emulator/faults, /_emulator/reset, /_emulator/expire");
    }
}
