#include "app/DisplayChoice.h"

#include <gtest/gtest.h>

namespace corvatto::test {
namespace {

TEST(DisplayChoice, TheBestWayThatWorksIsTaken) {
    using enum DisplaySystem;
    const struct {
        bool compositor, clipboard, layers, plugin, xServer;
        std::optional<DisplaySystem> expected, expectedOnX11;
    } cases[] = {
        {false, false, false, true, true, x11, x11},
        {false, false, false, true, false, {}, {}},
        {true, true, true, true, true, wayland, xwayland},
        {true, true, true, true, false, wayland, {}},
        {true, true, true, false, true, waylandClipboard, xwayland},
        {true, true, false, true, true, waylandClipboard, xwayland},
        {true, true, false, true, false, {}, {}},
        {true, false, true, true, true, xwayland, xwayland},
        {true, false, false, false, false, {}, {}},
    };
    for (const auto& each : cases) {
        bool isXAsked = false;
        const DisplayFacts facts{each.compositor, each.clipboard, each.layers, each.plugin, [&] {
                                     isXAsked = true;
                                     return each.xServer;
                                 }};
        EXPECT_EQ(chooseDisplaySystem(facts), each.expected);
        EXPECT_FALSE(isXAsked && each.expected == wayland)
            << "which would start a server that waits for that";
        EXPECT_EQ(chooseDisplaySystem(facts, *displaySystemNamed(QStringLiteral("x11"))), each.expectedOnX11);
    }
}

} // namespace
} // namespace corvatto::test
