// The surface of an alert that belongs to the panel: in the middle of the output, above the panel.
#pragma once

#include "platform/wayland/LayerSurface.h"

namespace corvatto {

// Main thread.
class AlertSurface : public LayerSurface {
    Q_OBJECT

public:
    AlertSurface(const LayerShell& shell, QWindow& window);

private:
    void configure(const QSize& size) override;
};

} // namespace corvatto
