#include "PlasmaWindows.h"

#include "plasma-window-management-client-protocol.h"

#include <wayland-client.h>

#include <cstring>
#include <stdexcept>

namespace corvatto::test {

namespace {

template <typename... Arguments>
void ignore(void*, Arguments...) {}

} // namespace

struct PlasmaWindows::Listeners {
    static Entry& entry(void* data) { return *static_cast<Entry*>(data); }

    static constexpr auto window = [] {
        org_kde_plasma_window_listener listener{};
        listener.title_changed = [](void* data, auto, const char* title) {
            entry(data).window.title = title;
        };
        listener.app_id_changed = [](void* data, auto, const char* id) {
            entry(data).window.application = id;
        };
        listener.state_changed = [](void* data, auto, uint32_t flags) {
            entry(data).isActive = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
        };
        listener.geometry = [](void* data, auto, int32_t x, int32_t y, uint32_t width, uint32_t height) {
            entry(data).window.rect = QRect(x, y, static_cast<int>(width), static_cast<int>(height));
        };
        listener.unmapped = [](void* data, auto) {
            entry(data).isActive = false;
        };
        listener.virtual_desktop_changed = ignore;
        listener.themed_icon_name_changed = ignore;
        listener.initial_state = ignore;
        listener.parent_window = ignore;
        listener.icon_changed = ignore;
        listener.pid_changed = ignore;
        listener.virtual_desktop_entered = ignore;
        listener.virtual_desktop_left = ignore;
        listener.application_menu = ignore;
        return listener;
    }();
    static constexpr auto management = [] {
        org_kde_plasma_window_management_listener listener{};
        listener.show_desktop_changed = ignore;
        listener.window = ignore;
        listener.stacking_order_changed = ignore;
        listener.stacking_order_uuid_changed = ignore;
        listener.window_with_uuid = [](void* data, auto* sender, uint32_t, const char* uuid) {
            auto& entries = static_cast<PlasmaWindows*>(data)->m_entries;
            Entry& added = *entries.emplace_back(std::make_unique<Entry>());
            added.handle.reset(org_kde_plasma_window_management_get_window_by_uuid(sender, uuid));
            org_kde_plasma_window_add_listener(added.handle.get(), &window, &added);
        };
        return listener;
    }();
    static constexpr wl_registry_listener registry{
        [](void* data, wl_registry* from, uint32_t name, const char* interface, uint32_t) {
            if (std::strcmp(interface, org_kde_plasma_window_management_interface.name) == 0) {
                static_cast<PlasmaWindows*>(data)->m_management =
                    static_cast<org_kde_plasma_window_management*>(
                        wl_registry_bind(from, name, &org_kde_plasma_window_management_interface,
                                         ORG_KDE_PLASMA_WINDOW_MANAGEMENT_WINDOW_WITH_UUID_SINCE_VERSION));
            }
        },
        [](void*, wl_registry*, uint32_t) {
        }};
};

void PlasmaWindows::Release::operator()(org_kde_plasma_window* window) const {
    org_kde_plasma_window_destroy(window);
}

PlasmaWindows::PlasmaWindows(const QByteArray& socket) : m_display(wl_display_connect(socket.constData())) {
    if (m_display != nullptr) {
        wl_registry* registry = wl_display_get_registry(m_display);
        wl_registry_add_listener(registry, &Listeners::registry, this);
        wl_display_roundtrip(m_display);
        wl_registry_destroy(registry);
    }
    if (m_management == nullptr) {
        throw std::runtime_error("the compositor tells of no windows");
    }
    org_kde_plasma_window_management_add_listener(m_management, &Listeners::management, this);
}

PlasmaWindows::~PlasmaWindows() {
    m_entries.clear();
    org_kde_plasma_window_management_destroy(m_management);
    wl_display_disconnect(m_display);
}

const PlasmaWindows::Entry* PlasmaWindows::activeEntry() {
    wl_display_roundtrip(m_display); // which windows there are,
    wl_display_roundtrip(m_display); // and of what kind
    for (const auto& entry : m_entries) {
        if (entry->isActive) {
            return entry.get();
        }
    }
    return nullptr;
}

TestDesktop::Window PlasmaWindows::active() {
    const Entry* entry = activeEntry();
    return entry != nullptr ? entry->window : TestDesktop::Window();
}

void PlasmaWindows::minimizeActive() {
    constexpr auto minimized = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED;
    if (const Entry* entry = activeEntry()) {
        org_kde_plasma_window_set_state(entry->handle.get(), minimized, minimized);
        wl_display_flush(m_display);
    }
}

} // namespace corvatto::test
