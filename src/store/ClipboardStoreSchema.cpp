// Opening the database: finding or creating the file, its table and index, the columns that older files lack,
// and the image directories.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include "BackgroundSearch.h"
#include "Clearing.h"
#include "FetchCache.h"
#include "LikeFunction.h"
#include "Retention.h"
#include "SqliteStatement.h"
#include "WorkerConnection.h"
#include "WriteAheadLog.h"

#include <QFile>

namespace corvatto {
namespace {

constexpr char createTableSql[] = "    CREATE TABLE IF NOT EXISTS clipboard_items (\n"
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
                                  "    );\n"
                                  "    CREATE INDEX IF NOT EXISTS idx_last_copied_at\n"
                                  "        ON clipboard_items(last_copied_at);";

// For new files; in others, it would be a commit at each start. A search that matches nothing reads every
// page, and takes a sixth less time than with SQLite's default of 4096 bytes; a recording, which mostly waits
// for the disk, takes as long as before. And pages that have become free can be given back to the file system
// little by little.
constexpr char pageSql[] = "PRAGMA page_size = 16384;" // bytes
                           "PRAGMA auto_vacuum = INCREMENTAL;";

// With a write-ahead log, a recording is one appended write, which is synced beside the main thread. A file
// or file system that cannot do this keeps SQLite's default journal, which is as safe. Errors are ignored
// here: the statements that follow report what is wrong with the file.
constexpr char journalSql[] = "PRAGMA journal_mode = WAL;";

bool isNew(sqlite3* db) {
    SqliteStatement pages(db, "PRAGMA page_count");
    return pages.isPrepared() && pages.step() == SQLITE_ROW && pages.columnInt64(0) == 0;
}

// Adds a column unless the probe, which selects it, can be prepared. So files of any age get the same columns
// without a version number.
void addColumnIfMissing(sqlite3* db, const char* probeSql, const char* alterSql,
                        const QString& messagePrefix) {
    if (SqliteStatement(db, probeSql).isPrepared()) {
        return;
    }
    if (const auto error = executeSql(db, alterSql)) {
        printLine(messagePrefix + *error);
    }
}

} // namespace

void ClipboardStore::openDatabase() {
    if (m_applicationSupportDirectory.isEmpty()) {
        printLine(u"[ClipboardStore] ERROR: Cannot find Application Support directory");
        return;
    }
    const QString directory = m_applicationSupportDirectory + QStringLiteral("/Corvatto");
    if (const auto error = createDirectories(directory)) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: Failed to create database directory: ") +
                  error->localizedDescription);
        return;
    }
    const QString database = directory + QStringLiteral("/corvatto.sqlite3");
    // Files that we create are private by the process's umask; this is for files from a backup or a copied
    // home directory. Images are protected by their directories, which other users cannot enter.
    for (const QString& path : {directory, database, database + QStringLiteral("-wal"),
                                database + QStringLiteral("-shm"), imagesDir(), thumbnailsDir()}) {
        makePrivate(path);
    }
    m_database = QFile::encodeName(database);
    const int status = sqlite3_open(m_database.constData(), &m_db);
    // A connection that could not be opened is one all the same: what is asked of it fails, and says so.
    m_fetchCache = std::make_unique<FetchCache>(m_db);
    m_retention = std::make_unique<Retention>(m_db, m_preferences);
    if (status != SQLITE_OK) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: Failed to open database: ") +
                  lastSqliteError(m_db));
        return;
    }
    installLikeFunction(m_db);
    if (isNew(m_db)) {
        executeSql(m_db, pageSql);
    }
    executeSql(m_db, writingSql);
    executeSql(m_db, journalSql);
    if (SqliteStatement mode(m_db, "PRAGMA journal_mode");
        mode.isPrepared() && mode.step() == SQLITE_ROW && mode.columnText(0) == QLatin1String("wal")) {
        m_backgroundSearch = std::make_unique<BackgroundSearch>(m_database);
    }
    createTable();
    migrateAddSourceApp();
    migrateAddContentType();
    migrateAddThumbnailPath();
    ensureImageDirectories();
    if (canWorkBeside()) {
        m_log = std::make_unique<WriteAheadLog>(m_db, m_database, m_writing, *m_retention);
    }
    if (clearing().hasBegun(m_db)) {
        deleteAll();
    }
}

void ClipboardStore::createTable() {
    if (const auto error = executeSql(m_db, createTableSql)) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: Failed to create table: ") + *error);
    }
}

void ClipboardStore::migrateAddSourceApp() {
    addColumnIfMissing(m_db, "SELECT source_app FROM clipboard_items LIMIT 0",
                       "ALTER TABLE clipboard_items ADD COLUMN source_app TEXT NOT NULL DEFAULT ''",
                       QStringLiteral("[ClipboardStore] Migration add source_app: "));
}

void ClipboardStore::migrateAddContentType() {
    addColumnIfMissing(m_db, "SELECT content_type FROM clipboard_items LIMIT 0",
                       "ALTER TABLE clipboard_items ADD COLUMN content_type TEXT NOT NULL DEFAULT 'text'",
                       QStringLiteral("[ClipboardStore] Migration add content_type: "));
}

void ClipboardStore::migrateAddThumbnailPath() {
    addColumnIfMissing(m_db, "SELECT thumbnail_path FROM clipboard_items LIMIT 0",
                       "ALTER TABLE clipboard_items ADD COLUMN thumbnail_path TEXT",
                       QStringLiteral("[ClipboardStore] Migration add thumbnail_path: "));
}

void ClipboardStore::ensureImageDirectories() const {
    for (const QString& directory : {imagesDir(), thumbnailsDir()}) {
        if (const auto error = createDirectories(directory)) {
            printLine(QStringLiteral("[ClipboardStore] ERROR: Cannot create %1: %2")
                          .arg(directory, error->description()));
        }
    }
}

} // namespace corvatto
