#include "platform/x11/X11WindowManager.h"

#include <QGuiApplication>
#include <QWidget>

#include <algorithm>

namespace corvatto {
namespace {

// A dialog suits most: tiling managers let dialogs float, and none hides them when another program comes to
// the front, as some do with utilities.
constexpr const char* dialog = "_NET_WM_WINDOW_TYPE_DIALOG";
constexpr const char* utility = "_NET_WM_WINDOW_TYPE_UTILITY";

constexpr struct {
    const char* manager; // how its name begins
    const char* type;
} typesOfPanel[] = {
    // They list dialogs in the task bar, whatever their states say, unless another listed window is their
    // parent.
    {"GNOME Shell", utility},
    {"Mutter", utility},
    // Gives dialogs title bars, whatever they ask for.
    {"awesome", utility},
    // Keeps dialogs in the middle of the screen.
    {"spectrwm", utility},
};

} // namespace

// The window that a manager keeps as long as it runs; none without a manager.
xcb_window_t X11WindowManager::checkWindow() const {
    constexpr auto name = "_NET_SUPPORTING_WM_CHECK";
    const auto window = m_connection.values(m_connection.root(), name, XCB_ATOM_WINDOW);
    const bool exists =
        !window.empty() && m_connection.values(window.front(), name, XCB_ATOM_WINDOW) == window;
    return exists ? window.front() : xcb_window_t{XCB_NONE};
}

bool X11WindowManager::activatesWindows() const {
    const auto supported = m_connection.values(m_connection.root(), "_NET_SUPPORTED", XCB_ATOM_ATOM);
    const xcb_atom_t activation = m_connection.atom("_NET_ACTIVE_WINDOW");
    return std::find(supported.begin(), supported.end(), activation) != supported.end() &&
           checkWindow() != XCB_NONE; // the property outlives a manager
}

xcb_atom_t X11WindowManager::typeOfPanel() const {
    const QByteArray name =
        m_connection.property(checkWindow(), "_NET_WM_NAME", m_connection.atom("UTF8_STRING"));
    const auto special = std::find_if(std::begin(typesOfPanel), std::end(typesOfPanel),
                                      [&](const auto& each) { return name.startsWith(each.manager); });
    return m_connection.atom(special != std::end(typesOfPanel) ? special->type : dialog);
}

void X11WindowManager::send(const QWidget& window, const QByteArray& message,
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

xcb_connection_t* X11WindowManager::qtConnection() {
    const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native != nullptr ? native->connection() : nullptr;
}

} // namespace corvatto
