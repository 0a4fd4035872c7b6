// CServer: the HTTP side of the emulators, on cpp-httplib (the only file that includes it):
// listens on loopback, turns each request into an STRequest for the CEmulator, writes the
// answer back, and drops the connection when a fault says so.
#pragma once
#include <memory>
#include <string>
#include <thread>

class CEmulator;

class CServer {
public:
    explicit CServer(CEmulator& emulator);
    ~CServer(); // stops
    CServer(const CServer&) = delete;
    CServer& operator=(const CServer&) = delete;

    // Binds 127.0.0.1:nPort (0 picks a free port) and serves on a thread of its own.
    bool bStart(int nPort, std::string* pError);
    int nPort() const { return m_nPort; }
    void Stop();

    static constexpr const char* ms_pszAddress = "127.0.0.1";

private:
    struct STImpl;
    CEmulator& m_Emulator;
    std::unique_ptr<STImpl> m_pImpl;
    std::thread m_Thread;
    int m_nPort = 0;
};
