// What a tick of the clipboard monitor costs on the main thread.
#include "Screenshot.h"
#include "Stall.h"
#include "Suites.h"

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

using Content = test::FakePasteboard::Content;

// As the pasteboard has it once it counts as a change: decoded and encoded.
Content copyOf(QImage pixels) {
    Image image(std::move(pixels));
    image.pngData();
    return {{}, image, {}, {}, {}};
}

// From the tick that finds a copy until its entry is in the list.
void addStall(const char* name, Content (*copy)(int)) {
    benchmark::RegisterBenchmark(
        name,
        [copy](benchmark::State& state) {
            Monitor monitor;
            int copies = 0;
            for (auto _ : state) {
                monitor.pasteboard.copy(copy(++copies));
                Stall stall;
                stall.time([&] { monitor.tick(); });
                stall.timeUntil([&] { return monitor.captures == copies; });
                stall.time([&] { benchmark::DoNotOptimize(monitor.store.fetchRecent(std::nullopt, 100)); });
                state.SetIterationTime(stall.seconds());
            }
        })
        ->Iterations(1)
        ->Repetitions(5)
        ->UseManualTime();
}

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
    addStall("3840x2160 like a photograph: stall", [](int number) { return copyOf(photograph(number)); });
    addStall("3840x2160 of desktop text: stall", [](int number) { return copyOf(screenshot(number)); });
    addStall("54 MB of text: stall", [](int number) {
        return Content{{}, {}, {}, {}, QString::number(number).leftJustified(54'000'000, u'x')};
    });
}

} // namespace corvatto::bench
