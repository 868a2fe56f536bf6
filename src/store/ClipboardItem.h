// One entry of the history, as a plain value.
#pragma once

#include "store/ItemContent.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace corvatto {

// Identified by its id; two items have no other notion of equality.
struct ClipboardItem {
    qint64 id = 0;
    // The text; or the absolute path of the PNG file; or absolute paths joined with line feeds. Only a text
    // may be incomplete.
    ItemContent content;
    QString contentHash; // 64 hexadecimal digits, ContentHash.h
    QString preview;
    QString contentType; // "text", "image" or "file"
    // Absolute path of the thumbnail's PNG file. Items that come from the store always have a value; an empty
    // one means that there is no thumbnail.
    std::optional<QString> thumbnailPath;
    QString sourceApp; // display name of the application that was in front; empty when unknown
    qint64 copyCount = 0;
    QDateTime firstCopiedAt; // UTC, whole seconds
    QDateTime lastCopiedAt;  // UTC, whole seconds; what the history is ordered by
};

} // namespace corvatto
