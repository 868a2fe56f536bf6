#include "app/CompositorServices.h"

#include "app/Session.h"
#include "base/Diagnostics.h"

#include <QClipboard>
#include <QGuiApplication>

#include <utility>

namespace corvatto {
namespace {

// Whether the clipboard has just changed hands because the user copied in a window of ours, where that goes
// by QClipboard. Qt believes for some moments longer that it owns what another program has taken over, so the
// keyboard has to be ours, too.
bool isOwnCopy() {
    return QGuiApplication::focusWindow() != nullptr && QGuiApplication::clipboard()->ownsClipboard();
}

} // namespace

std::unique_ptr<WaylandConnection> CompositorServices::connect() {
    auto connection = WaylandConnection::open();
    if (!connection) {
        printLine(u"[CorvattoApp] ERROR: The Wayland compositor takes no second connection.");
    }
    return connection;
}

CompositorServices::CompositorServices(std::unique_ptr<WaylandConnection> connection,
                                       const QByteArray& dataControl)
    : m_connection(std::move(connection)), m_workspace(*m_connection),
      m_pasteboard(*m_connection, dataControl, [this] { return m_workspace.nameOfCopySource(isOwnCopy()); }),
      m_keymap(*m_connection) {
    QObject::connect(m_connection.get(), &WaylandConnection::disconnected, m_connection.get(), [] {
        Session::displayLost(QStringLiteral("[CorvattoApp] ERROR: The Wayland compositor is gone."));
    });
}

void CompositorServices::tellKeymapTo(DesktopHotKeyCenter& center) {
    QObject::connect(&m_keymap, &WaylandKeymap::changed, &center, &DesktopHotKeyCenter::setKeymap);
}

} // namespace corvatto
