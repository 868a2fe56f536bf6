// Keeps the result of the last fetch. Until somebody changes the database, the same fetch is answered from
// it, and so is a search for a longer word, which can only match a part of what the shorter one matched.
// Private to this room.
#pragma once

#include "store/ClipboardItem.h"

#include <QByteArray>
#include <QList>

#include <optional>

struct sqlite3;

namespace corvatto {

class FetchCache {
public:
    // A state of the database.
    struct Version {
        qint64 ownChanges, foreignChanges;
        bool operator==(const Version&) const = default;
    };
    struct Fetch {
        // The LIKE pattern, without NUL: SQLite would ignore what follows one. Absent for the plain list.
        std::optional<QByteArray> pattern;
        int limit;
    };

    // The connection outlives the cache.
    explicit FetchCache(sqlite3* db) : m_db(db) {}

    // Read before a fetch, so that a change made meanwhile is not missed. Absent when it cannot be read.
    std::optional<Version> currentVersion() const;

    // What the statement would find in the database of that version; absent when the cache cannot tell.
    std::optional<QList<ClipboardItem>> find(const Version& version, const Fetch& fetch) const;

    // Replaces what was kept.
    void insert(const Version& version, const Fetch& fetch, const QList<ClipboardItem>& items);

private:
    struct Entry {
        Version version;
        Fetch fetch;
        QList<ClipboardItem> items;
    };

    std::optional<QList<ClipboardItem>> filter(const QList<ClipboardItem>& items,
                                               const QByteArray& pattern) const;

    sqlite3* m_db;
    std::optional<Entry> m_entry;
};

} // namespace corvatto
