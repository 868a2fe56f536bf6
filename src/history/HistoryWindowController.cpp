#include "history/HistoryWindowController.h"

#include "history/FloatingPanel.h"
#include "history/HistoryView.h"
#include "history/SearchField.h"
#include "settings/SettingsKeys.h"
#include "update/UpdateChecker.h"

#include <QWindow>

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>

namespace corvatto {
namespace {

// The number of openings after which an automatic check for updates may run.
constexpr qint64 openingsBetweenChecks = 100;

constexpr std::chrono::seconds longestWaitForPanel{1};

// The digit keys in the order of the entries that they copy.
constexpr std::array<quint16, 9> digitKeys{key1, key2, key3, key4, key5, key6, key7, key8, key9};

double secondsSince1970() {
    return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

} // namespace

HistoryWindowController::HistoryWindowController(HistoryViewModel& viewModel, Pasteboard& pasteboard,
                                                 WindowPresenter& presenter, UserDefaults& defaults,
                                                 const RelativeDateTimeFormatter& relativeTimes)
    : m_viewModel(viewModel), m_pasteboard(pasteboard), m_presenter(presenter), m_defaults(defaults),
      m_relativeTimes(relativeTimes) {
    m_countTimer.setSingleShot(true);
    m_countTimer.callOnTimeout(this, &HistoryWindowController::countOpenings);
    m_viewModel.onDismiss = [self = QPointer(this)] {
        if (self && self->m_window) {
            self->hide();
        }
    };
}

HistoryWindowController::~HistoryWindowController() {
    countOpenings();
}

void HistoryWindowController::createWindow() {
    m_view = new HistoryView(m_viewModel, m_pasteboard, m_relativeTimes);
    m_window = std::make_unique<FloatingPanel>(m_view);
    connect(m_window.get(), &FloatingPanel::closeRequested, this, &HistoryWindowController::hide);
    m_localEventMonitor =
        std::make_unique<LocalKeyMonitor>([this](const KeyEvent& event) { return handleKey(event); });
}

void HistoryWindowController::show() {
    if (!m_window) {
        createWindow();
    }
    m_viewModel.recordPendingCopy(); // what was copied just now belongs into the list
    if (m_presenter.showPanel(*m_window)) {
        m_viewModel.refresh();
        trackWindowOpen();
    }
}

void HistoryWindowController::hide() {
    m_presenter.hidePanel(*m_window);
}

void HistoryWindowController::trackWindowOpen() {
    // Storing may take as long as the disk likes, so the panel is painted first. One that is on the screen
    // already, or does not get there soon, is counted all the same.
    ++m_uncountedOpenings;
    m_window->windowHandle()->installEventFilter(this);
    m_countTimer.start(longestWaitForPanel);
}

bool HistoryWindowController::eventFilter(QObject* /*watched*/, QEvent* event) {
    if (event->type() == QEvent::Expose && m_countTimer.isActive()) {
        m_countTimer.start(0); // the window paints in this event
    }
    return false;
}

void HistoryWindowController::countOpenings() {
    for (; m_uncountedOpenings > 0; --m_uncountedOpenings) {
        countOpening();
    }
}

void HistoryWindowController::countOpening() {
    const QString& openCountKey = SettingsKeys::corvattoHistoryWindowOpenCount;
    const qint64 stored = m_defaults.integer(openCountKey);
    const qint64 count = stored < std::numeric_limits<qint64>::max() ? stored + 1 : 1;
    m_defaults.setInteger(openCountKey, count);
    if (count % openingsBetweenChecks != 0) {
        return;
    }
    const double lastCheck = m_defaults.number(UpdateChecker::lastCheckKey);
    if (secondsSince1970() - lastCheck >= UpdateChecker::checkInterval) {
        UpdateChecker::shared().checkForUpdates(false);
    }
}

bool HistoryWindowController::handleKey(const KeyEvent& event) {
    if (!m_window->isKeyWindow() || m_view->searchField().isComposing()) {
        return false;
    }
    const bool isCommand = (event.modifierFlags & commandFlag) != 0;
    const auto digit = std::find(digitKeys.begin(), digitKeys.end(), event.keyCode);
    if (isCommand && digit != digitKeys.end()) {
        m_viewModel.copyItem(digit - digitKeys.begin());
        return true;
    }
    switch (event.keyCode) {
    case keyC:
        if (isCommand) {
            handleCommandC();
        }
        return isCommand;
    case keyReturn:
        if (m_view->searchField().hasFocus()) {
            return false; // the field handles it
        }
        m_viewModel.selectAndCopy();
        return true;
    case keyEscape:
        hide();
        return true;
    case keyLeftArrow:
    case keyUpArrow:
        m_viewModel.moveUp();
        return true;
    case keyRightArrow:
    case keyDownArrow:
        m_viewModel.moveDown();
        return true;
    default:
        return false;
    }
}

void HistoryWindowController::handleCommandC() {
    // Text that is selected in the field comes before the entry. It is copied here, because the field itself
    // reacts only to Control+C.
    const SearchField& field = m_view->searchField();
    if (field.hasFocus() && field.hasSelectedText()) {
        field.copy();
    } else {
        m_viewModel.selectAndCopy();
    }
}

} // namespace corvatto
