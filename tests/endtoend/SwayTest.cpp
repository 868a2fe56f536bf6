// What only a Wayland compositor has: X programs behind a bridge.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

struct SwayBridgeTest : EndToEndTest {
    SwayBridgeTest()
        : EndToEndTest(std::make_unique<SwayDesktop>(TestDesktop::Options{.hasXServer = true})) {}
};

} // namespace

// The bridge does not tell of the mark, and hands out what it marks.
TEST_F(SwayBridgeTest, SecretsOfXProgramsAreNeitherAskedForNorStored) {
    launch();
    EXPECT_TRUE(soonPrinted("[CorvattoApp] Wayland session: native."));
    EXPECT_TRUE(soonPrinted("[HotKeyCenter] This desktop grants no global shortcuts. For its configuration: "
                            "bindsym Mod4+Shift+v exec corvatto --toggle"));
    // The bridge is there from the first X window on that has the keyboard.
    XClient x(desktop.environment().value(QStringLiteral("DISPLAY")).toUtf8());
    hidePanel();
    x.createWindow({0, 0, 200, 100}, "Falcon");
    ASSERT_TRUE(soon([this] { return !desktop.windowInFront(program->pid()).rect.isEmpty(); }));
    copy({{"UTF8_STRING", "from X"}}, {"--x=1"});
    ASSERT_TRUE(soonStored("from X"));
    EXPECT_EQ(database.find("from X")->sourceApp, "Falcon");
    copy({{"UTF8_STRING", "hunter2"}, {"x-kde-passwordManagerHint", "secret"}}, {"--x=1"});
    ASSERT_TRUE(soon([this] { return owner->hasPrinted("sent x-kde-passwordManagerHint"); }));
    const auto password = std::move(owner); // whose end could take the next copy with it, so late it is told
    EXPECT_EQ(rowsAfterNextCopy().size(), 1);
}

} // namespace corvatto::test
