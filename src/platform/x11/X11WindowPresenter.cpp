#include "platform/x11/X11WindowPresenter.h"

#include "platform/PanelPlacement.h"

#include <QApplication>
#include <QEvent>
#include <QWindow>

#include <chrono>

namespace corvatto {
namespace {

constexpr quint32 everyDesktop = 0xFFFFFFFF;

// The source of a request: a direct user action. The hot key is one, but the window manager has not seen it
// as input to our windows.
constexpr quint32 sourceUser = 2;

// A request too many is harmless; a window manager that goes on refusing is left alone.
constexpr int placingAttempts = 5;
constexpr int remapAttempts = 5;

} // namespace

X11WindowPresenter::X11WindowPresenter(XcbConnection& connection, Screens& screens)
    : m_connection(connection), m_screens(screens), m_windowManager(connection) {
    m_placingTimer.setSingleShot(true);
    m_placingTimer.setInterval(0);
    m_placingTimer.callOnTimeout(this, &X11WindowPresenter::keepInPlace);
    m_remapTimer.setSingleShot(true);
    m_remapTimer.setInterval(std::chrono::milliseconds(500));
    m_remapTimer.callOnTimeout(this, &X11WindowPresenter::remapIfLost);
    m_screens.didChange = [this] {
        placeAgain();
    };
}

X11WindowPresenter::~X11WindowPresenter() {
    m_screens.didChange = nullptr;
}

void X11WindowPresenter::becomeAccessory() {
    qApp->installEventFilter(this);
}

bool X11WindowPresenter::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::Show: // a widget receives it before its window is mapped
        if (!event->spontaneous() && watched->isWidgetType()) {
            prepareWindow(static_cast<QWidget&>(*watched));
        }
        break;
    case QEvent::Move:
    case QEvent::Resize:
        if (watched == m_panel) {
            m_placingTimer.start(); // after the other of the two
        }
        break;
    case QEvent::Expose:
        if (m_toFocus && watched == m_toFocus->windowHandle()) {
            focusWhenShown(*m_toFocus);
        }
        break;
    default:
        break;
    }
    return false;
}

void X11WindowPresenter::prepareWindow(QWidget& window) {
    const bool isMainOrDialog = window.windowType() == Qt::Window || window.windowType() == Qt::Dialog;
    if (!window.isWindow() || !isMainOrDialog || &window == m_panel) {
        return;
    }
    writeStates(window, panelStates().data() + 2, 2);
    if (!m_windowManager.activatesWindows()) {
        focusWhenShown(window);
    }
}

bool X11WindowPresenter::showPanel(QWidget& panel) {
    const auto screen = screenForPanel(m_screens);
    if (!screen) {
        return false;
    }
    m_panel = &panel;
    place(*screen);
    if (!panel.isVisible()) { // the window manager owns the states of a mapped window
        preparePanel();
    }
    panel.show();
    panel.raise();
    m_remapAttemptsLeft = remapAttempts;
    requestStatesAndFocus();
    return true;
}

void X11WindowPresenter::hidePanel(QWidget& panel) {
    panel.hide();
}

void X11WindowPresenter::activate(QWidget& window) {
    bringToCurrentDesktop(window);
    requestFocus(window);
}

