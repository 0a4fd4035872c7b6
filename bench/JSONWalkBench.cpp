// The JSON walk against the parse: a generated Calendar reply of events walked in document
// order through a visitor that descends everywhere, against simdjson parsing the same bytes.
//   json_walk_2500_vs_parse  the walk of 2,500 events over their raw parse
#include "FigureReporter.h"
#include "HostJSONService.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <simdjson.h>

#include <string>

namespace {

// An events list as the Calendar service answers it: nested objects, arrays of attendees,
// dates, links and accented texts.
std::string s_sEvents(int nEvents) {
    std::string s = R"({"kind":"calendar#events","etag":"\"p33c9l4t0ra1uo0g\"",)"
                    R"("summary":"user@example.com","updated":"2024-03-01T10:00:00.000Z",)"
                    R"("timeZone":"Europe/Paris","accessRole":"owner",)"
                    R"("defaultReminders":[{"method":"popup","minutes":10}],)"
                    R"("nextSyncToken":"CPDAlvWDx70CEPDAlvWDx70CGAU=","items":[)";
    s.reserve(static_cast<size_t>(nEvents) * 1500 + 512);
    for (int i = 0; i < nEvents; ++i) {
        std::string n = std::to_string(i);
        s += (i ? "," : "");
        s += R"({"kind":"calendar#event","etag":"\"31811617847120)" + n +
             R"(\"","id":"4eahs9ghkhrvkld72hogu9ph3e_)" + n +
             R"(","status":"confirmed","htmlLink":"https://www.google.com/calendar/event?eid=)"
             R"(NGVhaHM5Z2hraHJ2a2xkNzJob2d1OXBoM2VfMjAxNDAzMDFUMDkwMDAwWiB1c2Vy)" +
             n +
             R"(","created":"2024-01-10T09:00:00.000Z","updated":"2024-02-20T14:03:12.356Z",)"
             R"("summary":"R\u00e9union d'\u00e9quipe n\u00b0)" +
             n +
             R"(","description":"Ordre du jour : point d'avancement, budget, questions",)"
             R"("location":"Salle 3, 12 rue de la Paix, Paris",)"
             R"("creator":{"email":"user@example.com","displayName":"User Name","self":true},)"
             R"("organizer":{"email":"user@example.com","displayName":"User Name",)"
             R"("self":true},"start":{"dateTime":"2024-03-01T10:00:00+01:00",)"
             R"("timeZone":"Europe/Paris"},"end":{"dateTime":"2024-03-01T11:00:00+01:00",)"
             R"("timeZone":"Europe/Paris"},"iCalUID":"4eahs9ghkhrvkld72hogu9ph3e_)" +
             n +
             R"(@google.com","sequence":2,"attendees":[{"email":"a@example.com",)"
             R"("responseStatus":"accepted"},{"email":"b@example.com","displayName":"B",)"
             R"("optional":true,"responseStatus":"needsAction"}],)"
             R"("reminders":{"useDefault":true},"eventType":"default","duration":1.5})";
    }
    s += "]}";
    return s;
}

const std::string& s_rEvents() {
    static const std::string s_sText = s_sEvents(2500);
    return s_sText;
}

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
    const std::string& sText = s_rEvents();
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
    const std::string& sText = s_rEvents();
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
