// The application in front on an X11 desktop, as the window manager tells it.
#pragma once

#include "platform/freedesktop/FreedesktopWorkspace.h"
#include "platform/x11/XcbConnection.h"

namespace corvatto {

// Main thread.
class X11Workspace : public FreedesktopWorkspace {
public:
    // The connection outlives the workspace.
    explicit X11Workspace(XcbConnection& connection);

    // The name of the application that the user copied in, at the moment that `clipboardOwner` took the
    // clipboard over: that of the active window, by the desktop entry that the window names or that belongs
    // to its class, else the class itself. Empty when the active window is one of this program's and the
    // owner is another program: window managers may leave a hidden window active. A few short questions to
    // the X server.
    QString nameOfCopySource(xcb_window_t clipboardOwner);

private:
    quint32 value(xcb_window_t window, const char* name, xcb_atom_t type) const;

    XcbConnection& m_connection;
};

} // namespace corvatto
