// The windows of compositors in the manner of wlroots, such as sway: zwlr_foreign_toplevel_manager_v1.
#pragma once

#include "platform/wayland/ToplevelWatcher.h"

#include <vector>

struct zwlr_foreign_toplevel_manager_v1;

namespace corvatto {

// Main thread.
class WlrToplevelWatcher final : public ToplevelWatcher {
public:
    // Null when the compositor does not offer the protocol. The connection outlives the watcher.
    static std::unique_ptr<ToplevelWatcher> create(WaylandConnection& connection);
    ~WlrToplevelWatcher() override;

private:
    struct Window;
    struct Listeners;

    explicit WlrToplevelWatcher(zwlr_foreign_toplevel_manager_v1* manager);
    void remove(const Window& window);

    zwlr_foreign_toplevel_manager_v1* m_manager;
    std::vector<std::unique_ptr<Window>> m_windows;
};

} // namespace corvatto
