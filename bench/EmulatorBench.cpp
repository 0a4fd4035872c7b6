// A request through the emulators against the least an HTTP exchange can cost on loopback, both
// on one kept-alive connection and through the same client, so that the ratio is what the
// emulators' server and services add.
//   emulator_request_vs_loopback  a Google API request answered by the emulators over a fixed
//                                 answer written back by a bare socket server
#include "FigureReporter.h"

#include "Emulator.h"
#include "Seed.h"
#include "Server.h"

#include <httplib.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <thread>

namespace {

// Serves one connection at a time: reads a request head, writes a fixed answer in one piece.
class CLoopbackServer {
public:
    CLoopbackServer() {
        m_fdListen = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in stAddress{};
        stAddress.sin_family = AF_INET;
        stAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t nLength = sizeof stAddress;
        if (bind(m_fdListen, reinterpret_cast<sockaddr*>(&stAddress), nLength) != 0 ||
            listen(m_fdListen, 4) != 0 ||
            getsockname(m_fdListen, reinterpret_cast<sockaddr*>(&stAddress), &nLength) != 0)
            return;
        m_nPort = ntohs(stAddress.sin_port);
        m_Thread = std::thread([this] { Serve(); });
    }
    ~CLoopbackServer() {
        shutdown(m_fdListen, SHUT_RDWR);
        close(m_fdListen);
        if (m_Thread.joinable())
            m_Thread.join();
    }
    int nPort() const { return m_nPort; }

private:
    void Serve() {
        static const char s_szAnswer[] = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
                                         "Content-Length: 2\r\n\r\n{}";
        for (;;) {
            int fd = accept(m_fdListen, nullptr, nullptr);
            if (fd < 0)
                return;
            int nOn = 1;
            setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
            std::string sPending;
            char szBuffer[4096];
            for (;;) {
                ssize_t n = read(fd, szBuffer, sizeof szBuffer);
                if (n <= 0)
                    break;
                sPending.append(szBuffer, static_cast<size_t>(n));
                size_t nEnd;
                while ((nEnd = sPending.find("\r\n\r\n")) != std::string::npos) {
                    sPending.erase(0, nEnd + 4);
                    if (write(fd, s_szAnswer, sizeof s_szAnswer - 1) < 0)
                        break;
                }
            }
            close(fd);
        }
    }

    int m_fdListen = -1;
    int m_nPort = 0;
    std::thread m_Thread;
};

void s_Exchange(benchmark::State& state, int nPort, const char* pszHost, const char* pszPath) {
    httplib::Client clClient(CServer::ms_pszAddress, nPort);
    clClient.set_keep_alive(true);
    clClient.set_tcp_nodelay(true);
    httplib::Headers tabHeaders = {{"Host", pszHost}};
    for (auto _ : state) {
        httplib::Result clResult = clClient.Get(pszPath, tabHeaders);
        if (!clResult) {
            state.SkipWithError("no answer");
            return;
        }
        benchmark::DoNotOptimize(clResult->body.data());
    }
}

void BM_LoopbackRequest(benchmark::State& state) {
    CLoopbackServer clServer;
    if (!clServer.nPort()) {
        state.SkipWithError("no loopback socket");
        return;
    }
    s_Exchange(state, clServer.nPort(), "127.0.0.1", "/");
}

void BM_EmulatorRequest(benchmark::State& state) {
    std::string sError;
    auto oSeed = CSeed::s_oParse(CSeed::s_svDefault(), &sError);
    if (!oSeed) {
        state.SkipWithError("the default seed does not parse");
        return;
    }
    CEmulator clEmulator(std::move(*oSeed), STEmulatorOptions{true});
    CServer clServer(clEmulator);
    if (!clServer.bStart(0, &sError)) {
        state.SkipWithError("the emulators do not start");
        return;
    }
    // Google's answer for a path no API claims: the service table, the log and a JSON body.
    s_Exchange(state, clServer.nPort(), "www.googleapis.com", "/nothing/here");
}

BENCHMARK(BM_LoopbackRequest)->UseRealTime()->Unit(benchmark::kMicrosecond)->Repetitions(3);
BENCHMARK(BM_EmulatorRequest)->UseRealTime()->Unit(benchmark::kMicrosecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclare("emulator_request_vs_loopback", "BM_EmulatorRequest",
                                "BM_LoopbackRequest", CFigureReporter::CLOCK_WALL);

} // namespace
