// STRequest: one request as a service sees it, free of the HTTP library's types.
#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct STRequest {
    std::string sMethod;
    std::string sHost;   // the service's host: lower case, without port
    std::string sPrefix; // "/accounts.google.com" when a browser came in the browser form, or ""
    std::string sTarget; // path and query within the service, exactly as received
    std::string sPath;   // the path part of sTarget, still percent-encoded
    std::string sQuery;  // what follows '?', as received; "" when there is none
    std::vector<std::pair<std::string, std::string>> tabHeaders; // names as received
    std::string sBody;

    // The first header of that name, compared ignoring case; null when absent.
    const std::string* pHeader(std::string_view svName) const;
    std::string sHeader(std::string_view svName) const {
        const std::string* p = pHeader(svName);
        return p ? *p : std::string();
    }
};
