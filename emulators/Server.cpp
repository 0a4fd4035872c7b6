#include "Server.h"

#include <dirent.h>
#include <httplib.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "Emulator.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "Text.h"

namespace {
const size_t s_nThreads = 16;                  // long fault delays must not starve the others
const size_t s_nMaxBody = 64u * 1024u * 1024u; // beyond that, 413

int s_nPortOf(const sockaddr_storage& a) {
    if (a.ss_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in&>(a).sin_port);
    if (a.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6&>(a).sin6_port);
    return -1;
}

// httplib gives a handler no socket; the connection is found by its two ports among the
// process's descriptors. shutdown() and not close(): the library still owns the descriptor
// and closes it itself, so no number can be reused under its feet.
void s_DropConnection(int nLocalPort, int nRemotePort) {
    DIR* pDir = opendir("/proc/self/fd");
    if (!pDir)
        return;
    while (dirent* pEntry = readdir(pDir)) {
        char* pszEnd = nullptr;
        long nFd = std::strtol(pEntry->d_name, &pszEnd, 10);
        if (pszEnd == pEntry->d_name || *pszEnd != '\0' || nFd == dirfd(pDir))
            continue;
        sockaddr_storage local{}, remote{};
        socklen_t nLocal = sizeof local, nRemote = sizeof remote;
        int fd = static_cast<int>(nFd);
        if (getsockname(fd, reinterpret_cast<sockaddr*>(&local), &nLocal) != 0 ||
            getpeername(fd, reinterpret_cast<sockaddr*>(&remote), &nRemote) != 0)
            continue;
        if (s_nPortOf(local) == nLocalPort && s_nPortOf(remote) == nRemotePort) {
            shutdown(fd, SHUT_RDWR);
            break;
        }
    }
    closedir(pDir);
}

void s_Write(const STResponse& r, httplib::Response& res) {
    res.status = r.nStatus;
    for (const auto& [sName, sValue] : r.tabHeaders)
        res.set_header(sName, sValue);
    if (!r.sContentType.empty() || !r.sBody.empty())
        res.set_content(r.sBody,
                        r.sContentType.empty() ? "application/octet-stream" : r.sContentType);
}
} // namespace

struct CServer::STImpl {
    httplib::Server server;
};

CServer::CServer(CEmulator& emulator) : m_Emulator(emulator), m_pImpl(std::make_unique<STImpl>()) {}

CServer::~CServer() {
    Stop();
}

bool CServer::bStart(int nPort, std::string* pError) {
    // A client that hangs up while we write must not kill the process.
    signal(SIGPIPE, SIG_IGN);
    httplib::Server& server = m_pImpl->server;
    server.new_task_queue = [] { return new httplib::ThreadPool(s_nThreads); };
    server.set_payload_max_length(s_nMaxBody);
    server.set_keep_alive_max_count(100);
    // Without it an answer written in two pieces waits for the client's delayed
    // acknowledgement: some 40 ms on every kept-alive request. The packaged library is compiled
    // with the option off, so the compile-time switch cannot reach it.
    server.set_tcp_nodelay(true);

    auto handler = [this](const httplib::Request& req, httplib::Response& res) {
        STRequest r;
        r.sMethod = req.method;
        // httplib files the socket's addresses among the headers; they were never sent.
        std::pair<const char*, std::string> tabSynthetic[] = {
            {"REMOTE_ADDR", req.remote_addr},
            {"REMOTE_PORT", std::to_string(req.remote_port)},
            {"LOCAL_ADDR", req.local_addr},
            {"LOCAL_PORT", std::to_string(req.local_port)},
        };
        for (const auto& [sName, sValue] : req.headers) {
            bool bSynthetic = false;
            for (auto& [pszName, sSynthetic] : tabSynthetic) {
                if (pszName && sName == pszName && sValue == sSynthetic) {
                    pszName = nullptr; // one each: a header a client really sent stays
                    bSynthetic = true;
                    break;
                }
            }
            if (!bSynthetic)
                r.tabHeaders.emplace_back(sName, sValue);
        }
        r.sBody = req.body;
        STResponse out;
        CEmulator::eOutcome e = CEmulator::eAnswer;
        try {
            e = m_Emulator.eServe(req.get_header_value("Host"), req.target, r, out);
        } catch (const std::exception& x) {
            out = STResponse();
            out.SetJson(500, CJsonValue::s_Object().Set(
                                 "error",
                                 CJsonValue::s_String(std::string("internal error: ") + x.what())));
        }
        if (e == CEmulator::eDrop) {
            s_DropConnection(req.local_port, req.remote_port);
            res.status = 500; // never seen: the connection is gone
            return;
        }
        s_Write(out, res);
    };
    // A request without Content-Length or Transfer-Encoding has no body (RFC 9112, 6.3), but
    // this httplib reads a POST or PUT body until the client closes: `curl -X POST` would
    // wait for the read timeout and get 400. Such requests are served here, before any read.
    server.set_pre_routing_handler([handler](const httplib::Request& req, httplib::Response& res) {
        if (req.has_header("Content-Length") || req.has_header("Transfer-Encoding"))
            return httplib::Server::HandlerResponse::Unhandled;
        handler(req, res);
        return httplib::Server::HandlerResponse::Handled;
    });
    // A pattern that matches every path; the emulator routes by itself.
    const std::string sAll = "[\\s\\S]*";
    server.Get(sAll, handler);
    server.Post(sAll, handler);
    server.Put(sAll, handler);
    server.Patch(sAll, handler);
    server.Delete(sAll, handler);
    server.Options(sAll, handler);

    if (nPort == 0) {
        m_nPort = server.bind_to_any_port(ms_pszAddress);
        if (m_nPort <= 0) {
            if (pError)
                *pError = "cannot bind a port on 127.0.0.1";
            return false;
        }
    } else {
        if (!server.bind_to_port(ms_pszAddress, nPort)) {
            if (pError)
                *pError = "cannot bind 127.0.0.1:" + std::to_string(nPort);
            return false;
        }
        m_nPort = nPort;
    }
    m_Thread = std::thread([&server] { server.listen_after_bind(); });
    // stop() is a no-op until the loop runs, so a quick start and stop would hang: wait.
    for (int i = 0; i < 5000 && !server.is_running(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
}

void CServer::Stop() {
    m_Emulator.RequestStop();
    if (m_Thread.joinable()) {
        m_pImpl->server.stop();
        m_Thread.join();
    }
}
