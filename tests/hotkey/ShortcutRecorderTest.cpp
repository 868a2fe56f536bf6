// The recorder control, with real key events sent to its window.
#include "hotkey/ShortcutRecorder.h"
#include "settings/SettingsKeys.h"
#include "support/FakeUserDefaults.h"
#include "support/Printing.h"

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
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }

    FakeUserDefaults defaults;
    QWidget window;
    QLineEdit* field = new QLineEdit;
    ShortcutRecorder* recorder;
};

TEST_F(ShortcutRecorderTest, ShowsWhatIsRecordedAndWhatIsStoredFromElsewhere) {
    EXPECT_EQ(recorder->accessibleName(), u"⇧⌘V"); // the default
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers held;
        const char* shown;
    } rows[] = {
        {Qt::Key_F1, Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier | Qt::ShiftModifier, "⌃⌥⇧⌘F1"},
        {Qt::Key_C, Qt::ControlModifier, "⌃C"}, // Control is not command here
        {Qt::Key_K, {}, "K"},
        {Qt::Key_Return, Qt::ShiftModifier, "⇧↩"},
        {Qt::Key_Space, Qt::AltModifier, "⌥␣"},
    };
    for (const auto& [key, held, shown] : rows) {
        QTest::mouseClick(recorder, Qt::LeftButton);
        press(key, held);
        EXPECT_FALSE(recorder->isRecording() || recorder->hasFocus()) << shown;
        EXPECT_EQ(recorder->accessibleName(), QString::fromUtf8(shown));
    }
    defaults.setInteger(SettingsKeys::hotkeyKeyCode, 10);
    EXPECT_EQ(recorder->accessibleName(), u"⌥10");
}

TEST_F(ShortcutRecorderTest, ASecondClickAndLosingTheFocusChangeNothing) {
    for (const bool starts : {true, false}) {
        QTest::mouseClick(recorder, Qt::LeftButton);
        EXPECT_EQ(recorder->isRecording(), starts);
    }
    recorder->setFocus(); // by the keyboard: recording without a time limit
    EXPECT_TRUE(recorder->isRecording());
    field->setFocus();
    EXPECT_FALSE(recorder->isRecording());
    press(Qt::Key_J);
    EXPECT_EQ(field->text(), u"j");
    EXPECT_TRUE(defaults.stored.isEmpty());
}

} // namespace
} // namespace corvatto::test
