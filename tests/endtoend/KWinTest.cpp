// What KWin does that other compositors leave to programs or to the user: it grants the shortcut.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {

class KWinTest : public EndToEndTest {
protected:
    KWinTest()
        : EndToEndTest(std::make_unique<KWinDesktop>(TestDesktop::Options())),
          kwin(static_cast<KWinDesktop&>(desktop)) {}

    bool soonInFront(const QByteArray& application) {
        return soon([&] { return desktop.windowInFront(program->pid()).application == application; });
    }

    KWinDesktop& kwin;
};

} // namespace

TEST_F(KWinTest, TheShortcutIsTheProgramsOverOtherWindowsAndGivenBackAtTheEnd) {
    launch();
    EXPECT_TRUE(soonPrinted("[CorvattoApp] Wayland session: native."));
    hidePanel();
    desktop.openWindow("Falcon");
    showPanel();
    hidePanel();
    ASSERT_TRUE(soonInFront("Falcon"));
    EXPECT_EQ(kwin.printedByWindow(), "");
    EXPECT_EQ(program->stop(), 0);
    desktop.key("super+shift+v");
    EXPECT_TRUE(soon([this] { return kwin.printedByWindow() == "key\n"; }));
    launch(); // and takes it again
    hidePanel();
    showPanel();
}

TEST_F(KWinTest, PreferencesThatAreMinimisedComeBackWhenAskedFor) {
    launch();
    desktop.key("ctrl+comma");
    ASSERT_TRUE(soon([this] { return isInFront("Corvatto Preferences"); }));
    // Qt's request for the keyboard, which may arrive late, brings them back once. After a second without a
    // frame Qt takes them for hidden.
    ASSERT_TRUE(soon([this] {
        kwin.minimizeWindowInFront();
        return !soon([this] { return isInFront("Corvatto Preferences"); }, std::chrono::seconds(1));
    }));
    showPanel();
    desktop.key("ctrl+comma");
    EXPECT_TRUE(soon([this] { return isInFront("Corvatto Preferences"); }));
    EXPECT_TRUE(soonHidden());
}

} // namespace corvatto::test
