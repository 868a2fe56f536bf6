// A connection of a worker's own to the database, for what would hold the main thread up. Private to this
// room.
#pragma once

#include <QByteArray>

#include <sqlite3.h>

namespace corvatto {

// What every connection that writes sets up: with FULL, an fsync happens before a statement is done, so that
// a loss of power takes nothing; what is removed is overwritten with zeros, however SQLite was built; and the
// log moves into the database when WriteAheadLog says so, because that waits for the disk twice. The size
// limit keeps one huge copy from leaving a log of that size behind.
extern const char writingSql[];

// For a connection that comes and goes. At its end, SQLite would try to lock the file for itself, to see
// whether it is the last one, and another program that begins to read at this moment would be refused.
void letGoQuietly(sqlite3* db);

class WorkerConnection {
public:
    // The database's path as the system spells it. It must exist. A connection that cannot be opened is one
    // all the same: what is asked of it fails.
    explicit WorkerConnection(const QByteArray& database);
    ~WorkerConnection();
    WorkerConnection(const WorkerConnection&) = delete;
    WorkerConnection& operator=(const WorkerConnection&) = delete;

    operator sqlite3*() const { return m_db; }

private:
    sqlite3* m_db = nullptr;
};

} // namespace corvatto
