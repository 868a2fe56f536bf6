// What recording a copy costs on the main thread.
#include "Suites.h"

#include "capture/ClipboardMonitor.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace corvatto::bench {
namespace {

struct Monitor {
    QTemporaryDir home{QStringLiteral(BENCH_DATA_DIRECTORY "/capture-XXXXXX")}; // on a disk, not in memory
    test::FakeUserDefaults defaults;
    Preferences preferences{defaults};
    ClipboardStore store{home.path(), preferences};
    test::FakePasteboard pasteboard;
    ClipboardMonitor monitor{store, pasteboard, defaults};
    int captures = 0;

    Monitor() {
        monitor.onNewItem = [this] {
            ++captures;
        };
        monitor.start();
    }
};

} // namespace

void addCaptureFigures() {
    benchmark::RegisterBenchmark("capture of 1 KB text", [](benchmark::State& state) {
        Monitor monitor;
        int copies = 0;
        for (auto _ : state) {
            monitor.pasteboard.copyText(QString::number(++copies).leftJustified(1024, u'x'));
            monitor.monitor.checkNow();
        }
        if (monitor.captures != copies) {
            state.SkipWithError("not everything was recorded");
        }
    });
}

} // namespace corvatto::bench
