#include "hotkey/HotKeyManager.h"

#include "support/FakeHotKeyCenter.h"
#include "support/FakeUserDefaults.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(HotKeyManager, PressesArriveFromTheEventLoopUnlessTheManagerHasGone) {
    test::FakeHotKeyCenter center;
    test::FakeUserDefaults defaults;
    std::optional<HotKeyManager> manager(std::in_place, center, defaults);
    int presses = 0;
    manager->registerStoredHotKey();
    center.press(); // with no callback when it is delivered
    QCoreApplication::processEvents();
    manager->onHotKeyPressed = [&presses] {
        ++presses;
    };
    center.press();
    center.press();
    EXPECT_EQ(presses, 0) << "not inside the delivery of the event";
    QCoreApplication::processEvents();
    EXPECT_EQ(presses, 2);

    center.press();
    manager.reset();
    const QStringList hotKeyFirst{QStringLiteral("hot key"), QStringLiteral("handler")};
    EXPECT_EQ(center.removals, hotKeyFirst);
    QCoreApplication::processEvents();
    EXPECT_EQ(presses, 2);
}

} // namespace
} // namespace corvatto
