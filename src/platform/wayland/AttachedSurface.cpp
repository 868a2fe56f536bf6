#include "platform/wayland/AttachedSurface.h"

#include <wayland-client.h>

namespace corvatto {

AttachedSurface::AttachedSurface(const LayerShell& shell, QWindow& window, SurfaceRole& parent)
    : SurfaceRole(shell, window, IsReady::atOnce), m_parent(parent),
      m_subsurface(wl_subcompositor_get_subsurface(shell.attachments(), surface(), parent.surface())) {
    wl_subsurface_set_desync(m_subsurface); // it is shown as it is painted, and not with the parent
    place();
    connect(&window, &QWindow::xChanged, this, &AttachedSurface::place);
    connect(&window, &QWindow::yChanged, this, &AttachedSurface::place);
}

AttachedSurface::~AttachedSurface() {
    wl_subsurface_destroy(m_subsurface);
}

void AttachedSurface::place() {
    const QPoint place = (window().position() - m_parent.window().position()) * unitsPerPoint();
    wl_subsurface_set_position(m_subsurface, place.x(), place.y());
    m_parent.commit(); // is when it takes effect
}

} // namespace corvatto
