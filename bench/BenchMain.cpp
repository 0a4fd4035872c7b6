// kvggl_bench: every benchmark of the project, then the figures, one line each.
#include "FigureReporter.h"

#include <iostream>
#include <unistd.h>

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    CFigureReporter clReporter(isatty(STDOUT_FILENO) != 0);
    benchmark::RunSpecifiedBenchmarks(&clReporter);
    benchmark::Shutdown();
    std::cout.flush();
    // A filter that left a figure's benchmark out gives no line for it, which is no failure.
    (void)clReporter.bPrintFigures(std::cout);
    return 0;
}
