#include "history/HistoryViewModel.h"

#include "base/Diagnostics.h"
#include "base/FilePath.h"
#include "base/Image.h"

#include <algorithm>
#include <utility>

namespace corvatto {
namespace {

constexpr int fetchLimit = 100;

} // namespace

HistoryViewModel::HistoryViewModel(ClipboardStore& store, Pasteboard& pasteboard)
    : m_store(store), m_pasteboard(pasteboard) {}

HistoryViewModel::~HistoryViewModel() {
    m_store.cancelSearch();
}

void HistoryViewModel::setSearchText(const QString& text) {
    if (text != m_searchText) {
        m_searchText = text;
        Q_EMIT searchTextChanged();
    }
}

void HistoryViewModel::setSelectedItemId(std::optional<qint64> id) {
    if (id != m_selectedItemId) {
        m_selectedItemId = id;
        Q_EMIT selectedItemIdChanged();
    }
}

void HistoryViewModel::setItems(QList<ClipboardItem> items) {
    m_items = std::move(items);
    Q_EMIT itemsChanged();
}

void HistoryViewModel::recordPendingCopy() {
    if (monitor) {
        monitor->checkNow();
    }
}

void HistoryViewModel::refresh() {
    m_store.cancelSearch();
    m_isSearching = false;
    m_whenFound.clear();
    setItems(m_store.fetchRecent(std::nullopt, fetchLimit));
    applyDefaultSelection();
}

void HistoryViewModel::search() {
    m_whenFound.clear();
    const auto result = m_store.search(
        m_searchText, fetchLimit, [this](QList<ClipboardItem> items) { finishSearch(std::move(items)); });
    m_isSearching = !result.isComplete;
    m_hasFirstResults = !result.items.isEmpty();
    if (result.isComplete || m_hasFirstResults) {
        showFound(result.items);
    }
}

void HistoryViewModel::finishSearch(QList<ClipboardItem> items) {
    m_isSearching = false;
    if (m_hasFirstResults) {
        setItems(std::move(items)); // the selection may have been moved since the first ones
    } else {
        showFound(std::move(items));
    }
    for (const auto& action : std::exchange(m_whenFound, {})) {
        action();
    }
}

// Whether `action` is put off until the results of the search are there.
bool HistoryViewModel::waitsForResults(std::function<void()> action) {
    if (m_isSearching) {
        m_whenFound.append(std::move(action));
    }
    return m_isSearching;
}

void HistoryViewModel::showFound(QList<ClipboardItem> items) {
    setItems(std::move(items));
    if (!m_searchText.isEmpty()) {
        setSelectedItemId(idAt(0));
    } else {
        applyDefaultSelection();
    }
}

void HistoryViewModel::applyDefaultSelection() {
    setSelectedItemId(idAt(m_items.size() >= 2 ? 1 : 0));
}

std::optional<qint64> HistoryViewModel::idAt(qsizetype index) const {
    return index >= 0 && index < m_items.size() ? std::optional(m_items[index].id) : std::nullopt;
}

qsizetype HistoryViewModel::selectedIndex() const {
    const auto selected = std::find_if(m_items.cbegin(), m_items.cend(), [this](const ClipboardItem& item) {
        return item.id == m_selectedItemId;
    });
    return selected == m_items.cend() ? -1 : selected - m_items.cbegin();
}

void HistoryViewModel::moveUp() {
    moveSelection(-1);
}

void HistoryViewModel::moveDown() {
    moveSelection(+1);
}

void HistoryViewModel::moveSelection(qsizetype step) {
    if (waitsForResults([this, step] { moveSelection(step); })) {
        return;
    }
    if (m_items.isEmpty() || !m_selectedItemId) {
        setSelectedItemId(idAt(0));
        return;
    }
    const qsizetype selected = selectedIndex();
    if (selected < 0) {
        return;
    }
    if (const auto neighbour = idAt(selected + step)) {
        setSelectedItemId(neighbour);
    }
}

void HistoryViewModel::selectAndCopy() {
    if (waitsForResults([this] { selectAndCopy(); })) {
        return;
    }
    copyItem(selectedIndex());
}

void HistoryViewModel::copyItem(qsizetype index) {
    if (waitsForResults([this, index] { copyItem(index); })) {
        return;
    }
    if (index >= 0 && index < m_items.size()) {
        // A copy: dismissing may reload the list.
        copyItem(ClipboardItem(m_items[index]));
    }
}

void HistoryViewModel::copyItem(const ClipboardItem& item) {
    recordPendingCopy(); // it is about to be replaced
    if (!write(item)) {
        return;
    }
    if (monitor) {
        monitor->ignoreCurrentContent();
    }
    m_store.incrementCopyCount(item.id);
    if (onDismiss) {
        onDismiss();
    }
}

bool HistoryViewModel::write(const ClipboardItem& item) {
    const std::optional<QString> content = item.content.load();
    if (!content) {
        printLine(u"[HistoryViewModel] Text missing — nothing copied.");
        return false;
    }
    if (item.contentType == QLatin1String("file")) {
        return writeFiles(*content);
    }
    if (item.contentType == QLatin1String("image")) {
        return writeImage(*content);
    }
    m_pasteboard.clearContents();
    m_pasteboard.setString(*content);
    return true;
}

bool HistoryViewModel::writeFiles(const QString& content) {
    QList<QUrl> urls;
    for (const QString& path : content.split(QLatin1Char('\n'))) {
        if (pathExists(path)) {
            urls.append(fileUrl(nativePath(path)));
        }
    }
    if (urls.isEmpty()) {
        printLine(u"[HistoryViewModel] All file paths are missing — nothing copied.");
        return false;
    }
    m_pasteboard.clearContents();
    m_pasteboard.writeFileURLs(urls);
    return true;
}

bool HistoryViewModel::writeImage(const QString& path) {
    const auto image = Image::fromFile(path);
    if (!image) {
        printLine(u"[HistoryViewModel] Image file missing — nothing copied.");
        return false;
    }
    m_pasteboard.clearContents();
    m_pasteboard.writeImage(*image);
    return true;
}

void HistoryViewModel::clearAll() {
    if (confirmClearAll && !confirmClearAll()) {
        return;
    }
    if (monitor) {
        monitor->finish(); // or it would store an image whose files go with the others
    }
    m_store.deleteAll();
    refresh();
}

} // namespace corvatto
