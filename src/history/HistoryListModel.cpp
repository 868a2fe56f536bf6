#include "history/HistoryListModel.h"

#include <algorithm>

namespace corvatto {

HistoryListModel::HistoryListModel(HistoryViewModel& viewModel, Describe describe)
    : m_viewModel(viewModel), m_describe(std::move(describe)), m_items(viewModel.items()) {
    connect(&m_viewModel, &HistoryViewModel::itemsChanged, this, [this] {
        beginResetModel();
        m_items = m_viewModel.items();
        endResetModel();
    });
}

int HistoryListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_items.size());
}

QVariant HistoryListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_items.size()) {
        return {};
    }
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
        return m_describe(m_items[index.row()], index.row());
    }
    return {};
}

int HistoryListModel::rowOf(std::optional<qint64> id) const {
    const auto found = std::find_if(m_items.cbegin(), m_items.cend(),
                                    [&](const ClipboardItem& item) { return item.id == id; });
    return found == m_items.cend() ? -1 : static_cast<int>(found - m_items.cbegin());
}

} // namespace corvatto
