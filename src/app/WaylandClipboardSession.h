// The program's session on a Wayland compositor that lets it read the clipboard, but not place its panel: its
// windows go through XWayland.
#pragma once

#include "app/CompositorServices.h"
#include "app/Session.h"
#include "app/X11Windows.h"
#include "platform/dbus/DesktopHotKeyCenter.h"

#include <memory>

namespace corvatto {

// Main thread.
class WaylandClipboardSession : public Session {
public:
    // Opens a session on the compositor of $WAYLAND_DISPLAY and on its X server. Null when either refuses,
    // after a printed line. `dataControl` is the interface that it accepts.
    static std::unique_ptr<WaylandClipboardSession> open(const QByteArray& dataControl);

    Platform platform() override;

private:
    WaylandClipboardSession(std::unique_ptr<WaylandConnection> compositor, const QByteArray& dataControl,
                            std::unique_ptr<X11Windows> windows);

    CompositorServices m_compositor;
    std::unique_ptr<X11Windows> m_windows;
    DesktopHotKeyCenter m_hotKeyCenter;
};

} // namespace corvatto
