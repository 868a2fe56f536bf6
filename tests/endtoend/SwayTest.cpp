// What only a Wayland compositor has: programs that may copy and paste only while they have the keyboard,
// pipes that a reader does not empty, and X programs behind a bridge.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

struct SwayClipboardTest : SwayTest {};

struct SwayBridgeTest : SwayTest {
    SwayBridgeTest() : SwayTest({.hasXServer = true}) {}
};

} // namespace

TEST_F(SwayClipboardTest, AnOrdinaryProgramCopiesAndPastes) {
    launch();
    EXPECT_TRUE(soonPrinted("[CorvattoApp] Wayland session: native."));
    EXPECT_TRUE(soonPrinted("[HotKeyCenter] This desktop grants no global shortcuts. For its configuration: "
                            "bindsym Mod4+Shift+v exec corvatto --toggle"));
    hidePanel();
    const QByteArray pasted = desktop.home() + "/pasted";
    // Copies by the terminal's own control sequence when a key is pressed, and notes what comes after.
    desktop.openTerminal("falcon", "stty -icanon -echo; head -c 1; printf '\\033]52;c;" +
                                       QByteArray("a native copy").toBase64() + "\\a'; cat > " + pasted);
    ASSERT_TRUE(soon([this] { return desktop.windowInFront(program->pid()).application == "falcon"; }));
    desktop.key("x");
    ASSERT_TRUE(soonStored("a native copy"));
    EXPECT_EQ(database.find("a native copy")->sourceApp, "falcon");
    copyText("a later copy");
    ASSERT_TRUE(soonStored("a later copy"));
    showPanel();
    desktop.key("Return");
    ASSERT_TRUE(soonHidden());
    ASSERT_TRUE(soon([this] { return desktop.windowInFront(program->pid()).application == "falcon"; }));
    desktop.key("ctrl+shift+v y");
    EXPECT_TRUE(soon([&] { return bytesOf(pasted) == "a native copyy"; })) << bytesOf(pasted).constData();
}

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
