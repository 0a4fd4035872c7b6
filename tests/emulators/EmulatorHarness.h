// CEmulatorHarness: the emulators started in-process on a free loopback port, with a probe
// pointed at them; stopped when the harness goes.
#pragma once
#include <memory>
#include <string>
#include <string_view>

#include "Emulator.h"
#include "HttpProbe.h"
#include "Server.h"

class CEmulatorHarness {
public:
    explicit CEmulatorHarness(bool bAutoApprove = true, std::string_view svSeed = {});
    ~CEmulatorHarness();

    CEmulator& Emulator() { return *m_pEmulator; }
    const CHttpProbe& Probe() const { return m_Probe; }
    int nPort() const { return m_Probe.nPort(); }

private:
    std::unique_ptr<CEmulator> m_pEmulator;
    std::unique_ptr<CServer> m_pServer;
    CHttpProbe m_Probe{0};
};
