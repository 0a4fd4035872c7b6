// CFigureReporter: the console report of Google Benchmark, which also keeps each benchmark's
// best time per iteration (processor and wall clock), so that the figures (a benchmark's time
// over another's from the same run) can be printed at the end as "figure NAME VALUE UNIT" lines.
#pragma once
#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

class CFigureReporter final : public benchmark::ConsoleReporter {
public:
    // Colours only for a terminal: the report is often kept in a file.
    explicit CFigureReporter(bool bColour) : ConsoleReporter(bColour ? OO_Defaults : OO_Tabular) {}

    // Declares a figure; the benchmark files call it before main runs. Processor time by
    // default; wall clock for work that waits (on the network, another thread).
    enum eClock { CLOCK_PROCESSOR, CLOCK_WALL };
    static bool s_bDeclare(const char* pszFigure, const char* pszNumerator,
                           const char* pszDenominator, eClock eWhich = CLOCK_PROCESSOR);

    // Declares a figure that is a counter of one benchmark, printed with its unit.
    static bool s_bDeclareCounter(const char* pszFigure, const char* pszBenchmark,
                                  const char* pszCounter, const char* pszUnit);
    // A figure that is no ratio: one benchmark's best time in milliseconds, for what has no
    // baseline of its own to be measured against.
    static bool s_bDeclareMilliseconds(const char* pszFigure, const char* pszBenchmark,
                                       eClock eWhich = CLOCK_WALL);

    void ReportRuns(const std::vector<Run>& tabRuns) override;
    // One line per declared figure whose two benchmarks ran; false when one did not.
    bool bPrintFigures(std::ostream& clOut) const;

private:
    struct STFigure {
        std::string sName, sNumerator, sDenominator; // no denominator: milliseconds
        eClock eWhich;
        std::string sUnit = "ratio"; // a counter figure: sDenominator names the counter
        bool bCounter = false;
    };
    static std::vector<STFigure>& s_rFigures();

    std::map<std::string, double> m_mapBestSeconds[2]; // by clock, then benchmark name
    std::map<std::string, double> m_mapCounters;       // by "benchmark/counter", the lowest
};
