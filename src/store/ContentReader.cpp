#include "ContentReader.h"

#include "base/Diagnostics.h"
#include "base/TextDecoding.h"

#include "ContentBlob.h"
#include "SqliteStatement.h"
#include "WorkerConnection.h"

namespace corvatto {
namespace {

constexpr qsizetype longestComplete = 64 * 1024; // bytes of UTF-8; what is longer is loaded when needed

// Three bytes of UTF-8 give at least one UTF-16 unit; five more make up for a last character that is cut off.
constexpr qsizetype prefixBytes = ItemContent::minimumPrefix * 3 + 5;

constexpr char contentSql[] = "SELECT content FROM clipboard_items WHERE id = ?";

// What is no text in the database, or not in UTF-8, is converted by SQLite. Absent when it cannot be read.
std::optional<ItemContent> convertedContent(sqlite3* db, qint64 id) {
    SqliteStatement query(db, contentSql);
    if (!query.isPrepared()) {
        return std::nullopt;
    }
    query.bindInt64(1, id);
    return query.step() == SQLITE_ROW ? std::optional<ItemContent>(query.columnText(0)) : std::nullopt;
}

bool isEncodedInUtf8(sqlite3* db) {
    SqliteStatement query(db, "PRAGMA encoding");
    return query.isPrepared() && query.step() == SQLITE_ROW && query.columnUtf8(0) == "UTF-8";
}

// Over a connection of its own, because it may be called on any thread.
std::optional<QString> loadContent(const QByteArray& database, qint64 id) {
    sqlite3* db = nullptr;
    std::optional<QString> content;
    int status = sqlite3_open_v2(database.constData(), &db, SQLITE_OPEN_READONLY, nullptr);
    letGoQuietly(db);
    if (status == SQLITE_OK) {
        SqliteStatement query(db, contentSql);
        query.bindInt64(1, id);
        status = query.step();
        if (status == SQLITE_ROW) {
            content = query.columnText(0);
        }
    }
    if (!content && status != SQLITE_DONE) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: Query failed: ") + lastSqliteError(db));
    }
    sqlite3_close(db);
    return content;
}

std::optional<ItemContent> contentOf(const ClipboardItem& item, const ContentBlob& blob,
                                     const QByteArray& database) {
    const bool isLong = blob.size() > longestComplete && item.contentType == QLatin1String("text");
    const QByteArray utf8 = blob.beginning(isLong ? prefixBytes : blob.size());
    if (utf8.isNull()) {
        return std::nullopt;
    }
    if (!isLong) {
        return textOf(utf8);
    }
    return ItemContent(textOf(utf8Prefix(utf8, prefixBytes - 1)),
                       [database, id = item.id] { return loadContent(database, id); });
}

} // namespace

bool addContents(QList<ClipboardItem>& items, sqlite3* db, const QByteArray& database) {
    const bool isUtf8 = items.isEmpty() || isEncodedInUtf8(db);
    ContentBlob blob(db);
    QList<ClipboardItem> complete;
    for (ClipboardItem& item : items) {
        if (!item.content.prefix().isEmpty()) {
            complete.append(std::move(item));
            continue;
        }
        const auto content =
            isUtf8 && blob.open(item.id) ? contentOf(item, blob, database) : convertedContent(db, item.id);
        if (content) {
            item.content = *content;
            complete.append(std::move(item));
        }
    }
    const bool areAll = complete.size() == items.size();
    items = std::move(complete);
    return areAll;
}

} // namespace corvatto
