#include "platform/x11/X11Workspace.h"

#include <QDesktopServices>
#include <QStandardPaths>

#include <cstring>

namespace corvatto {

X11Workspace::X11Workspace(XcbConnection& connection)
    : m_connection(connection),
      m_entries(QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation),
                desktopEntryLanguages()) {}

QByteArray X11Workspace::property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const {
    constexpr quint32 maximumWords = 256;
    xcb_connection_t* raw = m_connection.raw();
    const XcbPointer<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(raw, xcb_get_property(raw, 0, window, name, type, 0, maximumWords), nullptr));
    if (!reply || reply->type != type) {
        return {};
    }
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

QString X11Workspace::frontmostApplicationName() {
    const QByteArray active =
        property(m_connection.root(), m_connection.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
    xcb_window_t window = XCB_NONE;
    if (active.size() >= static_cast<qsizetype>(sizeof window)) {
        std::memcpy(&window, active.constData(), sizeof window);
    }
    // WM_CLASS holds two NUL-terminated names: the instance's and the class's.
    const QList<QByteArray> names = window != XCB_NONE
                                        ? property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).split('\0')
                                        : QList<QByteArray>();
    m_connection.flush(); // waiting may have read events
    const QString windowClass = names.size() >= 2 ? QString::fromUtf8(names[1]) : QString();
    return m_entries.nameForWindowClass(windowClass).value_or(windowClass);
}

bool X11Workspace::openURL(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

} // namespace corvatto
