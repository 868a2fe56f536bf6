#include "platform/x11/X11Workspace.h"

#include <unistd.h>

namespace corvatto {

X11Workspace::X11Workspace(XcbConnection& connection) : m_connection(connection) {}

// The first value of a property; zero without one.
quint32 X11Workspace::value(xcb_window_t window, const char* name, xcb_atom_t type) const {
    const auto values = m_connection.values(window, name, type);
    return values.empty() ? 0 : values.front();
}

QString X11Workspace::nameOfCopySource(xcb_window_t clipboardOwner) {
    const auto active = value(m_connection.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    QString name;
    const bool isOurs = active != XCB_NONE &&
                        value(active, "_NET_WM_PID", XCB_ATOM_CARDINAL) == static_cast<quint32>(getpid());
    if (active != XCB_NONE && (!isOurs || m_connection.isOfSameClient(active, clipboardOwner))) {
        // WM_CLASS holds two NUL-terminated names: the instance's and the class's.
        const QString windowClass = QString::fromUtf8(
            m_connection.property(active, "WM_CLASS", XCB_ATOM_STRING).split('\0').value(1));
        // Programs whose class is not the name of their desktop entry say which it is.
        const QString entry = QString::fromUtf8(
            m_connection.property(active, "_GTK_APPLICATION_ID", m_connection.atom("UTF8_STRING")));
        name = applicationName({entry, windowClass});
    }
    return name;
}

} // namespace corvatto
