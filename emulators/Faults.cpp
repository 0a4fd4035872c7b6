#include "Faults.h"

#include "JsonValue.h"
#include "Text.h"

namespace {
// A header that could split the answer or smuggle another one is refused at the door.
bool s_bHeaderSafe(std::string_view svName, std::string_view svValue) {
    if (svName.empty())
        return false;
    for (char c : svName)
        if (c <= ' ' || c == ':' || c == 127)
            return false;
    for (char c : svValue)
        if (c == '\r' || c == '\n' || c == '\0')
            return false;
    return true;
}

bool s_bFail(std::string* pError, std::string s) {
    if (pError)
        *pError = std::move(s);
    return false;
}
} // namespace

bool CFaults::s_bRead(const CJsonValue& v, STFault& f, std::string* pError) {
    if (!v.bIsObject())
        return s_bFail(pError, "a fault must be a JSON object");
    for (const auto& [sKey, x] : v.Members()) {
        if (sKey == "host" || sKey == "method" || sKey == "path" || sKey == "body") {
            if (!x.bIsString())
                return s_bFail(pError, "\"" + sKey + "\" must be a string");
            std::string& s = sKey == "host"     ? f.sHost
                             : sKey == "method" ? f.sMethod
                             : sKey == "path"   ? f.sPath
                                                : f.sBody;
            s = x.sGetString();
        } else if (sKey == "status") {
            if (!x.bIsInteger() || x.nGetInt() < 100 || x.nGetInt() > 599)
                return s_bFail(pError, "\"status\" must be an integer from 100 to 599");
            f.nStatus = static_cast<int>(x.nGetInt());
        } else if (sKey == "count") {
            if (!x.bIsInteger() || x.nGetInt() < 1)
                return s_bFail(pError, "\"count\" must be a positive integer");
            f.nCount = x.nGetInt();
        } else if (sKey == "delay_ms") {
            if (!x.bIsInteger() || x.nGetInt() < 0 || x.nGetInt() > ms_nMaxDelayMs)
                return s_bFail(pError, "\"delay_ms\" must be an integer from 0 to " +
                                           std::to_string(ms_nMaxDelayMs));
            f.nDelayMs = x.nGetInt();
        } else if (sKey == "drop") {
            if (!x.bIsBool())
                return s_bFail(pError, "\"drop\" must be true or false");
            f.bDrop = x.bGetBool();
        } else if (sKey == "headers") {
            if (!x.bIsObject())
                return s_bFail(pError, "\"headers\" must be an object of strings");
            for (const auto& [sName, h] : x.Members()) {
                if (!h.bIsString() || !s_bHeaderSafe(sName, h.sGetString()))
                    return s_bFail(pError, "the header \"" + sName + "\" is not a valid header");
                f.tabHeaders.emplace_back(sName, h.sGetString());
            }
        } else {
            return s_bFail(pError, "unknown fault member \"" + sKey + "\"");
        }
    }
    if (f.bDrop && f.nStatus)
        return s_bFail(pError, "a fault either drops the connection or answers, not both");
    if (!f.bDrop && !f.nStatus && !f.nDelayMs)
        return s_bFail(pError, "a fault needs \"status\", \"delay_ms\" or \"drop\"");
    if (!f.nStatus && (!f.sBody.empty() || !f.tabHeaders.empty()))
        return s_bFail(pError, "\"body\" and \"headers\" need a \"status\"");
    f.sHost = CText::s_sLower(f.sHost);
    return true;
}

bool CFaults::bAdd(const CJsonValue& v, std::string* pError) {
    std::vector<STFault> tab;
    if (v.bIsArray()) {
        for (const CJsonValue& x : v.Items()) {
            STFault f;
            if (!s_bRead(x, f, pError))
                return false;
            tab.push_back(std::move(f));
        }
    } else {
        STFault f;
        if (!s_bRead(v, f, pError))
            return false;
        tab.push_back(std::move(f));
    }
    std::lock_guard lock(m_mtx);
    for (STFault& f : tab)
        m_tabFaults.push_back(std::move(f));
    return true;
}

std::optional<STFault> CFaults::oTake(std::string_view svHost, std::string_view svMethod,
                                      std::string_view svTarget) {
    std::lock_guard lock(m_mtx);
    for (auto it = m_tabFaults.begin(); it != m_tabFaults.end(); ++it) {
        if (!it->sHost.empty() && !CText::s_bIEquals(it->sHost, svHost))
            continue;
        if (!it->sMethod.empty() && !CText::s_bIEquals(it->sMethod, svMethod))
            continue;
        if (svTarget.substr(0, it->sPath.size()) != it->sPath)
            continue;
        STFault f = *it;
        if (--it->nCount == 0)
            m_tabFaults.erase(it);
        return f;
    }
    return std::nullopt;
}

size_t CFaults::nClear() {
    std::lock_guard lock(m_mtx);
    size_t n = m_tabFaults.size();
    m_tabFaults.clear();
    return n;
}

std::string CFaults::sToJson() const {
    std::lock_guard lock(m_mtx);
    CJsonValue tab = CJsonValue::s_Array();
    for (const STFault& f : m_tabFaults) {
        CJsonValue v = CJsonValue::s_Object();
        v.Set("host", CJsonValue::s_String(f.sHost));
        v.Set("method", CJsonValue::s_String(f.sMethod));
        v.Set("path", CJsonValue::s_String(f.sPath));
        if (f.nStatus)
            v.Set("status", CJsonValue::s_Int(f.nStatus));
        if (f.nStatus)
            v.Set("body", CJsonValue::s_String(f.sBody));
        CJsonValue headers = CJsonValue::s_Object();
        for (const auto& [sName, sValue] : f.tabHeaders)
            headers.Append(sName, CJsonValue::s_String(sValue));
        if (f.nStatus)
            v.Set("headers", std::move(headers));
        v.Set("count", CJsonValue::s_Int(f.nCount));
        v.Set("delay_ms", CJsonValue::s_Int(f.nDelayMs));
        v.Set("drop", CJsonValue::s_Bool(f.bDrop));
        tab.Push(std::move(v));
    }
    return tab.sSerialize();
}
