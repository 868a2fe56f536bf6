// Gives items their content: a short one as it is, a long one as something that is read when it is needed.
#pragma once

#include "store/ItemContent.h"

#include "SqliteStatement.h"

#include <memory>

namespace corvatto {

class ContentReader {
public:
    // The connection outlives the reader.
    explicit ContentReader(sqlite3* db) : m_db(db) {}

    // The content in that column of the entry `id`. It may outlive the reader, and is gone then if it is
    // long.
    static ItemContent contentOf(const std::shared_ptr<const ContentReader>& reader,
                                 const SqliteStatement& row, int column, qint64 id);

private:
    std::optional<QString> read(qint64 id) const; // a failure prints one line

    sqlite3* m_db;
};

} // namespace corvatto
