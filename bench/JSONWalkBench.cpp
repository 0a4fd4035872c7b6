// The JSON walk against the parse: a generated Calendar reply of events walked in document
// order through a visitor that descends everywhere, against simdjson parsing the same bytes.
//   json_walk_2500_vs_parse  the walk of 2,500 events over their raw parse
#include "EventsReply.h"
#include "FigureReporter.h"
#include "HostJSONService.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <simdjson.h>

#include <string>

namespace {

// Descends everywhere and reads every value, as a reader that maps the reply does.
class CTallyVisitor final : public IVisiteurJSON {
public:
    size_t nTally = 0;
    eVISITEJSON veVisiteValeur(CAny& clValue) override {
        nTally += clValue.nGetType();
        if (const wchar_t* psz = clValue.pclGetIntern()->nGetPCWSTR())
            nTally += static_cast<size_t>(*psz);
        return VISITE_DESCEND;
    }
    eVISITEJSON veVisiteObjet(IObjetJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteMembre(const CNomStandard& clName, IElementJSON&) override {
        nTally += clName.nLongueur();
        return VISITE_DESCEND;
    }
    eVISITEJSON veVisiteTableau(ITableauJSON&) override { return VISITE_DESCEND; }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_DESCEND; }
};

void BM_JSONParse(benchmark::State& state) {
    const std::string& sText = rEventsReply();
    simdjson::padded_string clPadded(sText);
    simdjson::dom::parser clParser;
    for (auto _ : state) {
        auto clResult = clParser.parse(clPadded);
        if (clResult.error())
            state.SkipWithError("the reply does not parse");
        benchmark::DoNotOptimize(clResult);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sText.size()));
}

void BM_JSONWalk(benchmark::State& state) {
    const std::string& sText = rEventsReply();
    CRef<CHostJSONService> clService = CRef<CHostJSONService>::Adopt(new CHostJSONService());
    CXError clError;
    CRef<IElementJSON> clRoot =
        CRef<IElementJSON>::Adopt(clService->vpiAnalyse(sText.data(), sText.size(), &clError));
    if (!clRoot) {
        state.SkipWithError("the reply does not parse");
        return;
    }
    for (auto _ : state) {
        CTallyVisitor clVisitor;
        clRoot->vAccepte(clVisitor);
        benchmark::DoNotOptimize(clVisitor.nTally);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sText.size()));
}

BENCHMARK(BM_JSONParse)->Arg(2500)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_JSONWalk)->Arg(2500)->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclare("json_walk_2500_vs_parse", "BM_JSONWalk/2500", "BM_JSONParse/2500");

} // namespace
