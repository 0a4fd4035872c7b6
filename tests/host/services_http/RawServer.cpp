#include "RawServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <stdexcept>

namespace {

std::string s_sLower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

} // namespace

std::string STRawRequest::sHeader(const std::string& sName) const {
    std::string sKey = s_sLower(sName) + ":";
    size_t nStart = sHead.find("\r\n");
    while (nStart != std::string::npos && nStart + 2 < sHead.size()) {
        nStart += 2;
        size_t nEnd = sHead.find("\r\n", nStart);
        std::string sLine =
            sHead.substr(nStart, nEnd == std::string::npos ? std::string::npos : nEnd - nStart);
        if (s_sLower(sLine.substr(0, sKey.size())) == sKey) {
            size_t n = sKey.size();
            while (n < sLine.size() && sLine[n] == ' ')
                ++n;
            return sLine.substr(n);
        }
        nStart = nEnd;
    }
    return {};
}

bool STRawRequest::bHasHeader(const std::string& sName) const {
    std::string sKey = "\r\n" + s_sLower(sName) + ":";
    return s_sLower(sHead).find(sKey) != std::string::npos;
}

CRawServer::CRawServer(FnHandler fnHandler) : m_fnHandler(std::move(fnHandler)) {
    if (::pipe(m_tabStop) != 0)
        throw std::runtime_error("pipe");
    m_nListener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in st{};
    st.sin_family = AF_INET;
    st.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t nLength = sizeof st;
    if (m_nListener < 0 || ::bind(m_nListener, reinterpret_cast<sockaddr*>(&st), sizeof st) != 0 ||
        ::listen(m_nListener, 64) != 0 ||
        ::getsockname(m_nListener, reinterpret_cast<sockaddr*>(&st), &nLength) != 0)
        throw std::runtime_error("listen");
    m_nPort = ntohs(st.sin_port);
    m_thAccept = std::thread([this] { _Accept(); });
}

CRawServer::~CRawServer() {
    char c = 0;
    (void)!::write(m_tabStop[1], &c, 1);
    m_thAccept.join();
    {
        std::lock_guard guard(m_mutex);
        for (int nFd : m_tabSockets)
            ::shutdown(nFd, SHUT_RDWR);
    }
    for (std::thread& th : m_tabThreads)
        th.join();
    ::close(m_nListener);
    ::close(m_tabStop[0]);
    ::close(m_tabStop[1]);
}

void CRawServer::SetGreeting(std::string sGreeting) {
    std::lock_guard guard(m_mutex);
    m_sGreeting = std::move(sGreeting);
}

std::string CRawServer::sUrl(const std::string& sPath) const {
    return "http://127.0.0.1:" + std::to_string(m_nPort) + sPath;
}

std::vector<STRawRequest> CRawServer::tabRequests() {
    std::lock_guard guard(m_mutex);
    return m_tabRequests;
}

int CRawServer::nConnections() {
    std::lock_guard guard(m_mutex);
    return m_nConnections;
}

std::string CRawServer::s_sAnswer(int nStatus, const std::string& sReason, const std::string& sBody,
                                  const std::vector<std::string>& tabHeaders) {
    std::string s = "HTTP/1.1 " + std::to_string(nStatus) + " " + sReason + "\r\n";
    for (const std::string& sLine : tabHeaders)
        s += sLine + "\r\n";
    s += "Content-Length: " + std::to_string(sBody.size()) + "\r\n\r\n" + sBody;
    return s;
}

void CRawServer::_Accept() {
    for (;;) {
        pollfd tab[2] = {{m_nListener, POLLIN, 0}, {m_tabStop[0], POLLIN, 0}};
        if (::poll(tab, 2, -1) < 0)
            continue;
        if (tab[1].revents)
            return;
        int nFd = ::accept4(m_nListener, nullptr, nullptr, SOCK_CLOEXEC);
        if (nFd < 0)
            continue;
        std::lock_guard guard(m_mutex);
        int nConnectionNumber = ++m_nConnections;
        m_tabSockets.push_back(nFd);
        m_tabThreads.emplace_back(
            [this, nFd, nConnectionNumber] { _Serve(nFd, nConnectionNumber); });
    }
}

bool CRawServer::_bReadUntil(int nFd, std::string& sBuffer, size_t n) {
    while (sBuffer.size() < n) {
        pollfd tab[2] = {{nFd, POLLIN, 0}, {m_tabStop[0], POLLIN, 0}};
        if (::poll(tab, 2, -1) < 0)
            continue;
        if (tab[1].revents)
            return false;
        char aby[65536];
        ssize_t nRead = ::recv(nFd, aby, sizeof aby, 0);
        if (nRead <= 0)
            return false;
        sBuffer.append(aby, static_cast<size_t>(nRead));
    }
    return true;
}

bool CRawServer::_bReadHead(int nFd, std::string& sBuffer, size_t& nEndHead) {
    for (;;) {
        nEndHead = sBuffer.find("\r\n\r\n");
        if (nEndHead != std::string::npos)
            return true;
        if (!_bReadUntil(nFd, sBuffer, sBuffer.size() + 1))
            return false;
    }
}

void CRawServer::_Serve(int nFd, int nConnection) {
    std::string sGreeting;
    {
        std::lock_guard guard(m_mutex);
        sGreeting = m_sGreeting;
    }
    if (!sGreeting.empty())
        (void)!::send(nFd, sGreeting.data(), sGreeting.size(), MSG_NOSIGNAL);
    std::string sBuffer;
    for (;;) {
        size_t nHeadEnd = 0;
        if (!_bReadHead(nFd, sBuffer, nHeadEnd))
            break;
        STRawRequest st;
        st.nConnection = nConnection;
        st.sHead = sBuffer.substr(0, nHeadEnd);
        size_t nLength = 0;
        if (std::string s = st.sHeader("Content-Length"); !s.empty())
            nLength = std::strtoul(s.c_str(), nullptr, 10);
        size_t nTotal = nHeadEnd + 4 + nLength;
        if (!_bReadUntil(nFd, sBuffer, nTotal))
            break;
        st.sRaw = sBuffer.substr(0, nTotal);
        st.sBody = sBuffer.substr(nHeadEnd + 4, nLength);
        sBuffer.erase(0, nTotal);
        std::string sLine = st.sHead.substr(0, st.sHead.find("\r\n"));
        size_t nSpace1 = sLine.find(' ');
        size_t nSpace2 = sLine.rfind(' ');
        st.sMethod = sLine.substr(0, nSpace1);
        if (nSpace1 != std::string::npos && nSpace2 > nSpace1)
            st.sTarget = sLine.substr(nSpace1 + 1, nSpace2 - nSpace1 - 1);
        {
            std::lock_guard guard(m_mutex);
            m_tabRequests.push_back(st);
        }
        STRawReply stReply = m_fnHandler(st);
        if (stReply.bSilent) {
            std::string sNothing;
            _bReadUntil(nFd, sNothing, SIZE_MAX); // until the peer leaves or the server stops
            break;
        }
        size_t nSent = 0;
        while (nSent < stReply.sBytes.size()) {
            ssize_t n = ::send(nFd, stReply.sBytes.data() + nSent, stReply.sBytes.size() - nSent,
                               MSG_NOSIGNAL);
            if (n <= 0)
                break;
            nSent += static_cast<size_t>(n);
        }
        if (stReply.bClose)
            break;
    }
    std::lock_guard guard(m_mutex);
    std::erase(m_tabSockets, nFd);
    ::close(nFd);
}
