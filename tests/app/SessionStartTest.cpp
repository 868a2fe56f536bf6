#include "app/SessionStart.h"

#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

namespace corvatto::test {

TEST(SessionStart, WithoutADisplayPrintsALineAndLeavesNothingToOpenedPrograms) {
    qunsetenv("WAYLAND_DISPLAY");
    qputenv("XDG_RUNTIME_DIR", "/nonexistent"); // or Wayland's default name might be found there
    qunsetenv("DISPLAY");
    qputenv("XDG_ACTIVATION_TOKEN", "of this start");
    CapturedOutput printed;
    int count = 0;
    EXPECT_FALSE(startSession(count, nullptr).session);
    EXPECT_EQ(printed.text(), "[CorvattoApp] ERROR: Cannot connect to an X server, is DISPLAY set?\n");
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
}

} // namespace corvatto::test
