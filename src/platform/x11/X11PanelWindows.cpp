#include "platform/x11/X11PanelWindows.h"

#include <QApplication>
#include <QEvent>
#include <QWindow>

#include <algorithm>

namespace corvatto {
namespace {

// Requests about Qt's windows go over Qt's connection, so that they reach the server in order with Qt's own.
xcb_connection_t* qtConnection() {
    const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native != nullptr ? native->connection() : nullptr;
}

constexpr quint32 everyDesktop = 0xFFFFFFFF;

// Who asks: a direct user action. The hot key is one, but the window manager has not seen it as input to our
// windows.
constexpr quint32 sourceUser = 2;

} // namespace

X11PanelWindows::X11PanelWindows(XcbConnection& connection) : m_connection(connection) {}

void X11PanelWindows::becomeAccessory() {
    qApp->installEventFilter(this);
}

bool X11PanelWindows::eventFilter(QObject* watched, QEvent* event) {
    // A widget hears that it is shown before its window is.
    if (event->type() != QEvent::Show || event->spontaneous() || !watched->isWidgetType()) {
        return false;
    }
    const auto& widget = static_cast<const QWidget&>(*watched);
    const bool isMainOrDialog = widget.windowType() == Qt::Window || widget.windowType() == Qt::Dialog;
    if (widget.isWindow() && isMainOrDialog && watched != m_panel) {
        prepareStates(widget, states().data() + 2, 2);
    }
    return false;
}

void X11PanelWindows::prepareStates(const QWidget& window, const xcb_atom_t* states, quint32 count) const {
    // Window managers drop the states of a hidden window. Qt adds its own to those it finds.
    xcb_change_property(qtConnection(), XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        m_connection.atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, count, states);
}

void X11PanelWindows::prepareToShow(QWidget& panel) {
    xcb_connection_t* raw = qtConnection();
    if (raw == nullptr || panel.isVisible()) {
        return; // of a mapped window the states belong to the window manager
    }
    const auto window = static_cast<xcb_window_t>(panel.winId());
    const auto wanted = states();
    prepareStates(panel, wanted.data(), wanted.size());
    m_panel = &panel;
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window, m_connection.atom("_NET_WM_DESKTOP"),
                        XCB_ATOM_CARDINAL, 32, 1, &everyDesktop);
    // The panel is opened by the user's own key, so no focus-stealing prevention is to hold it back. Without
    // a time the window manager judges by the activation request below.
    xcb_delete_property(raw, window, m_connection.atom("_NET_WM_USER_TIME"));
    xcb_flush(raw);
}

void X11PanelWindows::confirmShown(QWidget& panel) {
    constexpr quint32 add = 1;
    const auto wanted = states();
    for (std::size_t i = 0; i < wanted.size(); i += 2) { // a message takes two
        askWindowManager(panel, "_NET_WM_STATE", {add, wanted[i], wanted[i + 1], sourceUser, 0});
    }
    askWindowManager(panel, "_NET_WM_DESKTOP", {everyDesktop, sourceUser, 0, 0, 0});
}

bool X11PanelWindows::askAgainToShow(QWidget& panel) {
    xcb_connection_t* raw = qtConnection();
    if (raw == nullptr) {
        return false;
    }
    const auto window = static_cast<xcb_window_t>(panel.winId());
    const XcbPointer<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(raw, xcb_get_window_attributes(raw, window), nullptr));
    if (!attributes || attributes->map_state != XCB_MAP_STATE_UNMAPPED) {
        return false;
    }
    xcb_map_window(raw, window);
    xcb_flush(raw);
    return true;
}

void X11PanelWindows::activate(QWidget& panel) {
    askWindowManager(panel, "_NET_ACTIVE_WINDOW", {sourceUser, XCB_CURRENT_TIME, 0, 0, 0});
}

std::array<xcb_atom_t, 4> X11PanelWindows::states() const {
    return {m_connection.atom("_NET_WM_STATE_ABOVE"), m_connection.atom("_NET_WM_STATE_STICKY"),
            m_connection.atom("_NET_WM_STATE_SKIP_TASKBAR"), m_connection.atom("_NET_WM_STATE_SKIP_PAGER")};
}

void X11PanelWindows::askWindowManager(QWidget& panel, const QByteArray& message,
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
    event.message.window = static_cast<xcb_window_t>(panel.winId());
    event.message.type = m_connection.atom(message);
    std::copy(data.begin(), data.end(), event.message.data.data32);
    xcb_send_event(raw, 0, m_connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, event.wire);
    xcb_flush(raw);
}

} // namespace corvatto
