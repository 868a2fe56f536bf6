#include "platform/wayland/FreeArea.h"

#include "platform/wayland/LayerShellProtocol.h"

#include <utility>

namespace corvatto {

struct FreeArea::Listeners {
    static void configure(void* data, zwlr_layer_surface_v1* role, uint32_t serial, uint32_t width,
                          uint32_t height) {
        zwlr_layer_surface_v1_ack_configure(role, serial);
        static_cast<FreeArea*>(data)->m_onChange(QSize(static_cast<int>(width), static_cast<int>(height)));
    }
    static void closed(void* /*data*/, zwlr_layer_surface_v1* /*role*/) {} // so is the panel
    static constexpr zwlr_layer_surface_v1_listener role{configure, closed};
};

FreeArea::FreeArea(const LayerShell& shell, std::function<void(const QSize& size)> onChange)
    : m_onChange(std::move(onChange)), m_surface(LayerShell::newSurface()),
      m_role(zwlr_layer_shell_v1_get_layer_surface(shell.layers(), m_surface, nullptr,
                                                   ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND, "corvatto")) {
    constexpr uint32_t allEdges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                  ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
    zwlr_layer_surface_v1_set_anchor(m_role, allEdges);
    zwlr_layer_surface_v1_add_listener(m_role, &Listeners::role, this);
    wl_surface_commit(m_surface);
    shell.flush();
}

FreeArea::~FreeArea() {
    zwlr_layer_surface_v1_destroy(m_role);
    wl_surface_destroy(m_surface);
}

} // namespace corvatto
