// Variables of the environment that are changed for a while.
#include "base/ScopedEnvironment.h"

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

TEST(ScopedEnvironmentTest, GivesBackWhatWasThereBefore) {
    qputenv("CORVATTO_TEST_SET", "before");
    qunsetenv("CORVATTO_TEST_UNSET");
    {
        const ScopedEnvironment environment{
            {"CORVATTO_TEST_SET", nullptr}, {"CORVATTO_TEST_UNSET", "now"}, {"CORVATTO_TEST_UNSET", "later"}};
        EXPECT_FALSE(qEnvironmentVariableIsSet("CORVATTO_TEST_SET"));
        EXPECT_EQ(qgetenv("CORVATTO_TEST_UNSET"), "later");
    }
    EXPECT_EQ(qgetenv("CORVATTO_TEST_SET"), "before");
    EXPECT_FALSE(qEnvironmentVariableIsSet("CORVATTO_TEST_UNSET"));
}

} // namespace
} // namespace corvatto::test
