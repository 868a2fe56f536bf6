// The window manager of the display: which it is, what it does, and requests to it about the program's
// windows.
//
// Managers come and go while the program runs, so it is looked up whenever it matters: at each showing of a
// window, with a few short questions to the X server.
#pragma once

#include "platform/x11/XcbConnection.h"

#include <array>

class QWidget;

namespace corvatto {

// Main thread.
class X11WindowManager {
public:
    // The connection outlives this.
    explicit X11WindowManager(XcbConnection& connection) : m_connection(connection) {}

    // Whether there is one that gives the keyboard to a window on request.
    bool activatesWindows() const;

    // The value of _NET_WM_WINDOW_TYPE with which it shows the panel as it should be.
    xcb_atom_t typeOfPanel() const;

    // Sends it a message about a window. Goes over Qt's connection, to reach the server in order with Qt's
    // own requests.
    void send(const QWidget& window, const QByteArray& message, const std::array<quint32, 5>& data) const;

    // Qt's connection to the server; null on another platform.
    static xcb_connection_t* qtConnection();

private:
    xcb_window_t checkWindow() const;

    XcbConnection& m_connection;
};

} // namespace corvatto
