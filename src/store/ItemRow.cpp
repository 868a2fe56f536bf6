#include "ItemRow.h"

namespace corvatto {

ClipboardItem rowToItem(const SqliteStatement& row) {
    ClipboardItem item;
    item.id = row.columnInt64(0);
    item.contentHash = row.columnText(1);
    item.preview = row.columnText(2);
    item.contentType = row.columnText(3);
    item.thumbnailPath = row.columnText(4);
    item.sourceApp = row.columnText(5);
    item.copyCount = row.columnInt(6);
    item.firstCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(7), Qt::UTC);
    item.lastCopiedAt = QDateTime::fromSecsSinceEpoch(row.columnInt64(8), Qt::UTC);
    return item;
}

} // namespace corvatto
