#include "WorkerConnection.h"

#include "SqliteStatement.h"

namespace corvatto {
namespace {

constexpr int longestWait = 5'000; // ms, for another program that has locked the database

} // namespace

const char writingSql[] = "PRAGMA synchronous = FULL;"
                          "PRAGMA secure_delete = ON;"
                          "PRAGMA journal_size_limit = 1048576;" // bytes
                          "PRAGMA wal_autocheckpoint = 0;";

void letGoQuietly(sqlite3* db) {
    sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

WorkerConnection::WorkerConnection(const QByteArray& database) {
    sqlite3_open_v2(database.constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr);
    letGoQuietly(m_db);
    sqlite3_busy_timeout(m_db, longestWait);
    executeSql(m_db, writingSql);
}

WorkerConnection::~WorkerConnection() {
    sqlite3_close(m_db);
}

} // namespace corvatto
