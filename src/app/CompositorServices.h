// What a Wayland compositor does for the program in every session in which it has a say: the clipboard, and
// the application in front. The session ends with the compositor.
#pragma once

#include "platform/dbus/DesktopHotKeyCenter.h"
#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/WaylandKeymap.h"
#include "platform/wayland/WaylandPasteboard.h"
#include "platform/wayland/WaylandWorkspace.h"

#include <memory>

namespace corvatto {

// Main thread.
class CompositorServices {
public:
    // A connection to the compositor of $WAYLAND_DISPLAY. Null when it takes no more, after a printed line.
    static std::unique_ptr<WaylandConnection> connect();

    // `dataControl` as for the pasteboard.
    CompositorServices(std::unique_ptr<WaylandConnection> connection, const QByteArray& dataControl);

    WaylandWorkspace& workspace() { return m_workspace; }
    WaylandPasteboard& pasteboard() { return m_pasteboard; }

    // Has the keys of shortcuts named as the keyboard names them. `center` may be destroyed before these
    // services.
    void tellKeymapTo(DesktopHotKeyCenter& center);

private:
    std::unique_ptr<WaylandConnection> m_connection;
    WaylandWorkspace m_workspace;
    WaylandPasteboard m_pasteboard;
    WaylandKeymap m_keymap;
};

} // namespace corvatto
