#include "hotkey/HotKeyManager.h"

#include "support/CapturedOutput.h"
#include "support/FakeHotKeyCenter.h"
#include "support/FakeUserDefaults.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

class HotKeys : public ::testing::Test {
protected:
    test::FakeHotKeyCenter center;
    test::FakeUserDefaults defaults;
    std::optional<HotKeyManager> manager{std::in_place, center, defaults};
};

TEST_F(HotKeys, PressesArriveFromTheEventLoopUnlessTheManagerHasGone) {
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

TEST_F(HotKeys, OnlyTheLatestRegistrationReportsItsFailureWheneverThatIsKnown) {
    test::CapturedOutput output;
    manager->registerStoredHotKey();
    manager->reregister(40, 2304);
    ASSERT_EQ(center.hotKeys.size(), 1U);
    center.refuse(eventHotKeyExistsErr);
    QByteArray lines = "[HotKeyManager] ERROR: RegisterEventHotKey failed with status -9878\n";
    EXPECT_EQ(output.text(), lines);
    EXPECT_EQ(center.handlers.size(), 1U);

    center.removals.clear();
    center.handlerStatus = eventHotKeyInvalidErr;
    manager->reregister(9, 768);
    EXPECT_EQ(center.removals, QStringList(QStringLiteral("handler"))) << "nothing else was registered";
    lines += "[HotKeyManager] ERROR: InstallEventHandler failed with status -9879\n";
    EXPECT_EQ(output.text(), lines);
    EXPECT_TRUE(center.hotKeys.empty());

    center.handlerStatus = noErr;
    center.removals.clear();
    for (int i = 0; i < 2; ++i) { // the second time, the answer is still to come
        manager->registerIfMissing();
        EXPECT_EQ(center.hotKeys.size(), 1U);
        EXPECT_EQ(center.handlers.size(), 1U);
        EXPECT_TRUE(center.removals.isEmpty());
    }
}

TEST_F(HotKeys, TellWhatTheDesktopHasDecidedUntilItIsOver) {
    test::CapturedOutput output;
    QStringList told;
    QObject::connect(&*manager, &HotKeyManager::triggerChanged,
                     [&told](const QString& trigger) { told << trigger; });
    manager->registerStoredHotKey();
    center.grant(QStringLiteral("F9"));
    center.grant(QStringLiteral("F9"));
    EXPECT_EQ(manager->trigger(), u"F9");
    manager->reregister(40, 2304);
    center.grant(QStringLiteral("F8"));
    center.refuse(hotKeysUnavailableErr);
    const QStringList expected{QStringLiteral("F9"), {}, QStringLiteral("F8"), {}};
    EXPECT_EQ(told, expected);
    EXPECT_EQ(output.text(), "") << "whoever looked for a way says what to do";
    manager->registerIfMissing();
    EXPECT_EQ(center.hotKeys.size(), 1U);
}

} // namespace
} // namespace corvatto
