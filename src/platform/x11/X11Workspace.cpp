#include "platform/x11/X11Workspace.h"

#include <QDesktopServices>
#include <QStandardPaths>

#include <cstring>

#include <unistd.h>

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

// The first value of a property; zero without one.
template <typename Value>
Value X11Workspace::value(xcb_window_t window, const char* name, xcb_atom_t type) const {
    const QByteArray bytes = property(window, m_connection.atom(name), type);
    Value value{};
    if (bytes.size() >= static_cast<qsizetype>(sizeof value)) {
        std::memcpy(&value, bytes.constData(), sizeof value);
    }
    return value;
}

QString X11Workspace::nameOfCopySource(xcb_window_t clipboardOwner) {
    const auto active = value<xcb_window_t>(m_connection.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    QString name;
    const bool isOurs = active != XCB_NONE && value<quint32>(active, "_NET_WM_PID", XCB_ATOM_CARDINAL) ==
                                                  static_cast<quint32>(getpid());
    if (active != XCB_NONE && (!isOurs || m_connection.isOfSameClient(active, clipboardOwner))) {
        // WM_CLASS holds two NUL-terminated names: the instance's and the class's.
        const QString windowClass =
            QString::fromUtf8(property(active, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).split('\0').value(1));
        // Programs whose class is not the name of their desktop entry say which it is.
        const QString entry = QString::fromUtf8(
            property(active, m_connection.atom("_GTK_APPLICATION_ID"), m_connection.atom("UTF8_STRING")));
        const auto known = m_entries.nameForWindowClass(entry);
        name = known ? *known : m_entries.nameForWindowClass(windowClass).value_or(windowClass);
    }
    m_connection.flush(); // waiting may have read events
    return name;
}

bool X11Workspace::openURL(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

} // namespace corvatto
