#include "history/CharacterCounts.h"

#include "base/Graphemes.h"
#include "base/Worker.h"

namespace corvatto {
namespace {

// Short texts are counted faster than they are looked up, and a run of months sees many of them.
constexpr qsizetype worthRemembering = 512; // UTF-16 units
constexpr qsizetype mostRemembered = 10'000;

} // namespace

std::optional<qsizetype> CharacterCounts::of(const ClipboardItem& item) {
    if (item.content.prefix().size() < worthRemembering) {
        return graphemeCount(item.content.prefix());
    }
    if (const auto known = m_counts.constFind(item.id); known != m_counts.constEnd()) {
        return *known;
    }
    if (!item.content.isComplete()) {
        countBeside(item);
        return std::nullopt;
    }
    const qsizetype count = graphemeCount(item.content.prefix());
    remember(item.id, count);
    return count;
}

void CharacterCounts::remember(qint64 id, qsizetype count) {
    if (m_counts.size() >= mostRemembered) {
        m_counts.clear();
    }
    m_counts.insert(id, count);
}

void CharacterCounts::countBeside(const ClipboardItem& item) {
    if (m_beingCounted.contains(item.id)) {
        return;
    }
    m_beingCounted.insert(item.id);
    const auto count = [content = item.content]() -> std::optional<qsizetype> {
        const auto text = content.load();
        return text ? std::optional(graphemeCount(*text)) : std::nullopt;
    };
    runOnWorker(*this, count, [this, id = item.id](const std::optional<qsizetype>& result) {
        m_beingCounted.remove(id);
        if (result) { // or it is tried again at the next drawing
            remember(id, *result);
            Q_EMIT counted();
        }
    });
}

} // namespace corvatto
