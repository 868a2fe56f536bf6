// Where a copy comes from, and when it is recorded. What is recorded, the other tests look at.
#include "EndToEndTest.h"

namespace corvatto::test {

using CopyTest = DesktopTest;
ON_EVERY_DESKTOP(CopyTest);

using XCopyTest = X11Test;

TEST_P(CopyTest, TheSourceIsTheApplicationInFront) {
    desktop.writeFile("data/applications/falcon.desktop",
                      "[Desktop Entry]\nType=Application\nExec=x\nName=Falcon Writer\n");
    launch();
    hidePanel();
    // The window manager may count the hidden panel as active.
    EXPECT_EQ(record("of nobody").sourceApp, "");
    showPanel();
    desktop.type("own words");
    desktop.key("ctrl+a ctrl+c");
    ASSERT_TRUE(soonStored("own words")); // an entry like any other copy's
    EXPECT_EQ(database.find("own words")->sourceApp, "Corvatto");
    EXPECT_EQ(paste(), "own words");
    hidePanel();
    for (const auto& [application, name] : {std::pair("Falcon", "Falcon Writer"), {"Eagle", "Eagle"}}) {
        desktop.openWindow(application);
        EXPECT_EQ(record(application).sourceApp, name);
    }
    showPanel();
    EXPECT_EQ(record("under the panel").sourceApp,
              isX11() ? "" : "Eagle"); // X11 knows the active window only
    desktop.closeWindow();
    EXPECT_EQ(record("of one that is closed").sourceApp, "");
    desktop.key("ctrl+comma");
    ASSERT_TRUE(soon([this] { return isInFront("Corvatto Preferences"); }));
    EXPECT_EQ(record("over our own").sourceApp, "");
}

TEST_F(XCopyTest, TheSourcesDesktopEntryIsKnownByItsOwnProperty) {
    desktop.writeFile("data/applications/org.example.Heron.desktop",
                      "[Desktop Entry]\nType=Application\nExec=x\nName=Heron Writer\n");
    launch();
    for (const auto& [desktopEntry, name] :
         {std::pair("org.example.Heron", "Heron Writer"), {"org.example.Unknown", "heron-bin"}}) {
        const auto window = x.createWindow({50, 50, 200, 100}, "heron-bin", desktopEntry);
        ASSERT_TRUE(soon([&] { return x.activeWindow() == window; }));
        EXPECT_EQ(record(desktopEntry).sourceApp, name);
    }
}

TEST_P(CopyTest, WhatIsCopiedLastIsRecordedBeforeTheNextLook) {
    setSetting("clipboardPollingInterval", 5); // seconds
    database.fill({"newest", "second"});
    launch();
    hidePanel();
    const auto copyUnseen = [this](const QByteArray& text) {
        copyText(text);
        const bool isSent = soon([this] { return owner->hasPrinted("sent " + textTarget); });
        // Time to take it in, in which only a tick could record it.
        soon([&] { return database.find(text).has_value(); }, std::chrono::milliseconds(300));
        return isSent;
    };
    ASSERT_TRUE(copyUnseen("before the shortcut"));
    showPanel();
    EXPECT_TRUE(database.find("before the shortcut"));
    ASSERT_TRUE(copyUnseen("before the choice"));
    desktop.key("Return");
    ASSERT_TRUE(soonHidden());
    EXPECT_EQ(paste(), "newest"); // the second of the list that was on show
    EXPECT_TRUE(database.find("before the choice"));
    ASSERT_TRUE(copyUnseen("before the end"));
    EXPECT_EQ(program->stop(), 0);
    EXPECT_TRUE(database.find("before the end"));
    launch();
}

} // namespace corvatto::test
