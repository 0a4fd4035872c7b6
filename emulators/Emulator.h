// CEmulator: the services behind one listening port, their shared state (seed, tokens), the
// request log, the faults and the control surface. It knows nothing of the HTTP library: the
// server hands it each request as an STRequest.
#pragma once
#include <condition_variable>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Faults.h"
#include "RequestLog.h"
#include "Seed.h"
#include "TokenStore.h"

class CControl;
class IService;
struct STRequest;
struct STResponse;
struct STServiceRow;

struct STEmulatorOptions {
    bool bAutoApprove = false; // consent pages approve at once, for unattended runs
};

class CEmulator {
public:
    enum eOutcome { eAnswer, eDrop };

    CEmulator(CSeed seed, STEmulatorOptions options);
    ~CEmulator();
    CEmulator(const CEmulator&) = delete;
    CEmulator& operator=(const CEmulator&) = delete;

    // One request: sHostHeader and sRawTarget as received; req holds method, headers and
    // body, and is completed here (host, prefix, target, path, query). eDrop asks the server
    // to close the connection without an answer.
    eOutcome eServe(std::string_view svHostHeader, std::string_view svRawTarget, STRequest& req,
                    STResponse& res);

    void Reset();       // the seeded state again, log and faults cleared
    void RequestStop(); // wakes every delayed request, for a prompt shutdown
    // Sleeps nMs unless a stop comes first; false when stopping.
    bool bWait(long long nMs);

    const CSeed& Seed() const { return m_Seed; }
    CTokenStore& Tokens() { return m_Tokens; }
    CRequestLog& Log() { return m_Log; }
    CFaults& Faults() { return m_Faults; }
    const STEmulatorOptions& Options() const { return m_Options; }
    std::vector<std::string> tabHosts() const;

    // "www.Example.com:443" -> "www.example.com"; "[::1]:80" -> "[::1]".
    static std::string s_sHostName(std::string_view svHostHeader);

private:
    struct STMounted {
        const STServiceRow* pRow;
        std::unique_ptr<IService> pService;
    };
    bool bIsServiceHost(std::string_view svHost) const;
    void Resolve(std::string_view svHostHeader, std::string_view svRawTarget, STRequest& req) const;
    IService* pFindService(const STRequest& req) const;
    void Dispatch(const STRequest& req, STResponse& res);

    CSeed m_Seed;
    STEmulatorOptions m_Options;
    CTokenStore m_Tokens;
    CRequestLog m_Log;
    CFaults m_Faults;
    std::vector<STMounted> m_tabServices;
    std::unique_ptr<CControl> m_pControl;
    std::shared_mutex m_mtxReset; // shared by requests, exclusive for a reset

    std::mutex m_mtxStop;
    std::condition_variable m_cvStop;
    bool m_bStopping = false;
};
