#include "platform/wayland/WlrToplevelWatcher.h"

#include "platform/wayland/WaylandConnection.h"

#include <wlr-foreign-toplevel-management-unstable-v1-client-protocol.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace corvatto {

// What the compositor says of a window holds together with its "done".
struct WlrToplevelWatcher::Window {
    WlrToplevelWatcher* const watcher;
    zwlr_foreign_toplevel_handle_v1* const handle;
    Toplevel announced;
    Toplevel current;

    Window(WlrToplevelWatcher* owner, zwlr_foreign_toplevel_handle_v1* proxy)
        : watcher(owner), handle(proxy) {}
    ~Window() { zwlr_foreign_toplevel_handle_v1_destroy(handle); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
};

struct WlrToplevelWatcher::Listeners {
    using Manager = zwlr_foreign_toplevel_manager_v1;
    using Handle = zwlr_foreign_toplevel_handle_v1;

    static void toplevel(void* data, Manager* /*manager*/, Handle* handle) {
        auto* watcher = static_cast<WlrToplevelWatcher*>(data);
        watcher->m_windows.push_back(std::make_unique<Window>(watcher, handle));
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &window, watcher->m_windows.back().get());
    }
    static void finished(void* data, Manager* manager) {
        static_cast<WlrToplevelWatcher*>(data)->m_manager = nullptr;
        zwlr_foreign_toplevel_manager_v1_destroy(manager);
    }
    static constexpr zwlr_foreign_toplevel_manager_v1_listener manager{toplevel, finished};

    static void applicationId(void* data, Handle* /*handle*/, const char* id) {
        static_cast<Window*>(data)->announced.applicationId = QString::fromUtf8(id);
    }
    static void state(void* data, Handle* /*handle*/, wl_array* states) {
        const auto* first = static_cast<const quint32*>(states->data);
        static_cast<Window*>(data)->announced.isActive =
            std::count(first, first + states->size / sizeof *first,
                       quint32{ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED}) > 0;
    }
    static void done(void* data, Handle* /*handle*/) {
        auto& [watcher, handle, announced, current] = *static_cast<Window*>(data);
        current.applicationId = announced.applicationId;
        watcher->setActive(current, announced.isActive);
    }
    static void closed(void* data, Handle* /*handle*/) {
        const auto* window = static_cast<Window*>(data);
        window->watcher->remove(*window);
    }
    static void title(void* /*data*/, Handle* /*handle*/, const char* /*title*/) {}
    static void output(void* /*data*/, Handle* /*handle*/, wl_output* /*output*/) {}
    static void parent(void* /*data*/, Handle* /*handle*/, Handle* /*parent*/) {}
    static constexpr zwlr_foreign_toplevel_handle_v1_listener window{title, applicationId, output, output,
                                                                     state, done,          closed, parent};
};

std::unique_ptr<ToplevelWatcher> WlrToplevelWatcher::create(WaylandConnection& connection) {
    auto* manager = connection.bind<zwlr_foreign_toplevel_manager_v1>(
        "zwlr_foreign_toplevel_manager_v1", zwlr_foreign_toplevel_manager_v1_interface, 3);
    if (manager == nullptr) {
        return nullptr;
    }
    std::unique_ptr<ToplevelWatcher> watcher(new WlrToplevelWatcher(manager));
    connection.flush();
    return watcher;
}

WlrToplevelWatcher::WlrToplevelWatcher(zwlr_foreign_toplevel_manager_v1* manager) : m_manager(manager) {
    zwlr_foreign_toplevel_manager_v1_add_listener(manager, &Listeners::manager, this);
}

WlrToplevelWatcher::~WlrToplevelWatcher() {
    if (m_manager != nullptr) {
        zwlr_foreign_toplevel_manager_v1_destroy(m_manager);
    }
}

void WlrToplevelWatcher::remove(const Window& window) {
    forget(window.current);
    std::erase_if(m_windows, [&window](const auto& each) { return each.get() == &window; });
}

} // namespace corvatto
