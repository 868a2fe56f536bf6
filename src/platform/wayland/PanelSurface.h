// The panel's surface: along the bottom of what the bars leave free of an output.
#pragma once

#include "platform/wayland/FreeArea.h"
#include "platform/wayland/LayerSurface.h"

namespace corvatto {

// Main thread.
class PanelSurface : public LayerSurface {
    Q_OBJECT

public:
    // The compositor chooses the output.
    PanelSurface(const LayerShell& shell, QWindow& window, Layer layer, bool takesKeyboard);

private:
    void configure(const QSize& size) override;
    void fit(const QSize& freeArea);

    int m_height = 0; // in the surface's units
    FreeArea m_freeArea;
};

} // namespace corvatto
