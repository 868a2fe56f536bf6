#include "app/WaylandSession.h"

#include "base/Diagnostics.h"

#include <utility>

namespace corvatto {

std::unique_ptr<WaylandSession> WaylandSession::open(const QByteArray& dataControl) {
    auto connection = CompositorServices::connect();
    if (!connection) {
        return nullptr;
    }
    auto presenter = LayerShellPresenter::open();
    if (!presenter) {
        printLine(u"[CorvattoApp] ERROR: The Wayland compositor takes no panel.");
        return nullptr;
    }
    return std::unique_ptr<WaylandSession>(
        new WaylandSession(std::move(connection), dataControl, std::move(presenter)));
}

WaylandSession::WaylandSession(std::unique_ptr<WaylandConnection> connection, const QByteArray& dataControl,
                               std::unique_ptr<LayerShellPresenter> presenter)
    : m_compositor(std::move(connection), dataControl), m_hotKeyCenter(QDBusConnection::sessionBus()),
      m_presenter(std::move(presenter)) {
    m_compositor.tellKeymapTo(m_hotKeyCenter);
}

Platform WaylandSession::platform() {
    return {m_compositor.pasteboard(), m_compositor.workspace(), m_hotKeyCenter, *m_presenter, m_tray};
}

} // namespace corvatto
