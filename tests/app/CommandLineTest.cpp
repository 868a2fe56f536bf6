#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

using Action = CommandLine::Action;

TEST(CommandLineTest, KnowsItsOptionsAndRefusesTheRest) {
    EXPECT_EQ(CommandLine::parse({}).action, Action::run);
    const std::pair<const char*, Action> rows[] = {
        {"--show", Action::show},     {"--toggle", Action::toggle},
        {"--quit", Action::quit},     {"--version", Action::printVersion},
        {"-v", Action::printVersion}, {"--help", Action::printHelp},
    };
    for (const auto& [option, action] : rows) {
        const CommandLine parsed = CommandLine::parse({QString::fromLatin1(option)});
        EXPECT_EQ(parsed.action, action) << option;
        EXPECT_TRUE(parsed.error.isEmpty()) << option;
        if (!QString::fromLatin1(option).startsWith(QStringLiteral("-v"))) {
            EXPECT_TRUE(CommandLine::helpText().contains(QString::fromLatin1(option))) << option;
        }
    }
    for (const char* wrong : {"--shwo", "-x", "show", "", "--show=1"}) {
        EXPECT_FALSE(CommandLine::parse({QString::fromLatin1(wrong)}).error.isEmpty()) << wrong;
    }
    EXPECT_FALSE(CommandLine::parse({QStringLiteral("--show"), QStringLiteral("--quit")}).error.isEmpty());
    EXPECT_TRUE(CommandLine::parse({QStringLiteral("--show"), QStringLiteral("--show")}).error.isEmpty());
}

} // namespace
} // namespace corvatto::test
