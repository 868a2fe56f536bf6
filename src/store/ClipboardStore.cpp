// The connection's life, the queries and the clearing. How rows are written, how they expire and how the
// tables come about is in the files beside this one.
#include "store/ClipboardStore.h"

#include "platform/Diagnostics.h"
#include "platform/FileSystem.h"

#include "SqliteStatement.h"

#include <algorithm>

namespace corvatto {
namespace {

constexpr char listSql[] =
    "    SELECT id, content, content_hash, preview, content_type, thumbnail_path, source_app, copy_count, "
    "first_copied_at, last_copied_at\n"
    "      FROM clipboard_items\n"
    "     ORDER BY last_copied_at DESC\n"
    "     LIMIT ?";

constexpr char searchSql[] =
    "    SELECT id, content, content_hash, preview, content_type, thumbnail_path, source_app, copy_count, "
    "first_copied_at, last_copied_at\n"
    "      FROM clipboard_items\n"
    "     WHERE content      LIKE ? COLLATE NOCASE\n"
    "        OR preview      LIKE ? COLLATE NOCASE\n"
    "        OR source_app   LIKE ? COLLATE NOCASE\n"
    "        OR content_type LIKE ? COLLATE NOCASE\n"
    "     ORDER BY last_copied_at DESC\n"
    "     LIMIT ?";

// Blank means spaces and tabs only. A line end is something to search for.
bool isBlank(const QString& query) {
    return std::all_of(query.cbegin(), query.cend(), [](QChar character) {
        return character == u'\t' || character.category() == QChar::Separator_Space;
    });
}

// In the order of the select list above.
ClipboardItem rowToItem(const SqliteStatement& row) {
    ClipboardItem item;
    item.id = row.columnInt64(0);
    item.content = row.columnText(1);
    item.contentHash = row.columnText(2);
    item.preview = row.columnText(3);
    item.contentType = row.columnText(4);
    item.thumbnailPath = row.columnText(5);
    item.sourceApp = row.columnText(6);
    item.copyCount = row.columnInt(7);
    item.firstCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(8), Qt::UTC);
    item.lastCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(9), Qt::UTC);
    return item;
}

} // namespace

ClipboardStore::ClipboardStore(QString applicationSupportDirectory, const Preferences& preferences,
                               Clock clock)
    : m_applicationSupportDirectory(std::move(applicationSupportDirectory)), m_preferences(preferences),
      m_clock(std::move(clock)) {
    openDatabase();
}

ClipboardStore::~ClipboardStore() {
    if (m_db != nullptr) {
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

QList<ClipboardItem> ClipboardStore::fetchRecent(const std::optional<QString>& searchQuery, int limit) const {
    if (m_db == nullptr) {
        return {};
    }
    const bool searches = searchQuery && !isBlank(*searchQuery);
    SqliteStatement query(m_db, searches ? searchSql : listSql);
    if (!query.isPrepared()) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: Query failed: ") + lastSqliteError(m_db));
        return {};
    }
    if (searches) {
        const QByteArray pattern = '%' + searchQuery->toUtf8() + '%';
        for (int parameter = 1; parameter <= 4; ++parameter) {
            query.bindUtf8(parameter, pattern);
        }
        query.bindInt64(5, limit);
    } else {
        query.bindInt64(1, limit);
    }
    QList<ClipboardItem> items;
    while (query.step() == SQLITE_ROW) {
        items.append(rowToItem(query));
    }
    return items;
}

void ClipboardStore::deleteAll() {
    if (m_db == nullptr) {
        return;
    }
    if (const auto error = executeSql(m_db, "DELETE FROM clipboard_items")) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: deleteAll failed: ") + *error);
        // The entries are still there, and an entry whose image is gone is worse than a file nobody owns.
        return;
    }
    deleteImageDirectories();
}

void ClipboardStore::deleteImageDirectories() const {
    // Nothing is said about a directory that is missing or stays: the entries are gone, which is what was
    // asked for.
    for (const QString& directory : {imagesDir(), thumbnailsDir()}) {
        removeDirectoryTree(directory);
    }
}

qint64 ClipboardStore::now() const {
    return std::chrono::duration_cast<std::chrono::seconds>(m_clock().time_since_epoch()).count();
}

} // namespace corvatto
