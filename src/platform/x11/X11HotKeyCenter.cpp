#include "platform/x11/X11HotKeyCenter.h"

#include "platform/KeyEvent.h"

// xkb.h uses a C++ keyword as a member name.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

#include <algorithm>
#include <limits>

namespace corvatto {
namespace {

constexpr quint32 xKeycodeOffset = 8; // X keycodes are evdev codes plus eight

constexpr quint32 longestRepeatPause = 2000; // milliseconds; desktops offer delays of up to one second

// Key symbols of the modifiers, as X numbers them.
enum KeySymbol : xcb_keysym_t {
    altL = 0xFFE9,
    altR = 0xFFEA,
    metaL = 0xFFE7,
    superL = 0xFFEB,
    superR = 0xFFEC,
    numLock = 0xFF7F,
    scrollLock = 0xFF14,
};

} // namespace

X11HotKeyCenter::X11HotKeyCenter(XcbConnection& connection) : m_connection(connection) {
    useXkb();
    readModifierMapping();
    m_connection.addListener(*this);
}

X11HotKeyCenter::~X11HotKeyCenter() {
    for (const auto& [ref, hotKey] : m_hotKeys) {
        ungrab(hotKey.keycode, grabStates(hotKey));
    }
    m_connection.removeListener(*this);
    m_connection.flush();
}

HotKeyStatus X11HotKeyCenter::installEventHandler(std::function<HotKeyStatus()> handler,
                                                  EventHandlerRef& out) {
    out = ++m_lastRef;
    m_handlers.emplace(out, std::move(handler));
    return noErr;
}

HotKeyStatus X11HotKeyCenter::removeEventHandler(EventHandlerRef handler) {
    return m_handlers.erase(handler) == 1 ? noErr : eventHotKeyInvalidErr;
}

EventHotKeyRef X11HotKeyCenter::registerEventHotKey(quint32 keyCode, quint32 modifiers, EventHotKeyID /*id*/,
                                                    StatusHandler done) {
    // The server answers at once.
    HotKeyStatus status = eventHotKeyInvalidErr;
    EventHotKeyRef ref = 0;
    const auto evdev = evdevCodeForKeyCode(keyCode);
    if (evdev && *evdev + xKeycodeOffset <= std::numeric_limits<xcb_keycode_t>::max()) {
        HotKey hotKey{static_cast<xcb_keycode_t>(*evdev + xKeycodeOffset), modifiers};
        status = grab(hotKey);
        if (status == noErr) {
            ref = ++m_lastRef;
            m_hotKeys.emplace(ref, hotKey);
        }
    }
    done(status, {});
    return ref;
}

HotKeyStatus X11HotKeyCenter::unregisterEventHotKey(EventHotKeyRef ref) {
    const auto found = m_hotKeys.find(ref);
    if (found == m_hotKeys.end()) {
        return eventHotKeyInvalidErr;
    }
    ungrab(found->second.keycode, grabStates(found->second));
    m_hotKeys.erase(found);
    m_connection.flush();
    return noErr;
}

void X11HotKeyCenter::useXkb() {
    xcb_connection_t* raw = m_connection.raw();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(raw, &xcb_xkb_id);
    if (extension == nullptr || extension->present == 0) {
        return;
    }
    const XcbPointer<xcb_xkb_use_extension_reply_t> used(xcb_xkb_use_extension_reply(
        raw, xcb_xkb_use_extension(raw, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION), nullptr));
    if (!used || used->supported == 0) {
        return;
    }
    // A held key then repeats as presses only, so that a repeat is recognised by the missing release.
    constexpr quint32 detectable = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const XcbPointer<xcb_xkb_per_client_flags_reply_t> flags(xcb_xkb_per_client_flags_reply(
        raw, xcb_xkb_per_client_flags(raw, XCB_XKB_ID_USE_CORE_KBD, detectable, detectable, 0, 0, 0),
        nullptr));
    // To a client that uses XKB the server sends no core MappingNotify when it gets a new keyboard, so the
    // mapping is followed by XKB's own events.
    m_xkbEvent = extension->first_event;
    constexpr quint16 mappings = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(raw, XCB_XKB_ID_USE_CORE_KBD,
                          XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY, 0,
                          XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY, mappings, mappings, nullptr);
}

void X11HotKeyCenter::readModifierMapping() {
    xcb_connection_t* raw = m_connection.raw();
    const xcb_setup_t* setup = xcb_get_setup(raw);
    const auto keycodes = static_cast<quint8>(setup->max_keycode - setup->min_keycode + 1);
    const auto mappingCookie = xcb_get_keyboard_mapping(raw, setup->min_keycode, keycodes);
    const XcbPointer<xcb_get_modifier_mapping_reply_t> modifiers(
        xcb_get_modifier_mapping_reply(raw, xcb_get_modifier_mapping(raw), nullptr));
    const XcbPointer<xcb_get_keyboard_mapping_reply_t> mapping(
        xcb_get_keyboard_mapping_reply(raw, mappingCookie, nullptr));
    m_super = m_alt = m_numLock = m_scrollLock = 0;
    if (!modifiers || !mapping) {
        return;
    }
    const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(modifiers.get());
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int modifier = 0; modifier < 8; ++modifier) {
        const auto bit = static_cast<quint16>(1u << modifier);
        for (int i = 0; i < modifiers->keycodes_per_modifier; ++i) {
            const xcb_keycode_t code = codes[modifier * modifiers->keycodes_per_modifier + i];
            if (code < setup->min_keycode) {
                continue;
            }
            for (int column = 0; column < mapping->keysyms_per_keycode; ++column) {
                switch (symbols[(code - setup->min_keycode) * mapping->keysyms_per_keycode + column]) {
                case superL:
                case superR:
                    m_super = m_super != 0 ? m_super : bit;
                    break;
                case altL:
                case altR:
                case metaL:
                    m_alt = m_alt != 0 ? m_alt : bit;
                    break;
                case numLock:
                    m_numLock = bit;
                    break;
                case scrollLock:
                    m_scrollLock = bit;
                    break;
                default:
                    break;
                }
            }
        }
    }
}

