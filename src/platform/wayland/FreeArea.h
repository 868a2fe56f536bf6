// How large the area is that the bars leave free of an output, now and whenever a bar comes or goes.
//
// No protocol tells that. But a layer surface that is held at all four edges is given this size, without
// ever being shown.
#pragma once

#include "platform/wayland/LayerShell.h"

#include <QSize>

#include <functional>

struct zwlr_layer_surface_v1;

namespace corvatto {

// Main thread.
class FreeArea {
public:
    // Of the output that the compositor chooses for a new surface. `onChange` is called from the event loop
    // with the size in the units of surfaces, for the first time as soon as the compositor has told it.
    FreeArea(const LayerShell& shell, std::function<void(const QSize& size)> onChange);
    ~FreeArea();
    FreeArea(const FreeArea&) = delete;
    FreeArea& operator=(const FreeArea&) = delete;

private:
    struct Listeners;

    std::function<void(const QSize& size)> m_onChange;
    wl_surface* m_surface;
    zwlr_layer_surface_v1* m_role;
};

} // namespace corvatto
