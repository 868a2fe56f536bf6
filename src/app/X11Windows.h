// What an X server does for the program in every session in which it shows the windows: their place, the
// keys that it grabs, the tray, and the screens. The session ends with the server.
#pragma once

#include "platform/qt/QtScreens.h"
#include "platform/x11/X11HotKeyCenter.h"
#include "platform/x11/X11Screens.h"
#include "platform/x11/X11Tray.h"
#include "platform/x11/X11WindowPresenter.h"

#include <memory>

namespace corvatto {

// Main thread.
class X11Windows {
public:
    // Connects to the display of $DISPLAY. Null when the server takes no more connections, after a printed
    // line.
    static std::unique_ptr<X11Windows> open();

    XcbConnection& connection() { return *m_connection; }
    X11HotKeyCenter& hotKeyCenter() { return m_hotKeyCenter; }
    X11WindowPresenter& presenter() { return m_presenter; }
    X11Tray& tray() { return m_tray; }

private:
    explicit X11Windows(std::unique_ptr<XcbConnection> connection);

    std::unique_ptr<XcbConnection> m_connection;
    QtScreens m_qtScreens;
    X11Screens m_screens;
    X11HotKeyCenter m_hotKeyCenter;
    X11WindowPresenter m_presenter;
    X11Tray m_tray;
};

} // namespace corvatto
