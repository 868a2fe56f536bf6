// From the shelf back to the clipboard, and from there to other programs.
#include "EndToEndTest.h"

#include <filesystem>
#include <fstream>

namespace corvatto::test {

namespace {

using ::testing::Contains;

class PasteBackTest : public DesktopTest {
protected:
    // Copies the first entry of the shelf.
    bool copyBack() {
        desktop.key("ctrl+1");
        return soonHidden();
    }
};

ON_EVERY_DESKTOP(PasteBackTest);

} // namespace

TEST_P(PasteBackTest, TextInEveryFlavourAndNoNewEntry) {
    const QByteArray text =
        QByteArray("  Zwölf\nBoxkämpfer 和 👩‍👩‍👧‍👦 ") + '\0' + "end \t\r\n";
    database.fill({text, "other"});
    launch();
    ASSERT_TRUE(copyBack());
    EXPECT_TRUE(soonStored(text, 2));
    for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"}) {
        EXPECT_EQ(desktop.paste(target), text) << target;
    }
    EXPECT_THAT(desktop.targets(), Contains("STRING"));

    EXPECT_EQ(rowsAfterNextCopy().size(), 2);
    EXPECT_EQ(database.find(text)->copyCount, 2);
    // Another program's copy of the same text is a copy.
    copyText(text);
    EXPECT_TRUE(soonStored(text, 3));
}

// One that may copy and paste only while it has the keyboard, where the desktop sees to that.
TEST_P(PasteBackTest, AnOrdinaryProgramCopiesAndPastes) {
    launch();
    hidePanel();
    desktop.openWindow("Falcon");
    desktop.key("ctrl+c");
    ASSERT_TRUE(soonStored("copied in a window"));
    EXPECT_EQ(database.find("copied in a window")->sourceApp, "Falcon");
    record("a later copy");
    showPanel();
    desktop.key("Return");
    ASSERT_TRUE(soonHidden());
    ASSERT_TRUE(soon([this] { return desktop.windowInFront(program->pid()).application == "Falcon"; }));
    desktop.key("ctrl+v");
    EXPECT_TRUE(soon([this] { return desktop.printedByWindow() == "copied in a window\n"; }));
}

TEST_P(PasteBackTest, FilesWhoseNamesAreNotUtf8) {
    const std::filesystem::path directory = desktop.home().constData();
    for (const char* name : {"caf\xe9.txt", "caf\xe8.txt", "two\nlines.txt"}) {
        std::ofstream(directory / name) << "x";
    }
    const QByteArray base = "file://" + desktop.home() + '/';
    launch();
    for (const QByteArray name : {"caf%E9.txt", "caf%E8.txt", "two%0Alines.txt"}) {
        copy({{"text/uri-list", base + name + "\r\n"}});
        ASSERT_TRUE(soonStored(base + name));
        record("not " + name);
        desktop.type(base + name);
        ASSERT_TRUE(copyBack());
        EXPECT_EQ(desktop.paste("text/uri-list").value_or("").trimmed(), base + name);
        EXPECT_TRUE(soonStored(base + name, 2));
        showPanel();
        desktop.key("ctrl+a BackSpace");
    }
    EXPECT_EQ(database.find(base + "caf%E9.txt")->preview, "caf\xef\xbf\xbd.txt");
}

} // namespace corvatto::test
