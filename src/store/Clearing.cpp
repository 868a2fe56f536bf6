#include "Clearing.h"

#include "base/FileSystem.h"

#include "SqliteStatement.h"

#include <QFile>

namespace corvatto {
namespace {

// Writes the file anew and empties the write-ahead log. A file from before gets what Retention needs to give
// space back.
constexpr char eraseFreePagesSql[] = "PRAGMA auto_vacuum = INCREMENTAL;"
                                     "VACUUM;"
                                     "PRAGMA wal_checkpoint(TRUNCATE);";

std::optional<qint64> lastId(sqlite3* db) {
    SqliteStatement query(db, "SELECT COALESCE(MAX(id), 0) FROM clipboard_items");
    return query.isPrepared() && query.step() == SQLITE_ROW ? std::optional(query.columnInt64(0))
                                                            : std::nullopt;
}

std::optional<QString> failure(const std::optional<QString>& error) {
    return error ? std::optional(QStringLiteral("[ClipboardStore] ERROR: deleteAll failed: ") + *error)
                 : std::nullopt;
}

} // namespace

// The mark holds the last id that there was: ids are not given twice, so whatever has a larger one was copied
// after a clearing that had ended, whose mark could not be removed.
bool Clearing::hasBegun(sqlite3* db) const {
    QFile file(mark);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const auto last = lastId(db);
    const bool isUnderWay = last && *last <= file.readAll().toLongLong();
    if (!isUnderWay) {
        removeFile(mark);
    }
    return isUnderWay;
}

// What cannot be marked is cleared all the same.
void Clearing::begin(sqlite3* db) const {
    if (const auto last = lastId(db)) {
        writeFileAtomically(mark, QByteArray::number(*last));
    }
}

std::optional<QString> Clearing::run(sqlite3* db) const {
    begin(db);
    // Overwriting the pages one by one takes seconds for a million entries; they are all to go below.
    executeSql(db, "PRAGMA secure_delete = FAST");
    const auto notDeleted = executeSql(db, "DELETE FROM clipboard_items");
    executeSql(db, "PRAGMA secure_delete = ON");
    if (notDeleted) {
        // The entries are still there, and an entry without its image is worse than a file without an entry.
        removeFile(mark);
        return failure(notDeleted);
    }
    // A directory that is missing or cannot be removed is not reported: the entries are gone, which is what
    // the user asked for.
    for (const QString& directory : imageDirectories) {
        removeDirectoryTree(directory);
    }
    const auto notErased = executeSql(db, eraseFreePagesSql);
    if (!notErased) { // or it is tried again at the next start
        removeFile(mark);
    }
    return failure(notErased);
}

} // namespace corvatto
