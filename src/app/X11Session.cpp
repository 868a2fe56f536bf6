#include "app/X11Session.h"

#include "base/Diagnostics.h"

#include <utility>

namespace corvatto {

std::unique_ptr<X11Session> X11Session::open() {
    auto connection = XcbConnection::open();
    if (!connection) {
        printLine(u"[CorvattoApp] ERROR: The X server takes no second connection.");
        return nullptr;
    }
    return std::unique_ptr<X11Session>(new X11Session(std::move(connection)));
}

X11Session::X11Session(std::unique_ptr<XcbConnection> connection)
    : m_connection(std::move(connection)), m_screens(*m_connection, m_qtScreens), m_workspace(*m_connection),
      m_pasteboard(*m_connection, [this](xcb_window_t owner) { return m_workspace.nameOfCopySource(owner); }),
      m_hotKeyCenter(*m_connection), m_presenter(*m_connection, m_screens), m_tray(*m_connection) {
    QObject::connect(m_connection.get(), &XcbConnection::disconnected, m_connection.get(),
                     [] { displayLost(QStringLiteral("[CorvattoApp] ERROR: The X server is gone.")); });
}

Platform X11Session::platform() {
    return {m_pasteboard, m_workspace, m_hotKeyCenter, m_presenter, m_tray};
}

} // namespace corvatto
