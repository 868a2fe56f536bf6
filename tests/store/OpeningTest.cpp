#include "StoreTest.h"

#include "support/WithoutPrivileges.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace corvatto {
namespace {

using Opening = test::StoreTest;
using test::CapturedOutput;
using test::texts;
using test::WithoutPrivileges;

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

// What every operation says when no statement can be prepared, and that each of them comes back.
QByteArray linesOfAllOperations(ClipboardStore& store) {
    CapturedOutput output;
    store.insertOrUpdate(QStringLiteral("text"), {});
    store.insertOrUpdateFile({QStringLiteral("/file")}, {});
    store.insertOrUpdateImage(QStringLiteral("/i.png"), {}, QStringLiteral("hash"), QStringLiteral("Image"),
                              {});
    store.incrementCopyCount(1);
    EXPECT_TRUE(store.fetchRecent(std::nullopt, 100).isEmpty());
    return output.text();
}

TEST_F(Opening, CreatesEverythingOnAFreshMachineAndChangesNothingTheSecondTime) {
    CapturedOutput output;
    open();
    const QStringList schema = sql("SELECT sql FROM sqlite_master WHERE name IN "
                                   "('clipboard_items', 'idx_last_copied_at') ORDER BY type DESC");
    EXPECT_EQ(schema, texts({"CREATE TABLE clipboard_items (\n"
                             "        id              INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                             "        content         TEXT    NOT NULL,\n"
                             "        content_hash    TEXT    NOT NULL UNIQUE,\n"
                             "        preview         TEXT    NOT NULL,\n"
                             "        content_type    TEXT    NOT NULL DEFAULT 'text',\n"
                             "        source_app      TEXT    NOT NULL DEFAULT '',\n"
                             "        thumbnail_path  TEXT,\n"
                             "        copy_count      INTEGER NOT NULL DEFAULT 1,\n"
                             "        first_copied_at INTEGER NOT NULL,\n"
                             "        last_copied_at  INTEGER NOT NULL\n"
                             "    )",
                             "CREATE INDEX idx_last_copied_at\n        ON clipboard_items(last_copied_at)"}));
    EXPECT_EQ(sql("PRAGMA journal_mode"), texts({"wal"}));
    EXPECT_EQ(store->imagesDir(), path("Corvatto/images"));
    EXPECT_EQ(store->thumbnailsDir(), path("Corvatto/thumbnails"));
    EXPECT_TRUE(QFileInfo(store->imagesDir()).isDir() && QFileInfo(store->thumbnailsDir()).isDir());

    record(QStringLiteral("kept"));
    const QStringList everything = sql("SELECT * FROM clipboard_items");
    open();
    EXPECT_EQ(sql("SELECT * FROM clipboard_items"), everything);
    EXPECT_EQ(output.text(), "");
}

TEST_F(Opening, UpgradesOlderFilesInPlace) {
    QDir().mkpath(path("Corvatto"));
    sql("CREATE TABLE clipboard_items (id INTEGER PRIMARY KEY AUTOINCREMENT, content TEXT NOT NULL,"
        " content_hash TEXT NOT NULL UNIQUE, preview TEXT NOT NULL, copy_count INTEGER NOT NULL DEFAULT 1,"
        " first_copied_at INTEGER NOT NULL, last_copied_at INTEGER NOT NULL);"
        "INSERT INTO clipboard_items VALUES (7, 'old text', 'h', 'old', 4, 1600000000, 1600000001)");
    CapturedOutput output;
    open();
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(sql("SELECT name FROM pragma_table_info('clipboard_items') WHERE cid > 6"),
              texts({"source_app", "content_type", "thumbnail_path"}));
    const ClipboardItem item = store->fetchRecent(std::nullopt, 1).value(0);
    EXPECT_EQ(item.id, 7);
    EXPECT_EQ(item.content, u"old text");
    EXPECT_EQ(item.copyCount, 4);
    EXPECT_EQ(item.contentType, u"text");
    EXPECT_EQ(item.sourceApp, u"");
    EXPECT_EQ(item.thumbnailPath, std::optional(QString()));
    EXPECT_EQ(item.firstCopiedAt.toSecsSinceEpoch(), 1600000000);
    EXPECT_EQ(item.lastCopiedAt.toSecsSinceEpoch(), 1600000001);
    record(QStringLiteral("new text"));
    EXPECT_EQ(contents(), texts({"new text", "old text"}));
}

TEST_F(Opening, StaysUnopenedWithoutADirectory) {
    {
        CapturedOutput output;
        openAt({});
        EXPECT_EQ(output.text(), "[ClipboardStore] ERROR: Cannot find Application Support directory\n");
    }
    EXPECT_EQ(linesOfAllOperations(*store), "");
    EXPECT_EQ(store->imagesDir(), u"");

    write(path("Corvatto"), "a file in the way");
    {
        CapturedOutput output;
        open();
        EXPECT_EQ(output.text(),
                  "[ClipboardStore] ERROR: Failed to create database directory: Not a directory\n");
    }
    EXPECT_EQ(linesOfAllOperations(*store), "");
}

TEST_F(Opening, ReportsADatabaseThatIsADirectory) {
    QDir().mkpath(path("Corvatto/corvatto.sqlite3/kept"));
    QDir().mkpath(path("Corvatto/images/kept"));
    CapturedOutput output;
    open();
    EXPECT_EQ(output.text(),
              "[ClipboardStore] ERROR: Failed to open database: unable to open database file\n");
    const QByteArray lines = linesOfAllOperations(*store);
    EXPECT_TRUE(lines.startsWith("[ClipboardStore] ERROR: Prepare insert failed: ")) << lines.toStdString();
    EXPECT_EQ(lines.count('\n'), 4);
    store->deleteAll();
    EXPECT_TRUE(output.text().endsWith("[ClipboardStore] ERROR: deleteAll failed: unknown\n"));
    EXPECT_TRUE(QFileInfo::exists(path("Corvatto/images/kept")))
        << "cleared although nothing could be deleted";
    EXPECT_TRUE(QFileInfo::exists(path("Corvatto/corvatto.sqlite3/kept")));
}

TEST_F(Opening, LeavesAFileThatIsNoDatabaseAlone) {
    QDir().mkpath(path("Corvatto"));
    const QByteArray diary = QByteArray("Dear diary, ").repeated(1000);
    write(databasePath(), diary);
    {
        CapturedOutput output;
        open();
        EXPECT_EQ(output.text(), "[ClipboardStore] ERROR: Failed to create table: file is not a database\n"
                                 "[ClipboardStore] Migration add source_app: file is not a database\n"
                                 "[ClipboardStore] Migration add content_type: file is not a database\n"
                                 "[ClipboardStore] Migration add thumbnail_path: file is not a database\n");
    }
    EXPECT_EQ(linesOfAllOperations(*store),
              "[ClipboardStore] ERROR: Prepare insert failed: file is not a database\n"
              "[ClipboardStore] ERROR: Prepare file insert failed: file is not a database\n"
              "[ClipboardStore] ERROR: Prepare image insert failed: file is not a database\n"
              "[ClipboardStore] ERROR: Query failed: file is not a database\n");
    store.reset();
    QFile file(databasePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), diary);
}

