#include "platform/wayland/LayerSurface.h"

#include "platform/wayland/LayerShellProtocol.h"

namespace corvatto {
namespace {

uint32_t protocolLayer(LayerSurface::Layer layer) {
    switch (layer) {
    case LayerSurface::Layer::BehindWindows:
        return ZWLR_LAYER_SHELL_V1_LAYER_BOTTOM;
    case LayerSurface::Layer::AboveWindows:
        return ZWLR_LAYER_SHELL_V1_LAYER_TOP;
    case LayerSurface::Layer::AboveAll:
        break;
    }
    return ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY;
}

} // namespace

struct LayerSurface::Listeners {
    static void configure(void* data, zwlr_layer_surface_v1* raw, uint32_t serial, uint32_t width,
                          uint32_t height) {
        zwlr_layer_surface_v1_ack_configure(raw, serial);
        static_cast<LayerSurface*>(data)->configure(QSize(static_cast<int>(width), static_cast<int>(height)));
    }
    static void closed(void* data, zwlr_layer_surface_v1* /*raw*/) {
        Q_EMIT static_cast<LayerSurface*>(data)->closed();
    }
    static constexpr zwlr_layer_surface_v1_listener surface{configure, closed};
};

LayerSurface::LayerSurface(const LayerShell& shell, QWindow& window, Layer layer)
    : SurfaceRole(shell, window), m_raw(zwlr_layer_shell_v1_get_layer_surface(
                                      shell.layers(), surface(), nullptr, protocolLayer(layer), "corvatto")) {
    zwlr_layer_surface_v1_add_listener(m_raw, &Listeners::surface, this);
}

LayerSurface::~LayerSurface() {
    zwlr_layer_surface_v1_destroy(m_raw);
}

void LayerSurface::setLayer(Layer layer) {
    zwlr_layer_surface_v1_set_layer(m_raw, protocolLayer(layer));
}

void LayerSurface::setTakesKeyboard(bool takes) {
    zwlr_layer_surface_v1_set_keyboard_interactivity(
        m_raw, takes ? ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE
                     : ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE);
}

} // namespace corvatto
