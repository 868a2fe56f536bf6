#include "WaylandInput.h"

#include "fake-input-client-protocol.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"
#include "wlr-virtual-pointer-unstable-v1-client-protocol.h"

#include <QTemporaryFile>

#include <linux/input-event-codes.h>
#include <wayland-client.h>

#include <cstring>
#include <stdexcept>

namespace corvatto::test {

namespace {

constexpr xkb_keycode_t evdevOffset = 8; // between the codes of XKB and the kernel's

} // namespace

WaylandInput::WaylandInput(const QByteArray& socket, QSize screen)
    : m_display(wl_display_connect(socket.constData()), wl_display_disconnect),
      m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref),
      m_keymap(nullptr, xkb_keymap_unref), m_state(nullptr, xkb_state_unref), m_screen(screen) {
    if (!m_display) {
        throw std::runtime_error("no compositor at " + socket.toStdString());
    }
    wl_registry* registry = wl_display_get_registry(m_display.get());
    constexpr wl_registry_listener listener{
        [](void* data, wl_registry* from, uint32_t name, const char* interface, uint32_t) {
            const auto self = static_cast<WaylandInput*>(data);
            const auto bind = [&]<typename Type>(Type*& global, const wl_interface& wanted,
                                                 uint32_t version = 1) {
                if (std::strcmp(interface, wanted.name) == 0) {
                    global = static_cast<Type*>(wl_registry_bind(from, name, &wanted, version));
                }
            };
            bind(self->m_seat, wl_seat_interface);
            bind(self->m_keyboards, zwp_virtual_keyboard_manager_v1_interface);
            bind(self->m_pointers, zwlr_virtual_pointer_manager_v1_interface);
            bind(self->m_kwinsDevices, org_kde_kwin_fake_input_interface,
                 ORG_KDE_KWIN_FAKE_INPUT_KEYBOARD_KEY_SINCE_VERSION);
        },
        [](void*, wl_registry*, uint32_t) {
        }};
    wl_registry_add_listener(registry, &listener, this);
    sync();
    wl_registry_destroy(registry);
    // A real keyboard's map, or programs that go by the places of the keys would get others.
    const xkb_rule_names names{nullptr, "pc105", "us", nullptr, nullptr};
    m_keymap.reset(xkb_keymap_new_from_names(m_context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    m_state.reset(xkb_state_new(m_keymap.get()));
    if (m_kwinsDevices != nullptr) { // with the same map
        org_kde_kwin_fake_input_authenticate(m_kwinsDevices, "test", "test");
    } else if (m_seat != nullptr && m_keyboards != nullptr && m_pointers != nullptr) {
        m_pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(m_pointers, m_seat);
        plugInKeyboard();
    } else {
        throw std::runtime_error("the compositor takes no virtual keyboard or no virtual mouse");
    }
    sync();
}

void WaylandInput::plugInKeyboard() {
    const std::unique_ptr<char, decltype(&std::free)> text(
        xkb_keymap_get_as_string(m_keymap.get(), XKB_KEYMAP_FORMAT_TEXT_V1), &std::free);
    const auto size = std::strlen(text.get()) + 1;
    QTemporaryFile file;
    file.open();
    file.write(text.get(), static_cast<qint64>(size));
    file.flush();
    m_keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(m_keyboards, m_seat);
    zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.handle(),
                                   static_cast<uint32_t>(size));
}

// The devices go with the connection; here only memory is given back.
WaylandInput::~WaylandInput() {
    for (void* proxy : std::initializer_list<void*>{m_pointer, m_keyboard, m_pointers, m_keyboards,
                                                    m_kwinsDevices, m_seat}) {
        if (proxy != nullptr) {
            wl_proxy_destroy(static_cast<wl_proxy*>(proxy));
        }
    }
}

void WaylandInput::sync() {
    if (wl_display_roundtrip(m_display.get()) < 0) {
        throw std::runtime_error("the compositor is gone");
    }
}

void WaylandInput::strike(xkb_keycode_t code, bool isDown) {
    if (m_kwinsDevices != nullptr) {
        org_kde_kwin_fake_input_keyboard_key(m_kwinsDevices, code - evdevOffset, isDown);
        return;
    }
    zwp_virtual_keyboard_v1_key(m_keyboard, now(), code - evdevOffset, isDown);
    // The compositor leaves it to the keyboard what that does to the modifiers.
    xkb_state_update_key(m_state.get(), code, isDown ? XKB_KEY_DOWN : XKB_KEY_UP);
    const auto modifiers = [this](xkb_state_component component) {
        return xkb_state_serialize_mods(m_state.get(), component);
    };
    zwp_virtual_keyboard_v1_modifiers(m_keyboard, modifiers(XKB_STATE_MODS_DEPRESSED),
                                      modifiers(XKB_STATE_MODS_LATCHED), modifiers(XKB_STATE_MODS_LOCKED), 0);
}

void WaylandInput::press(const QByteArrayList& symbols) {
    QList<xkb_keycode_t> codes;
    for (const QByteArray& name : symbols) {
        const xkb_keysym_t symbol = xkb_keysym_from_name(name.constData(), XKB_KEYSYM_NO_FLAGS);
        const auto codeAt = [&](xkb_level_index_t level) {
            for (auto code = xkb_keymap_min_keycode(m_keymap.get());
                 code <= xkb_keymap_max_keycode(m_keymap.get()); ++code) {
                const xkb_keysym_t* there = nullptr;
                if (xkb_keymap_key_get_syms_by_level(m_keymap.get(), code, 0, level, &there) == 1 &&
                    *there == symbol) {
                    return code;
                }
            }
            return XKB_KEYCODE_INVALID;
        };
        xkb_keycode_t code = codeAt(0);
        if (code == XKB_KEYCODE_INVALID && (code = codeAt(1)) != XKB_KEYCODE_INVALID) {
            codes.append(KEY_LEFTSHIFT + evdevOffset);
        }
        if (code == XKB_KEYCODE_INVALID) {
            throw std::runtime_error("there is no key " + name.toStdString());
        }
        codes.append(code);
    }
    for (const auto code : codes) {
        strike(code, true);
    }
    for (auto code = codes.crbegin(); code != codes.crend(); ++code) {
        strike(*code, false);
    }
}

void WaylandInput::key(const QByteArray& keys) {
    for (const QByteArray& combination : keys.split(' ')) {
        QByteArrayList symbols;
        for (const QByteArray& name : combination.split('+')) {
            symbols.append(name == "ctrl"    ? "Control_L"
                           : name == "shift" ? "Shift_L"
                           : name == "alt"   ? "Alt_L"
                           : name == "super" ? "Super_L"
                                             : name);
        }
        press(symbols);
    }
    sync();
}

void WaylandInput::type(const QByteArray& text) {
    for (const char each : text) {
        char name[16] = {};
        xkb_keysym_get_name(xkb_utf32_to_keysym(static_cast<uchar>(each)), name, sizeof name);
        press({name});
    }
    sync();
}

void WaylandInput::move(QPoint position) {
    if (m_kwinsDevices != nullptr) {
        org_kde_kwin_fake_input_pointer_motion_absolute(m_kwinsDevices, wl_fixed_from_int(position.x()),
                                                        wl_fixed_from_int(position.y()));
        return;
    }
    zwlr_virtual_pointer_v1_motion_absolute(
        m_pointer, now(), static_cast<uint32_t>(position.x()), static_cast<uint32_t>(position.y()),
        static_cast<uint32_t>(m_screen.width()), static_cast<uint32_t>(m_screen.height()));
    zwlr_virtual_pointer_v1_frame(m_pointer);
}

void WaylandInput::strikeButton(quint32 button, bool isDown) {
    if (m_kwinsDevices != nullptr) {
        org_kde_kwin_fake_input_button(m_kwinsDevices, button, isDown);
        return;
    }
    zwlr_virtual_pointer_v1_button(m_pointer, now(), button, isDown);
    zwlr_virtual_pointer_v1_frame(m_pointer);
}

void WaylandInput::click(QPoint position, int times, int button) {
    move(position);
    for (int i = 0; i < 2 * times; ++i) {
        strikeButton(button == 3 ? BTN_RIGHT : BTN_LEFT, i % 2 == 0);
    }
    sync();
}

} // namespace corvatto::test
