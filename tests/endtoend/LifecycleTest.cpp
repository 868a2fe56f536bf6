// Start and end of the program, its command line and shortcut, and what it leaves on the disk.
#include "EndToEndTest.h"

#include <filesystem>
#include <fstream>

namespace corvatto::test {

namespace {

using LifecycleTest = DesktopTest;
ON_EVERY_DESKTOP(LifecycleTest);

using XLifecycleTest = X11Test;

constexpr xcb_keycode_t keyV = 55, keyB = 56;
constexpr quint16 shift = XCB_MOD_MASK_SHIFT, super = XCB_MOD_MASK_4, alt = XCB_MOD_MASK_1;

} // namespace

TEST_P(LifecycleTest, FilesAreTheUsersOwn) {
    using std::filesystem::perms;
    const std::filesystem::path data = desktop.dataDirectory().constData();
    const auto settings = std::filesystem::path(desktop.settingsFile().constData()).parent_path();
    std::filesystem::remove_all(settings);
    launch();
    copy({{"image/png", encoded(testImage({10, 10}), "png")}});
    ASSERT_TRUE(soon([this] { return database.rows().size() == 1; }));
    // What was open to all, the images' directories among it, is closed by the next start.
    EXPECT_EQ(program->stop(), 0);
    desktop.writeFile("data/Corvatto/corvatto.sqlite3-wal", "");
    desktop.writeFile("data/Corvatto/corvatto.sqlite3-shm", "");
    const auto instance = std::filesystem::path((desktop.home() + "/runtime/corvatto").constData());
    for (const auto& root : {data, settings, instance}) {
        std::filesystem::permissions(root, perms::all);
        for (const auto& entry : std::filesystem::directory_iterator(root)) {
            std::filesystem::permissions(entry, entry.is_directory() ? perms::all : perms(0666));
        }
    }
    launch();
    // The opening is stored after the panel is on the screen.
    ASSERT_TRUE(soon([this] { return setting("corvattoHistoryWindowOpenCount") == 2; }));
    EXPECT_EQ(std::filesystem::status(instance).permissions(), perms::owner_all);

    int files = 0;
    for (const auto& root : {data, settings}) {
        EXPECT_EQ(std::filesystem::status(root).permissions(), perms::owner_all) << root;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            const auto expected =
                entry.is_directory() ? perms::owner_all : perms::owner_read | perms::owner_write;
            EXPECT_EQ(entry.status().permissions(), expected) << entry.path();
            files += entry.is_directory() ? 0 : 1;
        }
    }
    EXPECT_GE(files, 4); // database, image, thumbnail, settings
}

TEST_F(XLifecycleTest, ADatabaseThatCannotBeWritten) {
    using std::filesystem::perms;
    database.fill({"newest", "second"});
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

TEST_F(XLifecycleTest, TheShortcutIsGivenBackAtTheEnd) {
    launch();
    EXPECT_FALSE(x.grabKey(keyV, shift | super));
    EXPECT_EQ(program->stop(), 0);
    auto other = std::make_unique<XClient>(desktop.display());
    EXPECT_TRUE(other->grabKey(keyV, shift | super));

    // Taken by somebody else: the program says so, works, and takes it when it is free and the preferences
    // open, or a new one as soon as it is set.
    launch();
    EXPECT_TRUE(soonPrinted("[HotKeyManager] ERROR: RegisterEventHotKey failed with status -9878"));
    other.reset();
    desktop.key("ctrl+comma");
    EXPECT_TRUE(soonToggled("super+shift+v"));
    setSetting("hotkeyKeyCode", 11);     // B
    setSetting("hotkeyModifiers", 2304); // command and option
    const QVariant openings = setting("corvattoHistoryWindowOpenCount");
    EXPECT_TRUE(soonToggled("super+alt+b"));
    // Counting the opening writes the file too, and of two writers at one moment the later one wins.
    EXPECT_TRUE(soon([&] { return setting("corvattoHistoryWindowOpenCount") != openings; }));
    // Another change leaves nothing of the one before. Zero stands for the default, V.
    setSetting("hotkeyKeyCode", 0);
    EXPECT_TRUE(soonToggled("super+alt+v"));
    EXPECT_TRUE(x.grabKey(keyB, super | alt));
}

TEST_P(LifecycleTest, ASecondStartAndTheCommandLineReachTheRunningProgram) {
    EXPECT_EQ(corvatto({"--toggle"}), 1); // none is running
    copyText("before the start");
    launch();
    hidePanel();
    EXPECT_EQ(corvatto({}), 0);
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    EXPECT_EQ(corvatto({"--toggle"}), 0);
    EXPECT_TRUE(soonHidden());
    EXPECT_EQ(corvatto({"--show"}), 0);
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    EXPECT_EQ(corvatto({"--nonsense"}), 2);
    EXPECT_EQ(corvatto({"--version"}), 0);
    EXPECT_TRUE(database.rows().isEmpty()); // what is there at the start is no new copy
    std::ifstream maps("/proc/" + std::to_string(program->pid()) + "/maps");
    const std::string loaded(std::istreambuf_iterator<char>(maps), {});
    EXPECT_NE(loaded.find("libQt6Core"), std::string::npos);
    EXPECT_EQ(loaded.find("libQt6Network"), std::string::npos) << "for a request a day";
    EXPECT_EQ(corvatto({"--quit"}), 0);
    EXPECT_EQ(program->exitStatus(), 0);
    EXPECT_EQ(corvatto({"--quit"}), 1);
    launch(); // and it starts again
}

TEST_P(LifecycleTest, AHungProgramIsReportedAndDoesNotCatchUpOnWhatWasGivenUp) {
    launch();
    kill(static_cast<pid_t>(program->pid()), SIGSTOP);
    {
        Process quit(CORVATTO_PROGRAM, {"--quit"}, desktop.environment());
        EXPECT_EQ(quit.exitStatus(), 1);
        EXPECT_EQ(quit.errors(), "corvatto: a Corvatto is running, but it does not answer.\n");
    }
    kill(static_cast<pid_t>(program->pid()), SIGCONT);
    EXPECT_EQ(corvatto({"--toggle"}), 0);
    EXPECT_TRUE(soonHidden());
}

TEST_F(XLifecycleTest, ItRunsWithoutStandardDescriptorsAndEndsInOrderWithItsTerminal) {
    ASSERT_TRUE(x.grabKey(keyV, shift | super)); // it has something to say
    program = std::make_unique<Process>("sh", QByteArrayList{"-c", "exec " CORVATTO_PROGRAM " <&- >&- 2>&-"},
                                        desktop.environment());
    ASSERT_TRUE(soon([this] { return panelHasKeyboard(); }));
    EXPECT_EQ(corvatto({"--toggle"}), 0);
    EXPECT_TRUE(soonHidden());
    kill(static_cast<pid_t>(program->pid()), SIGHUP);
    EXPECT_EQ(program->exitStatus(), 0);
    launch();
}

} // namespace corvatto::test
