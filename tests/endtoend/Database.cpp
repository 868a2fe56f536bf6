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

// The rows that the statements give, one behind the other. A reader does not write the log of a killed
// program back, as others do when they close.
std::optional<QList<QByteArrayList>> run(const QByteArray& path, int flags, const QByteArray& sql) {
    sqlite3* handle = nullptr;
    sqlite3_open_v2(path.constData(), &handle, flags, nullptr);
    const Connection connection(handle, &sqlite3_close);
    sqlite3_busy_timeout(handle, 20'000); // milliseconds
    QList<QByteArrayList> rows;
    const auto append = [](void* all, int count, char** values, char**) {
        static_cast<QList<QByteArrayList>*>(all)->append(QByteArrayList(values, values + count));
        return 0;
    };
    const int result = sqlite3_exec(handle, sql.constData(), append, &rows, nullptr);
    return result == SQLITE_OK ? std::optional(rows) : std::nullopt;
}

} // namespace

QList<Database::Row> Database::rows() const {
    // The content whole, whatever characters are in it.
    constexpr auto sql = "SELECT hex(content), preview, content_type, thumbnail_path, source_app, copy_count "
                         "FROM clipboard_items ORDER BY last_copied_at DESC, id DESC";
    std::optional<QList<QByteArrayList>> found;
    if (!soon([&] { return (found = run(m_path, SQLITE_OPEN_READONLY, sql)).has_value(); })) {
        throw std::runtime_error("the database cannot be read");
    }
    QList<Row> rows;
    for (const QByteArrayList& row : *found) {
        rows.append({QByteArray::fromHex(row[0]), row[1], row[2], row[3], row[4], row[5].toLongLong()});
    }
    return rows;
}

std::optional<Database::Row> Database::find(const QByteArray& content) const {
    const auto all = rows();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Row& row) { return row.content == content; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

bool Database::isWhole() const {
    return run(m_path, SQLITE_OPEN_READONLY, "PRAGMA integrity_check") == QList<QByteArrayList>{{"ok"}};
}

void Database::fill(const QByteArrayList& texts) const {
    QByteArray sql = "CREATE TABLE IF NOT EXISTS clipboard_items (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                     "content, content_hash UNIQUE, preview, content_type, source_app DEFAULT '', "
                     "thumbnail_path, copy_count DEFAULT 1, first_copied_at, last_copied_at);"
                     "BEGIN; DELETE FROM clipboard_items;";
    qint64 time = QDateTime::currentSecsSinceEpoch();
    for (const QByteArray& text : texts) {
        time -= 60;
        const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex();
        const QByteArray content = "CAST(x'" + text.toHex() + "' AS TEXT)", at = QByteArray::number(time);
        sql += "INSERT INTO clipboard_items (content, content_hash, preview, content_type, first_copied_at, "
               "last_copied_at) VALUES (" +
               content + ", '" + hash + "', " + content + ", 'text', " + at + ", " + at + ");";
    }
    execute(sql + "COMMIT");
}

void Database::execute(const QByteArray& sql) const {
    std::filesystem::create_directories(std::filesystem::path(m_path.constData()).parent_path());
    if (!run(m_path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, sql)) {
        throw std::runtime_error("the database cannot be changed");
    }
}

} // namespace corvatto::test
