// A window on one of the compositor's layers, on the output that the compositor chooses.
#pragma once

#include "platform/wayland/SurfaceRole.h"

struct zwlr_layer_surface_v1;

namespace corvatto {

// Main thread. What is set takes effect with the next commit().
class LayerSurface : public SurfaceRole {
    Q_OBJECT

public:
    enum class Layer {
        BehindWindows,
        AboveWindows, // but below those that fill the screen, with some compositors
        AboveAll,
    };

    ~LayerSurface() override;

    zwlr_layer_surface_v1* raw() const { return m_raw; }

    void setLayer(Layer layer);

    // Whether the surface has the keyboard for itself as long as it is shown.
    void setTakesKeyboard(bool takes);

protected:
    LayerSurface(const LayerShell& shell, QWindow& window, Layer layer);

    // The compositor has given the surface this size, in its own units.
    virtual void configure(const QSize& size) = 0;

private:
    struct Listeners;

    zwlr_layer_surface_v1* m_raw;
};

} // namespace corvatto
