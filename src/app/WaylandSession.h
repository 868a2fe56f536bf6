// The program's session on a Wayland compositor that lets it read the clipboard and place its panel.
#pragma once

#include "app/CompositorServices.h"
#include "app/Session.h"
#include "platform/dbus/DesktopHotKeyCenter.h"
#include "platform/freedesktop/StatusNotifierTray.h"
#include "platform/wayland/LayerShellPresenter.h"

#include <memory>

namespace corvatto {

// Main thread.
class WaylandSession : public Session {
public:
    // Opens a session on the compositor of $WAYLAND_DISPLAY, which Qt runs on, too. Null when that refuses,
    // after a printed line. `dataControl` is the interface that it accepts.
    static std::unique_ptr<WaylandSession> open(const QByteArray& dataControl);

    Platform platform() override;

private:
    WaylandSession(std::unique_ptr<WaylandConnection> connection, const QByteArray& dataControl,
                   std::unique_ptr<LayerShellPresenter> presenter);

    CompositorServices m_compositor;
    DesktopHotKeyCenter m_hotKeyCenter;
    std::unique_ptr<LayerShellPresenter> m_presenter;
    StatusNotifierTray m_tray;
};

} // namespace corvatto
