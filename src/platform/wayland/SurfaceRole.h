// What the surface of a window is to the compositor, for windows to which Qt gives no role of its own: those
// with Qt::BypassWindowManagerHint, while a variable of the environment is set.
//
// A surface with a role must stay empty until the compositor has said how large it will be, and Qt does not
// know of that: whoever owns the role keeps Qt's events to paint from the window until isReady().
#pragma once

#include "platform/wayland/LayerShell.h"

#include <QObject>
#include <QWindow>

namespace corvatto {

// Qt looks at it whenever it shows a window, so that it must stay; programs that are opened must not see it.
inline constexpr const char* rolelessVariable = "QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT";

// Lives from the showing of the window to its hiding; goes before the surface does. Main thread.
class SurfaceRole : public QObject {
    Q_OBJECT

public:
    QWindow& window() const { return m_window; }
    wl_surface* surface() const { return m_surface; }
    bool isReady() const { return m_isReady; }

    // That of the window that this one has opened over; null when it stands for itself.
    virtual const SurfaceRole* parentRole() const { return nullptr; }

    // What has been requested for the surface, by Qt as well, takes effect.
    void commit();

Q_SIGNALS:
    // The compositor shows the surface no longer.
    void closed();

protected:
    enum class IsReady { later, atOnce };

    // The window has its surface, and is not painted yet.
    SurfaceRole(const LayerShell& shell, QWindow& window, IsReady isReady = IsReady::later);

    const LayerShell& shell() const { return m_shell; }

    // From now on the window is painted.
    void setReady();

    // Surfaces are measured in units that are Qt's points, unless the user has Qt scale everything.
    double unitsPerPoint() const;

private:
    const LayerShell& m_shell;
    QWindow& m_window;
    wl_surface* m_surface;
    bool m_isReady;
};

} // namespace corvatto
