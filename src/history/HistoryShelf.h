// The scrolling row of cards. Only the cards in view are drawn; the selected one is kept in view.
#pragma once

#include "history/HistoryCardDelegate.h"
#include "history/HistoryListModel.h"

#include <QListView>
#include <QPropertyAnimation>

namespace corvatto {

class HistoryShelf : public QListView {
    Q_OBJECT

public:
    // Points: one row of cards with the padding above and below.
    static constexpr int shelfHeight =
        static_cast<int>(HistoryCardView::cardHeight) + 2 * HistoryCardDelegate::shelfVPadding;

    // Both outlive the shelf.
    HistoryShelf(HistoryViewModel& viewModel, const RelativeDateTimeFormatter& relativeTimes);

    // The entry whose card is at `position` (in the viewport), or none beside the cards.
    const ClipboardItem* cardAt(const QPoint& position) const;

    QSize sizeHint() const override;

Q_SIGNALS:
    // A secondary click: on a card, or beside the cards.
    void cardMenuRequested(const corvatto::ClipboardItem& item, const QPoint& globalPosition);
    void panelMenuRequested(const QPoint& globalPosition);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildScrollIndicator();
    void showSelection();
    enum class Scrolling { smooth, atOnce };
    void centre(const QModelIndex& index, Scrolling scrolling);

    HistoryViewModel& m_viewModel;
    HistoryCardDelegate m_delegate;
    HistoryListModel m_model;
    QScrollBar* m_indicator;
    QPropertyAnimation m_scrolling;
    std::optional<ClipboardItem> m_pressed;
};

} // namespace corvatto
