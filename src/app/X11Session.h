// The program's session on an X11 display: owns the connection to the server and all that is implemented on
// top of it.
#pragma once

#include "app/Platform.h"
#include "platform/qt/QtScreens.h"
#include "platform/x11/X11HotKeyCenter.h"
#include "platform/x11/X11Pasteboard.h"
#include "platform/x11/X11Screens.h"
#include "platform/x11/X11Tray.h"
#include "platform/x11/X11WindowPresenter.h"
#include "platform/x11/X11Workspace.h"

#include <QApplication>

#include <memory>

namespace corvatto {

// Main thread.
class X11Session {
public:
    // Creates the application object on the display of $DISPLAY. Null when that cannot be reached, after a
    // printed line. Keeps references to both arguments.
    static std::unique_ptr<QApplication> newApplication(int& argc, char** argv);

    // Opens a session on the same display, while there is an application object. Null when the server takes
    // no more connections, after a printed line.
    static std::unique_ptr<X11Session> open();

    // What this session implements. Lives as long as the session.
    Platform platform();

    // Runs the event loop, and returns the exit status of the program. When the server is lost, prints a
    // line; the status is then EXIT_FAILURE, unless Qt ends the process with it right there.
    int runEventLoop();

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
