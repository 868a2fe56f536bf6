#include "history/CharacterCounts.h"

#include "base/Graphemes.h"

namespace corvatto {
namespace {

// Short texts are counted faster than they are looked up, and a run of months sees many of them.
constexpr qsizetype worthRemembering = 512; // UTF-16 units
constexpr qsizetype mostRemembered = 10'000;

} // namespace

qsizetype CharacterCounts::of(const ClipboardItem& item) {
    if (item.content.prefix().size() < worthRemembering) {
        return graphemeCount(item.content.prefix());
    }
    auto known = m_counts.constFind(item.id);
    if (known == m_counts.constEnd()) {
        const std::optional<QString> content = item.content.load();
        if (!content) {
            return 0; // not worth remembering: the next time it may be read
        }
        if (m_counts.size() >= mostRemembered) {
            m_counts.clear();
        }
        known = m_counts.insert(item.id, graphemeCount(*content));
    }
    return *known;
}

} // namespace corvatto
