#include "app/WaylandClipboardSession.h"

#include <utility>

namespace corvatto {

std::unique_ptr<WaylandClipboardSession> WaylandClipboardSession::open() {
    auto compositor = CompositorServices::connect();
    auto windows = compositor ? X11Windows::open() : nullptr;
    return windows ? std::unique_ptr<WaylandClipboardSession>(
                         new WaylandClipboardSession(std::move(compositor), std::move(windows)))
                   : nullptr;
}

WaylandClipboardSession::WaylandClipboardSession(std::unique_ptr<WaylandConnection> compositor,
                                                 std::unique_ptr<X11Windows> windows)
    : m_compositor(std::move(compositor)), m_windows(std::move(windows)),
      m_hotKeyCenter(QDBusConnection::sessionBus(), &m_windows->hotKeyCenter()) {
    m_compositor.tellKeymapTo(m_hotKeyCenter);
}

Platform WaylandClipboardSession::platform() {
    return {m_compositor.pasteboard(), m_compositor.workspace(), m_hotKeyCenter, m_windows->presenter(),
            m_windows->tray()};
}

} // namespace corvatto
