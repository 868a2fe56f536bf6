// Content and databases that are not what they should be: a line on standard output at most, and nothing
// lost.
#include "EndToEndTest.h"

#include <filesystem>

namespace corvatto::test {

namespace {

class BadInputTest : public EndToEndTest {
protected:
    BadInputTest() { librariesMayComplain = true; }

    // The panel works, even if the history does not.
    void expectToBeUp() {
        EXPECT_TRUE(panelHasKeyboard());
        hidePanel();
        showPanel();
    }
};

} // namespace

TEST_F(BadInputTest, ADatabaseThatCannotBeWritten) {
    database.fill({{"newest"}, {"second"}});
    std::filesystem::permissions(database.path().constData(), std::filesystem::perms::owner_read);
    const auto readOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec;
    std::filesystem::permissions(desktop.dataDirectory().constData(), readOnly);
    launch();
    copyText("nowhere to go");
    EXPECT_TRUE(soonPrinted("[ClipboardStore] ERROR: Insert failed: attempt to write a readonly database"));
    // What is stored is of use nevertheless.
    hidePanel();
    showPanel();
    x.key("Return");
    EXPECT_TRUE(soonHidden());
    EXPECT_EQ(paste(), "second");
    EXPECT_TRUE(soonPrinted(
        "[ClipboardStore] ERROR: incrementCopyCount failed: attempt to write a readonly database"));
    EXPECT_EQ(database.rows().size(), 2);
    std::filesystem::permissions(desktop.dataDirectory().constData(), std::filesystem::perms::owner_all);
}

TEST_F(BadInputTest, SettingsThatMakeNoSense) {
    database.fill(numberedEntries());
    desktop.writeFile("config/corvatto/corvatto.ini", "[General]\nclipboardPollingInterval=nan\n"
                                                      "maxItemCount=-9223372036854775808\n"
                                                      "maxRetentionDays=99999999999999999999\n"
                                                      "hotkeyKeyCode=4294967305\nhotkeyModifiers=-1\n"
                                                      "corvattoHistoryWindowOpenCount=9223372036854775807\n"
                                                      "corvattoLastUpdateCheckAt=-1e308\n"
                                                      "corvattoIgnoredUpdateVersion=@Size(1 2)\n\xff\0]]\n");
    launch();
    // The panel is on the screen before its opening is counted.
    EXPECT_TRUE(soon([this] { return setting("corvattoHistoryWindowOpenCount") == 1; }));
    EXPECT_EQ(rowsAfterNextCopy().size(), 17);
    expectToBeUp(); // by the default shortcut
    EXPECT_EQ(program->stop(), 0);

    std::filesystem::permissions(desktop.settingsFile().constData(), std::filesystem::perms::none);
    launch();
    EXPECT_TRUE(
        soonPrinted("[UserDefaults] ERROR: Cannot read " + desktop.settingsFile() + ", the defaults hold."));
    expectToBeUp();
}

} // namespace corvatto::test
