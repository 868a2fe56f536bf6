// Gives items their content: a short one complete, a long one as a prefix and a loader of the rest. Private
// to this room.
#pragma once

#include "store/ClipboardItem.h"

#include <QByteArray>
#include <QList>

struct sqlite3;

namespace corvatto {

// Gives each item that has none its content, read over `db`, which may be a worker's connection to the
// database at that path, as the system spells it. Items whose content cannot be read are left out, and the
// result is false then.
bool addContents(QList<ClipboardItem>& items, sqlite3* db, const QByteArray& database);

} // namespace corvatto
