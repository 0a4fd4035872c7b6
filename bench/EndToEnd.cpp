#include "EndToEnd.h"

#include "Seed.h"

#include <cstdlib>

CBancEndToEnd::CBancEndToEnd(const char* pszServiceCle) {
    std::string sError;
    auto oSeed = CSeed::s_oParse(CSeed::s_svDefault(), &sError);
    m_pclEmulateur = std::make_unique<CEmulator>(std::move(*oSeed), STEmulatorOptions{true});
    m_pclServeur = std::make_unique<CServer>(*m_pclEmulateur);
    if (!m_pclServeur->bStart(0, &sError)) {
        m_sPourquoi = "the emulators do not start";
        return;
    }
    setenv("KVGGL_ROUTE", ("*=127.0.0.1:" + std::to_string(m_pclServeur->nPort())).c_str(), 1);
    if (!m_clHote.bLoad(KVGGL_SO_PATH, sError)) {
        m_sPourquoi = "the component does not load: " + sError;
        return;
    }
    STHostOutcome st;
    const std::string sSaved = std::string(R"({"type":"gglConnexion","properties":{)") +
                               R"("ClientID":"demo-client","ClientSecret":"demo-secret",)" +
                               R"("RefreshTokens":"{\")" + pszServiceCle +
                               R"(\":\"1//demo-refresh-token\"}"}})";
    if (!m_clHote.bRebuild("gglConnexion", sSaved, st) || st.bError) {
        m_sPourquoi = "no connection";
        return;
    }
    m_clConnexion = st.clValue;
}

CBancEndToEnd::~CBancEndToEnd() {
    // The connection goes before the plugin that made it.
    m_clConnexion = CHostValue();
    if (m_clHote.bLoaded())
        m_clHote.Unload();
}
