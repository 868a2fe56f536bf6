// The preferences window, and each setting's effect on the program that runs.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class PreferencesTest : public EndToEndTest {
protected:
    void openPreferences() {
        x.key("ctrl+comma");
        ASSERT_TRUE(soon([this] { return isInFront("Corvatto Preferences"); }));
        window = x.geometry(x.activeWindow());
    }

    bool soonSet(const char* key, const QVariant& value) {
        return soon([&] { return setting(key) == value; });
    }

    bool soonToggled(const QByteArray& keys) {
        const bool wasVisible = panel() != XCB_NONE;
        x.key(keys);
        return soon([&] { return (panel() != XCB_NONE) != wasVisible; });
    }

    QRect window;
};

} // namespace

TEST_F(PreferencesTest, LimitsAndIntervalTakeEffectInTheRunningProgram) {
    launch();
    openPreferences();
    EXPECT_EQ(window.width(), 680);
    EXPECT_GE(window.height(), 460);
    EXPECT_NEAR(window.center().x(), 640, 2);
    EXPECT_TRUE(x.states(x.activeWindow()).contains("_NET_WM_STATE_SKIP_TASKBAR"));

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
    x.key("ctrl+a 7");
    EXPECT_TRUE(soonSet("maxRetentionDays", 7));
    database.execute("UPDATE clipboard_items SET last_copied_at = last_copied_at - 8 * 86400");
    copyText("four");
    EXPECT_TRUE(soonStored("four"));
    EXPECT_TRUE(soon([this] { return database.rows().size() == 1; }));

    x.key("Tab End");
    EXPECT_TRUE(soonSet("clipboardPollingInterval", 5));
    copyText("five");
    EXPECT_FALSE(soon([this] { return database.find("five").has_value(); }, std::chrono::milliseconds(1500)));
    x.key("Home Right Right");
    EXPECT_TRUE(soonSet("clipboardPollingInterval", 0.3));
    EXPECT_TRUE(soon([this] { return database.find("five").has_value(); }, std::chrono::milliseconds(2500)));
}

TEST_F(PreferencesTest, EveryKindOfCombinationIsRecordedAndRegisteredAtOnce) {
    launch();
    openPreferences();
    ASSERT_TRUE(soonToggled("super+shift+v"));
    const struct {
        QByteArray keys;
        int keyCode, modifiers;
        QByteArray toggles; // zeros stand for the default
    } cases[] = {
        {"super+shift+k", 40, 768, "super+shift+k"},
        {"ctrl+alt+super+shift+F1", 122, 6912, "ctrl+alt+super+shift+F1"},
        {"k", 40, 0, "super+shift+k"},
        {"Tab", 48, 0, "super+shift+Tab"},
        {"ctrl+alt+Right", 124, 6144, "ctrl+alt+Right"},
    };
    for (const auto& [keys, keyCode, modifiers, toggles] : cases) {
        SCOPED_TRACE(keys.toStdString());
        x.key("shift+Tab shift+Tab " + keys); // the recorder is the last but one
        ASSERT_TRUE(soonSet("hotkeyKeyCode", keyCode));
        ASSERT_TRUE(soonSet("hotkeyModifiers", modifiers));
        ASSERT_TRUE(soonToggled(toggles));
        ASSERT_TRUE(soonToggled(toggles));
        ASSERT_TRUE(soon([this] { return isInFront("Corvatto Preferences"); }));
    }
}

} // namespace corvatto::test
