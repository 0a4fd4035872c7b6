#include "RequestLog.h"

#include <map>

#include "Base64.h"
#include "JsonValue.h"
#include "Text.h"

void CRequestLog::Append(STLoggedRequest entry) {
    std::lock_guard lock(m_mtx);
    m_tabEntries.push_back(std::move(entry));
}

size_t CRequestLog::nClear() {
    std::lock_guard lock(m_mtx);
    size_t n = m_tabEntries.size();
    m_tabEntries.clear();
    return n;
}

size_t CRequestLog::nCount() const {
    std::lock_guard lock(m_mtx);
    return m_tabEntries.size();
}

std::string CRequestLog::sToJson(std::string_view svHost) const {
    std::lock_guard lock(m_mtx);
    std::string s = "[";
    bool bFirst = true;
    for (const STLoggedRequest& e : m_tabEntries) {
        if (!svHost.empty() && !CText::s_bIEquals(e.sHost, svHost))
            continue;
        CJsonValue v = CJsonValue::s_Object();
        v.Set("host", CJsonValue::s_String(e.sHost));
        v.Set("method", CJsonValue::s_String(e.sMethod));
        v.Set("target", CJsonValue::s_String(e.sTarget));
        // One member per name: repeated headers are joined as HTTP allows, with ", ".
        std::vector<std::pair<std::string, std::string>> tabJoined;
        std::map<std::string, size_t> mapIndex; // lower-case name -> place in tabJoined
        for (const auto& [sName, sValue] : e.tabHeaders) {
            auto [it, bNew] = mapIndex.emplace(CText::s_sLower(sName), tabJoined.size());
            if (bNew)
                tabJoined.emplace_back(sName, sValue);
            else
                tabJoined[it->second].second += ", " + sValue;
        }
        CJsonValue headers = CJsonValue::s_Object();
        for (auto& [sName, sValue] : tabJoined)
            headers.Append(std::move(sName), CJsonValue::s_String(std::move(sValue)));
        v.Set("headers", std::move(headers));
        if (CText::s_bValidUtf8(e.sBody))
            v.Set("body", CJsonValue::s_String(e.sBody));
        else
            v.Set("body_base64", CJsonValue::s_String(CBase64::s_sEncode(e.sBody)));
        if (!bFirst)
            s += ",\n";
        bFirst = false;
        v.Serialize(s);
    }
    s += "]";
    return s;
}
