// The histories that are measured: made once with generate_history, then kept beside the build. Figures
// whose cost depends on the number of entries are measured with each of them.
#pragma once

#include <benchmark/benchmark.h>

#include <QString>

namespace corvatto::bench {

// The directory that is XDG_DATA_HOME for a history of that many entries.
QString dataSet(long entries);

// What --entries=N,N,… said, 1,000 and 100,000 and 1,000,000 otherwise.
void setSizes(const char* list);
void forEachSize(benchmark::internal::Benchmark* figure);

} // namespace corvatto::bench
