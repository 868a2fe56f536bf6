// The list that an input method shows at the text cursor of the panel.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class PanelInputMethodTest : public DesktopTest {
protected:
    QRect list() { // where it is seen; empty while it is not
        constexpr QRgb magenta = qRgb(255, 0, 255);
        const QImage screen = desktop.screenshot();
        QRect rect;
        for (int y = 0; y < screen.height(); ++y) {
            for (int x = 0; x < screen.width(); ++x) {
                if (screen.pixel(x, y) == magenta) {
                    rect |= QRect(x, y, 1, 1);
                }
            }
        }
        return rect;
    }
};

ON_EVERY_DESKTOP(PanelInputMethodTest);

} // namespace

TEST_P(PanelInputMethodTest, ItsListIsSeenFollowsTheCursorAndGoesWithThePanel) {
    auto environment = desktop.environment();
    environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(QT_PLUGINS));
    environment.insert(QStringLiteral("QT_IM_MODULE"), QStringLiteral("candidates"));
    program = std::make_unique<Process>(CORVATTO_PROGRAM, QByteArrayList(), environment);
    ASSERT_TRUE(soon([this] { return panelHasKeyboard(); }));
    desktop.key("a");
    QRect first;
    ASSERT_TRUE(soon([&] { return (first = list()).size() == QSize(120, 40); }));
    EXPECT_TRUE(panelRect().contains(first));
    desktop.type("longer");
    EXPECT_TRUE(soon([&] {
        const QRect moved = list();
        return moved.x() > first.x() && moved == first.translated(moved.x() - first.x(), 0);
    }));
    desktop.key("Escape");
    EXPECT_TRUE(soon([this] { return panelRect().isEmpty() && list().isEmpty(); }));
    showPanel();
    desktop.key("a");
    EXPECT_TRUE(soon([&] { return list().size() == first.size(); }));
}

} // namespace corvatto::test
