#include "platform/dbus/DesktopHotKeyCenter.h"
#include "FakePlasma.h"
#include "FakePortal.h"
#include "Keymap.h"
#include "base/ScopedEnvironment.h"
#include "support/CapturedOutput.h"
#include "support/FakeHotKeyCenter.h"

#include <csignal>

namespace corvatto::test {
namespace {

using DesktopHotKeyTest = BusTest;

TEST_F(DesktopHotKeyTest, PlasmaComesBeforeThePortal) {
    DesktopHotKeyCenter center(program->bus());
    FakePortal portal(address);
    {
        FakePlasma plasma(address);
        registerHotKey(center);
        ASSERT_TRUE(soonReported(noErr));
        plasma.press();
        EXPECT_TRUE(eventually([this] { return presses == 1; }));
        center.unregisterEventHotKey(hotKey);
        EXPECT_TRUE(eventually([&] { return plasma.set.isEmpty(); }));
        plasma.taken = {superShiftV};
        registerHotKey(center);
        ASSERT_TRUE(soonReported(eventHotKeyExistsErr));
        EXPECT_EQ(portal.calls, QStringList()) << "who says no is not passed over";
    }
    registerHotKey(center);
    ASSERT_TRUE(soonReported(noErr, portal.trigger));
    presses = 0;
    portal.press();
    EXPECT_TRUE(eventually([this] { return presses > 0; }));
    center.unregisterEventHotKey(hotKey);
    EXPECT_TRUE(eventually([&] { return portal.session.path().isEmpty(); }));
}

TEST_F(DesktopHotKeyTest, AsksAgainWhenTheKeyboardNamesTheKeysOtherwise) {
    FakePlasma plasma(address);
    DesktopHotKeyCenter center(program->bus());
    registerHotKey(center, 6, commandKey); // Z
    ASSERT_TRUE(soonReported(noErr));
    for (const auto& [layout, key] : {std::pair("de", Qt::Key_Y), std::pair("us", Qt::Key_Z)}) {
        center.setKeymap(keymap(layout));
        ASSERT_TRUE(soonReported(noErr));
        EXPECT_EQ(plasma.set, QList<int>{(Qt::META | key).toCombined()});
        plasma.calls.clear();
        presses = 0;
        center.setKeymap(keymap(layout)); // nothing new
        plasma.press();
        plasma.release();
        EXPECT_TRUE(eventually([this] { return presses == 1; }));
        EXPECT_EQ(plasma.calls, QStringList());
    }
}

TEST_F(DesktopHotKeyTest, OneLineSaysWhatToBindWhereNobodyGrantsShortcuts) {
    CapturedOutput output;
    DesktopHotKeyCenter center(program->bus());
    for (int i = 0; i < 2; ++i) {
        registerHotKey(center);
        EXPECT_TRUE(soonReported(hotKeysUnavailableErr));
    }
    QByteArray lines = "[HotKeyCenter] This desktop grants no global shortcuts. "
                       "Bind a key in its settings to: corvatto --toggle\n";
    EXPECT_EQ(output.text(), lines);
    const ScopedEnvironment sway{{"SWAYSOCK", "/run/sway"}};
    registerHotKey(center, 40, optionKey);
    EXPECT_TRUE(soonReported(hotKeysUnavailableErr));
    lines += "[HotKeyCenter] This desktop grants no global shortcuts. "
             "For its configuration: bindsym Mod1+k exec corvatto --toggle\n";
    EXPECT_EQ(output.text(), lines);
}

TEST_F(DesktopHotKeyTest, TheFallbackServesWithALineThatSaysHowFar) {
    CapturedOutput output;
    FakeHotKeyCenter x11;
    {
        DesktopHotKeyCenter center(program->bus(), &x11);
        registerHotKey(center);
        EXPECT_TRUE(eventually([&] { return x11.hotKeys.size() == 1; }));
        EXPECT_EQ(output.text(), "[HotKeyCenter] This desktop grants global shortcuts in X11 windows only. "
                                 "Bind a key in its settings to: corvatto --toggle\n");
        x11.hotKeys.begin()->second(noErr, {});
        EXPECT_TRUE(soonReported(noErr));
        x11.press();
        EXPECT_EQ(presses, 1);
    }
    EXPECT_TRUE(x11.hotKeys.empty());
    EXPECT_TRUE(x11.handlers.empty());
}

TEST_F(DesktopHotKeyTest, WaitsForNoBusThatHangs) {
    FakePlasma plasma(address);
    DesktopHotKeyCenter center(program->bus());
    kill(static_cast<pid_t>(daemon->pid()), SIGSTOP);
    QElapsedTimer elapsed;
    elapsed.start();
    registerHotKey(center);
    EXPECT_EQ(center.unregisterEventHotKey(hotKey), noErr);
    registerHotKey(center);
    QCoreApplication::processEvents();
    // A call that waits gives up after 25 seconds.
    EXPECT_LT(elapsed.elapsed(), 5000);
    kill(static_cast<pid_t>(daemon->pid()), SIGCONT);
    EXPECT_TRUE(soonReported(noErr));
    kill(static_cast<pid_t>(daemon->pid()), SIGSTOP);
    elapsed.start();
    center.unregisterEventHotKey(hotKey);
    EXPECT_LT(elapsed.elapsed(), 5000);
    kill(static_cast<pid_t>(daemon->pid()), SIGCONT);
    EXPECT_TRUE(eventually([&] { return plasma.set.isEmpty(); }));
}

} // namespace
} // namespace corvatto::test
