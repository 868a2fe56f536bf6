#include "platform/wayland/PanelSurface.h"

#include "platform/PanelPlacement.h"
#include "platform/wayland/LayerShellProtocol.h"

namespace corvatto {

PanelSurface::PanelSurface(const LayerShell& shell, QWindow& window, Layer layer, bool takesKeyboard)
    : LayerSurface(shell, window, layer), m_freeArea(shell, [this](const QSize& size) { fit(size); }) {
    zwlr_layer_surface_v1_set_anchor(raw(), ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                                ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT |
                                                ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT);
    setTakesKeyboard(takesKeyboard);
}

void PanelSurface::fit(const QSize& freeArea) {
    const QRect frame = panelFrame(QRect(QPoint(), freeArea / unitsPerPoint()));
    const int height = qRound(frame.height() * unitsPerPoint());
    if (height != m_height) {
        m_height = height;
        zwlr_layer_surface_v1_set_size(raw(), 0, static_cast<uint32_t>(height)); // 0: from edge to edge
        commit();
    }
}

void PanelSurface::configure(const QSize& size) {
    window().resize(size / unitsPerPoint());
    setReady();
}

} // namespace corvatto
