#include "StoreTest.h"

#include "FaultyVfs.h"
#include "store/ContentHash.h"
#include "support/Eventually.h"

namespace corvatto {
namespace {

using test::texts;
using namespace std::chrono_literals;

class Recording : public test::StoreTest {
protected:
    void SetUp() override { open(); }
    QString previewOf(const QString& text) {
        record(text);
        return newest().preview;
    }
};

TEST_F(Recording, CountsARepeatedTextOnItsOneEntry) {
    const QString text = u"\uFEFF  it's \"100%\"\0 \U0001F600; -- "_qs;
    wait(999ms); // a fraction of a second is cut off, not rounded
    store->insertOrUpdate(text, u"Editor"_qs);
    wait(60s);
    store->insertOrUpdate(text, {});
    EXPECT_EQ(sql("SELECT id, content_type, source_app, thumbnail_path, copy_count, first_copied_at,"
                  " last_copied_at FROM clipboard_items"),
              texts({"1|text||NULL|2|1700000000|1700000060"}));
    EXPECT_EQ(newest().content.load(), text);
    EXPECT_EQ(newest().copyCount, 2);
    EXPECT_EQ(newest().thumbnailPath, std::optional(QString())) << "NULL reads as present and empty";
    EXPECT_EQ(newest().lastCopiedAt, QDateTime::fromSecsSinceEpoch(1700000060, Qt::UTC));

    record(u"second"_qs);
    wait(1s);
    store->incrementCopyCount(1);
    store->incrementCopyCount(99);
    EXPECT_EQ(contents(), QStringList({text, u"second"_qs}));
    EXPECT_EQ(sql("SELECT copy_count, source_app, first_copied_at FROM clipboard_items"),
              texts({"3||1700000000", "1|Editor|1700000061"}));
}

TEST_F(Recording, KeepsImagesAndFilesAsTheirKinds) {
    store->insertOrUpdateImage(u"/i/a.png"_qs, u"/t/a.png"_qs, u"hash"_qs, u"Image 2×1"_qs, u"Camera"_qs);
    wait(1s);
    store->insertOrUpdateImage(u"/other.png"_qs, u"/other.png"_qs, u"hash"_qs, u"Other"_qs, u"Viewer"_qs);
    const QStringList paths = texts({"/home/a/报告 100%.tar.gz", "/b c/", "/"});
    store->insertOrUpdateFile(paths, u"Files"_qs);
    store->insertOrUpdateFile({paths[1], paths[0], paths[2]}, {}); // another order is another entry
    store->insertOrUpdateFile({paths[1]}, {});
    store->insertOrUpdateFile({paths[2]}, {});
    store->insertOrUpdateFile({}, u"Files"_qs);
    EXPECT_EQ(sql("SELECT content_type, preview, thumbnail_path, source_app, copy_count,"
                  " last_copied_at - first_copied_at FROM clipboard_items ORDER BY id"),
              texts({"image|Image 2×1|/t/a.png|Viewer|2|1", "file|报告 100%.tar.gz + 2 more|NULL|Files|1|0",
                     "file|b c + 2 more|NULL||1|0", "file|b c|NULL||1|0", "file|/|NULL||1|0"}));
    const QString joined = paths.join(u'\n');
    EXPECT_EQ(sql("SELECT content, content_hash FROM clipboard_items WHERE id < 3"),
              QStringList({u"/i/a.png|hash"_qs, joined + u'|' + sha256(u"file|"_qs + joined)}));
    // A text that spells out what is hashed for a file entry has that entry's identity.
    store->insertOrUpdate(u"file|/"_qs, {});
    EXPECT_EQ(sql("SELECT COUNT(*) FROM clipboard_items"), texts({"5"}));
}

TEST_F(Recording, WritesLongTextsBesideTheEventLoopAndInOrder) {
    const QString text = u"s3cret"_qs.repeated(1'000'000);
    int recorded = 0;
    const auto count = [&recorded] {
        ++recorded;
    };
    store->insertOrUpdate(text, u"Editor"_qs, count);
    store->incrementCopyCount(1);
    store->insertOrUpdate(u"after it"_qs, {}, count);
    EXPECT_EQ(recorded, 0) << "waited for the disk";
    EXPECT_TRUE(test::eventually([&] { return recorded == 2; }));
    EXPECT_EQ(sql("SELECT id, content_hash, preview, source_app, copy_count FROM clipboard_items"),
              QStringList({u"1|%1|%2|Editor|2"_qs.arg(sha256(text), text.left(120)),
                           u"2|%1|after it||1"_qs.arg(sha256(u"after it"_qs))}));
    EXPECT_LT(QFile(path("Corvatto/corvatto.sqlite3-wal")).size(), 5'000'000);
    store->insertOrUpdate(text, {});
    store.reset(); // at the end it is waited for
    EXPECT_EQ(sql("SELECT copy_count FROM clipboard_items"), texts({"3", "1"}));
}

TEST_F(Recording, MovesTheLogIntoTheDatabaseBesideTheEventLoop) {
    const auto sizeOf = [this](const char* file) {
        return QFile(path(file)).size();
    };
    int number = 0;
    const auto recordMore = [&] {
        store->insertOrUpdate(QString::number(++number) + QString(500'000, u'x'), {});
    };
    const auto recordUntilMoved = [&](qint64 size) {
        return test::eventually([&] {
            recordMore();
            return sizeOf("Corvatto/corvatto.sqlite3") > size;
        });
    };
    EXPECT_TRUE(recordUntilMoved(4'000'000));
    EXPECT_TRUE(recordUntilMoved(sizeOf("Corvatto/corvatto.sqlite3") + 4'000'000));
    // However late the worker comes to it.
    EXPECT_LT(sizeOf("Corvatto/corvatto.sqlite3-wal"), 80'000'000);
    store->finish();
    limitCount(number); // so that each copy is followed by a removal
    for (int i = 0; i < 40; ++i) {
        recordMore();
        store->finish();
    }
    EXPECT_LT(sizeOf("Corvatto/corvatto.sqlite3-wal"), 10'000'000) << "it never begins anew";
}

TEST_F(Recording, TheMainThreadDoesNotWaitForTheDisk) {
    store.reset();
    test::FaultyVfs vfs;
    open();
    open(); // the second time, there is no log
    int before = vfs.syncs().here;
    limitCount(20); // so that there are removals, too
    int number = 0;
    const auto recordOne = [&](qsizetype size) {
        bool isRecorded = false;
        const int syncs = vfs.syncs().all;
        store->insertOrUpdate(QString::number(++number) + QString(size, u'x'), {},
                              [&] { isRecorded = true; });
        EXPECT_TRUE(test::eventually([&] { return isRecorded && vfs.syncs().all > syncs; }));
    };
    for (int i = 0; i < 200; ++i) {
        recordOne(50'000);
    }
    recordOne(3'000'000);
    recordOne(1);
    EXPECT_EQ(vfs.syncs().here, before);
    store->finish();
    before = vfs.syncs().here;
    store->deleteAll();
    recordOne(1);
    EXPECT_EQ(vfs.syncs().here, before);
    store.reset();
}

TEST_F(Recording, PreviewsOneLineOf120Characters) {
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_qs;
    for (const auto& [text, preview] : {
             std::pair(u"a\r\nb\n\rc\td "_qs, u"a  b  c\td "_qs),
             {QString(121, u'x'), QString(120, u'x')},
             // Line ends count after their replacement, so a pair of them counts twice.
             {u"\r\n"_qs.repeated(100), QString(120, u' ')},
             // One character of eleven code units; the first window is too short for 120 of them.
             {family.repeated(119) + u"e\u0301zz"_qs, family.repeated(119) + u"e\u0301"_qs},
             {u"हिन्दी😀"_qs.repeated(41), u"हिन्दी😀"_qs.repeated(40)}, // an emoji stays whole behind any script
         }) {
        EXPECT_EQ(previewOf(text), preview);
    }
    // Every cut of the text into windows: whatever precedes them, flags stay whole.
    const QString flag = u"\U0001F1E8\U0001F1F3"_qs;
    for (int offset = 0; offset < 4; ++offset) {
        const QString marks = u'e' + QString(955 + offset, QChar(0x301));
        EXPECT_EQ(previewOf(marks + flag.repeated(130)), marks + flag.repeated(119));
    }
    record(u"end\n"_qs);
    EXPECT_EQ(previewOf(u"end "_qs), u"end ");
    EXPECT_EQ(contents(u"end"_qs).size(), 2) << "equal previews are two entries all the same";
}

} // namespace
} // namespace corvatto
