// Content that outlives the program that copied it, and content that must not.
#include "EndToEndTest.h"

#include <QElapsedTimer>

namespace corvatto::test {

namespace {

using OwnerExitTest = DesktopTest;
ON_EVERY_DESKTOP(OwnerExitTest);

using XOwnerExitTest = X11Test;

} // namespace

TEST_P(OwnerExitTest, TextImagesAndFilesRemain) {
    const QByteArray file = fileUrl(desktop.writeFile("kept file.txt", "x")) + "\r\n";
    launch();
    const QList<Offer> copied{{textTarget, "kept\r\n文"},
                              {"image/png", encoded(testImage({300, 200}), "png")},
                              {"text/uri-list", file}};
    for (const Offer& offer : copied) {
        SCOPED_TRACE(offer.target.toStdString());
        const auto before = database.rows().size();
        // Who ends soon after its start may have cleared the clipboard, for all that Wayland tells of it.
        copy({offer}, {isX11() ? "--age=0" : "--age=3100"});
        ASSERT_TRUE(soon([&] { return database.rows().size() > before; }));
        owner.reset();
        ASSERT_TRUE(soon([this] { return !desktop.clipboardIsEmpty(); }));
        EXPECT_EQ(desktop.paste(offer.target), offer.bytes);
    }
    // Offering again is no copy.
    EXPECT_THAT(rowsAfterNextCopy(), ::testing::Each(::testing::Field(&Database::Row::copyCount, 1)));
}

// However often the program is told to end.
TEST_F(XOwnerExitTest, AClipboardManagerThatHangsIsWaitedForButNotLong) {
    database.fill({"newest", "chosen"});
    launch();
    x.own("CLIPBOARD_MANAGER");
    desktop.key("Return");
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

} // namespace corvatto::test
