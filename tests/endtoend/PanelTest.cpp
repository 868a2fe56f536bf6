// The panel under a window manager: where it appears, who has the keyboard, and what each key and click does.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

const TestDesktop::Options withTaskBar{QSize(1280, 1060), 60};

class PanelTest : public DesktopTest {
protected:
    PanelTest() : DesktopTest(withTaskBar) {}

    // What is on the clipboard once the panel has hidden after a copy; nothing when it stays.
    std::optional<QByteArray> copiedBack() { return soonHidden() ? paste() : std::nullopt; }
};

ON_EVERY_DESKTOP(PanelTest);

class XPanelTest : public X11Test {
protected:
    XPanelTest() : X11Test(withTaskBar) {}

    bool soonFloating() {
        return soon([this] {
            const auto states = x.states(panel());
            return states.contains("_NET_WM_STATE_ABOVE") && states.contains("_NET_WM_STATE_SKIP_TASKBAR") &&
                   states.contains("_NET_WM_STATE_SKIP_PAGER") &&
                   x.cardinal(panel(), "_NET_WM_DESKTOP") == 0xffffffff;
        });
    }
};

} // namespace

TEST_F(XPanelTest, LiesAlongTheBottomOfWhatIsFreeAboveOtherWindowsOnEveryDesktop) {
    launch();
    EXPECT_TRUE(soon([this] { return panelRect() == QRect(0, 580, 1280, 420); }));
    EXPECT_EQ(x.windowClass(panel()), "Corvatto");
    EXPECT_TRUE(soonFloating());
    const auto other = x.createWindow({0, 0, 1280, 1100}, "Other");
    const auto otherIsShown = [this] {
        return desktop.pixel({640, 300}) == QColor(Qt::magenta);
    };
    ASSERT_TRUE(soon([&] { return x.activeWindow() == other && otherIsShown(); }));
    EXPECT_TRUE(soon([this] { return x.topWindow() == panel() && isPanelPainted(); }));
    x.switchDesktop(1);
    ASSERT_TRUE(soon([&] { return !otherIsShown(); }));
    EXPECT_TRUE(soon([this] { return isPanelPainted(); }));
    x.switchDesktop(0);
    ASSERT_TRUE(soon(otherIsShown));
    x.click(panelRect().topLeft() + QPoint(600, 60));
    ASSERT_TRUE(soon([this] { return panelHasKeyboard(); }));
    hidePanel();
    showPanel();
    EXPECT_EQ(panelRect(), QRect(0, 580, 1280, 420));
    EXPECT_TRUE(soonFloating());

    // A busy window manager hears of the hiding, and takes the window's states away, when it is shown again.
    desktop.suspendWindowManager();
    desktop.key("Escape");
    EXPECT_TRUE(soonHidden());
    desktop.key("super+shift+v");
    EXPECT_TRUE(soon([this] { return setting("corvattoHistoryWindowOpenCount") == 3; }));
    desktop.resumeWindowManager();
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    EXPECT_TRUE(soonFloating());
}

TEST_P(PanelTest, CoversAFullScreenWindowThatThenHasTheKeyboardAgain) {
    database.fill({"newest", "second"});
    launch();
    hidePanel();
    desktop.openWindow("Falcon");
    const auto soonInFront = [this](const QByteArray& application) {
        return soon([&] { return desktop.windowInFront(program->pid()).application == application; });
    };
    constexpr int presses = 21;
    for (int i = 0; i < presses; ++i) { // faster than a window is shown
        desktop.key("super+shift+v");
    }
    ASSERT_TRUE(soon([this] { return setting("corvattoHistoryWindowOpenCount") == 1 + (presses + 1) / 2; }));
    ASSERT_TRUE(soon([this] { return panelHasKeyboard() && isPanelPainted(); }));
    EXPECT_EQ(panelRect(), QRect(0, 580, 1280, 420));
    EXPECT_NE(desktop.windowInFront(program->pid()).application, "Falcon");
    hidePanel();
    EXPECT_TRUE(soonInFront("Falcon"));
    showPanel();
    desktop.key("Return");
    EXPECT_EQ(copiedBack(), "second");
    EXPECT_TRUE(soonInFront("Falcon"));
}

