// GglRemplitAgenda end to end: the script's call through the host, the component's request to
// the emulators (which answer a 2,500-event reply), the host's HTTP and JSON services, and the
// events built. Not a ratio: the time of the whole road, for comparison with other clients.
//   calendar_fill_e2e_2500_ms  one fill, wall clock, in milliseconds
#include "EndToEnd.h"
#include "EventsReply.h"
#include "FigureReporter.h"

#include "JsonValue.h"

#include <string>

namespace {

void BM_CalendarFillEndToEnd(benchmark::State& state) {
    CBancEndToEnd clBanc("calendar");
    if (!clBanc.bPret()) {
        state.SkipWithError(clBanc.sPourquoi().c_str());
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
    std::string sError;
    if (!clBanc.Emulateur().Faults().bAdd(clFault, &sError)) {
        state.SkipWithError("the fault is refused");
        return;
    }
    STHostOutcome stAgenda;
    if (!clBanc.Hote().bRebuild("gglAgenda",
                                R"({"type":"gglAgenda","properties":{"Identifiant":)"
                                R"("c0ntr4ct0r5chedule@group.calendar.google.com"}})",
                                stAgenda) ||
        stAgenda.bError) {
        state.SkipWithError("no calendar");
        return;
    }
    for (auto _ : state) {
        STHostOutcome stFill;
        if (!clBanc.Hote().bCall("GglRemplitAgenda", {clBanc.Connexion(), stAgenda.clValue},
                                 stFill) ||
            stFill.bError) {
            state.SkipWithError(("the fill failed: " + stFill.sMessage).c_str());
            break;
        }
    }
}

BENCHMARK(BM_CalendarFillEndToEnd)->UseRealTime()->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclareMilliseconds("calendar_fill_e2e_2500_ms", "BM_CalendarFillEndToEnd");

} // namespace
