// Key events in the terms that the shortcuts are defined in: virtual key codes, which are positions on an
// ANSI keyboard whatever the layout, and modifier flags.
#pragma once

#include <QtGlobal>

#include <optional>

class QKeyEvent;

namespace corvatto {

// The virtual key codes that the program names. Others are listed in KeyEvent.cpp.
enum KeyCode : quint16 {
    keyC = 8,
    keyV = 9,
    key1 = 18,
    key2 = 19,
    key3 = 20,
    key4 = 21,
    key6 = 22,
    key5 = 23,
    key9 = 25,
    key7 = 26,
    key8 = 28,
    keyReturn = 36,
    keyComma = 43,
    keyEscape = 53,
    keyLeftArrow = 123,
    keyRightArrow = 124,
    keyDownArrow = 125,
    keyUpArrow = 126,
    keyUnknown = 0xFFFF,
};

enum ModifierFlag : quint64 {
    capsLockFlag = 1u << 16,
    shiftFlag = 1u << 17,
    controlFlag = 1u << 18,
    optionFlag = 1u << 19,
    commandFlag = 1u << 20,
};

struct KeyEvent {
    quint16 keyCode = keyUnknown;
    quint64 modifierFlags = 0;
};

// Translates a key press in one of the program's own windows. Super is command, Alt is option; Control counts
// as command too, because desktops keep Super and a digit for themselves. With command, the keys that have C
// and the comma printed on them count as those wherever the layout puts them, as well as the keys at their
// positions. A synthetic event without a scan code is placed by its key symbol.
KeyEvent keyEventFrom(const QKeyEvent& event);

// The same for recording a system-wide shortcut, which tells Control from command.
KeyEvent hotKeyEventFrom(const QKeyEvent& event);

// The evdev code of the key at the position of `keyCode`, and back. Absent for positions that have none.
std::optional<quint32> evdevCodeForKeyCode(quint32 keyCode);
std::optional<quint16> keyCodeForEvdevCode(quint32 evdevCode);

// The Qt key that a US layout has at the position of `keyCode`, without modifiers. Absent for keys that share
// their Qt key with another one.
std::optional<int> qtKeyForKeyCode(quint32 keyCode);

} // namespace corvatto