quint16 X11HotKeyCenter::stateFor(quint32 modifiers) const {
    quint16 state = 0;
    state |= (modifiers & commandKey) != 0 ? m_super : quint16{0};
    state |= (modifiers & optionKey) != 0 ? m_alt : quint16{0};
    state |= (modifiers & shiftKey) != 0 ? quint16{XCB_MOD_MASK_SHIFT} : quint16{0};
    state |= (modifiers & controlKey) != 0 ? quint16{XCB_MOD_MASK_CONTROL} : quint16{0};
    return state;
}

std::vector<quint16> X11HotKeyCenter::lockStates() const {
    std::vector<quint16> states{0};
    for (const quint16 lock : {quint16{XCB_MOD_MASK_LOCK}, m_numLock, m_scrollLock}) {
        if (lock == 0) {
            continue;
        }
        const std::size_t known = states.size();
        for (std::size_t i = 0; i < known; ++i) {
            states.push_back(states[i] | lock);
        }
    }
    return states;
}

// The states of a grabbed hot key, with each state of the locks.
std::vector<quint16> X11HotKeyCenter::grabStates(const HotKey& hotKey) const {
    std::vector<quint16> states = lockStates();
    for (quint16& state : states) {
        state |= hotKey.grabbedState;
    }
    return states;
}

