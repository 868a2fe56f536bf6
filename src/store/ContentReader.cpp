#include "ContentReader.h"

#include "base/Diagnostics.h"
#include "base/TextDecoding.h"

#include "ContentBlob.h"
#include "SqliteStatement.h"

namespace corvatto {
namespace {

constexpr qsizetype longestComplete = 64 * 1024; // bytes of UTF-8; what is longer is loaded when needed

// Three bytes of UTF-8 give at least one UTF-16 unit; five more make up for a last character that is cut off.
constexpr qsizetype prefixBytes = ItemContent::minimumPrefix * 3 + 5;

// What is no text in the database, or not in UTF-8, is converted by SQLite. Absent when it cannot be read.
std::optional<ItemContent> convertedContent(sqlite3* db, qint64 id) {
    SqliteStatement query(db, "SELECT content FROM clipboard_items WHERE id = ?");
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

} // namespace

bool ContentReader::addContents(QList<ClipboardItem>& items, sqlite3* db,
                                const std::shared_ptr<const ContentReader>& reader) {
    const bool isUtf8 = items.isEmpty() || isEncodedInUtf8(db);
    ContentBlob blob(db);
    QList<ClipboardItem> complete;
    for (ClipboardItem& item : items) {
        const auto content =
            isUtf8 && blob.open(item.id) ? contentOf(item, blob, reader) : convertedContent(db, item.id);
        if (content) {
            item.content = *content;
            complete.append(std::move(item));
        }
    }
    const bool areAll = complete.size() == items.size();
    items = std::move(complete);
    return areAll;
}

std::optional<ItemContent> ContentReader::contentOf(const ClipboardItem& item, const ContentBlob& blob,
                                                    const std::shared_ptr<const ContentReader>& reader) {
    const bool isLong = blob.size() > longestComplete && item.contentType == QLatin1String("text");
    const QByteArray utf8 = blob.beginning(isLong ? prefixBytes : blob.size());
    if (utf8.isNull()) {
        return std::nullopt;
    }
    if (!isLong) {
        return textOf(utf8);
    }
    return ItemContent(textOf(utf8Prefix(utf8, prefixBytes - 1)),
                       [weakReader = std::weak_ptr(reader), id = item.id]() -> std::optional<QString> {
                           const auto strongReader = weakReader.lock();
                           return strongReader ? strongReader->read(id) : std::nullopt;
                       });
}

std::optional<QString> ContentReader::read(qint64 id) const {
    SqliteStatement query(m_db, "SELECT content FROM clipboard_items WHERE id = ?");
    int status = SQLITE_ERROR;
    if (query.isPrepared()) {
        query.bindInt64(1, id);
        status = query.step();
    }
    if (status == SQLITE_ROW) {
        return query.columnText(0);
    }
    if (status != SQLITE_DONE) {
        printLine(QStringLiteral("[ClipboardStore] ERROR: Query failed: ") + lastSqliteError(m_db));
    }
    return std::nullopt;
}

} // namespace corvatto
