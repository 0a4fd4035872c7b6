// CRequestLog: every request the services received, in order and exactly as received, for
// tests to compare with what a client should have sent.
#pragma once
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct STLoggedRequest {
    std::string sHost; // the service it went to (or the Host header's name when none)
    std::string sMethod;
    std::string sTarget; // the request line's target, exactly as received
    std::vector<std::pair<std::string, std::string>> tabHeaders;
    std::string sBody;
};

class CRequestLog {
public:
    void Append(STLoggedRequest entry);
    size_t nClear();
    size_t nCount() const;
    // A JSON array of {host, method, target, headers, body | body_base64}; an empty host
    // filter keeps every entry.
    std::string sToJson(std::string_view svHost = {}) const;

private:
    mutable std::mutex m_mtx;
    std::vector<STLoggedRequest> m_tabEntries;
};
