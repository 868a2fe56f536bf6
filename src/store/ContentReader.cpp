#include "ContentReader.h"

#include "base/Diagnostics.h"

namespace corvatto {
namespace {

constexpr qsizetype longestHeld = 64 * 1024; // bytes of UTF-8

// Three bytes are one UTF-16 unit, and four are two; the last character may be cut off.
constexpr qsizetype beginningBytes = ItemContent::shortestBeginning * 3 + 4;

// Without what would be half of its last character.
QByteArrayView beginningOf(QByteArrayView utf8) {
    qsizetype end = beginningBytes;
    for (int i = 0; i < 3 && (static_cast<uchar>(utf8[end]) & 0xC0) == 0x80; ++i) {
        --end;
    }
    return utf8.first(end);
}

} // namespace

ItemContent ContentReader::contentOf(const std::shared_ptr<const ContentReader>& reader,
                                     const SqliteStatement& row, int column, qint64 id) {
    const QByteArrayView utf8 = row.columnUtf8(column);
    if (utf8.size() <= longestHeld) {
        return textOf(utf8);
    }
    return {textOf(beginningOf(utf8)), [weakly = std::weak_ptr(reader), id]() -> std::optional<QString> {
                const auto stillThere = weakly.lock();
                return stillThere ? stillThere->read(id) : std::nullopt;
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
