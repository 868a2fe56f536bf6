// The recorder control, with real key events sent to its window.
#include "hotkey/ShortcutRecorder.h"
#include "settings/SettingsKeys.h"
#include "support/Eventually.h"
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
    ShortcutRecorderTest() {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(field);
        layout->addWidget(recorder);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        field->setFocus();
    }

    FakeUserDefaults defaults;
    QWidget window;
    QLineEdit* field = new QLineEdit;
    ShortcutRecorder* recorder = new ShortcutRecorder(defaults);
};

TEST_F(ShortcutRecorderTest, ShowsWhatIsStored) {
    EXPECT_EQ(recorder->accessibleName(), u"⇧⌘V"); // the default
    for (const char* row :
         {"122 6912 ⌃⌥⇧⌘F1", "8 4096 ⌃C", "23 0 5", "36 512 ⇧↩", "49 2048 ⌥␣", "126 256 ⌘↑", "10 256 ⌘10"}) {
        const QStringList words = QString::fromUtf8(row).split(u' ');
        defaults.setObject(SettingsKeys::hotkeyKeyCode, words[0]);
        defaults.setObject(SettingsKeys::hotkeyModifiers, words[1]);
        EXPECT_EQ(recorder->accessibleName(), words[2]);
    }
}

TEST_F(ShortcutRecorderTest, ShowsWhatTheDesktopGrantedInstead) {
    const QImage stored = recorder->grab().toImage();
    const QString words = QStringLiteral("Press <Super>V and something that fits no control");
    recorder->setTrigger(words);
    EXPECT_EQ(recorder->accessibleName(), words);
    const QImage shown = recorder->grab().toImage();
    EXPECT_NE(shown, stored);
    recorder->setTrigger(words + words);
    EXPECT_EQ(recorder->grab().toImage(), shown) << "the beginning, as much of it as fits";
    recorder->setTrigger({});
    EXPECT_EQ(recorder->accessibleName(), u"⇧⌘V");
    EXPECT_EQ(recorder->grab().toImage(), stored);
}

TEST_F(ShortcutRecorderTest, ASecondClickLosingTheFocusAndClosingChangeNothing) {
    bool isTold = false;
    QObject::connect(recorder, &ShortcutRecorder::recordingChanged, [&](bool isRecording) {
        EXPECT_NE(isRecording, isTold);
        isTold = isRecording;
    });
    for (const bool starts : {true, false}) {
        QTest::mouseClick(recorder, Qt::LeftButton);
        EXPECT_EQ(recorder->isRecording(), starts);
        EXPECT_EQ(isTold, starts);
    }
    const QImage idle = recorder->grab().toImage();
    QTest::mouseClick(recorder, Qt::LeftButton);
    QTest::keyClick(window.windowHandle(), Qt::Key_Meta, Qt::ShiftModifier);
    EXPECT_TRUE(recorder->isRecording()) << "modifiers alone are nothing";
    EXPECT_NE(recorder->grab().toImage(), idle);
    EXPECT_TRUE(eventually([this] { return !recorder->isRecording(); })) << "until time is up";
    EXPECT_FALSE(isTold);
    recorder->setFocus(); // by the keyboard: recording without a time limit
    EXPECT_TRUE(recorder->isRecording());
    EXPECT_TRUE(isTold);
    field->setFocus();
    EXPECT_FALSE(recorder->isRecording());
    QTest::keyClick(window.windowHandle(), Qt::Key_J);
    EXPECT_EQ(field->text(), u"j");
    recorder->setFocus();
    window.close(); // and a window that opens does not record
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_TRUE(defaults.stored.isEmpty());
}

} // namespace
} // namespace corvatto::test
