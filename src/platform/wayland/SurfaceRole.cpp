#include "platform/wayland/SurfaceRole.h"

#include <QCoreApplication>

#include <private/qhighdpiscaling_p.h>
#include <qpa/qwindowsysteminterface.h>

#include <wayland-client.h>

namespace corvatto {

SurfaceRole::SurfaceRole(const LayerShell& shell, QWindow& window, IsReady isReady)
    : m_shell(shell), m_window(window), m_surface(LayerShell::surfaceOf(window)),
      m_isReady(isReady == IsReady::atOnce) {}

void SurfaceRole::commit() {
    wl_surface_commit(m_surface);
    m_shell.flush();
}

void SurfaceRole::setReady() {
    if (m_isReady) {
        return;
    }
    m_isReady = true;
    if (m_window.isExposed()) {
        // To Qt the window is exposed already, so that it would only paint; but the widget has not heard.
        const QRegion all(QRect(QPoint(), m_window.size()));
        QExposeEvent exposed(all);
        QCoreApplication::sendEvent(&m_window, &exposed);
        QWindowSystemInterface::handleExposeEvent(&m_window, all);
    }
}

double SurfaceRole::unitsPerPoint() const {
    return QHighDpiScaling::factor(&m_window);
}

} // namespace corvatto