TEST_F(Opening, KeepsWhatAnUnwritableFileHolds) {
    open();
    record(QStringLiteral("kept"));
    store.reset();
    const QStringList paths{home.path(), path("Corvatto"), databasePath()};
    const WithoutPrivileges user(paths);
    ASSERT_TRUE(user.succeeded());
    ASSERT_TRUE(QFile::setPermissions(databasePath(), QFile::ReadOwner));
    {
        CapturedOutput output;
        open();
        EXPECT_EQ(output.text(), "");
        store->insertOrUpdate(QStringLiteral("refused"), {});
        store->incrementCopyCount(1);
        EXPECT_EQ(
            output.text(),
            "[ClipboardStore] ERROR: Insert failed: attempt to write a readonly database\n"
            "[ClipboardStore] ERROR: incrementCopyCount failed: attempt to write a readonly database\n");
        EXPECT_EQ(contents(), texts({"kept"}));
    }
    store.reset();
    ASSERT_TRUE(QFile::setPermissions(databasePath(), QFile::ReadOwner | QFile::WriteOwner));
    open();
    EXPECT_EQ(contents(), texts({"kept"}));
}

TEST_F(Opening, ReportsADirectoryThatRefusesFiles) {
    const QFile::Permissions writable = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QDir().mkpath(path("Corvatto"));
    const WithoutPrivileges user({home.path(), path("Corvatto")});
    ASSERT_TRUE(user.succeeded());
    ASSERT_TRUE(QFile::setPermissions(path("Corvatto"), writable & ~QFile::WriteOwner));
    {
        CapturedOutput output;
        open();
        EXPECT_EQ(output.text(),
                  "[ClipboardStore] ERROR: Failed to open database: unable to open database file\n");
    }
    ASSERT_TRUE(QFile::setPermissions(path("Corvatto"), writable));
    open();
    record(QStringLiteral("kept"));
    store.reset();

    // The write-ahead log needs a file beside the database, so nothing can be read for now; nothing is lost
    // either.
    ASSERT_TRUE(QFile::setPermissions(path("Corvatto"), writable & ~QFile::WriteOwner));
    {
        CapturedOutput output;
        open();
        EXPECT_EQ(linesOfAllOperations(*store).count("attempt to write a readonly database\n"), 4);
        EXPECT_TRUE(output.text().startsWith(
            "[ClipboardStore] ERROR: Failed to create table: attempt to write a readonly database\n"));
    }
    ASSERT_TRUE(QFile::setPermissions(path("Corvatto"), writable));
    EXPECT_EQ(contents(), texts({"kept"})) << "the same connection recovers";
}

TEST_F(Opening, ReportsImageDirectoriesThatCannotBeMade) {
    QDir().mkpath(path("Corvatto"));
    write(path("Corvatto/images"), "a file in the way");
    CapturedOutput output;
    open();
    const QString line =
        QStringLiteral("[ClipboardStore] ERROR: Cannot create %1: Not a directory").arg(store->imagesDir());
    EXPECT_TRUE(output.text().startsWith(line.toUtf8())) << output.text().toStdString();
    EXPECT_EQ(output.text().count('\n'), 1);
    EXPECT_TRUE(QFileInfo(store->thumbnailsDir()).isDir()) << "stopped at the first directory";
    record(QStringLiteral("works"));
    EXPECT_EQ(contents(), texts({"works"}));
}

} // namespace
} // namespace corvatto
