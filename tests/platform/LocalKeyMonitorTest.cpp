#include "platform/LocalKeyMonitor.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(LocalKeyMonitorTest, SeesEachPressOnceBeforeTheWindowAndMaySwallowIt) {
    QWidget window;
    auto* inner = new QWidget;
    auto* field = new QLineEdit;
    (new QVBoxLayout(&window))->addWidget(inner);
    (new QVBoxLayout(inner))->addWidget(field);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    field->setFocus();

    int seen = 0;
    std::optional<LocalKeyMonitor> monitor(std::in_place, [&](const KeyEvent& event) {
        ++seen;
        return event.keyCode == keyV;
    });
    const auto press = [&](Qt::Key key) {
        seen = 0;
        QTest::keyClick(window.windowHandle(), key);
        return seen;
    };
    EXPECT_EQ(press(Qt::Key_C), 1);
    EXPECT_EQ(press(Qt::Key_V), 1);
    EXPECT_EQ(field->text(), QStringLiteral("c"));
    EXPECT_EQ(press(Qt::Key_F5), 1) << "nobody takes it, so it travels up to the window";

    QMenu menu;
    menu.popup(window.mapToGlobal(QPoint(5, 5)));
    EXPECT_EQ(press(Qt::Key_V), 0) << "keys belong to an open menu";
    menu.close();

    monitor.reset();
    EXPECT_EQ(press(Qt::Key_V), 0);
    EXPECT_EQ(field->text(), QStringLiteral("cv"));
}

} // namespace
} // namespace corvatto
