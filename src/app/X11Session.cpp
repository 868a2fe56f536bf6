#include "app/X11Session.h"

#include <utility>

namespace corvatto {

std::unique_ptr<X11Session> X11Session::open(Server server) {
    auto windows = X11Windows::open();
    return windows ? std::unique_ptr<X11Session>(new X11Session(std::move(windows), server)) : nullptr;
}

X11Session::X11Session(std::unique_ptr<X11Windows> windows, Server server)
    : m_windows(std::move(windows)), m_workspace(m_windows->connection()),
      m_pasteboard(m_windows->connection(),
                   [this](xcb_window_t owner) { return m_workspace.nameOfCopySource(owner); }) {
    if (server == Server::xwayland) {
        m_desktopHotKeys.emplace(QDBusConnection::sessionBus(), &m_windows->hotKeyCenter());
    }
}

Platform X11Session::platform() {
    HotKeyCenter& ownKeys = m_windows->hotKeyCenter();
    HotKeyCenter& hotKeys = m_desktopHotKeys ? *m_desktopHotKeys : ownKeys;
    return {m_pasteboard, m_workspace, hotKeys, m_windows->presenter(), m_windows->tray()};
}

} // namespace corvatto
