#include "WriteAheadLog.h"

#include "base/Diagnostics.h"

#include "Retention.h"
#include "SqliteStatement.h"
#include "WorkerConnection.h"

#include <utility>

namespace corvatto {
namespace {

// The log is moved when it has this many pages: 4 MB, or 1 MB where an older file has small pages.
constexpr int pagesToMove = 250;

// SQLite opens the log when it reads for the first time.
int openLog(sqlite3* db) {
    return sqlite3_exec(db, "PRAGMA schema_version", nullptr, nullptr, nullptr);
}

// Moves into the database what nobody has to read from the log any more. Whether that is all of it.
bool moveLog(sqlite3* db) {
    int pages = 0, moved = 0;
    return openLog(db) == SQLITE_OK &&
           sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_PASSIVE, &pages, &moved) == SQLITE_OK &&
           pages >= 0 && pages == moved;
}

} // namespace

std::optional<QString> syncLog(sqlite3* db) {
    int status = openLog(db);
    sqlite3_file* log = nullptr;
    if (status == SQLITE_OK) {
        status = sqlite3_file_control(db, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    }
    if (status == SQLITE_OK && log->pMethods != nullptr) {
        status = log->pMethods->xSync(log, SQLITE_SYNC_NORMAL);
    }
    // What cannot be synced there may be in the database.
    return status == SQLITE_OK || moveLog(db) ? std::nullopt
                                              : std::optional(QString::fromUtf8(sqlite3_errstr(status)));
}

void beginLog(sqlite3* db) {
    SqliteStatement version(db, "PRAGMA user_version");
    if (moveLog(db) && version.isPrepared() && version.step() == SQLITE_ROW) {
        // Writes what is there, which is a commit all the same.
        const QByteArray commit = "PRAGMA user_version = " + QByteArray::number(version.columnInt64(0));
        version.reset();
        executeSql(db, commit.constData());
    }
}

WriteAheadLog::WriteAheadLog(sqlite3* db, QByteArray database, OrderedWork& writing, Retention& retention)
    : m_db(db), m_database(std::move(database)), m_writing(writing), m_retention(retention) {
    executeSql(m_db, "PRAGMA synchronous = NORMAL");
    const auto hook = [](void* log, sqlite3*, const char*, int pages) {
        static_cast<WriteAheadLog*>(log)->committed(pages);
        return SQLITE_OK;
    };
    sqlite3_wal_hook(m_db, hook, this);
    m_retention.waitForSyncs();
    m_nextSync.setSingleShot(true);
    m_nextSync.callOnTimeout([this] { sync(); });
    begin();
}

WriteAheadLog::~WriteAheadLog() {
    sqlite3_wal_hook(m_db, nullptr, nullptr);
}

bool WriteAheadLog::isBusy() const {
    return m_nextSync.isActive() || m_syncs.isBusy();
}

void WriteAheadLog::finish() {
    if (m_nextSync.isActive()) {
        sync();
    }
    m_syncs.finish();
}

void WriteAheadLog::committed(int pages) {
    m_pages = pages;
    m_nextSync.start(0);
}

void WriteAheadLog::sync() {
    m_nextSync.stop();
    if (std::exchange(m_isSyncWaiting, true)) {
        return;
    }
    m_syncs.add([this] {
        m_isSyncWaiting = false;
        const auto work = [database = m_database] {
            return syncLog(WorkerConnection(database));
        };
        m_syncs.goOnBeside(work, [=, this, removals = m_retention.removals()](const auto& error) {
            if (error) {
                printLine(QStringLiteral("[ClipboardStore] ERROR: Failed to sync database: ") + *error);
            } else {
                m_retention.removalsSynced(removals);
            }
            if (m_pages >= pagesToMove) {
                begin();
            }
        });
    });
}

// Nothing is written meanwhile: a commit after all of the log has been moved would be the first in the new
// one.
void WriteAheadLog::begin() {
    m_pages = 0;
    m_writing.add([this] {
        m_retention.pause();
        const auto work = [database = m_database] {
            beginLog(WorkerConnection(database));
            return true;
        };
        m_writing.goOnBeside(work, [this](bool) { m_retention.resume(); });
    });
}

} // namespace corvatto
