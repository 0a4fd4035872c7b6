// IService: one emulated web service. The emulator creates one per row of the service table,
// resets it to the seed, and hands it every request for its host (and path prefix).
#pragma once

struct STRequest;
struct STResponse;

class IService {
public:
    virtual ~IService() = default;
    // Back to the seeded state; called at start and on every reset, with no request running.
    virtual void vReset() = 0;
    // Called from several server threads at once: the service locks its own state.
    virtual void vHandle(const STRequest& req, STResponse& res) = 0;
};
