// What only a Wayland compositor has: pipes that a reader does not empty, and X programs behind a bridge.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

struct SwayClipboardTest : SwayTest {};

struct SwayBridgeTest : SwayTest {
    SwayBridgeTest() : SwayTest({.hasXServer = true}) {}
};

} // namespace

TEST_F(SwayClipboardTest, AReaderThatStopsHoldsNothingUp) {
    const QByteArray text(20 << 20, 'x');
    database.fill({{text}, {"other"}});
    launch();
    desktop.key("ctrl+1");
    ASSERT_TRUE(soonHidden());
    const QByteArray allowed = desktop.home() + "/allowed";
    Process reader("sh",
                   {"-c", "wl-paste --no-newline | (until [ -e " + allowed + " ]; do sleep 0.1; done; cat)"},
                   desktop.environment(), true);
    showPanel();
    EXPECT_EQ(paste(), text);
    hidePanel();
    EXPECT_EQ(reader.output(), "");
    desktop.writeFile("allowed", "");
    EXPECT_EQ(reader.exitStatus(), 0);
    EXPECT_EQ(reader.output(), text);
}

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
