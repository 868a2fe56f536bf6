#include "platform/wayland/ToplevelWatcher.h"

#include "platform/wayland/PlasmaToplevelWatcher.h"
#include "platform/wayland/WlrToplevelWatcher.h"

namespace corvatto {

std::unique_ptr<ToplevelWatcher> ToplevelWatcher::create(WaylandConnection& connection) {
    if (auto watcher = WlrToplevelWatcher::create(connection)) {
        return watcher;
    }
    return PlasmaToplevelWatcher::create(connection);
}

void ToplevelWatcher::setActive(Toplevel& toplevel, bool isActive) {
    // Only a change counts: a window says that it is active again whenever anything else of its state
    // changes.
    if (isActive && !toplevel.isActive) {
        m_lastActive = &toplevel;
    }
    toplevel.isActive = isActive;
}

void ToplevelWatcher::forget(const Toplevel& toplevel) {
    if (m_lastActive == &toplevel) {
        m_lastActive = nullptr;
    }
}

} // namespace corvatto
