#include "Retention.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include "SqliteStatement.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>

namespace corvatto {
namespace {

constexpr char selectExpiredImagesSql[] = "    SELECT content_hash, content, thumbnail_path\n"
                                          "      FROM clipboard_items\n"
                                          "     WHERE last_copied_at < ?\n"
                                          "       AND content_type = 'image'";

constexpr char deleteExpiredSql[] = "DELETE FROM clipboard_items WHERE last_copied_at < ?";

constexpr char selectOldestImagesSql[] = "    SELECT content_hash, content, thumbnail_path\n"
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

// Along the index, from either end.
constexpr char selectNthOldestSql[] = "SELECT last_copied_at, id FROM clipboard_items "
                                      "ORDER BY last_copied_at ASC, id ASC LIMIT 1 OFFSET ?";
constexpr char selectNthNewestSql[] = "SELECT last_copied_at, id FROM clipboard_items "
                                      "ORDER BY last_copied_at DESC, id DESC LIMIT 1 OFFSET ?";

constexpr qint64 secondsPerDay = 86400;

// Two million years. Longer limits are treated as this one, so that no product overflows.
constexpr qint64 maximumDays = 1'000'000'000;

// A slice is to take this long. Each row is in an index of hashes, so that deleting it writes a page of its
// own; how many that are in a millisecond depends on the disk.
constexpr qint64 sliceDuration = 4;                                      // ms
constexpr qint64 smallestSlice = 4, largestSlice = 512, firstSlice = 16; // rows or pages

// Free pages of the file that are kept for what is copied next. More is given back.
constexpr qint64 mostFreePages = 256;

void deleteFile(const QString& path) {
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        return;
    }
    if (const auto error = removeFile(path)) {
        printLine(QStringLiteral("[ClipboardStore] Failed to delete image file %1: %2")
                      .arg(path, error->description()));
    }
}

qint64 countFreePages(sqlite3* db) {
    SqliteStatement query(db, "PRAGMA freelist_count");
    return query.isPrepared() && query.step() == SQLITE_ROW ? query.columnInt64(0) : 0;
}

} // namespace

Retention::Retention(sqlite3* db, const Preferences& preferences)
    : m_db(db), m_preferences(preferences), m_sliceSize(firstSlice) {
    m_nextSlice.setSingleShot(true);
    QObject::connect(&m_nextSlice, &QTimer::timeout, &m_nextSlice, [this] { removeSlice(); });
}

// A limit below 1 is no limit. Only entries older than the days are removed; one that is exactly as old
// stays.
void Retention::apply(qint64 now) {
    const qint64 days = m_preferences.maxRetentionDays(), items = m_preferences.maxItemCount();
    m_cutOff = days < 1 ? std::nullopt : std::optional(now - std::min(days, maximumDays) * secondsPerDay);
    m_itemLimit = items < 1 ? std::nullopt : std::optional(items);
    m_oldestKept.reset();
    removeSlice();
}

bool Retention::isDue(const ClipboardItem& item) const {
    return m_oldestKept && Place{item.lastCopiedAt.toSecsSinceEpoch(), item.id} < *m_oldestKept;
}

void Retention::removeSlice() {
    QElapsedTimer timer;
    timer.start();
    const bool isMoreDue = cleanupByDays() || cleanupByCount();
    if (!isMoreDue) {
        m_oldestKept.reset();
    } else if (!m_oldestKept) {
        m_oldestKept = oldestToKeep();
    }
    m_isSliceDue = isMoreDue || freePages();
    if (m_isSliceDue) {
        const qint64 taken = timer.elapsed();
        m_sliceSize = taken > sliceDuration       ? m_sliceSize / 2
                      : taken > sliceDuration / 2 ? m_sliceSize
                                                  : m_sliceSize * 5 / 4;
        m_sliceSize = std::clamp(m_sliceSize, smallestSlice, largestSlice);
    }
    scheduleSlice();
}

void Retention::scheduleSlice() {
    if (m_isSliceDue && m_pauses == 0) {
        m_nextSlice.start(0);
    } else {
        m_nextSlice.stop();
    }
}

void Retention::pause() {
    ++m_pauses;
    scheduleSlice();
}

void Retention::resume() {
    --m_pauses;
    scheduleSlice();
}

// Gives a slice of the file's free pages back. Whether there are more.
bool Retention::freePages() {
    const qint64 before = countFreePages(m_db);
    if (before <= mostFreePages) {
        return false;
    }
    const QByteArray vacuum = "PRAGMA incremental_vacuum(" + QByteArray::number(m_sliceSize) + ')';
    executeSql(m_db, vacuum.constData());
    return countFreePages(m_db) < before; // not in a file that was made without this
}

// Removes a slice of what is too old. Whether there is more of it.
bool Retention::cleanupByDays() {
    if (!m_cutOff) {
        return false;
    }
    qint64 cutOff = *m_cutOff;
    if (SqliteStatement next(m_db, selectNthOldestSql); next.isPrepared()) {
        next.bindInt64(1, m_sliceSize);
        if (next.step() == SQLITE_ROW) {
            // With all of the same second, or there might be none before it.
            cutOff = std::min(cutOff, next.columnInt64(0) + 1);
        }
    }
    removeRows(selectExpiredImagesSql, deleteExpiredSql, cutOff, u"cleanupByDays");
    if (m_removed == 0) {
        m_cutOff.reset(); // nothing is, or it cannot be deleted
        return false;
    }
    return cutOff < *m_cutOff;
}

