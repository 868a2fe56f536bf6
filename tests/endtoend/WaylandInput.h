// A keyboard and a mouse that a test plugs into a Wayland compositor. They stay there as long as the object:
// a compositor whose last keyboard goes takes the focus away.
#pragma once

#include <QByteArray>
#include <QPoint>
#include <QSize>

#include <memory>

#include <xkbcommon/xkbcommon.h>

struct org_kde_kwin_fake_input;
struct wl_display;
struct wl_seat;
struct zwlr_virtual_pointer_manager_v1;
struct zwlr_virtual_pointer_v1;
struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace corvatto::test {

class WaylandInput {
public:
    // Throws std::runtime_error when the compositor at that socket takes no such devices. The screen's size
    // is in pixels.
    WaylandInput(const QByteArray& socket, QSize screen);
    ~WaylandInput();

    // Keys one after the other, such as "ctrl+a BackSpace". Throws std::runtime_error when there is no such
    // key.
    void key(const QByteArray& keys);
    void type(const QByteArray& text); // in ASCII
    void click(QPoint position, int times, int button);

private:
    void press(const QByteArrayList& symbols); // those before the last are held meanwhile
    void strike(xkb_keycode_t code, bool isDown);
    void plugInKeyboard();
    void move(QPoint position);
    void strikeButton(quint32 button, bool isDown);
    void sync();
    quint32 now() { return ++m_time; }

    template <typename Type>
    using Owned = std::unique_ptr<Type, void (*)(Type*)>;

    Owned<wl_display> m_display;
    wl_seat* m_seat = nullptr;
    zwp_virtual_keyboard_manager_v1* m_keyboards = nullptr;
    zwlr_virtual_pointer_manager_v1* m_pointers = nullptr;
    zwp_virtual_keyboard_v1* m_keyboard = nullptr;
    zwlr_virtual_pointer_v1* m_pointer = nullptr;
    org_kde_kwin_fake_input* m_kwinsDevices = nullptr; // keyboard and mouse, instead of all these
    Owned<xkb_context> m_context;
    Owned<xkb_keymap> m_keymap;
    Owned<xkb_state> m_state;
    QSize m_screen;
    quint32 m_time = 0; // milliseconds, which pass by the event
};

} // namespace corvatto::test
