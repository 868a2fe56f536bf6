#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

TEST(CommandLineTest, TakesOneActionAndRefusesWhatItDoesNotKnow) {
    using Action = CommandLine::Action;
    const std::pair<const char*, std::optional<Action>> rows[] = {{"--toggle", Action::toggle},
                                                                  {"-v", Action::printVersion},
                                                                  {"-h", Action::printHelp},
                                                                  {"--show --show", Action::show},
                                                                  {"--show --quit", {}},
                                                                  {"--shwo", {}},
                                                                  {"show", {}},
                                                                  {"--show=1", {}},
                                                                  {"", {}}};
    for (const auto& [words, action] : rows) {
        const CommandLine parsed = CommandLine::parse(QString::fromLatin1(words).split(u' '));
        EXPECT_EQ(parsed.error.isEmpty(), action.has_value()) << words;
        EXPECT_TRUE(!action || parsed.action == action) << words;
    }
}

} // namespace
} // namespace corvatto::test
