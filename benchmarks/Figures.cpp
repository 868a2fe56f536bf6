#include "Figures.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string_view>

namespace corvatto::bench {
namespace {

constexpr Figure figures[] = {
    {"start to painted panel", "ms", 100},
    {"shortcut to painted panel", "ms", 16},
    {"request to painted panel", "ms", 16},
    {"key to results, nothing matches", "ms", 60},
    {"key to results, many match", "ms", 10},
    {"key, nothing matches: stall", "ms", 16, 1'000'000},
    {"key, cold cache: stall", "ms", 16, 1'000'000},
    {"resident, panel hidden", "MiB", 50},
    {"wake-ups in 10 s, panel hidden", "", 0},
    {"1 KB of text copied: stall", "ms", 5},
    {"photograph of 3840x2160 copied: stall", "ms", 30},
    {"desktop text of 3840x2160 copied: stall", "ms", 16},
    {"54 MB of text copied: stall", "ms", 50},
    {"first showing after 54 MB of text", "ms", 16},
    {"photograph asked for as TIFF, BMP, JPEG: stall", "ms", 16},
    {"start with a hundred texts of 5 MB", "ms", 150},
    {"word copied, these texts shown: stall", "ms", 5},
    {"sway: start to painted panel", "ms", 100},
    {"sway: shortcut to painted panel", "ms", {}}, // sway starts a shell for it, and that a program
    {"sway: request to painted panel", "ms", 16},
    {"sway: key to results, nothing matches", "ms", 60},
    {"sway: key to results, many match", "ms", 10},
    {"sway: key, nothing matches: stall", "ms", 16, 1'000'000},
    {"sway: key, cold cache: stall", "ms", 16, 1'000'000},
    {"sway: resident, panel hidden", "MiB", 50},
    {"sway: wake-ups in 10 s, panel hidden", "", 0},
    {"sway: 1 KB of text copied: stall", "ms", 5},
    {"sway: photograph of 3840x2160 copied: stall", "ms", 30},
    {"sway: desktop text of 3840x2160 copied: stall", "ms", 16},
    {"sway: 54 MB of text copied: stall", "ms", 50},
    {"sway: first showing after 54 MB of text", "ms", 16},
    {"shelf repaint, ten texts of 5 MB", "ms", 16},
    {"refresh and repaint, ten texts of 5 MB", "ms", {}},
    {"capture of 1 KB text", "ms", 5},
    {"list statement", "ms", {}},
    {"search statement, nothing matches", "ms", {}},
    {"search statement, Chinese", "ms", {}},
    {"search statement, many match", "ms", {}},
    {"search, another letter", "ms", {}},
    {"search, nothing matches: result", "ms", 500, 1'000'000},
    {"the same, cold cache: result", "ms", 1'000, 1'000'000},
    {"a limit takes hold: stall", "ms", 16, 1'000'000},
    {"clearing: stall", "ms", 16, 1'000'000},
    {"SHA-256 of 33 MB", "ms", {}},
    {"PNG encoding, 3840x2160", "ms", {}},
    {"PNG decoding, 3840x2160", "ms", {}},
    {"thumbnail of 3840x2160", "ms", {}},
    {"text card of 300 bytes", "µs", {}},
    {"text card of 5 MB", "µs", {}},
};

double inUnit(std::string_view unit, double seconds) {
    return seconds * (unit == "ms" ? 1e3 : unit == "µs" ? 1e6 : 1.0);
}

long entriesOf(const std::string& arguments) {
    const std::size_t colon = arguments.find(':');
    return colon == std::string::npos ? 0 : std::strtol(arguments.c_str() + colon + 1, nullptr, 10);
}

void printCell(std::optional<double> value) {
    if (value) {
        std::printf(" %9.*f", *value < 0.1 ? 3 : *value < 10 ? 2 : *value < 100 ? 1 : 0, *value);
    } else {
        std::printf(" %9s", "");
    }
}

} // namespace

bool Table::ReportContext(const Context& /*context*/) {
    return true;
}

void Table::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.error_occurred) {
            std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
            m_isWithinBudgets = false;
            continue;
        }
        const bool counts =
            run.run_type == Run::RT_Aggregate ? run.aggregate_name == "median" : runs.size() == 1;
        if (!counts) {
            continue;
        }
        const auto counter = run.counters.find("value");
        const double seconds = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
        const std::string& name = run.run_name.function_name;
        for (const Figure& figure : figures) {
            if (figure.name == name) {
                m_results[name][entriesOf(run.run_name.args)] =
                    counter != run.counters.end() ? counter->second.value : inUnit(figure.unit, seconds);
            }
        }
    }
    std::fprintf(stderr, ".");
}

void Table::Finalize() {
    std::set<long> sizes;
    for (const auto& [name, results] : m_results) {
        for (const auto& [entries, value] : results) {
            if (entries > 0) {
                sizes.insert(entries);
            }
        }
    }
    std::printf("\n%-46s %4s %9s", "figure", "", "");
    for (const long entries : sizes) {
        std::printf(" %9ld", entries);
    }
    std::printf(" %9s\n", "budget");
    for (const Figure& figure : figures) {
        const auto found = m_results.find(figure.name);
        if (found == m_results.end()) {
            continue;
        }
        const auto value = [&results = found->second](long entries) {
            const auto at = results.find(entries);
            return at != results.end() ? std::optional(at->second) : std::nullopt;
        };
        // The units are padded by hand: a µ is one column and two bytes.
        std::printf("%-46s %*s", figure.name, std::string_view(figure.unit) == "µs" ? 5 : 4, figure.unit);
        printCell(value(0));
        for (const long entries : sizes) {
            printCell(value(entries));
        }
        printCell(figure.budget);
        const auto budgeted = value(0) ? value(0) : value(figure.entries);
        if (figure.budget && budgeted) {
            const bool passes = *budgeted <= *figure.budget;
            m_isWithinBudgets = m_isWithinBudgets && passes;
            std::printf("  %s", passes ? "pass" : "MISS");
        }
        std::printf("\n");
    }
}

} // namespace corvatto::bench
