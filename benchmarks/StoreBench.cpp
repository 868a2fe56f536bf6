// The statements that a user waits for, on histories of growing size.
#include "DataSets.h"
#include "Suites.h"

#include "store/ClipboardStore.h"
#include "support/FakeUserDefaults.h"

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

} // namespace

void addStoreFigures() {
    add("list statement", std::nullopt, true);
    add("search statement, nothing matches", QStringLiteral("zyzzyva"), false);
    add("search statement, Chinese", QStringLiteral("剪贴历史"), false);
    add("search statement, many match", QStringLiteral("the"), true);
    forEachSize(benchmark::RegisterBenchmark("search, another letter", typeAnotherLetter));
}

} // namespace corvatto::bench
