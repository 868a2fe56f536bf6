// Keeps the result of the last fetch. Until somebody changes the database, the same fetch is answered from
// it, and so is a search for a longer word, which can only match a part of what the shorter one matched.
// Of items that have not changed since, the next fetch takes what it needs. Private to this room.
#pragma once

#include "store/ClipboardItem.h"

#include <QByteArray>
#include <QHash>
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

    // The connection outlives the cache, which takes its update hook.
    explicit FetchCache(sqlite3* db);
    ~FetchCache();
    FetchCache(const FetchCache&) = delete;
    FetchCache& operator=(const FetchCache&) = delete;

    // Read before a fetch, so that a change made meanwhile is not missed. Absent when it cannot be read.
    std::optional<Version> currentVersion() const;

    // What the statement would find in the database of that version; absent when the cache cannot tell.
    std::optional<QList<ClipboardItem>> find(const Version& version, const Fetch& fetch) const;

    // The item as it was found by the last fetch, if it is in the database of that version unchanged, as far
    // as can be told; else null. Valid until the next insert().
    const ClipboardItem* findUnchanged(const Version& version, qint64 id) const;

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
    QHash<qint64, qsizetype> m_unchanged; // by the id of the item, where it is in the entry
};

} // namespace corvatto
