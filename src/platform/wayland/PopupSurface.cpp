#include "platform/wayland/PopupSurface.h"

#include "platform/wayland/LayerShellProtocol.h"
#include "platform/wayland/LayerSurface.h"
#include "xdg-shell-client-protocol.h"

namespace corvatto {

struct PopupSurface::Listeners {
    static void configureSurface(void* data, xdg_surface* surface, uint32_t serial) {
        xdg_surface_ack_configure(surface, serial);
        static_cast<PopupSurface*>(data)->setReady();
    }
    static constexpr xdg_surface_listener surface{configureSurface};

    static void configure(void* data, xdg_popup* /*popup*/, int32_t x, int32_t y, int32_t /*width*/,
                          int32_t /*height*/) {
        static_cast<PopupSurface*>(data)->moveTo({x, y});
    }
    static void done(void* data, xdg_popup* /*popup*/) { Q_EMIT static_cast<PopupSurface*>(data)->closed(); }
    static void repositioned(void* /*data*/, xdg_popup* /*popup*/, uint32_t /*token*/) {}
    static constexpr xdg_popup_listener popup{configure, done, repositioned};
};

PopupSurface::PopupSurface(const LayerShell& shell, QWindow& window, SurfaceRole& parent)
    : SurfaceRole(shell, window), m_parent(parent),
      m_xdgSurface(xdg_wm_base_get_xdg_surface(shell.popups(), surface())) {
    xdg_surface_add_listener(m_xdgSurface, &Listeners::surface, this);
    takeRole();
    if (window.type() == Qt::Popup && LayerShell::seat() != nullptr) {
        xdg_popup_grab(m_popup, LayerShell::seat(), LayerShell::serialOfLastInput());
    }
    commit();
}

PopupSurface::~PopupSurface() {
    xdg_popup_destroy(m_popup);
    xdg_surface_destroy(m_xdgSurface);
}

void PopupSurface::takeRole() {
    const QPoint place = (window().position() - m_parent.window().position()) * unitsPerPoint();
    const QSize size = window().size() * unitsPerPoint();
    xdg_positioner* positioner = xdg_wm_base_create_positioner(shell().popups());
    xdg_positioner_set_anchor_rect(positioner, place.x(), place.y(), 1, 1);
    xdg_positioner_set_size(positioner, size.width(), size.height());
    xdg_positioner_set_anchor(positioner, XDG_POSITIONER_ANCHOR_TOP_LEFT);
    xdg_positioner_set_gravity(positioner, XDG_POSITIONER_GRAVITY_BOTTOM_RIGHT);
    xdg_positioner_set_constraint_adjustment(positioner, XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_FLIP_X |
                                                             XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_FLIP_Y |
                                                             XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_X |
                                                             XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_Y);
    const auto* popup = qobject_cast<PopupSurface*>(&m_parent);
    m_popup =
        xdg_surface_get_popup(m_xdgSurface, popup != nullptr ? popup->m_xdgSurface : nullptr, positioner);
    xdg_positioner_destroy(positioner);
    xdg_popup_add_listener(m_popup, &Listeners::popup, this);
    if (const auto* layer = qobject_cast<LayerSurface*>(&m_parent)) {
        zwlr_layer_surface_v1_get_popup(layer->raw(), m_popup);
    }
}

// What opens over the popup is placed by where Qt thinks it is.
void PopupSurface::moveTo(const QPoint& place) {
    window().setPosition(m_parent.window().position() + place / unitsPerPoint());
}

} // namespace corvatto
