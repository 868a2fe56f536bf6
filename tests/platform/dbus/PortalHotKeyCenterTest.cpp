#include "platform/dbus/PortalHotKeyCenter.h"
#include "FakePortal.h"

namespace corvatto::test {
namespace {

class PortalTest : public BusTest {
protected:
    std::optional<FakePortal> portal{address};
    PortalHotKeyCenter center{program->bus(), std::chrono::milliseconds(300)};
};

TEST_F(PortalTest, GrantsWhatTheUserChoosesAndPassesOnPresses) {
    registerHotKey(center);
    ASSERT_TRUE(soonReported(noErr, QStringLiteral("Press <Super>V")));
    EXPECT_EQ(portal->wish, u"LOGO+SHIFT+v");
    portal->press();
    portal->press(); // repeats
    portal->press(QStringLiteral("other"));
    portal->release();
    portal->press();
    EXPECT_TRUE(eventually([this] { return presses > 1; }));
    EXPECT_EQ(presses, 2);
    portal->change(QStringLiteral("F9"));
    EXPECT_TRUE(soonReported(noErr, QStringLiteral("F9")));

    EXPECT_EQ(center.unregisterEventHotKey(hotKey), noErr);
    EXPECT_TRUE(eventually([this] { return portal->session.path().isEmpty(); }));
    registerHotKey(center);
    ASSERT_TRUE(soonReported(noErr, portal->trigger));
    portal->close();
    EXPECT_TRUE(soonReported(eventHotKeyExistsErr));
}

TEST_F(PortalTest, TheUserMayDeclineOrTakeAnyTime) {
    portal->user = FakePortal::User::Declines;
    registerHotKey(center);
    ASSERT_TRUE(soonReported(eventHotKeyExistsErr));
    EXPECT_TRUE(eventually([this] { return portal->session.path().isEmpty(); }));

    portal->user = FakePortal::User::Thinks;
    portal->calls.clear();
    registerHotKey(center);
    EXPECT_TRUE(eventually([this] { return portal->calls.contains(u"BindShortcuts"); }));
    EXPECT_EQ(center.unregisterEventHotKey(hotKey), noErr); // meanwhile
    EXPECT_TRUE(eventually([this] { return portal->session.path().isEmpty(); }));
    portal->user = FakePortal::User::Grants;
    registerHotKey(center);
    EXPECT_TRUE(soonReported(noErr, portal->trigger));
    EXPECT_TRUE(reports.isEmpty()) << "of the question that was taken back";
}

TEST_F(PortalTest, AsksAgainWhenThePortalStartsAnew) {
    for (const auto user : {FakePortal::User::Grants, FakePortal::User::Thinks}) {
        portal->user = user;
        portal->calls.clear();
        registerHotKey(center);
        EXPECT_TRUE(eventually([this] { return portal->calls.contains(u"BindShortcuts"); }));
        EXPECT_TRUE(user == FakePortal::User::Thinks || soonReported(noErr, portal->trigger));
        portal->leave();
        portal->user = FakePortal::User::Grants;
        portal->appear();
        ASSERT_TRUE(soonReported(noErr, portal->trigger));
        const int before = presses;
        portal->press();
        EXPECT_TRUE(eventually([&] { return presses > before; }));
        EXPECT_EQ(center.unregisterEventHotKey(hotKey), noErr);
    }
}

TEST_F(PortalTest, IsUnavailableWhereShortcutsAreNotServed) {
    portal->servesShortcuts = false;
    registerHotKey(center);
    EXPECT_TRUE(soonReported(hotKeysUnavailableErr));
    portal->servesShortcuts = true;
    portal->opensSessions = false;
    registerHotKey(center);
    EXPECT_TRUE(soonReported(hotKeysUnavailableErr)) << "silent";
    portal.reset();
    registerHotKey(center);
    EXPECT_TRUE(soonReported(hotKeysUnavailableErr)) << "missing";
}

} // namespace
} // namespace corvatto::test
