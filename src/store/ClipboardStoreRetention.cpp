// The removal of what exceeds the retention limits, after each recording: the rows first, then the files of
// the images among them. A limit below 1 is no limit.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include "SqliteStatement.h"

#include <QFileInfo>

#include <algorithm>

namespace corvatto {
namespace {

constexpr char selectExpiredImagesSql[] = "    SELECT content, thumbnail_path\n"
                                          "      FROM clipboard_items\n"
                                          "     WHERE last_copied_at < ?\n"
                                          "       AND content_type = 'image'";

constexpr char deleteExpiredSql[] = "DELETE FROM clipboard_items WHERE last_copied_at < ?";

constexpr char selectOldestImagesSql[] = "    SELECT content, thumbnail_path\n"
                                         "      FROM clipboard_items\n"
                                         "     WHERE id IN (\n"
                                         "         SELECT id FROM clipboard_items\n"
                                         "          ORDER BY last_copied_at ASC, id ASC\n"
                                         "          LIMIT ?\n"
                                         "     )\n"
                                         "       AND content_type = 'image'";

constexpr char deleteOldestSql[] = "    DELETE FROM clipboard_items\n"
                                   "     WHERE id IN (\n"
                                   "         SELECT id FROM clipboard_items\n"
                                   "          ORDER BY last_copied_at ASC, id ASC\n"
                                   "          LIMIT ?\n"
                                   "     )";

constexpr qint64 secondsPerDay = 86400;

// Two million years. Longer limits are treated as this one, so that no product overflows.
constexpr qint64 maximumDays = 1'000'000'000;

void deleteFile(const QString& path) {
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        return;
    }
    if (const auto error = removeFile(path)) {
        printLine(QStringLiteral("[ClipboardStore] Failed to delete image file %1: %2")
                      .arg(path, error->description()));
    }
}

// Deletes the rows that `deleteSql` selects with `parameter`, then the files of those among them that
// `selectImagesSql` yields with the same parameter. Rows that cannot be deleted keep their files: an entry
// without its image is worse than a file without an entry.
void deleteRowsAndFiles(sqlite3* db, const char* selectImagesSql, const char* deleteSql, qint64 parameter,
                        QStringView operation) {
    QStringList files; // of each image: the full size, then the thumbnail
    if (SqliteStatement images(db, selectImagesSql); images.isPrepared()) {
        images.bindInt64(1, parameter);
        while (images.step() == SQLITE_ROW) {
            files << images.columnText(0) << images.columnText(1);
        }
    }
    {
        SqliteStatement deletion(db, deleteSql);
        if (!deletion.isPrepared()) {
            return;
        }
        deletion.bindInt64(1, parameter);
        if (deletion.step() != SQLITE_DONE) {
            printLine(
                QStringLiteral("[ClipboardStore] ERROR: %1 failed: %2").arg(operation, lastSqliteError(db)));
            return;
        }
    }
    for (const QString& file : files) {
        deleteFile(file);
    }
}

// Absent when the rows cannot be counted.
std::optional<int> countRows(sqlite3* db) {
    SqliteStatement query(db, "SELECT COUNT(*) FROM clipboard_items");
    if (!query.isPrepared() || query.step() != SQLITE_ROW) {
        return std::nullopt;
    }
    return query.columnInt(0);
}

} // namespace

void ClipboardStore::cleanupByDays() {
    const qint64 limit = m_preferences.maxRetentionDays();
    if (limit < 1) {
        return;
    }
    // Only older entries are removed; one that is exactly as old as the limit stays.
    const qint64 cutOff = now() - std::min(limit, maximumDays) * secondsPerDay;
    deleteRowsAndFiles(m_db, selectExpiredImagesSql, deleteExpiredSql, cutOff, u"cleanupByDays");
}

void ClipboardStore::cleanupByCount() {
    const qint64 limit = m_preferences.maxItemCount();
    if (limit < 1) {
        return;
    }
    const std::optional<int> count = countRows(m_db);
    if (!count || *count <= limit) {
        return;
    }
    deleteRowsAndFiles(m_db, selectOldestImagesSql, deleteOldestSql, *count - limit, u"cleanupByCount");
}

} // namespace corvatto
