#include "ui/TextField.h"
#include "ui/Appearance.h"

#include "support/FakePasteboard.h"
#include "support/Printing.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMimeData>
#include <QTest>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

// What a program that hangs has put on the clipboard: nobody may ask for it.
class Untouchable : public QMimeData {
public:
    static inline int questions = 0;

    QStringList formats() const override {
        ++questions;
        return {QStringLiteral("text/plain")};
    }
};

TEST(TextFieldTest, PastesTheSnapshotAndAsksNoOtherProgram) {
    test::FakePasteboard pasteboard;
    pasteboard.copyText(QStringLiteral("历史 "));
    TextField field(pasteboard);
    field.show();
    QGuiApplication::clipboard()->setMimeData(new Untouchable);
    Untouchable::questions = 0;

    QTest::keyClick(&field, Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_Insert, Qt::ShiftModifier);
    QTest::mouseClick(&field, Qt::MiddleButton);
    EXPECT_EQ(field.text(), QStringLiteral("历史 历史 "));

    QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, field.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&field, &event);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    menu->actions().at(2)->trigger();
    menu->close();
    EXPECT_EQ(field.text(), QStringLiteral("历史 ").repeated(3));
    EXPECT_FALSE(field.acceptDrops()) << "a drop waits for the program that it comes from";

    field.clear();
    const QString rest = QStringLiteral("😀").repeated(10'000);
    pasteboard.copyText(u'x' + rest);
    QTest::keyClick(&field, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(field.text(), u'x' + rest.left(4094)) << "no half character";
    field.setMaxLength(4097);
    QTest::keyClick(&field, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(field.text().mid(4095), u"x");

    pasteboard.copy({});
    QTest::keyClick(&field, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(field.text().size(), 4096) << "no text, nothing pasted";
    EXPECT_EQ(Untouchable::questions, 0);
}

TEST(TextFieldTest, TextAndPlaceholderStandOnOneBaselineWhateverTheirFonts) {
    const test::FakePasteboard pasteboard;
    TextField field(pasteboard);
    field.setFont(appearance::systemFont(13));
    for (const int height : {20, 31, 48}) {
        field.resize(200, height);
        // The last row with ink of the first character.
        const auto bottom = [&field](const char* text, const char* placeholder) {
            field.setText(QString::fromUtf8(text));
            field.setPlaceholderText(QString::fromUtf8(placeholder));
            const QImage image = field.grab(QRect(3, 4, 9, field.height() - 8)).toImage();
            int row = image.height() - 1;
            while (row > 0 && image.copy(0, row, 9, 1) == image.copy(0, 0, 9, 1)) {
                --row;
            }
            return row;
        };
        const int latin = bottom("H", "");
        EXPECT_GT(latin, 0);
        EXPECT_EQ(bottom("H直", ""), latin) << height;
        EXPECT_EQ(bottom("", "H直"), latin) << height;
    }
}

} // namespace
} // namespace corvatto
