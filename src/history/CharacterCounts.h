// Remembers how many characters an entry's content has, so that a long text is counted once and not at each
// drawing.
#pragma once

#include "store/ClipboardItem.h"

#include <QHash>

namespace corvatto {

class CharacterCounts {
public:
    // The number of user-perceived characters of the item's content. The content of an id never changes.
    qsizetype of(const ClipboardItem& item);

private:
    QHash<qint64, qsizetype> m_counts;
};

} // namespace corvatto
