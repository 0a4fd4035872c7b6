#include "FigureReporter.h"

#include <algorithm>
#include <cstdio>

std::vector<CFigureReporter::STFigure>& CFigureReporter::s_rFigures() {
    static std::vector<STFigure> s_tabFigures;
    return s_tabFigures;
}

bool CFigureReporter::s_bDeclare(const char* pszFigure, const char* pszNumerator,
                                 const char* pszDenominator, eClock eWhich) {
    s_rFigures().push_back({pszFigure, pszNumerator, pszDenominator, eWhich, "ratio", false});
    return true;
}

bool CFigureReporter::s_bDeclareCounter(const char* pszFigure, const char* pszBenchmark,
                                        const char* pszCounter, const char* pszUnit) {
    s_rFigures().push_back({pszFigure, pszBenchmark, pszCounter, CLOCK_PROCESSOR, pszUnit, true});
    return true;
}

bool CFigureReporter::s_bDeclareMilliseconds(const char* pszFigure, const char* pszBenchmark,
                                             eClock eWhich) {
    s_rFigures().push_back({pszFigure, pszBenchmark, "", eWhich});
    return true;
}

void CFigureReporter::ReportRuns(const std::vector<Run>& tabRuns) {
    ConsoleReporter::ReportRuns(tabRuns);
    // The best of the repetitions: the one least disturbed by the rest of the machine, which
    // on a shared builder may well be busy.
    for (const Run& stRun : tabRuns) {
        if (stRun.run_type != Run::RT_Iteration || stRun.iterations <= 0 || stRun.error_occurred)
            continue;
        // The name as declared, function and arguments, whatever the repetitions.
        std::string sName = stRun.run_name.function_name;
        if (!stRun.run_name.args.empty())
            sName += "/" + stRun.run_name.args;
        for (const auto& [sCounter, clCounter] : stRun.counters) {
            auto [itCounter, bNew] = m_mapCounters.emplace(sName + "/" + sCounter, clCounter.value);
            if (!bNew)
                itCounter->second = std::min(itCounter->second, static_cast<double>(clCounter.value));
        }
        const double tabSeconds[2] = {stRun.cpu_accumulated_time, stRun.real_accumulated_time};
        for (int nClock = CLOCK_PROCESSOR; nClock <= CLOCK_WALL; ++nClock) {
            double rSeconds = tabSeconds[nClock] / static_cast<double>(stRun.iterations);
            auto [it, bNew] = m_mapBestSeconds[nClock].emplace(sName, rSeconds);
            if (!bNew)
                it->second = std::min(it->second, rSeconds);
        }
    }
}

bool CFigureReporter::bPrintFigures(std::ostream& clOut) const {
    bool bAll = true;
    for (const STFigure& stFigure : s_rFigures()) {
        if (stFigure.bCounter) {
            auto it = m_mapCounters.find(stFigure.sNumerator + "/" + stFigure.sDenominator);
            if (it == m_mapCounters.end()) {
                bAll = false;
                continue;
            }
            char szValue[32];
            std::snprintf(szValue, sizeof szValue, "%.2f", it->second);
            clOut << "figure " << stFigure.sName << ' ' << szValue << ' ' << stFigure.sUnit << '\n';
            continue;
        }
        const std::map<std::string, double>& mapBest = m_mapBestSeconds[stFigure.eWhich];
        auto itNumerator = mapBest.find(stFigure.sNumerator);
        if (stFigure.sDenominator.empty() && itNumerator != mapBest.end()) {
            char szValue[32];
            std::snprintf(szValue, sizeof szValue, "%.1f", itNumerator->second * 1000);
            clOut << "figure " << stFigure.sName << ' ' << szValue << " ms\n";
            continue;
        }
        auto itDenominator = mapBest.find(stFigure.sDenominator);
        if (itNumerator == mapBest.end() || itDenominator == mapBest.end() ||
            itDenominator->second <= 0) {
            bAll = false;
            continue;
        }
        char szValue[32];
        std::snprintf(szValue, sizeof szValue, "%.2f", itNumerator->second / itDenominator->second);
        clOut << "figure " << stFigure.sName << ' ' << szValue << " ratio\n";
    }
    return bAll;
}
