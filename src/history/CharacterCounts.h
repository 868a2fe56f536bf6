// Remembers how many characters an entry's content has, so that a long text is counted once and not at each
// drawing; and one that has to be loaded is loaded and counted beside the main thread.
#pragma once

#include "store/ClipboardItem.h"

#include <QHash>
#include <QObject>
#include <QSet>

namespace corvatto {

// Main thread.
class CharacterCounts : public QObject {
    Q_OBJECT

public:
    // The number of user-perceived characters of the item's content. The content of an id never changes.
    // Absent until counted() when it takes long.
    std::optional<qsizetype> of(const ClipboardItem& item);

Q_SIGNALS:
    void counted();

private:
    void remember(qint64 id, qsizetype count);
    void countBeside(const ClipboardItem& item);

    QHash<qint64, qsizetype> m_counts;
    QSet<qint64> m_beingCounted;
};

} // namespace corvatto
