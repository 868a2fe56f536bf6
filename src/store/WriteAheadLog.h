// Brings what the main thread commits to the disk, without that thread waiting for it: its connection writes
// to the log only, and a worker syncs the log, moves it into the database when it has grown, and begins it
// anew. Private to this room.
#pragma once

#include "base/OrderedWork.h"

#include <QByteArray>
#include <QTimer>

#include <optional>

struct sqlite3;

namespace corvatto {

class Retention;

// Syncs what is committed. The message of the failure when that cannot be had. Any thread.
std::optional<QString> syncLog(sqlite3* db);

// Begins the log anew, if all of it can be moved into the database. To be called by a worker while nobody
// else writes: the first commit in a log syncs its beginning whatever is set up, and is not to be one of the
// main thread's. Without success, it is.
void beginLog(sqlite3* db);

// Main thread.
class WriteAheadLog {
public:
    // From now on, `db` does not sync what it commits, and all its commits are to be steps of `writing`, or
    // the retention's. `database` is its path as the system spells it. What is referred to outlives the log.
    WriteAheadLog(sqlite3* db, QByteArray database, OrderedWork& writing, Retention& retention);
    ~WriteAheadLog();
    WriteAheadLog(const WriteAheadLog&) = delete;
    WriteAheadLog& operator=(const WriteAheadLog&) = delete;

    // Whether something is not on the disk yet.
    bool isBusy() const;

    // Waits until what is committed is on the disk.
    void finish();

private:
    void committed(int pages);
    void sync();
    void begin();

    sqlite3* m_db;
    QByteArray m_database;
    OrderedWork& m_writing;
    Retention& m_retention;
    int m_pages = 0;              // in the log
    QTimer m_nextSync;            // one for all commits of a turn of the event loop
    OrderedWork m_syncs;          // while a worker syncs
    bool m_isSyncWaiting = false; // for the one that is under way
};

} // namespace corvatto
