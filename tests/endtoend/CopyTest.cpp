// The roads of a copy: what other programs put on the clipboard, and what the history then holds.
#include "EndToEndTest.h"

#include <filesystem>

namespace corvatto::test {

namespace {

class CopyTest : public EndToEndTest {
protected:
    // Waits for an entry of that type and returns it.
    std::optional<Database::Row> soonImage() {
        std::optional<Database::Row> found;
        soon([&] {
            for (const auto& row : database.rows()) {
                if (row.type == "image") {
                    found = row;
                }
            }
            return found.has_value();
        });
        return found;
    }
};

} // namespace

TEST_F(CopyTest, TextIsStoredAsItIs) {
    launch();
    const QByteArrayList texts{"  padded \t",
                               "one\ntwo\r\nthree\n",
                               "表情 👩‍👩‍👧‍👦 和中文，é",
                               "a'b\"c;--%_",
                               QByteArray("before\0after\0", 13),
                               "before"};
    for (const QByteArray& text : texts) {
        copyText(text);
        ASSERT_TRUE(soonStored(text)) << text.constData();
    }
    EXPECT_EQ(database.rows().size(), texts.size());
    copy({{"application/x-unknown", "content"}});
    EXPECT_EQ(rowsAfterNextCopy().size(), texts.size());
}

TEST_F(CopyTest, ATextOfTwentyMegabytesAndBack) {
    QByteArray text;
    for (int line = 0; text.size() < 20'000'000; ++line) {
        text += "line " + QByteArray::number(line) + " 汉字\n";
    }
    launch();
    copyText(text);
    ASSERT_TRUE(soon([&] {
        const auto rows = database.rows();
        return rows.size() == 1 && rows.first().content == text;
    }));
    copyText("something else");
    ASSERT_TRUE(soonStored("something else"));
    hidePanel();
    showPanel();
    x.type("line 7");
    x.key("Return");
    ASSERT_TRUE(soonHidden());
    EXPECT_TRUE(paste() == text); // no printing of all of it
}

TEST_F(CopyTest, ImagesOfEveryFormatBecomeTwoFiles) {
    const QImage image = testImage({1000, 500});
    launch();
    for (const char* format : {"png", "tiff", "bmp"}) {
        SCOPED_TRACE(format);
        copy({{QByteArray("image/") + format, encoded(image, format)}});
        const auto row = soonImage();
        ASSERT_TRUE(row);
        EXPECT_EQ(row->content, desktop.dataDirectory() + "/images/" + row->hash + ".png");
        EXPECT_EQ(row->thumbnail, desktop.dataDirectory() + "/thumbnails/" + row->hash + ".png");
        EXPECT_EQ(decoded(bytesOf(row->content)), image);
        EXPECT_EQ(decoded(bytesOf(*row->thumbnail)).size(), QSize(720, 360));
        EXPECT_EQ(rowsAfterNextCopy().size(), 1);
        database.execute("DELETE FROM clipboard_items");
    }
}

TEST_F(CopyTest, TextStandsInForAnImageThatCannotBeSaved) {
    const auto images = desktop.writeFile("data/Corvatto/images", "in the way");
    const QByteArray png = encoded(testImage({20, 20}), "png");
    launch();
    copy({{"image/png", png}, {"UTF8_STRING", "what the image says"}});
    EXPECT_TRUE(soonStored("what the image says"));
    EXPECT_TRUE(program->hasPrinted("[ImageStorage] ERROR: Failed to write original image."));
    EXPECT_TRUE(program->hasPrinted("  parent exists: true"));
    std::filesystem::remove(images.constData());
    copy({{"image/png", png}, {"UTF8_STRING", "what the image says"}});
    EXPECT_TRUE(soonImage());
    librariesMayComplain = true;
    copy({{"image/png", png.left(png.size() / 2)}, {"UTF8_STRING", "half an image"}});
    EXPECT_TRUE(soonStored("half an image"));
}

TEST_F(CopyTest, FilesAreStoredByTheirPaths) {
    const auto plain = desktop.writeFile("report.pdf", "x"),
               spaced = desktop.writeFile("my notes 50%.txt", "x"),
               chinese = desktop.writeFile("文件 100%25.txt", "x");
    launch();

    copy({{"text/uri-list", fileUrl(plain) + "\r\n"}, {"UTF8_STRING", plain}});
    ASSERT_TRUE(soonStored(plain));
    const QByteArray all = spaced + '\n' + chinese + '\n' + plain;
    copy({{"text/uri-list", fileUrl(spaced) + "\r\n" + fileUrl(chinese) + "\r\n" + fileUrl(plain)}});
    ASSERT_TRUE(soonStored(all));

    // Or only in the form of a file manager.
    copy({{"x-special/gnome-copied-files", "copy\n" + fileUrl(spaced)}, {"UTF8_STRING", spaced}});
    EXPECT_TRUE(soonStored(spaced));
    EXPECT_EQ(database.find(spaced)->type, "file");
}

TEST_F(CopyTest, OfTwoCopiesInQuickSuccessionTheLastIsKept) {
    launch();
    for (int i = 0; i < 10; ++i) {
        const QByteArray first = "first " + QByteArray::number(i), second = "second " + QByteArray::number(i);
        copyText(first);
        copyText(second);
        ASSERT_TRUE(soonStored(second));
        EXPECT_EQ(paste(), second);
    }
    for (const auto& row : rowsAfterNextCopy()) {
        EXPECT_EQ(row.copyCount, 1) << row.content.constData();
    }
}

TEST_F(CopyTest, TheSourceIsTheApplicationInFront) {
    for (const char* entry : {"falcon", "org.example.Heron"}) {
        desktop.writeFile(QByteArray("data/applications/") + entry + ".desktop",
                          QByteArray("[Desktop Entry]\nType=Application\nExec=x\nName=") + entry +
                              " Writer\n");
    }
    launch();
    hidePanel();
    copyText("of nobody"); // the window manager may count the hidden panel as active
    ASSERT_TRUE(soonStored("of nobody"));
    EXPECT_EQ(database.find("of nobody")->sourceApp, "");
    showPanel();
    x.type("own words");
    x.key("ctrl+a ctrl+c");
    ASSERT_TRUE(soonStored("own words"));
    EXPECT_EQ(database.find("own words")->sourceApp, "Corvatto");
    const struct {
        QByteArray windowClass, desktopEntry, name;
    } cases[] = {{"Falcon", "", "falcon Writer"},
                 {"Nameless", "", "Nameless"},
                 {"heron-bin", "org.example.Heron", "org.example.Heron Writer"},
                 {"Eagle", "org.example.Unknown", "Eagle"}};
    for (const auto& [windowClass, desktopEntry, name] : cases) {
        const auto window = x.createWindow({50, 50, 200, 100}, windowClass, desktopEntry);
        ASSERT_TRUE(soon([&] { return x.activeWindow() == window; }));
        copyText("from " + windowClass);
        ASSERT_TRUE(soonStored("from " + windowClass));
        EXPECT_EQ(database.find("from " + windowClass)->sourceApp, name);
    }
}

TEST_F(CopyTest, WhatIsCopiedLastIsRecordedBeforeTheNextLook) {
    setSetting("clipboardPollingInterval", 5); // seconds
    database.fill({{"newest"}, {"second"}});
    launch();
    hidePanel();
    const auto copyUnseen = [this](const QByteArray& text) {
        copyText(text);
        return soon([this] { return owner->hasPrinted("sent UTF8_STRING"); });
    };
    ASSERT_TRUE(copyUnseen("before the shortcut"));
    showPanel();
    EXPECT_TRUE(database.find("before the shortcut"));
    ASSERT_TRUE(copyUnseen("before the choice"));
    x.key("Return");
    ASSERT_TRUE(soonHidden());
    EXPECT_EQ(paste(), "newest"); // the second of the list that was on show
    EXPECT_TRUE(database.find("before the choice"));
    ASSERT_TRUE(copyUnseen("before the end"));
    EXPECT_EQ(program->stop(), 0);
    EXPECT_TRUE(database.find("before the end"));
    launch();
}

} // namespace corvatto::test
