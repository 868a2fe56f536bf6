#include "platform/qt/AlertDialog.h"

#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTest>

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

const QStringList titles{QStringLiteral("下载更新"), QStringLiteral("稍后提醒"),
                         QStringLiteral("跳过此版本")};

TEST(AlertDialogTest, AnswersWithTheButtonOrWhatClosingCountsAs) {
    const struct {
        Qt::Key key; // for the whole window
        int buttonOnClosing, chosen;
    } rows[] = {
        {Qt::Key_Return, 1, 0}, {Qt::Key_Escape, 1, 1}, {Qt::Key_Escape, -1, 2}, {Qt::Key_Escape, 9, 2}};
    for (const auto& [key, buttonOnClosing, chosen] : rows) {
        AlertDialog dialog({QStringLiteral("?"), {}, Alert::Style::Warning, titles, buttonOnClosing});
        dialog.show();
        QTest::keyClick(&dialog, key);
        EXPECT_EQ(dialog.chosen(), chosen);
        EXPECT_FALSE(dialog.isVisible());
    }
    const AlertDialog dialog({QStringLiteral("?"), {}, Alert::Style::Informational, titles});
    const auto buttons = dialog.findChildren<QPushButton*>();
    for (int i = 0; i < titles.size(); ++i) {
        EXPECT_EQ(buttons.at(i)->text(), titles[i]);
        buttons[i]->click();
        EXPECT_EQ(dialog.chosen(), i);
    }
}

TEST(AlertDialogTest, ALongTextLeavesTheButtonsOnTheScreen) {
    const QString text = QStringLiteral("一行更新说明\n").repeated(1000) + QString(1000, QLatin1Char('x'));
    AlertDialog dialog({QStringLiteral("发现新版本"), text, Alert::Style::Informational, titles});
    dialog.show();
    EXPECT_LT(dialog.height(), dialog.screen()->availableGeometry().height());
    EXPECT_LT(dialog.width(), 600);

    // Words wrap that are wider than the window.
    const auto height = [](const QString& word) {
        const AlertDialog one({QStringLiteral("?"), word, Alert::Style::Informational, titles});
        return one.findChild<QScrollArea*>()->widget()->height();
    };
    EXPECT_EQ(height(QString(100, u'W')), 4 * height(QStringLiteral("W")));
}

} // namespace
} // namespace corvatto::test
