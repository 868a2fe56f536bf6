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
#include <cmath>
#include <limits>

namespace corvatto {
namespace {

// Points.
constexpr double heightShare = 0.42; // of the visible frame's
constexpr double maximumHeight = 440;

constexpr int attemptsToShow = 5;

// An automatic check for updates is considered at every so many openings.
constexpr qint64 openingsBetweenChecks = 100;

// The digit keys in the order of the entries that they copy.
constexpr std::array<quint16, 9> digitKeys{key1, key2, key3, key4, key5, key6, key7, key8, key9};

double secondsSince1970() {
    return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

} // namespace

HistoryWindowController::HistoryWindowController(HistoryViewModel& viewModel, const Desktop& desktop)
    : m_viewModel(viewModel), m_desktop(desktop) {
    m_lookAfterShowing.setSingleShot(true);
    m_lookAfterShowing.setInterval(std::chrono::milliseconds(500));
    m_lookAfterShowing.callOnTimeout(this, &HistoryWindowController::showAgainIfLost);
    m_desktop.screens.didChange = [self = QPointer(this)] {
        if (self) {
            self->placeAgain();
        }
    };
    m_viewModel.onDismiss = [self = QPointer(this)] {
        if (self && self->m_window) {
            self->m_window->orderOut();
        }
    };
}

HistoryWindowController::~HistoryWindowController() = default;

QRect HistoryWindowController::panelFrame(const QRect& visibleFrame) {
    const double height = std::min(visibleFrame.height() * heightShare, maximumHeight);
    const int points = static_cast<int>(std::lround(height));
    return {visibleFrame.left(), visibleFrame.top() + visibleFrame.height() - points, visibleFrame.width(),
            points};
}

std::optional<Screen> HistoryWindowController::currentScreen() const {
    const QPoint mouse = m_desktop.screens.mouseLocation();
    const std::vector<Screen> screens = m_desktop.screens.screens();
    const auto under = std::find_if(screens.begin(), screens.end(),
                                    [&](const Screen& screen) { return screen.frame.contains(mouse); });
    if (under != screens.end()) {
        return *under;
    }
    if (const auto main = m_desktop.screens.mainScreen()) {
        return main;
    }
    return screens.empty() ? std::nullopt : std::optional(screens.front());
}

void HistoryWindowController::createWindow() {
    m_view = new HistoryView(m_viewModel, m_desktop.pasteboard, m_desktop.relativeTimes);
    m_window = std::make_unique<FloatingPanel>(m_view);
    m_localEventMonitor =
        std::make_unique<LocalKeyMonitor>([this](const KeyEvent& event) { return handleKey(event); });
}

void HistoryWindowController::show() {
    const auto screen = currentScreen();
    if (!screen) {
        return; // there is nothing to show it on
    }
    if (!m_window) {
        createWindow();
    }
    place(*screen);
    m_desktop.panelWindows.prepareToShow(*m_window);
    m_window->orderFront();
    m_attemptsLeft = attemptsToShow;
    takeFront();
    m_viewModel.refresh();
    trackWindowOpen();
}

void HistoryWindowController::place(const Screen& screen) {
    m_screenOrigin = screen.frame.topLeft();
    m_window->setGeometry(panelFrame(screen.visibleFrame));
}

// A visible panel stays with its screen when that is resized, and does not stay where there is no screen any
// more.
void HistoryWindowController::placeAgain() {
    if (!m_window || !m_window->isVisible()) {
        return;
    }
    const std::vector<Screen> screens = m_desktop.screens.screens();
    const auto same = std::find_if(screens.begin(), screens.end(), [this](const Screen& screen) {
        return screen.frame.topLeft() == m_screenOrigin;
    });
    if (const auto screen = same != screens.end() ? *same : currentScreen()) {
        place(*screen);
    }
}

void HistoryWindowController::takeFront() {
    m_desktop.panelWindows.confirmShown(*m_window);
    m_desktop.panelWindows.activate(*m_window);
    m_lookAfterShowing.start();
}

void HistoryWindowController::showAgainIfLost() {
    // At the start of a session the window manager may start at the same moment, and lose the request to
    // show. Hiding and showing would be a mistake here: a desktop that is only busy would flicker, and who
    // presses the shortcut in between would get the opposite of what is on screen.
    const bool maybeLost = m_window->isVisible() && !m_window->windowHandle()->isExposed();
    if (maybeLost && m_attemptsLeft > 0 && m_desktop.panelWindows.askAgainToShow(*m_window)) {
        --m_attemptsLeft;
        takeFront();
    }
}

void HistoryWindowController::trackWindowOpen() {
    const QString& openCountKey = SettingsKeys::corvattoHistoryWindowOpenCount;
    const qint64 stored = m_desktop.defaults.integer(openCountKey);
    const qint64 count = stored < std::numeric_limits<qint64>::max() ? stored + 1 : 1;
    m_desktop.defaults.setInteger(openCountKey, count);
    if (count % openingsBetweenChecks != 0) {
        return;
    }
    const double lastCheck = m_desktop.defaults.number(UpdateChecker::lastCheckKey);
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
            return false; // the field submits
        }
        m_viewModel.selectAndCopy();
        return true;
    case keyEscape:
        m_window->orderOut();
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
    // The field's own text, when some of it is selected. Copied here, because the field knows only Control
    // and C.
    const SearchField& field = m_view->searchField();
    if (field.hasFocus() && field.hasSelectedText()) {
        field.copy();
    } else {
        m_viewModel.selectAndCopy();
    }
}

} // namespace corvatto
