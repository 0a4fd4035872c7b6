#include "FigureReporter.h"

#include <algorithm>
#include <cstdio>

std::vector<CFigureReporter::STFigure>& CFigureReporter::s_rFigures() {
    static std::vector<STFigure> s_tabFigures;
    return s_tabFigures;
}

bool CFigureReporter::s_bDeclare(const char* pszFigure, const char* pszNumerator,
                                 const char* pszDenominator) {
    s_rFigures().push_back({pszFigure, pszNumerator, pszDenominator});
    return true;
}

void CFigureReporter::ReportRuns(const std::vector<Run>& tabRuns) {
    ConsoleReporter::ReportRuns(tabRuns);
    // The best of the repetitions, in processor time: the one least disturbed by the rest of
    // the machine, which on a shared builder may well be busy.
    for (const Run& stRun : tabRuns) {
        if (stRun.run_type != Run::RT_Iteration || stRun.iterations <= 0 || stRun.error_occurred)
            continue;
        double rSeconds = stRun.cpu_accumulated_time / static_cast<double>(stRun.iterations);
        // The name as declared, function and arguments, whatever the repetitions.
        std::string sName = stRun.run_name.function_name;
        if (!stRun.run_name.args.empty())
            sName += "/" + stRun.run_name.args;
        auto it = m_mapBestSeconds.find(sName);
        if (it == m_mapBestSeconds.end())
            m_mapBestSeconds.emplace(sName, rSeconds);
        else
            it->second = std::min(it->second, rSeconds);
    }
}

bool CFigureReporter::bPrintFigures(std::ostream& clOut) const {
    bool bAll = true;
    for (const STFigure& stFigure : s_rFigures()) {
        auto itNumerator = m_mapBestSeconds.find(stFigure.sNumerator);
        auto itDenominator = m_mapBestSeconds.find(stFigure.sDenominator);
        if (itNumerator == m_mapBestSeconds.end() || itDenominator == m_mapBestSeconds.end() ||
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