TEST_P(PanelTest, TheShortcutTogglesAndAShowingStartsAfresh) {
    database.fill({"newest", "second"});
    launch();
    desktop.key("super+shift+v");
    EXPECT_TRUE(soonHidden());
    desktop.key("Caps_Lock"); // lock keys do not matter
    showPanel();
    desktop.key("Caps_Lock");
    desktop.type("nothing like it");
    desktop.key("Return"); // nothing is selected: the panel stays
    hidePanel();
    EXPECT_TRUE(desktop.clipboardIsEmpty());
    showPanel();
    desktop.key("Return"); // the list is fresh, whatever the field says
    EXPECT_EQ(copiedBack(), "second");
}

TEST_P(PanelTest, EveryKeyDoesItsPart) {
    const struct {
        const char* keys;
        QByteArray copied;
    } cases[] = {
        {"Return", "entry 1"},
        {"Left Left Left Return", "entry 0"},
        {"Down Down Up Return", "entry 2"},
        {"y space 1 Right Return", "entry 10"}, // a search finds the newest first
        {"7 BackSpace Return", "entry 1"},      // an emptied field is no search
        {"1 Left 2 Return", "entry 12"},        // arrows never move the text cursor
        {"super+3", "entry 2"},
        {"ctrl+6", "entry 5"},
        {"super+9", "entry 8"},
        {"ctrl+c", "entry 1"}, // nothing is selected in the field
        {"super+c", "entry 1"},
        {"1 6 ctrl+2 ctrl+0 ctrl+1", "entry 16"}, // no such entry, no such key
    };
    database.fill(numberedEntries());
    launch();
    for (const auto& [keys, copied] : cases) {
        SCOPED_TRACE(keys);
        desktop.key(keys);
        ASSERT_EQ(copiedBack(), copied);
        EXPECT_TRUE(soonStored(copied, 2));
        database.fill(numberedEntries());
        showPanel();
        desktop.key("ctrl+a BackSpace"); // the field has kept its text
    }
}

TEST_P(PanelTest, ACaptureAppearsInTheOpenPanel) {
    launch();
    const auto isWhite = [this](int index) {
        return desktop.pixel(card(index)) == QColor(Qt::white);
    };
    EXPECT_FALSE(isWhite(0));
    copyText("first");
    EXPECT_TRUE(soon([&] { return isWhite(0) && !isWhite(1); }));
    // Equal times would leave the order to chance.
    ASSERT_TRUE(soonStored("first"));
    database.execute("UPDATE clipboard_items SET last_copied_at = last_copied_at - 60");
    copyText("second");
    EXPECT_TRUE(soon([&] { return isWhite(1); }));
    desktop.key("Return");
    EXPECT_EQ(copiedBack(), "first");
}

TEST_P(PanelTest, TheMouseSelectsCopiesAndOpensTheMenu) {
    database.fill(numberedEntries());
    launch();
    desktop.click(card(2), 2);
    EXPECT_EQ(copiedBack(), "entry 2");

    database.fill(numberedEntries());
    showPanel();
    // Below the mouse in the middle of a card there is nothing but white, or the menu.
    const auto hasMenu = [this](int index) {
        QImage white(80, 50, QImage::Format_RGB32);
        white.fill(Qt::white);
        return desktop.picture({card(index) + QPoint(25, 25), white.size()}) != white;
    };
    const auto openMenuOf = [&](int index) {
        desktop.click(card(index), 1, 3);
        return soon([&] { return hasMenu(index); });
    };
    ASSERT_TRUE(openMenuOf(0));
    desktop.key("Escape"); // closes the menu only
    EXPECT_TRUE(soon([&] { return !hasMenu(0); }));
    EXPECT_FALSE(panelRect().isEmpty());
    ASSERT_TRUE(openMenuOf(1));
    desktop.key("super+shift+v"); // arrives in spite of the menu, and closes both
    EXPECT_TRUE(soonHidden());
    showPanel();
    ASSERT_TRUE(openMenuOf(2));
    desktop.key("Down Return");
    EXPECT_EQ(copiedBack(), "entry 2");
}

} // namespace corvatto::test
