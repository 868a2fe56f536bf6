#include "StoreTest.h"

#include <QDir>

namespace corvatto {
namespace {

using Opening = test::StoreTest;

// A run without a history, or with half of one: every operation comes back, and says what is listed.
TEST_F(Opening, SaysWhatIsInTheWayAndLeavesItAlone) {
    const QByteArray diary = QByteArray("Dear diary, ").repeated(1000);
    const QByteArray images = path("Corvatto/images").toUtf8();
    const QByteArray failing = "# ERROR: Prepare insert failed: ?# ERROR: Prepare file insert failed: ?"
                               "# ERROR: Prepare image insert failed: ?# ERROR: Query failed: ?"
                               "# ERROR: deleteAll failed: ";
    struct Case {
        const char* inTheWay;           // a file, or a directory
        QByteArray opening, operations; // with "#" for the program's name, and "?" for what is wrong
        QByteArray wrong = "file is not a database\n";
    };
    for (Case each : {
             Case{"Corvatto", "# ERROR: Failed to create database directory: Not a directory\n", ""},
             Case{"Corvatto/corvatto.sqlite3",
                  "# ERROR: Failed to create table: ?# Migration add source_app: ?"
                  "# Migration add content_type: ?# Migration add thumbnail_path: ?",
                  failing + '?'},
             Case{"Corvatto/corvatto.sqlite3/", "# ERROR: Failed to open database: ?", failing + "unknown\n",
                  "unable to open database file\n"},
             Case{"Corvatto/images",
                  "# ERROR: Cannot create " + images + ": Not a directory (code 20, path " + images + ")\n",
                  ""},
             Case{nullptr, "# ERROR: Cannot find Application Support directory\n", ""},
         }) {
        SCOPED_TRACE(::testing::PrintToString(each.inTheWay));
        for (QByteArray* lines : {&each.opening, &each.operations}) {
            lines->replace("#", "[ClipboardStore]").replace("?", each.wrong);
        }
        QDir(path("Corvatto")).removeRecursively();
        QFile::remove(path("Corvatto"));
        QFile file(path(each.inTheWay));
        QDir().mkpath(QFileInfo(file).path());
        const bool isFile = !QByteArray(each.inTheWay).isEmpty() && !file.fileName().endsWith(u'/');
        ASSERT_TRUE(!isFile || (file.open(QIODevice::WriteOnly) && file.write(diary) > 0));
        file.close();
        test::CapturedOutput output;
        openAt(each.inTheWay != nullptr ? home.path() : QString());
        EXPECT_EQ(output.text(), each.opening);
        store->insertOrUpdate(u"text"_qs, {});
        store->insertOrUpdateFile({u"/file"_qs}, {});
        store->insertOrUpdateImage(u"/i.png"_qs, {}, u"hash"_qs, {}, {});
        store->incrementCopyCount(1);
        const bool works = QByteArray(each.inTheWay) == "Corvatto/images";
        EXPECT_EQ(contents().size(), works ? 3 : 0);
        if (!works) {
            clear();
        }
        EXPECT_EQ(output.text(), each.opening + each.operations);
        store.reset();
        EXPECT_TRUE(!isFile || (file.open(QIODevice::ReadOnly) && file.readAll() == diary));
    }
}

TEST_F(Opening, AnOldFileGetsWhatItLacks) {
    QDir().mkpath(path("Corvatto"));
    sql("CREATE TABLE clipboard_items (id INTEGER PRIMARY KEY, content, content_hash, preview, copy_count,"
        " first_copied_at, last_copied_at); INSERT INTO clipboard_items (content) VALUES ('old')");
    open();
    EXPECT_EQ(sql("SELECT source_app, content_type, thumbnail_path FROM clipboard_items"),
              test::texts({"|text|NULL"}));
    EXPECT_TRUE(sql("EXPLAIN QUERY PLAN SELECT * FROM clipboard_items ORDER BY last_copied_at DESC")
                    .join(u' ')
                    .contains(u"idx_last_copied_at"));
}

TEST_F(Opening, AFileMayBeInAnotherEncodingAndHoldWhatIsNoText) {
    QDir().mkpath(path("Corvatto"));
    sql("PRAGMA encoding = 'UTF-16'; PRAGMA user_version = 1");
    open();
    record(u"naïve"_qs);
    EXPECT_EQ(contents(), test::texts({"naïve"}));
    store.reset();
    QFile::remove(path("Corvatto/corvatto.sqlite3"));
    open();
    record(u"text"_qs);
    sql("UPDATE clipboard_items SET content = 42.5");
    EXPECT_EQ(contents(), test::texts({"42.5"}));
}

} // namespace
} // namespace corvatto
