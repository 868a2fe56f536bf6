#include "platform/qt/ApplicationSupport.h"

#include "support/Printing.h"
#include "support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(ApplicationSupport, AbsoluteSettingsOfTheEnvironmentComeBeforeTheHome) {
    const test::TemporaryHome own; // the variables as they are set now go with it
    qputenv("HOME", "/home/用户");
    qputenv("XDG_DATA_HOME", "/data");
    qputenv("XDG_CONFIG_HOME", "/etc/u");
    EXPECT_EQ(applicationSupportDirectory(), u"/data");
    EXPECT_EQ(settingsFilePath(), u"/etc/u/corvatto/corvatto.ini");
    for (const char* useless : {"", "data"}) {
        qputenv("XDG_DATA_HOME", useless);
        qputenv("XDG_CONFIG_HOME", useless);
        EXPECT_EQ(applicationSupportDirectory(), u"/home/用户/.local/share") << useless;
        EXPECT_EQ(settingsFilePath(), u"/home/用户/.config/corvatto/corvatto.ini") << useless;
    }
    for (const char* none : {"", "relative"}) {
        qputenv("HOME", none);
        EXPECT_EQ(applicationSupportDirectory() + settingsFilePath(), QString());
    }
}

} // namespace
} // namespace corvatto
