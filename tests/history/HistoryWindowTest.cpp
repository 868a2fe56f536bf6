#include "HistoryTest.h"

#include "history/FloatingPanel.h"
#include "history/HistoryView.h"
#include "history/HistoryWindowController.h"
#include "history/SearchField.h"
#include "platform/WindowPresenter.h"
#include "settings/SettingsKeys.h"
#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/FakeDesktop.h"
#include "support/FakeRelativeTimes.h"
#include "update/UpdateChecker.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

#include <limits>

namespace corvatto {
namespace {

// A window system that shows what it is asked to show.
class FakeWindowPresenter : public WindowPresenter {
public:
    bool hasScreen = true;

    void becomeAccessory() override {}
    bool showPanel(QWidget& panel) override {
        if (hasScreen) {
            panel.show();
            panel.activateWindow();
        }
        return hasScreen;
    }
    void hidePanel(QWidget& panel) override { panel.hide(); }
    void activate(QWidget& window) override { window.activateWindow(); }
    void setTakesAllKeys(QWidget& /*window*/, bool /*takes*/) override {}
};

class Window : public test::HistoryTest {
protected:
    FakeWindowPresenter presenter;
    test::FakeRelativeTimes relativeTimes;
    HistoryWindowController controller{viewModel, pasteboard, presenter, defaults, relativeTimes};

    FloatingPanel& panel() { return *controller.window(); }
    SearchField& field() { return panel().findChild<HistoryView*>()->searchField(); }
    void show() {
        controller.show();
        ASSERT_TRUE(test::eventually([this] { return panel().isKeyWindow() && field().hasFocus(); }));
    }
    // Key presses that arrive from the window system at the window with the keyboard.
    static void press(const QKeySequence& keys) { QTest::keySequence(QGuiApplication::focusWindow(), keys); }
};

TEST_F(Window, TheKeyboardMayBeAnywhereInThePanelButNotInOtherWindows) {
    record({u"B"_qs, u"A"_qs});
    show();
    field().setText(u"B"_qs);
    field().selectAll();
    press(u"Meta+C"_qs); // the field itself knows only Control
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"B");
    EXPECT_EQ(pasteboard.count, 1);
    field().clearFocus();
    press(u"Shift+Return"_qs);
    EXPECT_EQ(newest().copyCount, 2) << "copied once";
    EXPECT_FALSE(panel().isVisible());

    show();
    const qint64 count = pasteboard.count;
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    press(u"Esc, Ctrl+1, Return"_qs);
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(pasteboard.count, count);
    panel().close(); // by the window manager
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(Window, KeysBelongToTheInputMethodWhileItComposes) {
    record({u"历史"_qs, u"B"_qs, u"A"_qs});
    show();
    QInputMethodEvent composing(u"li shi"_qs, {});
    QApplication::sendEvent(&field(), &composing);
    press(u"Esc, Down, Ctrl+1"_qs);
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(selected(), u"B");

    QInputMethodEvent committed;
    committed.setCommitString(u"历史"_qs);
    QApplication::sendEvent(&field(), &committed);
    EXPECT_EQ(selected(), u"历史");
    QApplication::sendEvent(&field(), &composing);
    field().clearFocus(); // the composition ends with it, though the input method sends nothing
    press(u"Esc"_qs);
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(Window, EveryHundredthOpeningMayCheckForUpdates) {
    test::FakeDesktop desktop;
    UpdateChecker checker({defaults, desktop, desktop}, {}, QUrl(), {});
    UpdateChecker::install(checker);
    const auto now = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
    const auto openings = [this] {
        return defaults.integer(SettingsKeys::corvattoHistoryWindowOpenCount);
    };
    for (const auto& [opening, secondsSinceCheck, checks] :
         {std::tuple(99, 1e6, 0), {100, 1e6, 1}, {200, 86'400, 1}, {300, 86'340, 0}, {300, -1e6, 0}}) {
        defaults.setInteger(SettingsKeys::corvattoHistoryWindowOpenCount, opening - 1);
        defaults.setNumber(SettingsKeys::corvattoLastUpdateCheckAt, now - secondsSinceCheck);
        test::CapturedOutput output;
        controller.show();
        EXPECT_EQ(openings(), opening - 1) << "nothing waits for the disk before the panel is painted";
        EXPECT_TRUE(test::eventually([&, expected = opening] { return openings() == expected; }));
        panel().hide();
        // A check of nothing fails as soon as the event loop runs, and says so in print only.
        test::eventually([&] { return !output.text().isEmpty(); }, std::chrono::milliseconds(100));
        EXPECT_EQ(output.text().count("ERROR (manual=false)"), checks) << opening;
    }
    EXPECT_TRUE(desktop.shown.empty());
    presenter.hasScreen = false;
    controller.show(); // nowhere
    presenter.hasScreen = true;
    controller.show();
    controller.show(); // visible already, and counted all the same
    EXPECT_TRUE(test::eventually([&] { return openings() > 301; }));
    EXPECT_EQ(openings(), 302);
    defaults.setInteger(SettingsKeys::corvattoHistoryWindowOpenCount, std::numeric_limits<qint64>::max());
    controller.show();
    EXPECT_TRUE(test::eventually([&] { return openings() == 1; })) << "no number follows";
}

} // namespace
} // namespace corvatto
