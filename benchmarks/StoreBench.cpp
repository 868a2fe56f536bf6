// The statements that a user waits for, on histories of growing size.
#include "DataSets.h"
#include "Stall.h"
#include "Suites.h"

#include "settings/SettingsKeys.h"
#include "store/ClipboardStore.h"
#include "support/FakeUserDefaults.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

namespace corvatto::bench {
namespace {

void fetch(benchmark::State& state, const std::optional<QString>& query, bool findsMany) {
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    ClipboardStore store(dataSet(state.range(0)), preferences);
    // Another limit each time, because the same fetch again is answered from memory.
    int limit = 100;
    for (auto _ : state) {
        limit = 299 - limit;
        if (store.fetchRecent(query, limit).size() != (findsMany ? limit : 0)) {
            state.SkipWithError("not the expected number of results");
            break;
        }
    }
}

void add(const char* name, const std::optional<QString>& query, bool findsMany) {
    forEachSize(
        benchmark::RegisterBenchmark(name, [=](benchmark::State& state) { fetch(state, query, findsMany); }));
}

// Each entry begins with its number.
void typeAnotherLetter(benchmark::State& state) {
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    ClipboardStore store(dataSet(state.range(0)), preferences);
    const QString word = QString::number(state.range(0) - 1);
    if (store.fetchRecent(word, 100).size() != 1) {
        state.SkipWithError("not the expected number of results");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(store.fetchRecent(word + u' ', 100));
    }
}

// What the panel does at a key, in a program that does nothing else.
void searchBesideTheLoop(benchmark::State& state, bool isCold) {
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    const QString directory = dataSet(state.range(0));
    ClipboardStore store(directory, preferences);
    int limit = 100;
    for (auto _ : state) {
        if (isCold) {
            dropFromCache(databaseIn(directory));
        }
        limit = 299 - limit;
        QElapsedTimer timer;
        timer.start();
        bool isDone = false;
        isDone =
            store.search(QStringLiteral("zyzzyva"), limit, [&](const auto&) { isDone = true; }).isComplete;
        Stall().timeUntil([&] { return isDone; });
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
}

void lowerLimit(benchmark::State& state) {
    const OwnHistory history(dataSet(state.range(0)));
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    ClipboardStore store(history.directory(), preferences);
    defaults.setInteger(SettingsKeys::maxItemCount, 100);
    for (auto _ : state) {
        Stall stall;
        stall.time([&] { store.insertOrUpdate(QStringLiteral("new"), {}); });
        constexpr int slices = 300;
        for (int slice = 0; slice < slices; ++slice) {
            stall.time([] { QCoreApplication::processEvents(); });
        }
        state.SetIterationTime(stall.seconds());
    }
}

void clear(benchmark::State& state) {
    const OwnHistory history(dataSet(state.range(0)));
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    ClipboardStore store(history.directory(), preferences);
    for (auto _ : state) {
        Stall stall;
        stall.time([&] { store.deleteAll(); });
        bool isOver = false;
        store.insertOrUpdate(QStringLiteral("new"), {}, [&] { isOver = true; });
        stall.timeUntil([&] { return isOver; });
        state.SetIterationTime(stall.seconds());
    }
    if (QFile(databaseIn(history.directory())).size() > 200'000) {
        state.SkipWithError("the file stays large");
    }
}

} // namespace

void addStoreFigures() {
    add("list statement", std::nullopt, true);
    add("search statement, nothing matches", QStringLiteral("zyzzyva"), false);
    add("search statement, Chinese", QStringLiteral("剪贴历史"), false);
    add("search statement, many match", QStringLiteral("the"), true);
    forEachSize(benchmark::RegisterBenchmark("search, another letter", typeAnotherLetter));
    forEachSize(benchmark::RegisterBenchmark("a limit takes hold: stall", lowerLimit)
                    ->Iterations(1)
                    ->UseManualTime());
    const auto addSearch = [](const char* name, bool isCold) {
        forEachSize(benchmark::RegisterBenchmark(
                        name, [=](benchmark::State& state) { searchBesideTheLoop(state, isCold); })
                        ->Iterations(1)
                        ->Repetitions(5)
                        ->UseManualTime());
    };
    addSearch("search, nothing matches: result", false);
    addSearch("the same, cold cache: result", true);
    forEachSize(benchmark::RegisterBenchmark("clearing: stall", clear)->Iterations(1)->UseManualTime());
}

} // namespace corvatto::bench
