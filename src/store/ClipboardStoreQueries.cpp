// The list and the search. What the last fetch found is kept: as long as nobody changes the database, the
// same fetch is answered from it.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"

#include "ContentReader.h"
#include "SqliteStatement.h"

#include <QSet>

#include <algorithm>
#include <iterator>

#include <sqlite3.h>

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

std::optional<ClipboardStore::Version> ClipboardStore::version() const {
    // Changes by this connection, and a number that changes with each commit of another one.
    SqliteStatement others(m_db, "PRAGMA data_version");
    if (!others.isPrepared() || others.step() != SQLITE_ROW) {
        return std::nullopt;
    }
    return Version{sqlite3_total_changes64(m_db), others.columnInt64(0)};
}

// The answer that what is known already gives, if it does.
std::optional<QList<ClipboardItem>> ClipboardStore::knownAnswer(const Fetch& fetch) const {
    if (!m_known || !fetch.version || m_known->fetch.version != fetch.version ||
        m_known->fetch.limit != fetch.limit) {
        return std::nullopt;
    }
    if (m_known->fetch.pattern == fetch.pattern) {
        return m_known->items;
    }
    // Whatever matches a longer word is among all that matched a part of it. A NUL would end the pattern.
    const bool isExtended = m_known->fetch.pattern && fetch.pattern &&
                            !m_known->fetch.pattern->contains('\0') &&
                            fetch.pattern->contains(m_known->fetch.pattern->mid(1).chopped(1));
    const bool areAll = m_known->items.size() < fetch.limit;
    return isExtended && areAll ? matchesAmong(m_known->items, *fetch.pattern) : std::nullopt;
}

// Those of `items` that the search statement would find, in the same order. Nothing when that cannot be told.
std::optional<QList<ClipboardItem>> ClipboardStore::matchesAmong(const QList<ClipboardItem>& items,
                                                                 const QByteArray& pattern) const {
    QByteArrayList ids;
    for (const ClipboardItem& item : items) {
        ids.append(QByteArray::number(item.id));
    }
    SqliteStatement query(m_db, "SELECT id FROM clipboard_items WHERE id IN (" + ids.join(',') +
                                    ") AND (content LIKE ?1 OR preview LIKE ?1 OR source_app LIKE ?1 OR "
                                    "content_type LIKE ?1)");
    if (!query.isPrepared()) {
        return std::nullopt;
    }
    query.bindUtf8(1, pattern);
    QSet<qint64> found;
    int status = query.step();
    for (; status == SQLITE_ROW; status = query.step()) {
        found.insert(query.columnInt64(0));
    }
    if (status != SQLITE_DONE) {
        return std::nullopt;
    }
    QList<ClipboardItem> matches;
    std::copy_if(items.cbegin(), items.cend(), std::back_inserter(matches),
                 [&](const ClipboardItem& item) { return found.contains(item.id); });
    return matches;
}

QList<ClipboardItem> ClipboardStore::fetchRecent(const std::optional<QString>& searchQuery, int limit) const {
    if (m_db == nullptr) {
        return {};
    }
    Fetch fetch{version(), std::nullopt, limit};
    if (searchQuery && !isBlank(*searchQuery)) {
        fetch.pattern = '%' + searchQuery->toUtf8() + '%';
    }
    if (const auto known = knownAnswer(fetch)) {
        return *known; // what it comes from stays known, for when the last letter is taken back
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
    m_known.reset();
    if (fetch.version && status == SQLITE_DONE) {
        m_known = {fetch, items};
    }
    return items;
}

} // namespace corvatto
