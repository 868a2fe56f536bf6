// The statements that a user waits for, on histories of growing size.
#include "DataSets.h"
#include "Suites.h"

#include "store/ClipboardStore.h"
#include "support/FakeUserDefaults.h"

namespace corvatto::bench {
namespace {

void fetch(benchmark::State& state, const std::optional<QString>& query, qsizetype expected) {
    test::FakeUserDefaults defaults;
    const Preferences preferences(defaults);
    const ClipboardStore store(dataSet(state.range(0)), preferences);
    constexpr int limit = 100;
    for (auto _ : state) {
        if (store.fetchRecent(query, limit).size() != expected) {
            state.SkipWithError("not the expected number of results");
            break;
        }
    }
}

void add(const char* name, const std::optional<QString>& query, qsizetype expected) {
    forEachSize(
        benchmark::RegisterBenchmark(name, [=](benchmark::State& state) { fetch(state, query, expected); }));
}

} // namespace

void addStoreFigures() {
    add("list statement", std::nullopt, 100);
    add("search statement, nothing matches", QStringLiteral("zyzzyva"), 0);
    add("search statement, Chinese", QStringLiteral("剪贴历史"), 0);
    add("search statement, many match", QStringLiteral("the"), 100);
}

} // namespace corvatto::bench