// Removes a slice of what is too much. Whether there is more of it.
bool Retention::cleanupByCount() {
    const std::optional<qint64> count = m_itemLimit ? countRows() : std::nullopt;
    if (!count || *count <= *m_itemLimit) {
        return false;
    }
    const qint64 excess = *count - *m_itemLimit, slice = std::min(excess, m_sliceSize);
    removeRows(selectOldestImagesSql, deleteOldestSql, slice, u"cleanupByCount");
    if (m_removed == 0) {
        m_itemLimit.reset(); // it cannot be deleted
        return false;
    }
    return slice < excess;
}

// Deletes the rows that `deleteSql` selects with `parameter`, then the files of those among them that
// `selectImagesSql` yields with the same parameter. Rows that cannot be deleted keep their files: an entry
// without its image is worse than a file without an entry.
void Retention::removeRows(const char* selectImagesSql, const char* deleteSql, qint64 parameter,
                           QStringView operation) {
    m_removed = 0;
    const auto counted = std::exchange(m_counted, std::nullopt); // until it is known what was removed
    QList<RemovedImage> removed;
    if (SqliteStatement images(m_db, selectImagesSql); images.isPrepared()) {
        images.bindInt64(1, parameter);
        while (images.step() == SQLITE_ROW) {
            removed.append({images.columnText(0), images.columnText(1), images.columnText(2)});
        }
    }
    {
        SqliteStatement deletion(m_db, deleteSql);
        if (!deletion.isPrepared()) {
            return;
        }
        deletion.bindInt64(1, parameter);
        if (deletion.step() != SQLITE_DONE) {
            printLine(QStringLiteral("[ClipboardStore] ERROR: %1 failed: %2")
                          .arg(operation, lastSqliteError(m_db)));
            return;
        }
    }
    m_removed = sqlite3_changes64(m_db);
    if (counted) {
        m_counted = {counted->rows - m_removed, counted->foreignChanges};
    }
    m_removedImages += removed;
    m_removals += removed.size();
    if (!m_waitsForSyncs) {
        removalsSynced(m_removals);
    }
}

void Retention::removalsSynced(qint64 count) {
    m_syncedRemovals = count;
    removeFiles();
}

std::shared_ptr<void> Retention::keepFiles() {
    ++m_keepers;
    return {nullptr, [this](void*) {
                --m_keepers;
                removeFiles();
            }};
}

// But for those of an image that has been copied again meanwhile.
void Retention::removeFiles() {
    if (m_keepers > 0) {
        return;
    }
    while (m_removals - m_removedImages.size() < m_syncedRemovals) {
        const RemovedImage image = m_removedImages.takeFirst();
        if (!hasEntry(image.hash)) {
            deleteFile(image.file);
            deleteFile(image.thumbnail);
        }
    }
}

bool Retention::hasEntry(const QString& hash) const {
    SqliteStatement query(m_db, "SELECT 1 FROM clipboard_items WHERE content_hash = ?");
    if (!query.isPrepared()) {
        return true; // a file too many is better than one too few
    }
    query.bindText(1, hash);
    return query.step() != SQLITE_DONE;
}

void Retention::rowInserted() {
    if (m_counted) {
        ++m_counted->rows;
    }
}

void Retention::forgetCount() {
    m_counted.reset();
}

// Absent when the rows cannot be counted.
std::optional<qint64> Retention::countRows() {
    SqliteStatement foreign(m_db, "PRAGMA data_version");
    if (!foreign.isPrepared() || foreign.step() != SQLITE_ROW) {
        return std::nullopt;
    }
    const qint64 foreignChanges = foreign.columnInt64(0);
    if (!m_counted || m_counted->foreignChanges != foreignChanges) {
        m_counted.reset();
        SqliteStatement query(m_db, "SELECT COUNT(*) FROM clipboard_items");
        if (!query.isPrepared() || query.step() != SQLITE_ROW) {
            return std::nullopt;
        }
        m_counted = {query.columnInt64(0), foreignChanges};
    }
    return m_counted->rows;
}

// By both limits, the stricter one.
std::optional<Retention::Place> Retention::oldestToKeep() {
    constexpr qint64 anyId = std::numeric_limits<qint64>::min();
    std::optional<Place> place;
    if (m_cutOff) {
        place = Place{*m_cutOff, anyId};
    }
    const std::optional<qint64> count = m_itemLimit ? countRows() : std::nullopt;
    if (!count || *count <= *m_itemLimit) {
        return place;
    }
    // From the nearer end: stepping over a million entries takes 13 ms.
    const qint64 excess = *count - *m_itemLimit;
    const bool isFromOldest = excess < *m_itemLimit;
    SqliteStatement query(m_db, isFromOldest ? selectNthOldestSql : selectNthNewestSql);
    if (query.isPrepared()) {
        query.bindInt64(1, isFromOldest ? excess : *m_itemLimit - 1);
        if (query.step() == SQLITE_ROW) {
            place = std::max(place, std::optional(Place{query.columnInt64(0), query.columnInt64(1)}));
        }
    }
    return place;
}

} // namespace corvatto
