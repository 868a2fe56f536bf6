#include "platform/x11/X11Tray.h"

#include <QCursor>
#include <QMenu>

#include <xcb/xfixes.h>

namespace corvatto {

X11Tray::X11Tray(XcbConnection& connection)
    : m_connection(connection), m_embeddingTray(connection.atom("_NET_SYSTEM_TRAY_S0")) {
    m_connection.addListener(*this);
    connect(&m_statusNotifierHost, &StatusNotifierHost::answered, this, &X11Tray::handleAnswer);
}

X11Tray::~X11Tray() {
    m_connection.removeListener(*this);
}

void X11Tray::startWatching() {
    watchEmbeddingTrays();
    m_statusNotifierHost.startWatching();
}

bool X11Tray::openMenu(QMenu& menu) {
    menu.popup(QCursor::pos()); // a tray on the bus does not tell where the icon is
    return true;
}

void X11Tray::watchEmbeddingTrays() {
    xcb_connection_t* raw = m_connection.raw();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(raw, &xcb_xfixes_id);
    if (extension != nullptr && extension->present != 0) {
        m_firstXFixesEvent = extension->first_event;
        xcb_xfixes_select_selection_input(raw, m_connection.root(), m_embeddingTray,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
        m_connection.flush();
    }
}

void X11Tray::handleEvent(const xcb_generic_event_t& event) {
    if (!m_isAvailable && m_firstXFixesEvent != 0 &&
        (event.response_type & 0x7F) == m_firstXFixesEvent + XCB_XFIXES_SELECTION_NOTIFY &&
        reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event).selection == m_embeddingTray) {
        m_statusNotifierHost.query(); // Qt would prefer one on the bus
    }
}

void X11Tray::handleAnswer(StatusNotifierHost::Status status) {
    using Status = StatusNotifierHost::Status;
    if (m_isAvailable || status == Status::Unresponsive) {
        return;
    }
    m_isAvailable = status == Status::Present || hasEmbeddingTray();
    if (m_isAvailable) {
        Q_EMIT available();
    }
}

bool X11Tray::hasEmbeddingTray() const {
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(raw, xcb_get_selection_owner(raw, m_embeddingTray), nullptr));
    m_connection.flush(); // waiting may have read events
    return owner && owner->owner != XCB_NONE;
}

} // namespace corvatto
