// Content and databases that are not what they should be: a line on standard output at most, and nothing
// lost.
#include "EndToEndTest.h"

#include <filesystem>

namespace corvatto::test {

namespace {

using BadInputTest = X11Test;
using std::filesystem::perms;

} // namespace

TEST_F(BadInputTest, ADatabaseThatCannotBeWritten) {
    database.fill({{"newest"}, {"second"}});
    std::filesystem::permissions(database.path().constData(), perms::owner_read);
    std::filesystem::permissions(desktop.dataDirectory().constData(), perms::owner_read | perms::owner_exec);
    launch();
    copyText("nowhere to go");
    EXPECT_TRUE(soonPrinted("[ClipboardStore] ERROR: Insert failed: attempt to write a readonly database"));
    desktop.key("Return"); // what is stored is of use nevertheless
    EXPECT_TRUE(soonHidden());
    EXPECT_EQ(paste(), "second");
    EXPECT_TRUE(soonPrinted(
        "[ClipboardStore] ERROR: incrementCopyCount failed: attempt to write a readonly database"));
    std::filesystem::permissions(desktop.dataDirectory().constData(), perms::owner_all);
}

TEST_F(BadInputTest, SettingsThatCannotBeReadOrMakeNoSense) {
    database.fill(numberedEntries());
    std::filesystem::permissions(desktop.settingsFile().constData(), perms::none);
    launch();
    EXPECT_TRUE(
        soonPrinted("[UserDefaults] ERROR: Cannot read " + desktop.settingsFile() + ", the defaults hold."));
    EXPECT_EQ(program->stop(), 0);

    std::filesystem::permissions(desktop.settingsFile().constData(), perms::owner_all);
    desktop.writeFile("config/corvatto/corvatto.ini", "[General]\nclipboardPollingInterval=nan\n"
                                                      "maxItemCount=-9223372036854775808\n"
                                                      "hotkeyKeyCode=4294967305\nhotkeyModifiers=-1\n"
                                                      "corvattoHistoryWindowOpenCount=9223372036854775807\n"
                                                      "corvattoIgnoredUpdateVersion=@Size(1 2)\n\xff\0]]\n");
    launch();
    EXPECT_EQ(rowsAfterNextCopy().size(), 17);
    EXPECT_EQ(setting("corvattoHistoryWindowOpenCount"), 1);
    EXPECT_TRUE(soonToggled("super+shift+v")); // the default
}

} // namespace corvatto::test
