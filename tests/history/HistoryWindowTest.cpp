#include "HistoryTest.h"

#include "history/FloatingPanel.h"
#include "history/HistoryView.h"
#include "history/HistoryWindowController.h"
#include "history/SearchField.h"
#include "settings/SettingsKeys.h"
#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/FakeAlerts.h"
#include "support/FakeRelativeTimes.h"
#include "support/FakeWindowPresenter.h"
#include "support/FakeWorkspace.h"
#include "update/UpdateChecker.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

namespace corvatto {
namespace {

class Window : public test::HistoryTest {
protected:
    test::FakeWindowPresenter presenter;
    test::FakeRelativeTimes relativeTimes;
    HistoryWindowController controller{viewModel, pasteboard, presenter, defaults, relativeTimes};

    void SetUp() override {} // the panel is what is dismissed
    FloatingPanel& panel() { return *controller.window(); }
    SearchField& field() { return panel().findChild<HistoryView*>()->searchField(); }
    void show() {
        controller.show();
        ASSERT_TRUE(test::eventually([this] { return panel().isKeyWindow() && field().hasFocus(); }));
    }
    // A key press that arrives from the window system at the window with the keyboard.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QGuiApplication::focusWindow(), key, modifiers);
    }
};

TEST_F(Window, TheKeyboardMayBeAnywhereInThePanelButNotInOtherWindows) {
    record({"B", "A"});
    show();
    field().setText(QStringLiteral("B"));
    field().selectAll();
    press(Qt::Key_C, Qt::MetaModifier); // the field itself knows only Control
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"B");
    EXPECT_EQ(pasteboard.count, 1);
    field().clearFocus();
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(newest().copyCount, 2) << "copied once";
    EXPECT_FALSE(panel().isVisible());

    show();
    const qint64 count = pasteboard.count;
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    press(Qt::Key_Escape);
    press(Qt::Key_1, Qt::ControlModifier);
    press(Qt::Key_Return);
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(pasteboard.count, count);
    panel().close(); // by the window manager
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(Window, KeysBelongToTheInputMethodWhileItComposes) {
    record({"历史", "B", "A"});
    show();
    QInputMethodEvent composing(QStringLiteral("li shi"), {});
    QApplication::sendEvent(&field(), &composing);
    const QString before = selected();
    press(Qt::Key_Escape);
    press(Qt::Key_Down);
    press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(selected(), before);
    EXPECT_EQ(shown(), u"A B 历史") << "nothing is searched yet";

    QInputMethodEvent committed;
    committed.setCommitString(QStringLiteral("历史"));
    QApplication::sendEvent(&field(), &committed);
    EXPECT_EQ(shown(), u"历史");
    QApplication::sendEvent(&field(), &composing);
    field().clearFocus(); // the composition ends with it, though the input method sends nothing
    press(Qt::Key_Escape);
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(Window, EveryHundredthOpeningMayCheckForUpdates) {
    test::FakeAlerts alerts;
    test::FakeWorkspace workspace;
    UpdateChecker checker({defaults, alerts, workspace}, QUrl(), QStringLiteral("1.0"));
    UpdateChecker::install(checker);
    const auto now = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
    struct Case {
        qint64 opening;
        double secondsSinceCheck;
        int checks;
    };
    for (const Case& at : {Case{1, 1e6, 0}, Case{99, 1e6, 0}, Case{100, 1e6, 1}, Case{200, 86'400, 1},
                           Case{300, 86'340, 0}, Case{300, -1e6, 0}}) { // a clock that was set back
        defaults.setInteger(SettingsKeys::corvattoHistoryWindowOpenCount, at.opening - 1);
        defaults.setNumber(SettingsKeys::corvattoLastUpdateCheckAt, now - at.secondsSinceCheck);
        test::CapturedOutput output;
        controller.show(); // visible already, from the second time on
        EXPECT_EQ(defaults.integer(SettingsKeys::corvattoHistoryWindowOpenCount), at.opening);
        // A check of nothing fails as soon as the event loop runs, and says so in print only.
        test::eventually([&] { return !output.text().isEmpty(); }, std::chrono::milliseconds(100));
        EXPECT_EQ(output.text().count("ERROR (manual=false)"), at.checks) << at.opening;
    }
    EXPECT_TRUE(alerts.shown.empty());
    presenter.hasScreen = false;
    controller.show();
    EXPECT_EQ(defaults.integer(SettingsKeys::corvattoHistoryWindowOpenCount), 300) << "shown nowhere";
}

} // namespace
} // namespace corvatto
