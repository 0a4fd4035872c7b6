// Memory at peak for what is received, each case in a child process of its own so that peaks do
// not mix, read from the kernel's high-water mark of its resident set (as /usr/bin/time -v
// reports it), over the mark just before the exchange:
//   http_200mb_peak_ratio  a 200 MB answer through the host's HTTP service, over its size
//   gzip_bomb_peak_mb      a gzip answer that inflates to 1 GiB under a 64 MB body cap: the
//                          megabytes held at peak before the service stops it (goal: within
//                          twice the cap)
// The server is a thread of the child that writes the bytes as it makes them.
#include "HTTPClient.h"
#include "Ref.h"
#include "Utf8.h"

#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr size_t knAnswer = size_t{200} << 20;
constexpr size_t knBomb = size_t{1} << 30;
constexpr size_t knCap = size_t{64} << 20;

long s_nPeakKb() {
    rusage st{};
    getrusage(RUSAGE_SELF, &st);
    return st.ru_maxrss;
}

bool s_bSend(int nFd, const void* p, size_t n) {
    auto* pc = static_cast<const char*>(p);
    while (n > 0) {
        ssize_t k = send(nFd, pc, n, MSG_NOSIGNAL);
        if (k <= 0)
            return false;
        pc += k;
        n -= static_cast<size_t>(k);
    }
    return true;
}

// The answer: plain bytes, or zeros deflated as they go.
void s_Serve(int nFd, bool bBomb) {
    char aby[8192];
    (void)!recv(nFd, aby, sizeof aby, 0);
    std::vector<char> tabChunk(1 << 20, 'x');
    if (!bBomb) {
        std::string sHead = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(knAnswer) +
                            "\r\nConnection: close\r\n\r\n";
        bool bOk = s_bSend(nFd, sHead.data(), sHead.size());
        for (size_t n = 0; bOk && n < knAnswer; n += tabChunk.size())
            bOk = s_bSend(nFd, tabChunk.data(), tabChunk.size());
        return;
    }
    const char szHead[] =
        "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nConnection: close\r\n\r\n";
    if (!s_bSend(nFd, szHead, sizeof szHead - 1))
        return;
    z_stream st{};
    deflateInit2(&st, 1, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY); // gzip framing
    std::fill(tabChunk.begin(), tabChunk.end(), '\0');
    std::vector<unsigned char> tabOut(1 << 16);
    bool bOk = true;
    for (size_t n = 0; bOk && n <= knBomb; n += tabChunk.size()) {
        bool bLast = n == knBomb;
        st.next_in = reinterpret_cast<Bytef*>(tabChunk.data());
        st.avail_in = bLast ? 0 : static_cast<uInt>(tabChunk.size());
        do {
            st.next_out = tabOut.data();
            st.avail_out = static_cast<uInt>(tabOut.size());
            deflate(&st, bLast ? Z_FINISH : Z_NO_FLUSH);
            bOk = s_bSend(nFd, tabOut.data(), tabOut.size() - st.avail_out);
        } while (bOk && st.avail_out == 0);
    }
    deflateEnd(&st);
}

// In the child: the exchange, and the kilobytes held at peak beyond the mark before it.
long s_nRun(bool bBomb) {
    int nListen = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in stAddress{};
    stAddress.sin_family = AF_INET;
    stAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t nLength = sizeof stAddress;
    if (bind(nListen, reinterpret_cast<sockaddr*>(&stAddress), nLength) != 0 ||
        listen(nListen, 1) != 0 ||
        getsockname(nListen, reinterpret_cast<sockaddr*>(&stAddress), &nLength) != 0)
        return -1;
    std::thread clServer([&] {
        int nFd = accept(nListen, nullptr, nullptr);
        if (nFd >= 0) {
            s_Serve(nFd, bBomb);
            close(nFd);
        }
    });
    STHostOptions stOptions;
    stOptions.eProgress = HOSTPROGRESS_NEVER;
    stOptions.nMaxBody = bBomb ? knCap : STHostOptions::knMaxBody;
    auto cl = CRef<CHTTPClient>::Adopt(new CHTTPClient(stOptions));
    CParametresHTTPRequete clRequest;
    std::string sUrl = "http://127.0.0.1:" + std::to_string(ntohs(stAddress.sin_port)) + "/";
    clRequest.m_sURL = CXYString<wchar_t>(KVUtf8::VersWide(sUrl));
    clRequest.m_nMethode = METHODE_HTTP_GET;
    clRequest.AdopteEntetes(cl->vpiCreeEntetes());
    long nBefore = s_nPeakKb();
    int bAnswer = cl->vbExecute(clRequest, 0);
    long nPeak = s_nPeakKb();
    clServer.join();
    close(nListen);
    if (bBomb == (bAnswer != 0)) // the answer must come whole; the bomb must be stopped
        return -1;
    return nPeak - nBefore;
}

// The case in a child of its own; its result through a pipe.
long s_nInChild(bool bBomb) {
    int tabPipe[2];
    if (pipe(tabPipe) != 0)
        return -1;
    pid_t pid = fork();
    if (pid == 0) {
        long n = s_nRun(bBomb);
        (void)!write(tabPipe[1], &n, sizeof n);
        _exit(0);
    }
    close(tabPipe[1]);
    long n = -1;
    if (read(tabPipe[0], &n, sizeof n) != sizeof n)
        n = -1;
    close(tabPipe[0]);
    int nStatus = 0;
    waitpid(pid, &nStatus, 0);
    return n;
}

} // namespace

int main() {
    long nAnswerKb = s_nInChild(false);
    long nBombKb = s_nInChild(true);
    if (nAnswerKb < 0 || nBombKb < 0) {
        std::fprintf(stderr, "kvggl_memory_peak: a case did not run as it should\n");
        return 1;
    }
    std::printf("figure http_200mb_peak_ratio %.2f ratio\n",
                static_cast<double>(nAnswerKb) * 1024.0 / static_cast<double>(knAnswer));
    std::printf("figure gzip_bomb_peak_mb %.0f MB\n", static_cast<double>(nBombKb) / 1024.0);
    return 0;
}
