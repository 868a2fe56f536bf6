// The application in front on an X11 desktop, as the window manager tells it.
#pragma once

#include "platform/Workspace.h"
#include "platform/freedesktop/DesktopEntries.h"
#include "platform/x11/XcbConnection.h"

namespace corvatto {

class X11Workspace : public Workspace {
public:
    explicit X11Workspace(XcbConnection& connection);

    // The name in the desktop entry that belongs to the active window's class, else the class itself. Two
    // short questions to the X server.
    QString frontmostApplicationName() override;

    // Through the desktop's own opener (xdg-open, where there is one).
    bool openURL(const QUrl& url) override;

private:
    QByteArray property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const;

    XcbConnection& m_connection;
    DesktopEntries m_entries;
};

} // namespace corvatto
