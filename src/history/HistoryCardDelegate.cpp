#include "history/HistoryCardDelegate.h"

#include <algorithm>

namespace corvatto {
namespace {

constexpr int cardWidth = static_cast<int>(HistoryCardView::cardWidth);
constexpr int cardHeight = static_cast<int>(HistoryCardView::cardHeight);
constexpr int halfSpacing = HistoryCardDelegate::cardSpacing / 2;

// Each cell has half the spacing on both sides. The first and the last have the shelf's padding instead.
int paddingBefore(const QModelIndex& index) {
    return index.row() == 0 ? HistoryCardDelegate::shelfHPadding : halfSpacing;
}

int paddingAfter(const QModelIndex& index) {
    return index.row() == index.model()->rowCount() - 1 ? HistoryCardDelegate::shelfHPadding : halfSpacing;
}

} // namespace

HistoryCardDelegate::HistoryCardDelegate(HistoryViewModel& viewModel,
                                         const RelativeDateTimeFormatter& relativeTimes)
    : m_viewModel(viewModel), m_relativeTimes(relativeTimes) {}

CardContext HistoryCardDelegate::context() const {
    return {m_images, m_characterCounts, m_relativeTimes, QDateTime::currentDateTime()};
}

QRect HistoryCardDelegate::cardRect(const QRect& cell, const QModelIndex& index) {
    // In a low panel the padding shrinks before the card does, to what the scroll indicator needs.
    const int padding = std::clamp((cell.height() - cardHeight) / 2, shelfVPadding * 2 / 3, shelfVPadding);
    const int height = std::min(cardHeight, cell.height() - 2 * padding);
    return {cell.left() + paddingBefore(index), cell.top() + (cell.height() - height) / 2, cardWidth, height};
}

QSize HistoryCardDelegate::sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& index) const {
    return {paddingBefore(index) + cardWidth + paddingAfter(index), m_cellHeight};
}

void HistoryCardDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    const auto* model = static_cast<const HistoryListModel*>(index.model());
    const ClipboardItem& item = model->item(index.row());
    const HistoryCardView card(item, m_viewModel.selectedItemId() == item.id, index.row());
    card.paint(*painter, cardRect(option.rect, index), context());
}

QString HistoryCardDelegate::accessibleText(const ClipboardItem& item, qsizetype index) const {
    return HistoryCardView(item, false, index).accessibleText(context());
}

} // namespace corvatto
