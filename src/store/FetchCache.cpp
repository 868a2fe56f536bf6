#include "FetchCache.h"

#include "SqliteStatement.h"

#include <QSet>

#include <algorithm>
#include <iterator>

namespace corvatto {
namespace {

// Whether every text that matches `pattern` is sure to match `wider` too: `wider` looks for something
// anywhere in the text, and `pattern` asks for the same and more.
bool isNarrowed(const QByteArray& pattern, const QByteArray& wider) {
    return wider.size() >= 2 && wider.startsWith('%') && wider.endsWith('%') &&
           pattern.contains(wider.sliced(1).chopped(1));
}

} // namespace

FetchCache::FetchCache(sqlite3* db) : m_db(db) {
    const auto rowChanged = [](void* cache, int /*operation*/, const char* /*database*/,
                               const char* /*table*/, sqlite3_int64 id) {
        static_cast<FetchCache*>(cache)->m_unchanged.remove(id);
    };
    sqlite3_update_hook(m_db, rowChanged, this);
}

FetchCache::~FetchCache() {
    sqlite3_update_hook(m_db, nullptr, nullptr);
}

std::optional<FetchCache::Version> FetchCache::currentVersion() const {
    // A number that changes with each commit of another connection.
    SqliteStatement foreign(m_db, "PRAGMA data_version");
    if (!foreign.isPrepared() || foreign.step() != SQLITE_ROW) {
        return std::nullopt;
    }
    return Version{sqlite3_total_changes64(m_db), foreign.columnInt64(0)};
}

std::optional<QList<ClipboardItem>> FetchCache::find(const Version& version, const Fetch& fetch) const {
    if (!m_entry || m_entry->version != version || m_entry->fetch.limit != fetch.limit) {
        return std::nullopt;
    }
    if (m_entry->fetch.pattern == fetch.pattern) {
        return m_entry->items;
    }
    const bool isComplete = m_entry->items.size() < fetch.limit;
    if (isComplete && fetch.pattern && m_entry->fetch.pattern &&
        isNarrowed(*fetch.pattern, *m_entry->fetch.pattern)) {
        return filter(m_entry->items, *fetch.pattern);
    }
    return std::nullopt;
}

const ClipboardItem* FetchCache::findUnchanged(const Version& version, qint64 id) const {
    // The hook tells what this connection changes, and nothing of others.
    if (!m_entry || m_entry->version.foreignChanges != version.foreignChanges) {
        return nullptr;
    }
    const auto found = m_unchanged.constFind(id);
    return found != m_unchanged.cend() ? &m_entry->items[*found] : nullptr;
}

void FetchCache::insert(const Version& version, const Fetch& fetch, const QList<ClipboardItem>& items) {
    m_entry = {version, fetch, items};
    m_unchanged.clear();
    if (version == currentVersion()) {
        for (qsizetype index = 0; index < items.size(); ++index) {
            m_unchanged.insert(items[index].id, index);
        }
    }
}

// Those of `items` that the search statement would find, in the same order. Absent when SQLite fails.
std::optional<QList<ClipboardItem>> FetchCache::filter(const QList<ClipboardItem>& items,
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

} // namespace corvatto
