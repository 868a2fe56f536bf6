// The roads of a copy: what other programs put on the clipboard, and what the history then holds.
#include "EndToEndTest.h"

namespace corvatto::test {

using CopyTest = DesktopTest;
ON_EVERY_DESKTOP(CopyTest);

using XCopyTest = X11Test;

TEST_P(CopyTest, TextIsStoredAsItIs) {
    launch();
    const QByteArrayList texts{"  padded \t\r\n", "表情 👩‍👩‍👧‍👦 和中文，é",
                               QByteArray("before\0after\0", 13), "before"};
    for (const QByteArray& text : texts) {
        copyText(text);
        ASSERT_TRUE(soonStored(text)) << text.constData();
    }
    EXPECT_EQ(database.rows().size(), texts.size());
}

TEST_P(CopyTest, AnImageBecomesTwoFiles) {
    const QImage image = testImage({1000, 500});
    launch();
    copy({{"image/tiff", encoded(image, "tiff")}, {textTarget, "caption"}});
    ASSERT_TRUE(soon([this] { return database.rows().size() == 1; }));
    const auto row = database.rows().first();
    EXPECT_EQ(row.type, "image");
    EXPECT_EQ(decoded(bytesOf(row.content)), image);
    EXPECT_EQ(decoded(bytesOf(row.thumbnail)).size(), QSize(720, 360));
}

TEST_P(CopyTest, FilesAreStoredByTheirPaths) {
    const auto plain = desktop.writeFile("report.pdf", "x"),
               spaced = desktop.writeFile("my notes 50%.txt", "x"),
               chinese = desktop.writeFile("文件 100%25.txt", "x");
    const QByteArray all = spaced + '\n' + chinese + '\n' + plain;
    launch();
    copy({{"text/uri-list", fileUrl(spaced) + "\r\n" + fileUrl(chinese) + "\r\n" + fileUrl(plain)},
          {textTarget, all}});
    ASSERT_TRUE(soonStored(all));
    EXPECT_EQ(database.find(all)->type, "file");
}

TEST_P(CopyTest, TheSourceIsTheApplicationInFront) {
    launch();
    hidePanel();
    copyText("of nobody"); // the window manager may count the hidden panel as active
    ASSERT_TRUE(soonStored("of nobody"));
    EXPECT_EQ(database.find("of nobody")->sourceApp, "");
    showPanel();
    desktop.type("own words");
    desktop.key("ctrl+a ctrl+c");
    ASSERT_TRUE(soonStored("own words")); // an entry like any other copy's
    EXPECT_EQ(database.find("own words")->sourceApp, "Corvatto");
    EXPECT_EQ(paste(), "own words");
    hidePanel();
    desktop.writeFile("data/applications/falcon.desktop",
                      "[Desktop Entry]\nType=Application\nExec=x\nName=Falcon Writer\n");
    for (const auto& [application, name] : {std::pair("Falcon", "Falcon Writer"), {"Eagle", "Eagle"}}) {
        desktop.openWindow(application);
        copyText(application);
        ASSERT_TRUE(soonStored(application));
        EXPECT_EQ(database.find(application)->sourceApp, name);
    }
}

TEST_F(XCopyTest, TheSourcesDesktopEntryIsKnownByItsOwnProperty) {
    desktop.writeFile("data/applications/org.example.Heron.desktop",
                      "[Desktop Entry]\nType=Application\nExec=x\nName=Heron Writer\n");
    launch();
    for (const auto& [desktopEntry, name] :
         {std::pair("org.example.Heron", "Heron Writer"), {"org.example.Unknown", "heron-bin"}}) {
        const auto window = x.createWindow({50, 50, 200, 100}, "heron-bin", desktopEntry);
        ASSERT_TRUE(soon([&] { return x.activeWindow() == window; }));
        copyText(desktopEntry);
        ASSERT_TRUE(soonStored(desktopEntry));
        EXPECT_EQ(database.find(desktopEntry)->sourceApp, name);
    }
}

TEST_P(CopyTest, WhatIsCopiedLastIsRecordedBeforeTheNextLook) {
    setSetting("clipboardPollingInterval", 5); // seconds
    database.fill({{"newest"}, {"second"}});
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
