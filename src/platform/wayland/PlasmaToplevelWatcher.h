// The windows of a Plasma session: org_kde_plasma_window_management. KWin offers it only to a program whose
// installed desktop entry asks for it (X-KDE-Wayland-Interfaces) and names the running binary in Exec.
#pragma once

#include "platform/wayland/ToplevelWatcher.h"

#include <vector>

struct org_kde_plasma_window_management;

namespace corvatto {

// Main thread.
class PlasmaToplevelWatcher final : public ToplevelWatcher {
public:
    // Null when the compositor does not offer the protocol to this program. The connection outlives the
    // watcher.
    static std::unique_ptr<ToplevelWatcher> create(WaylandConnection& connection);
    ~PlasmaToplevelWatcher() override;

private:
    struct Window;
    struct Listeners;

    explicit PlasmaToplevelWatcher(org_kde_plasma_window_management* manager);
    void remove(const Window& window);

    org_kde_plasma_window_management* m_manager;
    std::vector<std::unique_ptr<Window>> m_windows;
};

} // namespace corvatto
