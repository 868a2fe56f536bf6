#include "platform/wayland/WaylandKeymap.h"

#include <algorithm>

#include <unistd.h>

namespace corvatto {
namespace {

constexpr quint32 maximumSize = 4 << 20; // bytes; keymaps have some ten thousand

} // namespace

struct WaylandKeymap::Listeners {
    static void capabilities(void* self, wl_seat* /*seat*/, uint32_t capabilities) {
        static_cast<WaylandKeymap*>(self)->followCapabilities(capabilities);
    }
    static void name(void* /*self*/, wl_seat* /*seat*/, const char* /*name*/) {}
    static constexpr wl_seat_listener seat{capabilities, name};

    static void keymap(void* self, wl_keyboard* /*keyboard*/, uint32_t format, int32_t file, uint32_t size) {
        static_cast<WaylandKeymap*>(self)->read(format, file, size);
        close(file);
    }
    // No surface of this connection ever has the keyboard.
    static void enter(void* /*self*/, wl_keyboard* /*keyboard*/, uint32_t /*serial*/, wl_surface* /*surface*/,
                      wl_array* /*keys*/) {}
    static void leave(void* /*self*/, wl_keyboard* /*keyboard*/, uint32_t /*serial*/,
                      wl_surface* /*surface*/) {}
    static void key(void* /*self*/, wl_keyboard* /*keyboard*/, uint32_t /*serial*/, uint32_t /*time*/,
                    uint32_t /*key*/, uint32_t /*state*/) {}
    static void modifiers(void* /*self*/, wl_keyboard* /*keyboard*/, uint32_t /*serial*/,
                          uint32_t /*depressed*/, uint32_t /*latched*/, uint32_t /*locked*/,
                          uint32_t /*group*/) {}
    static void repeatInfo(void* /*self*/, wl_keyboard* /*keyboard*/, int32_t /*rate*/, int32_t /*delay*/) {}
    static constexpr wl_keyboard_listener keyboard{keymap, enter, leave, key, modifiers, repeatInfo};
};

WaylandKeymap::WaylandKeymap(WaylandConnection& connection)
    : m_connection(connection), m_seat(connection.bind<wl_seat>("wl_seat", wl_seat_interface, 1)) {
    if (m_seat != nullptr) {
        wl_seat_add_listener(m_seat, &Listeners::seat, this);
        m_connection.flush();
    }
}

WaylandKeymap::~WaylandKeymap() {
    if (m_keyboard != nullptr) {
        wl_keyboard_destroy(m_keyboard);
    }
    if (m_seat != nullptr) {
        wl_seat_destroy(m_seat);
    }
}

void WaylandKeymap::followCapabilities(quint32 capabilities) {
    // To ask a seat without a keyboard for one is a protocol error.
    const bool hasKeyboard = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
    if (hasKeyboard && m_keyboard == nullptr) {
        m_keyboard = wl_seat_get_keyboard(m_seat);
        wl_keyboard_add_listener(m_keyboard, &Listeners::keyboard, this);
        m_connection.flush();
    } else if (!hasKeyboard && m_keyboard != nullptr) {
        wl_keyboard_destroy(m_keyboard);
        m_keyboard = nullptr;
    }
}

void WaylandKeymap::read(quint32 format, int file, quint32 size) {
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 || size > maximumSize) {
        return;
    }
    // Not mapped: a file that is shorter than announced would end the process. It is in memory, or not read.
    QByteArray keymap(static_cast<qsizetype>(size), '\0');
    keymap.resize(std::max<qsizetype>(0, pread(file, keymap.data(), size, 0)));
    if (keymap.endsWith('\0')) {
        keymap.chop(1);
    }
    if (!keymap.isEmpty() && keymap != m_keymap) {
        m_keymap = keymap;
        Q_EMIT changed(m_keymap);
    }
}

} // namespace corvatto
