// State and logic of the history panel: the entries on show, the search text, the selection, and writing an
// entry back to the clipboard. It knows no window; views observe its properties.
#pragma once

#include "capture/ClipboardMonitor.h"
#include "platform/Pasteboard.h"
#include "store/ClipboardStore.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>

namespace corvatto {

// Main thread.
class HistoryViewModel : public QObject {
    Q_OBJECT

public:
    // Both outlive the model.
    HistoryViewModel(ClipboardStore& store, Pasteboard& pasteboard);
    ~HistoryViewModel() override;

    const QList<ClipboardItem>& items() const { return m_items; }
    const QString& searchText() const { return m_searchText; }
    std::optional<qint64> selectedItemId() const { return m_selectedItemId; }

    // Changing the text alone searches nothing: search() does.
    void setSearchText(const QString& text);
    void setSelectedItemId(std::optional<qint64> id);

    // Whose change count is moved on after a write, so that the write is not recorded as a copy.
    QPointer<ClipboardMonitor> monitor;

    // Each may be unset.
    std::function<void()> onDismiss;
    std::function<void()> showPreferences;
    std::function<void()> showAbout;
    std::function<bool()> confirmClearAll; // true means go ahead

    // Records what was copied since the monitor last looked, so that what follows finds it in the history.
    void recordPendingCopy();

    // Loads the most recent entries, whatever the search text, and selects the second: the first is what the
    // clipboard holds already.
    void refresh();

    // Loads the entries that match the search text and selects the first, or as refresh() does when it is
    // empty. In a large history that may take until later: the items stay until there are results, and the
    // keys pressed meanwhile, take effect then.
    void search();

    void moveUp();
    void moveDown();

    // Copies back the selected entry, the one at a position, or the given one: on success its count rises and
    // the panel is dismissed. An entry whose files have gone leaves everything as it was and prints one line.
    void selectAndCopy();
    void copyItem(qsizetype index);
    void copyItem(const ClipboardItem& item); // at once

    // Erases the history, if the user confirms.
    void clearAll();

Q_SIGNALS:
    void itemsChanged();
    void searchTextChanged();
    void selectedItemIdChanged();

private:
    void setItems(QList<ClipboardItem> items);
    void showFound(QList<ClipboardItem> items);
    void finishSearch(QList<ClipboardItem> items);
    bool waitsForResults(std::function<void()> action);
    void applyDefaultSelection();
    std::optional<qint64> idAt(qsizetype index) const;
    qsizetype selectedIndex() const; // -1 when nothing is selected, or nothing that is on show
    void moveSelection(qsizetype step);
    bool write(const ClipboardItem& item);
    bool writeFiles(const QString& content);
    bool writeImage(const QString& path);

    QList<ClipboardItem> m_items;
    QString m_searchText;
    std::optional<qint64> m_selectedItemId;
    bool m_isSearching = false;     // results are still to come
    bool m_hasFirstResults = false; // of that search
    QList<std::function<void()>> m_whenFound;
    ClipboardStore& m_store;
    Pasteboard& m_pasteboard;
};

} // namespace corvatto
