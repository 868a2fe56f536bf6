// The program's session on an X11 display: owns the connection to the server and all that is implemented on
// top of it.
#pragma once

#include "app/Session.h"
#include "platform/qt/QtScreens.h"
#include "platform/x11/X11HotKeyCenter.h"
#include "platform/x11/X11Pasteboard.h"
#include "platform/x11/X11Screens.h"
#include "platform/x11/X11Tray.h"
#include "platform/x11/X11WindowPresenter.h"
#include "platform/x11/X11Workspace.h"

#include <memory>

namespace corvatto {

// Main thread.
class X11Session : public Session {
public:
    // Opens a session on the display of $DISPLAY. Null when the server takes no more connections, after a
    // printed line.
    static std::unique_ptr<X11Session> open();

    Platform platform() override;

private:
    explicit X11Session(std::unique_ptr<XcbConnection> connection);

    std::unique_ptr<XcbConnection> m_connection;
    QtScreens m_qtScreens;
    X11Screens m_screens;
    X11Workspace m_workspace;
    X11Pasteboard m_pasteboard;
    X11HotKeyCenter m_hotKeyCenter;
    X11WindowPresenter m_presenter;
    X11Tray m_tray;
};

} // namespace corvatto
