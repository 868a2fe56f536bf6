// Content of many megabytes: stored whole and given back whole.
#include "EndToEndTest.h"

namespace corvatto::test {

namespace {
using LargeContentTest = EndToEndTest;
} // namespace

TEST_F(LargeContentTest, ATextOfTwentyMegabytes) {
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

TEST_F(LargeContentTest, AScreenshotOfAnUltraHighDefinitionScreen) {
    const QImage image = testImage({3840, 2160});
    launch();
    copy({{"image/png", encoded(image, "png")}});
    ASSERT_TRUE(soon([this] { return database.rows().size() == 1; }));
    const auto row = database.rows().first();
    EXPECT_EQ(row.preview, "Image 3840×2160");
    EXPECT_TRUE(decoded(bytesOf(row.content)) == image);

    // Its owner ends, the clipboard is copied over, and the shelf gives it back.
    owner.reset();
    ASSERT_TRUE(soon([this] { return x.clipboardOwner() != XCB_NONE; }));
    const auto isWhole = [&] {
        return decoded(paste("image/png").value_or("")) == image;
    };
    EXPECT_TRUE(isWhole());
    copyText("something else");
    ASSERT_TRUE(soonStored("something else"));
    x.type("3840");
    x.key("Return");
    ASSERT_TRUE(soonHidden());
    EXPECT_TRUE(isWhole());
}

} // namespace corvatto::test
