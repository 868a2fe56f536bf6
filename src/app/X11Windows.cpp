#include "app/X11Windows.h"

#include "app/Session.h"
#include "base/Diagnostics.h"

#include <utility>

namespace corvatto {

std::unique_ptr<X11Windows> X11Windows::open() {
    auto connection = XcbConnection::open();
    if (!connection) {
        printLine(u"[CorvattoApp] ERROR: The X server takes no second connection.");
        return nullptr;
    }
    return std::unique_ptr<X11Windows>(new X11Windows(std::move(connection)));
}

X11Windows::X11Windows(std::unique_ptr<XcbConnection> connection)
    : m_connection(std::move(connection)), m_screens(*m_connection, m_qtScreens),
      m_hotKeyCenter(*m_connection), m_presenter(*m_connection, m_screens), m_tray(*m_connection) {
    QObject::connect(m_connection.get(), &XcbConnection::disconnected, m_connection.get(), [] {
        Session::displayLost(QStringLiteral("[CorvattoApp] ERROR: The X server is gone."));
    });
}

} // namespace corvatto
