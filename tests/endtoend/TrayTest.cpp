// The status item in trays of both kinds, which come late, and go.
#include "EndToEndTest.h"
#include "TrayHost.h"

namespace corvatto::test {

namespace {

class TrayTest : public DesktopTest {
protected:
    TrayTest() : DesktopTest({.hasSessionBus = true}) {}

    bool soonOpen(const QByteArray& title) {
        return soon([&] { return isInFront(title); });
    }
};

// With a session bus that nobody offers a tray on, and without one.
class TrayOfWindowsTest : public X11Test, public ::testing::WithParamInterface<bool> {
protected:
    TrayOfWindowsTest() : X11Test({.hasSessionBus = GetParam()}) {}
};

const QString showHistory = QStringLiteral("显示历史"), clearAll = QStringLiteral("清空所有历史"),
              openPreferences = QStringLiteral("偏好设置... (Control+,)"), about = QStringLiteral("关于"),
              quit = QStringLiteral("退出 (Control+Q)");

ON_EVERY_DESKTOP(TrayTest);

INSTANTIATE_TEST_SUITE_P(, TrayOfWindowsTest, ::testing::Bool());

} // namespace

TEST_P(TrayTest, TheMenuOnTheBusDoesAllThatItSays) {
    database.fill(numberedEntries());
    launch();
    // First the watcher, then the host; later both anew, as when a desktop's shell restarts.
    auto tray = std::make_unique<TrayHost>(desktop.sessionBus());
    EXPECT_FALSE(soon([&] { return tray->hasItem(); }, std::chrono::milliseconds(300)));
    tray->come();
    ASSERT_TRUE(soon([&] { return tray->hasItem(); }));
    // The answer comes after all that the item sends to announce itself, which Qt complains of if it is lost.
    EXPECT_FALSE(tray->menu().isEmpty());
    tray.reset();
    tray = std::make_unique<TrayHost>(desktop.sessionBus());
    tray->come();
    ASSERT_TRUE(soon([&] { return tray->hasItem(); }));

    EXPECT_THAT(tray->iconSizes(), ::testing::IsSupersetOf({QSize(16, 16), QSize(22, 22), QSize(48, 48)}));
    EXPECT_EQ(tray->menu(), QStringList({showHistory, {}, clearAll, {}, openPreferences, about, {}, quit}));
    hidePanel();
    // Opens the menu at the mouse where a program knows of it, and the panel elsewhere.
    const auto atMouse = [this] {
        return desktop.picture({640, 550, 100, 100});
    };
    const QImage before = atMouse();
    tray->click();
    EXPECT_TRUE(soon([&] { return isX11() ? atMouse() != before : panelHasKeyboard(); }));
    desktop.key("Escape");
    EXPECT_TRUE(soon([&] { return isX11() ? atMouse() == before : panelRect().isEmpty(); }));
    tray->choose(showHistory);
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));

    tray->choose(openPreferences);
    EXPECT_TRUE(soonOpen("Corvatto Preferences"));
    for (const auto& [answer, left] : {std::pair("Escape", 17), {"Return", 0}}) {
        tray->choose(clearAll);
        tray->choose(clearAll); // and is asked no second time
        ASSERT_TRUE(soonOpen("Corvatto"));
        desktop.key(answer);
        EXPECT_TRUE(soon([this] { return !isInFront("Corvatto"); }));
        EXPECT_TRUE(soon([&] { return database.rows().size() == left; }));
    }
    tray->choose(about);
    EXPECT_TRUE(soonOpen("Corvatto"));
    tray->choose(quit); // under the alert
    EXPECT_EQ(program->exitStatus(), 0);
    tray.reset(); // Qt complains of one that goes while an item announces itself
    launch();     // for the end that every test checks
}

TEST_P(TrayOfWindowsTest, MayStartLaterAndAnew) {
    launch();
    hidePanel();
    const QByteArray configuration = desktop.writeFile(
        "tint2rc", "panel_items = S\npanel_size = 120 32\npanel_position = top right horizontal\n"
                   "systray_padding = 4 4 4\nsystray_icon_size = 22\n");
    for (int start = 0; start < 2; ++start) {
        Process tray("tint2", {"-c", configuration}, desktop.environment(), true);
        EXPECT_TRUE(soon([this] { return x.visibleWindows(program->pid()).size() == 1; })) << start;
        EXPECT_EQ(tray.stop(), 0);
        EXPECT_TRUE(soon([this] { return x.visibleWindows(program->pid()).isEmpty(); })) << start;
    }
}

} // namespace corvatto::test
