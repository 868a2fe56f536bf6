#include "StoreTest.h"

#include <QDir>
#include <QFileInfo>

namespace corvatto {
namespace {

using test::CapturedOutput;
using test::texts;
using namespace std::chrono_literals;

class Retention : public test::StoreTest {
protected:
    void SetUp() override { open(); }

    bool hasFiles(const char* name) const {
        EXPECT_EQ(QFileInfo::exists(imageFile(name)), QFileInfo::exists(thumbnailFile(name)));
        return QFileInfo::exists(imageFile(name));
    }
};

TEST_F(Retention, KeepsTheNewestByCountWithTheFilesOfNoOthers) {
    recordImage("old");
    store->insertOrUpdate(imageFile("new"), {}); // a text that is a path owns no file
    recordImage("new");
    record(QStringLiteral("a"));
    limitCount(3);
    EXPECT_EQ(contents().size(), 4) << "a lower limit waits for the next recording";
    record(QStringLiteral("b"));
    EXPECT_EQ(contents(), QStringList({QStringLiteral("b"), QStringLiteral("a"), imageFile("new")}));
    EXPECT_FALSE(hasFiles("old"));
    EXPECT_TRUE(hasFiles("new"));

    record(QStringLiteral("a")); // a repeat removes nothing
    EXPECT_EQ(contents(), QStringList({QStringLiteral("a"), QStringLiteral("b"), imageFile("new")}));
    store->insertOrUpdate(QStringLiteral("c"), {});
    store->insertOrUpdate(QStringLiteral("d"), {}); // of equal times the lowest id goes first
    EXPECT_EQ(sql("SELECT content FROM clipboard_items ORDER BY id"), texts({"a", "c", "d"}));
    limitCount(-1);
    record(QStringLiteral("e"));
    EXPECT_EQ(contents().size(), 4);
}

TEST_F(Retention, RemovesWhatIsStrictlyOlderThanTheDays) {
    limitDays(1);
    recordImage("gone");  // at 1 s
    recordImage("exact"); // at 2 s
    wait(24h - 1s);
    record(QStringLiteral("now")); // "exact" is 86400 s old
    EXPECT_EQ(contents(), QStringList({QStringLiteral("now"), imageFile("exact")}));
    EXPECT_FALSE(hasFiles("gone"));
    EXPECT_TRUE(hasFiles("exact"));

    limitDays(std::numeric_limits<qint64>::max()); // overflows nothing
    wait(24h * 1000);
    record(QStringLiteral("later"));
    EXPECT_EQ(contents().size(), 3);
}

TEST_F(Retention, AClockThatIsSetTakesNothingByItself) {
    limitDays(1);
    record(QStringLiteral("right"));
    wait(24h * 3650);
    store->incrementCopyCount(1); // neither a copy-back
    open();                       // nor a start removes anything
    EXPECT_EQ(contents(), texts({"right"}));
    wait(-24h * 7300); // before everything
    record(QStringLiteral("early"));
    EXPECT_EQ(contents(), texts({"right", "early"})) << "entries of the future are not old";
    wait(24h * 3650);
    record(QStringLiteral("late"));
    EXPECT_EQ(contents(), texts({"right", "late"})) << "entries expire by the time they were given";
    time = std::chrono::milliseconds(-1500); // before 1970, where truncation goes the other way
    record(QStringLiteral("first"));
    EXPECT_EQ(sql("SELECT last_copied_at FROM clipboard_items WHERE content = 'first'"), texts({"0"}));
    EXPECT_EQ(contents(), texts({"right", "late", "first"}));
}

TEST_F(Retention, FilesOutliveRowsThatCannotBeDeleted) {
    recordImage("image");
    sql("CREATE TRIGGER no_delete BEFORE DELETE ON clipboard_items BEGIN SELECT RAISE(ABORT, 'refused'); "
        "END");
    limitCount(1);
    limitDays(1);
    wait(48h);
    CapturedOutput output;
    record(QStringLiteral("new"));
    store->deleteAll();
    EXPECT_EQ(output.text(), "[ClipboardStore] ERROR: cleanupByDays failed: refused\n"
                             "[ClipboardStore] ERROR: cleanupByCount failed: refused\n"
                             "[ClipboardStore] ERROR: deleteAll failed: refused\n");
    EXPECT_TRUE(hasFiles("image"));
    EXPECT_EQ(contents(), QStringList({QStringLiteral("new"), imageFile("image")}));
}

TEST_F(Retention, GoesOnAfterAFileThatCannotBeRemoved) {
    recordImage("a");
    QFile::remove(imageFile("a"));
    QDir().mkpath(imageFile("a") + QStringLiteral("/a directory with something in it"));
    recordImage("b");
    QFile::remove(imageFile("b")); // missing files are no failure
    limitCount(1);
    CapturedOutput output;
    record(QStringLiteral("new"));
    const QByteArray prefix =
        "[ClipboardStore] Failed to delete image file " + imageFile("a").toUtf8() + ": ";
    EXPECT_TRUE(output.text().startsWith(prefix) && output.text().count('\n') == 1);
    EXPECT_FALSE(QFileInfo::exists(thumbnailFile("a")) || QFileInfo::exists(thumbnailFile("b")));
    EXPECT_EQ(contents(), texts({"new"}));
}

TEST_F(Retention, ClearingTakesEverythingButTheIds) {
    recordImage("image");
    record(QStringLiteral("text"));
    CapturedOutput output;
    store->deleteAll();
    EXPECT_EQ(contents(), QStringList());
    EXPECT_FALSE(QFileInfo::exists(store->imagesDir()) || QFileInfo::exists(store->thumbnailsDir()));
    record(QStringLiteral("after"));
    EXPECT_EQ(sql("SELECT id FROM clipboard_items"), texts({"3"}));
    EXPECT_EQ(output.text(), "");
}

} // namespace
} // namespace corvatto
