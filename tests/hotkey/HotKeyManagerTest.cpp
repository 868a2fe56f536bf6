#include "hotkey/HotKeyManager.h"

#include "settings/SettingsKeys.h"
#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/FakeHotKeyCenter.h"
#include "support/FakeUserDefaults.h"

#include <gtest/gtest.h>

namespace corvatto {
namespace {

using Combination = test::FakeHotKeyCenter::Combination;

class HotKeyManagerTest : public ::testing::Test {
protected:
    test::FakeHotKeyCenter center;
    test::FakeUserDefaults defaults;
    std::optional<HotKeyManager> manager{std::in_place, center, defaults};
    int presses = 0;

    void countPresses() {
        manager->onHotKeyPressed = [this] {
            ++presses;
        };
    }
    Combination registered() const {
        EXPECT_EQ(center.handlers.size(), 1U);
        EXPECT_EQ(center.hotKeys.size(), 1U);
        return center.hotKeys.empty() ? Combination() : center.hotKeys.begin()->second;
    }
};

TEST_F(HotKeyManagerTest, RegistersTheStoredCombinationAndDefaultsForWhatIsNone) {
    manager->registerStoredHotKey();
    EXPECT_EQ(registered(), Combination(9, 768)) << "nothing stored";
    EXPECT_EQ(center.lastIdentity.signature, 1U);
    EXPECT_EQ(center.lastIdentity.id, 1U);

    struct Case {
        qint64 keyCode, modifiers;
        Combination expected;
    };
    for (const Case& stored : {Case{0, 2304, {9, 2304}}, Case{8, 0, {8, 768}}, Case{11, 4352, {11, 4352}},
                               Case{-1, 256, {9, 256}}, Case{qint64{1} << 32, -5, {9, 768}}}) {
        manager->unregister();
        defaults.setInteger(SettingsKeys::hotkeyKeyCode, stored.keyCode);
        defaults.setInteger(SettingsKeys::hotkeyModifiers, stored.modifiers);
        manager->registerStoredHotKey();
        EXPECT_EQ(registered(), stored.expected) << stored.keyCode << ", " << stored.modifiers;
    }
    manager->reregister(-7, qint64{1} << 40);
    EXPECT_EQ(registered(), Combination(9, 768));
}

TEST_F(HotKeyManagerTest, FailuresAreOneLineEachAndALaterChangeTriesAgain) {
    test::CapturedOutput output;
    center.handlerStatus = -9866;
    manager->registerStoredHotKey();
    EXPECT_EQ(output.text(), "[HotKeyManager] ERROR: InstallEventHandler failed with status -9866\n");
    EXPECT_TRUE(center.handlers.empty() && center.hotKeys.empty());

    center.handlerStatus = noErr;
    center.hotKeyStatus = eventHotKeyExistsErr;
    manager->reregister(8, 256);
    EXPECT_TRUE(output.text().endsWith(
        "-9866\n[HotKeyManager] ERROR: RegisterEventHotKey failed with status -9878\n"));
    EXPECT_EQ(center.handlers.size(), 1U) << "the handler stays";
    EXPECT_TRUE(center.hotKeys.empty());

    center.hotKeyStatus = noErr;
    manager->reregister(11, 512);
    EXPECT_EQ(registered(), Combination(11, 512));
    EXPECT_EQ(output.text().count('\n'), 2);
}

TEST_F(HotKeyManagerTest, ReregisteringReplacesAndDestructionTakesEverythingAway) {
    manager->registerStoredHotKey();
    manager->reregister(11, 4096);
    EXPECT_EQ(registered(), Combination(11, 4096));
    const QStringList hotKeyFirst{QStringLiteral("hot key"), QStringLiteral("handler")};
    EXPECT_EQ(center.removals, hotKeyFirst);

    countPresses();
    center.press();
    manager.reset(); // with a press under way
    EXPECT_EQ(center.removals, hotKeyFirst + hotKeyFirst);
    EXPECT_TRUE(center.handlers.empty() && center.hotKeys.empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(presses, 0);
}

TEST_F(HotKeyManagerTest, APressArrivesOnceAndFromTheEventLoop) {
    manager->registerStoredHotKey();
    center.press(); // with no callback when it is delivered
    QCoreApplication::processEvents();

    center.press();
    countPresses(); // what counts is the callback at the time of the delivery
    EXPECT_EQ(presses, 0) << "not inside the delivery of the event";
    EXPECT_TRUE(test::eventually([this] { return presses > 0; }));
    center.press();
    center.press();
    QCoreApplication::processEvents();
    EXPECT_EQ(presses, 3);
}

} // namespace
} // namespace corvatto
