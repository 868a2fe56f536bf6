#include "platform/wayland/LayerShell.h"

#include "keyboard-shortcuts-inhibit-unstable-v1-client-protocol.h"
#include "platform/wayland/LayerShellProtocol.h"
#include "xdg-shell-client-protocol.h"

#include <QGuiApplication>

#include <qpa/qplatformnativeinterface.h>

#include <algorithm>
#include <cstring>

namespace corvatto {
namespace {

constexpr quint32 highestLayersVersion = 4;
constexpr quint32 lowestLayersVersion = 2; // the first in which a surface can change its layer

void* resource(const char* name) {
    return QGuiApplication::platformNativeInterface()->nativeResourceForIntegration(name);
}

wl_proxy* proxy(void* object) {
    return static_cast<wl_proxy*>(object);
}

} // namespace

struct LayerShell::Listeners {
    static void global(void* data, wl_registry* registry, uint32_t name, const char* interface,
                       uint32_t version) {
        LayerShell& self = *static_cast<LayerShell*>(data);
        const auto bind = [&](const wl_interface& wanted, auto*& object, uint32_t wantedVersion) {
            if (object == nullptr && std::strcmp(interface, wanted.name) == 0) {
                object = static_cast<std::remove_reference_t<decltype(object)>>(
                    wl_registry_bind(registry, name, &wanted, std::min(version, wantedVersion)));
            }
        };
        if (version >= lowestLayersVersion) {
            bind(zwlr_layer_shell_v1_interface, self.m_layers, highestLayersVersion);
        }
        bind(xdg_wm_base_interface, self.m_popups, 1);
        bind(wl_subcompositor_interface, self.m_attachments, 1);
        bind(zwp_keyboard_shortcuts_inhibit_manager_v1_interface, self.m_inhibitors, 1);
    }
    static void globalRemoved(void* /*data*/, wl_registry* /*registry*/, uint32_t /*name*/) {}
    static constexpr wl_registry_listener registry{global, globalRemoved};

    static void ping(void* /*data*/, xdg_wm_base* base, uint32_t serial) { xdg_wm_base_pong(base, serial); }
    static constexpr xdg_wm_base_listener popups{ping};
};

std::unique_ptr<LayerShell> LayerShell::bind() {
    auto* display = static_cast<wl_display*>(resource("wl_display"));
    if (display == nullptr) {
        return nullptr;
    }
    std::unique_ptr<LayerShell> shell(new LayerShell(display));
    shell->bindGlobals();
    const bool isComplete =
        shell->m_layers != nullptr && shell->m_popups != nullptr && shell->m_attachments != nullptr;
    return isComplete ? std::move(shell) : nullptr;
}

LayerShell::LayerShell(wl_display* display) : m_display(display) {}

LayerShell::~LayerShell() {
    if (m_layers != nullptr &&
        zwlr_layer_shell_v1_get_version(m_layers) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION) {
        zwlr_layer_shell_v1_destroy(m_layers);
    } else if (m_layers != nullptr) {
        wl_proxy_destroy(proxy(m_layers));
    }
    if (m_popups != nullptr) {
        xdg_wm_base_destroy(m_popups);
    }
    if (m_attachments != nullptr) {
        wl_subcompositor_destroy(m_attachments);
    }
    if (m_inhibitors != nullptr) {
        zwp_keyboard_shortcuts_inhibit_manager_v1_destroy(m_inhibitors);
    }
}

void LayerShell::bindGlobals() {
    // On a queue of their own, so that no event of Qt's is handled while this waits.
    wl_event_queue* queue = wl_display_create_queue(m_display);
    void* wrapper = wl_proxy_create_wrapper(m_display);
    wl_proxy_set_queue(proxy(wrapper), queue);
    wl_registry* registry = wl_display_get_registry(static_cast<wl_display*>(wrapper));
    wl_proxy_wrapper_destroy(wrapper);
    wl_registry_add_listener(registry, &Listeners::registry, this);
    wl_display_roundtrip_queue(m_display, queue);
    wl_registry_destroy(registry);
    // From now on their events, and those of the objects that they make, come with Qt's.
    for (void* object : {static_cast<void*>(m_layers), static_cast<void*>(m_popups),
                         static_cast<void*>(m_attachments), static_cast<void*>(m_inhibitors)}) {
        if (object != nullptr) {
            wl_proxy_set_queue(proxy(object), nullptr);
        }
    }
    wl_event_queue_destroy(queue);
    if (m_popups != nullptr) {
        xdg_wm_base_add_listener(m_popups, &Listeners::popups, nullptr);
    }
}

wl_surface* LayerShell::surfaceOf(QWindow& window) {
    return static_cast<wl_surface*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", &window));
}

wl_surface* LayerShell::newSurface() {
    return wl_compositor_create_surface(static_cast<wl_compositor*>(resource("compositor")));
}

wl_seat* LayerShell::seat() {
    return static_cast<wl_seat*>(resource("wl_seat"));
}

quint32 LayerShell::serialOfLastInput() {
    return static_cast<quint32>(reinterpret_cast<quintptr>(resource("serial")));
}

void LayerShell::flush() const {
    wl_display_flush(m_display);
}

} // namespace corvatto
