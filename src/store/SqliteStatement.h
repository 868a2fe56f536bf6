// Guards around SQLite's C interface, private to this room: one statement from its preparation to its
// finalization, and the execution of plain SQL. Failures are status codes; lastSqliteError() gives the text.
#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

#include <sqlite3.h>

namespace corvatto {

class SqliteStatement {
public:
    // Prepares `sql` on `db`, which outlives the statement.
    SqliteStatement(sqlite3* db, const char* sql);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    // Whether sqlite3_prepare_v2 returned SQLITE_OK. If not, nothing else may be called.
    bool isPrepared() const;

    // Parameters are numbered from 1. Texts are bound by their length, so that NUL characters are stored as
    // well, and are copied, but for those bound in place, which outlive the statement.
    void bindUtf8(int parameter, QByteArrayView utf8);
    void bindUtf8InPlace(int parameter, QByteArrayView utf8);
    void bindText(int parameter, const QString& text);
    void bindInt64(int parameter, qint64 value);

    // SQLITE_ROW, SQLITE_DONE or an error.
    int step();
    // To the beginning, for other parameters.
    void reset();

    // Columns of the current row, numbered from 0. A NULL text is the empty string.
    QString columnText(int column) const;
    // Its bytes, valid until the next step or the end of the statement.
    QByteArrayView columnUtf8(int column) const;
    int columnInt(int column) const;
    qint64 columnInt64(int column) const;

private:
    void bind(int parameter, QByteArrayView utf8, sqlite3_destructor_type destructor);

    sqlite3_stmt* m_statement = nullptr;
    int m_status = SQLITE_OK;
};

// All of `utf8`, a byte-order mark included.
QString textOf(QByteArrayView utf8);

// The message of the connection's last failure, "Unknown error" when SQLite has none.
QString lastSqliteError(sqlite3* db);

// Executes `sql`, which may be several statements. Absent on success, else SQLite's message, or "unknown" if
// it gives none.
std::optional<QString> executeSql(sqlite3* db, const char* sql);

} // namespace corvatto
