#include "app/WaylandClipboardSession.h"

#include <utility>

namespace corvatto {

std::unique_ptr<WaylandClipboardSession> WaylandClipboardSession::open(const QByteArray& dataControl) {
    auto compositor = CompositorServices::connect();
    auto windows = compositor ? X11Windows::open() : nullptr;
    return windows ? std::unique_ptr<WaylandClipboardSession>(
                         new WaylandClipboardSession(std::move(compositor), dataControl, std::move(windows)))
                   : nullptr;
}

WaylandClipboardSession::WaylandClipboardSession(std::unique_ptr<WaylandConnection> compositor,
                                                 const QByteArray& dataControl,
                                                 std::unique_ptr<X11Windows> windows)
    : m_compositor(std::move(compositor), dataControl), m_windows(std::move(windows)),
      m_hotKeyCenter(QDBusConnection::sessionBus(), &m_windows->hotKeyCenter()) {
    m_compositor.tellKeymapTo(m_hotKeyCenter);
}

Platform WaylandClipboardSession::platform() {
    return {m_compositor.pasteboard(), m_compositor.workspace(), m_hotKeyCenter, m_windows->presenter(),
            m_windows->tray()};
}

} // namespace corvatto
