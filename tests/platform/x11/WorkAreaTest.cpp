#include "platform/x11/WorkArea.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(WorkArea, ABarTakesSpaceOfItsOwnMonitorOnly) {
    constexpr QRect left(0, 0, 640, 1100), right(640, 0, 800, 900);
    const struct {
        const char* bar;
        std::array<quint32, 12> strut; // left, right, top and bottom; start and end of each
        QRect freeOfLeft, freeOfRight;
    } cases[] = {
        {"none", {}, left, right},
        {"at the bottom of the left", {0, 0, 0, 60, 0, 0, 0, 0, 0, 0, 0, 639}, {0, 0, 640, 1040}, right},
        {"at the bottom of the right, which is higher up",
         {0, 0, 0, 240, 0, 0, 0, 0, 0, 0, 640, 1439},
         left,
         {640, 0, 800, 860}},
        {"at the left of the left", {50, 0, 0, 0, 0, 1099}, {50, 0, 590, 1100}, right},
        {"at the left of the right", {690, 0, 0, 0, 0, 899}, left, {690, 0, 750, 900}},
        {"at the right of the right", {0, 40, 0, 0, 0, 0, 0, 899}, left, {640, 0, 760, 900}},
        {"along the top, of unknown length", {0, 0, 30}, {0, 30, 640, 1070}, {640, 30, 800, 870}},
    };
    for (const auto& [bar, strut, freeOfLeft, freeOfRight] : cases) {
        const auto struts = strutsFrom(strut, {1440, 1100});
        EXPECT_EQ(freeOfStruts(left, struts), freeOfLeft) << bar;
        EXPECT_EQ(freeOfStruts(right, struts), freeOfRight) << bar;
    }
}

TEST(WorkArea, AnAreaOfAnotherMonitorDoesNotCount) {
    constexpr QRect right(640, 0, 640, 1100);
    EXPECT_EQ(withinWorkArea(right, {0, 30, 1280, 1040}), QRect(640, 30, 640, 1040));
    EXPECT_EQ(withinWorkArea(right, {0, 0, 640, 1060}), right);
    EXPECT_EQ(withinWorkArea(right, {}), right);
}

} // namespace
} // namespace corvatto
