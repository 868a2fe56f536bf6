// The list and the search.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"

#include "ContentReader.h"
#include "FetchCache.h"
#include "Retention.h"
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

// Matches what contains the query. A NUL ends the pattern, and with it goes the "%" behind the query.
QByteArray patternFor(const QString& query) {
    const QByteArray pattern = '%' + query.toUtf8() + '%';
    const qsizetype end = pattern.indexOf('\0');
    return end < 0 ? pattern : pattern.first(end);
}

// In the order of the select list above.
ClipboardItem rowToItem(const SqliteStatement& row, const std::shared_ptr<const ContentReader>& reader) {
    ClipboardItem item;
    item.id = row.columnInt64(0);
    item.contentHash = row.columnText(2);
    item.preview = row.columnText(3);
    item.contentType = row.columnText(4);
    const bool mayBeLong = item.contentType == QLatin1String("text");
    item.content =
        mayBeLong ? ContentReader::contentOf(reader, row, 1, item.id) : ItemContent(row.columnText(1));
    item.thumbnailPath = row.columnText(5);
    item.sourceApp = row.columnText(6);
    item.copyCount = row.columnInt(7);
    item.firstCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(8), Qt::UTC);
    item.lastCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(9), Qt::UTC);
    return item;
}

} // namespace

QList<ClipboardItem> ClipboardStore::fetchRecent(const std::optional<QString>& searchQuery, int limit) {
    if (m_db == nullptr) {
        return {};
    }
    FetchCache::Fetch fetch{std::nullopt, limit};
    if (searchQuery && !isBlank(*searchQuery)) {
        fetch.pattern = patternFor(*searchQuery);
    }
    const auto version = m_fetchCache->currentVersion();
    if (version) {
        // What answers a longer search stays in the cache, for when the last letter is deleted again.
        if (const auto cached = m_fetchCache->find(*version, fetch)) {
            return withoutDue(*cached);
        }
    }
    SqliteStatement query(m_db, fetch.pattern ? searchSql : listSql);
    if (!query.isPrepared()) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: Query failed: ") + lastSqliteError(m_db));
        return {};
    }
    if (fetch.pattern) {
        for (int parameter = 1; parameter <= 4; ++parameter) {
            query.bindUtf8(parameter, *fetch.pattern);
        }
    }
    query.bindInt64(fetch.pattern ? 5 : 1, limit);

    QList<ClipboardItem> items;
    int status = query.step();
    for (; status == SQLITE_ROW; status = query.step()) {
        items.append(rowToItem(query, m_contentReader));
    }
    if (version && status == SQLITE_DONE) {
        m_fetchCache->insert(*version, fetch, items);
    }
    return withoutDue(items);
}

// What exceeds the limits is the oldest, so it comes last.
QList<ClipboardItem> ClipboardStore::withoutDue(QList<ClipboardItem> items) const {
    while (!items.isEmpty() && m_retention->isDue(items.last())) {
        items.removeLast();
    }
    return items;
}

} // namespace corvatto
