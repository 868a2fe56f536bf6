// What a user waits for, and what the program costs while nobody does.
#include "DataSets.h"
#include "ProgramFigure.h"
#include "Suites.h"

#include <cmath>

#include <unistd.h>

namespace corvatto::bench {
namespace {

using Kind = BenchDesktop::Kind;

void addTimed(const std::string& name, Kind kind, double (*measure)(ProgramUnderTest&)) {
    constexpr int repetitions = 9;
    const auto run = [=](benchmark::State& state) {
        orExit([&] {
            ProgramUnderTest program(kind, dataSet(state.range(0)));
            program.start();
            program.waitForKeyboard();
            // The first key of a new server changes the keyboard, which everybody then reads anew.
            measure(program);
            for (auto _ : state) {
                state.SetIterationTime(measure(program));
            }
        });
    };
    forEachSize(benchmark::RegisterBenchmark(name.c_str(), run)
                    ->Iterations(1)
                    ->Repetitions(repetitions)
                    ->UseManualTime());
}

double startAgain(ProgramUnderTest& program) {
    program.stop();
    return program.start();
}

double showAgain(ProgramUnderTest& program) {
    program.hide();
    const double result = program.pressShortcut();
    program.waitForKeyboard();
    return result;
}

double toggleAgain(ProgramUnderTest& program) {
    program.hide();
    const double result = program.requestToggle();
    program.waitForKeyboard();
    return result;
}

double typeWhatNothingMatches(ProgramUnderTest& program) {
    // Nothing in the history has a z but "zyzzyva" would.
    const double result = program.press("z", [&] { return !program.hasCards(); });
    program.press("BackSpace", [&] { return program.hasCards(); });
    return result;
}

double typeWhatManyMatch(ProgramUnderTest& program) {
    // A search selects its first result, the whole list its second entry.
    const double result = program.press("h", [&] { return program.isFirstSelected(); });
    program.press("BackSpace", [&] { return !program.isFirstSelected(); });
    return result;
}

double stallOfKey(ProgramUnderTest& program) {
    const double result =
        program.stallWhile([&] { program.press("z", [&] { return !program.hasCards(); }); });
    program.press("BackSpace", [&] { return program.hasCards(); });
    return result;
}

double stallOfKeyInColdCache(ProgramUnderTest& program) {
    dropFromCache(program.database());
    return stallOfKey(program);
}

void addCounted(const std::string& name, Kind kind, double (*measure)(ProgramUnderTest&)) {
    const auto run = [=](benchmark::State& state) {
        orExit([&] {
            ProgramUnderTest program(kind, dataSet(state.range(0)));
            program.start();
            program.waitForKeyboard();
            program.hide();
            for (auto _ : state) {
                state.counters["value"] = measure(program);
            }
        });
    };
    forEachSize(benchmark::RegisterBenchmark(name.c_str(), run)->Iterations(1));
}

double residentWhileIdle(ProgramUnderTest& program) {
    sleep(1); // what hiding leaves to do
    return program.residentMebibytes();
}

double wakeUpsWhileIdle(ProgramUnderTest& program) {
    sleep(1);
    const long before = program.contextSwitches();
    sleep(10);
    // A thread that ended meanwhile has taken its own count along.
    return static_cast<double>(std::abs(program.contextSwitches() - before));
}

} // namespace

void addProgramFigures(Kind kind) {
    addTimed(figureOn(kind, "start to painted panel"), kind, startAgain);
    addTimed(figureOn(kind, "shortcut to painted panel"), kind, showAgain);
    addTimed(figureOn(kind, "request to painted panel"), kind, toggleAgain);
    addTimed(figureOn(kind, "key to results, nothing matches"), kind, typeWhatNothingMatches);
    addTimed(figureOn(kind, "key to results, many match"), kind, typeWhatManyMatch);
    addTimed(figureOn(kind, "key, nothing matches: stall"), kind, stallOfKey);
    addTimed(figureOn(kind, "key, cold cache: stall"), kind, stallOfKeyInColdCache);
    addCounted(figureOn(kind, "resident, panel hidden"), kind, residentWhileIdle);
    addCounted(figureOn(kind, "wake-ups in 10 s, panel hidden"), kind, wakeUpsWhileIdle);
}

} // namespace corvatto::bench
