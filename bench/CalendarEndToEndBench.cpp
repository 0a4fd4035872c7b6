// GglRemplitAgenda end to end: the script's call through the host, the component's request to
// the emulators (which answer a 2,500-event reply), the host's HTTP and JSON services, and the
// events built. Not a ratio: the time of the whole road, for comparison with other clients.
//   calendar_fill_e2e_2500_ms  one fill, wall clock, in milliseconds
#include "EventsReply.h"
#include "FigureReporter.h"

#include "Emulator.h"
#include "Host.h"
#include "HostOutcome.h"
#include "JsonValue.h"
#include "Seed.h"
#include "Server.h"

#include <cstdlib>
#include <string>

namespace {

void BM_CalendarFillEndToEnd(benchmark::State& state) {
    std::string sError;
    auto oSeed = CSeed::s_oParse(CSeed::s_svDefault(), &sError);
    CEmulator clEmulator(std::move(*oSeed), STEmulatorOptions{true});
    CServer clServer(clEmulator);
    if (!clServer.bStart(0, &sError)) {
        state.SkipWithError("the emulators do not start");
        return;
    }
    // Every event list answered with the large reply, however often it is asked.
    CJsonValue clFault = CJsonValue::s_Object();
    clFault.Set("host", CJsonValue::s_String("www.googleapis.com"));
    clFault.Set("method", CJsonValue::s_String("GET"));
    clFault.Set("path", CJsonValue::s_String("/calendar/v3/calendars/"));
    clFault.Set("status", CJsonValue::s_Int(200));
    clFault.Set("count", CJsonValue::s_Int(1000000));
    clFault.Set("body", CJsonValue::s_String(rEventsReply()));
    clFault.Set("headers", CJsonValue::s_Object().Set(
                               "Content-Type", CJsonValue::s_String("application/json; charset=UTF-8")));
    if (!clEmulator.Faults().bAdd(clFault, &sError)) {
        state.SkipWithError("the fault is refused");
        return;
    }
    setenv("KVGGL_ROUTE", ("*=127.0.0.1:" + std::to_string(clServer.nPort())).c_str(), 1);

    CHost clHost;
    if (!clHost.bLoad(KVGGL_SO_PATH, sError)) {
        state.SkipWithError(("the component does not load: " + sError).c_str());
        return;
    }
    {
        STHostOutcome st;
        const std::string sSaved = R"({"type":"gglConnexion","properties":{"ClientID":"demo-client",)"
                                   R"("ClientSecret":"demo-secret","RefreshTokens":)"
                                   R"("{\"calendar\":\"1//demo-refresh-token\"}"}})";
        if (!clHost.bRebuild("gglConnexion", sSaved, st) || st.bError) {
            state.SkipWithError("no connection");
            return;
        }
        const CHostValue clConnexion = st.clValue;
        STHostOutcome stAgenda;
        if (!clHost.bRebuild("gglAgenda",
                             R"({"type":"gglAgenda","properties":{"Identifiant":)"
                             R"("c0ntr4ct0r5chedule@group.calendar.google.com"}})",
                             stAgenda) ||
            stAgenda.bError) {
            state.SkipWithError("no calendar");
            return;
        }
        for (auto _ : state) {
            STHostOutcome stFill;
            if (!clHost.bCall("GglRemplitAgenda", {clConnexion, stAgenda.clValue}, stFill) ||
                stFill.bError) {
                state.SkipWithError(("the fill failed: " + stFill.sMessage).c_str());
                break;
            }
        }
    }
    clHost.Unload();
}

BENCHMARK(BM_CalendarFillEndToEnd)->UseRealTime()->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclareMilliseconds("calendar_fill_e2e_2500_ms", "BM_CalendarFillEndToEnd");

} // namespace
