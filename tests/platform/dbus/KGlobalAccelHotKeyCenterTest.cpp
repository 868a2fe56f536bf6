#include "platform/dbus/KGlobalAccelHotKeyCenter.h"
#include "FakePlasma.h"
#include "support/Files.h"

namespace corvatto::test {
namespace {

class KGlobalAccelTest : public BusTest {
protected:
    std::optional<FakePlasma> plasma{address};
    std::optional<KGlobalAccelHotKeyCenter> center{program->bus()};
};

TEST_F(KGlobalAccelTest, GrantsPassesOnPressesAndTakesTheKeysBack) {
    registerHotKey(*center);
    ASSERT_TRUE(soonReported(noErr));
    EXPECT_EQ(plasma->set, QList<int>{superShiftV});
    EXPECT_EQ(plasma->program.value(2), u"Corvatto");
    plasma->press();
    plasma->press(); // repeats
    plasma->sendKey("globalShortcutPressed", "other");
    plasma->release();
    plasma->press();
    EXPECT_TRUE(eventually([this] { return presses > 1; }));
    EXPECT_EQ(presses, 2);
    EXPECT_EQ(center->unregisterEventHotKey(hotKey), noErr);
    EXPECT_TRUE(eventually([this] { return plasma->set.isEmpty(); }));
    plasma->press();
    registerHotKey(*center, 40); // K
    ASSERT_TRUE(soonReported(noErr));
    EXPECT_EQ(presses, 2);
    EXPECT_EQ(plasma->set, QList<int>{(Qt::META | Qt::SHIFT | Qt::Key_K).toCombined()});

    // The process ends with no turn of the event loop in between.
    center.reset();
    program.reset();
    EXPECT_TRUE(eventually([this] { return plasma->set.isEmpty(); }));
}

TEST_F(KGlobalAccelTest, WhatAnotherProgramHasIsTaken) {
    plasma->taken = {(Qt::META | Qt::Key_Exclam).toCombined()};
    registerHotKey(*center, 18); // 1, of whose two names the first is taken
    ASSERT_TRUE(soonReported(eventHotKeyExistsErr));
    EXPECT_TRUE(eventually([this] { return plasma->set.isEmpty(); })) << "nothing is kept";
    plasma->taken = {(Qt::META | Qt::SHIFT | Qt::Key_1).toCombined()}; // the other one
    registerHotKey(*center, 18);
    EXPECT_TRUE(soonReported(noErr));
    registerHotKey(*center);
    EXPECT_TRUE(soonReported(eventHotKeyInvalidErr)) << "one at a time";
}

TEST_F(KGlobalAccelTest, FollowsTheSettingsOfTheDesktop) {
    registerHotKey(*center);
    ASSERT_TRUE(soonReported(noErr));
    plasma->change({(Qt::CTRL | Qt::Key_F5).toCombined(), (Qt::META | Qt::Key_B).toCombined()});
    EXPECT_TRUE(soonReported(noErr, QStringLiteral("Ctrl+F5, Meta+B")));
    plasma->change({superShiftV});
    EXPECT_TRUE(soonReported(noErr));
    plasma->change({});
    EXPECT_TRUE(soonReported(eventHotKeyExistsErr));
    EXPECT_EQ(center->unregisterEventHotKey(hotKey), eventHotKeyInvalidErr) << "it is over";
}

TEST_F(KGlobalAccelTest, RegistersAgainWhenTheServiceStartsAnew) {
    registerHotKey(*center);
    ASSERT_TRUE(soonReported(noErr));
    plasma->press(); // and the release is lost
    EXPECT_TRUE(eventually([this] { return presses == 1; }));
    plasma->leave();
    plasma->set.clear();
    plasma->appear();
    ASSERT_TRUE(soonReported(noErr));
    EXPECT_EQ(plasma->set, QList<int>{superShiftV});
    plasma->press();
    EXPECT_TRUE(eventually([this] { return presses == 2; }));
}

TEST_F(KGlobalAccelTest, IsUnavailableWithoutKWinOrTheService) {
    plasma->isSane = false;
    registerHotKey(*center);
    EXPECT_TRUE(soonReported(hotKeysUnavailableErr));
    // The bus could start the service, which would then see no keys.
    const QString started = services.filePath(QStringLiteral("started"));
    writeFile(services.filePath(QStringLiteral("org.kde.kglobalaccel.service")),
              "[D-BUS Service]\nName=org.kde.kglobalaccel\nExec=/bin/touch " + started.toUtf8() + '\n');
    for (const char* name : {"org.kde.KWin", "org.kde.kglobalaccel"}) {
        plasma.reset();
        plasma.emplace(address, QStringList(QString::fromLatin1(name)));
        registerHotKey(*center);
        EXPECT_TRUE(soonReported(hotKeysUnavailableErr));
        EXPECT_EQ(plasma->calls, QStringList());
    }
    EXPECT_FALSE(QFile::exists(started));
    KGlobalAccelHotKeyCenter withoutBus{QDBusConnection(QStringLiteral("none"))};
    registerHotKey(withoutBus);
    EXPECT_EQ(hotKey, 0U);
    EXPECT_TRUE(soonReported(hotKeysUnavailableErr));
}

} // namespace
} // namespace corvatto::test
