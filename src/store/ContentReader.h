// Gives items their content: a short one complete, a long one as a prefix and a loader of the rest. Private
// to this room.
#pragma once

#include "store/ClipboardItem.h"

#include <QList>

#include <memory>

struct sqlite3;

namespace corvatto {

class ContentBlob;

class ContentReader {
public:
    // The connection outlives the reader.
    explicit ContentReader(sqlite3* db) : m_db(db) {}

    // Gives each item its content, read over `db`, which may be a worker's connection. A long one that
    // outlives the reader cannot be loaded any more. Items whose content cannot be read are left out, and the
    // result is false then.
    static bool addContents(QList<ClipboardItem>& items, sqlite3* db,
                            const std::shared_ptr<const ContentReader>& reader);

private:
    static std::optional<ItemContent> contentOf(const ClipboardItem& item, const ContentBlob& blob,
                                                const std::shared_ptr<const ContentReader>& reader);
    std::optional<QString> read(qint64 id) const; // a failure prints one line

    sqlite3* m_db;
};

} // namespace corvatto
