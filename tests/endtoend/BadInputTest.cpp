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

TEST_F(BadInputTest, UnreadableImages) {
    const QByteArray png = encoded(testImage({100, 100}), "png");
    launch();
    for (const QByteArray& bytes :
         {png.left(png.size() / 2), png.left(20), QByteArray("no image"), QByteArray()}) {
        copy({{"image/png", bytes}, {"image/tiff", "II*"}});
        EXPECT_TRUE(rowsAfterNextCopy().removeIf([](const auto& row) { return row.type != "text"; }) == 0);
    }
    copy({{"image/png", png.left(png.size() / 2)}, {"UTF8_STRING", "what the image says"}});
    EXPECT_TRUE(soonStored("what the image says"));
    EXPECT_TRUE(std::filesystem::is_empty((desktop.dataDirectory() + "/images").constData()));
}

TEST_F(BadInputTest, ADatabaseThatIsADirectory) {
    const auto inside = desktop.writeFile("data/Corvatto/corvatto.sqlite3/kept", "kept");
    launch();
    EXPECT_TRUE(soonPrinted("[ClipboardStore] ERROR: Failed to open database: unable to open database file"));
    copyText("nowhere to go");
    EXPECT_TRUE(soon(
        [this] { return program->output().contains("[ClipboardStore] ERROR: Prepare insert failed: "); }));
    expectToBeUp();
    EXPECT_EQ(bytesOf(inside), "kept");
}

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

TEST_F(BadInputTest, ADatabaseOfAnOlderSchema) {
    database.execute(
        "CREATE TABLE clipboard_items (id INTEGER PRIMARY KEY AUTOINCREMENT, content TEXT NOT NULL, "
        "content_hash TEXT NOT NULL UNIQUE, preview TEXT NOT NULL, copy_count INTEGER NOT NULL DEFAULT "
        "1, first_copied_at INTEGER NOT NULL, last_copied_at INTEGER NOT NULL);"
        "INSERT INTO clipboard_items VALUES (7, 'of old', 'hash', 'of old', 3, 1000, 2000)");
    launch();
    const auto rows = rowsAfterNextCopy();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.first().content, "of old");
    EXPECT_EQ(rows.first().type, "text");
    EXPECT_EQ(rows.first().sourceApp, "");
    EXPECT_EQ(rows.first().copyCount, 3);
    x.type("of old");
    x.key("Return");
    EXPECT_TRUE(soonHidden());
    EXPECT_EQ(paste(), "of old");
    EXPECT_FALSE(program->output().contains("ERROR"));
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
