// What changes under a program that runs for months: screens, keyboard, window manager, and its own sleep.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class DesktopChangeTest : public X11Test {
protected:
    // The panel lies there and answers.
    void expectPanelAt(const QRect& expected) {
        EXPECT_TRUE(soon([&] { return x.geometry(panel()) == expected; }))
            << x.geometry(panel()).y() << ' ' << x.geometry(panel()).width();
        EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    }
};

// The fixture's own end, of a program that runs, is not what is wanted here.
class DesktopEndTest : public DesktopTest {
    void TearDown() override {}
};

ON_EVERY_DESKTOP(DesktopEndTest);

using DesktopSleepTest = DesktopTest;
ON_EVERY_DESKTOP(DesktopSleepTest);

} // namespace

TEST_F(DesktopChangeTest, ScreensAreResizedAddedAndRemoved) {
    run("xrandr --newmode small 50 800 810 820 830 800 810 820 830");
    run("xrandr --addmode screen small");
    launch();
    run("xrandr --output screen --mode small");
    expectPanelAt({0, 464, 800, 336});
    run("xrandr --output screen --mode 1280x1100");
    expectPanelAt({0, 660, 1280, 440});
    x.click({1000, 100});
    run("xrandr --setmonitor left 640/170x1100/291+0+0 screen");
    run("xrandr --setmonitor right 640/170x1100/291+640+0 none");
    expectPanelAt({0, 660, 640, 440}); // where it was shown
    hidePanel();
    showPanel();
    expectPanelAt({640, 660, 640, 440});
    run("xrandr --delmonitor right");
    expectPanelAt({0, 660, 640, 440});
    run("xrandr --delmonitor left");
    expectPanelAt({0, 660, 1280, 440});
}

TEST_F(DesktopChangeTest, TheShortcutStaysOnItsKeyInAnotherLayout) {
    launch();
    for (const auto& [layout, key] : {std::pair{"dvorak", "k"}, {"ru", "Cyrillic_em"}, {"us", "v"}}) {
        SCOPED_TRACE(layout);
        run(QByteArray("setxkbmap -layout ") +
            (layout == QByteArray("dvorak") ? "us -variant dvorak" : layout));
        EXPECT_TRUE(soonToggled(QByteArray("super+shift+") + key));
    }
}

TEST_F(DesktopChangeTest, TheShortcutFollowsItsModifierToAnotherBit) {
    launch();
    hidePanel();
    run("xmodmap " + desktop.writeFile("modifiers", "remove mod4 = Super_L\nadd mod3 = Super_L\n"));
    EXPECT_TRUE(soonToggled("super+shift+v"));
    run("setxkbmap -option altwin:swap_lalt_lwin"); // a new keyboard, with Super where Alt was
    EXPECT_TRUE(soonToggled("super+shift+v"));
    run("setxkbmap -option");
    EXPECT_TRUE(soonToggled("super+shift+v"));
}

TEST_F(DesktopChangeTest, TheWindowManagerStartsAnew) {
    launch();
    const QRect place = x.geometry(panel());
    desktop.startWindowManager(); // the panel is shown
    EXPECT_TRUE(soon([&] { return x.geometry(panel()) == place; }));
    EXPECT_TRUE(soon([this] { return x.states(panel()).contains("_NET_WM_STATE_ABOVE"); }));
    x.click(card(0) - QPoint(0, 250)); // it may have to be given the keyboard
    EXPECT_TRUE(soon([this] { return panelHasKeyboard(); }));
    hidePanel();
    // One that ends before it has heard of the hiding shows the window again.
    ASSERT_TRUE(soon([this] { return x.topWindow() == XCB_NONE; }));
    desktop.startWindowManager(); // the panel is hidden
    showPanel();
    expectPanelAt(place);
    EXPECT_TRUE(soon([this] { return x.states(panel()).contains("_NET_WM_STATE_ABOVE"); }));
}

TEST_P(DesktopSleepTest, WhatIsCopiedLastBeforeItWakesIsRecorded) {
    launch();
    kill(static_cast<pid_t>(program->pid()), SIGSTOP);
    for (const char* text : {"asleep", "fast asleep", "nearly awake"}) {
        copyText(text);
    }
    kill(static_cast<pid_t>(program->pid()), SIGCONT);
    EXPECT_TRUE(soonStored("nearly awake"));
    hidePanel();
}

TEST_P(DesktopEndTest, WithoutTheServerTheProgramEndsWithALineAndItsHistory) {
    launch();
    record("before the end");
    desktop.stopServer();
    EXPECT_EQ(program->exitStatus(), 1);
    EXPECT_TRUE(program->hasPrinted(isX11() ? "[CorvattoApp] ERROR: The X server is gone."
                                            : "[CorvattoApp] ERROR: The Wayland compositor is gone."));
    EXPECT_EQ(database.rows().size(), 1);
    EXPECT_EQ(database.rows().first().content, "before the end");
}

} // namespace corvatto::test
