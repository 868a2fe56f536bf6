// Opening and closing the store, and clearing the history. Schema, recording and queries are in the files
// beside this one.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include "BackgroundSearch.h"
#include "ContentReader.h"
#include "FetchCache.h"
#include "Retention.h"
#include "SqliteStatement.h"

namespace corvatto {
namespace {

// Writes the file anew and empties the write-ahead log. A file from before gets what Retention needs to give
// space back.
constexpr char eraseFreePagesSql[] = "PRAGMA auto_vacuum = INCREMENTAL;"
                                     "VACUUM;"
                                     "PRAGMA wal_checkpoint(TRUNCATE);";

} // namespace

ClipboardStore::ClipboardStore(QString applicationSupportDirectory, const Preferences& preferences,
                               Clock clock)
    : m_applicationSupportDirectory(std::move(applicationSupportDirectory)), m_preferences(preferences),
      m_clock(std::move(clock)) {
    openDatabase();
}

ClipboardStore::~ClipboardStore() {
    if (m_db != nullptr) {
        m_backgroundSearch.reset();
        m_contentReader.reset(); // items may outlive the store, and must not read then
        sqlite3_close(m_db);
    }
}

QString ClipboardStore::imagesDir() const {
    return m_applicationSupportDirectory.isEmpty()
               ? QString()
               : m_applicationSupportDirectory + QStringLiteral("/Corvatto/images");
}

QString ClipboardStore::thumbnailsDir() const {
    return m_applicationSupportDirectory.isEmpty()
               ? QString()
               : m_applicationSupportDirectory + QStringLiteral("/Corvatto/thumbnails");
}

void ClipboardStore::deleteAll() {
    if (m_db == nullptr) {
        return;
    }
    if (m_backgroundSearch) {
        m_backgroundSearch->stop(); // the log cannot be emptied while somebody reads
    }
    // Overwriting the pages one by one takes seconds for a million entries; they are all to go below.
    executeSql(m_db, "PRAGMA secure_delete = FAST");
    const auto error = executeSql(m_db, "DELETE FROM clipboard_items");
    executeSql(m_db, "PRAGMA secure_delete = ON");
    if (error) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: deleteAll failed: ") + *error);
        // The entries are still there, and an entry without its image is worse than a file without an entry.
        return;
    }
    m_retention->forgetCount();
    deleteImageDirectories();
    eraseFreePages();
}

// Cleared contents are in pages that are free now. Whoever was killed between the two leaves it to the next
// opening.
void ClipboardStore::eraseFreePages() {
    if (const auto error = executeSql(m_db, eraseFreePagesSql)) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: deleteAll failed: ") + *error);
    }
}

void ClipboardStore::eraseIfCleared() {
    constexpr char wasClearedSql[] = "SELECT 1 FROM pragma_freelist_count WHERE freelist_count > 0 "
                                     "AND NOT EXISTS (SELECT 1 FROM clipboard_items)";
    bool wasCleared = false;
    if (SqliteStatement query(m_db, wasClearedSql); query.isPrepared()) {
        wasCleared = query.step() == SQLITE_ROW;
    }
    if (wasCleared) {
        eraseFreePages();
    }
}

void ClipboardStore::deleteImageDirectories() const {
    // A directory that is missing or cannot be removed is not reported: the entries are gone, which is what
    // the user asked for.
    for (const QString& directory : {imagesDir(), thumbnailsDir()}) {
        removeDirectoryTree(directory);
    }
}

qint64 ClipboardStore::now() const {
    return std::chrono::duration_cast<std::chrono::seconds>(m_clock().time_since_epoch()).count();
}

} // namespace corvatto
