// The roads of a copy: what other programs put on the clipboard, and what the history then holds.
#include "EndToEndTest.h"

#include <QCryptographicHash>

#include <filesystem>

namespace corvatto::test {

namespace {

QByteArray sha256(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

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
    const QByteArray family = "👩‍👩‍👧‍👦"; // one character of seven code points
    const struct {
        QByteArray text, preview;
    } cases[] = {
        {"  padded \t", "  padded \t"},
        {"one\ntwo\r\nthree\n", "one two  three "},
        {"表情 " + family + " 和中文，é", "表情 " + family + " 和中文，é"},
        {QByteArray(119, 'x') + family + "y", QByteArray(119, 'x') + family},
        {"a'b\"c;--%_", "a'b\"c;--%_"},
        {QByteArray("before\0after\0", 13), QByteArray("before\0after\0", 13)},
        {"before", "before"},
    };
    for (const auto& [text, preview] : cases) {
        copyText(text);
        ASSERT_TRUE(soonStored(text)) << text.constData();
        const auto row = *database.find(text);
        EXPECT_EQ(row.preview, preview);
        EXPECT_EQ(row.hash, sha256(text));
        EXPECT_EQ(row.type, "text");
        EXPECT_EQ(row.thumbnail, std::nullopt);
        EXPECT_EQ(row.firstCopiedAt, row.lastCopiedAt);
    }
    EXPECT_EQ(database.rows().size(), std::size(cases));
    // Of several flavours the one that loses nothing wins; any will do.
    copy({{"STRING", "??"}, {"text/html", "<b>汉字</b>"}, {"UTF8_STRING", "汉字"}});
    EXPECT_TRUE(soonStored("汉字"));
    copy({{"text/plain;charset=gb18030", "\xd6\xd0\xce\xc4"}});
    EXPECT_TRUE(soonStored("中文"));
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
    EXPECT_EQ(database.rows().first().preview.left(15), "line 0 汉字 l");

    copyText("something else");
    ASSERT_TRUE(soonStored("something else"));
    hidePanel();
    showPanel();
    x.type("line 7");
    x.key("Return");
    ASSERT_TRUE(soonHidden());
    EXPECT_TRUE(paste() == text); // no printing of all of it
}

TEST_F(CopyTest, WhiteSpaceAndUnknownContentAreNoCopies) {
    launch();
    copyText(" \t\r\n \n");
    EXPECT_TRUE(rowsAfterNextCopy().isEmpty());
    copy({{"application/x-unknown", "content"}});
    EXPECT_EQ(rowsAfterNextCopy().size(), 1); // the copy before
}

TEST_F(CopyTest, ImagesOfEveryFormatBecomeTwoFiles) {
    const QImage image = testImage({1000, 500});
    launch();
    for (const char* format : {"png", "tiff", "bmp"}) {
        SCOPED_TRACE(format);
        copy({{QByteArray("image/") + format, encoded(image, format)}});
        const auto row = soonImage();
        ASSERT_TRUE(row);
        EXPECT_EQ(row->preview, "Image 1000×500");
        EXPECT_EQ(row->content, desktop.dataDirectory() + "/images/" + row->hash + ".png");
        EXPECT_EQ(row->thumbnail, desktop.dataDirectory() + "/thumbnails/" + row->hash + ".png");
        EXPECT_EQ(decoded(bytesOf(row->content)), image);
        const QSize thumbnail = decoded(bytesOf(*row->thumbnail)).size();
        EXPECT_EQ(thumbnail.width(), 2 * thumbnail.height());
        EXPECT_TRUE(thumbnail.width() >= 360 && thumbnail.width() <= 720) << thumbnail.width();
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
    copy({{"image/png", png}});
    EXPECT_EQ(rowsAfterNextCopy().size(), 1);

    std::filesystem::remove(images.constData());
    copy({{"image/png", png}, {"UTF8_STRING", "what the image says"}});
    EXPECT_TRUE(soonImage());
}

TEST_F(CopyTest, FilesAreStoredByTheirPaths) {
    const auto plain = desktop.writeFile("report.pdf", "x"),
               spaced = desktop.writeFile("my notes 50%.txt", "x"),
               chinese = desktop.writeFile("文件 100%25.txt", "x");
    launch();

    copy({{"text/uri-list", fileUrl(plain) + "\r\n"}, {"UTF8_STRING", plain}});
    ASSERT_TRUE(soonStored(plain));
    EXPECT_EQ(database.find(plain)->type, "file");
    EXPECT_EQ(database.find(plain)->preview, "report.pdf");
    EXPECT_EQ(database.find(plain)->hash, sha256("file|" + plain));

    const QByteArray all = spaced + '\n' + chinese + '\n' + plain;
    copy({{"text/uri-list", "# a comment\r\n" + fileUrl(spaced) + "\r\n" + fileUrl(chinese) + "\r\n" +
                                fileUrl(plain) + "\r\n"}});
    ASSERT_TRUE(soonStored(all));
    EXPECT_EQ(database.find(all)->preview, "my notes 50%.txt + 2 more");
    EXPECT_EQ(database.find(all)->hash, sha256("file|" + all));

    // What is on other machines is no file, and a list of nothing else is as good as its text.
    copy({{"text/uri-list", "https://example.org/a\r\n"}, {"UTF8_STRING", "a link"}});
    EXPECT_TRUE(soonStored("a link"));
    copy({{"text/uri-list",
           "https://example.org/a\r\n" + fileUrl(spaced) + "\r\nfile://elsewhere.org/c\r\n"}});
    EXPECT_TRUE(soonStored(spaced));
    // A file comes with its icon, or only in the form of a file manager.
    copy({{"text/uri-list", fileUrl(chinese)}, {"image/png", encoded(testImage({16, 16}), "png")}});
    EXPECT_TRUE(soonStored(chinese));
    copy({{"x-special/gnome-copied-files", "copy\n" + fileUrl(spaced)}, {"UTF8_STRING", spaced}});
    EXPECT_TRUE(soonStored(spaced, 2));
    for (const auto& row : rowsAfterNextCopy()) {
        EXPECT_EQ(row.type, row.content == "a link" ? "text" : "file");
    }
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
    desktop.writeFile("data/applications/falcon.desktop",
                      "[Desktop Entry]\nType=Application\nExec=falcon\nName=Falcon Writer\n");
    launch();
    x.createWindow({50, 50, 200, 100}, "Falcon");
    ASSERT_TRUE(soon([this] { return x.windowClass(x.activeWindow()) == "Falcon"; }));
    copyText("from the writer");
    ASSERT_TRUE(soonStored("from the writer"));
    EXPECT_EQ(database.find("from the writer")->sourceApp, "Falcon Writer");

    x.createWindow({50, 150, 200, 100}, "Nameless");
    ASSERT_TRUE(soon([this] { return x.windowClass(x.activeWindow()) == "Nameless"; }));
    copyText("from the writer");
    ASSERT_TRUE(soonStored("from the writer", 2));
    EXPECT_EQ(database.find("from the writer")->sourceApp, "Nameless");
}

} // namespace corvatto::test
