// A calendar's fill against the parse: a 2,500-event reply turned into events (the host's parse
// and the component's walk that builds each event with its dates, author, place and
// participants), against the host's parse of the same bytes alone.
//   calendar_fill_2500_vs_parse  the fill over the parse
#include "EventsReply.h"
#include "FigureReporter.h"
#include "HostJSONService.h"

#include "calendar/GoogleEvenement.h"
#include "connection/VisitJSONInstancieTableau.h"

#include "Ref.h"
#include "XError.h"

#include <string>

namespace {

CRef<IElementJSON> s_clParse(IContenuJSON& clService, const std::string& sText) {
    CXError clError;
    return CRef<IElementJSON>::Adopt(clService.vpiAnalyse(sText.data(), sText.size(), &clError));
}

void BM_CalendarParse(benchmark::State& state) {
    const std::string& sText = rEventsReply();
    auto clService = CRef<CHostJSONService>::Adopt(new CHostJSONService());
    for (auto _ : state) {
        CRef<IElementJSON> clRoot = s_clParse(*clService, sText);
        if (!clRoot) state.SkipWithError("the reply does not parse");
        benchmark::DoNotOptimize(clRoot.pGet());
        state.PauseTiming();
        clRoot = CRef<IElementJSON>();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sText.size()));
}

void BM_CalendarFill(benchmark::State& state) {
    const std::string& sText = rEventsReply();
    auto clService = CRef<CHostJSONService>::Adopt(new CHostJSONService());
    for (auto _ : state) {
        CRef<IElementJSON> clRoot = s_clParse(*clService, sText);
        if (!clRoot) {
            state.SkipWithError("the reply does not parse");
            break;
        }
        CXError clError;
        auto* pclVisitor = new CVisitJSONInstancieTableau<CGoogleEvenement>(&clError, nullptr);
        clRoot->vAccepte(*pclVisitor);
        if (pclVisitor->tabGet().nGetNbElement() != 2500) state.SkipWithError("events lost");
        benchmark::DoNotOptimize(pclVisitor->tabGet().nGetNbElement());
        // The events outlive the fill, in the calendar: their end is no part of it, nor is
        // the tree's, which the parse alone does not pay either.
        state.PauseTiming();
        delete pclVisitor;
        clRoot = CRef<IElementJSON>();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sText.size()));
}

BENCHMARK(BM_CalendarParse)->Arg(2500)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_CalendarFill)->Arg(2500)->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures = CFigureReporter::s_bDeclare(
    "calendar_fill_2500_vs_parse", "BM_CalendarFill/2500", "BM_CalendarParse/2500");

} // namespace
