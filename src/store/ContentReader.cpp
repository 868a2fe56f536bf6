#include "ContentReader.h"

#include "base/Diagnostics.h"

namespace corvatto {
namespace {

constexpr qsizetype longestComplete = 64 * 1024; // bytes of UTF-8; what is longer is loaded when needed

// Three bytes of UTF-8 give at least one UTF-16 unit; four more make up for a last character that is cut off.
constexpr qsizetype prefixBytes = ItemContent::minimumPrefix * 3 + 4;

// Ends with a whole character.
QByteArrayView prefixOf(QByteArrayView utf8) {
    qsizetype end = prefixBytes;
    for (int i = 0; i < 3 && (static_cast<uchar>(utf8[end]) & 0xC0) == 0x80; ++i) {
        --end;
    }
    return utf8.first(end);
}

} // namespace

ItemContent ContentReader::contentOf(const std::shared_ptr<const ContentReader>& reader,
                                     const SqliteStatement& row, int column, qint64 id) {
    const QByteArrayView utf8 = row.columnUtf8(column);
    if (utf8.size() <= longestComplete) {
        return textOf(utf8);
    }
    return {textOf(prefixOf(utf8)), [weakReader = std::weak_ptr(reader), id]() -> std::optional<QString> {
                const auto strongReader = weakReader.lock();
                return strongReader ? strongReader->read(id) : std::nullopt;
            }};
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
