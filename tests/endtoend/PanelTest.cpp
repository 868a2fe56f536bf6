// The panel under a window manager: where it appears, who has the keyboard, and what each key and click does.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class PanelTest : public EndToEndTest {
protected:
    // What is on the clipboard once the panel has hidden after a copy; nothing when it stays.
    std::optional<QByteArray> copiedBack() { return soonHidden() ? paste() : std::nullopt; }

    // Which of the unscrolled cards has the border of the selection, at its left edge and above its picture.
    int selectedCard() {
        const QImage screen = x.screenshot();
        const auto border = [&](int index) {
            return screen.pixelColor(card(index) - QPoint(160 - 1, 130));
        };
        for (int i = 0; i < 3; ++i) {
            if (border(i).lightness() < 200) { // the others have a light grey line, one pixel wide
                return i;
            }
        }
        return -1;
    }

    qsizetype windowCount() { return x.visibleWindows(program->pid()).size(); } // with menus and alerts
    bool soonFloating() {
        return soon([this] {
            const auto states = x.states(panel());
            return states.contains("_NET_WM_STATE_ABOVE") && states.contains("_NET_WM_STATE_SKIP_TASKBAR") &&
                   states.contains("_NET_WM_STATE_SKIP_PAGER") &&
                   x.cardinal(panel(), "_NET_WM_DESKTOP") == 0xffffffff;
        });
    }

    QRect panelRect() { return x.geometry(panel()); }
    bool isPanelPainted() {
        return x.pixel(panelRect().bottomRight() - QPoint(5, 5)) == QColor(229, 229, 229);
    }
};

class PanelAboveTaskBarTest : public EndToEndTest {
protected:
    PanelAboveTaskBarTest() : EndToEndTest({QSize(1280, 1060), 60}) {}
};

} // namespace

TEST_F(PanelAboveTaskBarTest, LiesAlongTheBottomOfWhatIsFree) {
    launch();
    EXPECT_TRUE(soon([this] { return x.geometry(panel()) == QRect(0, 580, 1280, 420); }));
    hidePanel();
    showPanel();
    EXPECT_EQ(x.geometry(panel()), QRect(0, 580, 1280, 420));
}

TEST_F(PanelTest, FloatsAboveOtherWindowsOnEveryDesktop) {
    launch();
    EXPECT_EQ(x.windowClass(panel()), "Corvatto");
    EXPECT_TRUE(soonFloating());
    const auto other = x.createWindow({0, 0, 1280, 1100}, "Other");
    const auto otherIsShown = [this] {
        return x.pixel({640, 300}) == QColor(Qt::magenta);
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
    EXPECT_TRUE(soonFloating());

    // A busy window manager hears of the hiding, and takes the window's states away, when it is shown again.
    desktop.suspendWindowManager();
    x.key("Escape");
    EXPECT_TRUE(soonHidden());
    x.key("super+shift+v");
    EXPECT_TRUE(soon([this] { return setting("corvattoHistoryWindowOpenCount") == 3; }));
    desktop.resumeWindowManager();
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    EXPECT_TRUE(soonFloating());
}

TEST_F(PanelTest, TheShortcutTogglesAndAShowingStartsAfresh) {
    database.fill({{"newest"}, {"second"}});
    launch();
    x.key("super+shift+v");
    EXPECT_TRUE(soonHidden());
    x.key("Caps_Lock"); // lock keys do not matter
    showPanel();
    x.key("Caps_Lock");
    x.type("nothing like it");
    x.key("Return"); // nothing is selected: the panel stays
    hidePanel();
    EXPECT_EQ(x.clipboardOwner(), XCB_NONE);
    showPanel();
    x.key("Return"); // the list is fresh, whatever the field says
    EXPECT_EQ(copiedBack(), "second");
}

TEST_F(PanelTest, EveryKeyDoesItsPart) {
    const struct {
        const char* keys;
        QByteArray copied;
    } cases[] = {
        {"Return", "entry 1"},
        {"Right Return", "entry 2"},
        {"Left Left Left Return", "entry 0"},
        {"Down Down Up Return", "entry 2"},
        {"T R Y space 1 Return", "entry 1"}, // a search finds the newest first, in either case
        {"y space 1 Right Return", "entry 10"},
        {"e percent 1 underscore Return", "entry 10"}, // wildcards
        {"7 BackSpace Return", "entry 1"},             // an emptied field is no search
        {"1 Left 2 Return", "entry 12"},               // arrows never move the text cursor
        {"ctrl+1", "entry 0"},
        {"super+3", "entry 2"},
        {"super+5", "entry 4"},
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
        x.key(keys);
        ASSERT_EQ(copiedBack(), copied);
        EXPECT_TRUE(soonStored(copied, 2));
        database.fill(numberedEntries());
        showPanel();
        x.key("ctrl+a BackSpace"); // the field has kept its text
    }
}

TEST_F(PanelTest, TheSearchFieldCopiesLikeAnyOther) {
    launch();
    x.type("words of mine");
    x.key("ctrl+a ctrl+c");
    EXPECT_TRUE(soonStored("words of mine")); // an entry like any other copy's
    EXPECT_TRUE(panelHasKeyboard());
    EXPECT_EQ(paste(), "words of mine");
}

TEST_F(PanelTest, ACaptureAppearsInTheOpenPanel) {
    launch();
    const auto isWhite = [this](int index) {
        return x.pixel(card(index)) == QColor(Qt::white);
    };
    EXPECT_FALSE(isWhite(0));
    copyText("first");
    EXPECT_TRUE(soon([&] { return isWhite(0) && !isWhite(1); }));
    // Equal times would leave the order to chance.
    ASSERT_TRUE(soonStored("first"));
    database.execute("UPDATE clipboard_items SET last_copied_at = last_copied_at - 60");
    copyText("second");
    EXPECT_TRUE(soon([&] { return isWhite(1) && selectedCard() == 1; }));
    x.key("Left");
    EXPECT_TRUE(soon([this] { return selectedCard() == 0; }));
}

TEST_F(PanelTest, TheMouseSelectsCopiesAndOpensTheMenu) {
    database.fill(numberedEntries());
    launch();
    x.click(card(2), 2);
    EXPECT_EQ(copiedBack(), "entry 2");

    database.fill(numberedEntries());
    showPanel();
    const auto openMenuOf = [this](int index) {
        x.click(card(index), 1, 3);
        return soon([this] { return windowCount() == 2; });
    };
    ASSERT_TRUE(openMenuOf(0));
    x.key("Escape"); // closes the menu only
    EXPECT_TRUE(soon([this] { return windowCount() == 1; }));
    ASSERT_TRUE(openMenuOf(1));
    x.key("super+shift+v"); // arrives in spite of the menu, and closes both
    EXPECT_TRUE(soon([this] { return windowCount() == 0; }));
    showPanel();
    ASSERT_TRUE(openMenuOf(2));
    x.key("Down Return");
    EXPECT_EQ(copiedBack(), "entry 2");
}

} // namespace corvatto::test
