#include "history/HistoryShelf.h"

#include "ui/Appearance.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>

namespace corvatto {
namespace {

constexpr int indicatorHeight = 12; // points; lies over the padding below the cards

} // namespace

HistoryShelf::HistoryShelf(HistoryViewModel& viewModel, const RelativeDateTimeFormatter& relativeTimes)
    : m_viewModel(viewModel), m_delegate(viewModel, relativeTimes),
      m_model(viewModel, [this](const ClipboardItem& item,
                                qsizetype index) { return m_delegate.accessibleText(item, index); }),
      m_indicator(new QScrollBar(Qt::Horizontal, this)), m_scrolling(horizontalScrollBar(), "value", this) {
    setModel(&m_model);
    setItemDelegate(&m_delegate);
    connect(&m_delegate.characterCounts(), &CharacterCounts::counted, viewport(),
            qOverload<>(&QWidget::update));
    setFlow(QListView::LeftToRight);
    setWrapping(false);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAutoScroll(false); // making the selected card current must not jump
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // the keyboard stays with the search field
    setMaximumHeight(shelfHeight);
    setAccessibleName(QStringLiteral("历史记录"));
    horizontalScrollBar()->setSingleStep(static_cast<int>(HistoryCardView::cardWidth) / 3);
    viewport()->setAutoFillBackground(false);
    buildScrollIndicator();

    m_scrolling.setDuration(150);
    m_scrolling.setEasingCurve(QEasingCurve::InOutSine);
    connect(&m_viewModel, &HistoryViewModel::selectedItemIdChanged, this, &HistoryShelf::showSelection);
    connect(&m_model, &QAbstractItemModel::modelReset, this, &HistoryShelf::showSelection);
    // A screen reader selects here, and not in the view model.
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this](const QItemSelection& selected) {
                if (!selected.isEmpty()) {
                    m_viewModel.setSelectedItemId(m_model.item(selected.indexes().first().row()).id);
                }
            });
}

QSize HistoryShelf::sizeHint() const {
    return {static_cast<int>(HistoryCardView::cardWidth), shelfHeight};
}

void HistoryShelf::buildScrollIndicator() {
    // The native bar would take its height from the cards; this one lies over the padding below them.
    m_indicator->setStyleSheet(
        QStringLiteral(
            "QScrollBar:horizontal { background: transparent; border: none; margin: 0; height: %1px; }"
            "QScrollBar::handle:horizontal { background: rgba(0,0,0,0.28); border-radius: 3px; margin: 3px "
            "4px;"
            " min-width: 36px; }"
            "QScrollBar::handle:horizontal:hover { background: rgba(0,0,0,0.45); }"
            "QScrollBar::add-line, QScrollBar::sub-line { width: 0; }"
            "QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }")
            .arg(indicatorHeight));
    QScrollBar* bar = horizontalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int minimum, int maximum) {
        m_indicator->setRange(minimum, maximum);
        m_indicator->setPageStep(bar->pageStep());
        m_indicator->setVisible(maximum > minimum);
    });
    connect(bar, &QScrollBar::valueChanged, m_indicator, &QScrollBar::setValue);
    connect(m_indicator, &QScrollBar::valueChanged, bar, &QScrollBar::setValue);
    m_indicator->setSingleStep(bar->singleStep());        // the wheel moves as far as over the cards
    m_indicator->setContextMenuPolicy(Qt::NoContextMenu); // the panel's, not the scroll bar's own
    m_indicator->hide();
}

void HistoryShelf::resizeEvent(QResizeEvent* event) {
    m_indicator->setGeometry(0, height() - indicatorHeight, width(), indicatorHeight);
    m_indicator->raise();
    m_delegate.setCellHeight(viewport()->height());
    scheduleDelayedItemsLayout();
    QListView::resizeEvent(event);
    // The middle has moved; at first, because the panel has just got its size.
    const QModelIndex current = currentIndex();
    if (current.isValid() && event->size().width() != event->oldSize().width()) {
        centre(current, Scrolling::atOnce);
    }
}

void HistoryShelf::showSelection() {
    viewport()->update();
    const int row = m_model.rowOf(m_viewModel.selectedItemId());
    if (row < 0) {
        return;
    }
    const QModelIndex index = m_model.index(row);
    setCurrentIndex(index);
    centre(index, isVisible() ? Scrolling::smooth : Scrolling::atOnce);
}

void HistoryShelf::centre(const QModelIndex& index, Scrolling scrolling) {
    executeDelayedItemsLayout(); // or the positions are those of the old list
    const QRect card = HistoryCardDelegate::cardRect(visualRect(index), index);
    QScrollBar* bar = horizontalScrollBar();
    const int target = std::clamp(bar->value() + card.center().x() - viewport()->width() / 2, bar->minimum(),
                                  bar->maximum());
    m_scrolling.stop();
    if (target == bar->value()) {
        return;
    }
    if (scrolling == Scrolling::atOnce) {
        bar->setValue(target);
        return;
    }
    m_scrolling.setStartValue(bar->value());
    m_scrolling.setEndValue(target);
    m_scrolling.start();
}

const ClipboardItem* HistoryShelf::cardAt(const QPoint& position) const {
    const QModelIndex index = indexAt(position);
    const bool onCard =
        index.isValid() && HistoryCardDelegate::cardRect(visualRect(index), index).contains(position);
    return onCard ? &m_model.item(index.row()) : nullptr;
}

void HistoryShelf::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const ClipboardItem* item = cardAt(event->position().toPoint());
    m_pressed = item != nullptr ? std::optional(*item) : std::nullopt;
    if (m_pressed) {
        m_viewModel.setSelectedItemId(m_pressed->id);
    }
}

void HistoryShelf::mouseMoveEvent(QMouseEvent* /*event*/) {
    // Cards are not dragged, and dragging selects nothing.
}

void HistoryShelf::mouseReleaseEvent(QMouseEvent* /*event*/) {}

void HistoryShelf::mouseDoubleClickEvent(QMouseEvent* event) {
    // The first click selects its card and makes the shelf scroll, so that a neighbour may be under the
    // mouse at the second. The card of the first click is copied.
    if (event->button() == Qt::LeftButton && m_pressed) {
        const ClipboardItem item = *m_pressed;
        m_pressed.reset();
        m_viewModel.copyItem(item);
    }
}

void HistoryShelf::contextMenuEvent(QContextMenuEvent* event) {
    if (const ClipboardItem* item = cardAt(viewport()->mapFromGlobal(event->globalPos()))) {
        Q_EMIT cardMenuRequested(*item, event->globalPos());
    } else {
        Q_EMIT panelMenuRequested(event->globalPos());
    }
}

} // namespace corvatto
