// Draws the shelf's entries as cards, and knows where in its cell a card lies.
#pragma once

#include "history/CardImages.h"
#include "history/CharacterCounts.h"
#include "history/HistoryListModel.h"

#include <QStyledItemDelegate>

namespace corvatto {

class HistoryCardDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    // Points.
    static constexpr int cardSpacing = 18;   // between neighbouring cards
    static constexpr int shelfVPadding = 18; // above and below the cards
    static constexpr int shelfHPadding = 28; // before the first card and after the last

    // All outlive the delegate.
    HistoryCardDelegate(HistoryViewModel& viewModel, const RelativeDateTimeFormatter& relativeTimes);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // The card inside the cell of `index`, in the cell's coordinates.
    static QRect cardRect(const QRect& cell, const QModelIndex& index);

    // Sets the height of cells. In a low panel it is less than whole cards need.
    void setCellHeight(int height) { m_cellHeight = height; }

    // Tells when drawing again would show more.
    const CharacterCounts& characterCounts() const { return m_characterCounts; }

    QString accessibleText(const ClipboardItem& item, qsizetype index) const;

private:
    CardContext context() const;

    HistoryViewModel& m_viewModel;
    const RelativeDateTimeFormatter& m_relativeTimes;
    mutable CardImages m_images;
    mutable CharacterCounts m_characterCounts;
    int m_cellHeight = 0;
};

} // namespace corvatto
