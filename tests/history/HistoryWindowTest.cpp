#include "HistoryTest.h"

#include "history/FloatingPanel.h"
#include "history/HistoryView.h"
#include "history/HistoryWindowController.h"
#include "history/SearchField.h"
#include "settings/SettingsKeys.h"
#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/FakeAlerts.h"
#include "support/FakePanelWindows.h"
#include "support/FakeRelativeTimes.h"
#include "support/FakeScreens.h"
#include "support/FakeWorkspace.h"
#include "update/UpdateChecker.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

namespace corvatto {
namespace {

constexpr Screen left{{0, 0, 1000, 1000}, {0, 30, 1000, 900}};
constexpr Screen right{{1000, 0, 800, 1200}, {1000, 0, 800, 1200}};

class Window : public test::HistoryTest {
protected:
    test::FakeScreens screens;
    test::FakePanelWindows panelWindows;
    test::FakeRelativeTimes relativeTimes;
    std::optional<HistoryWindowController> controller;

    void SetUp() override {
        screens.all = {left, right};
        screens.main = left;
        controller.emplace(viewModel, HistoryWindowController::Desktop{pasteboard, screens, panelWindows,
                                                                       defaults, relativeTimes});
    }
    FloatingPanel& panel() { return *controller->window(); }
    SearchField& field() { return panel().findChild<HistoryView*>()->searchField(); }
    void show() {
        controller->show();
        ASSERT_TRUE(test::eventually([this] { return panel().isKeyWindow() && field().hasFocus(); }));
    }
    // A key press that arrives from the window system at the window with the keyboard.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QGuiApplication::focusWindow(), key, modifiers);
    }
};

TEST_F(Window, ThePanelOpensAlongTheBottomOfTheScreenUnderTheMouse) {
    EXPECT_EQ(HistoryWindowController::panelFrame({0, 24, 1920, 1000}), QRect(0, 604, 1920, 420));
    EXPECT_EQ(HistoryWindowController::panelFrame({-800, 50, 800, 1200}), QRect(-800, 810, 800, 440));
    screens.all = {};
    screens.main = std::nullopt;
    controller->show(); // on nothing
    EXPECT_EQ(controller->window(), nullptr);
    EXPECT_EQ(defaults.integer(SettingsKeys::corvattoHistoryWindowOpenCount), 0);

    screens.all = {left, right};
    screens.main = left;
    struct Case {
        QPoint mouse;
        Screen expected;
    };
    for (const Case& at : {Case{{999, 999}, left}, Case{{1000, 0}, right}, Case{{1799, 1199}, right},
                           Case{{1800, 5}, left}, Case{{5, 1000}, left}, Case{{-1, 5}, left}}) {
        screens.mouse = at.mouse;
        controller->show();
        EXPECT_EQ(panel().geometry(), HistoryWindowController::panelFrame(at.expected.visibleFrame))
            << at.mouse.x() << ", " << at.mouse.y();
    }
    screens.main = std::nullopt;
    screens.all = {right, left};
    controller->show();
    EXPECT_EQ(panel().geometry().left(), 1000) << "the first when there is no main screen";
    EXPECT_EQ(panelWindows.preparedHidden, 1) << "prepared while hidden; it stayed visible since";
}

TEST_F(Window, AVisiblePanelStaysOnItsScreenAndOnAScreen) {
    const auto expectOn = [this](const QRect& visibleFrame) {
        screens.didChange();
        EXPECT_EQ(panel().geometry(), HistoryWindowController::panelFrame(visibleFrame));
    };
    screens.didChange(); // with no panel
    screens.mouse = {1500, 5};
    controller->show();
    screens.mouse = {5, 5};
    screens.all = {left, {{1000, 0, 1600, 900}, {1000, 0, 1600, 860}}};
    expectOn({1000, 0, 1600, 860});
    screens.all = {left};
    expectOn(left.visibleFrame);
    screens.all = {};
    screens.main = std::nullopt;
    expectOn(left.visibleFrame);
    panel().orderOut();
    screens.all = {right};
    expectOn(left.visibleFrame); // until it is shown
}

TEST_F(Window, HidingKeepsThePanelForTheNextTime) {
    show();
    const FloatingPanel* first = &panel();
    panel().close();
    EXPECT_FALSE(panel().isVisible());
    record({"B", "A"});
    show();
    EXPECT_EQ(&panel(), first);
    EXPECT_EQ(shown() + selected(), u"A BB") << "loaded afresh";
    viewModel.onDismiss();
    EXPECT_FALSE(panel().isVisible());
    controller.reset();
    viewModel.onDismiss(); // with nobody left to hide anything
}

TEST_F(Window, CommandAndADigitCopyTheEntryAtThatPlace) {
    recordNumbered(8);
    constexpr std::array digits{Qt::Key_1, Qt::Key_2, Qt::Key_3, Qt::Key_4, Qt::Key_5,
                                Qt::Key_6, Qt::Key_7, Qt::Key_8, Qt::Key_9};
    for (const auto& modifiers : {Qt::KeyboardModifiers(Qt::ControlModifier),
                                  Qt::MetaModifier | Qt::ShiftModifier | Qt::AltModifier}) {
        for (std::size_t i = 0; i < 8; ++i) {
            show();
            const ClipboardItem item = viewModel.items()[static_cast<qsizetype>(i)];
            press(digits[i], modifiers);
            EXPECT_EQ(pasteboard.content.text, item.content);
            EXPECT_EQ(copiesOf(item.id), item.copyCount + 1);
            EXPECT_FALSE(panel().isVisible());
        }
    }
    show();
    const qint64 count = pasteboard.count;
    press(Qt::Key_9, Qt::ControlModifier); // there are eight
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(field().text(), QString());
    press(Qt::Key_5);
    EXPECT_EQ(field().text(), u"5") << "without Command it is typed";
    EXPECT_EQ(pasteboard.count, count);
}

TEST_F(Window, ArrowsMoveTheSelectionAndNeverTheTypingPoint) {
    record({"1x", "2x", "3x"});
    show();
    QTest::keyClick(&field(), Qt::Key_X);
    EXPECT_EQ(selected(), u"3x");
    QString road;
    for (const auto key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Left, Qt::Key_Up}) {
        press(key, key == Qt::Key_Left ? Qt::ShiftModifier : Qt::NoModifier);
        road += selected();
    }
    EXPECT_EQ(road, u"2x1x2x3x");
    EXPECT_EQ(field().cursorPosition(), 1);
    EXPECT_FALSE(field().hasSelectedText());
    press(Qt::Key_Home);
    EXPECT_EQ(field().cursorPosition(), 0) << "other keys are the field's";
}