// Asked to activate a window of another desktop, some window managers do nothing, and some go there.
void X11WindowPresenter::bringToCurrentDesktop(const QWidget& window) {
    const auto current = m_connection.values(m_connection.root(), "_NET_CURRENT_DESKTOP", XCB_ATOM_CARDINAL);
    const auto its =
        m_connection.values(static_cast<xcb_window_t>(window.winId()), "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL);
    if (!current.empty() && !its.empty() && its.front() != everyDesktop && its.front() != current.front()) {
        m_windowManager.send(window, "_NET_WM_DESKTOP", {current.front(), sourceUser, 0, 0, 0});
    }
}

void X11WindowPresenter::requestFocus(QWidget& window) {
    if (m_windowManager.activatesWindows()) {
        m_windowManager.send(window, "_NET_ACTIVE_WINDOW", {sourceUser, XCB_CURRENT_TIME, 0, 0, 0});
    } else {
        focusWhenShown(window);
    }
}

// Without a window manager that does so. The server refuses the keyboard to a window that is not on the
// screen.
void X11WindowPresenter::focusWhenShown(QWidget& window) {
    m_toFocus = &window;
    xcb_connection_t* raw = X11WindowManager::qtConnection();
    if (raw != nullptr && window.windowHandle() != nullptr && window.windowHandle()->isExposed()) {
        m_toFocus = nullptr;
        xcb_set_input_focus(raw, XCB_INPUT_FOCUS_PARENT, static_cast<xcb_window_t>(window.winId()),
                            XCB_CURRENT_TIME);
        xcb_flush(raw);
    }
}

void X11WindowPresenter::place(const Screen& screen) {
    m_screenOrigin = screen.frame.topLeft();
    m_place = panelFrame(screen.visibleFrame);
    m_placingAttemptsLeft = placingAttempts;
    m_panel->setGeometry(m_place);
}

void X11WindowPresenter::keepInPlace() {
    if (m_panel && m_panel->isVisible() && m_panel->geometry() != m_place && m_placingAttemptsLeft > 0) {
        --m_placingAttemptsLeft;
        m_panel->setGeometry(m_place);
    }
}

void X11WindowPresenter::placeAgain() {
    if (m_panel && m_panel->isVisible()) {
        if (const auto screen = screenForPanel(m_screens, m_screenOrigin)) {
            place(*screen);
        }
    }
}

void X11WindowPresenter::preparePanel() {
    xcb_connection_t* raw = X11WindowManager::qtConnection();
    if (raw == nullptr) {
        return;
    }
    const auto window = static_cast<xcb_window_t>(m_panel->winId());
    const auto states = panelStates();
    writeStates(*m_panel, states.data(), states.size());
    const xcb_atom_t type = m_windowManager.typeOfPanel();
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window, m_connection.atom("_NET_WM_WINDOW_TYPE"),
                        XCB_ATOM_ATOM, 32, 1, &type);
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window, m_connection.atom("_NET_WM_DESKTOP"),
                        XCB_ATOM_CARDINAL, 32, 1, &everyDesktop);
    // The user's own key opens the panel, so focus-stealing prevention must not hold it back. Without a time
    // the window manager judges by the activation request that follows.
    xcb_delete_property(raw, window, m_connection.atom("_NET_WM_USER_TIME"));
    xcb_flush(raw);
}

void X11WindowPresenter::writeStates(const QWidget& window, const xcb_atom_t* states, quint32 count) const {
    // Window managers drop the states of a hidden window. Qt adds its own to those it finds.
    if (xcb_connection_t* raw = X11WindowManager::qtConnection()) {
        xcb_change_property(raw, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                            m_connection.atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, count, states);
    }
}

// Requests the states once more, for a window manager that handles the previous hiding only now and removes
// what was prepared.
void X11WindowPresenter::requestStatesAndFocus() {
    constexpr quint32 add = 1;
    const auto states = panelStates();
    for (std::size_t i = 0; i < states.size(); i += 2) { // a message takes two
        m_windowManager.send(*m_panel, "_NET_WM_STATE", {add, states[i], states[i + 1], sourceUser, 0});
    }
    m_windowManager.send(*m_panel, "_NET_WM_DESKTOP", {everyDesktop, sourceUser, 0, 0, 0});
    requestFocus(*m_panel);
    m_remapTimer.start();
}

// At the start of a session the window manager may be starting too and miss the request to map the panel. One
// that is only slow is not disturbed by a second request; hiding and showing instead would make the panel
// flicker on a busy desktop, and the shortcut, pressed in between, would do the opposite of what was meant.
void X11WindowPresenter::remapIfLost() {
    const bool maybeLost = m_panel && m_panel->isVisible() && !m_panel->windowHandle()->isExposed();
    if (!maybeLost || m_remapAttemptsLeft == 0 || !isUnmapped()) {
        return;
    }
    --m_remapAttemptsLeft;
    xcb_map_window(X11WindowManager::qtConnection(), static_cast<xcb_window_t>(m_panel->winId()));
    requestStatesAndFocus();
}

bool X11WindowPresenter::isUnmapped() const {
    xcb_connection_t* raw = X11WindowManager::qtConnection();
    if (raw == nullptr) {
        return false;
    }
    const auto window = static_cast<xcb_window_t>(m_panel->winId());
    const XcbPointer<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(raw, xcb_get_window_attributes(raw, window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_UNMAPPED;
}

std::array<xcb_atom_t, 4> X11WindowPresenter::panelStates() const {
    return {m_connection.atom("_NET_WM_STATE_ABOVE"), m_connection.atom("_NET_WM_STATE_STICKY"),
            m_connection.atom("_NET_WM_STATE_SKIP_TASKBAR"), m_connection.atom("_NET_WM_STATE_SKIP_PAGER")};
}

} // namespace corvatto
