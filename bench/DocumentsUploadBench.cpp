// GglEnvoieDocument of a 64 MB file end to end (the script's call through the host, the
// component's two requests, the emulators storing the bytes) against copying the same bytes
// over a loopback socket in the same run, both by the wall clock.
//   documents_upload_64mb_vs_copy  upload / loopback copy
#include "EndToEnd.h"
#include "FigureReporter.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr size_t knTaille = 64u << 20;

const std::string& sFichier() {
    static const std::string s = [] {
        std::string sChemin = "/tmp/kvggl-bench-upload-" + std::to_string(getpid()) + ".pdf";
        std::vector<char> tab(knTaille, 'x');
        if (FILE* pf = std::fopen(sChemin.c_str(), "wb")) {
            std::fwrite(tab.data(), 1, tab.size(), pf);
            std::fclose(pf);
        }
        std::atexit([] { std::remove(sFichier().c_str()); });
        return sChemin;
    }();
    return s;
}

// The same bytes through a loopback socket to a reader that drops them.
void BM_LoopbackCopy64MB(benchmark::State& state) {
    const std::vector<char> tab(knTaille, 'x');
    for (auto _ : state) {
        int fdEcoute = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t n = sizeof a;
        if (bind(fdEcoute, reinterpret_cast<sockaddr*>(&a), n) != 0 || listen(fdEcoute, 1) != 0 ||
            getsockname(fdEcoute, reinterpret_cast<sockaddr*>(&a), &n) != 0) {
            close(fdEcoute);
            state.SkipWithError("no loopback socket");
            return;
        }
        std::thread clLecteur([fdEcoute] {
            int fd = accept(fdEcoute, nullptr, nullptr);
            std::vector<char> tabTampon(1 << 16);
            while (fd >= 0 && read(fd, tabTampon.data(), tabTampon.size()) > 0) {
            }
            if (fd >= 0)
                close(fd);
        });
        int fd = socket(AF_INET, SOCK_STREAM, 0);
        if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0) {
            for (size_t nEnvoye = 0; nEnvoye < tab.size();) {
                ssize_t nEcrit = write(fd, tab.data() + nEnvoye, tab.size() - nEnvoye);
                if (nEcrit <= 0)
                    break;
                nEnvoye += static_cast<size_t>(nEcrit);
            }
        }
        close(fd);
        clLecteur.join();
        close(fdEcoute);
    }
}

void BM_DocumentsUpload64MB(benchmark::State& state) {
    const std::string& sChemin = sFichier();
    CBancEndToEnd clBanc("documentlist");
    if (!clBanc.bPret()) {
        state.SkipWithError(clBanc.sPourquoi().c_str());
        return;
    }
    for (auto _ : state) {
        STHostOutcome stEnvoi;
        if (!clBanc.Hote().bCall("GglEnvoieDocument",
                                 {clBanc.Connexion(), CHostValue::s_String(sChemin)}, stEnvoi) ||
            stEnvoi.bError) {
            state.SkipWithError(("the upload failed: " + stEnvoi.sMessage).c_str());
            break;
        }
    }
}

BENCHMARK(BM_LoopbackCopy64MB)->UseRealTime()->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_DocumentsUpload64MB)->UseRealTime()->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclare("documents_upload_64mb_vs_copy", "BM_DocumentsUpload64MB",
                                "BM_LoopbackCopy64MB", CFigureReporter::CLOCK_WALL);

} // namespace
