#include "StoreTest.h"

#include "support/Eventually.h"
#include "support/Files.h"

#include <filesystem>

namespace corvatto {
namespace {

using test::texts;
using namespace std::chrono_literals;

class Retention : public test::StoreTest {
protected:
    test::CapturedOutput output;

    void SetUp() override { open(); }

    bool hasFiles(const QString& name) const {
        EXPECT_EQ(QFileInfo::exists(imageFile(name)), QFileInfo::exists(thumbnailFile(name)));
        return QFileInfo::exists(imageFile(name));
    }
    QStringList inOrderOfIds() const { return sql("SELECT content FROM clipboard_items ORDER BY id"); }
};

TEST_F(Retention, KeepsTheNewestByCountWithTheFilesOfNoOthers) {
    recordImage(u"old"_qs);
    record(imageFile(u"new"_qs)); // a text that is a path owns no file
    recordImage(u"new"_qs);
    record(u"a"_qs);
    limitCount(3);
    EXPECT_EQ(contents().size(), 4) << "a lower limit waits for the next recording";
    record(u"a"_qs); // a repeat is one
    EXPECT_EQ(contents().size(), 3);
    EXPECT_FALSE(hasFiles(u"old"_qs));
    record(u"b"_qs);
    EXPECT_EQ(contents(), QStringList({u"b"_qs, u"a"_qs, imageFile(u"new"_qs)}));
    EXPECT_TRUE(hasFiles(u"new"_qs));
    sql("DELETE FROM clipboard_items WHERE content = 'a'"); // by another program
    record(u"c"_qs);
    EXPECT_EQ(contents(), QStringList({u"c"_qs, u"b"_qs, imageFile(u"new"_qs)}));

    limitCount(-1);
    clear();
    open(); // makes the directories
    for (const QString& name : texts({"1", "2", "3"})) {
        wait(-1s);
        recordImage(name); // all at one time
    }
    limitCount(2);
    sql("CREATE TRIGGER refuse BEFORE INSERT ON clipboard_items BEGIN SELECT RAISE(ABORT, 'refused'); END");
    store->insertOrUpdate(u"c"_qs, {}); // a recording that fails is one too
    store->finish();
    EXPECT_EQ(output.text(), "[ClipboardStore] ERROR: Insert failed: refused\n");
    EXPECT_EQ(inOrderOfIds(), QStringList({imageFile(u"2"_qs), imageFile(u"3"_qs)})) << "the lowest id first";
    EXPECT_FALSE(hasFiles(u"1"_qs));
    EXPECT_TRUE(hasFiles(u"2"_qs) && hasFiles(u"3"_qs));
}

TEST_F(Retention, KeepsTheFilesOfAnImageThatIsCopiedAgainMeanwhile) {
    recordImage(u"image"_qs);
    limitCount(1);
    auto files = store->keepImageFiles(); // and the image is saved
    record(u"text"_qs);
    EXPECT_EQ(contents(), texts({"text"}));
    EXPECT_TRUE(hasFiles(u"image"_qs));
    store->insertOrUpdateImage(imageFile(u"image"_qs), thumbnailFile(u"image"_qs), u"image"_qs, {}, {});
    files.reset();
    EXPECT_TRUE(hasFiles(u"image"_qs));
    record(u"other"_qs);
    EXPECT_FALSE(hasFiles(u"image"_qs));
}

TEST_F(Retention, RemovesWhatIsStrictlyOlderThanTheDays) {
    limitDays(1);
    recordImage(u"gone"_qs); // at 1 s
    recordImage(u"kept"_qs); // at 2 s
    sql("UPDATE clipboard_items SET content_type = 'text' WHERE id = 2");
    recordImage(u"exact"_qs); // at 3 s
    wait(24h - 1s);
    record(u"now"_qs); // "exact" is 86400 s old
    EXPECT_EQ(contents(), QStringList({u"now"_qs, imageFile(u"exact"_qs)}));
    EXPECT_FALSE(hasFiles(u"gone"_qs));
    EXPECT_TRUE(hasFiles(u"exact"_qs));
    EXPECT_TRUE(hasFiles(u"kept"_qs)) << "named by a text";

    limitDays(std::numeric_limits<qint64>::max()); // overflows nothing
    wait(24h * 1000);
    record(u"later"_qs);
    EXPECT_EQ(contents().size(), 3);
}

TEST_F(Retention, RemovesMuchLittleByLittleAndShowsNoneOfIt) {
    const auto rows = [this] {
        return sql("SELECT COUNT(*) FROM clipboard_items")[0].toInt();
    };
    const auto withLimit = [&](auto limit, const QStringList& kept) {
        limitCount(0);
        limitDays(0);
        recordImage(u"old image"_qs);
        sql("UPDATE clipboard_items SET last_copied_at = 1;" // and many of one second
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000)"
            "INSERT INTO clipboard_items (content, content_hash, preview, first_copied_at, last_copied_at)"
            "SELECT 'old' || hex(zeroblob(2000)), i, '', 1, i / 1000 + 2 FROM n");
        wait(24h);
        (this->*limit)(1);
        record(u"new"_qs);
        EXPECT_EQ(contents(), kept);
        EXPECT_EQ(contents(u"old"_qs), QStringList());
        EXPECT_GT(rows(), 1000);
        open(); // as after an end between two slices
        record(u"newer"_qs);
        const int left = rows();
        EXPECT_EQ(contents(u"old"_qs), QStringList());
        EXPECT_TRUE(test::eventually([&] { return rows() == static_cast<int>(contents().size()); }));
        EXPECT_GT(left, 1000);
        EXPECT_TRUE(test::eventually([&] { return sql("PRAGMA page_count")[0].toInt() < 400; }));
        EXPECT_FALSE(hasFiles(u"old image"_qs));
    };
    withLimit(&Retention::limitCount, texts({"new"}));
    EXPECT_EQ(contents(), texts({"newer"}));
    withLimit(&Retention::limitDays, texts({"new"}));
    EXPECT_EQ(contents(), texts({"newer", "new"}));
}

TEST_F(Retention, AClockThatIsSetTakesNothingByItself) {
    limitDays(1);
    record(u"right"_qs);
    wait(24h * 3650);
    store->incrementCopyCount(1); // neither a copy-back
    open();                       // nor a start removes anything
    EXPECT_EQ(contents(), texts({"right"}));
    wait(-24h * 7300); // before everything
    record(u"early"_qs);
    EXPECT_EQ(contents(), texts({"right", "early"})) << "entries of the future are not old";
    wait(24h * 3650);
    record(u"late"_qs);
    EXPECT_EQ(contents(), texts({"right", "late"})) << "entries expire by the time they were given";
    wait(-1h);
    record(u"right"_qs);
    EXPECT_EQ(contents(), texts({"late", "right"})) << "the time of the last copy, not the latest time";
    time = std::chrono::milliseconds(-1500); // before 1970, where truncation goes the other way
    record(u"first"_qs);
    EXPECT_EQ(sql("SELECT last_copied_at FROM clipboard_items WHERE content = 'first'"), texts({"0"}));
    EXPECT_EQ(contents(), texts({"late", "right", "first"}));
}

TEST_F(Retention, FilesOutliveRowsThatCannotBeDeleted) {
    recordImage(u"image"_qs);
    sql("CREATE TRIGGER refuse BEFORE DELETE ON clipboard_items BEGIN SELECT RAISE(ABORT, 'refused'); END");
    limitCount(1);
    limitDays(1);
    wait(48h);
    record(u"new"_qs);
    clear();
    EXPECT_EQ(output.text(), "[ClipboardStore] ERROR: cleanupByDays failed: refused\n"
                             "[ClipboardStore] ERROR: cleanupByCount failed: refused\n"
                             "[ClipboardStore] ERROR: deleteAll failed: refused\n");
    EXPECT_TRUE(hasFiles(u"image"_qs));
    EXPECT_EQ(contents(), QStringList({u"new"_qs, imageFile(u"image"_qs)}));
}

TEST_F(Retention, GoesOnAfterAFileThatCannotBeRemovedAndClearingTakesAllButTheIds) {
    recordImage(u"a"_qs);
    QFile::remove(imageFile(u"a"_qs));
    QDir().mkpath(imageFile(u"a"_qs) + u"/a directory with something in it"_qs);
    recordImage(u"b"_qs);
    QFile::remove(imageFile(u"b"_qs)); // missing files are no failure
    limitCount(1);
    record(u"new"_qs);
    EXPECT_EQ(output.text(), "[ClipboardStore] Failed to delete image file " + imageFile(u"a"_qs).toUtf8() +
                                 ": Directory not empty (code 39, path " + imageFile(u"a"_qs).toUtf8() +
                                 ")\n");
    EXPECT_FALSE(QFileInfo::exists(thumbnailFile(u"a"_qs)) || QFileInfo::exists(thumbnailFile(u"b"_qs)));
    EXPECT_EQ(contents(), texts({"new"}));

    const auto expectNothingLeft = [this] {
        EXPECT_EQ(contents(), QStringList());
        for (const char* file : {"Corvatto/corvatto.sqlite3", "Corvatto/corvatto.sqlite3-wal"}) {
            QFile bytes(path(file));
            EXPECT_TRUE(bytes.open(QIODevice::ReadOnly) && bytes.size() < 200'000) << file;
            EXPECT_FALSE(bytes.readAll().contains("s3cret")) << file;
        }
    };
    record(u"s3cret"_qs.repeated(100'000));
    clear();
    expectNothingLeft();
    EXPECT_FALSE(QFileInfo::exists(store->imagesDir()) || QFileInfo::exists(store->thumbnailsDir()));
    record(u"s3cret"_qs.repeated(100'000));
    EXPECT_EQ(sql("SELECT id FROM clipboard_items"), texts({"5"}));
    test::writeFile(path("Corvatto/clearing"), "5"); // and killed before the rest
    open();
    record(u"new"_qs); // waits for it
    EXPECT_EQ(contents(), texts({"new"}));
    clear();
    expectNothingLeft();
    EXPECT_FALSE(QFileInfo::exists(path("Corvatto/clearing")));
    record(u"later"_qs);
    test::writeFile(path("Corvatto/clearing"), "6"); // could not be removed
    open();
    EXPECT_EQ(contents(), texts({"later"}));
}

TEST_F(Retention, ClearingEmptiesTheListAtOnceAndKeepsWhatIsCopiedMeanwhile) {
    record(u"s3cret"_qs);
    recordImage(u"image"_qs);
    sqlite3* other = nullptr; // holds it up
    sqlite3_open(path("Corvatto/corvatto.sqlite3").toUtf8().constData(), &other);
    QDir().mkpath(path("killed"));
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    store->deleteAll();
    EXPECT_EQ(contents(), QStringList());
    EXPECT_TRUE(test::eventually([this] { return QFile::exists(path("Corvatto/clearing")); }));
    std::filesystem::copy(path("Corvatto").toStdString(), path("killed/Corvatto").toStdString(),
                          std::filesystem::copy_options::recursive);
    sqlite3_close(other);
    ClipboardStore next(path("killed"), preferences);
    next.finish();
    EXPECT_TRUE(next.fetchRecent(std::nullopt, 9).isEmpty()) << "came back";
    EXPECT_EQ(contents(u"s3cret"_qs), QStringList());
    int recorded = 0;
    const auto count = [&recorded] {
        ++recorded;
    };
    store->insertOrUpdate(u"s3cret"_qs, {}, count); // nothing that was there before counts
    store->incrementCopyCount(3);
    EXPECT_EQ(recorded, 0) << "waits for the disk";
    EXPECT_TRUE(test::eventually([&] { return recorded == 1; }));
    EXPECT_EQ(sql("SELECT id, content, copy_count FROM clipboard_items"), texts({"3|s3cret|2"}));
}

} // namespace
} // namespace corvatto
