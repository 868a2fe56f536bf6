#include "platform/wayland/CompositorProbe.h"

#include "platform/wayland/LayerShellProtocol.h"
#include "wlr-data-control-unstable-v1-client-protocol.h"
#include "xdg-shell-client-protocol.h"

#include <wayland-client.h>

#include <map>
#include <memory>
#include <string>

namespace corvatto {
namespace {

// A connection that is given up after one look.
class Probe {
public:
    Probe() : m_display(wl_display_connect(nullptr)) {
        if (m_display == nullptr) {
            return;
        }
        m_registry = wl_display_get_registry(m_display);
        wl_registry_add_listener(m_registry, &listener, this);
        m_isAlive = wl_display_roundtrip(m_display) >= 0;
    }
    ~Probe() {
        if (m_display != nullptr) {
            wl_registry_destroy(m_registry);
            wl_display_disconnect(m_display);
        }
    }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    bool isAlive() const { return m_isAlive; }

    // Null when the compositor does not offer `name`.
    template <typename T>
    T* bind(const char* name, const wl_interface& description) const {
        const auto global = m_globals.find(name);
        if (!m_isAlive || global == m_globals.end()) {
            return nullptr;
        }
        // The name goes over the wire by itself: a renamed protocol is the same otherwise.
        return reinterpret_cast<T*>(wl_proxy_marshal_flags(reinterpret_cast<wl_proxy*>(m_registry),
                                                           WL_REGISTRY_BIND, &description, 1, 0,
                                                           global->second, name, 1, nullptr));
    }

    // Whether the compositor put up with everything that was asked of it.
    bool isAccepted() { return wl_display_roundtrip(m_display) >= 0; }

private:
    static void global(void* self, wl_registry* /*registry*/, uint32_t name, const char* interface,
                       uint32_t /*version*/) {
        static_cast<Probe*>(self)->m_globals.try_emplace(interface, name);
    }
    static void globalRemoved(void* /*self*/, wl_registry* /*registry*/, uint32_t /*name*/) {}
    static constexpr wl_registry_listener listener{global, globalRemoved};

    wl_display* m_display;
    wl_registry* m_registry = nullptr;
    std::map<std::string, uint32_t> m_globals;
    bool m_isAlive = false;
};

// Its destructor came with version 3.
void destroyLayerShell(zwlr_layer_shell_v1* shell) {
    wl_proxy_destroy(reinterpret_cast<wl_proxy*>(shell));
}

template <typename T, void (*release)(T*)>
struct Release {
    void operator()(T* proxy) const { release(proxy); }
};
template <typename T, void (*release)(T*)>
using Proxy = std::unique_ptr<T, Release<T, release>>;

// Its newer name, or else its older one, under which it is the same on the wire.
QByteArray acceptedDataControl() {
    for (const char* name : {"ext_data_control_manager_v1", "zwlr_data_control_manager_v1"}) {
        Probe probe;
        const Proxy<wl_seat, wl_seat_destroy> seat(probe.bind<wl_seat>("wl_seat", wl_seat_interface));
        const Proxy<zwlr_data_control_manager_v1, zwlr_data_control_manager_v1_destroy> manager(
            probe.bind<zwlr_data_control_manager_v1>(name, zwlr_data_control_manager_v1_interface));
        if (!seat || !manager) {
            continue;
        }
        const Proxy<zwlr_data_control_device_v1, zwlr_data_control_device_v1_destroy> device(
            zwlr_data_control_manager_v1_get_data_device(manager.get(), seat.get()));
        if (probe.isAccepted()) {
            return name;
        }
    }
    return {};
}

// A layer surface that is never given a content, and so never shown.
bool hasLayers() {
    Probe probe;
    const Proxy<wl_compositor, wl_compositor_destroy> compositor(
        probe.bind<wl_compositor>("wl_compositor", wl_compositor_interface));
    const Proxy<zwlr_layer_shell_v1, destroyLayerShell> shell(
        probe.bind<zwlr_layer_shell_v1>("zwlr_layer_shell_v1", zwlr_layer_shell_v1_interface));
    const Proxy<xdg_wm_base, xdg_wm_base_destroy> windows(
        probe.bind<xdg_wm_base>("xdg_wm_base", xdg_wm_base_interface));
    if (!compositor || !shell || !windows) {
        return false;
    }
    const Proxy<wl_surface, wl_surface_destroy> surface(wl_compositor_create_surface(compositor.get()));
    const Proxy<zwlr_layer_surface_v1, zwlr_layer_surface_v1_destroy> layer(
        zwlr_layer_shell_v1_get_layer_surface(shell.get(), surface.get(), nullptr,
                                              ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "corvatto"));
    return probe.isAccepted();
}

} // namespace

CompositorAbilities probeCompositor() {
    CompositorAbilities abilities;
    abilities.isReachable = Probe().isAlive();
    if (abilities.isReachable) {
        abilities.dataControl = acceptedDataControl();
        abilities.hasLayers = hasLayers();
    }
    return abilities;
}

} // namespace corvatto