HotKeyStatus X11HotKeyCenter::grab(HotKey& hotKey) {
    const bool mapped = ((hotKey.modifiers & commandKey) == 0 || m_super != 0) &&
                        ((hotKey.modifiers & optionKey) == 0 || m_alt != 0);
    if (!mapped) {
        return eventHotKeyInvalidErr; // this keyboard has no such modifier
    }
    hotKey.grabbedState = stateFor(hotKey.modifiers);
    xcb_connection_t* raw = m_connection.raw();
    std::vector<xcb_void_cookie_t> cookies;
    for (const quint16 state : grabStates(hotKey)) {
        cookies.push_back(xcb_grab_key_checked(raw, 1, m_connection.root(), state, hotKey.keycode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    HotKeyStatus status = noErr;
    for (const xcb_void_cookie_t cookie : cookies) {
        const XcbPointer<xcb_generic_error_t> error(xcb_request_check(raw, cookie));
        if (error) {
            status = error->error_code == XCB_ACCESS ? eventHotKeyExistsErr : eventHotKeyInvalidErr;
        }
    }
    if (status != noErr) {
        ungrab(hotKey.keycode, grabStates(hotKey)); // some of the lock states may have been free
    }
    m_connection.flush();
    return status;
}

void X11HotKeyCenter::ungrab(xcb_keycode_t keycode, const std::vector<quint16>& states) {
    for (const quint16 state : states) {
        xcb_ungrab_key(m_connection.raw(), keycode, m_connection.root(), state);
    }
}

void X11HotKeyCenter::followMapping() {
    std::map<EventHotKeyRef, std::vector<quint16>> before;
    for (const auto& [ref, hotKey] : m_hotKeys) {
        before.emplace(ref, grabStates(hotKey));
    }
    readModifierMapping();
    // Most changes, such as another layout, move no modifier. Grabs that are still needed are kept all the
    // time, so that no press is lost meanwhile.
    for (auto& [ref, hotKey] : m_hotKeys) {
        grab(hotKey);
        std::vector<quint16> superfluous = before[ref];
        const std::vector<quint16> kept = grabStates(hotKey);
        std::erase_if(superfluous, [&](quint16 state) {
            return std::find(kept.begin(), kept.end(), state) != kept.end();
        });
        ungrab(hotKey.keycode, superfluous);
    }
    m_connection.flush();
}

void X11HotKeyCenter::handleEvent(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == XCB_KEY_PRESS) {
        pressed(reinterpret_cast<const xcb_key_press_event_t&>(event));
    } else if (type == XCB_KEY_RELEASE) {
        released(reinterpret_cast<const xcb_key_release_event_t&>(event));
    } else if (m_xkbEvent != 0 && type == m_xkbEvent) {
        followMapping(); // only changes of the mapping are selected
    } else if (m_xkbEvent == 0 && type == XCB_MAPPING_NOTIFY) {
        followMapping();
    }
}

void X11HotKeyCenter::pressed(const xcb_key_press_event_t& event) {
    const auto locks = static_cast<quint16>(XCB_MOD_MASK_LOCK | m_numLock | m_scrollLock);
    const auto held = static_cast<quint16>(event.state & 0xFF & ~locks); // buttons live in the upper byte
    for (auto& [ref, hotKey] : m_hotKeys) {
        if (hotKey.keycode != event.detail || hotKey.grabbedState != held) {
            continue;
        }
        // A key that repeats is pressed again without a release. A release that never comes, because the key
        // was let go on another virtual terminal, must not leave the shortcut dead.
        const bool isRepeat =
            std::exchange(hotKey.isDown, true) && event.time - hotKey.lastPress < longestRepeatPause;
        hotKey.lastPress = event.time;
        if (!isRepeat) {
            // A handler may remove itself or others.
            const auto handlers = m_handlers;
            for (const auto& [handlerRef, handler] : handlers) {
                handler();
            }
        }
        return;
    }
}

void X11HotKeyCenter::released(const xcb_key_release_event_t& event) {
    for (auto& [ref, hotKey] : m_hotKeys) {
        if (hotKey.keycode == event.detail) {
            hotKey.isDown = false;
        }
    }
}

} // namespace corvatto
