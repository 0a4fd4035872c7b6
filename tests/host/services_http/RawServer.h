// CRawServer: a loopback HTTP server for tests that keeps every request exactly as its bytes
// arrived and answers what the test scripts, including the ways a server misbehaves: silence,
// a dropped connection, a truncated body. Port 0, so tests run side by side.
#pragma once
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct STRawRequest {
    std::string sRaw;  // head and body as received
    std::string sHead; // request line and headers, up to the blank line excluded
    std::string sBody;
    std::string sMethod;
    std::string sTarget;
    int nConnection = 0; // which accepted connection carried it, from 1

    // The value of the first header of that name (any case), "" when absent.
    std::string sHeader(const std::string& sName) const;
    bool bHasHeader(const std::string& sName) const;
};

struct STRawReply {
    std::string sBytes;   // sent as they are
    bool bClose = false;  // close the connection after sending
    bool bSilent = false; // send nothing and hold the connection until the server stops
};

class CRawServer {
public:
    using FnHandler = std::function<STRawReply(const STRawRequest&)>;

    explicit CRawServer(FnHandler fnHandler);
    ~CRawServer();
    CRawServer(const CRawServer&) = delete;
    CRawServer& operator=(const CRawServer&) = delete;

    // Bytes sent to every connection as soon as it is accepted, before any request (a server
    // that does not speak the client's protocol). Set before the first connection.
    void SetGreeting(std::string sGreeting);

    int nPort() const { return m_nPort; }
    std::string sUrl(const std::string& sPath = "/") const;
    std::vector<STRawRequest> tabRequests();
    int nConnections();

    // A complete answer: status line, Content-Length, the extra header lines ("Name: value"
    // each), the body.
    static std::string s_sAnswer(int nStatus, const std::string& sReason, const std::string& sBody,
                                 const std::vector<std::string>& tabHeaders = {});

private:
    void _Accept();
    void _Serve(int nFd, int nConnection);
    // Reads into sBuffer until it holds n bytes or the peer or the server stops.
    bool _bReadUntil(int nFd, std::string& sBuffer, size_t n);
    bool _bReadHead(int nFd, std::string& sBuffer, size_t& nEndHead);

    FnHandler m_fnHandler;
    int m_nListener = -1;
    int m_nPort = 0;
    int m_tabStop[2] = {-1, -1}; // a pipe whose read end wakes every wait at stop
    std::thread m_thAccept;
    std::mutex m_mutex;
    std::vector<std::thread> m_tabThreads;
    std::vector<int> m_tabSockets;
    std::vector<STRawRequest> m_tabRequests;
    int m_nConnections = 0;
    std::string m_sGreeting;
};
