// The content of the history panel: the search row, the shelf of cards or the empty state, the status row,
// and the context menus. It holds no history of its own; everything it shows is the view model's.
#pragma once

#include "history/HistoryViewModel.h"
#include "platform/RelativeDateTimeFormatter.h"

#include <QLabel>
#include <QToolButton>
#include <QWidget>

class QBoxLayout;
class QMenu;

namespace corvatto {

class EmptyShelf;
class HistoryShelf;
class SearchField;

class HistoryView : public QWidget {
    Q_OBJECT

public:
    // All outlive the view.
    HistoryView(HistoryViewModel& viewModel, Pasteboard& pasteboard,
                const RelativeDateTimeFormatter& relativeTimes);

    SearchField& searchField() { return *m_searchField; }

    // The smallest size at which nothing is cramped, in points.
    QSize minimumSizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void buildSearchBar(QBoxLayout& rows);
    void buildShelfArea(QBoxLayout& rows);
    void buildStatusBar(QBoxLayout& rows);
    void addDivider(QBoxLayout& rows);
    void showItems();
    void showSearchText();
    void openCardMenu(const ClipboardItem& item, const QPoint& position);
    void openPanelMenu(const QPoint& position);
    void addPanelEntries(QMenu& menu);

    HistoryViewModel& m_viewModel;
    SearchField* m_searchField;
    QLabel* m_searchSymbol;
    QToolButton* m_clearButton;
    HistoryShelf* m_shelf;
    EmptyShelf* m_emptyShelf;
    QLabel* m_status;
    bool m_hasAppeared = false;
};

} // namespace corvatto
