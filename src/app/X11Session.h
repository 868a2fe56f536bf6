// The program's session on an X11 display, which may be XWayland's.
#pragma once

#include "app/Session.h"
#include "app/X11Windows.h"
#include "platform/dbus/DesktopHotKeyCenter.h"
#include "platform/x11/X11Pasteboard.h"
#include "platform/x11/X11Workspace.h"

#include <memory>
#include <optional>

namespace corvatto {

// Main thread.
class X11Session : public Session {
public:
    enum class Server {
        x11,
        xwayland, // grabs keys from other X programs only, so that the desktop is asked for the shortcut
                  // first
    };

    // Opens a session on the display of $DISPLAY. Null when that refuses, after a printed line.
    static std::unique_ptr<X11Session> open(Server server);

    Platform platform() override;

private:
    X11Session(std::unique_ptr<X11Windows> windows, Server server);

    std::unique_ptr<X11Windows> m_windows;
    X11Workspace m_workspace;
    X11Pasteboard m_pasteboard;
    std::optional<DesktopHotKeyCenter> m_desktopHotKeys;
};

} // namespace corvatto
