// Measures the program and its parts, and prints one table of figures and budgets. Exits with 1 when a budget
// is missed. Root becomes an ordinary user: sway refuses root.
//
//   corvatto_bench [--entries=N,N,…] [--benchmark_filter=REGEX …]
#include "DataSets.h"
#include "Figures.h"
#include "Suites.h"

#include "endtoend/OrdinaryUser.h"

#include <QApplication>

#include <cstdio>
#include <cstring>

#include <sys/stat.h>

int main(int argc, char** argv) {
    using namespace corvatto::bench;
    corvatto::test::becomeOrdinaryUser(BENCH_DATA_DIRECTORY);
    umask(S_IRWXG | S_IRWXO);                // as the program does
    qputenv("QT_QPA_PLATFORM", "offscreen"); // for the parts; the whole program gets desktops
    constexpr const char* entries = "--entries=";
    if (argc > 1 && std::strncmp(argv[1], entries, std::strlen(entries)) == 0) {
        setSizes(argv[1] + std::strlen(entries));
        argv[1] = argv[0];
        --argc;
        ++argv;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    const QApplication application(argc, argv);
    using Kind = BenchDesktop::Kind;
    for (const Kind kind : {Kind::X11, Kind::Sway}) {
        if (BenchDesktop::isInstalled(kind)) {
            addProgramFigures(kind);
            addCopyFigures(kind);
        } else {
            std::fprintf(stderr, "Without sway, nothing is measured on Wayland.\n");
        }
    }
    addPanelFigures();
    addCaptureFigures();
    addStoreFigures();
    addImageFigures();
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    return table.isWithinBudgets() ? 0 : 1;
}
