// Content that outlives the program that copied it, and content that must not.
#include "EndToEndTest.h"

#include <QElapsedTimer>

namespace corvatto::test {

namespace {

class OwnerExitTest : public EndToEndTest {
protected:
    // Ends the program that copied, and waits until somebody else offers the content.
    bool soonOfferedAgain() {
        owner.reset();
        return soon([this] { return x.clipboardOwner() != XCB_NONE; });
    }

    // What would be offered again is by then: the program has had many turns of its event loop since it has
    // heard of the owner's end.
    bool isGone() {
        owner.reset();
        hidePanel();
        showPanel();
        return x.clipboardOwner() == XCB_NONE;
    }
};

} // namespace

TEST_F(OwnerExitTest, TextImagesAndFilesRemain) {
    const QImage image = testImage({300, 200});
    const QByteArray file = desktop.writeFile("kept file.txt", "x");
    launch();
    copyText("kept\r\n文");
    ASSERT_TRUE(soonStored("kept\r\n文"));
    ASSERT_TRUE(soonOfferedAgain());
    EXPECT_EQ(paste(), "kept\r\n文");

    copy({{"image/png", encoded(image, "png")}});
    ASSERT_TRUE(soon([this] { return database.rows().size() == 2; }));
    ASSERT_TRUE(soonOfferedAgain());
    EXPECT_EQ(decoded(paste("image/png").value_or("")), image);

    copy({{"text/uri-list", fileUrl(file) + "\r\n"}});
    ASSERT_TRUE(soonStored(file));
    ASSERT_TRUE(soonOfferedAgain());
    EXPECT_EQ(paste("text/uri-list").value_or("").trimmed(), fileUrl(file));

    const auto rows = rowsAfterNextCopy();
    EXPECT_EQ(rows.size(), 3);
    for (const auto& row : rows) {
        EXPECT_EQ(row.copyCount, 1) << row.content.constData(); // offering again is no copy
    }
}

// However often the program is told to end.
TEST_F(OwnerExitTest, AClipboardManagerThatHangsIsWaitedForButNotLong) {
    database.fill({{"newest"}, {"chosen"}});
    launch();
    x.own("CLIPBOARD_MANAGER");
    x.key("Return");
    ASSERT_TRUE(soonHidden());
    QElapsedTimer time;
    time.start();
    EXPECT_TRUE(soon(
        [this] { return !program->isRunning() || kill(static_cast<pid_t>(program->pid()), SIGTERM) != 0; }));
    EXPECT_GE(time.elapsed(), 1'500);
    EXPECT_LE(time.elapsed(), 5'000);
    EXPECT_EQ(program->exitStatus(), 0);
    launch(); // and it starts again
}

TEST_F(OwnerExitTest, AClearedClipboardStaysEmpty) {
    launch();
    copyText("cleared");
    ASSERT_TRUE(soonStored("cleared"));
    x.clearClipboard();
    EXPECT_TRUE(isGone());
    copyText("cleared");
    EXPECT_TRUE(soonStored("cleared", 2));
}

TEST_F(OwnerExitTest, SecretsAreNeitherAskedForNorStoredNorKept) {
    launch();
    copy({{"UTF8_STRING", "hunter2"}, {"text/plain", "hunter2"}, {"x-kde-passwordManagerHint", "secret"}});
    ASSERT_TRUE(soon([this] { return owner->hasPrinted("sent x-kde-passwordManagerHint"); }));
    hidePanel();
    showPanel();
    EXPECT_FALSE(owner->output().contains("request UTF8_STRING"));
    EXPECT_FALSE(owner->output().contains("request text/plain"));
    EXPECT_TRUE(isGone());
    EXPECT_TRUE(rowsAfterNextCopy().isEmpty());
    EXPECT_FALSE(program->output().contains("hunter2"));
    // A mark that cannot be read is one. The mark alone is none, only its value.
    copy({{"UTF8_STRING", "hunter3"}, {"x-kde-passwordManagerHint", "secret"}}, {"--lie=1"});
    ASSERT_TRUE(soon([this] { return owner->hasPrinted("sent x-kde-passwordManagerHint"); }));
    const auto unreadable = std::move(owner);
    EXPECT_EQ(rowsAfterNextCopy().size(), 1); // the good copy of before
    EXPECT_FALSE(unreadable->hasPrinted("request UTF8_STRING"));
    copy({{"UTF8_STRING", "hunted"}, {"x-kde-passwordManagerHint", "public"}});
    EXPECT_TRUE(soonStored("hunted"));
}

} // namespace corvatto::test
