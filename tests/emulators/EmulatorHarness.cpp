#include "EmulatorHarness.h"

#include <stdexcept>

#include "Seed.h"

CEmulatorHarness::CEmulatorHarness(bool bAutoApprove, std::string_view svSeed) {
    std::string sError;
    auto oSeed = CSeed::s_oParse(svSeed.empty() ? CSeed::s_svDefault() : svSeed, &sError);
    if (!oSeed)
        throw std::runtime_error("bad test seed: " + sError);
    m_pEmulator = std::make_unique<CEmulator>(std::move(*oSeed), STEmulatorOptions{bAutoApprove});
    m_pServer = std::make_unique<CServer>(*m_pEmulator);
    if (!m_pServer->bStart(0, &sError))
        throw std::runtime_error(sError);
    m_Probe = CHttpProbe(m_pServer->nPort());
}

CEmulatorHarness::~CEmulatorHarness() {
    m_pServer->Stop();
}
