// An entry from a row of the database. Private to this room.
#pragma once

#include "store/ClipboardItem.h"

#include "SqliteStatement.h"

namespace corvatto {

// The columns that rowToItem() reads. The content is not among them: ContentReader.
#define CORVATTO_ITEM_COLUMNS                                                                                \
    "id, content_hash, preview, content_type, thumbnail_path, source_app, copy_count, first_copied_at, "     \
    "last_copied_at"

// The row has these columns, in this order. Any thread.
ClipboardItem rowToItem(const SqliteStatement& row);

} // namespace corvatto
