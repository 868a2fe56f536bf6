// The preferences window, and each setting's effect on the program that runs.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class PreferencesTest : public DesktopTest {
protected:
    void openPreferences() {
        desktop.key("ctrl+comma");
        // On X11 it moves once more when its frame is known.
        ASSERT_TRUE(soon([this] {
            const auto front = desktop.windowInFront(program->pid());
            window = front.rect;
            return front.title == "Corvatto Preferences" && (!isX11() || window.center().y() > 550 + 2);
        }));
    }

    bool soonSet(const char* key, const QVariant& value) {
        return soon([&] { return setting(key) == value; });
    }

    // Its left part, beside the text. The recorder is the only white thing in the middle of its column that
    // does not end where the column does.
    QPoint recorder() {
        const QImage screen = desktop.screenshot();
        const auto isWhite = [&](int left, int y) {
            return screen.pixelColor(window.left() + left, y) == QColor(Qt::white);
        };
        int y = window.top();
        while (y < window.bottom() && (!isWhite(345, y) || isWhite(640, y))) {
            ++y;
        }
        return {window.left() + 345, y + 8};
    }

    bool isRecording() { return desktop.pixel(m_recorder) != QColor(Qt::white); }

    // Records, and leaves the recorder idle.
    void recordShortcut(const QByteArray& keys) {
        desktop.click(m_recorder + QPoint(8, 4)); // the mouse hides nothing of what is looked at
        ASSERT_TRUE(soon([this] { return isRecording(); }));
        desktop.key(keys);
        ASSERT_TRUE(soon([this] { return !isRecording(); }));
    }

    QRect window;
    QPoint m_recorder;
};

ON_EVERY_DESKTOP(PreferencesTest);

} // namespace

TEST_P(PreferencesTest, LimitsAndIntervalAreStoredAndALimitTakesEffectInTheRunningProgram) {
    launch();
    openPreferences();
    EXPECT_NEAR(window.width(), 680, GetParam() == DesktopKind::KWin ? 10 : 0); // which counts the frame
    EXPECT_GE(window.height(), 460);
    EXPECT_NEAR(window.center().x(), 640, 2);

    // The first field has the keyboard. Each stored value is the proof that the key before arrived.
    EXPECT_TRUE(soon([this] { // a compositor may count it before it does so itself
        desktop.key("ctrl+a 2");
        return soon([this] { return setting("maxItemCount") == 2; }, std::chrono::seconds(2));
    }));
    for (const char* text : {"one", "two", "three"}) {
        record(text);
    }
    EXPECT_TRUE(soon([this] { return database.rows().size() == 2; })); // trimmed right after storing
    desktop.key("Tab 7");
    EXPECT_TRUE(soonSet("maxRetentionDays", 7));
    desktop.key("Tab End");
    EXPECT_TRUE(soonSet("clipboardPollingInterval", 5));
}

TEST_P(PreferencesTest, EveryKindOfCombinationIsRecordedAndRegisteredAtOnce) {
    launch();
    openPreferences();
    // Hidden, it does not cover the recorder. Where it has a layer of its own, it makes room by itself.
    ASSERT_TRUE(isX11() ? soonToggled("super+shift+v") : soonHidden());
    m_recorder = recorder();
    const struct {
        QByteArray keys;
        int keyCode, modifiers;
        QByteArray toggles; // zeros stand for the default
    } cases[] = {
        {"super+shift+k", 40, 768, "super+shift+k"},
        {"super+shift+v", 9, 768, "super+shift+v"}, // which until then is the compositor's
        {"ctrl+alt+super+shift+F1", 122, 6912, "ctrl+alt+super+shift+F1"},
        {"Tab", 48, 0, "super+shift+Tab"},
    };
    for (const auto& [keys, keyCode, modifiers, toggles] : cases) {
        SCOPED_TRACE(keys.toStdString());
        recordShortcut(keys);
        ASSERT_TRUE(soonSet("hotkeyKeyCode", keyCode));
        ASSERT_TRUE(soonSet("hotkeyModifiers", modifiers));
        // sway's keys are its own.
        const QByteArray toggle = GetParam() == DesktopKind::Sway ? "super+shift+v" : toggles;
        ASSERT_TRUE(soonToggled(toggle));
        ASSERT_TRUE(soonToggled(toggle));
        ASSERT_TRUE(soon([this] { return isInFront("Corvatto Preferences"); }));
    }

    if (!isX11()) {
        return;
    }
    // One that was taken and is free again may be recorded although it is stored already.
    {
        XClient other(desktop.environment().value(QStringLiteral("DISPLAY")).toUtf8());
        ASSERT_TRUE(other.grabKey(56, XCB_MOD_MASK_1));
        setSetting("hotkeyKeyCode", 11);     // B
        setSetting("hotkeyModifiers", 2048); // option
        ASSERT_TRUE(soonPrinted("[HotKeyManager] ERROR: RegisterEventHotKey failed with status -9878"));
    }
    recordShortcut("alt+b");
    EXPECT_TRUE(soonToggled("alt+b"));
    EXPECT_TRUE(soonToggled("alt+b"));
    ASSERT_TRUE(soon([this] { return isInFront("Corvatto Preferences"); }));
}

} // namespace corvatto::test
