// A part of an entry's content: its size, or its beginning. A statement would read all of it, and in the case
// of a column behind it as well. Private to this room.
#pragma once

#include <QByteArray>

#include <sqlite3.h>

namespace corvatto {

// Keeps the database's state of the first opening until it is destroyed, like a statement.
class ContentBlob {
public:
    explicit ContentBlob(sqlite3* db) : m_db(db) {} // which outlives it
    ~ContentBlob();
    ContentBlob(const ContentBlob&) = delete;
    ContentBlob& operator=(const ContentBlob&) = delete;

    // False when there is no such entry, its content is no text, or it cannot be read.
    bool open(qint64 id);

    // Of the content that is open, in bytes of the database's encoding.
    qsizetype size() const;
    // The first `length` of them, at most as many as there are. Null when they cannot be read.
    QByteArray beginning(qsizetype length) const;

private:
    void close();

    sqlite3* m_db;
    sqlite3_blob* m_blob = nullptr;
};

} // namespace corvatto
