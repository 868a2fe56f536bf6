// What is measured, in the order of the table: its unit, its budget, and how the budget holds.
//
// Every figure is a Google Benchmark of the same name. Its result is the median of its repetitions, or the
// counter "value" where the figure is no time.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <optional>
#include <string>

namespace corvatto::bench {

struct Figure {
    const char* name;
    const char* unit;             // "ms" and "µs" are converted from the measured time
    std::optional<double> budget; // in the unit
    long entries = 100'000;       // with which the budget holds, where their number matters
};

// Prints the table when the last benchmark has run.
class Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    bool isWithinBudgets() const { return m_isWithinBudgets; }

private:
    std::map<std::string, std::map<long, double>> m_results; // by name and number of entries, 0 for none
    bool m_isWithinBudgets = true;
};

} // namespace corvatto::bench
