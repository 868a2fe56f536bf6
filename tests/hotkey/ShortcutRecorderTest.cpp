// The recorder control, with real key events sent to its window.
#include "hotkey/ShortcutRecorder.h"
#include "hotkey/ShortcutNames.h"
#include "settings/SettingsKeys.h"
#include "support/Eventually.h"
#include "support/FakeUserDefaults.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

class ShortcutRecorderTest : public ::testing::Test {
protected:
    ShortcutRecorderTest() : recorder(new ShortcutRecorder(defaults)) {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(field);
        layout->addWidget(recorder);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        field->setFocus();
    }

    void click() { QTest::mouseClick(recorder, Qt::LeftButton); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }
    qint64 storedKey() const { return defaults.integer(SettingsKeys::hotkeyKeyCode); }
    qint64 storedModifiers() const { return defaults.integer(SettingsKeys::hotkeyModifiers); }

    FakeUserDefaults defaults;
    QWidget window;
    QLineEdit* field = new QLineEdit;
    ShortcutRecorder* recorder;
};

TEST_F(ShortcutRecorderTest, RecordsEveryKindOfCombination) {
    struct Row {
        Qt::Key key;
        Qt::KeyboardModifiers held;
        qint64 keyCode;
        qint64 modifiers;
        const char* shown;
    };
    const Row rows[] = {
        {Qt::Key_K, Qt::MetaModifier | Qt::ShiftModifier, 40, 768, "⇧⌘K"},
        {Qt::Key_F1, Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier | Qt::ShiftModifier, 122, 6912,
         "⌃⌥⇧⌘F1"},
        {Qt::Key_K, {}, 40, 0, "K"},
        {Qt::Key_A, Qt::MetaModifier, 0, 256, "⌘A"},
        {Qt::Key_C, Qt::ControlModifier, 8, 4096, "⌃C"}, // Control is not command here
        {Qt::Key_Escape, Qt::AltModifier, 53, 2048, "⌥⎋"},
        {Qt::Key_Tab, {}, 48, 0, "⇥"}, // and does not move the focus
        {Qt::Key_Return, Qt::ShiftModifier, 36, 512, "⇧↩"},
        {Qt::Key_Space, {}, 49, 0, "␣"},
    };
    for (const Row& row : rows) {
        click();
        ASSERT_TRUE(recorder->isRecording()) << row.shown;
        press(row.key, row.held);
        EXPECT_FALSE(recorder->isRecording()) << row.shown;
        EXPECT_EQ(storedKey(), row.keyCode) << row.shown;
        EXPECT_EQ(storedModifiers(), row.modifiers) << row.shown;
        EXPECT_EQ(shortcutString(recorder->keyCode(), recorder->modifiers()), QString::fromUtf8(row.shown));
        EXPECT_FALSE(recorder->hasFocus()) << row.shown;
    }
}

TEST_F(ShortcutRecorderTest, ModifiersAloneASecondClickAndLosingTheFocusChangeNothing) {
    click();
    press(Qt::Key_Shift, Qt::ShiftModifier);
    EXPECT_TRUE(recorder->isRecording());
    click();
    EXPECT_FALSE(recorder->isRecording());

    QTest::mouseDClick(recorder, Qt::LeftButton); // press, release, double press: started and cancelled
    recorder->setFocus();                         // by the keyboard: recording without a time limit
    EXPECT_TRUE(recorder->isRecording());
    field->setFocus();
    EXPECT_FALSE(recorder->isRecording());
    press(Qt::Key_J);
    EXPECT_EQ(field->text(), QStringLiteral("j"));
    EXPECT_TRUE(defaults.stored.isEmpty());
}

TEST_F(ShortcutRecorderTest, GivesUpAfterFiveSeconds) {
    click();
    QElapsedTimer waited;
    waited.start();
    ASSERT_TRUE(eventually([&] { return !recorder->isRecording(); }));
    EXPECT_GE(waited.elapsed(), 4'700);
    EXPECT_TRUE(defaults.stored.isEmpty());
}

TEST_F(ShortcutRecorderTest, ShowsWhatIsStoredFromElsewhere) {
    EXPECT_EQ(recorder->accessibleName(), QStringLiteral("⇧⌘V")); // the default
    defaults.setInteger(SettingsKeys::hotkeyKeyCode, 10);
    defaults.setInteger(SettingsKeys::hotkeyModifiers, 4096);
    EXPECT_EQ(recorder->accessibleName(), QStringLiteral("⌃10"));
}

} // namespace
} // namespace corvatto::test
