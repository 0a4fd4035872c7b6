// The setting of the benchmarks that go through the host: the emulators in this process, every
// origin routed to them, the plugin loaded by a host, and a connection rebuilt with the seeded
// refresh token of one service. A benchmark checks bPret() and, when false, skips with sPourquoi.
#pragma once
#include "Emulator.h"
#include "Host.h"
#include "HostOutcome.h"
#include "Server.h"

#include <memory>
#include <string>

class CBancEndToEnd {
public:
    // pszServiceCle: the service's key in RefreshTokens ("calendar", "documentlist", ...).
    explicit CBancEndToEnd(const char* pszServiceCle);
    ~CBancEndToEnd();
    CBancEndToEnd(const CBancEndToEnd&) = delete;
    CBancEndToEnd& operator=(const CBancEndToEnd&) = delete;

    bool bPret() const { return m_sPourquoi.empty(); }
    const std::string& sPourquoi() const { return m_sPourquoi; }
    CEmulator& Emulateur() { return *m_pclEmulateur; }
    CHost& Hote() { return m_clHote; }
    const CHostValue& Connexion() const { return m_clConnexion; }

private:
    std::unique_ptr<CEmulator> m_pclEmulateur;
    std::unique_ptr<CServer> m_pclServeur;
    CHost m_clHote;
    CHostValue m_clConnexion;
    std::string m_sPourquoi;
};
