#include "platform/wayland/AlertSurface.h"

#include "platform/wayland/LayerShellProtocol.h"

namespace corvatto {

AlertSurface::AlertSurface(const LayerShell& shell, QWindow& window)
    : LayerSurface(shell, window, Layer::AboveAll) {
    // Held at no edge, it stands in the middle.
    const QSize size = window.size() * unitsPerPoint();
    zwlr_layer_surface_v1_set_size(raw(), static_cast<uint32_t>(size.width()),
                                   static_cast<uint32_t>(size.height()));
    setTakesKeyboard(true);
    commit();
}

void AlertSurface::configure(const QSize& /*size*/) {
    setReady(); // in the size that it asked for
}

} // namespace corvatto
