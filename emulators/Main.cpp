// kvggl-emulators [--port N] [--seed FILE] [--auto-approve]: the local stand-ins for the web
// services. Prints one line with the address once it listens, and serves until SIGINT or
// SIGTERM.
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Emulator.h"
#include "Seed.h"
#include "Server.h"

namespace {
int s_nUsage(const char* pszError) {
    if (pszError)
        std::fprintf(stderr, "kvggl-emulators: %s\n", pszError);
    std::fprintf(stderr, "usage: kvggl-emulators [--port N] [--seed FILE] [--auto-approve]\n"
                         "  --port N        port on 127.0.0.1 (default 0: a free port)\n"
                         "  --seed FILE     the seed (default: the built-in seed.json)\n"
                         "  --auto-approve  consent pages approve at once\n");
    return pszError ? 2 : 0;
}
} // namespace

int main(int argc, char** argv) {
    int nPort = 0;
    std::string sSeedFile;
    STEmulatorOptions options;
    for (int i = 1; i < argc; ++i) {
        std::string sArg = argv[i];
        if (sArg == "--help" || sArg == "-h")
            return s_nUsage(nullptr);
        if (sArg == "--auto-approve") {
            options.bAutoApprove = true;
        } else if (sArg == "--port" || sArg == "--seed") {
            if (i + 1 >= argc)
                return s_nUsage((sArg + " needs a value").c_str());
            const char* pszValue = argv[++i];
            if (sArg == "--seed") {
                sSeedFile = pszValue;
                continue;
            }
            char* pszEnd = nullptr;
            long n = std::strtol(pszValue, &pszEnd, 10);
            if (*pszValue == '\0' || *pszEnd != '\0' || n < 0 || n > 65535)
                return s_nUsage("--port takes a number from 0 to 65535");
            nPort = static_cast<int>(n);
        } else {
            return s_nUsage(("unknown argument " + sArg).c_str());
        }
    }

    std::string sError;
    auto oSeed = sSeedFile.empty() ? CSeed::s_oParse(CSeed::s_svDefault(), &sError)
                                   : CSeed::s_oLoadFile(sSeedFile, &sError);
    if (!oSeed) {
        std::fprintf(stderr, "kvggl-emulators: %s\n", sError.c_str());
        return 1;
    }

    // The signals are taken by this thread alone, with sigwait: blocked before any server
    // thread exists, so that every thread inherits the mask.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    CEmulator emulator(std::move(*oSeed), options);
    CServer server(emulator);
    if (!server.bStart(nPort, &sError)) {
        std::fprintf(stderr, "kvggl-emulators: %s\n", sError.c_str());
        return 1;
    }
    std::printf("kvggl-emulators listening on %s:%d\n", CServer::ms_pszAddress, server.nPort());
    std::fflush(stdout);

    int nSignal = 0;
    sigwait(&signals, &nSignal);
    std::fprintf(stderr, "kvggl-emulators: %s, stopping\n",
                 nSignal == SIGINT ? "SIGINT" : "SIGTERM");
    server.Stop();
    return 0;
}
