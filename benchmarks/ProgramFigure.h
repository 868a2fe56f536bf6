// Registers figures of the whole program.
#pragma once

#include "ProgramUnderTest.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace corvatto::bench {

// What cannot be measured ends the run: half a table would look like a whole one.
template <typename Measure>
void orExit(const Measure& measure) {
    try {
        measure();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "\n%s\n", error.what());
        std::exit(EXIT_FAILURE);
    }
}

// The figures of X11 have no prefix.
inline std::string figureOn(BenchDesktop::Kind kind, const char* name) {
    return (kind == BenchDesktop::Kind::Sway ? "sway: " : "") + std::string(name);
}

} // namespace corvatto::bench
