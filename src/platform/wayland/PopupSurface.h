// The surface of a menu or a tool tip that opens over a window with a role of our
// own. Qt does not know that role, and would show a window of its own.
#pragma once

#include "platform/wayland/SurfaceRole.h"

struct xdg_popup;
struct xdg_surface;

namespace corvatto {

// Main thread.
class PopupSurface : public SurfaceRole {
    Q_OBJECT

public:
    // Opens at the place that the window has over the parent's window, or where there is room beside it. The
    // parent is a LayerSurface or a PopupSurface, and outlives this.
    PopupSurface(const LayerShell& shell, QWindow& window, SurfaceRole& parent);
    ~PopupSurface() override;

    const SurfaceRole* parentRole() const override { return &m_parent; }

private:
    struct Listeners;

    void takeRole();
    void moveTo(const QPoint& place);

    SurfaceRole& m_parent;
    xdg_surface* m_xdgSurface;
    xdg_popup* m_popup = nullptr;
};

} // namespace corvatto
