// A test's own connection to its display: types and clicks like a person, looks at windows like a task bar,
// and takes pictures.
#pragma once

#include "XConnection.h"

#include <QImage>
#include <QPoint>
#include <QRect>

namespace corvatto::test {

class XClient : protected XConnection {
public:
    using Window = xcb_window_t;

    // Throws std::runtime_error when the display cannot be reached.
    explicit XClient(const QByteArray& display) : XConnection(display), m_display(display) {}

    // Keys one after the other, such as "ctrl+a BackSpace". Throws std::runtime_error when there is no such
    // key.
    void key(const QByteArray& keys) { xdotool(QByteArrayList{"key", "--delay", "0"} + keys.split(' ')); }
    void type(const QByteArray& text) { xdotool({"type", "--delay", "0", "--", text}); }
    void click(QPoint position, int times = 1, int button = 1);
    void switchDesktop(int index) { xdotool({"set_desktop", QByteArray::number(index)}); }

    QList<Window> visibleWindows(qint64 pid); // of that process, menus included
    Window activeWindow() { return cardinal(root(), "_NET_ACTIVE_WINDOW"); }
    QRect geometry(Window window); // on the screen
    QByteArray title(Window window) { return property(window, "_NET_WM_NAME"); }
    QByteArray windowClass(Window window) { return property(window, "WM_CLASS").split('\0').value(1); }
    quint32 cardinal(Window window, const char* property); // the first value, 0 without one
    QList<QByteArray> states(Window window);               // the names in _NET_WM_STATE
    Window topWindow();

    // A window of another application, which the window manager shows and gives the keyboard. Filled with
    // magenta.
    Window createWindow(QRect geometry, const QByteArray& windowClass, const QByteArray& desktopEntry = {});

    // Registers the key at that place of the keyboard for this client. False when somebody else has it.
    bool grabKey(xcb_keycode_t code, quint16 modifierMask);

    Window keyboard(); // what the server gives it to, whatever a window manager says

    void own(const QByteArray& selection); // and answer nobody who asks for it

    QImage picture(QRect area);

private:
    Window nextWindow(quint8 eventType);
    void xdotool(const QByteArrayList& arguments);

    QByteArray m_display;
};

} // namespace corvatto::test
