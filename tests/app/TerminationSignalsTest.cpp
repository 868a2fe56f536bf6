#include "app/TerminationSignals.h"

#include "support/Eventually.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

namespace corvatto::test {
namespace {

TEST(TerminationSignals, EachEndsTheProgramUnlessItWasIgnoredBefore) {
    int ends = 0;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ends = 0;
        const TerminationSignals signals([&ends] { ++ends; });
        std::raise(signal);
        EXPECT_TRUE(eventually([&] { return ends == 1; })) << signal;
    }
    const auto before = std::signal(SIGHUP, SIG_IGN); // by nohup
    const TerminationSignals signals([] {});
    EXPECT_EQ(std::signal(SIGHUP, before), SIG_IGN);
}

TEST(TerminationSignals, TheInterruptedCodeKeepsItsError) {
    const TerminationSignals signals([] {});
    errno = 0;
    for (int i = 0; i < 100'000 && errno == 0; ++i) { // more than the pipe to the event loop holds
        std::raise(SIGTERM);
    }
    EXPECT_EQ(errno, 0);
}

} // namespace
} // namespace corvatto::test
