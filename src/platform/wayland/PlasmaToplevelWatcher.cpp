#include "platform/wayland/PlasmaToplevelWatcher.h"

#include "platform/wayland/WaylandConnection.h"

#include <plasma-window-management-client-protocol.h>

#include <algorithm>

namespace corvatto {
namespace {

// The first version that names windows by an identifier which is not reused. Later ones add nothing of use,
// and of those before, which no supported Plasma has, we hear no windows.
constexpr quint32 usedVersion = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_WINDOW_WITH_UUID_SINCE_VERSION;

template <typename... Arguments>
void ignore(void* /*data*/, Arguments... /*arguments*/) {}

} // namespace

struct PlasmaToplevelWatcher::Window : Toplevel {
    PlasmaToplevelWatcher* const watcher;
    org_kde_plasma_window* const handle;

    Window(PlasmaToplevelWatcher* owner, org_kde_plasma_window* proxy) : watcher(owner), handle(proxy) {}
    ~Window() { org_kde_plasma_window_destroy(handle); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
};

struct PlasmaToplevelWatcher::Listeners {
    using Handle = org_kde_plasma_window;

    static void added(void* data, org_kde_plasma_window_management* manager, quint32 /*id*/,
                      const char* uuid) {
        auto* watcher = static_cast<PlasmaToplevelWatcher*>(data);
        Handle* handle = org_kde_plasma_window_management_get_window_by_uuid(manager, uuid);
        watcher->m_windows.push_back(std::make_unique<Window>(watcher, handle));
        org_kde_plasma_window_add_listener(handle, &window, watcher->m_windows.back().get());
    }
    static void applicationId(void* data, Handle* /*handle*/, const char* id) {
        static_cast<Window*>(data)->applicationId = QString::fromUtf8(id);
    }
    static void state(void* data, Handle* /*handle*/, quint32 flags) {
        auto* window = static_cast<Window*>(data);
        window->watcher->setActive(*window, (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0);
    }
    static void unmapped(void* data, Handle* /*handle*/) {
        const auto* window = static_cast<Window*>(data);
        window->watcher->remove(*window);
    }
    // Every event of the version that is used has a function, and none of a later one: those are not sent.
    static constexpr org_kde_plasma_window_management_listener manager = [] {
        org_kde_plasma_window_management_listener listener{};
        listener.show_desktop_changed = ignore;
        listener.window = ignore;
        listener.stacking_order_changed = ignore;
        listener.stacking_order_uuid_changed = ignore;
        listener.window_with_uuid = added;
        return listener;
    }();
    static constexpr org_kde_plasma_window_listener window = [] {
        org_kde_plasma_window_listener listener{};
        listener.title_changed = ignore;
        listener.app_id_changed = applicationId;
        listener.state_changed = state;
        listener.virtual_desktop_changed = ignore;
        listener.themed_icon_name_changed = ignore;
        listener.unmapped = unmapped;
        listener.initial_state = ignore;
        listener.parent_window = ignore;
        listener.geometry = ignore;
        listener.icon_changed = ignore;
        listener.pid_changed = ignore;
        listener.virtual_desktop_entered = ignore;
        listener.virtual_desktop_left = ignore;
        listener.application_menu = ignore;
        return listener;
    }();
};

std::unique_ptr<ToplevelWatcher> PlasmaToplevelWatcher::create(WaylandConnection& connection) {
    auto* manager = connection.bind<org_kde_plasma_window_management>(
        "org_kde_plasma_window_management", org_kde_plasma_window_management_interface, usedVersion);
    if (manager == nullptr) {
        return nullptr;
    }
    std::unique_ptr<ToplevelWatcher> watcher(new PlasmaToplevelWatcher(manager));
    connection.flush();
    return watcher;
}

PlasmaToplevelWatcher::PlasmaToplevelWatcher(org_kde_plasma_window_management* manager) : m_manager(manager) {
    org_kde_plasma_window_management_add_listener(manager, &Listeners::manager, this);
}

PlasmaToplevelWatcher::~PlasmaToplevelWatcher() {
    org_kde_plasma_window_management_destroy(m_manager);
}

void PlasmaToplevelWatcher::remove(const Window& window) {
    forget(window);
    std::erase_if(m_windows, [&window](const auto& each) { return each.get() == &window; });
}

} // namespace corvatto
