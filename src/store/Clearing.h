// Erases the whole history: the rows, the image directories, and what the rows leave in the database's files.
//
// From a large history that takes a second or more. So it happens beside the main thread, and before anything
// is erased, a file beside the database says that the history is being cleared: whoever was killed meanwhile
// goes on at the next start, and what the user has cleared does not come back. Private to this room.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

struct sqlite3;

namespace corvatto {

struct Clearing {
    QString mark; // absolute path of that file
    QStringList imageDirectories;

    // Whether a clearing has begun and not ended.
    bool hasBegun(sqlite3* db) const;

    // The line to print when the entries cannot be deleted, and are all there; or when their space cannot be
    // erased. Any thread that `db` belongs to; nobody else writes or holds a statement meanwhile.
    std::optional<QString> run(sqlite3* db) const;

private:
    void begin(sqlite3* db) const;
};

} // namespace corvatto
