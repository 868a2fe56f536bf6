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
        const DisplayFacts facts{each.compositor, each.clipboard, each.layers, each.plugin, [&] {
                                     return each.xServer;
                                 }};
        EXPECT_EQ(chooseDisplaySystem(facts), each.expected);
        EXPECT_EQ(chooseDisplaySystem(facts, *displaySystemNamed(QStringLiteral("x11"))), each.expectedOnX11);
    }
}

// Asking an X server that starts on demand would start it.
TEST(DisplayChoice, NobodyAsksForXWhereItIsNotNeeded) {
    const DisplayFacts facts{true, true, true, true, [] {
                                 ADD_FAILURE();
                                 return true;
                             }};
    EXPECT_EQ(chooseDisplaySystem(facts), DisplaySystem::wayland);
}

} // namespace
} // namespace corvatto::test
