// The entries on show as an item model, for the shelf.
#pragma once

#include "history/HistoryCardView.h"
#include "history/HistoryViewModel.h"

#include <QAbstractListModel>

namespace corvatto {

class HistoryListModel : public QAbstractListModel {
    Q_OBJECT

public:
    // Both outlive the list. `describe` gives the accessible text of the entry at a position.
    using Describe = std::function<QString(const ClipboardItem& item, qsizetype index)>;
    HistoryListModel(HistoryViewModel& viewModel, Describe describe);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    const ClipboardItem& item(int row) const { return m_items[row]; }
    int rowOf(std::optional<qint64> id) const; // -1 when there is none

private:
    HistoryViewModel& m_viewModel;
    Describe m_describe;
    QList<ClipboardItem> m_items;
};

} // namespace corvatto
