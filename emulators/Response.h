// STResponse: what a service answers; the server writes it out.
#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CJsonValue;

struct STResponse {
    int nStatus = 200;
    std::string sContentType; // kept apart from the headers: written once, by the server
    std::string sBody;
    std::vector<std::pair<std::string, std::string>> tabHeaders;

    void SetJson(int nNewStatus, const CJsonValue& v);
    void SetBody(int nNewStatus, std::string_view svContentType, std::string sNewBody);
    void SetRedirect(std::string sLocation); // 302 Found
    void AddHeader(std::string sName, std::string sValue);
    const std::string* pHeader(std::string_view svName) const;
};
