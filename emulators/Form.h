// CForm: the fields of a query string or of an application/x-www-form-urlencoded body, each
// kept both decoded and as received (a state is echoed exactly as the client sent it).
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CForm {
public:
    struct STField {
        std::string sName;  // decoded
        std::string sValue; // decoded
        std::string sRaw;   // the value as received
    };
    // Strict refuses a '%' that is not followed by two hex digits (a malformed body); lenient
    // keeps it as a literal, as browsers and the real providers do with query strings.
    enum eDecoding { eStrict, eLenient };

    static std::optional<CForm> s_oParse(std::string_view sv, eDecoding e, std::string* pError);
    static std::optional<std::string> s_oDecode(std::string_view sv, eDecoding e);
    // Percent-encodes every byte but the unreserved ones of RFC 3986.
    static std::string s_sEncode(std::string_view sv);

    // The first occurrence of a name wins, as with the real providers.
    const STField* pField(std::string_view svName) const;
    bool bHas(std::string_view svName) const { return pField(svName) != nullptr; }
    std::string sValue(std::string_view svName) const;
    const std::vector<STField>& Fields() const { return m_tabFields; }

private:
    std::vector<STField> m_tabFields;
};
