#include "history/HistoryView.h"

#include "history/EmptyShelf.h"
#include "history/HistoryShelf.h"
#include "history/SearchField.h"
#include "ui/Appearance.h"
#include "ui/ContextMenu.h"
#include "ui/Symbols.h"
#include "ui/TextLabel.h"
#include "ui/TextLine.h"

#include <QBoxLayout>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace corvatto {
namespace {

using namespace appearance;

// Points.
constexpr int rowPadding = 14;
constexpr int searchRowHeight = 48;
constexpr int statusRowHeight = 28;
constexpr int searchSpacing = 6;

// Shows a symbol, sharp at the pixel density of its screen.
class SymbolLabel : public QLabel {
public:
    SymbolLabel(const QString& name, double pointSize, const QColor& color)
        : m_name(name), m_pointSize(pointSize), m_color(color) {
        setFixedSize(symbols::size(name, pointSize).toSize());
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        symbols::draw(painter, m_name, rect(), m_pointSize, m_color);
    }

private:
    QString m_name;
    double m_pointSize;
    QColor m_color;
};

class SymbolButton : public QToolButton {
public:
    SymbolButton(const QString& name, double pointSize, const QColor& color)
        : m_name(name), m_pointSize(pointSize), m_color(color) {
        setFixedSize(symbols::size(name, pointSize).toSize() + QSize(4, 4));
        setCursor(Qt::ArrowCursor);
        setFocusPolicy(Qt::TabFocus);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        const bool isEmphasized = isDown() || hasFocus() || underMouse();
        symbols::draw(painter, m_name, rect(), m_pointSize, isEmphasized ? labelColor() : m_color);
    }

private:
    QString m_name;
    double m_pointSize;
    QColor m_color;
};

// Draws a line of one pixel at the top of `area`. Lines of one point would differ in thickness where points
// are no whole pixels.
void drawHairline(QPainter& painter, const QRectF& area) {
    const double pixel = 1 / painter.deviceTransform().m22();
    const double thickness = pixel * std::max(1.0, std::floor(1 / pixel));
    painter.fillRect(QRectF(area.left(), textline::onPixel(painter, area.top()), area.width(), thickness),
                     separatorColor());
}

class Divider : public QWidget {
public:
    Divider() { setFixedHeight(1); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        drawHairline(painter, rect());
    }
};

} // namespace

HistoryView::HistoryView(HistoryViewModel& viewModel, Pasteboard& pasteboard,
                         const RelativeDateTimeFormatter& relativeTimes)
    : m_viewModel(viewModel), m_searchField(new SearchField(pasteboard)),
      m_searchSymbol(new SymbolLabel(QStringLiteral("magnifyingglass"), bodySize, secondaryLabelColor())),
      m_clearButton(new SymbolButton(QStringLiteral("xmark.circle.fill"), bodySize, secondaryLabelColor())),
      m_shelf(new HistoryShelf(viewModel, relativeTimes)), m_emptyShelf(new EmptyShelf),
      m_status(new TextLabel(QString(), systemFont(captionSize), secondaryLabelColor())) {
    setPalette(lightPalette());
    setFont(systemFont(bodySize));

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    buildSearchBar(*rows);
    addDivider(*rows);
    rows->addStretch(1);
    buildShelfArea(*rows);
    addDivider(*rows);
    buildStatusBar(*rows);

    connect(&m_viewModel, &HistoryViewModel::itemsChanged, this, &HistoryView::showItems);
    connect(&m_viewModel, &HistoryViewModel::searchTextChanged, this, [this] {
        showSearchText();
        m_viewModel.search();
    });
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* window) {
        if (window != nullptr) {
            m_searchField->setFocus();
        }
    });
    showItems();
    showSearchText();
}

QSize HistoryView::minimumSizeHint() const {
    return {700, 380};
}

