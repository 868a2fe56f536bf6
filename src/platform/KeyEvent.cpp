#include "platform/KeyEvent.h"

#include <QKeyEvent>

#include <array>

namespace corvatto {
namespace {

// One key: its virtual key code, its evdev code, and the key symbol of the unshifted US layout that a
// synthetic event may carry instead of a scan code (0 where another row of the table has the symbol already).
struct Key {
    quint16 keyCode;
    quint16 evdev;
    int qtKey;
};

constexpr std::array keys = {
    Key{0, 30, Qt::Key_A},
    Key{1, 31, Qt::Key_S},
    Key{2, 32, Qt::Key_D},
    Key{3, 33, Qt::Key_F},
    Key{4, 35, Qt::Key_H},
    Key{5, 34, Qt::Key_G},
    Key{6, 44, Qt::Key_Z},
    Key{7, 45, Qt::Key_X},
    Key{8, 46, Qt::Key_C},
    Key{9, 47, Qt::Key_V},
    Key{10, 86, 0}, // the extra key of ISO keyboards
    Key{11, 48, Qt::Key_B},
    Key{12, 16, Qt::Key_Q},
    Key{13, 17, Qt::Key_W},
    Key{14, 18, Qt::Key_E},
    Key{15, 19, Qt::Key_R},
    Key{16, 21, Qt::Key_Y},
    Key{17, 20, Qt::Key_T},
    Key{18, 2, Qt::Key_1},
    Key{19, 3, Qt::Key_2},
    Key{20, 4, Qt::Key_3},
    Key{21, 5, Qt::Key_4},
    Key{22, 7, Qt::Key_6},
    Key{23, 6, Qt::Key_5},
    Key{24, 13, Qt::Key_Equal},
    Key{25, 10, Qt::Key_9},
    Key{26, 8, Qt::Key_7},
    Key{27, 12, Qt::Key_Minus},
    Key{28, 9, Qt::Key_8},
    Key{29, 11, Qt::Key_0},
    Key{30, 27, Qt::Key_BracketRight},
    Key{31, 24, Qt::Key_O},
    Key{32, 22, Qt::Key_U},
    Key{33, 26, Qt::Key_BracketLeft},
    Key{34, 23, Qt::Key_I},
    Key{35, 25, Qt::Key_P},
    Key{36, 28, Qt::Key_Return},
    Key{37, 38, Qt::Key_L},
    Key{38, 36, Qt::Key_J},
    Key{39, 40, Qt::Key_Apostrophe},
    Key{40, 37, Qt::Key_K},
    Key{41, 39, Qt::Key_Semicolon},
    Key{42, 43, Qt::Key_Backslash},
    Key{43, 51, Qt::Key_Comma},
    Key{44, 53, Qt::Key_Slash},
    Key{45, 49, Qt::Key_N},
    Key{46, 50, Qt::Key_M},
    Key{47, 52, Qt::Key_Period},
    Key{48, 15, Qt::Key_Tab},
    Key{49, 57, Qt::Key_Space},
    Key{50, 41, Qt::Key_QuoteLeft},
    Key{51, 14, Qt::Key_Backspace},
    Key{53, 1, Qt::Key_Escape},
    Key{54, 126, Qt::Key_Super_R},
    Key{55, 125, Qt::Key_Super_L},
    Key{56, 42, Qt::Key_Shift},
    Key{57, 58, Qt::Key_CapsLock},
    Key{58, 56, Qt::Key_Alt},
    Key{59, 29, Qt::Key_Control},
    Key{60, 54, 0}, // right shift
    Key{61, 100, Qt::Key_AltGr},
    Key{62, 97, 0}, // right control
    Key{64, 187, Qt::Key_F17},
    Key{65, 83, 0}, // keypad . * + clear / enter -
    Key{67, 55, 0},
    Key{69, 78, 0},
    Key{71, 69, Qt::Key_NumLock},
    Key{75, 98, 0},
    Key{76, 96, Qt::Key_Enter},
    Key{78, 74, 0},
    Key{79, 188, Qt::Key_F18},
    Key{80, 189, Qt::Key_F19},
    Key{81, 117, 0}, // keypad = and 0 to 7
    Key{82, 82, 0},
    Key{83, 79, 0},
    Key{84, 80, 0},
    Key{85, 81, 0},
    Key{86, 75, 0},
    Key{87, 76, 0},
    Key{88, 77, 0},
    Key{89, 71, 0},
    Key{90, 190, Qt::Key_F20},
    Key{91, 72, 0}, // keypad 8 and 9
    Key{92, 73, 0},
    Key{96, 63, Qt::Key_F5},
    Key{97, 64, Qt::Key_F6},
    Key{98, 65, Qt::Key_F7},
    Key{99, 61, Qt::Key_F3},
    Key{100, 66, Qt::Key_F8},
    Key{101, 67, Qt::Key_F9},
    Key{103, 87, Qt::Key_F11},
    Key{105, 183, Qt::Key_F13},
    Key{106, 186, Qt::Key_F16},
    Key{107, 184, Qt::Key_F14},
    Key{109, 68, Qt::Key_F10},
    Key{111, 88, Qt::Key_F12},
    Key{113, 185, Qt::Key_F15},
    Key{114, 110, Qt::Key_Insert},
    Key{115, 102, Qt::Key_Home},
    Key{116, 104, Qt::Key_PageUp},
    Key{117, 111, Qt::Key_Delete},
    Key{118, 62, Qt::Key_F4},
    Key{119, 107, Qt::Key_End},
    Key{120, 60, Qt::Key_F2},
    Key{121, 109, Qt::Key_PageDown},
    Key{122, 59, Qt::Key_F1},
    Key{123, 105, Qt::Key_Left},
    Key{124, 106, Qt::Key_Right},
    Key{125, 108, Qt::Key_Down},
    Key{126, 103, Qt::Key_Up},
};

// X servers number keys eight higher than the kernel does.
constexpr quint32 xKeycodeOffset = 8;

template <typename Member, typename Value>
const Key* findKey(Member Key::*member, Value value) {
    for (const Key& key : keys) {
        if (key.*member == value) {
            return &key;
        }
    }
    return nullptr;
}

quint16 keyCodeFor(const QKeyEvent& event) {
    if (event.nativeScanCode() > xKeycodeOffset) {
        return keyCodeForEvdevCode(event.nativeScanCode() - xKeycodeOffset).value_or(keyUnknown);
    }
    const Key* key = event.key() > 0 ? findKey(&Key::qtKey, event.key()) : nullptr;
    return key != nullptr ? key->keyCode : quint16{keyUnknown};
}

} // namespace

KeyEvent hotKeyEventFrom(const QKeyEvent& event) {
    const Qt::KeyboardModifiers held = event.modifiers();
    quint64 flags = 0;
    flags |= held.testFlag(Qt::ShiftModifier) ? quint64{shiftFlag} : 0;
    flags |= held.testFlag(Qt::ControlModifier) ? quint64{controlFlag} : 0;
    flags |= held.testFlag(Qt::AltModifier) ? quint64{optionFlag} : 0;
    flags |= held.testFlag(Qt::MetaModifier) ? quint64{commandFlag} : 0;
    return {keyCodeFor(event), flags};
}

KeyEvent keyEventFrom(const QKeyEvent& event) {
    KeyEvent translated = hotKeyEventFrom(event);
    if ((translated.modifierFlags & controlFlag) != 0) {
        translated.modifierFlags |= commandFlag;
    }
    if ((translated.modifierFlags & commandFlag) != 0) {
        translated.keyCode = event.key() == Qt::Key_C       ? quint16{keyC}
                             : event.key() == Qt::Key_Comma ? quint16{keyComma}
                                                            : translated.keyCode;
    }
    return translated;
}

std::optional<quint32> evdevCodeForKeyCode(quint32 keyCode) {
    const Key* key = findKey(&Key::keyCode, keyCode);
    return key != nullptr ? std::optional<quint32>(key->evdev) : std::nullopt;
}

std::optional<quint16> keyCodeForEvdevCode(quint32 evdevCode) {
    const Key* key = findKey(&Key::evdev, evdevCode);
    return key != nullptr ? std::optional<quint16>(key->keyCode) : std::nullopt;
}

std::optional<int> qtKeyForKeyCode(quint32 keyCode) {
    const Key* key = findKey(&Key::keyCode, keyCode);
    return key != nullptr && key->qtKey != 0 ? std::optional<int>(key->qtKey) : std::nullopt;
}

} // namespace corvatto
