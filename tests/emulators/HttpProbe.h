// CHttpProbe: the tests' HTTP client for the emulators, with any Host header, any method and
// exact targets; and a raw socket for requests no client library would send.
#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct STReply {
    bool bConnected = false; // false: no answer (refused, or the connection was dropped)
    int nStatus = 0;
    std::string sBody;
    std::vector<std::pair<std::string, std::string>> tabHeaders;
    std::string sHeader(std::string_view svName) const; // "" when absent
};

class CHttpProbe {
public:
    using Headers = std::vector<std::pair<std::string, std::string>>;
    explicit CHttpProbe(int nPort) : m_nPort(nPort) {}
    int nPort() const { return m_nPort; }

    // The target goes out exactly as given; sHost becomes the Host header ("" leaves the
    // client's own, 127.0.0.1:PORT).
    STReply Send(std::string_view svMethod, std::string_view svHost, std::string_view svTarget,
                 std::string_view svBody = {}, std::string_view svContentType = {},
                 const Headers& tabHeaders = {}) const;
    STReply Get(std::string_view svHost, std::string_view svTarget) const {
        return Send("GET", svHost, svTarget);
    }
    STReply PostForm(std::string_view svHost, std::string_view svTarget, std::string_view svBody,
                     const Headers& tabHeaders = {}) const {
        return Send("POST", svHost, svTarget, svBody, "application/x-www-form-urlencoded",
                    tabHeaders);
    }
    // Writes the bytes on a fresh connection and returns what comes back until the server
    // closes or nTimeoutMs passes.
    std::string sRaw(std::string_view svBytes, int nTimeoutMs = 3000) const;

private:
    int m_nPort;
};
