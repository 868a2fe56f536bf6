#include "platform/PanelPlacement.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

class FakeScreens : public Screens {
public:
    QPoint mouse;
    std::vector<Screen> all;
    std::optional<Screen> main;

    QPoint mouseLocation() const override { return mouse; }
    std::vector<Screen> screens() const override { return all; }
    std::optional<Screen> mainScreen() const override { return main; }
};

TEST(PanelPlacement, ThePanelTakesTheLowerPartOfWhatIsFree) {
    EXPECT_EQ(panelFrame({0, 30, 1000, 900}), QRect(0, 552, 1000, 378)) << "42 %";
    EXPECT_EQ(panelFrame({50, 0, 1280, 1200}), QRect(50, 760, 1280, 440)) << "at most";
    EXPECT_EQ(panelFrame({0, 0, 800, 730}), QRect(0, 423, 800, 307)) << "of 306.6";
}

TEST(PanelPlacement, TheScreenIsTheOneUnderTheMouseOrTheMainOne) {
    constexpr Screen left{{0, 0, 1000, 1000}, {0, 30, 1000, 900}};
    constexpr Screen right{{1000, 0, 800, 1200}, {1000, 0, 800, 1200}};
    const auto origin = [](const std::optional<Screen>& screen) {
        return screen ? screen->frame.topLeft() : QPoint(-1, -1);
    };
    FakeScreens screens;
    EXPECT_FALSE(screenForPanel(screens));
    screens.all = {right, left};
    screens.mouse = {1800, 5}; // beside all screens
    EXPECT_EQ(origin(screenForPanel(screens)), QPoint(1000, 0)) << "the first when none is the main one";
    screens.main = left;
    for (const auto& [mouse, expected] :
         {std::pair(QPoint(999, 999), left), {{1000, 0}, right}, {{1800, 5}, left}, {{5, 1000}, left}}) {
        screens.mouse = mouse;
        EXPECT_EQ(origin(screenForPanel(screens)), expected.frame.topLeft()) << mouse.x();
    }
    EXPECT_EQ(origin(screenForPanel(screens, {1000, 0})), QPoint(1000, 0)) << "where it was";
    screens.all = {left};
    EXPECT_EQ(origin(screenForPanel(screens, {1000, 0})), QPoint(0, 0)) << "removed";
}

} // namespace
} // namespace corvatto
