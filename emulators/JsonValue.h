// CJsonValue: a small JSON tree for the seed, the control surface and the services' bodies.
// Parsing goes through simdjson in JsonValue.cpp only; members keep their order, so answers
// read as the real services write them.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CJsonValue {
public:
    enum eKind { eNull, eBool, eNumber, eString, eArray, eObject };

    CJsonValue() = default;
    static CJsonValue s_Bool(bool b);
    static CJsonValue s_Int(long long n);
    static CJsonValue s_Number(double d);
    static CJsonValue s_String(std::string s);
    static CJsonValue s_Array();
    static CJsonValue s_Object();

    static std::optional<CJsonValue> s_oParse(std::string_view sv, std::string* pError);
    // A JSON string literal with its quotes. Bytes that are not UTF-8 are read as Latin-1, so
    // that whatever a client sent can be shown without breaking the document.
    static std::string s_sQuote(std::string_view sv);

    eKind eGetKind() const { return m_eKind; }
    bool bIsNull() const { return m_eKind == eNull; }
    bool bIsString() const { return m_eKind == eString; }
    bool bIsObject() const { return m_eKind == eObject; }
    bool bIsArray() const { return m_eKind == eArray; }
    bool bIsBool() const { return m_eKind == eBool; }
    bool bIsNumber() const { return m_eKind == eNumber; }
    bool bIsInteger() const { return m_eKind == eNumber && m_bInteger; }

    bool bGetBool() const { return m_bBool; }
    long long nGetInt() const { return m_nInt; }
    double dGetNumber() const { return m_dNumber; }
    const std::string& sGetString() const { return m_s; }
    const std::vector<CJsonValue>& Items() const { return m_tabItems; }
    const std::vector<std::pair<std::string, CJsonValue>>& Members() const { return m_tabMembers; }

    // The member of that name, or null when this is no object or has no such member.
    const CJsonValue* pFind(std::string_view svKey) const;
    // The text of a string member, or svDefault.
    std::string sText(std::string_view svKey, std::string_view svDefault = {}) const;

    CJsonValue& Set(std::string sKey, CJsonValue v);    // replaces a member of the same name
    CJsonValue& Append(std::string sKey, CJsonValue v); // adds without looking for a namesake
    CJsonValue& Push(CJsonValue v);
    bool bErase(std::string_view svKey);

    std::string sSerialize() const;
    void Serialize(std::string& sOut) const;

private:
    eKind m_eKind = eNull;
    bool m_bBool = false;
    bool m_bInteger = false;
    long long m_nInt = 0;
    double m_dNumber = 0;
    std::string m_s;
    std::vector<CJsonValue> m_tabItems;
    std::vector<std::pair<std::string, CJsonValue>> m_tabMembers;
};