void HistoryView::buildSearchBar(QBoxLayout& rows) {
    auto* row = new QWidget;
    row->setFixedHeight(searchRowHeight);
    auto* bar = new QHBoxLayout(row);
    bar->setContentsMargins(rowPadding, 0, rowPadding, 0);
    bar->setSpacing(searchSpacing);
    bar->addWidget(m_searchSymbol);
    bar->addWidget(m_searchField, 1);
    bar->addWidget(m_clearButton);
    rows.addWidget(row);

    m_searchField->setPlaceholderText(QStringLiteral("搜索历史记录...Esc 关闭窗口。"));
    m_searchField->setAccessibleName(QStringLiteral("搜索历史记录"));
    connect(m_searchField, &QLineEdit::textChanged, &m_viewModel, &HistoryViewModel::setSearchText);
    connect(m_searchField, &QLineEdit::returnPressed, &m_viewModel, &HistoryViewModel::selectAndCopy);

    m_clearButton->setAccessibleName(QStringLiteral("清除搜索"));
    connect(m_clearButton, &QToolButton::clicked, this, [this] {
        m_viewModel.setSearchText(QString()); // the change searches
        m_searchField->setFocus();
    });
}

void HistoryView::buildShelfArea(QBoxLayout& rows) {
    // Both are as high as the shelf, and lower only in a panel that is too low for it.
    rows.addWidget(m_shelf, 1000);
    rows.addWidget(m_emptyShelf, 1000);
    connect(m_shelf, &HistoryShelf::cardMenuRequested, this, &HistoryView::openCardMenu);
    connect(m_shelf, &HistoryShelf::panelMenuRequested, this, &HistoryView::openPanelMenu);
}

void HistoryView::buildStatusBar(QBoxLayout& rows) {
    m_status->setFixedHeight(statusRowHeight);
    m_status->setContentsMargins(rowPadding, 0, rowPadding, 0);
    rows.addWidget(m_status);
}

void HistoryView::addDivider(QBoxLayout& rows) {
    rows.addWidget(new Divider);
}

void HistoryView::showItems() {
    const auto count = m_viewModel.items().size();
    m_shelf->setVisible(count > 0);
    m_emptyShelf->setVisible(count == 0);
    m_status->setText(QString::number(count) + QStringLiteral(" 条历史记录"));
}

void HistoryView::showSearchText() {
    const QString& text = m_viewModel.searchText();
    if (m_searchField->text() != text) {
        m_searchField->setText(text);
    }
    m_clearButton->setVisible(!text.isEmpty());
}

void HistoryView::showEvent(QShowEvent* event) {
    if (!m_hasAppeared) {
        m_hasAppeared = true;
        m_viewModel.refresh();
        m_searchField->setFocus();
    }
    QWidget::showEvent(event);
}

void HistoryView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), panelBackground());
    // Without a compositor the panel has no shadow, and would merge with a grey window behind it.
    drawHairline(painter, rect());
}

void HistoryView::keyPressEvent(QKeyEvent* event) {
    // The clear button has no use for what is typed while it has the focus.
    if (focusWidget() == m_clearButton && !event->text().isEmpty() && event->text().at(0).isPrint()) {
        m_searchField->setFocus();
        QCoreApplication::sendEvent(m_searchField, event);
    } else {
        QWidget::keyPressEvent(event);
    }
}

void HistoryView::contextMenuEvent(QContextMenuEvent* event) {
    openPanelMenu(event->globalPos());
}

void HistoryView::openCardMenu(const ClipboardItem& item, const QPoint& position) {
    auto* menu = new ContextMenu(this);
    menu->addAction(QStringLiteral("复制到剪贴板"), this, [this, item] { m_viewModel.copyItem(item); });
    menu->addSeparator();
    addPanelEntries(*menu);
    menu->open(position);
}

void HistoryView::openPanelMenu(const QPoint& position) {
    auto* menu = new ContextMenu(this);
    addPanelEntries(*menu);
    menu->open(position);
}

void HistoryView::addPanelEntries(QMenu& menu) {
    menu.addAction(QStringLiteral("清空所有历史"), &m_viewModel, &HistoryViewModel::clearAll);
    menu.addSeparator();
    menu.addAction(QStringLiteral("偏好设置..."), &m_viewModel, [this] {
        if (m_viewModel.showPreferences) {
            m_viewModel.showPreferences();
        }
    });
    menu.addSeparator();
    menu.addAction(QStringLiteral("关于"), &m_viewModel, [this] {
        if (m_viewModel.showAbout) {
            m_viewModel.showAbout();
        }
    });
}

} // namespace corvatto
