// A surface that lies over a part of another one of ours: that of a window which paints whenever it likes,
// as the list of an input method does. Unlike a popup, it may be painted before the compositor knows of it.
#pragma once

#include "platform/wayland/SurfaceRole.h"

struct wl_subsurface;

namespace corvatto {

// Main thread.
class AttachedSurface : public SurfaceRole {
    Q_OBJECT

public:
    // At the place that the window has over the parent's window, and has from now on. The parent outlives
    // this.
    AttachedSurface(const LayerShell& shell, QWindow& window, SurfaceRole& parent);
    ~AttachedSurface() override;

    const SurfaceRole* parentRole() const override { return &m_parent; }

private:
    void place();

    SurfaceRole& m_parent;
    wl_subsurface* m_subsurface;
};

} // namespace corvatto
