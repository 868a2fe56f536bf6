#include "ItemRow.h"

namespace corvatto {

ClipboardItem rowToItem(const SqliteStatement& row, const std::shared_ptr<const ContentReader>& reader) {
    ClipboardItem item;
    item.id = row.columnInt64(0);
    item.contentHash = row.columnText(2);
    item.preview = row.columnText(3);
    item.contentType = row.columnText(4);
    const bool mayBeLong = item.contentType == QLatin1String("text");
    item.content =
        mayBeLong ? ContentReader::contentOf(reader, row, 1, item.id) : ItemContent(row.columnText(1));
    item.thumbnailPath = row.columnText(5);
    item.sourceApp = row.columnText(6);
    item.copyCount = row.columnInt(7);
    item.firstCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(8), Qt::UTC);
    item.lastCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(9), Qt::UTC);
    return item;
}

} // namespace corvatto
