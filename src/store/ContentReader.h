// Gives items their content: a short one complete, a long one as a prefix and a loader of the rest. Private
// to this room.
#pragma once

#include "store/ItemContent.h"

#include "SqliteStatement.h"

#include <memory>

namespace corvatto {

class ContentReader {
public:
    // The connection outlives the reader.
    explicit ContentReader(sqlite3* db) : m_db(db) {}

    // The content in `column` of `row`, which is the row of the entry `id`. A long one that outlives the
    // reader cannot be loaded any more.
    static ItemContent contentOf(const std::shared_ptr<const ContentReader>& reader,
                                 const SqliteStatement& row, int column, qint64 id);

private:
    std::optional<QString> read(qint64 id) const; // a failure prints one line

    sqlite3* m_db;
};

} // namespace corvatto
