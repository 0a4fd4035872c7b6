#include "HttpProbe.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

std::string STReply::sHeader(std::string_view svName) const {
    for (const auto& [sName, sValue] : tabHeaders) {
        if (sName.size() != svName.size())
            continue;
        bool bSame = true;
        for (size_t i = 0; i < sName.size() && bSame; ++i)
            bSame = std::tolower(static_cast<unsigned char>(sName[i])) ==
                    std::tolower(static_cast<unsigned char>(svName[i]));
        if (bSame)
            return sValue;
    }
    return {};
}

STReply CHttpProbe::Send(std::string_view svMethod, std::string_view svHost,
                         std::string_view svTarget, std::string_view svBody,
                         std::string_view svContentType, const Headers& tabHeaders) const {
    // Written by hand rather than with a client library: the target must go out byte for
    // byte, and a Location must come back as sent (libraries decode it).
    std::string sRequest = std::string(svMethod) + " " + std::string(svTarget) + " HTTP/1.1\r\n";
    sRequest +=
        "Host: " + (svHost.empty() ? "127.0.0.1:" + std::to_string(m_nPort) : std::string(svHost)) +
        "\r\n";
    for (const auto& [sName, sValue] : tabHeaders)
        sRequest += sName + ": " + sValue + "\r\n";
    if (!svContentType.empty())
        sRequest += "Content-Type: " + std::string(svContentType) + "\r\n";
    if (!svBody.empty() || svMethod == "POST" || svMethod == "PUT" || svMethod == "PATCH")
        sRequest += "Content-Length: " + std::to_string(svBody.size()) + "\r\n";
    sRequest += "Connection: close\r\n\r\n";
    sRequest += svBody;

    STReply reply;
    std::string sAnswer = sRaw(sRequest, 30000);
    size_t nHead = sAnswer.find("\r\n\r\n");
    if (sAnswer.rfind("HTTP/1.", 0) != 0 || nHead == std::string::npos || nHead < 12)
        return reply;
    reply.bConnected = true;
    reply.nStatus = std::atoi(sAnswer.c_str() + 9);
    size_t nLine = sAnswer.find("\r\n") + 2;
    while (nLine < nHead) {
        size_t nEnd = sAnswer.find("\r\n", nLine);
        std::string sLine = sAnswer.substr(nLine, nEnd - nLine);
        size_t nColon = sLine.find(':');
        if (nColon != std::string::npos) {
            size_t nValue = sLine.find_first_not_of(' ', nColon + 1);
            reply.tabHeaders.emplace_back(sLine.substr(0, nColon),
                                          nValue == std::string::npos ? "" : sLine.substr(nValue));
        }
        nLine = nEnd + 2;
    }
    std::string sBody = sAnswer.substr(nHead + 4);
    if (reply.sHeader("Transfer-Encoding") == "chunked") {
        std::string sDecoded;
        size_t n = 0;
        while (n < sBody.size()) {
            size_t nEnd = sBody.find("\r\n", n);
            if (nEnd == std::string::npos)
                break;
            size_t nSize = std::strtoul(sBody.substr(n, nEnd - n).c_str(), nullptr, 16);
            if (nSize == 0)
                break;
            sDecoded += sBody.substr(nEnd + 2, nSize);
            n = nEnd + 2 + nSize + 2;
        }
        sBody = sDecoded;
    } else if (!reply.sHeader("Content-Length").empty()) {
        sBody = sBody.substr(0, std::strtoul(reply.sHeader("Content-Length").c_str(), nullptr, 10));
    }
    if (svMethod != "HEAD")
        reply.sBody = std::move(sBody);
    return reply;
}

namespace {
// True once a whole answer is in: its head, and the body its Content-Length announces (or the
// last chunk). An answer with neither ends when the server closes.
bool s_bComplete(const std::string& s) {
    size_t nHead = s.find("\r\n\r\n");
    if (nHead == std::string::npos)
        return false;
    std::string sHead = s.substr(0, nHead);
    for (char& c : sHead)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    size_t nLength = sHead.find("\r\ncontent-length:");
    if (nLength != std::string::npos)
        return s.size() - nHead - 4 >= std::strtoul(sHead.c_str() + nLength + 17, nullptr, 10);
    if (sHead.find("\r\ntransfer-encoding: chunked") != std::string::npos)
        return s.size() >= 5 && s.compare(s.size() - 5, 5, "0\r\n\r\n") == 0;
    return false;
}
} // namespace

std::string CHttpProbe::sRaw(std::string_view svBytes, int nTimeoutMs) const {
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0)
        return {};
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(m_nPort));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string sOut;
    if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0) {
        size_t nSent = 0;
        while (nSent < svBytes.size()) {
            ssize_t n = send(fd, svBytes.data() + nSent, svBytes.size() - nSent, MSG_NOSIGNAL);
            if (n <= 0)
                break; // the server may close early on a request it refuses
            nSent += static_cast<size_t>(n);
        }
        auto tEnd = std::chrono::steady_clock::now() + std::chrono::milliseconds(nTimeoutMs);
        char buf[4096];
        while (std::chrono::steady_clock::now() < tEnd) {
            pollfd p{fd, POLLIN, 0};
            if (poll(&p, 1, 50) <= 0)
                continue;
            ssize_t n = recv(fd, buf, sizeof buf, 0);
            if (n <= 0)
                break;
            sOut.append(buf, static_cast<size_t>(n));
            if (s_bComplete(sOut))
                break;
        }
    }
    close(fd);
    return sOut;
}
