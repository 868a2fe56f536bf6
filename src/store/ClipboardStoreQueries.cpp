// The list and the search.
#include "store/ClipboardStore.h"

#include "base/Diagnostics.h"

#include "BackgroundSearch.h"
#include "ContentReader.h"
#include "FetchCache.h"
#include "ItemRow.h"
#include "Retention.h"
#include "SqliteStatement.h"

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <functional>

namespace corvatto {
namespace {

constexpr char listSql[] = "    SELECT id\n"
                           "      FROM clipboard_items\n"
                           "     ORDER BY last_copied_at DESC\n"
                           "     LIMIT ?";

constexpr char rowSql[] = "SELECT " CORVATTO_ITEM_COLUMNS " FROM clipboard_items WHERE id = ?";

constexpr char searchSql[] = "    SELECT " CORVATTO_ITEM_COLUMNS "\n"
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

constexpr int instructionsBetweenLooks = 100; // at the clock; six rows or so

// Interrupts the connection's statements when its time is over, while it lives.
class TimeLimit {
public:
    TimeLimit(sqlite3* db, std::chrono::milliseconds limit) : m_db(db), m_limit(limit) {
        m_timer.start();
        sqlite3_progress_handler(m_db, instructionsBetweenLooks, isOver, this);
    }
    ~TimeLimit() { sqlite3_progress_handler(m_db, 0, nullptr, nullptr); }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

private:
    static int isOver(void* limit) {
        const auto* self = static_cast<const TimeLimit*>(limit);
        return std::chrono::milliseconds(self->m_timer.elapsed()) >= self->m_limit ? 1 : 0;
    }

    sqlite3* m_db;
    std::chrono::milliseconds m_limit;
    QElapsedTimer m_timer;
};

struct Rows {
    QList<ClipboardItem> items;
    int status = SQLITE_OK; // of the last step
};

using FoundRows = std::optional<Rows>;

// While its statements live, because their end takes SQLite's message away.
FoundRows notPrepared(sqlite3* db) {
    printLine(QStringLiteral("[ClipboardStore] ERROR: Query failed: ") + lastSqliteError(db));
    return std::nullopt;
}

FoundRows find(sqlite3* db, const QByteArray& pattern, int limit,
               std::optional<std::chrono::milliseconds> time) {
    SqliteStatement query(db, searchSql);
    if (!query.isPrepared()) {
        return notPrepared(db);
    }
    for (int parameter = 1; parameter <= 4; ++parameter) {
        query.bindUtf8(parameter, pattern);
    }
    query.bindInt64(5, limit);
    std::optional<TimeLimit> timeLimit;
    if (time) {
        timeLimit.emplace(db, *time);
    }
    Rows rows;
    while ((rows.status = query.step()) == SQLITE_ROW) {
        rows.items.append(rowToItem(query));
    }
    return rows;
}

using FindUnchanged = std::function<const ClipboardItem*(qint64 id)>;

// Unchanged rows are not read again. It takes long where contents are, which SQLite goes through to reach the
// columns behind them.
FoundRows list(sqlite3* db, int limit, const FindUnchanged& findUnchanged) {
    SqliteStatement query(db, listSql);
    SqliteStatement row(db, rowSql);
    if (!query.isPrepared() || !row.isPrepared()) {
        return notPrepared(db);
    }
    query.bindInt64(1, limit);
    Rows rows;
    while ((rows.status = query.step()) == SQLITE_ROW) {
        const qint64 id = query.columnInt64(0);
        if (const ClipboardItem* unchanged = findUnchanged(id)) {
            rows.items.append(*unchanged);
            continue;
        }
        row.reset();
        row.bindInt64(1, id);
        const int status = row.step(); // in the same state of the database, since the query is under way
        if (status == SQLITE_ROW) {
            rows.items.append(rowToItem(row));
        } else if (status != SQLITE_DONE) { // an index with an entry too many loses nothing
            rows.status = status;
            break;
        }
    }
    return rows;
}

} // namespace

QList<ClipboardItem> ClipboardStore::fetchRecent(const std::optional<QString>& searchQuery, int limit) {
    return fetch(searchQuery, limit, nullptr).items;
}

ClipboardStore::SearchResult ClipboardStore::search(const QString& query, int limit, Found found) {
    cancelSearch();
    return fetch(query, limit, m_backgroundSearch ? std::move(found) : nullptr);
}

void ClipboardStore::cancelSearch() {
    if (m_backgroundSearch) {
        m_backgroundSearch->cancel();
    }
}

// With `found`, a search that takes long is left to the background.
ClipboardStore::SearchResult ClipboardStore::fetch(const std::optional<QString>& searchQuery, int limit,
                                                   Found found) {
    if (m_db == nullptr || m_isClearing) {
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
            return {withoutDue(*cached)};
        }
    }
    const auto findUnchanged = [&](qint64 id) {
        return version ? m_fetchCache->findUnchanged(*version, id) : nullptr;
    };
    const auto time = found ? std::optional(m_longestSearch) : std::nullopt;
    auto rows = fetch.pattern ? find(m_db, *fetch.pattern, limit, time) : list(m_db, limit, findUnchanged);
    if (!rows) {
        return {};
    }
    const bool areAll = addContents(rows->items, m_db, m_database);
    if (version && rows->status == SQLITE_DONE && areAll) {
        m_fetchCache->insert(*version, fetch, rows->items);
    }
    if (rows->status != SQLITE_INTERRUPT) {
        return {withoutDue(rows->items)};
    }
    m_backgroundSearch->start(*fetch.pattern, limit,
                              [this, fetch, version, found = std::move(found),
                               searchQuery](const BackgroundSearch::Result& result) {
                                  if (result && version) {
                                      m_fetchCache->insert(*version, fetch, *result);
                                  }
                                  found(result ? withoutDue(*result) : fetchRecent(searchQuery, fetch.limit));
                              });
    return {withoutDue(rows->items), false};
}

// What exceeds the limits is the oldest, so it comes last.
QList<ClipboardItem> ClipboardStore::withoutDue(QList<ClipboardItem> items) const {
    while (!items.isEmpty() && m_retention->isDue(items.last())) {
        items.removeLast();
    }
    return items;
}

} // namespace corvatto
