#include "platform/x11/X11WindowPresenter.h"

#include "platform/PanelPlacement.h"

#include <QApplication>
#include <QEvent>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace corvatto {
namespace {

// Requests about Qt's windows go over Qt's connection, so that they reach the server in order with Qt's own.
xcb_connection_t* qtConnection() {
    const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native != nullptr ? native->connection() : nullptr;
}

constexpr quint32 everyDesktop = 0xFFFFFFFF;

// The source of a request: a direct user action. The hot key is one, but the window manager has not seen it
// as input to our windows.
constexpr quint32 sourceUser = 2;

constexpr int remapAttempts = 5;

} // namespace

X11WindowPresenter::X11WindowPresenter(XcbConnection& connection, Screens& screens)
    : m_connection(connection), m_screens(screens) {
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
    // A widget receives this event before its window is mapped.
    if (event->type() != QEvent::Show || event->spontaneous() || !watched->isWidgetType()) {
        return false;
    }
    const auto& widget = static_cast<const QWidget&>(*watched);
    const bool isMainOrDialog = widget.windowType() == Qt::Window || widget.windowType() == Qt::Dialog;
    if (widget.isWindow() && isMainOrDialog && watched != m_panel) {
        writeStates(widget, panelStates().data() + 2, 2);
    }
    return false;
}

bool X11WindowPresenter::showPanel(QWidget& panel) {
    const auto screen = screenForPanel(m_screens);
    if (!screen) {
        return false;
    }
    m_panel = &panel;
    place(*screen);
    if (!panel.isVisible()) { // the window manager owns the states of a mapped window
        prepareStatesOfPanel();
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
    sendToWindowManager(window, "_NET_ACTIVE_WINDOW", {sourceUser, XCB_CURRENT_TIME, 0, 0, 0});
}

void X11WindowPresenter::place(const Screen& screen) {
    m_screenOrigin = screen.frame.topLeft();
    m_panel->setGeometry(panelFrame(screen.visibleFrame));
}

void X11WindowPresenter::placeAgain() {
    if (m_panel && m_panel->isVisible()) {
        if (const auto screen = screenForPanel(m_screens, m_screenOrigin)) {
            place(*screen);
        }
    }
}

void X11WindowPresenter::prepareStatesOfPanel() {
    xcb_connection_t* raw = qtConnection();
    if (raw == nullptr) {
        return;
    }
    const auto window = static_cast<xcb_window_t>(m_panel->winId());
    const auto states = panelStates();
    writeStates(*m_panel, states.data(), states.size());
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window, m_connection.atom("_NET_WM_DESKTOP"),
                        XCB_ATOM_CARDINAL, 32, 1, &everyDesktop);
    // The user's own key opens the panel, so focus-stealing prevention must not hold it back. Without a time
    // the window manager judges by the activation request that follows.
    xcb_delete_property(raw, window, m_connection.atom("_NET_WM_USER_TIME"));
    xcb_flush(raw);
}

void X11WindowPresenter::writeStates(const QWidget& window, const xcb_atom_t* states, quint32 count) const {
    // Window managers drop the states of a hidden window. Qt adds its own to those it finds.
    if (xcb_connection_t* raw = qtConnection()) {
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
        sendToWindowManager(*m_panel, "_NET_WM_STATE", {add, states[i], states[i + 1], sourceUser, 0});
    }
    sendToWindowManager(*m_panel, "_NET_WM_DESKTOP", {everyDesktop, sourceUser, 0, 0, 0});
    activate(*m_panel);
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
    xcb_map_window(qtConnection(), static_cast<xcb_window_t>(m_panel->winId()));
    requestStatesAndFocus();
}

bool X11WindowPresenter::isUnmapped() const {
    xcb_connection_t* raw = qtConnection();
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

void X11WindowPresenter::sendToWindowManager(QWidget& window, const QByteArray& message,
                                             const std::array<quint32, 5>& data) const {
    xcb_connection_t* raw = qtConnection();
    if (raw == nullptr) {
        return;
    }
    union {
        xcb_client_message_event_t message;
        char wire[32];
    } event{};
    event.message.response_type = XCB_CLIENT_MESSAGE;
    event.message.format = 32;
    event.message.window = static_cast<xcb_window_t>(window.winId());
    event.message.type = m_connection.atom(message);
    std::copy(data.begin(), data.end(), event.message.data.data32);
    xcb_send_event(raw, 0, m_connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, event.wire);
    xcb_flush(raw);
}

} // namespace corvatto
