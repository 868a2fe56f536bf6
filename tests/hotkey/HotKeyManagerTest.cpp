#include "hotkey/HotKeyManager.h"

#include "settings/SettingsKeys.h"
#include "support/FakeHotKeyCenter.h"
#include "support/FakeUserDefaults.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

class HotKeyManagerTest : public ::testing::Test {
protected:
    test::FakeHotKeyCenter center;
    test::FakeUserDefaults defaults;
    std::optional<HotKeyManager> manager{std::in_place, center, defaults};
};

TEST_F(HotKeyManagerTest, TheDefaultStandsInForWhatIsNoKeyOrMask) {
    struct Case {
        qint64 keyCode, modifiers;
        test::FakeHotKeyCenter::Combination expected;
    };
    for (const Case& stored : {Case{0, 2304, {9, 2304}}, Case{8, 0, {8, 768}}, Case{11, 4352, {11, 4352}},
                               Case{qint64{1} << 32, -5, {9, 768}}}) {
        defaults.setInteger(SettingsKeys::hotkeyKeyCode, stored.keyCode);
        defaults.setInteger(SettingsKeys::hotkeyModifiers, stored.modifiers);
        manager->registerStoredHotKey();
        ASSERT_EQ(center.hotKeys.size(), 1U);
        EXPECT_EQ(center.hotKeys.begin()->second, stored.expected)
            << stored.keyCode << ", " << stored.modifiers;
        manager->unregister();
    }
}

TEST_F(HotKeyManagerTest, PressesArriveFromTheEventLoopUnlessTheManagerHasGone) {
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
