#include "SqliteStatement.h"

#include <QStringDecoder>

namespace corvatto {

SqliteStatement::SqliteStatement(sqlite3* db, const char* sql)
    : m_status(sqlite3_prepare_v2(db, sql, -1, &m_statement, nullptr)) {}

SqliteStatement::~SqliteStatement() {
    sqlite3_finalize(m_statement);
}

bool SqliteStatement::isPrepared() const {
    return m_status == SQLITE_OK;
}

void SqliteStatement::bindUtf8(int parameter, QByteArrayView utf8) {
    bind(parameter, utf8, SQLITE_TRANSIENT);
}

void SqliteStatement::bindUtf8InPlace(int parameter, QByteArrayView utf8) {
    bind(parameter, utf8, SQLITE_STATIC);
}

void SqliteStatement::bind(int parameter, QByteArrayView utf8, sqlite3_destructor_type destructor) {
    // SQLite takes a null pointer for NULL, which is not what an empty text means.
    const char* bytes = utf8.isEmpty() ? "" : utf8.data();
    // The 64-bit variant refuses what is too long; the other one would take a negative length for "up to the
    // NUL".
    sqlite3_bind_text64(m_statement, parameter, bytes, static_cast<sqlite3_uint64>(utf8.size()), destructor,
                        SQLITE_UTF8);
}

void SqliteStatement::bindText(int parameter, const QString& text) {
    bindUtf8(parameter, text.toUtf8());
}

void SqliteStatement::bindInt64(int parameter, qint64 value) {
    sqlite3_bind_int64(m_statement, parameter, value);
}

int SqliteStatement::step() {
    return sqlite3_step(m_statement);
}

void SqliteStatement::reset() {
    sqlite3_reset(m_statement);
}

QByteArrayView SqliteStatement::columnUtf8(int column) const {
    // The text first: asking for it may convert the value, and the length is that of the converted one.
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return text == nullptr ? QByteArrayView()
                           : QByteArrayView(text, sqlite3_column_bytes(m_statement, column));
}

QString SqliteStatement::columnText(int column) const {
    return textOf(columnUtf8(column));
}

QString textOf(QByteArrayView utf8) {
    if (utf8.isNull()) {
        return {};
    }
    // QString::fromUtf8 would swallow a byte-order mark at the start, which is a character of the copied
    // text.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(utf8);
}

int SqliteStatement::columnInt(int column) const {
    return sqlite3_column_int(m_statement, column);
}

qint64 SqliteStatement::columnInt64(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

QString lastSqliteError(sqlite3* db) {
    const char* message = sqlite3_errmsg(db);
    return message == nullptr ? QStringLiteral("Unknown error") : QString::fromUtf8(message);
}

std::optional<QString> executeSql(sqlite3* db, const char* sql) {
    char* message = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &message) == SQLITE_OK) {
        return std::nullopt;
    }
    const QString text = message == nullptr ? QStringLiteral("unknown") : QString::fromUtf8(message);
    sqlite3_free(message);
    return text;
}

} // namespace corvatto
