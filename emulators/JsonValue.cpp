#include "JsonValue.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <simdjson.h>

#include "Text.h"

CJsonValue CJsonValue::s_Bool(bool b) {
    CJsonValue v;
    v.m_eKind = eBool;
    v.m_bBool = b;
    return v;
}

CJsonValue CJsonValue::s_Int(long long n) {
    CJsonValue v;
    v.m_eKind = eNumber;
    v.m_bInteger = true;
    v.m_nInt = n;
    v.m_dNumber = static_cast<double>(n);
    return v;
}

CJsonValue CJsonValue::s_Number(double d) {
    CJsonValue v;
    v.m_eKind = eNumber;
    v.m_dNumber = d;
    return v;
}

CJsonValue CJsonValue::s_String(std::string s) {
    CJsonValue v;
    v.m_eKind = eString;
    v.m_s = std::move(s);
    return v;
}

CJsonValue CJsonValue::s_Array() {
    CJsonValue v;
    v.m_eKind = eArray;
    return v;
}

CJsonValue CJsonValue::s_Object() {
    CJsonValue v;
    v.m_eKind = eObject;
    return v;
}

namespace {
CJsonValue s_Convert(simdjson::dom::element e) {
    using simdjson::dom::element_type;
    switch (e.type()) {
    case element_type::ARRAY: {
        CJsonValue v = CJsonValue::s_Array();
        simdjson::dom::array tab =
            e.get_array().value_unsafe(); // a copy: the result is a temporary
        for (simdjson::dom::element x : tab)
            v.Push(s_Convert(x));
        return v;
    }
    case element_type::OBJECT: {
        CJsonValue v = CJsonValue::s_Object();
        // Appended as read: a lookup finds the first of duplicate names, and a hostile object
        // of many members costs no quadratic search.
        simdjson::dom::object members = e.get_object().value_unsafe();
        for (simdjson::dom::key_value_pair kv : members)
            v.Append(std::string(kv.key), s_Convert(kv.value));
        return v;
    }
    case element_type::INT64:
        return CJsonValue::s_Int(e.get_int64().value_unsafe());
    case element_type::UINT64: {
        uint64_t n = e.get_uint64().value_unsafe();
        return CJsonValue::s_Number(static_cast<double>(n));
    }
    case element_type::DOUBLE:
        return CJsonValue::s_Number(e.get_double().value_unsafe());
    case element_type::STRING:
        return CJsonValue::s_String(std::string(e.get_string().value_unsafe()));
    case element_type::BOOL:
        return CJsonValue::s_Bool(e.get_bool().value_unsafe());
    case element_type::NULL_VALUE:
        break;
    }
    return CJsonValue();
}
} // namespace

std::optional<CJsonValue> CJsonValue::s_oParse(std::string_view sv, std::string* pError) {
    simdjson::dom::parser parser;
    simdjson::dom::element root;
    auto nError = parser.parse(sv.data(), sv.size()).get(root);
    if (nError) {
        if (pError)
            *pError = simdjson::error_message(nError);
        return std::nullopt;
    }
    return s_Convert(root);
}

std::string CJsonValue::s_sQuote(std::string_view sv) {
    static const char s_szHex[] = "0123456789abcdef";
    std::string s;
    s.reserve(sv.size() + 2);
    s += '"';
    bool bUtf8 = CText::s_bValidUtf8(sv);
    for (size_t i = 0; i < sv.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(sv[i]);
        switch (c) {
        case '"':
            s += "\\\"";
            continue;
        case '\\':
            s += "\\\\";
            continue;
        case '\n':
            s += "\\n";
            continue;
        case '\r':
            s += "\\r";
            continue;
        case '\t':
            s += "\\t";
            continue;
        case '\b':
            s += "\\b";
            continue;
        case '\f':
            s += "\\f";
            continue;
        default:
            break;
        }
        if (c < 0x20 || (c >= 0x80 && !bUtf8)) {
            s += "\\u00";
            s += s_szHex[c >> 4];
            s += s_szHex[c & 15];
        } else {
            s += static_cast<char>(c);
        }
    }
    s += '"';
    return s;
}

const CJsonValue* CJsonValue::pFind(std::string_view svKey) const {
    for (const auto& [sKey, v] : m_tabMembers)
        if (sKey == svKey)
            return &v;
    return nullptr;
}

std::string CJsonValue::sText(std::string_view svKey, std::string_view svDefault) const {
    const CJsonValue* p = pFind(svKey);
    return p && p->bIsString() ? p->m_s : std::string(svDefault);
}

CJsonValue& CJsonValue::Set(std::string sKey, CJsonValue v) {
    for (auto& [sName, vOld] : m_tabMembers) {
        if (sName == sKey) {
            vOld = std::move(v);
            return *this;
        }
    }
    m_tabMembers.emplace_back(std::move(sKey), std::move(v));
    return *this;
}

CJsonValue& CJsonValue::Append(std::string sKey, CJsonValue v) {
    m_tabMembers.emplace_back(std::move(sKey), std::move(v));
    return *this;
}

CJsonValue& CJsonValue::Push(CJsonValue v) {
    m_tabItems.push_back(std::move(v));
    return *this;
}

bool CJsonValue::bErase(std::string_view svKey) {
    for (auto it = m_tabMembers.begin(); it != m_tabMembers.end(); ++it) {
        if (it->first == svKey) {
            m_tabMembers.erase(it);
            return true;
        }
    }
    return false;
}

std::string CJsonValue::sSerialize() const {
    std::string s;
    Serialize(s);
    return s;
}

void CJsonValue::Serialize(std::string& sOut) const {
    switch (m_eKind) {
    case eNull:
        sOut += "null";
        break;
    case eBool:
        sOut += m_bBool ? "true" : "false";
        break;
    case eNumber:
        if (m_bInteger) {
            sOut += std::to_string(m_nInt);
        } else if (!std::isfinite(m_dNumber)) {
            sOut += "null"; // JSON has no infinities
        } else {
            // The shortest text that reads back the same number, as the services write theirs
            // (48.8584, not 48.858400000000003).
            char sz[32];
            auto [p, ec] = std::to_chars(sz, sz + sizeof sz, m_dNumber);
            sOut.append(sz, ec == std::errc() ? p : sz);
        }
        break;
    case eString:
        sOut += s_sQuote(m_s);
        break;
    case eArray:
        sOut += '[';
        for (size_t i = 0; i < m_tabItems.size(); ++i) {
            if (i)
                sOut += ',';
            m_tabItems[i].Serialize(sOut);
        }
        sOut += ']';
        break;
    case eObject:
        sOut += '{';
        for (size_t i = 0; i < m_tabMembers.size(); ++i) {
            if (i)
                sOut += ',';
            sOut += s_sQuote(m_tabMembers[i].first);
            sOut += ':';
            m_tabMembers[i].second.Serialize(sOut);
        }
        sOut += '}';
        break;
    }
}
