#include "platform/KeyEvent.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

#include <set>

namespace corvatto {
namespace {

quint16 keyCodeOf(int key, quint32 scanCode = 0) {
    return keyEventFrom(QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier, scanCode, 0, 0)).keyCode;
}

TEST(KeyEvents, KeyCodesAndEvdevCodesMatchOneToOne) {
    int count = 0;
    std::set<quint32> evdevCodes;
    for (quint32 keyCode = 0; keyCode <= 0xFFFF; ++keyCode) {
        if (const auto evdev = evdevCodeForKeyCode(keyCode)) {
            ++count;
            evdevCodes.insert(*evdev);
            EXPECT_EQ(keyCodeForEvdevCode(*evdev), keyCode);
            EXPECT_EQ(keyCodeOf(0, *evdev + 8), keyCode) << "as the X server numbers it";
        }
    }
    EXPECT_EQ(evdevCodes.size(), static_cast<std::size_t>(count));
    EXPECT_GT(count, 100);
    EXPECT_EQ(evdevCodeForKeyCode(keyUnknown), std::nullopt);
    EXPECT_EQ(keyCodeForEvdevCode(0), std::nullopt);
}

TEST(KeyEvents, APositionCountsBeforeTheLetterOnIt) {
    // Positions on the wire, from the kernel's numbering of keys.
    struct Case {
        quint32 evdev;
        KeyCode expected;
    };
    for (const Case& key :
         {Case{2, key1}, Case{5, key4}, Case{6, key5}, Case{7, key6}, Case{10, key9}, Case{46, keyC},
          Case{47, keyV}, Case{51, keyComma}, Case{28, keyReturn}, Case{1, keyEscape}, Case{103, keyUpArrow},
          Case{105, keyLeftArrow}, Case{106, keyRightArrow}, Case{108, keyDownArrow}}) {
        EXPECT_EQ(keyCodeOf(Qt::Key_Ampersand, key.evdev + 8), key.expected)
            << "whatever the layout puts there";
    }
    EXPECT_EQ(keyCodeOf(Qt::Key_1, 79 + 8), 83) << "the keypad has no shortcuts";
    EXPECT_EQ(keyCodeOf(Qt::Key_C, 240 + 8), keyUnknown);

    // Events that were made up carry no position.
    EXPECT_EQ(keyCodeOf(Qt::Key_C), keyC);
    EXPECT_EQ(keyCodeOf(Qt::Key_Return), keyReturn);
    EXPECT_EQ(keyCodeOf(Qt::Key_Enter), 76);
    EXPECT_EQ(keyCodeOf(Qt::Key_Exit), keyUnknown);
    EXPECT_EQ(keyCodeOf(0), keyUnknown);
    EXPECT_EQ(keyCodeOf(Qt::Key_unknown), keyUnknown);
}

TEST(KeyEvents, SuperAndControlAreBothCommand) {
    const auto flags = [](Qt::KeyboardModifiers modifiers) {
        return keyEventFrom(QKeyEvent(QEvent::KeyPress, Qt::Key_A, modifiers)).modifierFlags;
    };
    EXPECT_EQ(flags(Qt::NoModifier), 0U);
    EXPECT_EQ(flags(Qt::MetaModifier), 1U << 20);
    EXPECT_EQ(flags(Qt::ControlModifier), (1U << 20) | (1U << 18));
    EXPECT_EQ(flags(Qt::AltModifier | Qt::ShiftModifier), (1U << 19) | (1U << 17));
    EXPECT_EQ(flags(Qt::KeypadModifier | Qt::GroupSwitchModifier), 0U);
}

} // namespace
} // namespace corvatto
