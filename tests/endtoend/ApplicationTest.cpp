// What is around the history: preferences, command line, a second start.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class ApplicationTest : public EndToEndTest {
protected:
    // The visible window of the program that has this title, 0 when there is none.
    XClient::Window windowTitled(const QByteArray& title) {
        for (const XClient::Window window : x.visibleWindows(program->pid())) {
            if (x.title(window) == title) {
                return window;
            }
        }
        return 0;
    }
    XClient::Window preferences() { return windowTitled("Corvatto Preferences"); }

    void openPreferences() {
        x.key("ctrl+comma");
        ASSERT_TRUE(soon([this] { return preferences() != 0 && x.activeWindow() == preferences(); }));
    }

    bool soonSet(const char* key, const QVariant& value) {
        return soon([&] { return setting(key) == value; });
    }

    std::optional<int> corvatto(const QByteArrayList& arguments) {
        return Process(CORVATTO_PROGRAM, arguments, desktop.environment(), true).exitStatus();
    }
};

} // namespace

TEST_F(ApplicationTest, EveryPreferenceTakesEffectInTheRunningProgram) {
    launch();
    openPreferences();
    const QRect window = x.geometry(preferences());
    EXPECT_EQ(window.width(), 680);
    EXPECT_GE(window.height(), 460);
    EXPECT_NEAR(window.center().x(), 640, 2);
    keepPicture(QStringLiteral("preferences"));

    // The first field has the keyboard. Each stored value is the proof that the key before arrived.
    x.type("2");
    EXPECT_TRUE(soonSet("maxItemCount", 2));
    for (const char* text : {"one", "two", "three"}) {
        copyText(text);
        ASSERT_TRUE(soonStored(text));
    }
    EXPECT_TRUE(soon([this] { return database.rows().size() == 2; })); // trimmed right after storing
    x.key("Tab");
    x.type("-5");
    EXPECT_TRUE(soonSet("maxRetentionDays", 0));
    x.key("ctrl+a");
    x.type("7");
    EXPECT_TRUE(soonSet("maxRetentionDays", 7));
    x.key("Tab End");
    EXPECT_TRUE(soonSet("clipboardPollingInterval", 5));
    x.key("Home Right Right");
    EXPECT_TRUE(soonSet("clipboardPollingInterval", 0.3));

    // Moving onto the recorder starts it; the next key with its modifiers is the shortcut, at once.
    x.key("Tab");
    keepPicture(QStringLiteral("recording"));
    x.key("super+alt+b");
    EXPECT_TRUE(soonSet("hotkeyKeyCode", 11));
    EXPECT_TRUE(soonSet("hotkeyModifiers", 2304));
    const bool wasVisible = panel() != 0;
    x.key("super+alt+b");
    EXPECT_TRUE(soon([&] { return (panel() != 0) != wasVisible; }));
}

TEST_F(ApplicationTest, ASecondStartAndTheCommandLineReachTheRunningProgram) {
    EXPECT_EQ(corvatto({"--toggle"}), 1); // none is running
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
    EXPECT_EQ(corvatto({"--quit"}), 0);
    EXPECT_EQ(program->exitStatus(), 0);
    EXPECT_EQ(corvatto({"--quit"}), 1);
    launch(); // and it starts again
}

} // namespace corvatto::test
