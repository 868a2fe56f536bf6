// The statements that a user waits for, on histories of growing size.
#include "DataSets.h"
#include "Stall.h"
#include "Suites.h"

#include "settings/SettingsKeys.h"
#include "store/ClipboardStore.h"
#include "support/FakeUserDefaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

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

// A copy of a history, to be changed.
struct OwnHistory {
    QTemporaryDir home{QStringLiteral(BENCH_DATA_DIRECTORY "/history-XXXXXX")};

    explicit OwnHistory(long entries) {
        const auto database = QStringLiteral("/Corvatto/corvatto.sqlite3");
        QDir(home.path()).mkdir(QStringLiteral("Corvatto"));
        QFile::copy(dataSet(entries) + database, home.path() + database);
    }
};

// So that it is read from the disk again.
void dropFromCache(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || posix_fadvise(file.handle(), 0, 0, POSIX_FADV_DONTNEED) != 0) {
        std::fprintf(stderr, "the cache stays warm\n");
    }
}

// What the panel does at a key, in a program that does nothing else.
void searchBesideTheLoop(benchmark::State& state, bool isCold, bool countsStall) {
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    const QString directory = dataSet(state.range(0));
    ClipboardStore store(directory, preferences);
    int limit = 100;
    for (auto _ : state) {
        if (isCold) {
            dropFromCache(directory + QStringLiteral("/Corvatto/corvatto.sqlite3"));
        }
        limit = 299 - limit;
        Stall stall;
        QElapsedTimer timer;
        timer.start();
        bool isDone = false;
        stall.time([&] {
            isDone = store.search(QStringLiteral("zyzzyva"), limit, [&](const auto&) { isDone = true; })
                         .isComplete;
        });
        stall.timeUntil([&] { return isDone; });
        state.SetIterationTime(countsStall ? stall.seconds()
                                           : static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
}

void lowerLimit(benchmark::State& state) {
    const OwnHistory history(state.range(0));
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    ClipboardStore store(history.home.path(), preferences);
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
    const OwnHistory history(state.range(0));
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    ClipboardStore store(history.home.path(), preferences);
    for (auto _ : state) {
        Stall stall;
        stall.time([&] { store.deleteAll(); });
        bool isOver = false;
        store.insertOrUpdate(QStringLiteral("new"), {}, [&] { isOver = true; });
        stall.timeUntil([&] { return isOver; });
        state.SetIterationTime(stall.seconds());
    }
    if (QFile(history.home.filePath(QStringLiteral("Corvatto/corvatto.sqlite3"))).size() > 200'000) {
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
    const auto addSearch = [](const char* name, bool isCold, bool countsStall) {
        forEachSize(
            benchmark::RegisterBenchmark(
                name, [=](benchmark::State& state) { searchBesideTheLoop(state, isCold, countsStall); })
                ->Iterations(1)
                ->Repetitions(5)
                ->UseManualTime());
    };
    addSearch("search, nothing matches: stall", false, true);
    addSearch("the same, cold cache: stall", true, true);
    addSearch("search, nothing matches: result", false, false);
    addSearch("the same, cold cache: result", true, false);
    forEachSize(benchmark::RegisterBenchmark("clearing: stall", clear)->Iterations(1)->UseManualTime());
}

} // namespace corvatto::bench
