// An entry from a row of the database. Private to this room.
#pragma once

#include "store/ClipboardItem.h"

#include "ContentReader.h"

namespace corvatto {

// The row has the columns of the list statement, in its order. Any thread.
ClipboardItem rowToItem(const SqliteStatement& row, const std::shared_ptr<const ContentReader>& reader);

} // namespace corvatto