TEST_F(Window, ReturnCopiesOnceWhereverTheFocusIsAndEscapeHides) {
    record({"B", "A"});
    show();
    const qint64 id = *viewModel.selectedItemId();
    press(Qt::Key_Return);
    EXPECT_EQ(copiesOf(id), 2);
    EXPECT_FALSE(panel().isVisible());

    show();
    const qint64 other = *viewModel.selectedItemId();
    field().clearFocus();
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(copiesOf(other), 2);
    EXPECT_FALSE(panel().isVisible());

    show();
    press(Qt::Key_Escape, Qt::AltModifier);
    EXPECT_FALSE(panel().isVisible());
    EXPECT_EQ(copiesOf(id) + copiesOf(other), 4);
}

TEST_F(Window, CommandCCopiesTheFieldsSelectionBeforeTheHistorys) {
    record({"Cc", "cc"});
    for (const auto modifier : {Qt::ControlModifier, Qt::MetaModifier}) {
        show();
        field().setText(QStringLiteral("cc"));
        field().selectAll();
        const qint64 count = pasteboard.count;
        QGuiApplication::clipboard()->clear();
        press(Qt::Key_C, modifier);
        EXPECT_EQ(QGuiApplication::clipboard()->text(), u"cc");
        EXPECT_TRUE(panel().isVisible());
        EXPECT_EQ(pasteboard.count, count);

        field().deselect();
        const QString expected = selected();
        press(Qt::Key_C, modifier);
        EXPECT_EQ(pasteboard.content.text, expected);
        EXPECT_FALSE(panel().isVisible());
    }
    show();
    field().clear();
    press(Qt::Key_C);
    EXPECT_EQ(field().text(), u"c");
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
    press(Qt::Key_Escape);
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(Window, KeysInOtherWindowsAreLeftAlone) {
    record({"B", "A"});
    show();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    press(Qt::Key_Escape);
    press(Qt::Key_1, Qt::ControlModifier);
    press(Qt::Key_Return);
    EXPECT_TRUE(panel().isVisible()) << "it stays although another window has the keyboard";
    EXPECT_EQ(pasteboard.count, 1);
}

TEST_F(Window, EveryHundredthOpeningMayCheckForUpdates) {
    test::FakeAlerts alerts;
    test::FakeWorkspace workspace;
    UpdateChecker checker({defaults, alerts, workspace}, QUrl(), QStringLiteral("1.0"));
    UpdateChecker::install(checker);
    const auto opened = [&](qint64 times, double secondsSinceCheck) {
        defaults.setInteger(SettingsKeys::corvattoHistoryWindowOpenCount, times - 1);
        const double now = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
        defaults.setNumber(SettingsKeys::corvattoLastUpdateCheckAt, now - secondsSinceCheck);
        test::CapturedOutput output;
        controller->show(); // visible already, from the second time on
        EXPECT_EQ(defaults.integer(SettingsKeys::corvattoHistoryWindowOpenCount), times);
        // A check of nothing fails as soon as the event loop runs, and an automatic one says so in print
        // only.
        test::eventually([&] { return !output.text().isEmpty(); }, std::chrono::milliseconds(100));
        EXPECT_TRUE(alerts.shown.empty());
        return output.text().count("ERROR (manual=false)");
    };
    EXPECT_EQ(opened(99, 1e6), 0);
    EXPECT_EQ(opened(100, 1e6), 1);
    EXPECT_EQ(opened(101, 1e6), 0);
    EXPECT_EQ(opened(200, 86'400), 1) << "a day is enough";
    EXPECT_EQ(opened(300, 86'340), 0);
    EXPECT_EQ(opened(300, -1e6), 0) << "a clock that was set back";

    defaults.stored.clear(); // never counted, never checked
    controller->show();
    EXPECT_EQ(defaults.integer(SettingsKeys::corvattoHistoryWindowOpenCount), 1);
}

} // namespace
} // namespace corvatto
