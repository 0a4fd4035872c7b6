// CControl: the control surface under /_emulator/, on any Host: the request log, the faults,
// reset to the seed, and expiry of access tokens.
#pragma once
#include <string_view>

class CEmulator;
struct STRequest;
struct STResponse;

class CControl {
public:
    explicit CControl(CEmulator& emulator) : m_Emulator(emulator) {}
    static bool s_bIsControl(std::string_view svRawTarget);
    void Handle(const STRequest& req, STResponse& res);

private:
    CEmulator& m_Emulator;
};
