// What a tick of the clipboard monitor costs on the main thread.
#include "Screenshot.h"
#include "Suites.h"

#include "base/PngEncoding.h"
#include "capture/ClipboardMonitor.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTimerEvent>

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

    void tick() {
        auto* timer = monitor.findChild<QTimer*>();
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
    }
};

} // namespace

void addCaptureFigures() {
    benchmark::RegisterBenchmark("tick with nothing new", [](benchmark::State& state) {
        Monitor monitor;
        for (auto _ : state) {
            monitor.tick();
        }
    });
    benchmark::RegisterBenchmark("capture of 1 KB text", [](benchmark::State& state) {
        Monitor monitor;
        int copies = 0;
        for (auto _ : state) {
            monitor.pasteboard.copyText(QString::number(++copies).leftJustified(1024, u'x'));
            monitor.tick();
        }
        if (monitor.captures != copies) {
            state.SkipWithError("not everything was recorded");
        }
    });
    benchmark::RegisterBenchmark("capture of 3840x2160 PNG", [](benchmark::State& state) {
        Monitor monitor;
        int copies = 0;
        for (auto _ : state) {
            state.PauseTiming();
            monitor.pasteboard.copy({{}, {}, {}, encodePng(screenshot(++copies)), {}});
            state.ResumeTiming();
            monitor.tick();
        }
        if (monitor.captures != copies) {
            state.SkipWithError("not everything was recorded");
        }
    })->Iterations(8);
}

} // namespace corvatto::bench
