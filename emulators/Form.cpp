#include "Form.h"

namespace {
int s_nHex(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}
} // namespace

std::optional<std::string> CForm::s_oDecode(std::string_view sv, eDecoding e) {
    std::string s;
    s.reserve(sv.size());
    for (size_t i = 0; i < sv.size(); ++i) {
        char c = sv[i];
        if (c == '+') {
            s += ' ';
        } else if (c == '%') {
            int nHigh = i + 2 < sv.size() ? s_nHex(sv[i + 1]) : -1;
            int nLow = nHigh >= 0 ? s_nHex(sv[i + 2]) : -1;
            if (nHigh < 0 || nLow < 0) {
                if (e == eStrict)
                    return std::nullopt;
                s += c;
                continue;
            }
            s += static_cast<char>(nHigh * 16 + nLow);
            i += 2;
        } else {
            s += c;
        }
    }
    return s;
}

std::string CForm::s_sEncode(std::string_view sv) {
    static const char s_szHex[] = "0123456789ABCDEF";
    std::string s;
    s.reserve(sv.size());
    for (unsigned char c : sv) {
        bool bKeep = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                     c == '-' || c == '.' || c == '_' || c == '~';
        if (bKeep) {
            s += static_cast<char>(c);
        } else {
            s += '%';
            s += s_szHex[c >> 4];
            s += s_szHex[c & 15];
        }
    }
    return s;
}

std::optional<CForm> CForm::s_oParse(std::string_view sv, eDecoding e, std::string* pError) {
    CForm form;
    while (!sv.empty()) {
        size_t nAmp = sv.find('&');
        std::string_view svPiece = sv.substr(0, nAmp);
        sv = nAmp == std::string_view::npos ? std::string_view() : sv.substr(nAmp + 1);
        if (svPiece.empty())
            continue;
        size_t nEq = svPiece.find('=');
        std::string_view svName = svPiece.substr(0, nEq);
        std::string_view svRaw =
            nEq == std::string_view::npos ? std::string_view() : svPiece.substr(nEq + 1);
        auto oName = s_oDecode(svName, e);
        auto oValue = s_oDecode(svRaw, e);
        if (!oName || !oValue) {
            if (pError)
                *pError =
                    "malformed percent-encoding in '" + std::string(svPiece.substr(0, 64)) + "'";
            return std::nullopt;
        }
        form.m_tabFields.push_back({std::move(*oName), std::move(*oValue), std::string(svRaw)});
    }
    return form;
}

const CForm::STField* CForm::pField(std::string_view svName) const {
    for (const STField& f : m_tabFields)
        if (f.sName == svName)
            return &f;
    return nullptr;
}

std::string CForm::sValue(std::string_view svName) const {
    const STField* p = pField(svName);
    return p ? p->sValue : std::string();
}
