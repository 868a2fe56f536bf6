#include "Database.h"

#include "Process.h"

#include <QCryptographicHash>
#include <QDateTime>

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace corvatto::test {

namespace {

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

Connection open(const QByteArray& path, int flags) {
    sqlite3* handle = nullptr;
    sqlite3_open_v2(path.constData(), &handle, flags, nullptr);
    sqlite3_busy_timeout(handle, 20'000); // milliseconds
    return {handle, &sqlite3_close};
}

std::optional<QList<Database::Row>> read(const QByteArray& path) {
    const auto append = [](void* rows, int, char** values, char**) {
        const auto text = [&](int column) { // whole, whatever characters are in it
            return QByteArray::fromHex(values[column]);
        };
        static_cast<QList<Database::Row>*>(rows)->append(
            {text(0), text(1), text(2), text(3), values[4] != nullptr ? std::optional(text(4)) : std::nullopt,
             text(5), QByteArray(values[6]).toLongLong(), QByteArray(values[7]).toLongLong(),
             QByteArray(values[8]).toLongLong()});
        return 0;
    };
    const Connection connection = open(path, SQLITE_OPEN_READONLY);
    QList<Database::Row> rows;
    const int result =
        sqlite3_exec(connection.get(),
                     "SELECT hex(content), hex(content_hash), hex(preview), hex(content_type), "
                     "iif(thumbnail_path IS NULL, NULL, hex(thumbnail_path)), hex(source_app), "
                     "copy_count, first_copied_at, last_copied_at FROM clipboard_items "
                     "ORDER BY last_copied_at DESC, id DESC",
                     append, &rows, nullptr);
    return result == SQLITE_OK ? std::optional(rows) : std::nullopt;
}

} // namespace

QList<Database::Row> Database::rows() const {
    std::optional<QList<Row>> rows;
    if (!soon([&] { return (rows = read(m_path)).has_value(); })) {
        throw std::runtime_error("the database cannot be read");
    }
    return *rows;
}

std::optional<Database::Row> Database::find(const QByteArray& content) const {
    const auto all = rows();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Row& row) { return row.content == content; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

QByteArray Database::check() const {
    const Connection connection = open(m_path, SQLITE_OPEN_READONLY);
    QByteArray lines;
    const auto append = [](void* all, int, char** values, char**) {
        *static_cast<QByteArray*>(all) += values[0];
        return 0;
    };
    sqlite3_exec(connection.get(), "PRAGMA integrity_check", append, &lines, nullptr);
    return lines;
}

void Database::fill(const QList<Entry>& entries) const {
    QByteArray sql = "CREATE TABLE IF NOT EXISTS clipboard_items (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                     "content TEXT NOT NULL, content_hash TEXT NOT NULL UNIQUE, preview TEXT NOT NULL, "
                     "content_type TEXT NOT NULL DEFAULT 'text', source_app TEXT NOT NULL DEFAULT '', "
                     "thumbnail_path TEXT, copy_count INTEGER NOT NULL DEFAULT 1, "
                     "first_copied_at INTEGER NOT NULL, last_copied_at INTEGER NOT NULL);"
                     "BEGIN; DELETE FROM clipboard_items;";
    qint64 time = QDateTime::currentSecsSinceEpoch();
    for (const Entry& entry : entries) {
        time -= 60;
        const QByteArray hash = QCryptographicHash::hash(entry.content, QCryptographicHash::Sha256).toHex();
        sql += "INSERT INTO clipboard_items (content, content_hash, preview, content_type, first_copied_at, "
               "last_copied_at) VALUES (CAST(x'" +
               entry.content.toHex() + "' AS TEXT), '" + hash + "', CAST(x'" + entry.preview.toHex() +
               "' AS TEXT), '" + entry.type + "', " + QByteArray::number(time) + ", " +
               QByteArray::number(time) + ");";
    }
    execute(sql + "COMMIT");
}

void Database::execute(const QByteArray& sql) const {
    std::filesystem::create_directories(std::filesystem::path(m_path.constData()).parent_path());
    const Connection connection = open(m_path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (sqlite3_exec(connection.get(), sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(connection.get()));
    }
}

} // namespace corvatto::test
